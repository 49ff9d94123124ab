#include "topolib/LibSm.h"

#include "mox/ActivityManager.h"
#include "topolib/detail/FirstException.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

LibSm::LibSm(const Mox::String& name, const Mox::Ptr<const Bridging::Topology::Config>& config,
             const Mox::Ptr<const Bridging::Topology::Status>& status,
             const Mox::Ptr<Bridging::Topology::Inst::Status>& statusInst,
             const Mox::Ptr<const Bridging::Config>& brConfig, const Mox::Ptr<LibState>& libState, LibSmMode libSmMode,
             bool ignoreInternalVlan, bool deferProcessing, const std::uint64_t& validIntfPtr)
    : name_(name),
      config_(config),
      status_(status),
      statusInst_(statusInst),
      brConfig_(brConfig),
      moxConfig_(this, config),
      moxStatus_(this, status),
      moxStatusInst_(this, statusInst),
      moxBrConfig_(this, brConfig),
      moxEthIntfStatusDir_(this),
      libState_(libState),
      libSmMode_(libSmMode),
      ignoreInternalVlan_(ignoreInternalVlan),
      deferProcessing_(deferProcessing),
      validIntfPtr_(validIntfPtr) {
  handleInitialized();
}

Mox::Ptr<LibSm> LibSm::LibSmIs(const Mox::String& name, const Mox::Ptr<const Bridging::Topology::Config>& config,
                               const Mox::Ptr<const Bridging::Topology::Status>& status,
                               const Mox::Ptr<Bridging::Topology::Inst::Status>& statusInst,
                               const Mox::Ptr<const Bridging::Config>& brConfig, const Mox::Ptr<LibState>& libState,
                               LibSmMode libSmMode, bool ignoreInternalVlan, bool deferProcessing,
                               const std::uint64_t& validIntfPtr) {
  return Mox::makePtr<LibSm>(name, config, status, statusInst, brConfig, libState, libSmMode, ignoreInternalVlan,
                             deferProcessing, validIntfPtr);
}

LibSm::~LibSm() {
  moxDoZombieReactors(true);
  topoConfigSmDelAll();
  vlanConfigSmDelAll();
  vlanToExpVlanSetMapDelAll();
  expVlanToVlanSetMapDelAll();
  topoLibCodefDel();
  topoToVlanMapDel();
}

void LibSm::zeroReferencesIs(bool zero) {
  if (zero && busy_.depth != 0) {
    busy_.isReleased = true;
    moxDoZombieReactors(true);
  } else {
    Notifier::zeroReferencesIs(zero);
  }
}

detail::Busy::Busy(LibSm& libSm) noexcept : libSm_(libSm) { ++libSm_.busy_.depth; }

detail::Busy::~Busy() {
  if (--libSm_.busy_.depth == 0 && libSm_.busy_.isReleased) libSm_.zeroReferencesIs(true);
}

void LibSm::handleInitialized() {
  const detail::Busy busy(*this);
  if (status() != nullptr && ethIntfStatusDir() == nullptr) return;
  TOPOLIB_TRACE(8) << "LibSm::handleInitialized";
  initializedIs(true);
  TOPOLIB_ASSERT_TEXT(libState(), "libState()");
  if (status() != nullptr) TOPOLIB_ASSERT_TEXT(!status() || !statusInst(), "!status() || !statusInst()");

  dirtyVlanDirIs(DirtyVlanDir::DirtyVlanDirIs("dirtyVlanDir"));
  TOPOLIB_TRACE(9) << "LibSm::handleInitialized create Codef";
  topoLibCodefIs(this, dirtyVlanDir_, Mox::activityManager()->config()->clock());
  topoToVlanMapIs("topoToVlanMap");

  // Whatever a reader throws, the start-up is complete afterwards.
  detail::FirstException thrown;
  if (const Mox::Ptr<const Bridging::Topology::Config> configured = config()) {
    for (const auto& [topoName, topoConfig] : configured->topoConfig()) {
      thrown.collect([this, &name = topoName] { handleTopoConfigOrStatus(name); });
      if (isRetired()) break;
    }
  }
  if (!isRetired()) thrown.collect([&] { markConfiguredVlans(); });
  const bool isDone = isRetired() || !dirtyVlanDir_->dirtyVlan().empty() || libState_->initDone();
  if (!isDone) thrown.collect([&] { doOnInitDone(); });
  thrown.rethrow();
}

