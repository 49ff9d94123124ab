#include "bridging/TopologyConfig.h"

namespace Bridging::Topology {

TopoPortConfig::TopoPortConfig(Quill::IntfId intf, unsigned number, PortState state) noexcept
    : intfId_(intf), number_(number), portState_(state) {}
TopoPortConfig::~TopoPortConfig() = default;

TopoConfig::TopoConfig(Mox::String name, unsigned topoNumber) noexcept
    : NamedEntity(std::move(name)), topoNumber_(topoNumber) {}
TopoConfig::~TopoConfig() = default;

Mox::Ptr<TopoPortConfig> TopoConfig::topoPortConfigIs(Quill::IntfId intf, unsigned number, PortState state) {
  const bool isThere = topoPortConfig_.has(intf);
  Mox::Ptr<TopoPortConfig> port = memberIs(topoPortConfig_, topoPortConfigAttr, intf, number, state);
  // A new port has its state, unless somebody who was told of it has already written another one.
  if (isThere) port->portStateIs(state);
  return port;
}

Config::Config(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Config::~Config() = default;

// The inverse changes ahead of the notification, and what may lack memory changes first, so that both agree whatever happens.

void Config::vidToTopoMapIs(VlanId vid, const Mox::String& name) {
  const Mox::String* const present = vidToTopoMap(vid);
  if (present != nullptr && *present == name) return;
  const bool isMapped = present != nullptr;
  Mox::String exchanged = name;
  vlanOfTopoIs(name, vid);
  try {
    vidToTopoMap_.exchange(vid, exchanged);
  } catch (...) {
    vlanOfTopoDel(name, vid);
    throw;
  }
  if (isMapped) vlanOfTopoDel(exchanged, vid);
  notify(vidToTopoMapAttr, vid);
}

void Config::vidToTopoMapDel(VlanId vid) {
  if (const Mox::String* const name = vidToTopoMap(vid)) vlanOfTopoDel(*name, vid);
  valueDel(vidToTopoMap_, vidToTopoMapAttr, vid);
}

void Config::vidToTopoMapDelAll() {
  const Mox::Ptr<Config> self(this);
  for (auto i = vidToTopoMap_.begin(); i; i.advance()) vidToTopoMapDel(i.key());
}

std::vector<VlanId> Config::vlansOfTopo(const Mox::String& name) const {
  std::vector<VlanId> vlans;
  if (const auto* const of = vlansOfTopo_.find(name)) {
    vlans.reserve(of->size());
    for (const auto& [vid, present] : *of) vlans.push_back(vid);
  }
  return vlans;
}

void Config::vlanOfTopoIs(const Mox::String& name, VlanId vid) {
  if (auto* const vlans = vlansOfTopo_.find(name)) {
    vlans->insertOrAssign(vid, {});
  } else {
    Mox::SetCollection<VlanId> first;
    first.insertOrAssign(vid, {});
    vlansOfTopo_.insert(name, std::move(first));
  }
}

void Config::vlanOfTopoDel(const Mox::String& name, VlanId vid) noexcept {
  auto* const vlans = vlansOfTopo_.find(name);
  vlans->erase(vid);
  if (vlans->empty()) vlansOfTopo_.erase(name);
}

void TopoConfig::topoPortConfigDel(Quill::IntfId intf) { memberDel(topoPortConfig_, topoPortConfigAttr, intf); }
void TopoConfig::topoPortConfigDelAll() { memberDelAll(topoPortConfig_, topoPortConfigAttr); }
Mox::Ptr<TopoConfig> Config::topoConfigIs(const Mox::String& name, unsigned topoNumber) {
  return memberIs(topoConfig_, topoConfigAttr, name, topoNumber);
}
void Config::topoConfigDel(const Mox::String& name) { memberDel(topoConfig_, topoConfigAttr, name); }
void Config::topoConfigDelAll() { memberDelAll(topoConfig_, topoConfigAttr); }

Mox::Ptr<Config> configFactory(const Mox::String& name) { return Mox::makePtr<Config>(name); }

}  // namespace Bridging::Topology
