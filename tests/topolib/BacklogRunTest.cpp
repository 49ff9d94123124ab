// What one run of the backlog processor does, and what it tells.

#include "topolib/detail/BacklogRun.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Agent.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::BacklogRunTest {

using Test::Agent;
using Test::Messages;
using Test::StateLog;
using Test::TraceLines;

using Lines = std::vector<std::string>;
using Traces = std::vector<std::pair<unsigned, std::string>>;

constexpr std::uint32_t progress = Mox::traceLevel(5);

/// VLAN 10 of topology A and topology B, without members; the runs are the test's.
class BacklogRunTest : public testing::Test {
 protected:
  BacklogRunTest() {
    agent.topoIs("A");
    agent.topoIs("B");
    agent.vlanIs(10, "A");
    agent.brConfig->vlanConfigIs(10);
    agent.startLibrary();
    agent.drain();
  }

  TopoLibCodef& codef() { return *agent.libSm->topoLibCodef(); }
  DirtyVlanDir& directory() { return *agent.libSm->dirtyVlanDir(); }
  const TopoToVlanMap& registered() { return *agent.libSm->topoToVlanMap(); }
  void run() { Mox::activityManager()->dispatch(); }
  /// Gives VLAN 10 its members and has them served.
  void membersAre(const std::vector<std::string>& intfs) {
    for (const std::string& intf : intfs) agent.memberIs(10, intf);
    agent.drain();
  }

  Agent agent;
};

TEST_F(BacklogRunTest, emptyRun) {
  agent.time->tickIs(0.001);
  const std::uint64_t dispatched = codef().dispatchCount();
  const std::uint64_t processed = codef().updatesProcessed();
  const double used = codef().timeUsed();
  const TraceLines trace("TopoLib");
  const Messages messages;
  codef().codefState()->idleIs(false);
  codef().doProcessBacklog();
  EXPECT_EQ(trace.lines(), (Traces{{8, "TopoLibCodef::doProcessBacklog()"},
                                   {5, "start iterating over dirty vlans "},
                                   {5, "no more work to do "},
                                   {5, "done processing "},
                                   {9, "TopoLibCodef::doProcessBacklog idleIs true"}}));
  EXPECT_EQ(messages.texts(), Lines{"TopoLibCodef::doProcessBacklog()"});
  EXPECT_EQ(codef().dispatchCount(), dispatched + 1);
  EXPECT_EQ(codef().updatesProcessed(), processed);
  EXPECT_GT(codef().timeUsed(), used);
  EXPECT_TRUE(codef().codefState()->idle());
}

TEST_F(BacklogRunTest, partlyDirtyVlanIsTraced) {
  agent.memberIs(10, "Ethernet1");
  const TraceLines trace("TopoLib", progress);
  run();
  EXPECT_EQ(trace.lines(), (Traces{{5, "start iterating over dirty vlans "},
                                   {5, "Processing vlan 10"},
                                   {5, " vlanConfig is Bridging::VlanConfig"},
                                   {5, " topoConfig is Bridging::Topology::TopoConfig(A)"},
                                   {5, "isTopoOrphan is false"},
                                   {5, "vlan is not all dirty "},
                                   {5, "processing interface Ethernet1"},
                                   {5, "deleting vlan 10 from the dirtyVlan "},
                                   {5, "no more work to do "},
                                   {5, "done processing "}}));
}

TEST_F(BacklogRunTest, whollyDirtyVlanIsTraced) {
  membersAre({"Ethernet1"});
  agent.libSm->doOnVlanPortUpdate(10, {});
  const TraceLines trace("TopoLib", progress);
  run();
  EXPECT_EQ(trace.lines(), (Traces{{5, "start iterating over dirty vlans "},
                                   {5, "Processing vlan 10"},
                                   {5, " vlanConfig is Bridging::VlanConfig"},
                                   {5, " topoConfig is Bridging::Topology::TopoConfig(A)"},
                                   {5, "isTopoOrphan is false"},
                                   {5, "oldTopoName is A"},
                                   {5, " setting bookmark to 10"},
                                   {5, "Finished serving all the ports in old topo,Cleaning-up the deletedPortSet"},
                                   {5, "Serving port Ethernet1 in vlan 10"},
                                   {5, "deleting vlan 10 from the dirtyVlan "},
                                   {5, "no more work to do "},
                                   {5, "done processing "}}));
}

