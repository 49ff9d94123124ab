// An agent that starts the topology library, the status publisher and the VLAN view over its inputs, changes the
// configuration, and shows which ports forward VLAN 10, and why the others do not.

#include <iostream>

#include "mox/ActivityManager.h"
#include "topolib/TopoLib.h"
#include "topolib/vlan/TopoLibVlan.h"

using namespace Topology::Library;
using Bridging::Topology::PortState;

namespace {

constexpr auto ports = {"Ethernet1", "Ethernet2", "Ethernet3"};

void show(const LibState& state, const Vlan::LibVlanState& view) {
  const Topo* topo = state.topo("msti1");
  const Vlan::TopoVlan* vlan = view.topoVlan(10);
  for (const char* intf : ports) {
    const Port* port = topo->port(intf);
    std::cout << intf << ": " << (port->active() ? "active, " : "inactive, ") << port->state() << "; VLAN 10 ";
    const Vlan::Port* member = vlan->topoPort(intf);
    if (member == nullptr) {
      std::cout << "does not have it: it is not active\n";
    } else if (member->blocked()) {
      std::cout << "is blocked: the port is " << port->state() << " in " << topo->name() << '\n';
    } else {
      std::cout << "forwards\n";
    }
  }
}

}  // namespace

int main() {
  // What other components write, and the agent hands to the library.
  auto config = Bridging::Topology::configFactory("config");
  auto instance = Bridging::Topology::Inst::statusFactory("instance");
  auto bridging = Bridging::configFactory("bridging");
  auto interfaces = Interface::ethIntfStatusDirFactory("interfaces");

  auto root = rootFactory("root");
  auto state = libStateFactory("state");
  auto view = Vlan::libVlanStateFactory("view");
  auto libSm = root->doStartLibSm("topoLib", config, nullptr, instance, bridging, state, LibSmMode::createStatus,
                                  /*ignoreInternalVlan=*/true, /*deferProcessing=*/true, "LocalInterface");
  root->topologyStatusLibSmIs(instance, state, config, interfaces);  // reports the ports whose link is up
  auto viewSm = Vlan::vlanLibSmFactory(state, view);

  auto msti1 = config->topoConfigIs("msti1", 1);
  config->vidToTopoMapIs(10, "msti1");
  for (const char* intf : ports) {
    auto status = interfaces->intfStatusIs(intf);
    status->linkStatusIs(Interface::LinkStatus::up);
    status->forwardingModelIs(Interface::ForwardingModel::bridged);
    bridging->vlanConfigIs(10)->vlanPortConfigIs(intf, {});
    msti1->topoPortConfigIs(intf, 0, PortState::forwarding);
  }
  Mox::activityManager()->run();  // until nothing is pending
  show(*state, *view);

  msti1->topoPortConfigIs("Ethernet2", 0, PortState::blocking);
  interfaces->intfStatus("Ethernet3")->linkStatusIs(Interface::LinkStatus::down);
  Mox::activityManager()->run();
  std::cout << "Ethernet2 is blocked, and Ethernet3 has lost its link:\n";
  show(*state, *view);
}
