// The topology configuration: which VLAN belongs to which topology, and the state of each topology's ports.
//
//   auto config = Bridging::Topology::configFactory("config");
//   config->vidToTopoMapIs(10, "A");
//   auto topo = config->topoConfigIs("A", 1);
//   topo->topoPortConfigIs("Ethernet1", 0, Bridging::Topology::PortState::forwarding);
//
// A topology is a forwarding domain of its own, such as a spanning tree instance with the VLANs that are allocated to it
// (IEEE 802.1Q-2018, 8.9). Deleting a member and making it again under the same key gives a new entity.

#pragma once

#include <cstdint>
#include <vector>

#include "bridging/PortState.h"
#include "bridging/VlanId.h"
#include "mox/Entity.h"
#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Bridging::Topology {

/// One port of a topology.
class MOX_PUBLIC TopoPortConfig : public Mox::Entity {
 public:
  static constexpr Mox::ScalarAttribute portStateAttr{0, "portState"};
  static constexpr Mox::ScalarAttribute fdbFlushAttr{1, "fdbFlush"};

  TopoPortConfig(Quill::IntfId intf, unsigned number, PortState state) noexcept;
  ~TopoPortConfig() override;

  [[nodiscard]] Quill::IntfId intfId() const noexcept { return intfId_; }

  /// A number for the use of whoever made the port. Fixed when it is made; not read by TopoLib.
  [[nodiscard]] unsigned number() const noexcept { return number_; }

  [[nodiscard]] PortState portState() const noexcept { return portState_; }
  void portStateIs(PortState v) { scalarIs(portState_, v, portStateAttr); }

  /// A counter; each change asks for the port's dynamic filtering entries in this topology to be removed, as the
  /// `fdbFlush` of IEEE 802.1Q-2018, 13.27 does.
  [[nodiscard]] std::uint32_t fdbFlush() const noexcept { return fdbFlush_; }
  void fdbFlushIs(std::uint32_t v) { scalarIs(fdbFlush_, v, fdbFlushAttr); }

  /// The state is an attribute like any other: a port is the same in whatever state it was made.
  [[nodiscard]] bool isBuiltFrom(unsigned number, PortState /*state*/) const noexcept { return number == number_; }

 private:
  Quill::IntfId intfId_;
  unsigned number_;
  PortState portState_;
  std::uint32_t fdbFlush_ = 0;
};

/// One topology.
class MOX_PUBLIC TopoConfig : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> topoPortConfigAttr{0, "topoPortConfig"};
  static constexpr Mox::ScalarAttribute publishPortConfigAttr{1, "publishPortConfig"};
  static constexpr Mox::ScalarAttribute publishedPortStateAttr{2, "publishedPortState"};

  TopoConfig(Mox::String name, unsigned topoNumber) noexcept;
  ~TopoConfig() override;

  /// The topology's number. Fixed when it is made; a status belongs to the configuration of the same name and number.
  [[nodiscard]] unsigned topoNumber() const noexcept { return topoNumber_; }

  /// topoPortConfig[intf]. Making one gives it the state; one that exists takes the state on. Another number than the one
  /// it was made with raises MutatorReinstantiatingException.
  [[nodiscard]] const auto& topoPortConfig() const noexcept { return topoPortConfig_; }
  [[nodiscard]] const TopoPortConfig* topoPortConfig(Quill::IntfId intf) const noexcept {
    return topoPortConfig_.find(intf);
  }
  [[nodiscard]] TopoPortConfig* topoPortConfig(Quill::IntfId intf) noexcept { return topoPortConfig_.find(intf); }
  Mox::Ptr<TopoPortConfig> topoPortConfigIs(Quill::IntfId intf, unsigned number, PortState state);
  void topoPortConfigDel(Quill::IntfId intf);
  void topoPortConfigDelAll();

  /// Whether the status publisher is to make a port configuration for each port that it reports, and their state.
  [[nodiscard]] bool publishPortConfig() const noexcept { return publishPortConfig_; }
  void publishPortConfigIs(bool v) { scalarIs(publishPortConfig_, v, publishPortConfigAttr); }
  [[nodiscard]] PortState publishedPortState() const noexcept { return publishedPortState_; }
  void publishedPortStateIs(PortState v) { scalarIs(publishedPortState_, v, publishedPortStateAttr); }

  [[nodiscard]] bool isBuiltFrom(unsigned topoNumber) const noexcept { return topoNumber == topoNumber_; }

 private:
  unsigned topoNumber_;
  bool publishPortConfig_ = false;
  PortState publishedPortState_ = PortState::forwarding;
  Mox::EntityCollection<Quill::IntfId, TopoPortConfig> topoPortConfig_;
};

/// All topologies, and the VLANs that belong to them.
class MOX_PUBLIC Config : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<VlanId> vidToTopoMapAttr{0, "vidToTopoMap"};
  static constexpr Mox::CollectionAttribute<Mox::String> topoConfigAttr{1, "topoConfig"};

  explicit Config(Mox::String name) noexcept;
  ~Config() override;

  /// vidToTopoMap[vid]: the name of the VLAN's topology, which need not be configured.
  [[nodiscard]] const auto& vidToTopoMap() const noexcept { return vidToTopoMap_; }
  [[nodiscard]] const Mox::String* vidToTopoMap(VlanId vid) const noexcept { return vidToTopoMap_.find(vid); }
  [[nodiscard]] bool vidToTopoMapHas(VlanId vid) const noexcept { return vidToTopoMap_.has(vid); }
  void vidToTopoMapIs(VlanId vid, const Mox::String& name);
  void vidToTopoMapDel(VlanId vid);
  void vidToTopoMapDelAll();
  /// The VLANs that `vidToTopoMap` gives to a topology, in ascending order. Costs what it returns.
  [[nodiscard]] std::vector<VlanId> vlansOfTopo(const Mox::String& name) const;

  /// topoConfig[name]. Making one that exists with another number raises MutatorReinstantiatingException.
  [[nodiscard]] const auto& topoConfig() const noexcept { return topoConfig_; }
  [[nodiscard]] const TopoConfig* topoConfig(const Mox::String& name) const noexcept { return topoConfig_.find(name); }
  [[nodiscard]] TopoConfig* topoConfig(const Mox::String& name) noexcept { return topoConfig_.find(name); }
  Mox::Ptr<TopoConfig> topoConfigIs(const Mox::String& name, unsigned topoNumber);
  void topoConfigDel(const Mox::String& name);
  void topoConfigDelAll();

 private:
  void vlanOfTopoIs(const Mox::String& name, VlanId vid);
  void vlanOfTopoDel(const Mox::String& name, VlanId vid) noexcept;

  Mox::ValueCollection<VlanId, Mox::String> vidToTopoMap_;
  Mox::HashMap<Mox::String, Mox::SetCollection<VlanId>> vlansOfTopo_;  // the inverse, without empty sets
  Mox::EntityCollection<Mox::String, TopoConfig> topoConfig_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<Config> configFactory(const Mox::String& name);

}  // namespace Bridging::Topology