TEST_F(BacklogRunTest, vlanWithoutConfigurationsIsTraced) {
  directory().dirtyVlanIs(30)->dirtyIs(true);
  const TraceLines trace("TopoLib", progress);
  run();
  EXPECT_TRUE(trace.has(5, " vlanConfig is null"));
  EXPECT_TRUE(trace.has(5, " topoConfig is null"));
  EXPECT_TRUE(trace.has(5, "oldTopoName is "));
  EXPECT_TRUE(directory().dirtyVlan().empty());
}

TEST_F(BacklogRunTest, wholeVlanIsRemovedAndAddedAgain) {
  membersAre({"Ethernet1"});
  const StateLog log(agent.state);
  agent.libSm->doOnVlanPortUpdate(10, {});
  agent.drain();
  EXPECT_EQ(log.lines, (Lines{"A/Ethernet1 no 10", "-A/Ethernet1", "+A/Ethernet1", "A/Ethernet1 10"}));
}

TEST_F(BacklogRunTest, vlanIsRegisteredWithItsTopologyBeforeItsPortsAreServed) {
  ASSERT_NE(registered().mappedVlan("A"), nullptr);
  StateLog log(agent.state);
  bool wasRegistered = false;
  membersAre({"Ethernet1"});
  log.onceAt("+B/Ethernet1", [&] { wasRegistered = registered().mappedVlan("B")->vlan(10) != nullptr; });
  agent.vlanIs(10, "B");
  agent.drain();
  EXPECT_TRUE(wasRegistered);
  EXPECT_EQ(registered().topoOfVlan(10), "B");
}

TEST_F(BacklogRunTest, unmappedVlanIsRegisteredNowhere) {
  membersAre({"Ethernet1"});
  agent.config->vidToTopoMapDel(10);
  agent.drain();
  EXPECT_EQ(registered().topoOfVlan(10), "");
  EXPECT_EQ(registered().mappedVlan(""), nullptr);
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
  EXPECT_NE(agent.libSm->vlanConfigSm(10), nullptr);
}

TEST_F(BacklogRunTest, vlanWithoutConfigurationIsTakenOutOfService) {
  membersAre({"Ethernet1"});
  agent.brConfig->vlanConfigDel(10);
  agent.drain();
  EXPECT_EQ(agent.libSm->vlanConfigSm(10), nullptr);
  EXPECT_EQ(registered().topoOfVlan(10), "");
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
}

TEST_F(BacklogRunTest, internalVlanIsNotServed) {
  agent.vlanIs(30, "A");
  agent.brConfig->vlanConfigIs(30, true)->vlanPortConfigIs("Ethernet1", {});
  agent.drain();
  EXPECT_EQ(agent.libSm->vlanConfigSm(30), nullptr);
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
  EXPECT_EQ(registered().topoOfVlan(30), "");
}

TEST_F(BacklogRunTest, partlyDirtyVlanThatIsNotServedIsFinished) {
  agent.brConfig->vlanConfigIs(30, true);
  agent.drain();
  for (const unsigned vid : {30U, 31U}) {
    directory().dirtyVlanIs(vid)->intfIs("Ethernet1");
    directory().dirtyVlan(vid)->intfIs("Ethernet2");
  }
  const TraceLines trace("TopoLib", progress);
  const std::uint64_t processed = codef().updatesProcessed();
  run();
  EXPECT_EQ(trace.count(5, "vlan is not all dirty "), 2U);
  EXPECT_FALSE(trace.has(5, "processing interface Ethernet1"));
  EXPECT_TRUE(trace.has(5, "deleting vlan 30 from the dirtyVlan "));
  EXPECT_TRUE(trace.has(5, "deleting vlan 31 from the dirtyVlan "));
  EXPECT_TRUE(directory().dirtyVlan().empty());
  EXPECT_EQ(codef().updatesProcessed(), processed);
}

TEST_F(BacklogRunTest, partlyDirtyVlanOfAnAbsentTopologyIsServedWhenItComes) {
  agent.vlanIs(10, "C");
  agent.drain();
  membersAre({"Ethernet1"});
  EXPECT_EQ(agent.state->topo("C"), nullptr);
  agent.topoIs("C");
  agent.drain();
  EXPECT_TRUE(agent.carries("C", "Ethernet1", 10));
}

