#include "topolib/vlan/VlanLibSm.h"

#include "topolib/detail/FirstException.h"
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
  Library::detail::FirstException thrown;
  thrown.collect([this] { handleTopoLibTopo(); });
  if (!isRetired() && libVlanState_) thrown.collect([this] { libVlanState_->initDoneIs(true); });
  thrown.rethrow();
}

void VlanLibSm::handleTopoLibTopo() {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanLibSm::handleTopoLibTopo()";
  if (!topoLib_->initDone()) return;
  const Mox::Ptr<VlanLibSm> self(this);
  const Mox::Ptr<const LibState> topoLib = topoLib_;
  Library::detail::FirstException thrown;
  for (const auto& [name, topo] : topoLib->topo()) {
    thrown.collect([this, &name = name] { handleTopoLibTopo(name); });
  }
  for (const auto& [name, sm] : topoSm_) {
    thrown.collect([this, &name = name] { handleTopoLibTopo(name); });
  }
  thrown.rethrow();
}

void VlanLibSm::handleTopoLibTopo(Mox::String name) {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanLibSm::handleTopoLibTopo(Mox::String)"
                       << " for topo " << name;
  if (isRetired() || !topoLib_ || !topoLib_->initDone()) return;
  const Mox::Ptr<VlanLibSm> self(this);
  const Mox::Ptr<const Topo> topo = topoLib_->topo(name);
  TOPOLIBVLAN_TRACE(9) << " topo " << name << (topo ? " exists" : " doesn't exist");
  Library::detail::FirstException thrown;
  if (const Mox::Ptr<TopoSm> sm = topoSm(name); sm && sm->topo() != topo.get()) {
    thrown.collect([&] { sm->handleCleanup(); });
    if (topoSm(name) == sm.get()) topoSmDel(name);
  }
  if (topo && !isRetired() && topoLib_ && topoLib_->topo(name) == topo.get()) {
    thrown.collect([&] { topoSmIs(name, topo); });
  }
  thrown.rethrow();
}

void VlanLibSm::handleForceEnabledPorts(Quill::IntfId intf) {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanLibSm::handleForceEnabledPorts(Quill::IntfId)"
                       << " for port " << intf;
  const Mox::Ptr<VlanLibSm> self(this);
  Library::detail::FirstException thrown;
  for (const auto& [name, sm] : topoSm_) {
    if (const Mox::Ptr<VlanPortMapping> mapping = sm.vlanPortMapping(intf)) {
      thrown.collect([&] { mapping->handleTopoVlanPort(); });
    }
  }
  thrown.rethrow();
}

Mox::Ptr<TopoSm> VlanLibSm::topoSmIs(const Mox::String& name, const Mox::Ptr<const Topo>& topo) {
  if (TopoSm* const existing = topoSm(name)) {
    if (existing->topo() != topo.get()) Mox::throwMutatorReinstantiating("topoSmIs");
    return existing;
  }
  Mox::Ptr<TopoSm> sm = Mox::makePtr<TopoSm>(name, topo, this);
  memberInsert(topoSm_, topoSmAttr, name, sm);
  sm->doStart();
  return sm;
}

void VlanLibSm::topoSmDel(const Mox::String& name) {
  if (TopoSm* const sm = topoSm(name)) sm->moxDoZombieReactors(true);
  memberDel(topoSm_, topoSmAttr, name);
}

void VlanLibSm::topoSmDelAll() {
  const Mox::Ptr<VlanLibSm> self(this);
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
