// Compares what the library has published with the model, and its books with each other.
//
// For a library whose backlog is worked off. The answer is one line per difference.

#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "tests/topolib/model/Model.h"

namespace Test {

class Check {
 public:
  explicit Check(const Agent& agent)
      : agent_(agent), model_(agent), expected_(model_.topos()), published_(*agent.state), libSm_(*agent.libSm) {}

  /// What is wrong; nothing if all is well.
  [[nodiscard]] std::vector<std::string> differences() {
    backlogIsWorkedOff();
    topologies();
    registrations();
    vlansInService();
    expansions();
    return std::move(lines_);
  }

 private:
  /// Writes a line unless the statement is true.
  template <class... Piece>
  void holds(bool isTrue, const Piece&... piece) {
    if (isTrue) return;
    std::ostringstream line;
    (line << ... << piece);
    lines_.push_back(line.str());
  }

  void backlogIsWorkedOff() {
    const auto& codef = *libSm_.topoLibCodef();
    holds(published_.initDone(), "initDone is false");
    holds(libSm_.dirtyVlanDir()->dirtyVlan().empty(), "the directory of dirty VLANs is not empty");
    holds(codef.dirtyVlan().empty(), "the processor watches a VLAN that is not dirty");
    holds(codef.bookmark().isNone(), "there is a bookmark on VLAN ", codef.bookmark());
    holds(codef.oldTopoName().empty(), "the processor has an old topology: ", codef.oldTopoName());
    holds(codef.codefState()->idle(), "the processor is not idle");
    holds(!codef.isRunning(), "the processor is running");
  }

  void topologies() {
    for (const auto& [name, topo] : expected_) holds(published_.topo(name) != nullptr, name, ": is missing");
    for (const auto& [name, topo] : published_.topo()) {
      const auto expected = expected_.find(name);
      holds(expected != expected_.end(), name, ": is not wanted");
      if (expected != expected_.end()) ports(topo, expected->second);
      holds(libSm_.topoConfigSm(name) != nullptr, name, ": has no TopoConfigSm");
    }
    for (const auto& [name, sm] : libSm_.topoConfigSm()) topoConfigSm(name, sm);
  }

  void topoConfigSm(const Mox::String& name, const Topology::Library::TopoConfigSm& sm) {
    const Start::Status watched = agent_.start.status;
    const auto* const status = watched == Start::Status::plain ? agent_.status->topoStatus(name) : nullptr;
    const auto* const instStatus = watched == Start::Status::instance ? agent_.statusInst->topoStatus(name) : nullptr;
    holds(published_.topo(name) != nullptr, name, ": has a TopoConfigSm and no Topo");
    holds(sm.topoConfig() == agent_.config->topoConfig(name), name,
          ": the TopoConfigSm stands on an old configuration");
    holds(sm.topoStatus() == status, name, ": the TopoConfigSm stands on an old status");
    holds(sm.topoInstStatus() == instStatus, name, ": the TopoConfigSm stands on an old instance status");
    for (const auto& [intf, portSm] : sm.topoPortConfigSm()) {
      const auto* const topo = published_.topo(name);
      holds(topo != nullptr && topo->port(intf) != nullptr, name, "/", intf, ": has a TopoPortConfigSm and no Port");
    }
  }

  void ports(const Topology::Library::Topo& topo, const ModelTopo& expected) {
    for (const auto& [intf, port] : expected.ports) {
      holds(topo.port(intf) != nullptr, topo.name(), "/", intf, ": is missing");
    }
    for (const auto& [intf, port] : topo.port()) {
      const auto found = expected.ports.find(intf);
      holds(found != expected.ports.end(), topo.name(), "/", intf, ": should not be there");
      holds(!port.vlanPortConfig().empty(), topo.name(), "/", intf, ": carries no VLAN");
      if (found == expected.ports.end()) continue;
      entries(topo.name(), port, found->second);
      activity(topo.name(), port, found->second);
    }
  }

  void entries(const Mox::String& topoName, const Topology::Library::Port& port, const ModelPort& expected) {
    for (const auto& [vid, value] : expected.entries) {
      const auto* const entry = port.vlanPortConfig(vid);
      holds(entry != nullptr, topoName, "/", port.intf(), ": VLAN ", vid, " is missing");
      holds(entry == nullptr || *entry == value, topoName, "/", port.intf(), ": VLAN ", vid, " has another value");
    }
    for (const auto& [vid, value] : port.vlanPortConfig()) {
      holds(expected.entries.contains(vid), topoName, "/", port.intf(), ": VLAN ", vid, " should not be there");
    }
  }

