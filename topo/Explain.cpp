#include "topo/Explain.h"

#include <sstream>
#include <utility>

#include "topo/Agent.h"
#include "topo/Ranges.h"

namespace Topo {

namespace {

using namespace Topology::Library;
using Bridging::AllowedTrafficDirection;
using Bridging::VlanId;
using Bridging::Topology::PortState;
using Quill::IntfId;

[[nodiscard]] std::string textOf(const auto&... values) {
  std::ostringstream text;
  (text << ... << values);
  return text.str();
}

/// Collects the facts in their order. A question whose subject is missing is not asked.
class Explainer {
 public:
  Explainer(const Agent& agent, VlanId vlan, IntfId port)
      : agent_(agent), vid_(vlan), intf_(port), result_{vlan, port} {
    const bool* const forced = agent.view->forceEnabledPorts(port);
    isForced_ = forced != nullptr && *forced;
  }

  [[nodiscard]] Explanation explain() {
    library();
    vlan();
    mapping();
    topology();
    member();
    published();
    admission();
    portState();
    view();
    pending();
    return std::move(result_);
  }

 private:
  void fact(const char* name, std::string value, bool isHindrance = false) {
    result_.facts.push_back({name, std::move(value), isHindrance});
  }

  void library() {
    const LibSm* const libSm = agent_.libSm();
    if (libSm == nullptr) {
      fact("library", "not running", true);
    } else if (!libSm->initialized()) {
      fact("library", "waits for its interfaces", true);
    } else {
      fact("library", textOf(libSm->libSmMode(), ", watches ", watched(*libSm),
                             agent_.state->initDone() ? "" : ", first synchronisation not over"));
    }
  }

  [[nodiscard]] static const char* watched(const LibSm& libSm) {
    return libSm.status() != nullptr       ? "the plain status"
           : libSm.statusInst() != nullptr ? "the instance status"
                                           : "no status";
  }

  void vlan() {
    vlan_ = std::as_const(*agent_.bridging).vlanConfig(vid_);
    if (vlan_ == nullptr) {
      fact("vlan", "not configured", true);
      return;
    }
    const LibSm* const libSm = agent_.libSm();
    const bool isIgnored = vlan_->internal() && libSm != nullptr && libSm->ignoreInternalVlan();
    fact("vlan",
         !vlan_->internal() ? "configured, external"
         : isIgnored        ? "configured, internal and ignored"
                            : "configured, internal but not ignored",
         isIgnored);
  }

  void mapping() {
    const Mox::String* const name = agent_.config->vidToTopoMap(vid_);
    if (name == nullptr) {
      fact("mapping", "to no topology", true);
      return;
    }
    topoName_ = *name;
    fact("mapping", textOf("to topology ", topoName_));
  }

  void topology() {
    if (topoName_.empty()) return;
    topo_ = std::as_const(*agent_.config).topoConfig(topoName_);
    if (topo_ == nullptr) {
      fact("topology", "not configured", true);
    } else {
      fact("topology", textOf("configured, number ", topo_->topoNumber()));
    }
    const LibSm* const libSm = agent_.libSm();
    if (libSm == nullptr || !libSm->initialized()) return;
    const bool isWanted = libSm->wantsTopo(topoName_);
    if (topo_ != nullptr) fact("presence rule", presence(*libSm, isWanted), !isWanted);
    sm_ = libSm->topoConfigSm(topoName_);
    if (sm_ == nullptr) {
      fact("presence", "absent", true);
    } else if (topo_ != nullptr && isOrphan()) {
      fact("presence", "orphaned: its configuration or status was replaced, and it waits for its last VLAN to leave",
           true);
    } else if (!isWanted) {
      fact("presence", "lingering until its last VLAN has left", true);
    } else {
      fact("presence", "present");
    }
    const bool isRegistered = libSm->hasVlanMappedToTopo(topoName_, vid_);
    fact("registration",
         isRegistered ? "the library has put the VLAN into it" : "the library has not put the VLAN into it",
         !isRegistered);
  }

  [[nodiscard]] static std::string presence(const LibSm& libSm, bool isWanted) {
    if (libSm.statusInst() != nullptr && libSm.libSmMode() == LibSmMode::createStatus) {
      return "wanted: the configuration is enough";
    }
    if (libSm.status() == nullptr && libSm.statusInst() == nullptr) return "not wanted: no status is watched";
    return textOf(isWanted ? "wanted: configured, and in " : "not wanted: not in ", watched(libSm));
  }

  [[nodiscard]] bool isOrphan() const {
    if (sm_->topoConfig() != topo_) return true;
    return sm_->topoStatus() != nullptr && sm_->topoStatus() != std::as_const(*agent_.status).topoStatus(topoName_);
  }

