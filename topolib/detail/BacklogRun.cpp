#include "topolib/detail/BacklogRun.h"

#include "mox/System.h"
#include "topolib/detail/Log.h"

namespace Topology::Library::detail {

BacklogRun::BacklogRun(TopoLibCodef& codef)
    : codef_(codef),
      libSm_(*codef.libSm()),
      directory_(codef.dirtyVlanDir()),
      isDeferred_(codef.libSm()->deferProcessing()) {}

void BacklogRun::run() {
  TOPOLIB_TRACE(8) << "TopoLibCodef::doProcessBacklog()";
  TOPOLIB_MSG("TopoLibCodef::doProcessBacklog()");
  start_ = Mox::System::currentTime();
  deadline_ = start_ + codef_.backlogQuantum();
  TOPOLIB_TRACE(5) << "start iterating over dirty vlans ";
  if (directory_ && !walk()) return;
  TOPOLIB_TRACE(5) << "no more work to do ";
  TOPOLIB_TRACE(5) << "done processing ";
  close();
}

/// In a circle, from the bookmark on, until the directory is empty; false if the run is over before. The directory may
/// change under it.
bool BacklogRun::walk() {
  const auto& dirtyVlans = directory_->dirtyVlan();
  const Bridging::VlanIdOrNone bookmark = codef_.bookmark();
  auto at = bookmark.isNone() ? dirtyVlans.begin() : dirtyVlans.startAtHash(Bridging::VlanId(bookmark));
  while (!dirtyVlans.empty()) {
    if (!at) at = dirtyVlans.begin();
    const Vlan vlan = readVlan(at.key());
    const Outcome outcome = process(vlan);
    if (outcome == Outcome::runOver) return false;
    if (dirtyVlans.empty()) break;
    if (outcome == Outcome::done && isDeferred_ && (isTimeUp() || codef_.yieldAfterOne())) {
      yield("running out of time, stop processing, done! ");
      return false;
    }
    at.advance();
  }
  return true;
}

void BacklogRun::close() {
  codef_.updatesProcessedInc(processed_);
  codef_.timeUsedInc(Mox::System::currentTime() - start_);
  codef_.dispatchCountInc(1);
  codef_.codefState()->idleIs(true);
  TOPOLIB_TRACE(9) << "TopoLibCodef::doProcessBacklog idleIs " << codef_.codefState()->idle();
}

void BacklogRun::yield(const char* text) {
  codef_.timeMinIs(0.0);
  codef_.codefState()->idleIs(false);
  TOPOLIB_TRACE(9) << "TopoLibCodef::doProcessBacklog idleIs " << codef_.codefState()->idle();
  codef_.yieldBeforeFinishingCountInc(1);
  TOPOLIB_TRACE(5) << text;
}

/// After each port: whether to stop here. `hasMore` says whether work of the present kind remains.
BacklogRun::Outcome BacklogRun::itemDone(bool hasMore) {
  ++processed_;
  if (codef_.isRetired()) return Outcome::runOver;
  if (!isDeferred_) return Outcome::done;
  now_ = Mox::System::currentTime();
  if (!isTimeUp() && !(codef_.yieldAfterOne() && hasMore)) return Outcome::done;
  yield("running out of time, stop processing ");
  return Outcome::runOver;
}

BacklogRun::Vlan BacklogRun::readVlan(Bridging::VlanId vid) {
  TOPOLIB_TRACE(5) << "Processing vlan " << vid;
  now_ = Mox::System::currentTime();
  const Mox::Ptr<DirtyVlan> dv = directory_->dirtyVlan(vid);
  TOPOLIB_ASSERT_TEXT(dv, "dv");
  const Mox::Ptr<const Bridging::VlanConfig> vlanConfig = libSm_.bridging().vlanConfig(vid);
  TOPOLIB_TRACE(5) << " vlanConfig is " << vlanConfig;
  const Mox::String topoName = libSm_.configuredTopo(vid);
  const Bridging::Topology::TopoConfig* const topoConfig =
      libSm_.config() == nullptr ? nullptr : libSm_.config()->topoConfig(topoName);
  TOPOLIB_TRACE(5) << " topoConfig is " << topoConfig;
  const bool isTopoOrphan = libSm_.hasOrphan(topoConfig);
  TOPOLIB_TRACE(5) << "isTopoOrphan is " << isTopoOrphan;
  return {vid, dv, vlanConfig, topoName, isTopoOrphan};
}

/// What a reader of LibState throws goes on to the caller. The VLAN is visited again then, so that nothing of it is lost.
BacklogRun::Outcome BacklogRun::process(const Vlan& vlan) {
  try {
    if (vlan.dv->dirty()) return visit(vlan);
    if (codef_.bookmark() == vlan.vid) return resume(vlan);
    return servePartlyDirty(vlan);
  } catch (...) {
    forgetPlace();
    vlan.dv->dirtyIs(true);
    codef_.doRememberRun();
    throw;
  }
}

BacklogRun::Outcome BacklogRun::servePartlyDirty(const Vlan& vlan) {
  TOPOLIB_TRACE(5) << "vlan is not all dirty ";
  if (!isInService(vlan)) {
    vlan.dv->intfDelAll();
    return finish(vlan);
  }
  while (!vlan.dv->intf().empty()) {
    const Quill::IntfId intf = vlan.dv->intf().begin().key();
    TOPOLIB_TRACE(5) << "processing interface " << intf;
    vlan.dv->intfDel(intf);
    if (vlan.config->vlanPortConfig(intf) == nullptr) {
      libSm_.doOnVlanPortConfigDelete(vlan.vid, intf, vlan.topoName);
    } else if (libSm_.hasTopoPresent(vlan.topoName) && libSm_.hasVlanMappedToTopo(vlan.topoName, vlan.vid)) {
      libSm_.doOnVlanPortConfigAdd(vlan.vid, intf, vlan.topoName);
    }
    if (itemDone(!vlan.dv->intf().empty()) == Outcome::runOver) return Outcome::runOver;
  }
  return finish(vlan);
}

BacklogRun::Outcome BacklogRun::visit(const Vlan& vlan) {
  codef_.oldTopoNameIs(libSm_.topoToVlanMap()->topoOfVlan(vlan.vid));
  TOPOLIB_TRACE(5) << "oldTopoName is " << codef_.oldTopoName();
  if (isNewToOrphan(vlan)) {
    TOPOLIB_TRACE(5) << "vlan " << vlan.vid << " is a new vlan being mapped to orphan topo, skiping it";
    leaveDirectory(vlan.vid);
    return codef_.isRetired() ? Outcome::runOver : Outcome::skipped;
  }
  begin(vlan);
  if (codef_.isRetired()) return Outcome::runOver;
  if (leave(vlan) == Outcome::runOver) return Outcome::runOver;
  return enter(vlan);
}

BacklogRun::Outcome BacklogRun::resume(const Vlan& vlan) {
  bookmark(vlan);
  if (!codef_.oldTopoName().empty()) {
    return leave(vlan) == Outcome::runOver ? Outcome::runOver : enter(vlan);
  }
  // It has left already. If it entered a topology that is no longer its own, it has to leave that one as well.
  const Mox::String entered = libSm_.topoToVlanMap()->topoOfVlan(vlan.vid);
  if (!entered.empty() && entered != vlan.topoName) {
    vlan.dv->dirtyIs(true);
    return visit(vlan);
  }
  return enter(vlan);
}

void BacklogRun::begin(const Vlan& vlan) {
  libSm_.populatePortSet(*codef_.delPendingPortSet(), vlan.vid, codef_.oldTopoName());
  if (isInService(vlan)) {
    libSm_.doVlanMapped(vlan.vid, vlan.config);
  } else {
    libSm_.doVlanUnmapped(vlan.vid);
  }
  if (codef_.isRetired()) return;
  codef_.deletedPortSet()->portDelAll();
  topoPortMapChanged(codef_.oldTopoName(), vlan.vid);
  bookmark(vlan);
  // A reader that was told of something just now found the VLAN marked already.
  const bool isAsRead =
      libSm_.configuredTopo(vlan.vid) == vlan.topoName && libSm_.bridging().vlanConfig(vlan.vid) == vlan.config.get();
  if (!isAsRead) vlan.dv->dirtyIs(true);
}

/// From here on a run that is interrupted goes on with this VLAN.
void BacklogRun::bookmark(const Vlan& vlan) {
  vlan.dv->dirtyIs(false);
  codef_.bookmarkIs(vlan.vid);
  TOPOLIB_TRACE(5) << " setting bookmark to " << vlan.vid;
}

BacklogRun::Outcome BacklogRun::leave(const Vlan& vlan) {
  const Mox::Ptr<PortSet> pending = codef_.delPendingPortSet();
  const Mox::String oldTopoName = codef_.oldTopoName();
  for (const auto& [intf, present] : pending->port()) {
    vlan.dv->intfDel(intf);
    libSm_.doOnVlanPortConfigDelete(vlan.vid, intf, oldTopoName);
    pending->portDel(intf);
    codef_.deletedPortSet()->portIs(intf);
    if (itemDone(!pending->port().empty()) == Outcome::runOver) return Outcome::runOver;
  }
  finishLeaving(vlan);
  return codef_.isRetired() ? Outcome::runOver : Outcome::done;
}

void BacklogRun::finishLeaving(const Vlan& vlan) {
  TOPOLIB_TRACE(5) << "Finished serving all the ports in old topo,Cleaning-up the deletedPortSet";
  codef_.deletedPortSet()->portDelAll();
  const Mox::String oldTopoName = codef_.oldTopoName();
  if (oldTopoName.empty()) return;
  if (const Mox::Ptr<MappedVlan> mapped = libSm_.topoToVlanMap()->mappedVlan(oldTopoName)) mapped->vlanDel(vlan.vid);
  libSm_.doMaybeDeleteTopo(oldTopoName);
  codef_.oldTopoNameIs({});
}

BacklogRun::Outcome BacklogRun::enter(const Vlan& vlan) {
  // Asked afresh: the old topology may just have been rebuilt under the same name.
  if (isInService(vlan) && takesVlanIn(vlan.topoName)) {
    libSm_.topoToVlanMap()->mappedVlanIs(vlan.topoName)->vlanIs(vlan.vid);
    if (servePorts(vlan) == Outcome::runOver) return Outcome::runOver;
    libSm_.doReapplyExpansion(vlan.vid, vlan.topoName);
  }
  return codef_.isRetired() ? Outcome::runOver : finish(vlan);
}

BacklogRun::Outcome BacklogRun::servePorts(const Vlan& vlan) {
  const Mox::Ptr<PortSet> served = codef_.deletedPortSet();
  for (const auto& [intf, portConfig] : vlan.config->vlanPortConfig()) {
    if (served->port(intf) != nullptr) continue;
    TOPOLIB_TRACE(5) << "Serving port " << intf << " in vlan " << vlan.vid;
    vlan.dv->intfDel(intf);
    if (libSm_.hasTopoPresent(vlan.topoName)) libSm_.doOnVlanPortConfigAdd(vlan.vid, intf, vlan.topoName);
    served->portIs(intf);
    if (itemDone(served->port().size() < vlan.config->vlanPortConfig().size()) == Outcome::runOver) {
      return Outcome::runOver;
    }
  }
  return Outcome::done;
}

bool BacklogRun::isInService(const Vlan& vlan) const { return vlan.config && !libSm_.skipsInternalVlan(vlan.vid); }

bool BacklogRun::isNewToOrphan(const Vlan& vlan) const {
  return vlan.isTopoOrphan && codef_.oldTopoName().empty() && !libSm_.hasVlanMappedToTopo(vlan.topoName, vlan.vid);
}

/// A topology on its way out takes nobody in: it could never lose its last VLAN.
bool BacklogRun::takesVlanIn(const Mox::String& topoName) const {
  return !topoName.empty() && libSm_.wantsTopo(topoName) && !libSm_.hasOrphan(libSm_.config()->topoConfig(topoName));
}

BacklogRun::Outcome BacklogRun::finish(const Vlan& vlan) {
  if (vlan.dv->dirty() || !vlan.dv->intf().empty()) {
    forgetPlace();  // It was marked again while it was served, and stays.
  } else {
    TOPOLIB_TRACE(5) << "deleting vlan " << vlan.vid << " from the dirtyVlan ";
    leaveDirectory(vlan.vid);
  }
  return codef_.isRetired() ? Outcome::runOver : Outcome::done;
}

/// The first complete drain ends the initial pass.
void BacklogRun::leaveDirectory(Bridging::VlanId vid) {
  directory_->dirtyVlanDel(vid);
  forgetPlace();
  if (directory_->dirtyVlan().empty() && !libSm_.libState()->initDone()) libSm_.doOnInitDone();
}

void BacklogRun::forgetPlace() {
  codef_.bookmarkIs(0);
  codef_.oldTopoNameIs({});
}

/// Traces whether LibState agrees with the configuration of a VLAN that is about to leave its topology.
void BacklogRun::topoPortMapChanged(const Mox::String& oldTopoName, Bridging::VlanId vid) const {
  if (!traceHandle.isEnabled(2)) return;
  TOPOLIB_TRACE(2) << "topoPortMapChanged:  oldTopoName " << oldTopoName << " vid " << vid;
  const Topo* const topo = std::as_const(*libSm_.libState()).topo(oldTopoName);
  const Bridging::VlanConfig* const vlanConfig = libSm_.bridging().vlanConfig(vid);
  bool agrees = topo != nullptr && vlanConfig != nullptr;
  if (agrees) {
    for (const auto& [intf, portConfig] : vlanConfig->vlanPortConfig()) {
      const Port* const port = topo->port(intf);
      const Bridging::VlanPortConfig* const published = port == nullptr ? nullptr : port->vlanPortConfig(vid);
      agrees = agrees && published != nullptr && *published == portConfig;
    }
  }
  TOPOLIB_TRACE(2) << (agrees ? "topoPort mapping in correct in libState" : "topoPort mapping stale in libState");
}

}  // namespace Topology::Library::detail
