// What the topology library has to publish once its backlog is worked off, told from its inputs alone.
//
// There is no memory here and no order of events: a topology is there while it is wanted, a VLAN is registered with the
// topology that the configuration gives it to, a port carries what its VLANs configure and inherit.

#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "tests/topolib/Agent.h"

namespace Test {

struct ModelPort {
  std::map<Bridging::VlanId, Bridging::VlanPortConfig> entries;
  /// Whether an entry is its VLAN's own. A port that is merely inherited has been announced to nobody, and so may be
  /// inactive although nothing speaks against it.
  bool isOwn = false;
  bool isAdmitted = false;
  // What an active port shows.
  Bridging::Topology::PortState state{};
  std::uint32_t fdbFlush = 0;
};

struct ModelTopo {
  std::set<Bridging::VlanId> vlans;
  std::map<Quill::IntfId, ModelPort> ports;
};

class Model {
 public:
  using Topos = std::map<Mox::String, ModelTopo>;

  explicit Model(const Agent& agent) : in_(agent) {}

  [[nodiscard]] Topos topos() const {
    Topos result;
    for (const auto& [name, topoConfig] : in_.config->topoConfig()) {
      if (isWanted(name)) result[name];
    }
    for (const auto& [vid, name] : in_.config->vidToTopoMap()) {
      if (isRegistered(vid)) addVlan(result[name], vid);
    }
    for (auto& [name, topo] : result) {
      for (auto& [intf, port] : topo.ports) judge(name, intf, port);
    }
    return result;
  }

  [[nodiscard]] bool isInService(Bridging::VlanId vid) const {
    const Bridging::VlanConfig* const vlan = vlanConfig(vid);
    return vlan != nullptr && !(vlan->internal() && in_.start.ignoreInternalVlan);
  }

  /// The VLAN that a VLAN in service expands into, or none.
  [[nodiscard]] Bridging::VlanIdOrNone expanded(Bridging::VlanId vid) const {
    return isInService(vid) ? vlanConfig(vid)->floodsetExpandedVlan() : Bridging::VlanIdOrNone();
  }

 private:
  using Status = Start::Status;

  [[nodiscard]] const Bridging::VlanConfig* vlanConfig(Bridging::VlanId vid) const {
    return std::as_const(*in_.brConfig).vlanConfig(vid);
  }

  [[nodiscard]] bool isWanted(const Mox::String& name) const {
    if (std::as_const(*in_.config).topoConfig(name) == nullptr) return false;
    if (in_.start.status == Status::plain) return std::as_const(*in_.status).topoStatus(name) != nullptr;
    if (in_.start.status == Status::none) return false;
    return in_.start.mode == Topology::Library::LibSmMode::createStatus ||
           std::as_const(*in_.statusInst).topoStatus(name) != nullptr;
  }

  [[nodiscard]] bool isRegistered(Bridging::VlanId vid) const {
    const Mox::String* const name = in_.config->vidToTopoMap(vid);
    return name != nullptr && isInService(vid) && isWanted(*name);
  }

  [[nodiscard]] bool passesFilter(Quill::IntfId intf) const {
    if (in_.start.intfFilterType != "LocalInterface") return true;
    return intf.kind() != Quill::IntfKind::subIntf && intf.kind() != Quill::IntfKind::other;
  }

  void addVlan(ModelTopo& topo, Bridging::VlanId vid) const {
    topo.vlans.insert(vid);
    const Bridging::VlanConfig& vlan = *vlanConfig(vid);
    for (const auto& [intf, value] : vlan.vlanPortConfig()) {
      if (!passesFilter(intf)) continue;
      topo.ports[intf].entries[vid] = value;
      topo.ports[intf].isOwn = true;
    }
    const Bridging::VlanIdOrNone expVid = vlan.floodsetExpandedVlan();
    if (expVid.isNone() || !isRegistered(Bridging::VlanId(expVid))) return;
    for (const auto& [intf, value] : vlanConfig(Bridging::VlanId(expVid))->vlanPortConfig()) {
      const bool hasOwnEntry = vlan.vlanPortConfig(intf) != nullptr;
      if (!hasOwnEntry && passesFilter(intf)) topo.ports[intf].entries[vid] = value;
    }
  }

  void judge(const Mox::String& topoName, Quill::IntfId intf, ModelPort& port) const {
    const auto* const portConfig = std::as_const(*in_.config->topoConfig(topoName)).topoPortConfig(intf);
    port.isAdmitted = portConfig != nullptr && hasPortStatus(topoName, intf) && isLinkGateOpen(intf);
    if (!port.isAdmitted) return;
    port.state = portConfig->portState();
    port.fdbFlush = portConfig->fdbFlush();
  }

  [[nodiscard]] bool hasPortStatus(const Mox::String& topoName, Quill::IntfId intf) const {
    if (in_.start.status == Status::plain) {
      const auto* const status = std::as_const(*in_.status).topoStatus(topoName);
      return status != nullptr && status->topoPortStatus(intf);
    }
    const auto* const status = std::as_const(*in_.statusInst).topoStatus(topoName);
    return status != nullptr && status->topoPortStatus(intf) != nullptr;
  }

  [[nodiscard]] bool isLinkGateOpen(Quill::IntfId intf) const {
    if (in_.start.status != Status::plain || intf.kind() == Quill::IntfKind::cpu) return true;
    const bool isSubIntf = intf.kind() == Quill::IntfKind::subIntf;
    const auto* const status = std::as_const(*in_.intfDir).intfStatus(intf);
    if (status == nullptr) return isSubIntf;
    const bool isBridged = status->forwardingModel() == Interface::ForwardingModel::bridged;
    return status->linkStatus() == Interface::LinkStatus::up || (isSubIntf && !isBridged);
  }

  const Agent& in_;
};

}  // namespace Test
