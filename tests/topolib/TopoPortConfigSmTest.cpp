// What an admitted port publishes.

#include "topolib/TopoPortConfigSm.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Agent.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::TopoPortConfigSmTest {

using Bridging::Topology::PortState;
using Test::Agent;
using Test::StateLog;
using Test::TraceLines;

using Lines = std::vector<std::string>;
using Traces = std::vector<std::pair<unsigned, std::string>>;

/// The port Cpu of topology A, admitted, with VLAN 10.
class TopoPortConfigSmTest : public testing::Test {
 protected:
  TopoPortConfigSmTest() {
    agent.topoIs("A");
    agent.topoPortIs("A", "Cpu", PortState::blocking);
    agent.vlanIs(10, "A");
    agent.memberIs(10, "Cpu");
    agent.startLibrary();
    agent.drain();
  }

  Bridging::Topology::TopoPortConfig& config() { return *agent.config->topoConfig("A")->topoPortConfig("Cpu"); }
  TopoPortConfigSm& sm() { return *agent.libSm->topoConfigSm("A")->topoPortConfigSm("Cpu"); }
  const Port& port() { return *agent.port("A", "Cpu"); }

  Agent agent;
};

TEST_F(TopoPortConfigSmTest, standsOnTheConfigurationOfItsPort) {
  EXPECT_EQ(sm().name(), "A");
  EXPECT_EQ(sm().intfId(), Quill::IntfId("Cpu"));
  EXPECT_EQ(sm().topoPortConfig(), &config());
  EXPECT_EQ(sm().libSm(), agent.libSm.get());
  EXPECT_TRUE(sm().initialized());
}

TEST_F(TopoPortConfigSmTest, publishesActiveThenStateThenFlush) {
  agent.topoPortIs("A", "Ethernet1.7", PortState::learning);
  agent.config->topoConfig("A")->topoPortConfig("Ethernet1.7")->fdbFlushIs(3);
  agent.memberIs(10, "Ethernet1.7");
  const StateLog log(agent.state);
  agent.drain();
  EXPECT_EQ(log.lines, (Lines{"+A/Ethernet1.7", "A/Ethernet1.7 10", "A/Ethernet1.7 active",
                              "A/Ethernet1.7 state learning", "A/Ethernet1.7 flush 3"}));
}

TEST_F(TopoPortConfigSmTest, followsTheState) {
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  config().portStateIs(PortState::forwarding);
  EXPECT_EQ(log.lines, Lines{"A/Cpu state forwarding"});
  EXPECT_EQ(trace.lines(), (Traces{{8, "handlePortState"}, {3, "A: Updating Cpu state to forwarding"}}));
}

TEST_F(TopoPortConfigSmTest, followsTheFlushCounter) {
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  config().fdbFlushIs(4294967295U);
  EXPECT_EQ(log.lines, Lines{"A/Cpu flush 4294967295"});
  EXPECT_EQ(trace.lines(), (Traces{{8, "handleFdbFlush"}, {3, "A: Updating Cpu fdbFlush to 4294967295"}}));
}

TEST_F(TopoPortConfigSmTest, flushCounterIsCopiedAlsoWhenItGoesDown) {
  config().fdbFlushIs(9);
  config().fdbFlushIs(2);
  EXPECT_EQ(port().fdbFlush(), 2U);
}

TEST_F(TopoPortConfigSmTest, eachChangeWritesAllThreeAttributes) {
  agent.libSm->doSyncTopoPort("Cpu", "A", PortState::disabled, 8, false);
  const StateLog log(agent.state);
  config().fdbFlushIs(1);
  EXPECT_EQ(log.lines, (Lines{"A/Cpu active", "A/Cpu state blocking", "A/Cpu flush 1"}));
  agent.libSm->doSyncTopoPort("Cpu", "A", PortState::disabled, 8, false);
  config().portStateIs(PortState::learning);
  EXPECT_TRUE(port().active());
  EXPECT_EQ(port().state(), PortState::learning);
  EXPECT_EQ(port().fdbFlush(), 1U);
}

TEST_F(TopoPortConfigSmTest, doesNothingBeforeItIsInitialised) {
  sm().initializedIs(false);
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  config().portStateIs(PortState::forwarding);
  config().fdbFlushIs(6);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_EQ(trace.lines(), (Traces{{8, "handlePortState"}, {8, "handleFdbFlush"}}));
}

TEST_F(TopoPortConfigSmTest, initialisationAndCleanUpAreTraced) {
  TraceLines trace("TopoLib");
  sm().handleInitialized();
  EXPECT_EQ(trace.lines(), (Traces{{8, "A: Initialize Cpu"}}));
  trace.clear();
  sm().doCleanUp();
  EXPECT_EQ(trace.lines(), (Traces{{8, "A: Cleanup Cpu"}}));
}

TEST_F(TopoPortConfigSmTest, cleanUpResetsInThisOrder) {
  config().fdbFlushIs(6);
  const StateLog log(agent.state);
  sm().doCleanUp();
  EXPECT_EQ(log.lines, (Lines{"A/Cpu inactive", "A/Cpu state disabled", "A/Cpu flush 0"}));
}

TEST_F(TopoPortConfigSmTest, cleanUpComesBeforeTheRemoval) {
  StateLog log(agent.state);
  bool wasThere = false;
  log.onceAt("A/Cpu inactive", [&] { wasThere = agent.libSm->topoConfigSm("A")->topoPortConfigSm("Cpu") != nullptr; });
  agent.config->topoConfig("A")->topoPortConfigDel("Cpu");
  EXPECT_TRUE(wasThere);
  EXPECT_EQ(agent.libSm->topoConfigSm("A")->topoPortConfigSm("Cpu"), nullptr);
}

TEST_F(TopoPortConfigSmTest, removedStateMachineHearsNothingMore) {
  const Mox::Ptr<Bridging::Topology::TopoPortConfig> gone = &config();
  agent.config->topoConfig("A")->topoPortConfigDel("Cpu");
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  gone->portStateIs(PortState::forwarding);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_TRUE(trace.lines().empty());
}

}  // namespace Topology::Library::TopoPortConfigSmTest
