#include <iostream>

#include "topolib/LibState.h"

using namespace Topology::Library;

struct Watcher : Mox::PtrInterface::NotifieeConst {  // told of every change, once
  explicit Watcher(const Mox::Ptr<Topo>& topo) { hasNotificationActiveIs(true), notifierIs(topo); }
  void onAttribute(Mox::AttributeId id, const void* key) override {
    if (const auto* intf = Topo::portAttr.keyOf(id, key)) std::cout << *intf << " comes or goes\n";
  }
};

int main() {
  auto state = libStateFactory("state");
  auto topo = state->topoIs("msti1");
  Watcher watcher(topo);
  topo->portIs("Ethernet1")->vlanPortConfigIs(10, Bridging::VlanPortConfig());
  topo->portIs("Ethernet2")->stateIs(Bridging::Topology::PortState::forwarding);
  for (const auto& [intf, port] : topo->port()) {
    std::cout << intf << ": " << port.state() << ", VLANs: " << port.vlanPortConfig().size() << '\n';
    topo->portDel(intf);  // a pass goes on, whatever changes under it
  }
}
