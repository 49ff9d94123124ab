// Readers of LibState that throw: nothing of what was to be done is lost.

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>

#include "tests/topolib/InputChanges.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::LibSmThrowingReaderTest {

using Test::contentsOf;
using Test::drainAll;
using Test::inputChanges;
using Test::makeInputChanges;
using Test::NamedStart;
using Test::Start;
using Test::StateLog;
using Test::Switch;

constexpr const char* complaint = "a reader does not like it";

/// Everything but the last change, so that something is published in the end.
std::set<std::string> contentsInTheEnd(const Start& how) {
  Switch agent(how);
  agent.startLibrary();
  agent.drain();
  makeInputChanges(agent, inputChanges.size() - 1);
  return contentsOf(*agent.state);
}

class ThrowingReader : public testing::TestWithParam<NamedStart> {};

INSTANTIATE_TEST_SUITE_P(Starts, ThrowingReader, testing::ValuesIn(::Test::namedStarts),
                         [](const auto& start) { return std::string(start.param.name); });

TEST_P(ThrowingReader, ofARunLosesNothing) {
  const std::set<std::string> expected = contentsInTheEnd(GetParam().how);
  ASSERT_GT(expected.size(), 4U);
  std::size_t all = 0;
  {
    Switch agent(GetParam().how);
    agent.startLibrary();
    agent.drain();
    const StateLog log(agent.state);
    makeInputChanges(agent);
    all = log.lines.size();
  }
  std::size_t thrown = 0;
  for (std::size_t n = 1; n <= all; ++n) {
    Switch agent(GetParam().how);
    agent.startLibrary();
    agent.drain();
    std::string at;
    StateLog log(agent.state);
    log.actionIs([&](const std::string& line) {
      if (log.lines.size() != n || !agent.libSm->topoLibCodef()->isRunning()) return;
      at = line;
      ++thrown;
      throw std::runtime_error(complaint);
    });
    makeInputChanges(agent, inputChanges.size() - 1);
    EXPECT_EQ(contentsOf(*agent.state), expected) << "thrown in notification " << n << ": " << at;
  }
  EXPECT_GT(thrown, 20U);
}

TEST_P(ThrowingReader, ofTheInitialPassLosesNothing) {
  Switch undisturbed(GetParam().how);
  const std::size_t all = undisturbed.startCountingChanges();
  for (std::size_t n = 1; n <= all; ++n) {
    Switch agent(GetParam().how);
    std::string at;
    StateLog log(agent.state);
    log.actionIs([&](const std::string& line) {
      // A state machine that is being made is made again; one that there is goes on with its next run.
      const auto& libSm = agent.root->libSm();
      if (log.lines.size() != n || (libSm && !libSm->topoLibCodef()->isRunning())) return;
      at = line;
      throw std::runtime_error(complaint);
    });
    try {
      agent.startLibrary();
    } catch (const std::runtime_error&) {
      EXPECT_TRUE(agent.libSm == nullptr || GetParam().how.status == Start::Status::plain);
      agent.startLibrary();
      agent.libSm->topoLibCodef()->doScheduleBacklogProcessing();
    }
    drainAll(agent);
    EXPECT_EQ(contentsOf(*agent.state), contentsOf(*undisturbed.state)) << "thrown in notification " << n << ": " << at;
  }
}

TEST(ThrownByAReader, ofAMovingExpansionBringsNothingDown) {
  for (const Start& how : {::Test::inst, ::Test::instAtOnce}) {
    Switch agent(how);
    agent.topoIs("B", 2);
    agent.vlanIs(30, "B");
    agent.brConfig->vlanConfigIs(30)->floodsetExpandedVlanIs(10);
    agent.startLibrary();
    agent.drain();
    ASSERT_TRUE(agent.carries("B", "Ethernet1", 30));
    StateLog log(agent.state);
    log.onceAt("B/Ethernet1 no 30", [] { throw std::runtime_error(complaint); });
    EXPECT_THROW(agent.vlanIs(30, "A"), std::runtime_error);
    agent.brConfig->vlanConfig(30)->floodsetExpandedVlanIs(0);
    agent.brConfig->vlanConfig(30)->floodsetExpandedVlanIs(10);
    drainAll(agent);
    EXPECT_TRUE(agent.carries("A", "Ethernet1", 30));
    EXPECT_FALSE(agent.carries("B", "Ethernet1", 30));
  }
}

TEST(ThrownByAReader, getsItsExceptionToWhoeverSetTheRunOff) {
  {
    Switch agent(::Test::inst);
    agent.startLibrary();
    StateLog log(agent.state);
    log.onceAt("A/Ethernet1 10", [] { throw std::runtime_error(complaint); });
    EXPECT_THROW(agent.drain(), std::runtime_error);
    EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan(10)->dirty()) << "it is marked again as a whole";
    EXPECT_FALSE(agent.libSm->topoLibCodef()->isRunning());
    EXPECT_LE(Mox::activityManager()->nextDue(), Mox::System::currentTime()) << "the clock is armed";
    agent.drain();
    EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  }
  Switch agent(::Test::instAtOnce);
  agent.startLibrary();
  StateLog log(agent.state);
  log.onceAt("+A/Ethernet2", [] { throw std::runtime_error(complaint); });
  EXPECT_THROW(agent.memberIs(10, "Ethernet2"), std::runtime_error);
  ASSERT_NE(agent.libSm->dirtyVlanDir()->dirtyVlan(10), nullptr);
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan(10)->dirty());
  agent.memberIs(20, "Ethernet1");
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 10)) << "the next mark has everything served";
}

TEST(ThrownByAReader, ofOneVlanKeepsNoOtherFromBeingMarked) {
  Switch agent(::Test::instAtOnce);
  for (const int vid : {5, 15, 25}) {
    agent.vlanIs(static_cast<unsigned>(vid), "B");
    agent.memberIs(static_cast<unsigned>(vid), "Ethernet1");
  }
  agent.startLibrary();
  const auto isServed = [&agent](unsigned vid) { return agent.carries("B", "Ethernet1", vid); };
  const auto run = [&agent] { agent.libSm->topoLibCodef()->doScheduleBacklogProcessing(); };
  StateLog log(agent.state);
  log.onceAt("B/Ethernet1 5", [] { throw std::runtime_error(complaint); });
  EXPECT_THROW(agent.topoIs("B", 2), std::runtime_error);
  run();
  EXPECT_TRUE(isServed(5) && isServed(15) && isServed(25)) << "the topology came";
  log.onceAt("B/Ethernet1 no 5", [] { throw std::runtime_error(complaint); });
  EXPECT_THROW(agent.config->topoConfigDel("B"), std::runtime_error);
  run();
  EXPECT_EQ(agent.state->topo("B"), nullptr) << "the topology went";
}

TEST(ThrownByAReader, ofInitDoneLosesNoMark) {
  Switch agent(::Test::inst);
  agent.startLibrary();
  StateLog log(agent.state);
  log.onceAt("initDone", [] { throw std::runtime_error(complaint); });
  EXPECT_THROW(agent.drain(), std::runtime_error);
  EXPECT_TRUE(agent.state->initDone());
  ASSERT_NE(agent.libSm->dirtyVlanDir()->dirtyVlan(10), nullptr);
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan(10)->dirty());
  agent.drain();
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan().empty());
}

}  // namespace Topology::Library::LibSmThrowingReaderTest
