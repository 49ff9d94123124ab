// An agent for tests: the inputs of the topology library, its state, and virtual time.

#pragma once

#include <functional>
#include <string>

#include "mox/ActivityManager.h"
#include "tests/support/VirtualTime.h"
#include "topolib/TopoLib.h"

namespace Test {

/// How the library is started.
struct Start {
  enum class Status { plain, instance, none };

  Status status = Status::plain;
  Topology::Library::LibSmMode mode = Topology::Library::LibSmMode::createStatus;
  bool ignoreInternalVlan = true;
  bool deferProcessing = true;
  std::string intfFilterType = {};
};

class Agent {
 public:
  using PortState = Bridging::Topology::PortState;

  explicit Agent(Start how = {}) : start(std::move(how)) {}

  /// Starts the library with the inputs as they are; with a plain status the interface status directory is set as well.
  void startLibrary() {
    using Status = Start::Status;
    libSm = root->doStartLibSm("libSm", config, start.status == Status::plain ? status : nullptr,
                               start.status == Status::instance ? statusInst : nullptr, brConfig, state, start.mode,
                               start.ignoreInternalVlan, start.deferProcessing, start.intfFilterType);
    if (start.status == Status::plain && libSm->ethIntfStatusDir() == nullptr) libSm->ethIntfStatusDirIs(intfDir);
  }

  /// Runs round after round until nothing is armed: the backlog is empty then.
  void drain() {
    while (Mox::activityManager()->nextDue() <= Mox::System::currentTime()) Mox::activityManager()->dispatch();
  }

  // Inputs, in few words.
  /// Configures a topology, with its status where one is watched.
  void topoIs(const std::string& name, unsigned number = 1) {
    config->topoConfigIs(name, number);
    if (start.status == Start::Status::plain) status->topoStatusIs(name);
    if (start.status == Start::Status::instance) statusInst->topoStatusIs(name, number);
  }
  /// Configures a port of a topology, with its status where one is watched.
  void topoPortIs(const std::string& name, const std::string& intf, PortState portState = PortState::forwarding) {
    config->topoConfig(name)->topoPortConfigIs(intf, 0, portState);
    if (auto* const topoStatus = status->topoStatus(name)) topoStatus->topoPortStatusIs(intf);
    if (auto* const topoStatus = statusInst->topoStatus(name)) topoStatus->topoPortStatusIs(intf, 0);
  }
  /// Topologies A and B, each with Ethernet1 and Ethernet2, whose links are up.
  void twoTopologiesIs() {
    for (const char* const topo : {"A", "B"}) {
      topoIs(topo);
      topoPortIs(topo, "Ethernet1");
      topoPortIs(topo, "Ethernet2");
    }
    linkIs("Ethernet1");
    linkIs("Ethernet2");
  }
  void linkIs(const std::string& intf, Interface::LinkStatus link = Interface::LinkStatus::up) {
    intfDir->intfStatusIs(intf)->linkStatusIs(link);
  }
  void vlanIs(unsigned vid, const std::string& topo) { config->vidToTopoMapIs(vid, topo); }
  void memberIs(unsigned vid, const std::string& intf, const Bridging::VlanPortConfig& value = {}) {
    brConfig->vlanConfigIs(vid)->vlanPortConfigIs(intf, value);
  }

  /// The published port, or null.
  [[nodiscard]] const Topology::Library::Port* port(const std::string& topo, const std::string& intf) const {
    const auto* const published = std::as_const(*state).topo(topo);
    return published == nullptr ? nullptr : published->port(intf);
  }
  /// Whether the published port carries the VLAN.
  [[nodiscard]] bool carries(const std::string& topo, const std::string& intf, unsigned vid) const {
    const auto* const published = port(topo, intf);
    return published != nullptr && published->vlanPortConfig(vid) != nullptr;
  }

  VirtualTimeInUse time;
  Start start;
  Mox::Ptr<Bridging::Topology::Config> config = Bridging::Topology::configFactory("config");
  Mox::Ptr<Bridging::Topology::Status> status = Bridging::Topology::statusFactory("status");
  Mox::Ptr<Bridging::Topology::Inst::Status> statusInst = Bridging::Topology::Inst::statusFactory("statusInst");
  Mox::Ptr<Bridging::Config> brConfig = Bridging::configFactory("brConfig");
  Mox::Ptr<Interface::EthIntfStatusDir> intfDir = Interface::ethIntfStatusDirFactory("intfDir");
  Mox::Ptr<Topology::Library::LibState> state = Topology::Library::libStateFactory("state");
  Mox::Ptr<Topology::Library::Root> root = Topology::Library::rootFactory("root");
  Mox::Ptr<Topology::Library::LibSm> libSm;
  /// False while a status publisher shares the instance status: it is no input then, the publisher alone writes it.
  std::function<bool()> mayWriteStatusInst = [] { return true; };
  /// False for a topology that a status publisher has yet to be told of: it aborts over one without a configuration.
  std::function<bool(const std::string&)> mayDeleteTopo = [](const std::string& /*topo*/) { return true; };
};

}  // namespace Test
