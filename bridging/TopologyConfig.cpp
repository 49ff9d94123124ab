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

void Config::vidToTopoMapIs(VlanId vid, const Mox::String& name) {
  topoOfVlanIs(vid, &name);
  valueIs(vidToTopoMap_, vidToTopoMapAttr, vid, name);
}

void Config::vidToTopoMapDel(VlanId vid) {
  topoOfVlanIs(vid, nullptr);
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

/// Moves a VLAN in the inverse map, ahead of the change of the map itself, which notifies.
void Config::topoOfVlanIs(VlanId vid, const Mox::String* name) {
  const Mox::String* const old = vidToTopoMap(vid);
  if (old != nullptr && name != nullptr && *old == *name) return;
  if (old != nullptr) {
    auto* const vlans = vlansOfTopo_.find(*old);
    vlans->erase(vid);
    if (vlans->empty()) vlansOfTopo_.erase(*old);
  }
  if (name != nullptr) vlansOfTopo_.insert(*name, {}).first->insertOrAssign(vid, {});
}

Mox::Ptr<Config> configFactory(const Mox::String& name) { return Mox::makePtr<Config>(name); }

}  // namespace Bridging::Topology
