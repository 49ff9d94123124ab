// The status publisher: turns the topologies that the library publishes into instance statuses.
//
// Overview
//   Made by `Root::topologyStatusLibSmIs`, independently of the LibSm. It starts to work when `initDone` of the LibState is
//   true, with a full synchronisation, and follows the topologies from then on, name by name:
//
//     a Topo of LibState             an instance status with the number of its configuration, and a TopoSm, which keeps
//                                    one port status per port that is up (topolib/EthIntfSm.h)
//     no Topo any more               neither
//     a status without a TopoConfig  is removed by the full synchronisation, as are port statuses that no port is behind
//
//   A status that was left by an earlier run is kept if its number is still that of the configuration.
//
// Rules
//   - The instance status may be the one that the LibSm watches.
//   - From its start on nobody else writes the instance status. It does not watch it, and would not notice.
//   - A Topo whose configuration is gone when it is handled by its name aborts; the full synchronisation passes over it,
//     since its removal is under way.
//   - Destroying it leaves the instance status as it stands.

#pragma once

#include "bridging/TopologyConfig.h"
#include "bridging/TopologyInstStatus.h"
#include "interface/EthIntfStatus.h"
#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/LibState.h"
#include "topolib/TopoSm.h"
#include "topolib/detail/HeldReactor.h"
#include "topolib/detail/OneAtATime.h"

namespace Topology::Library {

/// Makes the state machines of topologies. A client that wants others derives from it.
class MOX_PUBLIC TopologyStatusSmFactory : public Mox::PtrInterface {
 public:
  explicit TopologyStatusSmFactory(const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir) noexcept;
  ~TopologyStatusSmFactory() override;

  [[nodiscard]] const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir() const noexcept {
    return ethIntfStatusDir_;
  }
  [[nodiscard]] virtual Mox::Ptr<TopoSm> createTopoSm(
      const Mox::Ptr<const Topo>& topo, const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
      const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus) const;

 private:
  Mox::Ptr<const Interface::EthIntfStatusDir> ethIntfStatusDir_;
};

class MOX_PUBLIC TopologyStatusLibSm : public Mox::StateMachine<TopologyStatusLibSm> {
 public:
  static constexpr Mox::CollectionAttribute<Mox::String> topoSmAttr{0, "topoSm"};
  static constexpr Mox::ScalarAttribute smFactoryAttr{1, "smFactory"};

  /// Without a `smFactory` it makes one of its own. A null `libState` aborts, and `status` must not be null; a null
  /// `config` holds nothing.
  TopologyStatusLibSm(const Mox::Ptr<Bridging::Topology::Inst::Status>& status,
                      const Mox::Ptr<const LibState>& libState,
                      const Mox::Ptr<const Bridging::Topology::Config>& config,
                      const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir,
                      const Mox::Ptr<const TopologyStatusSmFactory>& smFactory);
  [[nodiscard]] static Mox::Ptr<TopologyStatusLibSm> TopologyStatusLibSmIs(
      const Mox::Ptr<Bridging::Topology::Inst::Status>& status, const Mox::Ptr<const LibState>& libState,
      const Mox::Ptr<const Bridging::Topology::Config>& config,
      const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir,
      const Mox::Ptr<const TopologyStatusSmFactory>& smFactory = nullptr);
  ~TopologyStatusLibSm() override;

  [[nodiscard]] const Mox::Ptr<Bridging::Topology::Inst::Status>& status() const noexcept { return status_; }
  [[nodiscard]] const LibState* libState() const noexcept { return libState_.get(); }
  [[nodiscard]] const Mox::Ptr<const Bridging::Topology::Config>& config() const noexcept { return config_; }
  [[nodiscard]] const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir() const noexcept {
    return ethIntfStatusDir_;
  }
  [[nodiscard]] const Mox::Ptr<const TopologyStatusSmFactory>& smFactory() const noexcept { return smFactory_; }
  void smFactoryIs(const Mox::Ptr<const TopologyStatusSmFactory>& v) { scalarIs(smFactory_, v, smFactoryAttr); }

  /// topoSm[topology name]. The key is the state machine's own, which must be its name.
  [[nodiscard]] const auto& topoSm() const noexcept { return topoSm_; }
  [[nodiscard]] const TopoSm* topoSm(const Mox::String& name) const noexcept { return topoSm_.find(name); }
  [[nodiscard]] TopoSm* topoSm(const Mox::String& name) noexcept { return topoSm_.find(name); }
  void topoSmIs(const Mox::Ptr<TopoSm>& sm);
  /// Has it clean up first.
  void topoSmDel(const Mox::String& name);
  void topoSmDelAll();

  void handleInitialized();
  void handleLibStateInit();
  /// The full synchronisation.
  void handleTopo();
  void handleTopo(const Mox::String& name);

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(moxLibState_);
    for (const auto& [name, sm] : topoSm_) act(sm);
  }

  class MoxLibState : public detail::HeldReactor<MoxLibState, TopologyStatusLibSm, LibState> {
   public:
    using HeldReactor::HeldReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  [[nodiscard]] const Bridging::Topology::TopoConfig* topoConfigOf(const Mox::String& name) const;
  void reconcileTopo(const Mox::String& name);
  void publishTopo(const Mox::String& name, const Mox::Ptr<const Topo>& topo);
  void withdrawTopo(const Mox::String& name);
  void removeStaleStatuses();
  void removeStalePorts(const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus);

  Mox::Ptr<Bridging::Topology::Inst::Status> status_;
  Mox::Ptr<const LibState> libState_;
  Mox::Ptr<const Bridging::Topology::Config> config_;
  Mox::Ptr<const Interface::EthIntfStatusDir> ethIntfStatusDir_;
  Mox::Ptr<const TopologyStatusSmFactory> smFactory_;
  MoxLibState moxLibState_;
  Mox::EntityCollection<Mox::String, TopoSm> topoSm_;
  detail::OneAtATime<Mox::String> reconciling_;
};

}  // namespace Topology::Library
