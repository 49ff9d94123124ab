// The state of a port in a topology.

#pragma once

#include <array>
#include <cstdint>

#include "mox/Enum.h"

namespace Bridging::Topology {

/// IEEE 802.1Q-2018, 8.4: per spanning tree a port is discarding, learning or forwarding. Discarding is told apart here
/// by its cause: `disabled`, the port takes no part, or `blocking`, the active topology leaves it out.
enum class PortState : std::uint32_t { disabled = 0, blocking = 1, learning = 2, forwarding = 3 };

constexpr auto moxEnumValues(PortState) {
  return std::array{Mox::enumValue(PortState::disabled, "disabled"), Mox::enumValue(PortState::blocking, "blocking"),
                    Mox::enumValue(PortState::learning, "learning"),
                    Mox::enumValue(PortState::forwarding, "forwarding")};
}
using PortStateInstance = Mox::EnumInstance<PortState>;

using Mox::operator<<;
using Mox::stringValue;
using Mox::valueToStrep;

}  // namespace Bridging::Topology
