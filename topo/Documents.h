// The documents: what the entities hold, as JSON.
//
// Keys stand in their order: names as text, interfaces in natural order, VLANs by number. What is in a document, and under
// which keys, stands in topo/Schema.h.

#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bridging/VlanId.h"
#include "mox/String.h"

namespace Topo {

class Agent;

enum class Document : std::uint8_t { state, view, instance, status, config, bridging, interfaces, backlog, mapping };

/// All documents, in the order of a help text.
[[nodiscard]] const std::vector<Document>& documents();
[[nodiscard]] std::string_view nameOf(Document document) noexcept;
/// The document of this name, if there is one.
[[nodiscard]] std::optional<Document> documentOf(std::string_view name) noexcept;

/// What of a document is wanted.
struct Part {
  /// Only this topology, and this VLAN.
  std::optional<Mox::String> topology;
  std::optional<Bridging::VlanId> vlan;
  /// Only the way to this place, the unescaped tokens of a JSON Pointer. What lies beside it may be left out.
  std::vector<std::string> path;
};

/// Whether a document can be narrowed down to a topology, or to a VLAN.
[[nodiscard]] bool hasTopologies(Document document) noexcept;
[[nodiscard]] bool hasVlans(Document document) noexcept;

/// A document. That of the backlog, and of the mapping, is an empty object while there is no processor.
[[nodiscard]] nlohmann::ordered_json documentOf(const Agent& agent, Document document, const Part& part = {});

/// JSON on one line. Bytes that are no UTF-8 are replaced.
[[nodiscard]] std::string lineOf(const nlohmann::ordered_json& json);

}  // namespace Topo
