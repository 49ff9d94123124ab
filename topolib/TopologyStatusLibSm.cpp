#include "topolib/TopologyStatusLibSm.h"

#include "topolib/detail/FirstException.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

TopologyStatusSmFactory::TopologyStatusSmFactory(
    const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir) noexcept
    : ethIntfStatusDir_(ethIntfStatusDir) {}

TopologyStatusSmFactory::~TopologyStatusSmFactory() = default;

Mox::Ptr<TopoSm> TopologyStatusSmFactory::createTopoSm(
    const Mox::Ptr<const Topo>& topo, const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
    const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus) const {
  return Mox::makePtr<TopoSm>(topo, ethIntfStatusDir_, topoConfig, topoStatus);
}

TopologyStatusLibSm::TopologyStatusLibSm(const Mox::Ptr<Bridging::Topology::Inst::Status>& status,
                                         const Mox::Ptr<const LibState>& libState,
                                         const Mox::Ptr<const Bridging::Topology::Config>& config,
                                         const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir,
                                         const Mox::Ptr<const TopologyStatusSmFactory>& smFactory)
    : status_(status),
      libState_(libState),
      config_(config),
      ethIntfStatusDir_(ethIntfStatusDir),
      smFactory_(smFactory),
      moxLibState_(this, libState) {
  if (libState_) handleLibStateInit();
  handleInitialized();
}

Mox::Ptr<TopologyStatusLibSm> TopologyStatusLibSm::TopologyStatusLibSmIs(
    const Mox::Ptr<Bridging::Topology::Inst::Status>& status, const Mox::Ptr<const LibState>& libState,
    const Mox::Ptr<const Bridging::Topology::Config>& config,
    const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir,
    const Mox::Ptr<const TopologyStatusSmFactory>& smFactory) {
  return Mox::makePtr<TopologyStatusLibSm>(status, libState, config, ethIntfStatusDir, smFactory);
}

TopologyStatusLibSm::~TopologyStatusLibSm() { moxDoZombieReactors(true); }

void TopologyStatusLibSm::handleInitialized() {
  TOPOLIB_TRACE(8) << "Initialized called for TopologySm";
  if (!smFactory_) smFactoryIs(Mox::makePtr<TopologyStatusSmFactory>(ethIntfStatusDir_));
  initializedIs(true);
  TOPOLIB_ASSERT_TEXT(libState(), "libState()");
  if (!libState_->initDone()) {
    TOPOLIB_TRACE(8) << "topoLibSm init not done yet, returning ";
    return;
  }
  handleTopo();
}

void TopologyStatusLibSm::handleLibStateInit() {
  TOPOLIB_TRACE(2) << "TopologyStatusLibSm::handleLibStateInit";
  handleTopo();
}

void TopologyStatusLibSm::handleTopo() {
  TOPOLIB_TRACE(2) << "TopologyStatusLibSm::handleTopo";
  if (!initialized()) return;
  if (!libState_->initDone()) {
    TOPOLIB_TRACE(7) << "topoLibSm init not done yet, returning ";
    return;
  }
  TOPOLIB_TRACE(7) << "Syncing up topology state machines";
  const Mox::Ptr<TopologyStatusLibSm> self(this);
  detail::FirstException thrown;
  for (const auto& [name, sm] : topoSm_) {
    if (libState_->topo(name) == nullptr) thrown.collect([this, &name = name] { handleTopo(name); });
  }
  for (const auto& [name, topo] : libState_->topo()) {
    // One whose configuration is gone already is being withdrawn, and its removal will be notified.
    if (topoConfigOf(name) != nullptr) thrown.collect([this, &name = name] { handleTopo(name); });
  }
  thrown.collect([this] { removeStaleStatuses(); });
  thrown.rethrow();
}

void TopologyStatusLibSm::removeStaleStatuses() {
  detail::FirstException thrown;
  for (const auto& [name, topoStatus] : status_->topoStatus()) {
    if (isRetired()) break;
    if (topoConfigOf(name) == nullptr) {
      TOPOLIB_TRACE(7) << "Deleting TopoStatus because no TopoConfig found";
      thrown.collect([this, &name = name] { status_->topoStatusDel(name); });
    } else {
      thrown.collect([this, &name = name] { removeStalePorts(status_->topoStatus(name)); });
    }
  }
  thrown.rethrow();
}

void TopologyStatusLibSm::removeStalePorts(const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus) {
  const Mox::Ptr<const TopoSm> sm = topoSm(topoStatus->name());
  if (!sm) return;
  for (const auto& [intf, number] : topoStatus->topoPortStatus()) {
    if (isRetired() || sm->ethIntfSm(intf) != nullptr) continue;
    TOPOLIB_TRACE(7) << "Deleting topoPortStatus for topo: " << topoStatus->name() << intf;
    topoStatus->topoPortStatusDel(intf);
  }
}

