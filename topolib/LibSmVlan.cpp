// What LibSm does when VLANs come and go.

#include "topolib/LibSm.h"
#include "topolib/detail/FirstException.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

void LibSm::handleVidToTopoMap(Bridging::VlanId vid) {
  TOPOLIB_ASSERT_INITIALIZED();
  // One mark: a reader that is told by the run finds the expansion in the new topology already.
  const Mox::Ptr<TopoLibCodef> codef = topoLibCodef_;
  codef->doMark([&] {
    detail::FirstException thrown;
    thrown.collect([&] { doOnVlanPortUpdate(vid, {}); });
    if (!isRetired()) moveExpansion(vid);
    thrown.rethrow();
  });
}

void LibSm::handleVlanConfig(Bridging::VlanId vid) {
  TOPOLIB_ASSERT_INITIALIZED();
  TOPOLIB_TRACE(8) << "LibSm::handleVlanConfig for vlan " << vid;
  doOnVlanPortUpdate(vid, {});
}

void LibSm::doOnVlanPortUpdate(Bridging::VlanId vid, Quill::IntfId intf) {
  TOPOLIB_TRACE(8) << "doOnVlanPortUpdate"
                   << " vid " << vid << " intf " << intf;
  if (!libState_->initDone()) {
    TOPOLIB_TRACE(4) << "doOnVlanPortUpdate: intf " << intf << " vlan " << vid << " init not done, returning ";
    if (topoLibCodef_) topoLibCodef_->doRunRemembered();
    return;
  }
  if (!initialized() || isRetired()) return;
  const Mox::Ptr<TopoLibCodef> codef = topoLibCodef_;
  codef->doMark([&] { recordUpdate(*codef, vid, intf); });
}

void LibSm::recordUpdate(TopoLibCodef& codef, Bridging::VlanId vid, Quill::IntfId intf) {
  const Mox::Ptr<DirtyVlan> dv = dirtyVlanDir_->dirtyVlanIs(vid);
  if (dv->dirty() || dv->intf(intf) != nullptr) {
    TOPOLIB_TRACE(4) << "Already marked dirty, nothing to do, returning";
  } else if (intf.empty() || dirtyVlanPortThreshold_ < dv->intf().size()) {
    TOPOLIB_TRACE(4) << "doOnVlanPortUpdate: setting dirty to true " << vid;
    dv->dirtyIs(true);
    dv->intfDelAll();
    codef.doScheduleBacklogProcessing();
  } else {
    TOPOLIB_TRACE(4) << "doOnVlanPortUpdate: adding intf " << intf << " to vlan " << vid;
    TOPOLIB_MSG("doOnVlanPortUpdate: adding intf {} to vlan {}", intf, vid);
    dv->intfIs(intf);
  }
}

void LibSm::doVlanMapped(Bridging::VlanId vid, const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig) {
  TOPOLIB_TRACE(8) << "doVlanMapped";
  const VlanConfigSm* const sm = vlanConfigSm(vid);
  TOPOLIB_TRACE(2) << " vlanConfigSm( vid ) is " << detail::Address{sm} << " vid is " << vid;
  if (sm != nullptr) TOPOLIB_TRACE(2) << " vlanConfigSm( vid )->vlanConfig() is " << sm->vlanConfig();
  TOPOLIB_TRACE(2) << " vlanConfig is " << vlanConfig;
  if (sm != nullptr && sm->vlanConfig() == vlanConfig.get()) {
    TOPOLIB_TRACE(2) << "VlanConfigSm already there for vlan " << vid;
    return;
  }
  TOPOLIB_TRACE(2) << "Delete old vlanConfigSm and create new for vlan " << vid;
  TOPOLIB_MSG("Delete old vlanConfigSm and create new for vlan {}", vid);
  vlanConfigSmDel(vid);
  vlanConfigSmIs(vid, vlanConfig);
}

void LibSm::doVlanUnmapped(Bridging::VlanId vid) {
  TOPOLIB_TRACE(8) << "doVlanUnmapped";
  TOPOLIB_ASSERT_TEXT(initialized(), "initialized()");
  TOPOLIB_ASSERT_TEXT((vid.value() > 0) && (vid.value() < 4096), "( vid > 0 ) && ( vid < 4096 )");
  if (vlanConfigSm(vid) == nullptr) return;
  TOPOLIB_TRACE(2) << name_ << ": deleting VlanConfigSm for vlan " << vid;
  TOPOLIB_MSG("{}: deleting VlanConfigSm for vlan {}", name_, vid);
  vlanConfigSmDel(vid);
  expanding_.run([this, vid, hadToWait = expanding_.isRunning()] { dropExpansion(vid, hadToWait); });
}

bool LibSm::skipsInternalVlan(Bridging::VlanId vid) const {
  const Bridging::VlanConfig* const vlanConfig = bridging().vlanConfig(vid);
  return vlanConfig != nullptr && vlanConfig->internal() && ignoreInternalVlan_;
}

bool LibSm::hasVlanMappedToTopo(const Mox::String& topoName, Bridging::VlanId vid) const {
  if (!topoToVlanMap_) return false;
  const MappedVlan* const mapped = topoToVlanMap_->mappedVlan(topoName);
  return mapped != nullptr && mapped->vlan(vid) != nullptr;
}

const Bridging::Config& LibSm::bridging() const {
  TOPOLIB_ASSERT_TEXT(brConfig(), "brConfig()");
  return *brConfig();
}

/// The topology that the configuration gives the VLAN to, or null.
const Mox::String* LibSm::mappedTopo(Bridging::VlanId vid) const {
  return config() == nullptr ? nullptr : config()->vidToTopoMap(vid);
}

Mox::String LibSm::configuredTopo(Bridging::VlanId vid) const {
  const Mox::String* const name = mappedTopo(vid);
  return name == nullptr ? Mox::String() : *name;
}

bool skipInternalVlan(const Mox::Ptr<const LibSm>& libSm, Bridging::VlanId vid) {
  return libSm->skipsInternalVlan(vid);
}

bool vlanMappedToTopo(const Mox::Ptr<const LibSm>& libSm, const Mox::String& topoName, Bridging::VlanId vid) {
  return libSm->hasVlanMappedToTopo(topoName, vid);
}

}  // namespace Topology::Library
