#include "topolib/TopoConfigSm.h"

#include "topolib/LibSm.h"
#include "topolib/detail/FirstException.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

TopoConfigSm::TopoConfigSm(const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
                           const Mox::Ptr<const Bridging::Topology::TopoStatus>& topoStatus,
                           const Mox::Ptr<const Bridging::Topology::Inst::TopoStatus>& topoInstStatus,
                           const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir, LibSm* libSm)
    : name_(topoConfig->name()),
      topoConfig_(this, topoConfig),
      topoStatus_(this, topoStatus),
      topoInstStatus_(this, topoInstStatus),
      ethIntfStatusDir_(this, ethIntfStatusDir),
      libSm_(libSm) {
  if (ethIntfStatusDir) {
    for (const auto& [intf, status] : ethIntfStatusDir->intfStatus()) ethIntfStatusIs(&status);
  }
  handleInitialized();
}

TopoConfigSm::~TopoConfigSm() { moxDoZombieReactors(true); }

void TopoConfigSm::handleInitialized() {
  initializedIs(true);
  TOPOLIB_TRACE(8) << name_ << ": TopoConfigSm initializing";
  TOPOLIB_ASSERT_TEXT(!topoInstStatus() || !topoStatus(), "!topoInstStatus() || !topoStatus()");
  if (topoStatus() != nullptr) TOPOLIB_ASSERT_TEXT(ethIntfStatusDir(), "ethIntfStatusDir()");
  handleTopoPortConfigOrStatus();
}

void TopoConfigSm::handleTopoPortConfigOrStatus() {
  TOPOLIB_TRACE(8) << "handleTopoPortConfigOrStatus";
  const Mox::Ptr<const Bridging::Topology::TopoConfig> configured = topoConfig();
  if (!configured) return;
  for (const auto& [intf, portConfig] : configured->topoPortConfig()) handleTopoPortConfigOrStatus(intf);
}

void TopoConfigSm::doReevaluate() {
  const Mox::Ptr<TopoConfigSm> self(this);
  handleTopoPortConfigOrStatus();
  for (const auto& [intf, portSm] : topoPortConfigSm_) handleTopoPortConfigOrStatus(intf);
}

void TopoConfigSm::handleTopoPortConfigOrStatus(Quill::IntfId intf) {
  TOPOLIB_TRACE(8) << "handleTopoPortConfigOrStatus";
  if (!initialized() || isOver()) return;
  serve(intf, [&] { reconcilePort(intf); });
}

void TopoConfigSm::doPublish(TopoPortConfigSm& topoPortSm) {
  serve(topoPortSm.intfId(), [&] { topoPortSm.doPublish(); });
}

void TopoConfigSm::doRemovePort(Quill::IntfId intf) {
  if (reconciling_.ask(intf)) {
    removePort(intf);
  } else if (topoPortConfigSm(intf) != nullptr) {
    serve(intf, [&] { removePort(intf); });
  }
}

bool TopoConfigSm::isOver() const noexcept { return isRetired() || libSm_->isRetired(); }

/// Readers of a port that change its configuration while it is admitted, published or removed are served after that.
void TopoConfigSm::serve(Quill::IntfId intf, auto&& work) {
  const Mox::Ptr<TopoConfigSm> self(this);
  const auto again = [&] {
    // Removed and admitted again on another entity: the two come to one request.
    const TopoPortConfigSm* const stale = topoPortConfigSm(intf);
    if (stale != nullptr && stale->topoPortConfig() != topoConfig()->topoPortConfig(intf)) removePort(intf);
    if (!isOver()) reconcilePort(intf);
    if (isOver()) return;
    if (const Mox::Ptr<TopoPortConfigSm> topoPortSm = topoPortConfigSm(intf)) topoPortSm->doPublish();
  };
  reconciling_.run(intf, work, again, [this] { return isOver(); });
}

void TopoConfigSm::reconcilePort(Quill::IntfId intf) {
  const Mox::Ptr<const Bridging::Topology::TopoPortConfig> portConfig = topoConfig()->topoPortConfig(intf);
  const Mox::Ptr<TopoPortConfigSm> topoPortSm = topoPortConfigSm(intf);
  const Topo* const topo = std::as_const(*libSm_->libState()).topo(name_);
  TOPOLIB_TRACE(3) << name_ << ": TopoPortConfig event for " << intf;
  const bool isAdmitted =
      portConfig && hasPortStatus(intf) && topo != nullptr && topo->port(intf) != nullptr && isLinkGateOpen(intf);
  if (!isAdmitted) {
    removePort(intf);
  } else if (topoPortSm) {
    TOPOLIB_ASSERT_TEXT(topoPortSm->topoPortConfig() == portConfig.get(),
                        "topoPortSm->topoPortConfig() == topoPortConfig");
    TOPOLIB_TRACE(3) << "TopoPortConfigSm already present " << intf;
    // Writes nothing, unless the port was deleted and made again without this being told.
    topoPortSm->doPublish();
  } else {
    TOPOLIB_TRACE(3) << "Creating TopoPortConfigSm for " << intf;
    TOPOLIB_MSG("Creating TopoPortConfigSm for {}", intf);
    topoPortConfigSmIs(name_, portConfig);
  }
}

void TopoConfigSm::removePort(Quill::IntfId intf) {
  const Mox::Ptr<TopoPortConfigSm> topoPortSm = topoPortConfigSm(intf);
  if (!topoPortSm) return;
  TOPOLIB_TRACE(3) << "Deleting TopoPortConfigSm for " << intf;
  TOPOLIB_MSG("Deleting TopoPortConfigSm for {}", intf);
  detail::FirstException thrown;
  thrown.collect([&] { topoPortSm->doCleanUp(); });
  topoPortConfigSmDel(intf);
  thrown.rethrow();
}

