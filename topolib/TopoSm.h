// A topology in the instance status: keeps an EthIntfSm for each of its ports that has an interface status, and for the
// CPU port.

#pragma once

#include "bridging/TopologyConfig.h"
#include "bridging/TopologyInstStatus.h"
#include "interface/EthIntfStatus.h"
#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/EthIntfSm.h"
#include "topolib/LibState.h"
#include "topolib/detail/HeldReactor.h"
#include "topolib/detail/OneAtATime.h"

namespace Topology::Library {

class MOX_PUBLIC TopoSm : public Mox::StateMachine<TopoSm> {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> ethIntfSmAttr{0, "ethIntfSm"};

  /// It starts to work with `handleInitialized`.
  TopoSm(const Mox::Ptr<const Topo>& topo, const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir,
         const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
         const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus);
  ~TopoSm() override;

  /// The topology's name.
  [[nodiscard]] virtual Mox::String name() const { return fwkKey_; }
  /// The key under which the publisher holds it, which must be its name.
  [[nodiscard]] const Mox::String& fwkKey() const noexcept { return fwkKey_; }
  [[nodiscard]] const Topo* topo() const noexcept { return topo_.get(); }
  [[nodiscard]] const Interface::EthIntfStatusDir* ethIntfStatusDir() const noexcept { return ethIntfStatusDir_.get(); }
  [[nodiscard]] const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig() const noexcept {
    return topoConfig_;
  }
  [[nodiscard]] const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus() const noexcept {
    return topoStatus_;
  }

  /// ethIntfSm[intf]. Making one that exists on other entities raises MutatorReinstantiatingException.
  [[nodiscard]] const auto& ethIntfSm() const noexcept { return ethIntfSm_; }
  [[nodiscard]] const EthIntfSm* ethIntfSm(Quill::IntfId intf) const noexcept { return ethIntfSm_.find(intf); }
  [[nodiscard]] EthIntfSm* ethIntfSm(Quill::IntfId intf) noexcept { return ethIntfSm_.find(intf); }
  Mox::Ptr<EthIntfSm> ethIntfSmIs(Quill::IntfId intf, const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
                                  const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus,
                                  const Mox::Ptr<const Interface::EthIntfStatus>& ethIntfStatus);
  void ethIntfSmDel(Quill::IntfId intf);
  void ethIntfSmDelAll();

  void handleInitialized();
  /// Every port of the topology.
  void handlePort();
  void handlePort(Quill::IntfId intf);
  /// Every interface that has a state machine.
  void handleEthIntfStatus();
  void handleEthIntfStatus(Quill::IntfId intf);
  /// Withdraws all ports from the status, and removes their state machines.
  void doCleanUp();

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(moxTopo_);
    act(moxEthIntfStatus_);
    for (const auto& [intf, sm] : ethIntfSm_) act(sm);
  }

  class MoxTopo : public detail::HeldReactor<MoxTopo, TopoSm, Topo> {
   public:
    using HeldReactor::HeldReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxEthIntfStatus : public detail::HeldReactor<MoxEthIntfStatus, TopoSm, Interface::EthIntfStatusDir> {
   public:
    using HeldReactor::HeldReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  [[nodiscard]] bool isOver() const noexcept { return !initialized() || isRetired(); }
  void reconcilePort(Quill::IntfId intf);
  void removePort(Quill::IntfId intf);

  Mox::String fwkKey_;
  Mox::Ptr<const Topo> topo_;
  Mox::Ptr<const Interface::EthIntfStatusDir> ethIntfStatusDir_;
  Mox::Ptr<const Bridging::Topology::TopoConfig> topoConfig_;
  Mox::Ptr<Bridging::Topology::Inst::TopoStatus> topoStatus_;
  MoxTopo moxTopo_;
  MoxEthIntfStatus moxEthIntfStatus_;
  Mox::EntityCollection<Quill::IntfId, EthIntfSm> ethIntfSm_;
  detail::OneAtATime<Quill::IntfId> reconciling_;
};

}  // namespace Topology::Library
