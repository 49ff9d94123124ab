// From captures of other systems to scenarios.
//
// Linux
//   A directory with the output of the bridge tools of iproute2, as files
//
//     link.json           ip -j -d link show
//     vlan.json           bridge -j vlan show
//     mst.json            bridge -j mst show              if there is MST
//     vlan-global.json    bridge -j vlan global show      if there is MST
//
//   becomes the configuration of one bridge:
//
//     interface swp1 link up model bridged
//     vlan 1,10-20
//     vlan 1 port swp1 untagged pvid
//     vlan 10-20 port swp1
//     topology msti0 number 0
//     topology msti0 port swp1 state forwarding
//     topology msti1 number 1
//     topology msti1 port swp1 state blocking
//     map 1,16-20 msti0
//     map 10-15 msti1
//     instance msti0 number 0
//     instance msti0 port swp1
//     instance msti1 number 1
//     instance msti1 port swp1
//
//   The bridge itself is left out, though it may carry VLANs of its own. A port is in the topologies of the VLANs that it
//   carries, and in their instance status while its link is up. Where mst.json is cut short, as the tool does it, the line
//   of the topology port has no state, and a comment says so; the port is then disabled there.

#pragma once

#include <iosfwd>
#include <optional>
#include <string>

namespace Topo {

struct LinuxBridge;

/// Writes the bridge of this name, or without one the only VLAN-aware bridge of the directory, to `out` and returns 0.
/// If that cannot be done, writes one line to `err` and nothing to `out`, and returns 2.
int importLinux(const std::string& dir, const std::optional<std::string>& bridge, std::ostream& out, std::ostream& err);

/// Writes the commands that configure this bridge.
void writeScenario(const LinuxBridge& bridge, std::ostream& out);

}  // namespace Topo
