// The VLANs that wait for processing, and which of their ports changed.
//
//   auto dir = Topology::Library::dirtyVlanDirFactory("dirtyVlanDir");
//   dir->dirtyVlanIs(10)->intfIs("Ethernet1", true);          // one port of VLAN 10
//   dir->dirtyVlanIs(20)->dirtyIs(true);                      // all of VLAN 20

#pragma once

#include "bridging/VlanId.h"
#include "mox/Entity.h"
#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Topology::Library {

/// A VLAN with changes that are not processed yet.
class MOX_PUBLIC DirtyVlan : public Mox::Entity {
 public:
  static constexpr Mox::ScalarAttribute dirtyAttr{0, "dirty"};
  static constexpr Mox::CollectionAttribute<Quill::IntfId> intfAttr{1, "intf"};

  explicit DirtyVlan(Bridging::VlanId vid) noexcept;
  ~DirtyVlan() override;

  [[nodiscard]] Bridging::VlanId vlanId() const noexcept { return vlanId_; }

  /// Whether the whole VLAN must be processed.
  [[nodiscard]] bool dirty() const noexcept { return dirty_; }
  void dirtyIs(bool v) { scalarIs(dirty_, v, dirtyAttr); }

  /// intf[intf]: the ports to process when it is not the whole VLAN. A port is in it while its key is present.
  [[nodiscard]] const auto& intf() const noexcept { return intf_; }
  [[nodiscard]] const bool* intf(Quill::IntfId intf) const noexcept { return intf_.find(intf); }
  void intfIs(Quill::IntfId intf, bool v = true) { valueIs(intf_, intfAttr, intf, v); }
  void intfDel(Quill::IntfId intf) { valueDel(intf_, intfAttr, intf); }
  void intfDelAll();

 private:
  Bridging::VlanId vlanId_;
  bool dirty_ = false;
  Mox::ValueCollection<Quill::IntfId, bool> intf_;
};

class MOX_PUBLIC DirtyVlanDir : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> dirtyVlanAttr{0, "dirtyVlan"};

  explicit DirtyVlanDir(Mox::String name) noexcept;
  ~DirtyVlanDir() override;

  [[nodiscard]] static Mox::Ptr<DirtyVlanDir> DirtyVlanDirIs(const Mox::String& name);

  /// dirtyVlan[vid]
  [[nodiscard]] const auto& dirtyVlan() const noexcept { return dirtyVlan_; }
  [[nodiscard]] const DirtyVlan* dirtyVlan(Bridging::VlanId vid) const noexcept { return dirtyVlan_.find(vid); }
  [[nodiscard]] DirtyVlan* dirtyVlan(Bridging::VlanId vid) noexcept { return dirtyVlan_.find(vid); }
  Mox::Ptr<DirtyVlan> dirtyVlanIs(Bridging::VlanId vid);
  void dirtyVlanDel(Bridging::VlanId vid);
  void dirtyVlanDelAll();

 private:
  Mox::EntityCollection<Bridging::VlanId, DirtyVlan> dirtyVlan_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<DirtyVlanDir> dirtyVlanDirFactory(const Mox::String& name);

}  // namespace Topology::Library
