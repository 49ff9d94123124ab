// The bridging configuration: the VLANs of the switch and their member ports.
//
//   auto config = Bridging::configFactory("bridging");
//   auto vlan = config->vlanConfigIs(10);
//   vlan->vlanPortConfigIs("Ethernet1", Bridging::VlanPortConfig());
//
// Written by the component that owns the configuration, read and watched by everybody else through
// `Mox::Ptr<const Bridging::Config>`. Deleting a VLAN and making it again gives a new entity.

#pragma once

#include "bridging/VlanId.h"
#include "bridging/VlanPortConfig.h"
#include "mox/Entity.h"
#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Bridging {

/// One VLAN.
class MOX_PUBLIC VlanConfig : public Mox::Entity {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> vlanPortConfigAttr{0, "vlanPortConfig"};
  static constexpr Mox::ScalarAttribute floodsetExpandedVlanAttr{1, "floodsetExpandedVlan"};

  VlanConfig(VlanId vid, bool internal) noexcept;
  ~VlanConfig() override;

  [[nodiscard]] VlanId vlanId() const noexcept { return vlanId_; }

  /// Whether the switch uses the VLAN for purposes of its own. Fixed when the VLAN is made.
  [[nodiscard]] bool internal() const noexcept { return internal_; }

  /// vlanPortConfig[intf]: the member ports.
  [[nodiscard]] const auto& vlanPortConfig() const noexcept { return vlanPortConfig_; }
  [[nodiscard]] const VlanPortConfig* vlanPortConfig(Quill::IntfId intf) const noexcept {
    return vlanPortConfig_.find(intf);
  }
  void vlanPortConfigIs(Quill::IntfId intf, const VlanPortConfig& v) {
    valueIs(vlanPortConfig_, vlanPortConfigAttr, intf, v);
  }
  void vlanPortConfigDel(Quill::IntfId intf) { valueDel(vlanPortConfig_, vlanPortConfigAttr, intf); }
  void vlanPortConfigDelAll();

  /// A VLAN whose ports this VLAN must reach as well, or none.
  [[nodiscard]] VlanIdOrNone floodsetExpandedVlan() const noexcept { return floodsetExpandedVlan_; }
  void floodsetExpandedVlanIs(VlanIdOrNone v) { scalarIs(floodsetExpandedVlan_, v, floodsetExpandedVlanAttr); }

  [[nodiscard]] bool isBuiltFrom(bool internal) const noexcept { return internal == internal_; }

 private:
  VlanId vlanId_;
  bool internal_;
  VlanIdOrNone floodsetExpandedVlan_;
  Mox::ValueCollection<Quill::IntfId, VlanPortConfig> vlanPortConfig_;
};

/// All VLANs.
class MOX_PUBLIC Config : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<VlanId> vlanConfigAttr{0, "vlanConfig"};

  explicit Config(Mox::String name) noexcept;
  ~Config() override;

  /// vlanConfig[vid]. Making one that exists with the other `internal`, be it by default, raises
  /// MutatorReinstantiatingException.
  [[nodiscard]] const auto& vlanConfig() const noexcept { return vlanConfig_; }
  [[nodiscard]] const VlanConfig* vlanConfig(VlanId vid) const noexcept { return vlanConfig_.find(vid); }
  [[nodiscard]] VlanConfig* vlanConfig(VlanId vid) noexcept { return vlanConfig_.find(vid); }
  Mox::Ptr<VlanConfig> vlanConfigIs(VlanId vid, bool internal = false);
  void vlanConfigDel(VlanId vid);
  void vlanConfigDelAll();

 private:
  Mox::EntityCollection<VlanId, VlanConfig> vlanConfig_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<Config> configFactory(const Mox::String& name);

}  // namespace Bridging