  void activity(const Mox::String& topoName, const Topology::Library::Port& port, const ModelPort& expected) {
    const auto* const topoSm = libSm_.topoConfigSm(topoName);
    const bool hasSm = topoSm != nullptr && topoSm->topoPortConfigSm(port.intf()) != nullptr;
    holds(port.active() == hasSm, topoName, "/", port.intf(), ": active ", port.active(), ", TopoPortConfigSm ", hasSm);
    holds(!port.active() || expected.isAdmitted, topoName, "/", port.intf(), ": is active");
    holds(port.active() || !expected.isAdmitted || !expected.isOwn, topoName, "/", port.intf(), ": is not active");
    const auto state = port.active() ? expected.state : Bridging::Topology::PortState{};
    const std::uint32_t fdbFlush = port.active() ? expected.fdbFlush : 0;
    holds(port.state() == state, topoName, "/", port.intf(), ": state ", port.state(), ", should be ", state);
    holds(port.fdbFlush() == fdbFlush, topoName, "/", port.intf(), ": fdbFlush ", port.fdbFlush(), ", should be ",
          fdbFlush);
  }

  void registrations() {
    std::map<Bridging::VlanId, Mox::String> registered;
    for (const auto& [name, mapped] : libSm_.topoToVlanMap()->mappedVlan()) {
      const auto topo = expected_.find(name);
      for (const auto& [vid, isMapped] : mapped.vlan()) {
        const bool isExpected = topo != expected_.end() && topo->second.vlans.contains(vid);
        holds(isExpected, name, ": VLAN ", vid, " should not be registered");
        holds(registered.emplace(vid, name).second, "VLAN ", vid, " is registered with more than one topology");
        holds(libSm_.topoToVlanMap()->topoOfVlan(vid) == name, "VLAN ", vid, ": topoOfVlan is wrong");
      }
    }
    for (const auto& [name, topo] : expected_) {
      for (const Bridging::VlanId vid : topo.vlans) {
        holds(registered.contains(vid), name, ": VLAN ", vid, " is not registered");
      }
    }
  }

  /// A VLAN that is given to a topology on its way out is left as it is until that is wanted again.
  [[nodiscard]] bool isPassedOver(Bridging::VlanId vid) const {
    const Mox::String topoName = libSm_.configuredTopo(vid);
    return !topoName.empty() && !expected_.contains(topoName);
  }

  void vlansInService() {
    for (const auto& [vid, sm] : libSm_.vlanConfigSm()) {
      if (isPassedOver(vid)) continue;
      holds(model_.isInService(vid), "VLAN ", vid, " has a VlanConfigSm");
      holds(sm.vlanConfig() == agent_.brConfig->vlanConfig(vid), "VLAN ", vid, ": the VlanConfigSm is an old one");
    }
    for (const auto& [name, topo] : expected_) {
      for (const Bridging::VlanId vid : topo.vlans) {
        holds(libSm_.vlanConfigSm(vid) != nullptr, "VLAN ", vid, " has no VlanConfigSm");
      }
    }
  }

  /// The maps are inverse, and say what the VLANs in service expand into, each in its own topology.
  void expansions() {
    for (const auto& [vid, sm] : libSm_.vlanConfigSm()) {
      if (isPassedOver(vid)) continue;
      const Bridging::VlanIdOrNone expVid = model_.expanded(vid);
      const auto* const set = agent_.libSm->vlanToExpVlanSetMap(vid);
      holds(expVid.isNone() == (set == nullptr), "VLAN ", vid, ": expansion into ", expVid, ", set ", set != nullptr);
      const Mox::String* const in = libSm_.vidToExpandedTopoMap(vid);
      const bool isInPlace = in == nullptr ? libSm_.configuredTopo(vid).empty() : *in == libSm_.configuredTopo(vid);
      holds(expVid.isNone() || isInPlace, "VLAN ", vid, ": expanded in another topology");
    }
    for (const auto& [vid, set] : libSm_.vlanToExpVlanSetMap()) {
      holds(set.someVlan().size() == 1, "VLAN ", vid, ": expands into ", set.someVlan().size(), " VLANs");
      holds(!libSm_.expVlanToVlanSetMapHas(vid), "VLAN ", vid, ": expands and is expanded into");
      for (const auto& [expVid, present] : set.someVlan()) {
        const auto* const inverse = agent_.libSm->expVlanToVlanSetMap(expVid);
        holds(inverse != nullptr && inverse->someVlan(vid), "VLAN ", vid, ": ", expVid, " does not know of it");
        holds(isPassedOver(vid) || model_.expanded(vid) == expVid, "VLAN ", vid, ": should not expand into ", expVid);
      }
    }
    for (const auto& [expVid, set] : libSm_.expVlanToVlanSetMap()) {
      holds(!set.someVlan().empty(), "VLAN ", expVid, ": an empty set of expanding VLANs");
      for (const auto& [vid, present] : set.someVlan()) {
        const auto* const inverse = agent_.libSm->vlanToExpVlanSetMap(vid);
        holds(inverse != nullptr && inverse->someVlan(expVid), "VLAN ", expVid, ": ", vid, " does not know of it");
      }
    }
    for (const auto& [vid, topoName] : libSm_.vidToExpandedTopoMap()) {
      holds(libSm_.vlanToExpVlanSetMapHas(vid), "VLAN ", vid, ": expanded in ", topoName, " without an expansion");
    }
  }

  const Agent& agent_;
  const Model model_;
  const Model::Topos expected_;
  const Topology::Library::LibState& published_;
  const Topology::Library::LibSm& libSm_;
  std::vector<std::string> lines_;
};

}  // namespace Test
