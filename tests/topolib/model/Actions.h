// What the other components of an agent do to the inputs of the topology library: each a line of a program and its effect.
//
// An action that makes no sense as things stand, such as changing what is not there, does nothing. So any list of actions
// is a valid program, also one from which some were taken away. None makes a VLAN expand and be expanded into at once,
// which the library answers by an abort.

#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <utility>

#include "tests/topolib/Agent.h"

namespace Test {

struct Action {
  std::string line;
  std::function<void(Agent&)> apply;
};

/// The line is made of the pieces.
template <class... Piece>
[[nodiscard]] Action action(std::function<void(Agent&)> apply, const Piece&... piece) {
  std::ostringstream line;
  (line << ... << piece);
  return {line.str(), std::move(apply)};
}

/// A few values that differ from each other.
[[nodiscard]] inline Bridging::VlanPortConfig vlanPortConfigOf(unsigned n) {
  return Bridging::VlanPortConfig(Bridging::AllowedTrafficDirection(n % 4), n % 2 != 0);
}

// VLANs and their topologies.

[[nodiscard]] inline Action mapVlan(unsigned vid, const std::string& topo) {
  return action([=](Agent& a) { a.config->vidToTopoMapIs(vid, topo); }, "config->vidToTopoMapIs(", vid, ", \"", topo,
                "\")");
}
[[nodiscard]] inline Action unmapVlan(unsigned vid) {
  return action([=](Agent& a) { a.config->vidToTopoMapDel(vid); }, "config->vidToTopoMapDel(", vid, ")");
}

// VLAN configurations.

/// Whether a VLAN may come to expand into another without any VLAN expanding and being expanded into.
[[nodiscard]] inline bool mayExpandInto(const Agent& a, Bridging::VlanId vid, Bridging::VlanId expVid) {
  bool isAllowed = vid != expVid;
  for (const auto& [other, vlan] : a.brConfig->vlanConfig()) {
    const Bridging::VlanIdOrNone target = vlan.floodsetExpandedVlan();
    isAllowed = isAllowed && target != vid && (other != expVid || target.isNone());
  }
  return isAllowed;
}

[[nodiscard]] inline Action makeVlan(unsigned vid, bool internal = false) {
  return action(
      [=](Agent& a) {
        if (a.brConfig->vlanConfig(vid) == nullptr) (void)a.brConfig->vlanConfigIs(vid, internal);
      },
      "brConfig->vlanConfigIs(", vid, internal ? ", true)" : ")");
}
[[nodiscard]] inline Action deleteVlan(unsigned vid) {
  return action([=](Agent& a) { a.brConfig->vlanConfigDel(vid); }, "brConfig->vlanConfigDel(", vid, ")");
}
/// Deletes the configuration of a VLAN and makes it again with the same ports.
[[nodiscard]] inline Action remakeVlan(unsigned vid, bool internal = false) {
  return action(
      [=](Agent& a) {
        const Mox::Ptr<const Bridging::VlanConfig> before = a.brConfig->vlanConfig(vid);
        if (!before) return;
        a.brConfig->vlanConfigDel(vid);
        // Somebody who was told of the deletion may have been faster.
        if (a.brConfig->vlanConfig(vid) == nullptr) (void)a.brConfig->vlanConfigIs(vid, internal);
        const Mox::Ptr<Bridging::VlanConfig> after = a.brConfig->vlanConfig(vid);
        if (!after) return;
        for (const auto& [intf, value] : before->vlanPortConfig()) after->vlanPortConfigIs(intf, value);
        const Bridging::VlanIdOrNone expVid = before->floodsetExpandedVlan();
        if (a.brConfig->vlanConfig(vid) == after.get() && !expVid.isNone() &&
            mayExpandInto(a, vid, Bridging::VlanId(expVid))) {
          after->floodsetExpandedVlanIs(expVid);
        }
      },
      "remakeVlan(", vid, internal ? ", true)" : ")", "  // the same configuration, made anew");
}
[[nodiscard]] inline Action addPort(unsigned vid, const std::string& intf, unsigned value = 0) {
  return action(
      [=](Agent& a) {
        if (auto* const vlan = a.brConfig->vlanConfig(vid)) vlan->vlanPortConfigIs(intf, vlanPortConfigOf(value));
      },
      "brConfig->vlanConfig(", vid, ")->vlanPortConfigIs(\"", intf, "\", vlanPortConfigOf(", value, "))");
}
[[nodiscard]] inline Action removePort(unsigned vid, const std::string& intf) {
  return action(
      [=](Agent& a) {
        if (auto* const vlan = a.brConfig->vlanConfig(vid)) vlan->vlanPortConfigDel(intf);
      },
      "brConfig->vlanConfig(", vid, ")->vlanPortConfigDel(\"", intf, "\")");
}

[[nodiscard]] inline Action expandVlan(unsigned vid, unsigned expVid) {
  return action(
      [=](Agent& a) {
        auto* const vlan = a.brConfig->vlanConfig(vid);
        if (vlan != nullptr && (expVid == 0 || mayExpandInto(a, vid, expVid))) vlan->floodsetExpandedVlanIs(expVid);
      },
      "brConfig->vlanConfig(", vid, ")->floodsetExpandedVlanIs(", expVid, ")");
}

// Topology configurations.

[[nodiscard]] inline Action makeTopo(const std::string& topo) {
  return action([=](Agent& a) { (void)a.config->topoConfigIs(topo, 1); }, "config->topoConfigIs(\"", topo, "\", 1)");
}
[[nodiscard]] inline Action deleteTopo(const std::string& topo) {
  return action(
      [=](Agent& a) {
        if (a.mayDeleteTopo(topo)) a.config->topoConfigDel(topo);
      },
      "config->topoConfigDel(\"", topo, "\")");
}
/// Deletes the configuration of a topology and makes it again with the same ports.
[[nodiscard]] inline Action remakeTopo(const std::string& topo) {
  return action(
      [=](Agent& a) {
        const Mox::Ptr<const Bridging::Topology::TopoConfig> before = a.config->topoConfig(topo);
        if (!before) return;
        a.config->topoConfigDel(topo);
        const auto after = a.config->topoConfigIs(topo, 1);
        for (const auto& [intf, port] : before->topoPortConfig()) {
          after->topoPortConfigIs(intf, 0, port.portState())->fdbFlushIs(port.fdbFlush());
        }
      },
      "remakeTopo(\"", topo, "\")  // the same configuration, made anew");
}
[[nodiscard]] inline Action portState(const std::string& topo, const std::string& intf, unsigned state) {
  return action(
      [=](Agent& a) {
        if (auto* const config = a.config->topoConfig(topo)) {
          (void)config->topoPortConfigIs(intf, 0, Bridging::Topology::PortState(state % 4));
        }
      },
      "config->topoConfig(\"", topo, "\")->topoPortConfigIs(\"", intf, "\", 0, PortState(", state % 4, "))");
}
[[nodiscard]] inline Action flushPort(const std::string& topo, const std::string& intf, std::uint32_t count) {
  return action(
      [=](Agent& a) {
        auto* const config = a.config->topoConfig(topo);
        auto* const port = config == nullptr ? nullptr : config->topoPortConfig(intf);
        if (port != nullptr) port->fdbFlushIs(count);
      },
      "config->topoConfig(\"", topo, "\")->topoPortConfig(\"", intf, "\")->fdbFlushIs(", count, ")");
}
[[nodiscard]] inline Action deletePortConfig(const std::string& topo, const std::string& intf) {
  return action(
      [=](Agent& a) {
        if (auto* const config = a.config->topoConfig(topo)) config->topoPortConfigDel(intf);
      },
      "config->topoConfig(\"", topo, "\")->topoPortConfigDel(\"", intf, "\")");
}

// Topology statuses, of both kinds at once: one of them is watched.

[[nodiscard]] inline Action makeStatus(const std::string& topo) {
  return action(
      [=](Agent& a) {
        (void)a.status->topoStatusIs(topo);
        (void)a.statusInst->topoStatusIs(topo, 1);
      },
      "topoStatusIs(\"", topo, "\")  // on status and statusInst");
}
[[nodiscard]] inline Action deleteStatus(const std::string& topo) {
  return action(
      [=](Agent& a) {
        a.status->topoStatusDel(topo);
        a.statusInst->topoStatusDel(topo);
      },
      "topoStatusDel(\"", topo, "\")  // on status and statusInst");
}
/// Deletes the statuses of a topology and makes them again with the same ports. A publisher that somebody starts on the
/// way, when told of a step, finds the instance status as it is then and has it to itself: nothing more is written.
[[nodiscard]] inline Action remakeStatus(const std::string& topo) {
  return action(
      [=](Agent& a) {
        if (const Mox::Ptr<const Bridging::Topology::TopoStatus> before = a.status->topoStatus(topo)) {
          a.status->topoStatusDel(topo);
          const auto after = a.status->topoStatusIs(topo);
          for (const auto& [intf, isThere] : before->topoPortStatus()) after->topoPortStatusIs(intf);
        }
        if (const Mox::Ptr<const Bridging::Topology::Inst::TopoStatus> before = a.statusInst->topoStatus(topo)) {
          a.statusInst->topoStatusDel(topo);
          if (!a.mayWriteStatusInst()) return;
          const auto after = a.statusInst->topoStatusIs(topo, 1);
          for (const auto& [intf, number] : before->topoPortStatus()) {
            if (!a.mayWriteStatusInst()) return;
            after->topoPortStatusIs(intf, number);
          }
        }
      },
      "remakeStatus(\"", topo, "\")  // the same statuses, made anew");
}
[[nodiscard]] inline Action portStatus(const std::string& topo, const std::string& intf, bool isThere = true) {
  const auto apply = [=](Agent& a) {
    if (auto* const status = a.status->topoStatus(topo)) {
      isThere ? status->topoPortStatusIs(intf) : status->topoPortStatusDel(intf);
    }
    if (auto* const status = a.statusInst->topoStatus(topo)) {
      isThere ? status->topoPortStatusIs(intf, 0) : status->topoPortStatusDel(intf);
    }
  };
  return action(apply, "topoStatus(\"", topo, "\")->topoPortStatus", isThere ? "Is" : "Del", "(\"", intf,
                "\")  // on status and statusInst");
}

// Interfaces.

[[nodiscard]] inline Action linkIs(const std::string& intf, Interface::LinkStatus status = Interface::LinkStatus::up) {
  return action([=](Agent& a) { a.intfDir->intfStatusIs(intf)->linkStatusIs(status); }, "intfDir->intfStatusIs(\"",
                intf, "\")->linkStatusIs(LinkStatus::", status, ")");
}
[[nodiscard]] inline Action forwarding(const std::string& intf, Interface::ForwardingModel model) {
  return action([=](Agent& a) { a.intfDir->intfStatusIs(intf)->forwardingModelIs(model); }, "intfDir->intfStatusIs(\"",
                intf, "\")->forwardingModelIs(ForwardingModel::", model, ")");
}
[[nodiscard]] inline Action deleteIntf(const std::string& intf) {
  return action([=](Agent& a) { a.intfDir->intfStatusDel(intf); }, "intfDir->intfStatusDel(\"", intf, "\")");
}

// The library.

/// Marks a port of a VLAN, or with the empty name the whole VLAN, though nothing has changed.
[[nodiscard]] inline Action markPort(unsigned vid, const std::string& intf) {
  return action(
      [=](Agent& a) {
        if (a.libSm) a.libSm->doOnVlanPortUpdate(vid, intf);
      },
      "libSm->doOnVlanPortUpdate(", vid, ", \"", intf, "\")");
}

// Time.

[[nodiscard]] inline Action advance(double seconds) {
  return action([=](Agent& a) { a.time->advance(seconds); }, "time->advance(", seconds, ")");
}
[[nodiscard]] inline Action dispatchOnce() {
  return action([](Agent& /*a*/) { Mox::activityManager()->dispatch(); }, "Mox::activityManager()->dispatch()");
}

}  // namespace Test