bool TopoConfigSm::hasPortStatus(Quill::IntfId intf) const {
  if (topoInstStatus() != nullptr) return topoInstStatus()->topoPortStatus(intf) != nullptr;
  return topoStatus() != nullptr && topoStatus()->topoPortStatus(intf);
}

bool TopoConfigSm::isLinkGateOpen(Quill::IntfId intf) const {
  if (topoStatus() == nullptr || Quill::CpuIntfId::isCpuIntfId(intf)) return true;
  const bool isSubIntf = Quill::SubIntfId::isSubIntfId(intf);
  const Interface::EthIntfStatus* const status = ethIntfStatusDir()->intfStatus(intf);
  if (status == nullptr) return isSubIntf;
  if (isSubIntf && status->forwardingModel() != Interface::ForwardingModel::bridged) return true;
  return status->linkStatus() == Interface::LinkStatus::up;
}

Mox::Ptr<TopoPortConfigSm> TopoConfigSm::topoPortConfigSmIs(
    const Mox::String& name, const Mox::Ptr<const Bridging::Topology::TopoPortConfig>& topoPortConfig) {
  if (!topoPortConfig) Mox::throwMutatorArgNullPointerException("topoPortConfigSmIs", "topoPortConfig");
  const Quill::IntfId intf = topoPortConfig->intfId();
  if (TopoPortConfigSm* const existing = topoPortConfigSm(intf)) {
    if (existing->topoPortConfig() != topoPortConfig.get()) Mox::throwMutatorReinstantiating("topoPortConfigSmIs");
    return existing;
  }
  Mox::Ptr<TopoPortConfigSm> sm = Mox::makePtr<TopoPortConfigSm>(name, topoPortConfig, this);
  sm->hasNotificationActiveIs(true);
  memberInsert(topoPortConfigSm_, topoPortConfigSmAttr, intf, sm);
  if (isOver()) sm->moxDoZombieReactors(true);
  return sm;
}

void TopoConfigSm::topoPortConfigSmDel(Quill::IntfId intf) {
  if (TopoPortConfigSm* const sm = topoPortConfigSm(intf)) sm->moxDoZombieReactors(true);
  memberDel(topoPortConfigSm_, topoPortConfigSmAttr, intf);
}

void TopoConfigSm::topoPortConfigSmDelAll() {
  for (const auto& [intf, sm] : topoPortConfigSm_) topoPortConfigSmDel(intf);
}

void TopoConfigSm::ethIntfStatusIs(const Mox::Ptr<const Interface::EthIntfStatus>& status) {
  if (!status) Mox::throwMutatorArgNullPointerException("ethIntfStatusIs", "ethIntfStatus");
  if (MoxEthIntfStatus* const existing = ethIntfStatus_.find(status->intfId())) {
    existing->notifierIs(status);
  } else {
    memberInsert(ethIntfStatus_, ethIntfStatusAttr, status->intfId(), Mox::makePtr<MoxEthIntfStatus>(this, status));
  }
}

void TopoConfigSm::ethIntfStatusDel(Quill::IntfId intf) {
  if (MoxEthIntfStatus* const gone = ethIntfStatus_.find(intf)) gone->notifierIs(nullptr);
  memberDel(ethIntfStatus_, ethIntfStatusAttr, intf);
}

void TopoConfigSm::ethIntfStatusDelAll() {
  for (const auto& [intf, reactor] : ethIntfStatus_) ethIntfStatusDel(intf);
}

void TopoConfigSm::MoxTopoConfig::onChange(Mox::AttributeId id, const void* key) {
  using Bridging::Topology::TopoConfig;
  if (const auto* intf = TopoConfig::topoPortConfigAttr.keyOf(id, key)) sm().handleTopoPortConfigOrStatus(*intf);
}

void TopoConfigSm::MoxTopoStatus::onChange(Mox::AttributeId id, const void* key) {
  using Bridging::Topology::TopoStatus;
  if (const auto* intf = TopoStatus::topoPortStatusAttr.keyOf(id, key)) sm().handleTopoPortConfigOrStatus(*intf);
}

void TopoConfigSm::MoxTopoInstStatus::onChange(Mox::AttributeId id, const void* key) {
  using Bridging::Topology::Inst::TopoStatus;
  if (const auto* intf = TopoStatus::topoPortStatusAttr.keyOf(id, key)) sm().handleTopoPortConfigOrStatus(*intf);
}

void TopoConfigSm::MoxEthIntfStatusDir::onChange(Mox::AttributeId id, const void* key) {
  const auto* const changed = Interface::EthIntfStatusDir::intfStatusAttr.keyOf(id, key);
  if (changed == nullptr) return;
  const Quill::IntfId intf = *changed;
  if (const Interface::EthIntfStatus* const status = notifier()->intfStatus(intf)) {
    sm().ethIntfStatusIs(status);
  } else {
    sm().ethIntfStatusDel(intf);
  }
  sm().handleTopoPortConfigOrStatus(intf);
}

void TopoConfigSm::MoxEthIntfStatus::onChange(Mox::AttributeId id, const void* /*key*/) {
  if (Interface::EthIntfStatus::linkStatusAttr.is(id)) handleLinkStatus();
  if (Interface::EthIntfStatus::forwardingModelAttr.is(id)) handleForwardingModel();
}

void TopoConfigSm::MoxEthIntfStatus::handleLinkStatus() {
  TOPOLIB_TRACE(8) << "handleLinkStatus" << intfId();
  sm().handleTopoPortConfigOrStatus(intfId());
}

void TopoConfigSm::MoxEthIntfStatus::handleForwardingModel() { sm().handleTopoPortConfigOrStatus(intfId()); }

}  // namespace Topology::Library
