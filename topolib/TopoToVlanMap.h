// Which VLANs are registered with each topology: the library's own record of where it has put a VLAN, as opposed to where
// the configuration wants it.
//
//   auto map = Topology::Library::topoToVlanMapFactory("topoToVlanMap");
//   map->mappedVlanIs("A")->vlanIs(10, true);
//   if (const auto* mapped = map->mappedVlan("A"); mapped != nullptr && mapped->vlan(10)) ...
//   map->topoOfVlan(10)                                                // "A", without a search through the topologies

#pragma once

#include "bridging/VlanId.h"
#include "mox/Entity.h"
#include "mox/Public.h"

namespace Topology::Library {

class TopoToVlanMap;

/// The VLANs of one topology.
class MOX_PUBLIC MappedVlan : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> vlanAttr{0, "vlan"};

  explicit MappedVlan(Mox::String name) noexcept;
  ~MappedVlan() override;

  /// vlan[vid]: a VLAN is registered while its key is present, whatever the value.
  [[nodiscard]] const auto& vlan() const noexcept { return vlan_; }
  [[nodiscard]] const bool* vlan(Bridging::VlanId vid) const noexcept { return vlan_.find(vid); }
  void vlanIs(Bridging::VlanId vid, bool v = true);
  void vlanDel(Bridging::VlanId vid);
  void vlanDelAll();

 private:
  [[nodiscard]] TopoToVlanMap* map() noexcept;

  Mox::ValueCollection<Bridging::VlanId, bool> vlan_;
};

class MOX_PUBLIC TopoToVlanMap : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Mox::String> mappedVlanAttr{0, "mappedVlan"};

  explicit TopoToVlanMap(Mox::String name) noexcept;
  ~TopoToVlanMap() override;

  /// mappedVlan[topology name]
  [[nodiscard]] const auto& mappedVlan() const noexcept { return mappedVlan_; }
  [[nodiscard]] const MappedVlan* mappedVlan(const Mox::String& name) const noexcept { return mappedVlan_.find(name); }
  [[nodiscard]] MappedVlan* mappedVlan(const Mox::String& name) noexcept { return mappedVlan_.find(name); }
  Mox::Ptr<MappedVlan> mappedVlanIs(const Mox::String& name);
  void mappedVlanDel(const Mox::String& name);
  void mappedVlanDelAll();

  /// The topology with which a VLAN is registered, or the empty name; the first in the order of `mappedVlan` if there are
  /// several. Constant cost for a VLAN that is registered with one at a time.
  [[nodiscard]] Mox::String topoOfVlan(Bridging::VlanId vid) const;

 private:
  friend MappedVlan;

  /// With how many topologies a VLAN is registered, and with which unless it is, or lately was, more than one.
  struct Registration {
    Mox::String topo;
    unsigned count = 0;
    bool isSole = true;
  };

  void registered(Bridging::VlanId vid, const Mox::String& topo);
  void unregistered(Bridging::VlanId vid);

  Mox::Map<Bridging::VlanId, Registration> registrations_;
  Mox::EntityCollection<Mox::String, MappedVlan> mappedVlan_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<TopoToVlanMap> topoToVlanMapFactory(const Mox::String& name);

}  // namespace Topology::Library
