// The VLAN view: what LibState says by topology, by VLAN.
//
// Overview
//   LibVlanState ─ topoVlan[vid]: TopoVlan ─ topoPort[intf]: Port
//   For a VLAN and a port: the topologies through which the port is in the VLAN, whether it is blocked, and which direction
//   of traffic is allowed (IEEE 802.1Q-2018, 8.6.1 and 8.6.2: forwarding by port state and by VLAN membership).
//
// Usage
//   auto view = Topology::Library::Vlan::libVlanStateFactory("view");
//   auto sm = Topology::Library::Vlan::vlanLibSmFactory(state, view);       // topolib/vlan/TopoLibVlan.h
//   for (const auto& [intf, port] : view->topoVlan(10)->topoPort()) {
//     if (!port.blocked()) std::cout << intf << '\n';
//   }
//
// Rules
//   - Trust the contents once `initDone` is true.
//   - The view alone writes the tree, except `forceEnabledPorts`, which the client writes and the view reads.
//   - Where several topologies carry a port in a VLAN, `blocked` and `allowedTrafficDirection` are what was written last.
//   - An entry of `topo` is there for its key; its value is the view's own business.
//   - Destroying a LibVlanState empties it VLAN by VLAN; a TopoVlan that somebody holds keeps its ports.
//   - `Port::topo` is in the order of the names.

#pragma once

#include "bridging/VlanId.h"
#include "bridging/VlanPortConfig.h"
#include "mox/Entity.h"
#include "mox/Public.h"
#include "quill/IntfId.h"
#include "topolib/vlan/detail/FewMap.h"

namespace Topology::Library::Vlan {

class VlanPortMapping;

/// A port of a VLAN.
class MOX_PUBLIC Port : public Mox::Entity {
 public:
  static constexpr Mox::CollectionAttribute<Mox::String> topoAttr{0, "topo"};
  static constexpr Mox::ScalarAttribute blockedAttr{1, "blocked"};
  static constexpr Mox::ScalarAttribute allowedTrafficDirectionAttr{2, "allowedTrafficDirection"};

  explicit Port(Quill::IntfId intf) noexcept;
  ~Port() override;

  [[nodiscard]] Quill::IntfId intf() const noexcept { return intf_; }

  /// topo[topology name]: the topologies through which the port is in the VLAN. It is there while it has one.
  [[nodiscard]] const auto& topo() const noexcept { return topo_; }
  [[nodiscard]] const Mox::Ptr<VlanPortMapping>* topo(const Mox::String& name) const noexcept {
    return topo_.find(name);
  }
  void topoIs(const Mox::String& name, const Mox::Ptr<VlanPortMapping>& mapping);
  void topoDel(const Mox::String& name);
  void topoDelAll();

  /// Whether the port must not forward traffic of this VLAN.
  [[nodiscard]] bool blocked() const noexcept { return blocked_; }
  void blockedIs(bool v) { scalarIs(blocked_, v, blockedAttr); }

  /// As the VLAN port configuration says.
  [[nodiscard]] Bridging::AllowedTrafficDirection allowedTrafficDirection() const noexcept {
    return allowedTrafficDirection_;
  }
  void allowedTrafficDirectionIs(Bridging::AllowedTrafficDirection v) {
    scalarIs(allowedTrafficDirection_, v, allowedTrafficDirectionAttr);
  }

 private:
  Quill::IntfId intf_;
  detail::FewMap<Mox::String, Mox::Ptr<VlanPortMapping>> topo_;
  Bridging::AllowedTrafficDirection allowedTrafficDirection_ = Bridging::AllowedTrafficDirection::both;
  bool blocked_ = false;
};

/// A VLAN that at least one port of one topology is in.
class MOX_PUBLIC TopoVlan : public Mox::Entity {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> topoPortAttr{0, "topoPort"};

  explicit TopoVlan(Bridging::VlanId vid) noexcept;
  ~TopoVlan() override;

  [[nodiscard]] Bridging::VlanId vid() const noexcept { return vid_; }

  /// topoPort[intf]
  [[nodiscard]] const auto& topoPort() const noexcept { return topoPort_; }
  [[nodiscard]] const Port* topoPort(Quill::IntfId intf) const noexcept { return topoPort_.find(intf); }
  [[nodiscard]] Port* topoPort(Quill::IntfId intf) noexcept { return topoPort_.find(intf); }
  Mox::Ptr<Port> topoPortIs(Quill::IntfId intf);
  void topoPortDel(Quill::IntfId intf);
  void topoPortDelAll();

 private:
  Bridging::VlanId vid_;
  Mox::EntityCollection<Quill::IntfId, Port> topoPort_;
};

/// The view.
class MOX_PUBLIC LibVlanState : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> topoVlanAttr{0, "topoVlan"};
  static constexpr Mox::CollectionAttribute<Quill::IntfId> forceEnabledPortsAttr{1, "forceEnabledPorts"};
  static constexpr Mox::ScalarAttribute initDoneAttr{2, "initDone"};

  explicit LibVlanState(Mox::String name) noexcept;
  ~LibVlanState() override;

  /// topoVlan[vid]
  [[nodiscard]] const auto& topoVlan() const noexcept { return topoVlan_; }
  [[nodiscard]] const TopoVlan* topoVlan(Bridging::VlanId vid) const noexcept { return topoVlan_.find(vid); }
  [[nodiscard]] TopoVlan* topoVlan(Bridging::VlanId vid) noexcept { return topoVlan_.find(vid); }
  Mox::Ptr<TopoVlan> topoVlanIs(Bridging::VlanId vid);
  void topoVlanDel(Bridging::VlanId vid);
  void topoVlanDelAll();

  /// forceEnabledPorts[intf]: with true, the view takes the port for active in every topology and never for blocked. False
  /// is the same as no entry.
  [[nodiscard]] const auto& forceEnabledPorts() const noexcept { return forceEnabledPorts_; }
  [[nodiscard]] const bool* forceEnabledPorts(Quill::IntfId intf) const noexcept {
    return forceEnabledPorts_.find(intf);
  }
  void forceEnabledPortsIs(Quill::IntfId intf, bool v) { valueIs(forceEnabledPorts_, forceEnabledPortsAttr, intf, v); }
  void forceEnabledPortsDel(Quill::IntfId intf) { valueDel(forceEnabledPorts_, forceEnabledPortsAttr, intf); }
  void forceEnabledPortsDelAll();

  /// Whether the first complete pass over the published state is over. Turns true once; the view never sets it back.
  [[nodiscard]] bool initDone() const noexcept { return initDone_; }
  void initDoneIs(bool v) { scalarIs(initDone_, v, initDoneAttr); }

 private:
  Mox::EntityCollection<Bridging::VlanId, TopoVlan> topoVlan_;
  Mox::ValueCollection<Quill::IntfId, bool> forceEnabledPorts_;
  bool initDone_ = false;
};

/// A new, empty view.
[[nodiscard]] MOX_PUBLIC Mox::Ptr<LibVlanState> libVlanStateFactory(const Mox::String& name);

}  // namespace Topology::Library::Vlan
