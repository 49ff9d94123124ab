// What LibSm does when topologies come and go.
//
//   absent ── wanted ──────────────────────────────> present
//   present ── no longer wanted, no VLAN ──────────> absent
//   present ── no longer wanted, VLANs mapped ─────> lingering: every VLAN is marked, so that it leaves
//   lingering ── configured again meanwhile ───────> orphaned: stands on entities that were replaced
//   lingering, orphaned ── last VLAN has left ─────> deleted, and rebuilt if it is configured

#include "topolib/LibSm.h"
#include "topolib/detail/FirstException.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

/// The entities of one topology, as they are now.
struct LibSm::TopoInputs {
  Mox::Ptr<const Bridging::Topology::TopoConfig> config;
  Mox::Ptr<const Bridging::Topology::TopoStatus> status;
  Mox::Ptr<const Bridging::Topology::Inst::TopoStatus> instStatus;

  [[nodiscard]] friend bool operator==(const TopoInputs&, const TopoInputs&) = default;
};

LibSm::TopoInputs LibSm::topoInputs(const Mox::String& name) const {
  return {config() == nullptr ? nullptr : config()->topoConfig(name),
          status() == nullptr ? nullptr : status()->topoStatus(name),
          statusInst() == nullptr ? nullptr : statusInst()->topoStatus(name)};
}

bool LibSm::wantsTopo(const Mox::String& name) const {
  if (config() == nullptr || config()->topoConfig(name) == nullptr) return false;
  if (statusInst() != nullptr && isInCreateStatusMode()) return true;
  return (status() != nullptr && status()->topoStatus(name) != nullptr) ||
         (statusInst() != nullptr && statusInst()->topoStatus(name) != nullptr);
}

void LibSm::handleTopoConfigOrStatus(const Mox::String& name) {
  TOPOLIB_ASSERT_INITIALIZED();
  TOPOLIB_TRACE(8) << "handleTopoConfigOrStatus" << name;
  serveTopo(name, [&] { reconcileTopo(name); });
}

/// Readers of LibState that ask for a topology while it is made, withdrawn or deleted are served after that.
void LibSm::serveTopo(const Mox::String& name, auto&& work) {
  const auto again = [&] {
    // Withdrawn and configured again: the two come to one request.
    if (topoConfigSm(name) != nullptr && hasOrphan(topoInputs(name).config.get())) withdrawTopo(name);
    if (!isRetired()) reconcileTopo(name);
  };
  reconciling_.run(name, work, again, [this] { return isRetired(); });
}

void LibSm::reconcileTopo(const Mox::String& name) {
  TOPOLIB_TRACE(3) << "LibSm::handleTopoConfigOrStatus for TopoConfig " << name;
  const bool hasSm = topoConfigSm(name) != nullptr;
  if (!wantsTopo(name)) {
    if (hasSm) withdrawTopo(name);
  } else if (!hasSm) {
    createTopo(name);
  } else {
    TOPOLIB_ASSERT_TEXT(libState_->topo(name), "topo");
    TOPOLIB_TRACE(3) << "LibSm::handleTopoConfigOrStatus TopoConfigSm already present " << name;
  }
}

void LibSm::createTopo(const Mox::String& name) {
  TOPOLIB_TRACE(3) << "LibSm::handleTopoConfigOrStatus creating TopoConfigSm " << name;
  TOPOLIB_MSG("LibSm::handleTopoConfigOrStatus creating TopoConfigSm {}", name);
  libState_->topoIs(name);
  while (!isRetired()) {
    const TopoInputs inputs = topoInputs(name);
    if (!wantsTopo(name)) {
      libState_->topoDel(name);
      if (!isRetired()) topoToVlanMap_->mappedVlanDel(name);
      return;
    }
    libState_->topoIs(name);
    if (isRetired()) return;
    const Mox::Ptr<TopoConfigSm> sm =
        topoConfigSmIs(inputs.config, inputs.status, inputs.instStatus, ethIntfStatusDir());
    if (isRetired() || inputs == topoInputs(name)) break;
    // A reader of the ports that came up has replaced what the state machine stands on.
    for (const auto& [intf, portSm] : sm->topoPortConfigSm()) sm->doRemovePort(intf);
    topoConfigSmDel(name);
  }
  if (!isRetired()) markVlansOfTopo(name);
}

void LibSm::withdrawTopo(const Mox::String& name) {
  const Mox::Ptr<const MappedVlan> mapped = std::as_const(*topoToVlanMap_).mappedVlan(name);
  if (!mapped || mapped->vlan().empty()) {
    TOPOLIB_TRACE(3) << "no vlan mapped to this topo deleting it now" << name;
    TOPOLIB_MSG("no vlan mapped to this topo deleting it now{}", name);
    topoConfigSmDel(name);
    libState_->topoDel(name);
    if (!isRetired()) topoToVlanMap_->mappedVlanDel(name);
    return;
  }
  detail::FirstException thrown;
  for (const auto& [vid, isMapped] : mapped->vlan()) {
    TOPOLIB_TRACE(3) << "there are vlanConfigSms, marking vlans dirty " << vid;
    TOPOLIB_MSG("there are vlanConfigSms, marking vlans dirty {}", vid);
    thrown.collect([this, vid = vid] { doOnVlanPortUpdate(vid, {}); });
    if (isRetired()) break;
  }
  thrown.rethrow();
}