  void member() {
    if (vlan_ == nullptr) return;
    const Bridging::VlanPortConfig* const own = vlan_->vlanPortConfig(intf_);
    const Bridging::VlanIdOrNone expanded = vlan_->floodsetExpandedVlan();
    if (own != nullptr) {
      fact("membership", textOf("own, ", own->untagged() ? "untagged" : "tagged", own->pvid() ? ", pvid" : ""));
      const bool isAccepted = isAcceptedByFilter();
      fact("filter",
           filter() == nullptr ? "none"
           : isAccepted        ? "accepts the port"
                               : "does not accept the port",
           !isAccepted);
    } else if (inherited() != nullptr) {
      fact("membership", textOf("inherited from VLAN ", expanded));
    } else {
      fact("membership", expanded.isNone() ? "none" : textOf("none, nor one to inherit from VLAN ", expanded), true);
    }
  }

  [[nodiscard]] FilterIntf* filter() const {
    const LibSm* const libSm = agent_.libSm();
    if (libSm == nullptr) return nullptr;
    if (const VlanConfigSm* const sm = libSm->vlanConfigSm(vid_)) return sm->intfFilterPtr();
    return reinterpret_cast<FilterIntf*>(static_cast<std::uintptr_t>(libSm->validIntfPtr()));
  }
  [[nodiscard]] bool isAcceptedByFilter() const { return filter() == nullptr || filter()->isValidIntf(intf_); }

  /// The VLAN's entry on the published port that the configuration gives it no entry for.
  [[nodiscard]] const Bridging::VlanPortConfig* inherited() const {
    const Port* const port = publishedPort();
    return port == nullptr ? nullptr : port->vlanPortConfig(vid_);
  }
  [[nodiscard]] const Port* publishedPort() const {
    const Topology::Library::Topo* const topo =
        topoName_.empty() ? nullptr : std::as_const(*agent_.state).topo(topoName_);
    return topo == nullptr ? nullptr : topo->port(intf_);
  }

  void published() {
    std::string topologies;
    for (const auto& [name, topo] : std::as_const(*agent_.state).topo()) {
      const Port* const port = topo.port(intf_);
      if (port == nullptr || port->vlanPortConfig(vid_) == nullptr) continue;
      topologies += textOf(topologies.empty() ? "" : ", ", name);
      if (isForced_ || (port->active() && port->state() == PortState::forwarding)) isForwardingInState_ = true;
      if (isForced_ || port->active()) entry_ = port->vlanPortConfig(vid_);
    }
    if (!topoName_.empty() || !topologies.empty()) {
      const bool isThere = publishedPort() != nullptr && publishedPort()->vlanPortConfig(vid_) != nullptr;
      fact("published", topologies.empty() ? "the VLAN is on the port in no topology" : "in topology " + topologies,
           !isThere);
    }
  }

  /// What makes the port active in its topology. A forced port is taken for active without it.
  void admission() {
    if (topo_ == nullptr) return;
    const Bridging::Topology::TopoPortConfig* const port = topo_->topoPortConfig(intf_);
    fact("topology port",
         port == nullptr ? "not configured" : textOf("configured, ", port->portState(), ", flush ", port->fdbFlush()),
         port == nullptr && !isForced_);
    if (sm_ == nullptr) return;
    const bool hasStatus = hasPortStatus();
    const char* const where = sm_->topoInstStatus() != nullptr ? "instance status"
                              : sm_->topoStatus() != nullptr   ? "plain status"
                                                               : nullptr;
    fact("port status",
         where == nullptr ? "the topology has no status"
         : hasStatus      ? textOf("in the ", where)
                          : textOf("not in the ", where, whyNotReported()),
         !hasStatus && !isForced_);
    linkGate();
  }

  /// What keeps the publisher from reporting the port as up, if it is the one who writes the status.
  [[nodiscard]] std::string whyNotReported() const {
    const TopologyStatusLibSm* const publisher = agent_.publisher();
    const TopoSm* const topo = publisher == nullptr ? nullptr : publisher->topoSm(topoName_);
    if (topo == nullptr || topo->topoStatus().get() != sm_->topoInstStatus()) return {};
    if (publishedPort() == nullptr) return ": the library does not publish the port";
    const EthIntfSm* const port = topo->ethIntfSm(intf_);
    if (port == nullptr) return ": the interface has no status";
    if (port->isUp()) return {};
    const Interface::EthIntfStatus& status = *port->ethIntfStatus();
    if (status.linkStatus() != Interface::LinkStatus::up) return textOf(": the link is ", status.linkStatus());
    return textOf(": the interface is ", status.forwardingModel());
  }

  [[nodiscard]] bool hasPortStatus() const {
    if (sm_->topoInstStatus() != nullptr) return sm_->topoInstStatus()->topoPortStatus(intf_) != nullptr;
    return sm_->topoStatus() != nullptr && sm_->topoStatus()->topoPortStatus(intf_);
  }

