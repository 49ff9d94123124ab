// interface, vlan, map and force: what is configured by interface or by VLAN.

#include "topo/Arguments.h"
#include "topo/ConfigCommands.h"
#include "topo/Session.h"

namespace Topo {

namespace {

using Bridging::AllowedTrafficDirection;

[[nodiscard]] std::string nameOf(Bridging::VlanId vid) { return "vlan " + std::to_string(vid.value()); }

void requireVlans(const Agent& agent, const VlanList& vlans) {
  vlans.forEach([&](Bridging::VlanId vid) {
    if (!agent.bridging->vlanConfig().has(vid)) {
      throw ScenarioError(nameOf(vid) + " does not exist; make it first: " + nameOf(vid));
    }
  });
}

void vlanPort(Session& session, const VlanList& vlans, Words& words) {
  const IntfRange intfs = takeIntfs(words);
  std::optional<bool> untagged;
  std::optional<bool> pvid;
  std::optional<AllowedTrafficDirection> direction;
  while (const std::optional<Word> word = words.next()) {
    if (*word == "tagged" || *word == "untagged") {
      setOnce(untagged, "tagged or untagged", *word == "untagged");
    } else if (*word == "pvid" || *word == "no-pvid") {
      setOnce(pvid, "pvid or no-pvid", *word == "pvid");
    } else if (*word == "direction") {
      setOnce(direction, "direction", takeEnum<AllowedTrafficDirection>(words));
    } else {
      throwUnexpected("tagged, untagged, pvid, no-pvid or direction", word);
    }
  }
  Bridging::Config& bridging = *session.agent().bridging;
  requireVlans(session.agent(), vlans);
  vlans.forEach([&](Bridging::VlanId vid) {
    const Mox::Ptr<Bridging::VlanConfig> vlan = bridging.vlanConfig(vid);
    intfs.forEach([&](Quill::IntfId intf) {
      const Bridging::VlanPortConfig* const present = vlan->vlanPortConfig(intf);
      Bridging::VlanPortConfig port = present == nullptr ? Bridging::VlanPortConfig() : *present;
      if (untagged) port.untaggedIs(*untagged);
      if (pvid) port.pvidIs(*pvid);
      if (direction) port.allowedTrafficDirectionIs(*direction);
      vlan->vlanPortConfigIs(intf, port);
    });
  });
}

/// Whether a VLAN is internal is fixed when it is made.
void requireKind(const Agent& agent, const VlanList& vlans, bool isInternal) {
  vlans.forEach([&](Bridging::VlanId vid) {
    const Bridging::VlanConfig* const vlan = std::as_const(*agent.bridging).vlanConfig(vid);
    if (vlan != nullptr && vlan->internal() != isInternal) {
      throw ScenarioError(nameOf(vid) + " is " + (isInternal ? "external" : "internal") +
                          ", which is fixed when it is made; remove it first: no " + nameOf(vid));
    }
  });
}

}  // namespace

void interfaceCommand(Session& session, Words& words) {
  const IntfRange intfs = takeIntfs(words);
  std::optional<Interface::LinkStatus> link;
  std::optional<Interface::ForwardingModel> model;
  while (const std::optional<Word> word = words.next()) {
    if (*word == "link") {
      setOnce(link, "link", takeEnum<Interface::LinkStatus>(words));
    } else if (*word == "model") {
      setOnce(model, "model", takeEnum<Interface::ForwardingModel>(words));
    } else {
      throwUnexpected("link or model", word);
    }
  }
  intfs.forEach([&](Quill::IntfId intf) {
    const Mox::Ptr<Interface::EthIntfStatus> status = session.agent().interfaces->intfStatusIs(intf);
    if (link) status->linkStatusIs(*link);
    if (model) status->forwardingModelIs(*model);
  });
}

void noInterfaceCommand(Session& session, Words& words) {
  const IntfRange intfs = takeIntfs(words);
  words.finish();
  intfs.forEach([&](Quill::IntfId intf) { session.agent().interfaces->intfStatusDel(intf); });
}

void vlanCommand(Session& session, Words& words) {
  const VlanList vlans = takeVlans(words);
  if (words.nextIf("port")) return vlanPort(session, vlans, words);
  std::optional<bool> isInternal;
  std::optional<Bridging::VlanIdOrNone> expanded;
  while (const std::optional<Word> word = words.next()) {
    if (*word == "internal" || *word == "external") {
      setOnce(isInternal, "internal or external", *word == "internal");
    } else if (*word == "expand") {
      setOnce(expanded, "expand", takeVlanOrNone(words));
    } else {
      throwUnexpected("port, internal, external or expand", word);
    }
  }
  if (isInternal) requireKind(session.agent(), vlans, *isInternal);
  Bridging::Config& bridging = *session.agent().bridging;
  vlans.forEach([&](Bridging::VlanId vid) {
    Mox::Ptr<Bridging::VlanConfig> vlan = bridging.vlanConfig(vid);
    if (!vlan) vlan = bridging.vlanConfigIs(vid, isInternal.value_or(false));
    if (expanded) vlan->floodsetExpandedVlanIs(*expanded);
  });
}

void noVlanCommand(Session& session, Words& words) {
  const VlanList vlans = takeVlans(words);
  Bridging::Config& bridging = *session.agent().bridging;
  if (!words.nextIf("port")) {
    if (const std::optional<Word> word = words.next()) throwUnexpected("port or the end of the line", word);
    vlans.forEach([&](Bridging::VlanId vid) { bridging.vlanConfigDel(vid); });
    return;
  }
  const IntfRange intfs = takeIntfs(words);
  words.finish();
  requireVlans(session.agent(), vlans);
  vlans.forEach([&](Bridging::VlanId vid) {
    const Mox::Ptr<Bridging::VlanConfig> vlan = bridging.vlanConfig(vid);
    intfs.forEach([&](Quill::IntfId intf) { vlan->vlanPortConfigDel(intf); });
  });
}

void mapCommand(Session& session, Words& words) {
  const VlanList vlans = takeVlans(words);
  const Mox::String topology = takeName(words, "topology");
  words.finish();
  vlans.forEach([&](Bridging::VlanId vid) { session.agent().config->vidToTopoMapIs(vid, topology); });
}

void noMapCommand(Session& session, Words& words) {
  const VlanList vlans = takeVlans(words);
  words.finish();
  vlans.forEach([&](Bridging::VlanId vid) { session.agent().config->vidToTopoMapDel(vid); });
}

void forceCommand(Session& session, Words& words) {
  const IntfRange intfs = takeIntfs(words);
  const bool isForced = takeOnOff(words, "force");
  words.finish();
  intfs.forEach([&](Quill::IntfId intf) { session.agent().view->forceEnabledPortsIs(intf, isForced); });
}

void noForceCommand(Session& session, Words& words) {
  const IntfRange intfs = takeIntfs(words);
  words.finish();
  intfs.forEach([&](Quill::IntfId intf) { session.agent().view->forceEnabledPortsDel(intf); });
}

}  // namespace Topo
