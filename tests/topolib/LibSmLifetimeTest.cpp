// What becomes of a LibSm that is released or replaced inside a notification that it caused.

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/Recorder.h"
#include "tests/support/TraceLines.h"
#include "tests/topolib/InputChanges.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::LibSmLifetimeTest {

using Test::contentsOf;
using Test::makeInputChanges;
using Test::NamedStart;
using Test::Recorder;
using Test::Start;
using Test::StateLog;
using Test::Switch;
using PortState = Bridging::Topology::PortState;

class Lifetime : public testing::TestWithParam<NamedStart> {
 protected:
  /// How many notifications the changes cause.
  [[nodiscard]] static std::size_t notifications() {
    Switch agent(GetParam().how);
    agent.startLibrary();
    agent.drain();
    const StateLog log(agent.state);
    makeInputChanges(agent);
    return log.lines.size();
  }

  /// Does something in each of the notifications in turn, and expects that LibState stays as it was there.
  static void expectNothingWrittenAfter(const std::function<void(Switch&)>& end) {
    const std::size_t all = notifications();
    ASSERT_GT(all, 40U);
    for (std::size_t n = 1; n <= all; ++n) {
      Switch agent(GetParam().how);
      agent.startLibrary();
      agent.drain();
      std::string at;
      std::set<std::string> then;
      StateLog log(agent.state);
      log.actionIs([&](const std::string& line) {
        if (log.lines.size() != n) return;
        at = line;
        end(agent);
        then = contentsOf(*agent.state);
      });
      makeInputChanges(agent);
      ASSERT_GE(log.lines.size(), n);
      EXPECT_EQ(contentsOf(*agent.state), then) << "ended in notification " << n << ": " << at;
      log.lines.erase(log.lines.begin(), log.lines.begin() + static_cast<std::ptrdiff_t>(n));
      EXPECT_EQ(log.lines, std::vector<std::string>{}) << "ended in notification " << n << ": " << at;
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Starts, Lifetime, testing::ValuesIn(::Test::namedStarts),
                         [](const auto& start) { return std::string(start.param.name); });

TEST_P(Lifetime, releasedInANotificationItWritesNothingMore) {
  expectNothingWrittenAfter([](Switch& agent) {
    agent.libSm = nullptr;
    agent.root = nullptr;
  });
}

TEST_P(Lifetime, replacedInANotificationItWritesNothingMoreThoughItIsHeld) {
  std::vector<Mox::Ptr<LibSm>> held;
  expectNothingWrittenAfter([&held](Switch& agent) {
    held.push_back(agent.libSm);
    const auto other = agent.root->doStartLibSm("other", nullptr, nullptr, nullptr, nullptr, libStateFactory("other"),
                                                LibSmMode::createStatus, true, true, "");
    EXPECT_EQ(agent.root->libSm(), other);
    EXPECT_TRUE(agent.libSm->isRetired());
  });
}

TEST_P(Lifetime, restartedInANotificationTheNewOneTakesTheStateOver) {
  Switch undisturbed(GetParam().how);
  const std::size_t all = undisturbed.startCountingChanges();
  ASSERT_GT(all, 8U);
  for (std::size_t n = 1; n <= all; ++n) {
    Switch agent(GetParam().how);
    std::string at;
    Mox::Ptr<LibSm> second;
    StateLog log(agent.state);
    log.actionIs([&](const std::string& line) {
      if (log.lines.size() != n) return;
      at = line;
      const bool isPlain = agent.start.status == Start::Status::plain;
      second = agent.root->doStartLibSm("second", agent.config, isPlain ? agent.status : nullptr,
                                        isPlain ? nullptr : agent.statusInst, agent.brConfig, agent.state,
                                        agent.start.mode, true, agent.start.deferProcessing, "");
      if (isPlain) second->ethIntfStatusDirIs(agent.intfDir);
    });
    agent.startLibrary();
    agent.drain();
    ASSERT_NE(second, nullptr);
    SCOPED_TRACE("restarted in notification " + std::to_string(n) + ": " + at);
    EXPECT_NE(agent.libSm->isRetired(), second->isRetired()) << "one of them is running";
    EXPECT_FALSE(agent.root->libSm()->isRetired());
    EXPECT_EQ(contentsOf(*agent.state), contentsOf(*undisturbed.state));
    agent.topoPortIs("A", "Ethernet1", PortState::learning);
    agent.memberIs(10, "Ethernet2");
    agent.drain();
    EXPECT_EQ(agent.port("A", "Ethernet1")->state(), PortState::learning);
    EXPECT_TRUE(agent.carries("A", "Ethernet2", 10));
  }
}

// Held by somebody after it was replaced.

TEST(ReplacedLibSm, isNotStartedUpAnyMore) {
  Switch agent;
  agent.startWaiting();
  const auto old = agent.libSm;
  const auto made = agent.root->doStartLibSm("other", nullptr, nullptr, nullptr, nullptr, libStateFactory("other"),
                                             LibSmMode::createStatus, true, true, "");
  old->ethIntfStatusDirIs(agent.intfDir);
  agent.drain();
  EXPECT_FALSE(old->initialized());
  EXPECT_TRUE(agent.state->topo().empty());
  EXPECT_FALSE(agent.state->initDone());
}

TEST(ReplacedLibSm, isDeaf) {
  for (const NamedStart& start : ::Test::namedStarts) {
    SCOPED_TRACE(start.name);
    Switch agent(start.how);
    agent.startLibrary();
    agent.drain();
    const auto old = agent.libSm;
    agent.vlanIs(20, "A");
    (void)agent.root->doStartLibSm("other", nullptr, nullptr, nullptr, nullptr, libStateFactory("other"),
                                   LibSmMode::createStatus, true, true, "");
    const StateLog log(agent.state);
    const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(2) | Mox::traceLevel(3) | Mox::traceLevel(4));
    makeInputChanges(agent);
    agent.drain();
    EXPECT_TRUE(log.lines.empty());
    EXPECT_TRUE(trace.lines().empty());
  }
}

TEST(ReplacedLibSm, ofWaitingOneGivesNoAbort) {
  Switch agent;
  agent.startWaiting();
  const auto old = agent.libSm;
  (void)agent.root->doStartLibSm("other", nullptr, nullptr, nullptr, nullptr, libStateFactory("other"),
                                 LibSmMode::createStatus, true, true, "");
  agent.vlanIs(20, "A");
  agent.topoIs("B");
  agent.brConfig->vlanConfigIs(30);
  EXPECT_FALSE(old->initialized());
}

TEST(ReleasedLibSm, mayBeReleasedWhileItStartsUp) {
  for (const char* const at : {"+A", "+A/Ethernet1", "A/Ethernet1 10", "A/Ethernet1 active", "initDone"}) {
    SCOPED_TRACE(at);
    Switch agent(Start{.deferProcessing = false});
    agent.startWaiting();
    agent.libSm = nullptr;
    StateLog log(agent.state);
    log.onceAt(at, [&] { agent.root = nullptr; });
    LibSm& libSm = *agent.root->libSm();
    libSm.ethIntfStatusDirIs(agent.intfDir);
    EXPECT_EQ(log.lines.back(), at);
    EXPECT_TRUE(agent.config->notifieeList()->empty());
    EXPECT_EQ(agent.state->references(), 3U) << "this test holds it, the log and its reactor";
  }
}

TEST(ReleasedLibSm, mayBeReleasedInsideANotificationOfItsOwn) {
  Switch agent(::Test::inst);
  agent.startLibrary();
  agent.libSm = nullptr;
  const Recorder recorder(agent.root->libSm().get(), [&](auto, const void*) { agent.root = nullptr; });
  agent.config->topoConfigIs("B", 2);
  EXPECT_EQ(agent.root, nullptr);
  EXPECT_TRUE(agent.config->notifieeList()->size() <= 1U);
}

}  // namespace Topology::Library::LibSmLifetimeTest
