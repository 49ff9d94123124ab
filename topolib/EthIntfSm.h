// A port in the instance status of a topology: decides whether it is up, and reports it.
//
// `BaseIntfSm` writes; `EthIntfSm` decides, from the link status and the forwarding model of the interface:
//
//   CPU port            up
//   sub-interface       up as the link is while it is bridged, otherwise up
//   any other           up while the link is up and it is bridged or tunneled
//
// Where the topology's configuration asks for it (`publishPortConfig`), the port also gets a port configuration there.
// A link that changes again while a change is being reported is reported after it.

#pragma once

#include <functional>

#include "bridging/TopologyConfig.h"
#include "bridging/TopologyInstStatus.h"
#include "interface/EthIntfStatus.h"
#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/detail/HeldReactor.h"

namespace Topology::Library {

class MOX_PUBLIC BaseIntfSm : public Mox::StateMachine<BaseIntfSm> {
 public:
  BaseIntfSm(Quill::IntfId intf, const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
             const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus) noexcept;
  ~BaseIntfSm() override;

  [[nodiscard]] Quill::IntfId intfId() const noexcept { return intfId_; }
  [[nodiscard]] const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig() const noexcept {
    return topoConfig_;
  }
  [[nodiscard]] const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus() const noexcept {
    return topoStatus_;
  }

  virtual void handleInitialized();
  /// Withdraws what it has written. From then on it writes nothing more.
  virtual void doCleanUp();
  /// Adds the port to the instance status, or removes it, if that is not so already.
  virtual void maybeUpdateTopo(bool up);

 protected:
  /// A derived state machine adds its reactors.
  virtual void forEachReactor(const std::function<void(Mox::PtrInterface&)>& act);

 private:
  friend StateMachine;

  [[nodiscard]] Bridging::Topology::TopoConfig& writableTopoConfig() const noexcept;

  Quill::IntfId intfId_;
  Mox::Ptr<const Bridging::Topology::TopoConfig> topoConfig_;
  Mox::Ptr<Bridging::Topology::Inst::TopoStatus> topoStatus_;
};

class MOX_PUBLIC EthIntfSm : public BaseIntfSm {
 public:
  /// `ethIntfStatus` may be null for the CPU port.
  EthIntfSm(Quill::IntfId intf, const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
            const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus,
            const Mox::Ptr<const Interface::EthIntfStatus>& ethIntfStatus);
  ~EthIntfSm() override;

  [[nodiscard]] const Interface::EthIntfStatus* ethIntfStatus() const noexcept { return ethIntfStatus_.notifier(); }
  [[nodiscard]] bool isBuiltFrom(const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
                                 const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus,
                                 const Mox::Ptr<const Interface::EthIntfStatus>& ethIntfStatus) const noexcept {
    return topoConfig == this->topoConfig() && topoStatus == this->topoStatus() &&
           ethIntfStatus.get() == this->ethIntfStatus();
  }

  [[nodiscard]] bool isCpuPort() const noexcept { return isCpuPort_; }
  void isCpuPortIs(bool v) noexcept { isCpuPort_ = v; }

  /// What it reports: whether the port is up by the table above.
  [[nodiscard]] bool isUp() const noexcept;

  void handleInitialized() override;
  void handleLinkStatus();
  void handleForwardingModel();

 private:
  class MoxEthIntfStatus : public detail::HeldReactor<MoxEthIntfStatus, EthIntfSm, Interface::EthIntfStatus> {
   public:
    using HeldReactor::HeldReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  void forEachReactor(const std::function<void(Mox::PtrInterface&)>& act) override;

  MoxEthIntfStatus ethIntfStatus_;
  bool isCpuPort_ = false;
  bool isReporting_ = false;
  bool isChangedMeanwhile_ = false;
};

}  // namespace Topology::Library
