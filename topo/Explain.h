// Why a port forwards a VLAN, or does not: the chain of facts that decides it, from the configuration to the view.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "bridging/VlanId.h"
#include "quill/IntfId.h"

namespace Topo {

class Agent;

struct Fact {
  const char* name;
  std::string value;
  /// Whether the port cannot forward the VLAN while this is so.
  bool isHindrance = false;
};

struct Explanation {
  Bridging::VlanId vlan;
  Quill::IntfId port;
  /// What is published now; work that is pending may change it.
  bool isForwarding = false;
  bool isPending = false;
  std::vector<Fact> facts = {};

  /// The first fact that keeps a port from forwarding; of one that forwards nothing.
  [[nodiscard]] std::optional<std::size_t> firstHindrance() const;
  /// The answer in a sentence.
  [[nodiscard]] std::string verdict() const;
};

[[nodiscard]] Explanation explain(const Agent& agent, Bridging::VlanId vlan, Quill::IntfId port);

}  // namespace Topo
