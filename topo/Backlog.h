// The backlog for a person: what is pending, where the work stands, what remains of the visit, the counters, and the
// longest run so far.

#pragma once

#include <iosfwd>
#include <optional>

#include "bridging/VlanId.h"
#include "topo/Loop.h"

namespace Topo {

/// Prints the backlog, or only what is pending of one VLAN.
void printBacklog(const Agent& agent, const Loop& loop, std::optional<Bridging::VlanId> vlan, std::ostream& out,
                  bool isColoured);

}  // namespace Topo
