#include "topolib/TopoLibCodef.h"

#include <cmath>
#include <limits>

#include "topolib/LibSm.h"
#include "topolib/detail/BacklogRun.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

namespace {

constexpr double never = std::numeric_limits<double>::infinity();

}  // namespace

TopoLibCodef::TopoLibCodef(LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                           const Mox::Ptr<const Mox::Clock>& clock)
    : libSm_(libSm), directory_(dirtyVlanDir), dirtyVlanDir_(this, dirtyVlanDir), clock_(this, clock) {
  if (dirtyVlanDir) {
    for (const auto& [vid, dv] : dirtyVlanDir->dirtyVlan()) dirtyVlanIs(&dv);
  }
  handleInitialized();
}

Mox::Ptr<TopoLibCodef> TopoLibCodef::TopoLibCodefIs(LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                                                    const Mox::Ptr<const Mox::Clock>& clock) {
  if (libSm == nullptr) Mox::throwNewEntityArgsException("topoLibCodefFactory", "libSm is null");
  return Mox::makePtr<TopoLibCodef>(libSm, dirtyVlanDir, clock);
}

TopoLibCodef::~TopoLibCodef() { moxDoZombieReactors(true); }

bool TopoLibCodef::isBuiltFrom(const LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                               const Mox::Ptr<const Mox::Clock>& clock) const noexcept {
  return libSm == libSm_ && dirtyVlanDir == directory_ && clock.get() == this->clock();
}

void TopoLibCodef::backlogQuantumIs(double seconds) {
  if (std::isnan(seconds)) Mox::throwRangeException("backlogQuantum nan not allowed");
  backlogQuantum_ = seconds;
}

void TopoLibCodef::handleInitialized() {
  initializedIs(true);
  delPendingPortSet_ = Mox::makePtr<PortSet>();
  deletedPortSet_ = Mox::makePtr<PortSet>();
  delPendingPortSet_->hasNotificationActiveIs(true);
  deletedPortSet_->hasNotificationActiveIs(true);
  if (!libSm_->deferProcessing()) clock_.timeMinIs(never);
  codefStateIs("codefState")->idleIs(clock_.timeMin() == never);
  TOPOLIB_TRACE(9) << "TopoLibCodef::handleInitialized idleIs " << codefState_->idle();
  for (const auto& [vid, reactor] : dirtyVlan_) reactor.handleInitialized();
  doRunRemembered();
}

void TopoLibCodef::doScheduleBacklogProcessing() {
  if (isRetired()) return;
  const bool isDeferred = libSm_->deferProcessing();
  if (!initialized() || (!isDeferred && marks_ != 0)) {
    isRunRemembered_ = true;
  } else if (isDeferred) {
    clock_.timeMinIs(0.0);
    codefState_->idleIs(false);
    TOPOLIB_TRACE(9) << "TopoLibCodef::doScheduleBacklogProcessing idleIs " << codefState_->idle();
  } else {
    doProcessBacklog();
  }
}

void TopoLibCodef::doRememberRun() {
  if (libSm_->deferProcessing()) {
    clock_.timeMinIs(0.0);
  } else {
    isRunRemembered_ = true;
  }
}

void TopoLibCodef::doRunRemembered() {
  if (initialized() && marks_ == 0 && std::exchange(isRunRemembered_, false)) doScheduleBacklogProcessing();
}

void TopoLibCodef::doProcessBacklog() {
  if (isRunning_ || isRetired()) return;
  const detail::Busy busy(*libSm_);
  const Mox::Ptr<TopoLibCodef> self(this);
  const detail::Flag running(isRunning_);
  detail::BacklogRun(*this).run();
}

void TopoLibCodef::dirtyVlanIs(const Mox::Ptr<const DirtyVlan>& dirtyVlan) {
  if (!dirtyVlan) Mox::throwMutatorArgNullPointerException("dirtyVlanIs", "dirtyVlan");
  if (dirtyVlan_.has(dirtyVlan->vlanId())) return;
  const Mox::Ptr<MoxDirtyVlan> reactor = Mox::makePtr<MoxDirtyVlan>(this, dirtyVlan);
  reactor->handleInitialized();
  memberInsert(dirtyVlan_, dirtyVlanAttr, dirtyVlan->vlanId(), reactor);
  reactor->handleVlanPortUpdate();
}

void TopoLibCodef::dirtyVlanDel(Bridging::VlanId vid) {
  if (MoxDirtyVlan* const gone = dirtyVlan_.find(vid)) gone->notifierIs(nullptr);
  memberDel(dirtyVlan_, dirtyVlanAttr, vid);
}

void TopoLibCodef::dirtyVlanDelAll() {
  for (const auto& [vid, reactor] : dirtyVlan_) dirtyVlanDel(vid);
}

void TopoLibCodef::MoxDirtyVlanDir::onChange(Mox::AttributeId id, const void* key) {
  const auto* const changed = DirtyVlanDir::dirtyVlanAttr.keyOf(id, key);
  if (changed == nullptr) return;
  const Bridging::VlanId vid = *changed;
  const DirtyVlan* const dv = notifier()->dirtyVlan(vid);
  // A directory may take a VLAN out and in again before this is told of either.
  if (const MoxDirtyVlan* const reactor = sm().dirtyVlan(vid); reactor != nullptr && reactor->notifier() != dv) {
    sm().dirtyVlanDel(vid);
  }
  if (dv != nullptr) sm().dirtyVlanIs(dv);
}

void TopoLibCodef::MoxClock::onTimeMin() { sm().doProcessBacklog(); }

void TopoLibCodef::MoxDirtyVlan::handleInitialized() noexcept { initialized_ = sm().initialized(); }

void TopoLibCodef::MoxDirtyVlan::handleVlanPortUpdate() { sm().doScheduleBacklogProcessing(); }

void TopoLibCodef::MoxDirtyVlan::handleVlanPortUpdate(Quill::IntfId /*intf*/) {
  TOPOLIB_ASSERT_TEXT(initialized_, "initialized_");
  sm().updatesSeenInc(1);
  sm().doScheduleBacklogProcessing();
}

void TopoLibCodef::MoxDirtyVlan::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* intf = DirtyVlan::intfAttr.keyOf(id, key)) handleVlanPortUpdate(*intf);
}

Mox::Ptr<TopoLibCodef> topoLibCodefFactory(LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                                           const Mox::Ptr<const Mox::Clock>& clock) {
  return TopoLibCodef::TopoLibCodefIs(libSm, dirtyVlanDir, clock);
}

Mox::Ptr<TopoLibCodefState> TopoLibCodef::codefStateIs(const Mox::String& name) {
  return singleIs(codefState_, codefStateAttr, name);
}
void TopoLibCodef::codefStateDel() { singleDel(codefState_, codefStateAttr); }

}  // namespace Topology::Library
