#include "topolib/vlan/VlanLibSm.h"

#include "topolib/vlan/detail/Log.h"

namespace Topology::Library::Vlan {

VlanLibSm::VlanLibSm(const Mox::Ptr<const LibState>& libState, const Mox::Ptr<LibVlanState>& libVlanState)
    : topoLib_(libState),
      libVlanState_(libVlanState),
      moxTopoLib_(this, libState),
      moxLibVlanState_(this, libVlanState) {
  handleTopoLibTopo();
  handleInitDone();
}

Mox::Ptr<VlanLibSm> VlanLibSm::VlanLibSmIs(const Mox::Ptr<const LibState>& libState,
                                           const Mox::Ptr<LibVlanState>& libVlanState) {
  Mox::Ptr<VlanLibSm> sm = Mox::makePtr<VlanLibSm>(libState, libVlanState);
  sm->hasNotificationActiveIs(true);
  return sm;
}

VlanLibSm::~VlanLibSm() {
  moxDoZombieReactors(true);
  topoSmDelAll();
}

void VlanLibSm::topoLibDel() {
  moxTopoLib_.notifierIs(nullptr);
  topoLib_ = nullptr;
}

void VlanLibSm::libVlanStateDel() {
  moxLibVlanState_.notifierIs(nullptr);
  libVlanState_ = nullptr;
}

void VlanLibSm::handleInitDone() {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanLibSm::handleInitDone()"
                       << " for initDone " << topoLib_->initDone();
  if (!topoLib_->initDone()) return;
  const Mox::Ptr<VlanLibSm> self(this);
  handleTopoLibTopo();
  if (!isRetired() && libVlanState_) libVlanState_->initDoneIs(true);
}

void VlanLibSm::handleTopoLibTopo() {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanLibSm::handleTopoLibTopo()";
  if (!topoLib_->initDone()) return;
  const Mox::Ptr<VlanLibSm> self(this);
  const Mox::Ptr<const LibState> topoLib = topoLib_;
  for (const auto& [name, topo] : topoLib->topo()) handleTopoLibTopo(name);
  for (const auto& [name, sm] : topoSm_) handleTopoLibTopo(name);
}

void VlanLibSm::handleTopoLibTopo(Mox::String name) {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanLibSm::handleTopoLibTopo(Mox::String)"
                       << " for topo " << name;
  if (isRetired() || !topoLib_->initDone()) return;
  const Mox::Ptr<VlanLibSm> self(this);
  // Readers of the view that change the topology while it is built or withdrawn are served after that.
  const auto again = [&] {
    if (TopoSm* const sm = topoSm(name); sm != nullptr && sm->topo() != topoLib_->topo(name)) {
      sm->handleCleanup();
      topoSmDel(name);
    }
    reconcileTopo(name);
  };
  reconciling_.run(
      name, [&] { reconcileTopo(name); }, again, [this] { return isRetired(); });
}

void VlanLibSm::reconcileTopo(const Mox::String& name) {
  const Mox::Ptr<const Topo> topo = topoLib_->topo(name);
  TOPOLIBVLAN_TRACE(9) << " topo " << name << (topo ? " exists" : " doesn't exist");
  if (topo) {
    topoSmIs(name, topo);
  } else if (const Mox::Ptr<TopoSm> sm = topoSm(name)) {
    sm->handleCleanup();
    topoSmDel(name);
  }
}

void VlanLibSm::handleForceEnabledPorts(Quill::IntfId intf) {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanLibSm::handleForceEnabledPorts(Quill::IntfId)"
                       << " for port " << intf;
  const Mox::Ptr<VlanLibSm> self(this);
  for (const auto& [name, sm] : topoSm_) {
    if (VlanPortMapping* const mapping = sm.vlanPortMapping(intf)) mapping->handleTopoVlanPort();
  }
}

Mox::Ptr<TopoSm> VlanLibSm::topoSmIs(const Mox::String& name, const Mox::Ptr<const Topo>& topo) {
  if (TopoSm* const existing = topoSm(name)) {
    if (existing->topo() != topo.get()) Mox::throwMutatorReinstantiating("topoSmIs");
    return existing;
  }
  const Mox::Ptr<TopoSm> sm = TopoSm::TopoSmIs(name, topo, this);
  memberInsert(topoSm_, topoSmAttr, name, sm);
  return sm;
}

void VlanLibSm::topoSmDel(const Mox::String& name) {
  if (TopoSm* const sm = topoSm(name)) sm->moxDoZombieReactors(true);
  memberDel(topoSm_, topoSmAttr, name);
}

void VlanLibSm::topoSmDelAll() {
  for (const auto& [name, sm] : topoSm_) topoSmDel(name);
}

void VlanLibSm::MoxTopoLib::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* name = LibState::topoAttr.keyOf(id, key)) sm().handleTopoLibTopo(*name);
  if (LibState::initDoneAttr.is(id)) sm().handleInitDone();
}

void VlanLibSm::MoxLibVlanState::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* intf = LibVlanState::forceEnabledPortsAttr.keyOf(id, key)) sm().handleForceEnabledPorts(*intf);
}

Mox::Ptr<VlanLibSm> vlanLibSmFactory(const Mox::Ptr<const LibState>& libState,
                                     const Mox::Ptr<LibVlanState>& libVlanState) {
  return VlanLibSm::VlanLibSmIs(libState, libVlanState);
}

}  // namespace Topology::Library::Vlan
