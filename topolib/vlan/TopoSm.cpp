#include "topolib/vlan/TopoSm.h"

#include <utility>

#include "topolib/vlan/detail/Log.h"

namespace Topology::Library::Vlan {

TopoSm::TopoSm(Mox::String name, const Mox::Ptr<const Topo>& topo, VlanLibSm* vlanLibSm)
    : name_(std::move(name)), topo_(topo), vlanLibSm_(vlanLibSm), moxTopo_(this, topo) {
  handleTopoPort();
  handleInitialized();
}

Mox::Ptr<TopoSm> TopoSm::TopoSmIs(const Mox::String& name, const Mox::Ptr<const Topo>& topo, VlanLibSm* vlanLibSm) {
  Mox::Ptr<TopoSm> sm = Mox::makePtr<TopoSm>(name, topo, vlanLibSm);
  sm->hasNotificationActiveIs(true);
  return sm;
}

TopoSm::~TopoSm() {
  moxDoZombieReactors(true);
  vlanPortMappingDelAll();
}

void TopoSm::topoDel() {
  moxTopo_.notifierIs(nullptr);
  topo_ = nullptr;
}

void TopoSm::handleInitialized() {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::TopoSm::handleInitialized()";
  initializedIs(true);
  handleTopoPort();
}

void TopoSm::handleTopoPort() {
  if (!initialized() || !topo_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::TopoSm::handleTopoPort()"
                       << " in topo " << name_;
  const Mox::Ptr<TopoSm> self(this);
  const Mox::Ptr<const Topo> topo = topo_;
  for (const auto& [intf, port] : topo->port()) handleTopoPort(intf);
  for (const auto& [intf, mapping] : vlanPortMapping_) handleTopoPort(intf);
}

void TopoSm::handleTopoPort(Quill::IntfId intf) {
  if (!initialized() || isRetired() || !topo_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::TopoSm::handleTopoPort(Quill::IntfId)"
                       << " for port " << intf << " in topo " << name_;
  const Mox::Ptr<const Library::Port> port = topo_->port(intf);
  TOPOLIBVLAN_TRACE(9) << " topo port " << name_ << ":" << intf << (port ? " exists" : " doesn't exist");
  if (port) {
    vlanPortMappingIs(intf, port);
  } else if (const Mox::Ptr<VlanPortMapping> mapping = vlanPortMapping(intf)) {
    mapping->handleCleanup();
    vlanPortMappingDel(intf);
  }
}

void TopoSm::handleCleanup() {
  const Mox::Ptr<TopoSm> self(this);
  for (const auto& [intf, mapping] : vlanPortMapping_) mapping.handleCleanup();
}

Mox::Ptr<VlanPortMapping> TopoSm::vlanPortMappingIs(Quill::IntfId intf, const Mox::Ptr<const Library::Port>& port) {
  if (VlanPortMapping* const existing = vlanPortMapping(intf)) {
    if (!existing->isBuiltFrom(port, this)) Mox::throwMutatorReinstantiating("vlanPortMappingIs");
    return existing;
  }
  const Mox::Ptr<VlanPortMapping> mapping = VlanPortMapping::VlanPortMappingIs(intf, port, this);
  memberInsert(vlanPortMapping_, vlanPortMappingAttr, intf, mapping);
  return mapping;
}

void TopoSm::vlanPortMappingDel(Quill::IntfId intf) {
  if (VlanPortMapping* const mapping = vlanPortMapping(intf)) mapping->moxDoZombieReactors(true);
  memberDel(vlanPortMapping_, vlanPortMappingAttr, intf);
}

void TopoSm::vlanPortMappingDelAll() {
  for (const auto& [intf, mapping] : vlanPortMapping_) vlanPortMappingDel(intf);
}

void TopoSm::MoxTopo::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* intf = Topo::portAttr.keyOf(id, key)) sm().handleTopoPort(*intf);
}

}  // namespace Topology::Library::Vlan
