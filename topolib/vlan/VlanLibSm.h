// The VLAN view's state machine: keeps a LibVlanState true to a LibState.
//
// It watches the published state and the forced ports, and keeps a TopoSm per topology, which keeps a VlanPortMapping per
// port; those write the view. Nothing is built before `initDone` of the LibState is true; then a full pass builds every
// topology, and `initDone` of the LibVlanState turns true. Over a LibState that is done already the view is complete when
// the constructor returns. Destroying the state machine leaves the view as it stands; one that is released inside a
// notification finishes first what it is at.

#pragma once

#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/LibState.h"
#include "topolib/detail/HeldReactor.h"
#include "topolib/vlan/LibVlanState.h"
#include "topolib/vlan/TopoSm.h"

namespace Topology::Library::Vlan {

class MOX_PUBLIC VlanLibSm : public Mox::StateMachine<VlanLibSm> {
 public:
  static constexpr Mox::CollectionAttribute<Mox::String> topoSmAttr{0, "topoSm"};

  VlanLibSm(const Mox::Ptr<const LibState>& libState, const Mox::Ptr<LibVlanState>& libVlanState);
  [[nodiscard]] static Mox::Ptr<VlanLibSm> VlanLibSmIs(const Mox::Ptr<const LibState>& libState,
                                                       const Mox::Ptr<LibVlanState>& libVlanState);
  ~VlanLibSm() override;

  /// The state that is viewed, and the view. Dropping one unbinds its reactor.
  [[nodiscard]] const LibState* topoLib() const noexcept { return topoLib_.get(); }
  void topoLibDel();
  [[nodiscard]] const Mox::Ptr<LibVlanState>& libVlanState() const noexcept { return libVlanState_; }
  void libVlanStateDel();

  /// topoSm[topology name]. Making one that exists over another Topo raises MutatorReinstantiatingException.
  [[nodiscard]] const auto& topoSm() const noexcept { return topoSm_; }
  [[nodiscard]] const TopoSm* topoSm(const Mox::String& name) const noexcept { return topoSm_.find(name); }
  [[nodiscard]] TopoSm* topoSm(const Mox::String& name) noexcept { return topoSm_.find(name); }
  Mox::Ptr<TopoSm> topoSmIs(const Mox::String& name, const Mox::Ptr<const Topo>& topo);
  void topoSmDel(const Mox::String& name);
  void topoSmDelAll();

  void handleInitDone();
  /// Every topology that LibState or the state machine has.
  void handleTopoLibTopo();
  void handleTopoLibTopo(Mox::String name);
  void handleForceEnabledPorts(Quill::IntfId intf);

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(moxTopoLib_);
    act(moxLibVlanState_);
    for (const auto& [name, sm] : topoSm_) act(sm);
  }

  class MoxTopoLib : public Library::detail::HeldReactor<MoxTopoLib, VlanLibSm, LibState> {
   public:
    using HeldReactor::HeldReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxLibVlanState : public Library::detail::HeldReactor<MoxLibVlanState, VlanLibSm, LibVlanState> {
   public:
    using HeldReactor::HeldReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  Mox::Ptr<const LibState> topoLib_;
  Mox::Ptr<LibVlanState> libVlanState_;
  MoxTopoLib moxTopoLib_;
  MoxLibVlanState moxLibVlanState_;
  Mox::EntityCollection<Mox::String, TopoSm> topoSm_;
};

/// Starts the view over a published state. It works while the result is held.
[[nodiscard]] MOX_PUBLIC Mox::Ptr<VlanLibSm> vlanLibSmFactory(const Mox::Ptr<const LibState>& libState,
                                                              const Mox::Ptr<LibVlanState>& libVlanState);

}  // namespace Topology::Library::Vlan
