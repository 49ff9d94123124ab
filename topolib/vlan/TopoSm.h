// A topology in the VLAN view: keeps a VlanPortMapping for each of its ports.
//
// The topology status publisher has another class of this name; the two are unrelated.

#pragma once

#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/LibState.h"
#include "topolib/detail/HeldReactor.h"
#include "topolib/vlan/VlanPortMapping.h"

namespace Topology::Library::Vlan {

class VlanLibSm;

class MOX_PUBLIC TopoSm : public Mox::StateMachine<TopoSm> {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> vlanPortMappingAttr{0, "vlanPortMapping"};

  /// Does nothing yet: it is started when its owner holds it, so that readers of the view find it there.
  TopoSm(Mox::String name, const Mox::Ptr<const Topo>& topo, VlanLibSm* vlanLibSm);
  /// Made and started.
  [[nodiscard]] static Mox::Ptr<TopoSm> TopoSmIs(const Mox::String& name, const Mox::Ptr<const Topo>& topo,
                                                 VlanLibSm* vlanLibSm);
  ~TopoSm() override;

  [[nodiscard]] const Mox::String& name() const noexcept { return name_; }
  [[nodiscard]] const Topo* topo() const noexcept { return topo_.get(); }
  void topoDel();
  [[nodiscard]] VlanLibSm* vlanLibSm() const noexcept { return vlanLibSm_; }

  /// vlanPortMapping[intf]. Making one that exists over another port raises MutatorReinstantiatingException.
  [[nodiscard]] const auto& vlanPortMapping() const noexcept { return vlanPortMapping_; }
  [[nodiscard]] const VlanPortMapping* vlanPortMapping(Quill::IntfId intf) const noexcept {
    return vlanPortMapping_.find(intf);
  }
  [[nodiscard]] VlanPortMapping* vlanPortMapping(Quill::IntfId intf) noexcept { return vlanPortMapping_.find(intf); }
  Mox::Ptr<VlanPortMapping> vlanPortMappingIs(Quill::IntfId intf, const Mox::Ptr<const Library::Port>& port);
  void vlanPortMappingDel(Quill::IntfId intf);
  void vlanPortMappingDelAll();

  /// Brings the topology into the view.
  void doStart();
  void handleInitialized();
  /// Every port that the topology or the state machine has.
  void handleTopoPort();
  void handleTopoPort(Quill::IntfId intf);
  /// Withdraws the topology from the view.
  void handleCleanup();

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(moxTopo_);
    for (const auto& [intf, mapping] : vlanPortMapping_) act(mapping);
  }

  class MoxTopo : public Library::detail::HeldReactor<MoxTopo, TopoSm, Topo> {
   public:
    using HeldReactor::HeldReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  Mox::String name_;
  Mox::Ptr<const Topo> topo_;
  VlanLibSm* vlanLibSm_;
  MoxTopo moxTopo_;
  Mox::EntityCollection<Quill::IntfId, VlanPortMapping> vlanPortMapping_;
};

}  // namespace Topology::Library::Vlan
