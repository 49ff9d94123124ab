// Readers of LibState that change any input from inside any notification, in every mode: the outcome is that of the
// inputs.
//
// A program is played once to learn what it notifies; then it is played again for every one of these notifications and
// every change, made by a reader at that point.

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include "tests/support/Effort.h"
#include "tests/topolib/StateLog.h"
#include "tests/topolib/model/Actions.h"
#include "tests/topolib/model/Check.h"

namespace Topology::Library::ReentrancyMatrixTest {

using Test::Action;
using Test::Agent;
using Test::Check;
using Test::Start;
using Test::StateLog;
using Test::strideOver;

using Lines = std::vector<std::string>;

/// What is under way, for the report of an abort.
std::string underWay;

extern "C" void reportUnderWay(int signal) {
  // Whether it could be written or not, the process ends.
  [[maybe_unused]] const auto written = write(STDERR_FILENO, underWay.data(), underWay.size());
  std::signal(signal, SIG_DFL);
  static_cast<void>(std::raise(signal));
}

/// Arms the report for a test.
class AbortReport {
 public:
  AbortReport() : old_(std::signal(SIGABRT, reportUnderWay)) {}
  AbortReport(const AbortReport&) = delete;
  AbortReport& operator=(const AbortReport&) = delete;
  ~AbortReport() { std::signal(SIGABRT, old_); }

 private:
  void (*old_)(int);
};

struct Mode {
  const char* name;
  bool deferProcessing;
  bool oneItemASlice;
};

std::ostream& operator<<(std::ostream& out, const Mode& mode) { return out << mode.name; }

/// Topologies A and B with three ports each. VLANs 10 of A and 30 of B have members; 20 of B expands into 10.
void prepare(Agent& agent) {
  for (const char* const topo : {"A", "B"}) {
    agent.topoIs(topo);
    for (const char* const intf : {"Ethernet1", "Ethernet2", "Cpu"}) agent.topoPortIs(topo, intf);
  }
  for (const char* const intf : {"Ethernet1", "Ethernet2"}) agent.linkIs(intf);
  agent.vlanIs(10, "A");
  agent.vlanIs(20, "B");
  agent.vlanIs(30, "B");
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(10, "Cpu");
  agent.brConfig->vlanConfigIs(20)->floodsetExpandedVlanIs(10);
  agent.memberIs(30, "Ethernet2");
}

/// Changes that between them cause every kind of notification.
const std::vector<Action>& program() {
  static const std::vector<Action> actions{Test::addPort(10, "Ethernet2"),
                                           Test::flushPort("A", "Ethernet1", 3),
                                           Test::portState("A", "Ethernet1", 1),
                                           Test::linkIs("Ethernet1", Interface::LinkStatus::down),
                                           Test::linkIs("Ethernet1"),
                                           Test::mapVlan(20, "A"),
                                           Test::mapVlan(10, "B"),
                                           Test::remakeTopo("B"),
                                           Test::addPort(20, "Ethernet1", 1),
                                           Test::expandVlan(20, 30),
                                           Test::removePort(20, "Ethernet1"),
                                           Test::deletePortConfig("B", "Cpu"),
                                           Test::remakeVlan(10),
                                           Test::deleteTopo("A"),
                                           Test::makeTopo("A"),
                                           Test::mapVlan(30, "A"),
                                           Test::expandVlan(20, 0),
                                           Test::deleteVlan(30),
                                           Test::removePort(10, "Cpu")};
  return actions;
}

/// What a reader may do.
const std::vector<Action>& changes() {
  static const std::vector<Action> actions{Test::mapVlan(10, "B"),
                                           Test::mapVlan(10, "A"),
                                           Test::unmapVlan(10),
                                           Test::mapVlan(20, "A"),
                                           Test::mapVlan(20, "B"),
                                           Test::unmapVlan(20),
                                           Test::remakeVlan(10),
                                           Test::remakeVlan(20),
                                           Test::deleteVlan(10),
                                           Test::deleteVlan(20),
                                           Test::addPort(10, "Ethernet1", 2),
                                           Test::addPort(20, "Ethernet1", 3),
                                           Test::addPort(30, "Ethernet1"),
                                           Test::removePort(10, "Ethernet1"),
                                           Test::expandVlan(20, 0),
                                           Test::expandVlan(20, 10),
                                           Test::expandVlan(20, 30),
                                           Test::remakeTopo("A"),
                                           Test::remakeTopo("B"),
                                           Test::deleteTopo("A"),
                                           Test::deleteTopo("B"),
                                           Test::remakeStatus("A"),
                                           Test::deleteStatus("B"),
                                           Test::deletePortConfig("A", "Ethernet1"),
                                           Test::portState("A", "Ethernet1", 2),
                                           Test::portState("B", "Ethernet1", 2),
                                           Test::flushPort("A", "Ethernet1", 9),
                                           Test::portStatus("A", "Ethernet1", false),
                                           Test::linkIs("Ethernet1", Interface::LinkStatus::down),
                                           Test::linkIs("Ethernet1"),
                                           Test::deleteIntf("Ethernet1")};
  return actions;
}

Action both(const Action& first, const Action& second) {
  return {first.line + "; " + second.line, [first, second](Agent& a) {
            first.apply(a);
            second.apply(a);
          }};
}

class ReentrancyMatrix : public testing::TestWithParam<Mode> {
 protected:
  /// Plays the program; at the notification of this number a reader makes the change. Returns how many there were.
  static std::size_t play(std::size_t at, const Action& change) {
    const Mode& mode = GetParam();
    Agent agent(Start{.deferProcessing = mode.deferProcessing});
    prepare(agent);
    StateLog log(agent.state);
    std::size_t count = 0;
    std::string line;
    std::string step = "the start";
    log.actionIs([&](const std::string& text) {
      if (count++ != at) return;
      line = step + ", " + text;
      underWay = "at " + std::to_string(at) + ", " + line + ": " + change.line + "\n";
      change.apply(agent);
    });
    agent.startLibrary();
    if (mode.oneItemASlice) agent.libSm->topoLibCodef()->backlogQuantumIs(0.0);
    agent.drain();
    for (const Action& action : program()) {
      step = action.line;
      action.apply(agent);
      agent.drain();
    }
    log.actionIs({});
    const Lines differences = Check(agent).differences();
    EXPECT_TRUE(differences.empty()) << "at " << at << ", " << line << ": " << change.line << '\n'
                                     << testing::PrintToString(differences);
    return count;
  }

