// An admitted port of a topology: publishes its state and flush counter.
//
// While it exists the published `Port` is active, with the configuration's state and counter. A reader of the port that
// changes the configuration from inside a notification is served when all three attributes are written.

#pragma once

#include "bridging/TopologyConfig.h"
#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/detail/Busy.h"

namespace Topology::Library {

class LibSm;
class TopoConfigSm;

class MOX_PUBLIC TopoPortConfigSm : public Mox::StateMachine<TopoPortConfigSm> {
 public:
  /// `name` is the topology's.
  TopoPortConfigSm(Mox::String name, const Mox::Ptr<const Bridging::Topology::TopoPortConfig>& topoPortConfig,
                   TopoConfigSm* topoConfigSm);
  ~TopoPortConfigSm() override;

  [[nodiscard]] const Mox::String& name() const noexcept { return name_; }
  [[nodiscard]] Quill::IntfId intfId() const noexcept { return intfId_; }
  [[nodiscard]] const Bridging::Topology::TopoPortConfig* topoPortConfig() const noexcept {
    return topoPortConfig_.notifier();
  }
  [[nodiscard]] LibSm* libSm() const noexcept;

  void handleInitialized();
  void handlePortState();
  void handleFdbFlush();
  /// Writes the configuration's state and counter into the port, which becomes active.
  void doPublish();
  /// Makes the port inactive, with state and counter zero.
  void doCleanUp();

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(topoPortConfig_); }

  class MoxTopoPortConfig
      : public detail::LibReactor<MoxTopoPortConfig, TopoPortConfigSm, Bridging::Topology::TopoPortConfig> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  Mox::String name_;
  Quill::IntfId intfId_;
  MoxTopoPortConfig topoPortConfig_;
  TopoConfigSm* topoConfigSm_;
};

}  // namespace Topology::Library
