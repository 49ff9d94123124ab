// An agent with something to publish.

#pragma once

#include <utility>

#include "tests/topolib/Agent.h"

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

}  // namespace Test