  static void playAll(const std::vector<Action>& actions, std::size_t stride) {
    const AbortReport report;
    const std::size_t notifications = play(SIZE_MAX, {});
    ASSERT_GT(notifications, 50U);
    std::size_t turn = 0;
    for (std::size_t at = 0; at < notifications; ++at) {
      for (const Action& action : actions) {
        if (turn++ % stride != 0) continue;
        play(at, action);
        if (HasFailure()) return;
      }
    }
  }
};

TEST_P(ReentrancyMatrix, anyChangeAtAnyNotification) {
  const std::vector<Action>& all = changes();
  playAll(all, strideOver(all.size()));
}

/// The second change finds what the first one has left half done. A part of all pairs, another one at each notification;
/// all of them where TOPOLIB_TEST_FUZZ is set.
TEST_P(ReentrancyMatrix, anyTwoChangesAtAnyNotification) {
  std::vector<Action> pairs;
  for (const Action& first : changes()) {
    for (const Action& second : changes()) pairs.push_back(both(first, second));
  }
  playAll(pairs, strideOver(pairs.size(), std::getenv("TOPOLIB_TEST_FUZZ") == nullptr ? 29 : 1));
}

INSTANTIATE_TEST_SUITE_P(Modes, ReentrancyMatrix,
                         testing::Values(Mode{"deferred", true, false}, Mode{"oneItemASlice", true, true},
                                         Mode{"immediate", false, false}),
                         [](const auto& mode) { return std::string(mode.param.name); });

}  // namespace Topology::Library::ReentrancyMatrixTest