/// The whole loop is one mark: the first run that drains the backlog has come to every VLAN.
void LibSm::markConfiguredVlans() {
  topoLibCodef_->doMark([this] {
    const Mox::Ptr<const Bridging::Topology::Config> configured = config();
    if (!configured) return;
    for (const auto& [vid, topoName] : configured->vidToTopoMap()) {
      dirtyVlanDir_->dirtyVlanIs(vid)->dirtyIs(true);
      topoLibCodef_->doScheduleBacklogProcessing();
    }
  });
}

void LibSm::doOnInitDone() {
  TOPOLIB_TRACE(8) << "LibSm::doOnInitDone";
  TOPOLIB_MSG("LibSm::doOnInitDone");
  detail::FirstException thrown;
  thrown.collect([&] { libState_->initDoneIs(true); });
  if (!isRetired()) markEveryVlan();
  thrown.rethrow();
}

/// Marks were dropped until now, so besides the configured VLANs those count that may have left the configuration.
void LibSm::markEveryVlan() {
  const Mox::Ptr<TopoLibCodef> codef = topoLibCodef_;
  codef->doMark([this] {
    if (const Mox::Ptr<const Bridging::Topology::Config> configured = config()) {
      for (const auto& [vid, topoName] : configured->vidToTopoMap()) doOnVlanPortUpdate(vid, {});
    }
    for (const auto& [topoName, mapped] : topoToVlanMap_->mappedVlan()) {
      for (const auto& [vid, isMapped] : mapped.vlan()) doOnVlanPortUpdate(vid, {});
    }
    for (const auto& [vid, sm] : vlanConfigSm_) doOnVlanPortUpdate(vid, {});
  });
}

void LibSm::handleEthIntfStatusDir() {
  TOPOLIB_TRACE(8) << "handleEthIntfStatusDir";
  if (!initialized() && !isRetired()) handleInitialized();
}

void LibSm::ethIntfStatusDirIs(const Mox::Ptr<const Interface::EthIntfStatusDir>& dir) {
  ethIntfStatusDir_ = dir;
  moxEthIntfStatusDir_.notifierIs(dir);
  handleEthIntfStatusDir();
}

void LibSm::ethIntfStatusDirDel() {
  ethIntfStatusDir_ = nullptr;
  moxEthIntfStatusDir_.notifierIs(nullptr);
  handleEthIntfStatusDir();
}

Mox::Ptr<TopoLibCodef> LibSm::topoLibCodefIs(LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                                             const Mox::Ptr<const Mox::Clock>& clock) {
  if (topoLibCodef_ && topoLibCodef_->isBuiltFrom(libSm, dirtyVlanDir, clock)) return topoLibCodef_;
  Mox::Ptr<TopoLibCodef> codef = TopoLibCodef::TopoLibCodefIs(libSm, dirtyVlanDir, clock);
  codef->hasNotificationActiveIs(true);
  if (topoLibCodef_) topoLibCodef_->moxDoZombieReactors(true);
  scalarIs(topoLibCodef_, codef, topoLibCodefAttr);
  return codef;
}

void LibSm::topoLibCodefDel() {
  if (topoLibCodef_) topoLibCodef_->moxDoZombieReactors(true);
  singleDel(topoLibCodef_, topoLibCodefAttr);
}

Mox::Ptr<TopoConfigSm> LibSm::topoConfigSmIs(const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
                                             const Mox::Ptr<const Bridging::Topology::TopoStatus>& topoStatus,
                                             const Mox::Ptr<const Bridging::Topology::Inst::TopoStatus>& topoInstStatus,
                                             const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir) {
  if (!topoConfig) Mox::throwMutatorArgNullPointerException("topoConfigSmIs", "topoConfig");
  const Mox::String name = topoConfig->name();
  if (TopoConfigSm* const sm = topoConfigSm(name)) {
    if (sm->topoConfig() != topoConfig.get() || sm->topoStatus() != topoStatus.get()) {
      Mox::throwMutatorReinstantiating("topoConfigSmIs");
    }
    sm->topoInstStatusIs(topoInstStatus);
    return sm;
  }
  Mox::Ptr<TopoConfigSm> sm =
      Mox::makePtr<TopoConfigSm>(topoConfig, topoStatus, topoInstStatus, ethIntfStatusDir, this);
  sm->hasNotificationActiveIs(true);
  memberInsert(topoConfigSm_, topoConfigSmAttr, name, sm);
  if (isRetired()) sm->moxDoZombieReactors(true);
  return sm;
}

