// An agent with something to publish.

#pragma once

#include <cstddef>
#include <utility>

#include "tests/topolib/Agent.h"
#include "tests/topolib/StateLog.h"

namespace Test {

/// Has a topology with a VLAN on a port, whose link is up, and is not started.
class Switch : public Agent {
 public:
  explicit Switch(Start how = {}) : Agent(std::move(how)) {
    topoIs("A");
    topoPortIs("A", "Ethernet1");
    linkIs("Ethernet1");
    vlanIs(10, "A");
    memberIs(10, "Ethernet1");
  }
  /// Starts, with everything processed; returns how many changes a reader was told of.
  std::size_t startCountingChanges() {
    const StateLog log(state);
    startLibrary();
    drain();
    return log.lines.size();
  }
  /// Starts with the plain status, but without the directory of interface statuses.
  void startWaiting() {
    libSm = root->doStartLibSm("libSm", config, status, nullptr, brConfig, state, start.mode, start.ignoreInternalVlan,
                               start.deferProcessing, "");
  }
};

/// Ways to be started: with an instance status, deferred and at once.
inline const Start inst{.status = Start::Status::instance};
inline const Start instAtOnce{.status = Start::Status::instance, .deferProcessing = false};
inline const Start instNotified{.status = Start::Status::instance, .mode = Topology::Library::LibSmMode::notifyStatus};

/// Started, with everything processed.
class Running : public Switch {
 public:
  explicit Running(const Start& how = inst) : Switch(how) {
    startLibrary();
    drain();
  }
  [[nodiscard]] Mox::Ptr<Topology::Library::TopoConfigSm> topoSm() const { return libSm->topoConfigSm("A"); }
};

}  // namespace Test
