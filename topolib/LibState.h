// The published state of the topology library: per topology its ports, with their VLANs, activity, state and FDB flush.
//
// Overview
//   LibState ─ topo[name]: Topo ─ port[intf]: Port ─ vlanPortConfig[vid]
//   A client makes the LibState and hands it to the library, which alone writes it. Anybody reads and watches it, through
//   `Mox::Ptr<const LibState>`.
//
// Usage
//   auto state = Topology::Library::libStateFactory("state");
//   ...
//   for (const auto& [name, topo] : state->topo()) {
//     for (const auto& [intf, port] : topo.port()) std::cout << name << ' ' << intf << ' ' << port.state() << '\n';
//   }
//
// Rules
//   - Trust the contents once `initDone` is true: then the first full synchronisation is over.
//   - A collection owns its members; a member lives while it is there or while somebody holds a Ptr to it.
//   - Notifications come only when something changed, with the key for a collection (mox/Entity.h).
//
// A topology is a forwarding domain of its own for the VLANs that belong to it, such as a spanning tree instance
// (IEEE 802.1Q-2018, 8.4 and 8.9).

#pragma once

#include <cstdint>

#include "bridging/PortState.h"
#include "bridging/VlanId.h"
#include "bridging/VlanPortConfig.h"
#include "mox/Entity.h"
#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Topology::Library {

/// A port of a topology: one that carries at least one of the topology's VLANs.
class MOX_PUBLIC Port : public Mox::Entity {
 public:
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> vlanPortConfigAttr{0, "vlanPortConfig"};
  static constexpr Mox::ScalarAttribute activeAttr{1, "active"};
  static constexpr Mox::ScalarAttribute stateAttr{2, "state"};
  static constexpr Mox::ScalarAttribute fdbFlushAttr{3, "fdbFlush"};

  explicit Port(Quill::IntfId intf) noexcept;
  ~Port() override;

  [[nodiscard]] Quill::IntfId intf() const noexcept { return intf_; }

  /// vlanPortConfig[vid]: how the port takes part in each of the topology's VLANs that it carries.
  [[nodiscard]] const auto& vlanPortConfig() const noexcept { return vlanPortConfig_; }
  [[nodiscard]] const Bridging::VlanPortConfig* vlanPortConfig(Bridging::VlanId vid) const noexcept {
    return vlanPortConfig_.find(vid);
  }
  void vlanPortConfigIs(Bridging::VlanId vid, const Bridging::VlanPortConfig& v) {
    valueIs(vlanPortConfig_, vlanPortConfigAttr, vid, v);
  }
  void vlanPortConfigDel(Bridging::VlanId vid) { valueDel(vlanPortConfig_, vlanPortConfigAttr, vid); }
  void vlanPortConfigDelAll();

  /// Whether the port takes part in the topology: configured there, present by its status, and its link up where that
  /// counts. State and flush counter are those of the configuration while it is active, and zero otherwise.
  [[nodiscard]] bool active() const noexcept { return active_; }
  void activeIs(bool v) { scalarIs(active_, v, activeAttr); }

  [[nodiscard]] Bridging::Topology::PortState state() const noexcept { return state_; }
  void stateIs(Bridging::Topology::PortState v) { scalarIs(state_, v, stateAttr); }

  /// Counts the requests to remove the port's dynamic filtering entries in this topology (IEEE 802.1Q-2018, 13.27,
  /// fdbFlush).
  [[nodiscard]] std::uint32_t fdbFlush() const noexcept { return fdbFlush_; }
  void fdbFlushIs(std::uint32_t v) { scalarIs(fdbFlush_, v, fdbFlushAttr); }

 private:
  Quill::IntfId intf_;
  Mox::ValueCollection<Bridging::VlanId, Bridging::VlanPortConfig> vlanPortConfig_;
  bool active_ = false;
  Bridging::Topology::PortState state_ = Bridging::Topology::PortState::disabled;
  std::uint32_t fdbFlush_ = 0;
};

/// A topology.
class MOX_PUBLIC Topo : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> portAttr{0, "port"};

  explicit Topo(Mox::String name) noexcept;
  ~Topo() override;

  /// port[intf]
  [[nodiscard]] const auto& port() const noexcept { return port_; }
  [[nodiscard]] const Port* port(Quill::IntfId intf) const noexcept { return port_.find(intf); }
  [[nodiscard]] Port* port(Quill::IntfId intf) noexcept { return port_.find(intf); }
  Mox::Ptr<Port> portIs(Quill::IntfId intf);
  void portDel(Quill::IntfId intf);
  void portDelAll();

 private:
  Mox::EntityCollection<Quill::IntfId, Port> port_;
};

/// All topologies.
class MOX_PUBLIC LibState : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Mox::String> topoAttr{0, "topo"};
  static constexpr Mox::ScalarAttribute initDoneAttr{1, "initDone"};

  explicit LibState(Mox::String name) noexcept;
  ~LibState() override;

  /// topo[name]
  [[nodiscard]] const auto& topo() const noexcept { return topo_; }
  [[nodiscard]] const Topo* topo(const Mox::String& name) const noexcept { return topo_.find(name); }
  [[nodiscard]] Topo* topo(const Mox::String& name) noexcept { return topo_.find(name); }
  Mox::Ptr<Topo> topoIs(const Mox::String& name);
  void topoDel(const Mox::String& name);
  void topoDelAll();

  /// Whether the first full synchronisation is over. Turns true once; the library never sets it back.
  [[nodiscard]] bool initDone() const noexcept { return initDone_; }
  void initDoneIs(bool v) { scalarIs(initDone_, v, initDoneAttr); }

 private:
  Mox::EntityCollection<Mox::String, Topo> topo_;
  bool initDone_ = false;
};

/// A new, empty published state.
[[nodiscard]] MOX_PUBLIC Mox::Ptr<LibState> libStateFactory(const Mox::String& name);

}  // namespace Topology::Library
