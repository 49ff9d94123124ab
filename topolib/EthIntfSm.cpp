#include "topolib/EthIntfSm.h"

#include <utility>

#include "topolib/detail/FirstException.h"
#include "topolib/detail/Flag.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

BaseIntfSm::BaseIntfSm(Quill::IntfId intf, const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
                       const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus) noexcept
    : intfId_(intf), topoConfig_(topoConfig), topoStatus_(topoStatus) {}

BaseIntfSm::~BaseIntfSm() = default;

void BaseIntfSm::handleInitialized() { initializedIs(true); }

void BaseIntfSm::maybeUpdateTopo(bool up) {
  if (!initialized() || isRetired()) return;
  const bool isReported = topoStatus_->topoPortStatus(intfId_) != nullptr;
  if (up == isReported) return;
  const Mox::Ptr<BaseIntfSm> self(this);
  if (up) {
    TOPOLIB_TRACE(6) << "Linkstatus up for " << intfId_ << " adding port to topology ";
    TOPOLIB_MSG("Linkstatus up for {} adding port to topology ", intfId_);
    topoStatus_->topoPortStatusIs(intfId_, 0);
    // A reader of the status may have had the port removed.
    if (!initialized() || isRetired() || !topoConfig_->publishPortConfig()) return;
    writableTopoConfig().topoPortConfigIs(intfId_, 0, topoConfig_->publishedPortState());
  } else {
    TOPOLIB_TRACE(6) << ": Linkstatus down for " << intfId_ << " removing port from topology ";
    TOPOLIB_MSG(": Linkstatus down for {} removing port from topology ", intfId_);
    detail::FirstException thrown;
    if (topoConfig_->publishPortConfig()) {
      thrown.collect([&] { writableTopoConfig().topoPortConfigDel(intfId_); });
    }
    if (initialized() && !isRetired()) thrown.collect([&] { topoStatus_->topoPortStatusDel(intfId_); });
    thrown.rethrow();
  }
}

void BaseIntfSm::doCleanUp() {
  TOPOLIB_TRACE(8) << ": Cleanup, removing port from topology " << intfId_;
  const Mox::Ptr<BaseIntfSm> self(this);
  initializedIs(false);
  detail::FirstException thrown;
  thrown.collect([&] { topoStatus_->topoPortStatusDel(intfId_); });
  if (topoConfig_->publishPortConfig()) {
    thrown.collect([&] { writableTopoConfig().topoPortConfigDel(intfId_); });
  }
  thrown.rethrow();
}

void BaseIntfSm::forEachReactor(const std::function<void(Mox::PtrInterface&)>& /*act*/) {}

/// The configuration is an input, and is written only where it asks for it itself.
Bridging::Topology::TopoConfig& BaseIntfSm::writableTopoConfig() const noexcept {
  return const_cast<Bridging::Topology::TopoConfig&>(*topoConfig_);
}

EthIntfSm::EthIntfSm(Quill::IntfId intf, const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
                     const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus,
                     const Mox::Ptr<const Interface::EthIntfStatus>& ethIntfStatus)
    : BaseIntfSm(intf, topoConfig, topoStatus), ethIntfStatus_(this, ethIntfStatus) {}

EthIntfSm::~EthIntfSm() { moxDoZombieReactors(true); }

void EthIntfSm::handleInitialized() {
  BaseIntfSm::handleInitialized();
  isCpuPortIs(Quill::CpuIntfId::isCpuIntfId(intfId()));
  handleLinkStatus();
}

void EthIntfSm::handleForwardingModel() {
  if (!initialized()) return;
  TOPOLIB_TRACE(8) << "EthIntfSm::handleForwardingModel" << intfId();
  TOPOLIB_MSG("EthIntfSm::handleForwardingModel{}", intfId());
  handleLinkStatus();
}

void EthIntfSm::handleLinkStatus() {
  isChangedMeanwhile_ = true;
  if (isReporting_) return;
  const Mox::Ptr<EthIntfSm> self(this);
  const detail::Flag reporting(isReporting_);
  detail::FirstException thrown;
  while (std::exchange(isChangedMeanwhile_, false) && !isRetired()) {
    thrown.collect([&] { maybeUpdateTopo(isUp()); });
  }
  thrown.rethrow();
}

bool EthIntfSm::isUp() const noexcept {
  using Interface::ForwardingModel;
  if (isCpuPort_) return true;
  const Interface::EthIntfStatus* const status = ethIntfStatus();
  if (status == nullptr) return false;
  const bool isLinkUp = status->linkStatus() == Interface::LinkStatus::up;
  const ForwardingModel model = status->forwardingModel();
  if (Quill::SubIntfId::isSubIntfId(intfId())) return isLinkUp || model != ForwardingModel::bridged;
  return isLinkUp && (model == ForwardingModel::bridged || model == ForwardingModel::tunneled);
}

void EthIntfSm::forEachReactor(const std::function<void(Mox::PtrInterface&)>& act) {
  act(ethIntfStatus_);
  BaseIntfSm::forEachReactor(act);
}

void EthIntfSm::MoxEthIntfStatus::onChange(Mox::AttributeId id, const void* /*key*/) {
  using Interface::EthIntfStatus;
  if (EthIntfStatus::forwardingModelAttr.is(id)) sm().handleForwardingModel();
  if (EthIntfStatus::linkStatusAttr.is(id)) sm().handleLinkStatus();
}

}  // namespace Topology::Library
