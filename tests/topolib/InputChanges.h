// Input changes that let LibState change in every way, and the starts under which tests make them.

#pragma once

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/topolib/Switch.h"

namespace Test {

using InputChange = std::function<void(Switch&)>;

inline const std::vector<InputChange> inputChanges{
    [](Switch& agent) { agent.memberIs(10, "Ethernet2"); },
    [](Switch& agent) { agent.vlanIs(20, "A"); },
    [](Switch& agent) { agent.memberIs(20, "Ethernet1"); },
    [](Switch& agent) { agent.topoPortIs("A", "Ethernet2"); },
    [](Switch& agent) { agent.linkIs("Ethernet2"); },
    [](Switch& agent) { agent.topoPortIs("A", "Ethernet1", Agent::PortState::learning); },
    [](Switch& agent) { agent.config->topoConfig("A")->topoPortConfig("Ethernet1")->fdbFlushIs(7); },
    [](Switch& agent) { agent.linkIs("Ethernet2", Interface::LinkStatus::down); },
    [](Switch& agent) { agent.linkIs("Ethernet2"); },
    [](Switch& agent) { agent.topoIs("B", 2); },
    [](Switch& agent) { agent.topoPortIs("B", "Ethernet1"); },
    [](Switch& agent) { agent.vlanIs(20, "B"); },
    [](Switch& agent) { agent.memberIs(10, "Ethernet2", {}); },
    [](Switch& agent) { agent.vlanIs(30, "B"); },
    [](Switch& agent) { agent.brConfig->vlanConfigIs(30)->floodsetExpandedVlanIs(10); },
    [](Switch& agent) { agent.brConfig->vlanConfig(10)->vlanPortConfigDel("Ethernet2"); },
    [](Switch& agent) { agent.vlanIs(30, "A"); },
    [](Switch& agent) { agent.brConfig->vlanConfig(30)->floodsetExpandedVlanIs(0); },
    [](Switch& agent) { agent.config->topoConfigDel("A"); },
    [](Switch& agent) {
      agent.topoIs("A");
      agent.topoPortIs("A", "Ethernet1");
    },
    [](Switch& agent) {
      agent.config->topoConfigDel("B");
      agent.topoIs("B", 2);
      agent.topoPortIs("B", "Ethernet1");
    },
    [](Switch& agent) {
      agent.status->topoStatusDel("A");
      agent.statusInst->topoStatusDel("A");
    },
    [](Switch& agent) {
      agent.topoIs("A");
      agent.topoPortIs("A", "Ethernet1");
    },
    [](Switch& agent) { agent.brConfig->vlanConfigDel(20); },
    [](Switch& agent) { agent.memberIs(20, "Ethernet1"); },
    [](Switch& agent) { agent.config->vidToTopoMapDel(20); },
    [](Switch& agent) { agent.config->topoConfigDelAll(); },
};

/// Works everything off; a run that a reader ends by an exception is followed by the next one.
inline void drainAll(Switch& agent) {
  for (bool isOver = false; !isOver;) {
    try {
      agent.drain();
      isOver = true;
    } catch (const std::runtime_error&) {
      continue;
    }
  }
}

/// Makes the first changes one after the other, and works each off. One that a reader's exception has cut short is made
/// again, which changes only what it has not come to.
inline void makeInputChanges(Switch& agent, std::size_t count = inputChanges.size()) {
  for (std::size_t i = 0; i < count; ++i) {
    try {
      inputChanges[i](agent);
    } catch (const std::runtime_error&) {
      inputChanges[i](agent);
      // Without deferral, what remains waits for the next run.
      agent.libSm->topoLibCodef()->doScheduleBacklogProcessing();
    }
    drainAll(agent);
  }
}

/// A way to be started, by its name.
struct NamedStart {
  const char* name;
  Start how;

  friend std::ostream& operator<<(std::ostream& out, const NamedStart& start) { return out << start.name; }
};

inline const std::vector<NamedStart> namedStarts{{"inst", inst},
                                                 {"instAtOnce", instAtOnce},
                                                 {"instNotified", instNotified},
                                                 {"plain", {}},
                                                 {"plainAtOnce", {.deferProcessing = false}}};

}  // namespace Test