TEST_F(BacklogRunTest, portsAreCountedAsUpdatesProcessed) {
  const std::uint64_t before = codef().updatesProcessed();
  membersAre({"Ethernet1", "Ethernet2"});
  EXPECT_EQ(codef().updatesProcessed(), before + 2);
  agent.libSm->doOnVlanPortUpdate(10, {});
  agent.drain();
  EXPECT_EQ(codef().updatesProcessed(), before + 6);
}

TEST_F(BacklogRunTest, interfaceThatLeavesTheDirectoryIsSeenAndAnEmptyRunFollows) {
  const std::uint64_t seen = codef().updatesSeen();
  const std::uint64_t dispatched = codef().dispatchCount();
  agent.memberIs(10, "Ethernet1");
  EXPECT_EQ(codef().updatesSeen(), seen + 1);
  run();
  EXPECT_EQ(codef().updatesSeen(), seen + 2);
  EXPECT_EQ(codef().dispatchCount(), dispatched + 1);
  EXPECT_TRUE(codef().codefState()->idle());
  EXPECT_EQ(Mox::activityManager()->nextDue(), 0.0);
  run();
  EXPECT_EQ(codef().dispatchCount(), dispatched + 2);
  EXPECT_EQ(Mox::activityManager()->dispatch(), 0U);
}

TEST_F(BacklogRunTest, initialPassEndsWithTheFirstDrainAndEveryVlanIsServedTwice) {
  Agent other;
  other.topoIs("A");
  other.vlanIs(10, "A");
  other.vlanIs(11, "A");
  other.memberIs(10, "Ethernet1");
  other.startLibrary();
  const TraceLines trace("TopoLib");
  const StateLog log(other.state);
  other.drain();
  EXPECT_EQ(trace.count(8, "LibSm::doOnInitDone"), 1U);
  EXPECT_EQ(trace.count(5, "deleting vlan 10 from the dirtyVlan "), 2U);
  EXPECT_EQ(trace.count(5, "deleting vlan 11 from the dirtyVlan "), 2U);
  EXPECT_EQ(log.lines, (Lines{"+A/Ethernet1", "A/Ethernet1 10", "initDone", "A/Ethernet1 no 10", "-A/Ethernet1",
                              "+A/Ethernet1", "A/Ethernet1 10"}));
}

TEST_F(BacklogRunTest, markInsideARunIsServedByIt) {
  StateLog log(agent.state);
  const std::uint64_t dispatched = codef().dispatchCount();
  log.onceAt("A/Ethernet1 10", [this] {
    EXPECT_TRUE(codef().isRunning());
    codef().doProcessBacklog();
    agent.memberIs(10, "Ethernet2");
  });
  agent.memberIs(10, "Ethernet1");
  run();
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 10));
  EXPECT_EQ(codef().dispatchCount(), dispatched + 1);
  EXPECT_FALSE(codef().isRunning());
}

TEST_F(BacklogRunTest, vlanMarkedAgainWhileItIsServedStaysAndIsServedAgain) {
  StateLog log(agent.state);
  const TraceLines trace("TopoLib", progress);
  log.onceAt("A/Ethernet1 10", [this] { agent.libSm->doOnVlanPortUpdate(10, {}); });
  agent.memberIs(10, "Ethernet1");
  run();
  EXPECT_EQ(trace.count(5, "Processing vlan 10"), 2U);
  EXPECT_EQ(trace.count(5, "deleting vlan 10 from the dirtyVlan "), 1U);
  EXPECT_TRUE(directory().dirtyVlan().empty());
}

TEST_F(BacklogRunTest, interfaceMarkedAgainWhileItIsServedIsServedAgain) {
  StateLog log(agent.state);
  log.onceAt("A/Ethernet1 10", [this] { agent.brConfig->vlanConfig(10)->vlanPortConfigDel("Ethernet1"); });
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
}

TEST_F(BacklogRunTest, mappingCheckTellsWhetherLibStateAgrees) {
  membersAre({"Ethernet1"});
  agent.libSm->doOnVlanPortUpdate(10, {});
  TraceLines trace("TopoLib", Mox::traceLevel(2));
  agent.drain();
  EXPECT_TRUE(trace.has(2, "topoPortMapChanged:  oldTopoName A vid 10"));
  EXPECT_TRUE(trace.has(2, "topoPort mapping in correct in libState"));
  EXPECT_FALSE(trace.has(2, "topoPort mapping stale in libState"));
  trace.clear();
  agent.libSm->doOnVlanPortUpdate(10, {});
  agent.memberIs(10, "Ethernet2");
  agent.drain();
  EXPECT_TRUE(trace.has(2, "topoPort mapping stale in libState"));
  EXPECT_FALSE(trace.has(2, "topoPort mapping in correct in libState"));
}

