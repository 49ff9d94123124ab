#include "topolib/vlan/LibVlanState.h"

#include <utility>

#include "topolib/vlan/VlanPortMapping.h"

namespace Topology::Library::Vlan {

Port::Port(Quill::IntfId intf) noexcept : intf_(intf) {}
Port::~Port() = default;

void Port::topoIs(const Mox::String& name, const Mox::Ptr<VlanPortMapping>& mapping) {
  Mox::Ptr<VlanPortMapping> value = mapping;
  if (topo_.exchange(name, value)) notify(topoAttr, name);
}

void Port::topoDel(const Mox::String& name) {
  const std::optional<Mox::Ptr<VlanPortMapping>> gone = topo_.take(name);
  if (gone) notify(topoAttr, name);
}

void Port::topoDelAll() {
  const Mox::Ptr<Port> self(this);
  for (auto i = topo_.begin(); i; i.advance()) topoDel(Mox::String(i.key()));
}

TopoVlan::TopoVlan(Bridging::VlanId vid) noexcept : vid_(vid) {}
TopoVlan::~TopoVlan() { topoPortDelAll(); }

LibVlanState::LibVlanState(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
LibVlanState::~LibVlanState() { topoVlanDelAll(); }

Mox::Ptr<Port> TopoVlan::topoPortIs(Quill::IntfId intf) { return memberIs(topoPort_, topoPortAttr, intf); }
void TopoVlan::topoPortDel(Quill::IntfId intf) { memberDel(topoPort_, topoPortAttr, intf); }
void TopoVlan::topoPortDelAll() { memberDelAll(topoPort_, topoPortAttr); }
Mox::Ptr<TopoVlan> LibVlanState::topoVlanIs(Bridging::VlanId vid) { return memberIs(topoVlan_, topoVlanAttr, vid); }
void LibVlanState::topoVlanDel(Bridging::VlanId vid) { memberDel(topoVlan_, topoVlanAttr, vid); }
void LibVlanState::topoVlanDelAll() { memberDelAll(topoVlan_, topoVlanAttr); }
void LibVlanState::forceEnabledPortsDelAll() { valueDelAll(forceEnabledPorts_, forceEnabledPortsAttr); }

Mox::Ptr<LibVlanState> libVlanStateFactory(const Mox::String& name) { return Mox::makePtr<LibVlanState>(name); }

}  // namespace Topology::Library::Vlan
