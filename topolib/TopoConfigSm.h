// A topology in service: admits its ports and follows the links of their interfaces.
//
// Overview
//   Watches the topology's configuration, its status (plain or instance), and the interface statuses. It keeps a
//   TopoPortConfigSm for each port that is configured, has a port status, is published in LibState, and passes the link
//   gate; that state machine publishes the port's state and makes it active.
//
// The link gate
//   open      for every port while no plain status is bound; for the CPU port
//   as the link is up   for a port with an interface status; for a sub-interface only if it is bridged
//   open      for a sub-interface without an interface status; closed for any other interface without one
//
// It stays on the configuration and the plain status that it was made with: where they are replaced under the same name,
// LibSm replaces it. A notification that asks for a port that is being admitted or removed is served after that.

#pragma once

#include "bridging/TopologyConfig.h"
#include "bridging/TopologyInstStatus.h"
#include "bridging/TopologyStatus.h"
#include "interface/EthIntfStatus.h"
#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/LibState.h"
#include "topolib/TopoPortConfigSm.h"
#include "topolib/detail/Busy.h"
#include "topolib/detail/OneAtATime.h"

namespace Topology::Library {

class LibSm;

class MOX_PUBLIC TopoConfigSm : public Mox::StateMachine<TopoConfigSm> {
 public:
  class MoxEthIntfStatus;
  static constexpr Mox::CollectionAttribute<Quill::IntfId> topoPortConfigSmAttr{0, "topoPortConfigSm"};
  static constexpr Mox::CollectionAttribute<Quill::IntfId> ethIntfStatusAttr{1, "ethIntfStatus"};

  /// `topoConfig` is required, and `ethIntfStatusDir` with a `topoStatus`; at most one of the two statuses is set, or it
  /// aborts.
  TopoConfigSm(const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
               const Mox::Ptr<const Bridging::Topology::TopoStatus>& topoStatus,
               const Mox::Ptr<const Bridging::Topology::Inst::TopoStatus>& topoInstStatus,
               const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir, LibSm* libSm);
  ~TopoConfigSm() override;

  /// The topology's name.
  [[nodiscard]] const Mox::String& name() const noexcept { return name_; }
  [[nodiscard]] const Bridging::Topology::TopoConfig* topoConfig() const noexcept { return topoConfig_.notifier(); }
  [[nodiscard]] const Bridging::Topology::TopoStatus* topoStatus() const noexcept { return topoStatus_.notifier(); }
  [[nodiscard]] const Bridging::Topology::Inst::TopoStatus* topoInstStatus() const noexcept {
    return topoInstStatus_.notifier();
  }
  /// Binds another instance status, or none. Re-evaluates no port.
  void topoInstStatusIs(const Mox::Ptr<const Bridging::Topology::Inst::TopoStatus>& status) {
    topoInstStatus_.notifierIs(status);
  }
  [[nodiscard]] const Interface::EthIntfStatusDir* ethIntfStatusDir() const noexcept {
    return ethIntfStatusDir_.notifier();
  }
  [[nodiscard]] LibSm* libSm() const noexcept { return libSm_; }

  /// topoPortConfigSm[intf]. Making one that exists on another configuration raises MutatorReinstantiatingException, and
  /// a null configuration MutatorArgNullPointerException.
  [[nodiscard]] const auto& topoPortConfigSm() const noexcept { return topoPortConfigSm_; }
  [[nodiscard]] const TopoPortConfigSm* topoPortConfigSm(Quill::IntfId intf) const noexcept {
    return topoPortConfigSm_.find(intf);
  }
  [[nodiscard]] TopoPortConfigSm* topoPortConfigSm(Quill::IntfId intf) noexcept { return topoPortConfigSm_.find(intf); }
  Mox::Ptr<TopoPortConfigSm> topoPortConfigSmIs(
      const Mox::String& name, const Mox::Ptr<const Bridging::Topology::TopoPortConfig>& topoPortConfig);
  void topoPortConfigSmDel(Quill::IntfId intf);
  void topoPortConfigSmDelAll();