void LibSm::topoConfigSmDel(const Mox::String& name) {
  if (TopoConfigSm* const sm = topoConfigSm(name)) sm->moxDoZombieReactors(true);
  memberDel(topoConfigSm_, topoConfigSmAttr, name);
}

void LibSm::topoConfigSmDelAll() {
  for (const auto& [name, sm] : topoConfigSm_) topoConfigSmDel(name);
}

Mox::Ptr<VlanConfigSm> LibSm::vlanConfigSmIs(Bridging::VlanId vid,
                                             const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig) {
  Mox::Ptr<VlanConfigSm> sm = memberIs(vlanConfigSm_, vlanConfigSmAttr, vid, vlanConfig, this);
  sm->hasNotificationActiveIs(true);
  if (isRetired()) sm->moxDoZombieReactors(true);
  return sm;
}

void LibSm::vlanConfigSmDel(Bridging::VlanId vid) {
  if (VlanConfigSm* const sm = vlanConfigSm(vid)) sm->moxDoZombieReactors(true);
  memberDel(vlanConfigSm_, vlanConfigSmAttr, vid);
}

void LibSm::vlanConfigSmDelAll() {
  for (const auto& [vid, sm] : vlanConfigSm_) vlanConfigSmDel(vid);
}

void LibSm::MoxConfig::onChange(Mox::AttributeId id, const void* key) {
  using Bridging::Topology::Config;
  if (const auto* vid = Config::vidToTopoMapAttr.keyOf(id, key)) sm().handleVidToTopoMap(*vid);
  if (const auto* name = Config::topoConfigAttr.keyOf(id, key)) sm().handleTopoConfigOrStatus(*name);
}

void LibSm::MoxStatus::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* name = Bridging::Topology::Status::topoStatusAttr.keyOf(id, key)) {
    sm().handleTopoConfigOrStatus(*name);
  }
}

void LibSm::MoxStatusInst::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* name = Bridging::Topology::Inst::Status::topoStatusAttr.keyOf(id, key)) {
    sm().handleTopoInstStatus(*name);
  }
}

void LibSm::MoxBrConfig::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* vid = Bridging::Config::vlanConfigAttr.keyOf(id, key)) sm().handleVlanConfig(*vid);
}

void LibSm::MoxEthIntfStatusDir::onChange(Mox::AttributeId /*id*/, const void* /*key*/) {}

Mox::Ptr<TopoToVlanMap> LibSm::topoToVlanMapIs(const Mox::String& name) {
  return singleIs(topoToVlanMap_, topoToVlanMapAttr, name);
}
void LibSm::topoToVlanMapDel() { singleDel(topoToVlanMap_, topoToVlanMapAttr); }
Mox::Ptr<VlanToVlanSet> LibSm::vlanToExpVlanSetMapIs(Bridging::VlanId vid) {
  return memberIs(vlanToExpVlanSetMap_, vlanToExpVlanSetMapAttr, vid);
}
void LibSm::vlanToExpVlanSetMapDel(Bridging::VlanId vid) {
  memberDel(vlanToExpVlanSetMap_, vlanToExpVlanSetMapAttr, vid);
}
void LibSm::vlanToExpVlanSetMapDelAll() { memberDelAll(vlanToExpVlanSetMap_, vlanToExpVlanSetMapAttr); }
Mox::Ptr<VlanToVlanSet> LibSm::expVlanToVlanSetMapIs(Bridging::VlanId vid) {
  return memberIs(expVlanToVlanSetMap_, expVlanToVlanSetMapAttr, vid);
}
void LibSm::expVlanToVlanSetMapDel(Bridging::VlanId vid) {
  memberDel(expVlanToVlanSetMap_, expVlanToVlanSetMapAttr, vid);
}
void LibSm::expVlanToVlanSetMapDelAll() { memberDelAll(expVlanToVlanSetMap_, expVlanToVlanSetMapAttr); }

}  // namespace Topology::Library
