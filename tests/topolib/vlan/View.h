// What tests of the VLAN view share: its inputs, written by the test itself, and a log of what it publishes.

#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ChangeLog.h"
#include "tests/topolib/Observed.h"
#include "topolib/vlan/TopoLibVlan.h"

namespace Test {

/// The contents of a view: "10" for a VLAN, "10/Ethernet1 open both" or "10/Ethernet1 blocked egress" for a port of it, and
/// "10/Ethernet1 in A" for a topology.
[[nodiscard]] inline std::set<std::string> contentsOf(const Topology::Library::Vlan::LibVlanState& view) {
  std::set<std::string> lines;
  for (const auto& [vid, vlan] : view.topoVlan()) {
    lines.insert(textOf(vid));
    for (const auto& [intf, port] : vlan.topoPort()) {
      const std::string at = textOf(vid, '/', intf, ' ');
      lines.insert(textOf(at, port.blocked() ? "blocked " : "open ", port.allowedTrafficDirection()));
      for (const auto& [topo, mapping] : port.topo()) lines.insert(textOf(at, "in ", topo));
    }
  }
  return lines;
}

/// The view's inputs, without a library: the test writes the published state.
class View {
 public:
  using PortState = Bridging::Topology::PortState;
  using Direction = Bridging::AllowedTrafficDirection;

  /// Starts it over a state whose first pass is over, unless the test has seen to that itself.
  void start(bool isInitDone = true) {
    if (isInitDone) state->initDoneIs(true);
    sm = Topology::Library::Vlan::vlanLibSmFactory(state, view);
  }

  Mox::Ptr<Topology::Library::Port> portIs(const std::string& topo, const std::string& intf = "Ethernet1") {
    return state->topoIs(topo)->portIs(intf);
  }
  /// An active port in some VLANs.
  Mox::Ptr<Topology::Library::Port> portUp(const std::string& topo, const std::string& intf = "Ethernet1",
                                           const std::vector<unsigned>& vids = {10},
                                           PortState portState = PortState::forwarding) {
    auto port = portIs(topo, intf);
    for (const unsigned vid : vids) port->vlanPortConfigIs(vid, {});
    port->stateIs(portState);
    port->activeIs(true);
    return port;
  }
  /// The port as the published state has it.
  [[nodiscard]] Topology::Library::Port& port(const std::string& topo, const std::string& intf = "Ethernet1") const {
    return *state->topo(topo)->port(intf);
  }
  [[nodiscard]] Topology::Library::Vlan::VlanPortMapping* mapping(const std::string& topo,
                                                                  const std::string& intf = "Ethernet1") const {
    return sm->topoSm(topo)->vlanPortMapping(intf);
  }
  [[nodiscard]] std::set<std::string> contents() const { return contentsOf(*view); }

  Mox::Ptr<Topology::Library::LibState> state = Topology::Library::libStateFactory("state");
  Mox::Ptr<Topology::Library::Vlan::LibVlanState> view = Topology::Library::Vlan::libVlanStateFactory("view");
  Mox::Ptr<Topology::Library::Vlan::VlanLibSm> sm;
};

/// Writes down every change of a view, in the order in which a reader is told: "+10", "-10", "10 +Ethernet1",
/// "10 -Ethernet1", "10/Ethernet1 +A", "10/Ethernet1 -A", "10/Ethernet1 blocked", "10/Ethernet1 open",
/// "10/Ethernet1 egress" and "initDone".
class ViewLog : public ChangeLog {
 public:
  explicit ViewLog(const Mox::Ptr<Topology::Library::Vlan::LibVlanState>& view) : view_(view) {
    watch(*view_, [this](Mox::AttributeId id, const void* key) {
      if (LibVlanState::initDoneAttr.is(id)) write("initDone");
      const auto* const vid = LibVlanState::topoVlanAttr.keyOf(id, key);
      if (vid == nullptr) return;
      const auto* const vlan = std::as_const(*view_).topoVlan(*vid);
      if (vlan != nullptr) watchVlan(*vlan);
      write(textOf(vlan == nullptr ? "-" : "+", *vid));
    });
    for (const auto& [vid, vlan] : view_->topoVlan()) watchVlan(vlan);
  }
  explicit ViewLog(const View& agent) : ViewLog(agent.view) {}

 private:
  using LibVlanState = Topology::Library::Vlan::LibVlanState;
  using TopoVlan = Topology::Library::Vlan::TopoVlan;
  using Port = Topology::Library::Vlan::Port;

  void watchVlan(const TopoVlan& vlan) {
    watch(vlan, [this, &vlan](Mox::AttributeId id, const void* key) {
      const auto* const intf = TopoVlan::topoPortAttr.keyOf(id, key);
      if (intf == nullptr) return;
      const auto* const port = vlan.topoPort(*intf);
      if (port != nullptr) watchPort(*port, vlan.vid());
      write(textOf(vlan.vid(), port == nullptr ? " -" : " +", *intf));
    });
    for (const auto& [intf, port] : vlan.topoPort()) watchPort(port, vlan.vid());
  }
  void watchPort(const Port& port, Bridging::VlanId vid) {
    watch(port, [this, &port, at = textOf(vid, "/", port.intf(), " ")](Mox::AttributeId id, const void* key) {
      if (const auto* name = Port::topoAttr.keyOf(id, key)) {
        write(textOf(at, port.topo(*name) == nullptr ? "-" : "+", *name));
      }
      if (Port::blockedAttr.is(id)) write(textOf(at, port.blocked() ? "blocked" : "open"));
      if (Port::allowedTrafficDirectionAttr.is(id)) write(textOf(at, port.allowedTrafficDirection()));
    });
  }

  Mox::Ptr<LibVlanState> view_;
};

}  // namespace Test