/// Marks every VLAN that the configuration gives to the topology.
void LibSm::markVlansOfTopo(const Mox::String& name) {
  if (config() == nullptr) return;
  detail::FirstException thrown;
  for (const Bridging::VlanId vid : config()->vlansOfTopo(name)) {
    if (isRetired()) break;
    if (configuredTopo(vid) == name) thrown.collect([this, vid = vid] { doOnVlanPortUpdate(vid, {}); });
  }
  thrown.rethrow();
}

void LibSm::handleTopoInstStatus(const Mox::String& name) {
  TOPOLIB_ASSERT_INITIALIZED();
  TOPOLIB_TRACE(8) << "handleTopoInstStatus" << name;
  const Mox::Ptr<TopoConfigSm> before = topoConfigSm(name);
  const Mox::Ptr<const Bridging::Topology::Inst::TopoStatus> boundBefore = before ? before->topoInstStatus() : nullptr;
  Mox::Ptr<const Bridging::Topology::Inst::TopoStatus> instStatus = topoInputs(name).instStatus;
  TOPOLIB_TRACE(3) << "TopoStatus created for " << name;
  if (!isInCreateStatusMode()) {
    handleTopoConfigOrStatus(name);
    if (isRetired()) return;
  } else if (before) {
    TOPOLIB_TRACE(3) << "Assigning topo status to " << before->name();
    before->topoInstStatusIs(instStatus);
  }

  // A state machine that stays follows the status that is there now, also one that was replaced under the same name.
  const Mox::Ptr<TopoConfigSm> sm = topoConfigSm(name);
  if (!sm || sm != before) return;
  instStatus = topoInputs(name).instStatus;
  sm->topoInstStatusIs(instStatus);
  if (boundBefore == instStatus) return;
  sm->doReevaluate();
  // Where the status decides whether the topology is wanted, VLANs may have left it while it was away.
  if (!isInCreateStatusMode() && instStatus && !isRetired()) markVlansOfTopo(name);
}

bool LibSm::hasOrphan(const Bridging::Topology::TopoConfig* topoConfig) const {
  if (topoConfig == nullptr) return false;
  const Mox::String name = topoConfig->name();
  const TopoConfigSm* const sm = topoConfigSm(name);
  TOPOLIB_TRACE(2) << "Check topoIsOrphan, topoConfigSm is " << detail::Address{sm};
  TOPOLIB_MSG("Check topoIsOrphan, topoConfigSm is {}", static_cast<const void*>(sm));
  if (sm == nullptr) return false;
  const Bridging::Topology::TopoStatus* const topoStatus = status() == nullptr ? nullptr : status()->topoStatus(name);
  if (sm->topoConfig() != topoConfig) {
    TOPOLIB_TRACE(2) << "topoIsOrphan, topoConfig is " << topoConfig;
    TOPOLIB_TRACE(2) << "topoStatus is " << topoStatus;
    TOPOLIB_TRACE(2) << "topoConfigSm->topoConfig() is " << sm->topoConfig();
    TOPOLIB_TRACE(2) << "topoConfigSm->topoStatus() is " << sm->topoStatus();
    return true;
  }
  return sm->topoStatus() != nullptr && sm->topoStatus() != topoStatus;
}

bool LibSm::hasTopoPresent(const Mox::String& name) const {
  return !name.empty() && config() != nullptr && config()->topoConfig(name) != nullptr && topoConfigSm(name) != nullptr;
}

void LibSm::doMaybeDeleteTopo(const Mox::String& oldTopoName) {
  TOPOLIB_TRACE(2) << "maybeDeleteTopo:  oldTopoName " << oldTopoName;
  TOPOLIB_MSG("maybeDeleteTopo:  oldTopoName {}", oldTopoName);
  const MappedVlan* const mapped = topoToVlanMap_ ? std::as_const(*topoToVlanMap_).mappedVlan(oldTopoName) : nullptr;
  const bool isOrphan = hasOrphan(topoInputs(oldTopoName).config.get());
  if (mapped == nullptr || !mapped->vlan().empty()) return;
  if (wantsTopo(oldTopoName) && !isOrphan) return;
  if (reconciling_.ask(oldTopoName)) {
    deleteTopo(oldTopoName);
  } else {
    serveTopo(oldTopoName, [&] { deleteTopo(oldTopoName); });
  }
}

void LibSm::deleteTopo(const Mox::String& name) {
  TOPOLIB_TRACE(2) << "Deleting topo";
  TOPOLIB_MSG("Deleting topo");
  topoConfigSmDel(name);
  detail::FirstException thrown;
  thrown.collect([&] { libState_->topoDel(name); });
  if (!isRetired()) topoToVlanMap_->mappedVlanDel(name);
  if (!isRetired() && topoInputs(name).config) {
    TOPOLIB_TRACE(2) << "May be we deleted an orphaned topo, create again";
    TOPOLIB_MSG("May be we deleted an orphaned topo, create again");
    thrown.collect([&] { handleTopoConfigOrStatus(name); });
  }
  thrown.rethrow();
}

bool isTopoPresent(const Mox::Ptr<const LibSm>& libSm, const Mox::String& name) { return libSm->hasTopoPresent(name); }

bool topoIsOrphan(const Mox::Ptr<const LibSm>& libSm,
                  const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig) {
  return libSm->hasOrphan(topoConfig.get());
}

void maybeDeleteTopo(const Mox::Ptr<LibSm>& libSm, const Mox::String& oldTopoName) {
  libSm->doMaybeDeleteTopo(oldTopoName);
}

}  // namespace Topology::Library
