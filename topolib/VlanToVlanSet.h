// A VLAN and the VLANs that it is related to by floodset expansion.
//
//   auto set = Topology::Library::vlanToVlanSetFactory(20);
//   set->someVlanIs(10);

#pragma once

#include "bridging/VlanId.h"
#include "mox/Entity.h"
#include "mox/Public.h"

namespace Topology::Library {

class MOX_PUBLIC VlanToVlanSet : public Mox::Entity {
 public:
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> someVlanAttr{0, "someVlan"};

  explicit VlanToVlanSet(Bridging::VlanId vid) noexcept;
  ~VlanToVlanSet() override;

  [[nodiscard]] Bridging::VlanId vlanId() const noexcept { return vlanId_; }

  /// someVlan[vid]: a set.
  [[nodiscard]] const auto& someVlan() const noexcept { return someVlan_; }
  [[nodiscard]] bool someVlan(Bridging::VlanId vid) const noexcept { return someVlan_.has(vid); }
  void someVlanIs(Bridging::VlanId vid) { valueIs(someVlan_, someVlanAttr, vid, {}); }
  void someVlanDel(Bridging::VlanId vid) { valueDel(someVlan_, someVlanAttr, vid); }
  void someVlanDelAll();

 private:
  Bridging::VlanId vlanId_;
  Mox::SetCollection<Bridging::VlanId> someVlan_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<VlanToVlanSet> vlanToVlanSetFactory(Bridging::VlanId vid);

/// By VLAN, the floodset-expanded VLANs that it points to; and its inverse, by expanded VLAN the VLANs that point to it.
/// Each iterates in an order of its own.
using VlanToExpVlanSetMap = Mox::EntityCollection<Bridging::VlanId, VlanToVlanSet, Mox::FixedSeed<3100735116>>;
using ExpVlanToVlanSetMap = Mox::EntityCollection<Bridging::VlanId, VlanToVlanSet, Mox::FixedSeed<1759628072>>;

}  // namespace Topology::Library
