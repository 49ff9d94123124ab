// What tests of the status publisher share: its inputs, written by the test itself, and a log of what it writes.

#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ChangeLog.h"
#include "tests/topolib/Observed.h"
#include "topolib/Root.h"

namespace Test {

/// The contents of an instance status: "A 1" for a topology and its number, "A/Ethernet1 0" for a port and its number.
[[nodiscard]] inline std::set<std::string> contentsOf(const Bridging::Topology::Inst::Status& status) {
  std::set<std::string> lines;
  for (const auto& [name, topo] : status.topoStatus()) {
    lines.insert(textOf(name, ' ', topo.topoNumber()));
    for (const auto& [intf, number] : topo.topoPortStatus()) lines.insert(textOf(name, '/', intf, ' ', number));
  }
  return lines;
}

/// The publisher's inputs, without a library: the test writes the published state.
class Publisher {
 public:
  using LinkStatus = Interface::LinkStatus;
  using ForwardingModel = Interface::ForwardingModel;

  /// Starts it over a state whose first pass is over, unless the test has seen to that itself.
  void start(bool isInitDone = true) {
    if (isInitDone) state->initDoneIs(true);
    sm = root->topologyStatusLibSmIs(status, state, config, intfDir);
  }
  /// Ends it as its client does.
  void stop() {
    sm = nullptr;
    root = Topology::Library::rootFactory("root");
  }

  void topoIs(const std::string& name, unsigned number = 1) {
    (void)config->topoConfigIs(name, number);
    (void)state->topoIs(name);
  }
  void portIs(const std::string& topo, const std::string& intf) { (void)state->topo(topo)->portIs(intf); }
  void linkIs(const std::string& intf, LinkStatus link = LinkStatus::up,
              ForwardingModel model = ForwardingModel::bridged) {
    const auto intfStatus = intfDir->intfStatusIs(intf);
    intfStatus->forwardingModelIs(model);
    intfStatus->linkStatusIs(link);
  }
  /// A topology with a port that is up.
  void portUp(const std::string& topo = "A", const std::string& intf = "Ethernet1") {
    linkIs(intf);
    topoIs(topo);
    portIs(topo, intf);
  }

  [[nodiscard]] std::set<std::string> contents() const { return contentsOf(*status); }
  [[nodiscard]] Topology::Library::TopoSm* topoSm(const std::string& name) const { return sm->topoSm(name); }

  Mox::Ptr<Bridging::Topology::Config> config = Bridging::Topology::configFactory("config");
  Mox::Ptr<Bridging::Topology::Inst::Status> status = Bridging::Topology::Inst::statusFactory("status");
  Mox::Ptr<Interface::EthIntfStatusDir> intfDir = Interface::ethIntfStatusDirFactory("intfDir");
  Mox::Ptr<Topology::Library::LibState> state = Topology::Library::libStateFactory("state");
  Mox::Ptr<Topology::Library::Root> root = Topology::Library::rootFactory("root");
  Mox::Ptr<Topology::Library::TopologyStatusLibSm> sm;
};

/// Writes down every change of an instance status and of the port configurations, in the order in which a reader is told:
/// "+A", "-A", "A +Ethernet1", "A -Ethernet1", "A config +Ethernet1", "A config -Ethernet1".
class StatusLog : public ChangeLog {
 public:
  StatusLog(Mox::Ptr<Bridging::Topology::Inst::Status> status, Mox::Ptr<Bridging::Topology::Config> config)
      : status_(std::move(status)), config_(std::move(config)) {
    using Bridging::Topology::Config;
    using Bridging::Topology::Inst::Status;
    watch(*status_, [this](Mox::AttributeId id, const void* key) {
      const auto* const name = Status::topoStatusAttr.keyOf(id, key);
      if (name == nullptr) return;
      const auto* const topo = status_->topoStatus(*name);
      if (topo != nullptr) watchStatus(*topo);
      write(textOf(topo == nullptr ? "-" : "+", *name));
    });
    watch(*config_, [this](Mox::AttributeId id, const void* key) {
      const auto* const name = Config::topoConfigAttr.keyOf(id, key);
      const auto* const topo = name == nullptr ? nullptr : config_->topoConfig(*name);
      if (topo != nullptr) watchConfig(*topo);
    });
    for (const auto& [name, topo] : status_->topoStatus()) watchStatus(topo);
    for (const auto& [name, topo] : config_->topoConfig()) watchConfig(topo);
  }
  explicit StatusLog(const Publisher& publisher) : StatusLog(publisher.status, publisher.config) {}

 private:
  void watchStatus(const Bridging::Topology::Inst::TopoStatus& topo) {
    watch(topo, [this, &topo](Mox::AttributeId id, const void* key) {
      const auto* const intf = Bridging::Topology::Inst::TopoStatus::topoPortStatusAttr.keyOf(id, key);
      if (intf != nullptr) write(textOf(topo.name(), topo.topoPortStatus(*intf) == nullptr ? " -" : " +", *intf));
    });
  }
  void watchConfig(const Bridging::Topology::TopoConfig& topo) {
    watch(topo, [this, &topo](Mox::AttributeId id, const void* key) {
      const auto* const intf = Bridging::Topology::TopoConfig::topoPortConfigAttr.keyOf(id, key);
      if (intf == nullptr) return;
      write(textOf(topo.name(), topo.topoPortConfig(*intf) == nullptr ? " config -" : " config +", *intf));
    });
  }

  Mox::Ptr<Bridging::Topology::Inst::Status> status_;
  Mox::Ptr<Bridging::Topology::Config> config_;
};

}  // namespace Test
