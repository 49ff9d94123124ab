#include "topolib/TopoSm.h"

#include "topolib/detail/FirstException.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

TopoSm::TopoSm(const Mox::Ptr<const Topo>& topo, const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir,
               const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
               const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus)
    : fwkKey_(topo->name()),
      topo_(topo),
      ethIntfStatusDir_(ethIntfStatusDir),
      topoConfig_(topoConfig),
      topoStatus_(topoStatus),
      moxTopo_(this, topo),
      moxEthIntfStatus_(this, ethIntfStatusDir) {}

TopoSm::~TopoSm() { moxDoZombieReactors(true); }

void TopoSm::handleInitialized() {
  initializedIs(true);
  detail::FirstException thrown;
  thrown.collect([this] { handlePort(); });
  thrown.collect([this] { handleEthIntfStatus(); });
  thrown.rethrow();
}

void TopoSm::handlePort() {
  if (!initialized()) return;
  TOPOLIB_TRACE(8) << name() << ": Syncing up port state machines";
  const Mox::Ptr<TopoSm> self(this);
  detail::FirstException thrown;
  for (const auto& [intf, port] : topo_->port()) {
    thrown.collect([&, intf = intf] { handlePort(intf); });
  }
  thrown.rethrow();
}

void TopoSm::handleEthIntfStatus() {
  const Mox::Ptr<TopoSm> self(this);
  detail::FirstException thrown;
  for (const auto& [intf, sm] : ethIntfSm_) {
    thrown.collect([&, intf = intf] { handleEthIntfStatus(intf); });
  }
  thrown.rethrow();
}

void TopoSm::handleEthIntfStatus(Quill::IntfId intf) {
  if (initialized()) handlePort(intf);
}

void TopoSm::handlePort(Quill::IntfId intf) {
  if (isOver()) return;
  const Mox::Ptr<TopoSm> self(this);
  // Readers of the status that change the port while it is added or removed are served after that.
  const auto reconcile = [&] { reconcilePort(intf); };
  reconciling_.run(intf, reconcile, reconcile, [this] { return isOver(); });
}

void TopoSm::reconcilePort(Quill::IntfId intf) {
  const Mox::Ptr<const Interface::EthIntfStatus> status =
      ethIntfStatusDir_ ? ethIntfStatusDir_->intfStatus(intf) : nullptr;
  const EthIntfSm* const sm = ethIntfSm(intf);
  const bool isWanted = topo_->port(intf) != nullptr && (status || Quill::CpuIntfId::isCpuIntfId(intf));
  if (isWanted) {
    if (sm != nullptr && sm->ethIntfStatus() == status.get()) return;
    if (sm != nullptr) removePort(intf);
    if (isOver()) return;
    TOPOLIB_TRACE(7) << name() << ": Port " << intf << " created, creating Sm";
    ethIntfSmIs(intf, topoConfig_, topoStatus_, status)->handleInitialized();
  } else if (sm != nullptr) {
    TOPOLIB_TRACE(7) << name() << ": Port " << intf << " deleted, removing Sm ";
    removePort(intf);
  }
}

void TopoSm::removePort(Quill::IntfId intf) {
  detail::FirstException thrown;
  thrown.collect([&] { ethIntfSm(intf)->doCleanUp(); });
  ethIntfSmDel(intf);
  thrown.rethrow();
}

void TopoSm::doCleanUp() {
  TOPOLIB_TRACE(8) << name() << ": Cleanup, removing all port state machines ";
  const Mox::Ptr<TopoSm> self(this);
  initializedIs(false);
  detail::FirstException thrown;
  for (const auto& [intf, sm] : ethIntfSm_) {
    const Mox::Ptr<EthIntfSm> held(&sm);
    thrown.collect([&] { held->doCleanUp(); });
  }
  ethIntfSmDelAll();
  thrown.rethrow();
}

Mox::Ptr<EthIntfSm> TopoSm::ethIntfSmIs(Quill::IntfId intf,
                                        const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
                                        const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus,
                                        const Mox::Ptr<const Interface::EthIntfStatus>& ethIntfStatus) {
  Mox::Ptr<EthIntfSm> sm = memberIs(ethIntfSm_, ethIntfSmAttr, intf, topoConfig, topoStatus, ethIntfStatus);
  sm->hasNotificationActiveIs(true);
  if (isRetired()) sm->moxDoZombieReactors(true);
  return sm;
}

void TopoSm::ethIntfSmDel(Quill::IntfId intf) {
  if (EthIntfSm* const sm = ethIntfSm(intf)) sm->moxDoZombieReactors(true);
  memberDel(ethIntfSm_, ethIntfSmAttr, intf);
}

void TopoSm::ethIntfSmDelAll() {
  const Mox::Ptr<TopoSm> self(this);
  for (const auto& [intf, sm] : ethIntfSm_) ethIntfSmDel(intf);
}

void TopoSm::MoxTopo::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* intf = Topo::portAttr.keyOf(id, key)) sm().handlePort(*intf);
}

void TopoSm::MoxEthIntfStatus::onChange(Mox::AttributeId id, const void* key) {
  if (const auto* intf = Interface::EthIntfStatusDir::intfStatusAttr.keyOf(id, key)) sm().handleEthIntfStatus(*intf);
}

}  // namespace Topology::Library