  /// ethIntfStatus[intf]: the reactors on the interface statuses of the directory.
  [[nodiscard]] const auto& ethIntfStatus() const noexcept { return ethIntfStatus_; }
  void ethIntfStatusIs(const Mox::Ptr<const Interface::EthIntfStatus>& status);
  void ethIntfStatusDel(Quill::IntfId intf);
  void ethIntfStatusDelAll();

  void handleInitialized();
  /// Admits, keeps or removes one port.
  void handleTopoPortConfigOrStatus(Quill::IntfId intf);
  /// The same for every configured port.
  void handleTopoPortConfigOrStatus();
  /// The same for every port that is configured or has a state machine.
  void doReevaluate();
  /// Retires a port whose `Port` is about to be deleted: makes it inactive and removes its state machine, if any.
  void doRemovePort(Quill::IntfId intf);
  /// A published port that was not announced yet: one that only inherits its entries, or is just being made.
  [[nodiscard]] bool isUnannounced(Quill::IntfId intf) const noexcept { return unannounced_.has(intf); }
  void unannouncedIs(Quill::IntfId intf) { unannounced_.insertOrAssign(intf, {}); }
  void unannouncedDel(Quill::IntfId intf) { unannounced_.erase(intf); }
  /// Publishes what the configuration of a port says now.
  void doPublish(TopoPortConfigSm& topoPortSm);

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(topoConfig_);
    act(topoStatus_);
    act(topoInstStatus_);
    act(ethIntfStatusDir_);
    for (const auto& [intf, reactor] : ethIntfStatus_) act(reactor);
    for (const auto& [intf, sm] : topoPortConfigSm_) act(sm);
  }

  class MoxTopoConfig : public detail::LibReactor<MoxTopoConfig, TopoConfigSm, Bridging::Topology::TopoConfig> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxTopoStatus : public detail::LibReactor<MoxTopoStatus, TopoConfigSm, Bridging::Topology::TopoStatus> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxTopoInstStatus
      : public detail::LibReactor<MoxTopoInstStatus, TopoConfigSm, Bridging::Topology::Inst::TopoStatus> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxEthIntfStatusDir
      : public detail::LibReactor<MoxEthIntfStatusDir, TopoConfigSm, Interface::EthIntfStatusDir> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  [[nodiscard]] bool hasPortStatus(Quill::IntfId intf) const;
  [[nodiscard]] bool isLinkGateOpen(Quill::IntfId intf) const;
  [[nodiscard]] bool isOver() const noexcept;
  void serve(Quill::IntfId intf, auto&& work);
  void reconcilePort(Quill::IntfId intf);
  void removePort(Quill::IntfId intf);

  Mox::String name_;
  MoxTopoConfig topoConfig_;
  MoxTopoStatus topoStatus_;
  MoxTopoInstStatus topoInstStatus_;
  MoxEthIntfStatusDir ethIntfStatusDir_;
  Mox::EntityCollection<Quill::IntfId, MoxEthIntfStatus> ethIntfStatus_;
  Mox::EntityCollection<Quill::IntfId, TopoPortConfigSm> topoPortConfigSm_;
  LibSm* libSm_;
  Mox::SetCollection<Quill::IntfId> unannounced_;
  detail::OneAtATime<Quill::IntfId> reconciling_;
};

/// Watches one interface status for a topology.
class MOX_PUBLIC TopoConfigSm::MoxEthIntfStatus
    : public detail::LibReactor<MoxEthIntfStatus, TopoConfigSm, Interface::EthIntfStatus> {
 public:
  using LibReactor::LibReactor;
  void onChange(Mox::AttributeId id, const void* key);
  void handleLinkStatus();
  /// The link gate reads the forwarding model as well.
  void handleForwardingModel();

 private:
  [[nodiscard]] Quill::IntfId intfId() const noexcept {
    return notifier() == nullptr ? Quill::IntfId() : notifier()->intfId();
  }
};

}  // namespace Topology::Library
