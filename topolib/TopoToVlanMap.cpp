#include "topolib/TopoToVlanMap.h"

namespace Topology::Library {

MappedVlan::MappedVlan(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
MappedVlan::~MappedVlan() = default;

void MappedVlan::vlanIs(Bridging::VlanId vid, bool v) {
  TopoToVlanMap* const in = vlan_.has(vid) ? nullptr : map();
  if (!vlan_.exchange(vid, v)) return;
  if (in != nullptr) {
    try {
      in->registered(vid, name());
    } catch (...) {
      vlan_.erase(vid);
      throw;
    }
  }
  notify(vlanAttr, vid);
}

void MappedVlan::vlanDel(Bridging::VlanId vid) {
  if (TopoToVlanMap* const in = map(); in != nullptr && vlan_.has(vid)) in->unregistered(vid);
  valueDel(vlan_, vlanAttr, vid);
}

void MappedVlan::vlanDelAll() {
  const Mox::Ptr<MappedVlan> self(this);
  for (auto i = vlan_.begin(); i; i.advance()) vlanDel(i.key());
}

TopoToVlanMap* MappedVlan::map() noexcept { return static_cast<TopoToVlanMap*>(parent()); }

TopoToVlanMap::TopoToVlanMap(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
TopoToVlanMap::~TopoToVlanMap() = default;

void TopoToVlanMap::mappedVlanDel(const Mox::String& name) {
  if (const MappedVlan* const gone = mappedVlan(name)) {
    for (const auto& [vid, present] : gone->vlan()) unregistered(vid);
  }
  memberDel(mappedVlan_, mappedVlanAttr, name);
}

void TopoToVlanMap::mappedVlanDelAll() {
  const Mox::Ptr<TopoToVlanMap> self(this);
  for (auto i = mappedVlan_.begin(); i; i.advance()) mappedVlanDel(Mox::String(i.key()));
}

Mox::String TopoToVlanMap::topoOfVlan(Bridging::VlanId vid) const {
  const Registration* const found = registrations_.find(vid);
  if (found == nullptr) return {};
  if (found->isSole) return found->topo;
  for (const auto& [name, mapped] : mappedVlan_) {
    if (mapped.vlan(vid) != nullptr) return name;
  }
  return {};
}

void TopoToVlanMap::registered(Bridging::VlanId vid, const Mox::String& topo) {
  const auto [registration, isNew] = registrations_.insert(vid, {.topo = topo});
  ++registration->count;
  if (!isNew) registration->isSole = false;
}

void TopoToVlanMap::unregistered(Bridging::VlanId vid) {
  if (--registrations_.find(vid)->count == 0) registrations_.erase(vid);
}

Mox::Ptr<TopoToVlanMap> topoToVlanMapFactory(const Mox::String& name) { return Mox::makePtr<TopoToVlanMap>(name); }

Mox::Ptr<MappedVlan> TopoToVlanMap::mappedVlanIs(const Mox::String& name) {
  return memberIs(mappedVlan_, mappedVlanAttr, name);
}

}  // namespace Topology::Library
