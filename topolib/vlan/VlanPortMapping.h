// One port of one topology in the VLAN view: the only writer of the view's VLANs and ports.
//
// The rules of the view, for topology T, interface I, VLAN V:
//   member     the port is active, or forced, and has a configuration for V: then T is recorded in the view's port I of V.
//              A view port is there while any topology is recorded in it, a VLAN while it has any port.
//   blocked    unless the port's state is forwarding or the port is forced
//   direction  that of the port's configuration for V
// Membership is the union over the topologies. Blocked and direction are not combined: the last writer wins, also when its
// own port is no member; and a topology that is withdrawn leaves them as they are.
//
// The view's ports hold counted pointers to mappings. One that outlives its TopoSm is inert.

#pragma once

#include "bridging/VlanId.h"
#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "quill/IntfId.h"
#include "topolib/LibState.h"
#include "topolib/detail/HeldReactor.h"
#include "topolib/vlan/LibVlanState.h"

namespace Topology::Library::Vlan {

class TopoSm;

class MOX_PUBLIC VlanPortMapping : public Mox::StateMachine<VlanPortMapping> {
 public:
  /// Does nothing yet: it is started when its owner holds it, so that readers of the view find it there.
  VlanPortMapping(Quill::IntfId intf, const Mox::Ptr<const Library::Port>& port, TopoSm* topoSm);
  /// Made and started.
  [[nodiscard]] static Mox::Ptr<VlanPortMapping> VlanPortMappingIs(Quill::IntfId intf,
                                                                   const Mox::Ptr<const Library::Port>& port,
                                                                   TopoSm* topoSm);
  ~VlanPortMapping() override;

  [[nodiscard]] Quill::IntfId intf() const noexcept { return intf_; }
  [[nodiscard]] const Library::Port* port() const noexcept { return port_.get(); }
  void portDel();

  /// Brings the port into the view.
  void doStart();
  void handleInitialized();
  void handleTopoPortActive();
  /// Membership in every VLAN of the port, and in one.
  void handleTopoVlanPort();
  void handleTopoVlanPort(Bridging::VlanId vid);
  /// Blocking in every VLAN of the port, and in one.
  void handleTopoPortStates();
  void handleTopoPortState(Bridging::VlanId vid);
  void doTopoVlanPortIs(Bridging::VlanId vid);
  void doTopoVlanPortDel(Bridging::VlanId vid);
  /// Withdraws the topology from every VLAN of the port.
  void handleCleanup();

  /// Cuts the mapping off from its owner.
  void moxDoZombieReactors(bool zombie) override;

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(moxPort_); }

  class MoxPort : public Library::detail::HeldReactor<MoxPort, VlanPortMapping, Library::Port> {
   public:
    using HeldReactor::HeldReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  [[nodiscard]] bool isForced() const;
  [[nodiscard]] bool isMember(Bridging::VlanId vid) const;
  [[nodiscard]] bool isRecorded(const LibVlanState& view, Bridging::VlanId vid) const;
  void record(LibVlanState& view, Bridging::VlanId vid);
  void withdraw(LibVlanState& view, Bridging::VlanId vid);
  void removeIfEmpty(LibVlanState& view, const Mox::Ptr<TopoVlan>& topoVlan, const Mox::Ptr<Port>& viewPort);

  Quill::IntfId intf_;
  Mox::Ptr<const Library::Port> port_;
  Mox::Ptr<LibVlanState> view_;  // null when there is none to write, and once the mapping is retired
  Mox::String topoName_;
  MoxPort moxPort_;
  Mox::SetCollection<Bridging::VlanId> recorded_;  // where the topology is recorded in the view
  bool isLeaving_ = false;
};

}  // namespace Topology::Library::Vlan