TEST_F(BacklogRunTest, exceptionOfAReaderGoesToWhoeverDispatchedAndTheVlanIsServedAgain) {
  StateLog log(agent.state);
  log.onceAt("A/Ethernet1 10", [] { throw std::runtime_error("reader"); });
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(10, "Ethernet2");
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_FALSE(codef().isRunning());
  EXPECT_TRUE(codef().bookmark().isNone());
  ASSERT_NE(directory().dirtyVlan(10), nullptr);
  EXPECT_TRUE(directory().dirtyVlan(10)->dirty());
  EXPECT_EQ(Mox::activityManager()->nextDue(), 0.0);
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 10));
}

/// Topology A lingers and is configured again, so that its state machine is an orphan; VLAN 10 is registered with it.
class BacklogRunOrphan : public BacklogRunTest {
 protected:
  BacklogRunOrphan() {
    membersAre({"Ethernet1"});
    agent.config->topoConfigDel("A");
    agent.config->topoConfigIs("A", 1);
    directory().dirtyVlanDelAll();
  }
};

TEST_F(BacklogRunOrphan, newVlanIsSkipped) {
  agent.vlanIs(30, "A");
  agent.memberIs(30, "Ethernet2");
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  run();
  EXPECT_TRUE(trace.has(5, "isTopoOrphan is true"));
  EXPECT_TRUE(trace.has(5, "vlan 30 is a new vlan being mapped to orphan topo, skiping it"));
  EXPECT_TRUE(directory().dirtyVlan().empty());
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_EQ(agent.libSm->vlanConfigSm(30), nullptr);
  EXPECT_TRUE(codef().bookmark().isNone());
  EXPECT_TRUE(codef().oldTopoName().empty());
}

TEST_F(BacklogRunOrphan, registeredVlanLeavesAndTheTopologyIsRebuilt) {
  const StateLog log(agent.state);
  agent.libSm->doOnVlanPortUpdate(10, {});
  agent.drain();
  ASSERT_GE(log.lines.size(), 6U);
  EXPECT_EQ(Lines(log.lines.begin(), log.lines.begin() + 6),
            (Lines{"A/Ethernet1 no 10", "-A/Ethernet1", "-A", "+A", "+A/Ethernet1", "A/Ethernet1 10"}));
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_EQ(agent.libSm->topoConfigSm("A")->topoConfig(), agent.config->topoConfig("A"));
}

TEST_F(BacklogRunOrphan, registeredVlanIsNotServedAgainWhileOthersAreThere) {
  agent.libSm->topoToVlanMap()->mappedVlan("A")->vlanIs(40);
  agent.libSm->doOnVlanPortUpdate(10, {});
  agent.drain();
  EXPECT_EQ(registered().topoOfVlan(10), "");
  EXPECT_FALSE(agent.carries("A", "Ethernet1", 10));
  agent.libSm->doOnVlanPortUpdate(40, {});
  agent.drain();
  EXPECT_EQ(registered().topoOfVlan(10), "A");
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
}

TEST_F(BacklogRunTest, lingeringTopologyTakesNobodyInAndGoesWithItsLastVlan) {
  membersAre({"Ethernet1"});
  agent.vlanIs(11, "A");
  agent.memberIs(11, "Ethernet1");
  agent.drain();
  agent.config->topoConfigDel("A");
  agent.drain();
  EXPECT_EQ(agent.state->topo("A"), nullptr);
  EXPECT_EQ(registered().mappedVlan("A"), nullptr);
}

TEST_F(BacklogRunTest, partlyDirtyVlanIsAddedOnlyWhereItIsRegistered) {
  agent.vlanIs(10, "B");
  directory().dirtyVlanDelAll();
  membersAre({"Ethernet1"});
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  agent.libSm->doOnVlanPortUpdate(10, {});
  agent.drain();
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 10));
}

}  // namespace Topology::Library::BacklogRunTest
