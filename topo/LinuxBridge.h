// A Linux bridge, as the tools of iproute2 describe it.
//
// Overview
//   `readLinuxBridge` takes the texts of a capture and gives one VLAN-aware bridge of it as plain data: its ports in
//   natural order, their links, VLANs and spanning-tree states. It reads nothing but those texts.
//
//     text         printed by                     used of it
//     link         ip -j -d link show             the bridges; their ports, with link and port state
//     vlan         bridge -j vlan show            the VLANs of each port
//     mst          bridge -j mst show             the state of each port in each MST instance
//     vlanGlobal   bridge -j vlan global show     the MST instance of each VLAN
//
// What the tools do
//   - Lists are in no order. A port may appear more than once, and more often than not lacks something: a port without
//     VLANs is not listed in `vlan`, one without a VLAN of MST instance 0 has no state for it in `mst`.
//   - `bridge mst show` gives up at the first port of a bridge without MST; what stands before it is whole. So a port
//     may lack its states altogether.
//   - Older ones know nothing of MST: there is no `mst` then, and `vlanGlobal` has no instances.
//   - Names, VLANs and flags that concern other bridges are read for their form only.
//
// Cost: linear in the length of the texts, and for each port of the bridge in the number of VLAN ids.

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bridging/PortState.h"
#include "bridging/VlanId.h"

namespace Topo {

/// A capture that does not hold what it should. The text is one line that names the file and the place in it:
/// `FILE:LINE: error: byte N: ...` for what is not JSON, `FILE: error: /POINTER: ...` for JSON of another form.
class LinuxCaptureError : public std::runtime_error {
 public:
  /// Control characters in the text are written as `\xNN`, so that it stays one line.
  explicit LinuxCaptureError(std::string_view text);
};

/// The texts of a capture, each with the name that errors give it.
struct LinuxCapture {
  struct File {
    std::string name;
    std::string text;
  };

  File link;
  File vlan;
  std::optional<File> mst;
  std::optional<File> vlanGlobal;
};

/// What a port carries: a byte of flags for every VLAN id.
class LinuxPortVlans {
 public:
  enum Flag : std::uint8_t { carried = 1, pvid = 2, untagged = 4 };

  /// The flags of the VLAN; 0 if the port does not carry it.
  [[nodiscard]] std::uint8_t operator[](std::size_t vid) const noexcept { return flags_.empty() ? 0 : flags_[vid]; }
  void add(std::uint16_t first, std::uint16_t last, std::uint8_t flags);

 private:
  std::vector<std::uint8_t> flags_;
};

struct LinuxBridge {
  using PortState = Bridging::Topology::PortState;
  /// An MST instance; 0 is the spanning tree of all VLANs that are in no other.
  using Msti = std::uint16_t;

  struct Port {
    std::string name;
    bool linkUp = false;
    PortState state = PortState::disabled;
    LinuxPortVlans vlans;
    std::map<Msti, PortState> mst;

    /// The state of the port in an instance, or nothing where the capture does not tell it.
    [[nodiscard]] std::optional<PortState> stateIn(Msti msti) const;
  };

  std::string name;
  std::vector<Port> ports;
  /// Instance 0, and those that VLANs or ports are in.
  std::set<Msti> instances;
  /// By VLAN id.
  std::vector<Msti> instanceOfVlan;
};

/// The bridge of this name, or without one the only VLAN-aware bridge of the capture. Anything else, and texts that are
/// not what the tools print, raise LinuxCaptureError.
[[nodiscard]] LinuxBridge readLinuxBridge(const LinuxCapture& capture, const std::optional<std::string>& name);

}  // namespace Topo
