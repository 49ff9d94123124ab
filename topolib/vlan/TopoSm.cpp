#include "topolib/vlan/TopoSm.h"

#include <utility>

#include "topolib/detail/FirstException.h"
#include "topolib/vlan/detail/Log.h"

namespace Topology::Library::Vlan {

TopoSm::TopoSm(Mox::String name, const Mox::Ptr<const Topo>& topo, VlanLibSm* vlanLibSm)
    : name_(std::move(name)), topo_(topo), vlanLibSm_(vlanLibSm), moxTopo_(this, topo) {}

Mox::Ptr<TopoSm> TopoSm::TopoSmIs(const Mox::String& name, const Mox::Ptr<const Topo>& topo, VlanLibSm* vlanLibSm) {
  Mox::Ptr<TopoSm> sm = Mox::makePtr<TopoSm>(name, topo, vlanLibSm);
  sm->doStart();
  return sm;
}

void TopoSm::doStart() {
  hasNotificationActiveIs(true);
  handleTopoPort();
  handleInitialized();
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
  Library::detail::FirstException thrown;
  for (const auto& [intf, port] : topo->port()) {
    thrown.collect([&, intf = intf] { handleTopoPort(intf); });
  }
  for (const auto& [intf, mapping] : vlanPortMapping_) {
    thrown.collect([&, intf = intf] { handleTopoPort(intf); });
  }
  thrown.rethrow();
}

void TopoSm::handleTopoPort(Quill::IntfId intf) {
  if (!initialized() || isRetired() || !topo_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::TopoSm::handleTopoPort(Quill::IntfId)"
                       << " for port " << intf << " in topo " << name_;
  const Mox::Ptr<const Library::Port> port = topo_->port(intf);
  TOPOLIBVLAN_TRACE(9) << " topo port " << name_ << ":" << intf << (port ? " exists" : " doesn't exist");
  const Mox::Ptr<TopoSm> self(this);
  Library::detail::FirstException thrown;
  if (const Mox::Ptr<VlanPortMapping> mapping = vlanPortMapping(intf); mapping && mapping->port() != port.get()) {
    thrown.collect([&] { mapping->handleCleanup(); });
    if (vlanPortMapping(intf) == mapping.get()) vlanPortMappingDel(intf);
  }
  if (port && !isRetired() && topo_ && topo_->port(intf) == port.get()) {
    thrown.collect([&] { vlanPortMappingIs(intf, port); });
  }
  thrown.rethrow();
}

void TopoSm::handleCleanup() {
  const Mox::Ptr<TopoSm> self(this);
  Library::detail::FirstException thrown;
  for (const auto& [intf, mapping] : vlanPortMapping_) {
    const Mox::Ptr<VlanPortMapping> held(&mapping);
    thrown.collect([&] { held->handleCleanup(); });
  }
  thrown.rethrow();
}

Mox::Ptr<VlanPortMapping> TopoSm::vlanPortMappingIs(Quill::IntfId intf, const Mox::Ptr<const Library::Port>& port) {
  if (VlanPortMapping* const existing = vlanPortMapping(intf)) {
    if (existing->port() != port.get()) Mox::throwMutatorReinstantiating("vlanPortMappingIs");
    return existing;
  }
  Mox::Ptr<VlanPortMapping> mapping = Mox::makePtr<VlanPortMapping>(intf, port, this);
  memberInsert(vlanPortMapping_, vlanPortMappingAttr, intf, mapping);
  mapping->doStart();
  return mapping;
}

void TopoSm::vlanPortMappingDel(Quill::IntfId intf) {
  if (VlanPortMapping* const mapping = vlanPortMapping(intf)) mapping->moxDoZombieReactors(true);
  memberDel(vlanPortMapping_, vlanPortMappingAttr, intf);
}

void TopoSm::vlanPortMappingDelAll() {
  const Mox::Ptr<TopoSm> self(this);
  for (const auto& [intf, mapping] : vlanPortMapping_) vlanPortMappingDel(intf);
}

void TopoSm::MoxTopo::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* intf = Topo::portAttr.keyOf(id, key)) sm().handleTopoPort(*intf);
}

}  // namespace Topology::Library::Vlan
