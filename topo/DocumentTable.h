// The documents as tables for a person. VLANs and interfaces that are alike share a row.

#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>

#include "topo/Documents.h"

namespace Topo {

/// Prints a document, other than the backlog's (topo/Backlog.h).
void printDocument(Document document, const nlohmann::ordered_json& json, std::ostream& out, bool isColoured);

}  // namespace Topo