const Bridging::Topology::TopoConfig* TopologyStatusLibSm::topoConfigOf(const Mox::String& name) const {
  return config_ ? config_->topoConfig(name) : nullptr;
}

void TopologyStatusLibSm::handleTopo(const Mox::String& name) {
  TOPOLIB_TRACE(8) << "handleTopo" << name;
  if (!initialized() || isRetired()) return;
  const Mox::Ptr<TopologyStatusLibSm> self(this);
  // Readers of the status that change the topology while it is published or withdrawn are served after that.
  const auto again = [&] {
    const TopoSm* const existing = topoSm(name);
    // Deleted and published again: the two come to one request.
    if (existing != nullptr && existing->topo() != libState_->topo(name)) withdrawTopo(name);
    if (!isRetired()) reconcileTopo(name);
  };
  reconciling_.run(
      name, [&] { reconcileTopo(name); }, again, [this] { return isRetired(); });
}

void TopologyStatusLibSm::reconcileTopo(const Mox::String& name) {
  const Mox::Ptr<const Topo> topo = libState_->topo(name);
  const Mox::Ptr<const TopoSm> existing = topoSm(name);
  if (!topo) {
    if (existing) withdrawTopo(name);
  } else if (existing) {
    TOPOLIB_ASSERT_TEXT(existing->topo() == topo.get(), "topoSm->topo() == topo");
  } else if (libState_->initDone()) {
    publishTopo(name, topo);
  }
}

void TopologyStatusLibSm::withdrawTopo(const Mox::String& name) {
  TOPOLIB_TRACE(7) << name << ": Topo object deleted, deleting Topology Status";
  TOPOLIB_MSG("{}: Topo object deleted, deleting Topology Status", name);
  detail::FirstException thrown;
  thrown.collect([&] { status_->topoStatusDel(name); });
  if (!isRetired()) thrown.collect([&] { topoSmDel(name); });
  thrown.rethrow();
}

void TopologyStatusLibSm::publishTopo(const Mox::String& name, const Mox::Ptr<const Topo>& topo) {
  const Mox::Ptr<const Bridging::Topology::TopoConfig> topoConfig = topoConfigOf(name);
  Mox::Ptr<Bridging::Topology::Inst::TopoStatus> topoStatus = status_->topoStatus(name);
  if (topoConfig) {
    if (topoStatus && topoStatus->topoNumber() != topoConfig->topoNumber()) {
      status_->topoStatusDel(name);
      topoStatus = nullptr;
      if (isRetired()) return;
    }
    if (!topoStatus) topoStatus = status_->topoStatusIs(name, topoConfig->topoNumber());
  }
  TOPOLIB_ASSERT_TEXT(topoConfig && topoStatus, "topoConfig && topoStatus");
  if (isRetired()) return;
  TOPOLIB_TRACE(7) << name << ": Topo object created, adding Topology Status";
  TOPOLIB_MSG("{}: Topo object created, adding Topology Status", name);
  const Mox::Ptr<TopoSm> sm = smFactory_->createTopoSm(topo, topoConfig, topoStatus);
  topoSmIs(sm);
  detail::FirstException thrown;
  thrown.collect([&] { sm->handleInitialized(); });
  // A status that an earlier run has left may name ports that nobody is behind.
  thrown.collect([&] { removeStalePorts(topoStatus); });
  thrown.rethrow();
}

void TopologyStatusLibSm::topoSmIs(const Mox::Ptr<TopoSm>& sm) {
  if (!sm) Mox::throwMutatorArgNullPointerException("topoSmIs", "topoSm");
  TOPOLIB_ASSERT_TEXT(sm->fwkKey() == sm->name(), "fwkKey() == KeyFunktor()( _value )");
  if (const TopoSm* const existing = topoSm(sm->fwkKey()); existing != nullptr && existing != sm.get()) {
    Mox::throwMutatorReinstantiating("topoSmIs");
  }
  sm->hasNotificationActiveIs(true);
  memberInsert(topoSm_, topoSmAttr, sm->fwkKey(), sm);
}

void TopologyStatusLibSm::topoSmDel(const Mox::String& name) {
  const Mox::Ptr<TopologyStatusLibSm> self(this);
  detail::FirstException thrown;
  if (const Mox::Ptr<TopoSm> sm = topoSm(name)) {
    thrown.collect([&] { sm->doCleanUp(); });
    sm->moxDoZombieReactors(true);
  }
  memberDel(topoSm_, topoSmAttr, name);
  thrown.rethrow();
}

void TopologyStatusLibSm::topoSmDelAll() {
  const Mox::Ptr<TopologyStatusLibSm> self(this);
  for (const auto& [name, sm] : topoSm_) topoSmDel(name);
}

void TopologyStatusLibSm::MoxLibState::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* name = LibState::topoAttr.keyOf(id, key)) sm().handleTopo(*name);
  if (LibState::initDoneAttr.is(id)) sm().handleLibStateInit();
}

}  // namespace Topology::Library