  void linkGate() {
    if (sm_->topoStatus() == nullptr) return fact("link gate", "open: no plain status is watched");
    if (Quill::CpuIntfId::isCpuIntfId(intf_)) return fact("link gate", "open: the CPU port");
    const bool isSubIntf = Quill::SubIntfId::isSubIntfId(intf_);
    const Interface::EthIntfStatusDir* const directory = sm_->ethIntfStatusDir();
    const Interface::EthIntfStatus* const status = directory == nullptr ? nullptr : directory->intfStatus(intf_);
    if (status == nullptr) {
      if (isSubIntf) return fact("link gate", "open: a sub-interface without an interface status");
      return fact("link gate", "closed: the interface has no status", !isForced_);
    }
    if (isSubIntf && status->forwardingModel() != Interface::ForwardingModel::bridged) {
      return fact("link gate", textOf("open: a sub-interface, ", status->forwardingModel()));
    }
    const bool isOpen = status->linkStatus() == Interface::LinkStatus::up;
    fact("link gate", textOf(isOpen ? "open" : "closed", ": the link is ", status->linkStatus()),
         !isOpen && !isForced_);
  }

  void portState() {
    if (const Port* const port = publishedPort()) {
      fact("active", port->active() ? "yes" : "no", !port->active() && !isForced_);
      fact("state", textOf(port->state()), port->state() != PortState::forwarding && !isForced_);
    }
    fact("forced", isForced_ ? "on: taken for active, and never for blocked" : "off");
    if (entry_ != nullptr) {
      const AllowedTrafficDirection direction = entry_->allowedTrafficDirection();
      fact("direction", textOf(direction), direction == AllowedTrafficDirection::none);
    }
  }

  /// The view has the last word; without one, what it would say.
  void view() {
    const bool hasDirection = entry_ != nullptr && entry_->allowedTrafficDirection() != AllowedTrafficDirection::none;
    if (!agent_.isViewing()) {
      result_.isForwarding = isForwardingInState_ && hasDirection;
      fact("view", "not running");
      return;
    }
    const Vlan::TopoVlan* const vlan = std::as_const(*agent_.view).topoVlan(vid_);
    const Vlan::Port* const port = vlan == nullptr ? nullptr : vlan->topoPort(intf_);
    if (port == nullptr) {
      fact("view", agent_.view->initDone() ? "the port is not in the VLAN" : "first pass not over", true);
      return;
    }
    std::string topologies;
    for (const auto& [name, mapping] : port->topo()) topologies += textOf(topologies.empty() ? "" : ", ", name);
    fact("view", textOf("in the VLAN through topology ", topologies, port->blocked() ? ", blocked" : ", not blocked"),
         port->blocked());
    result_.isForwarding = !port->blocked() && port->allowedTrafficDirection() != AllowedTrafficDirection::none;
  }

  void pending() {
    const TopoLibCodef* const codef = agent_.codef();
    if (codef == nullptr) return;
    const DirtyVlan* const dirty = std::as_const(*codef->dirtyVlanDir()).dirtyVlan(vid_);
    result_.isPending = dirty != nullptr;
    if (dirty == nullptr) {
      fact("pending", "nothing");
    } else if (codef->bookmark() == vid_) {
      fact("pending", textOf("the VLAN is under way", codef->oldTopoName().empty() ? "" : ", leaving topology ",
                             codef->oldTopoName()));
    } else if (dirty->dirty()) {
      fact("pending", "the whole VLAN");
    } else if (dirty->intf(intf_) != nullptr) {
      fact("pending", "this port of the VLAN");
    } else {
      fact("pending", "other ports of the VLAN");
      result_.isPending = false;
    }
  }

  const Agent& agent_;
  VlanId vid_;
  IntfId intf_;
  Explanation result_;
  bool isForced_ = false;
  const Bridging::VlanConfig* vlan_ = nullptr;
  Mox::String topoName_;
  const Bridging::Topology::TopoConfig* topo_ = nullptr;
  const TopoConfigSm* sm_ = nullptr;
  const Bridging::VlanPortConfig* entry_ = nullptr;  // of a port that is active or forced
  bool isForwardingInState_ = false;
};

}  // namespace

std::optional<std::size_t> Explanation::firstHindrance() const {
  if (isForwarding) return std::nullopt;
  for (std::size_t i = 0; i < facts.size(); ++i) {
    if (facts[i].isHindrance) return i;
  }
  return std::nullopt;
}

std::string Explanation::verdict() const {
  std::string text = textOf(port, isForwarding ? " forwards VLAN " : " does not forward VLAN ", vlan);
  if (const auto first = firstHindrance()) text += textOf(": ", facts[*first].name, " ", facts[*first].value);
  if (isPending) text += "; a change is pending";
  return text;
}

Explanation explain(const Agent& agent, VlanId vlan, IntfId port) { return Explainer(agent, vlan, port).explain(); }

}  // namespace Topo
