// Runs of the backlog processor that stop before they are through, and go on later.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/BacklogSlice.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::BacklogSliceTest {

using Test::Agent;
using Test::BacklogSlice;
using Test::Start;
using Test::StateLog;
using Test::threePorts;
using Test::TraceLines;

using Traces = std::vector<std::pair<unsigned, std::string>>;

TEST_F(BacklogSlice, partlyDirtyVlanYieldsAfterOneInterface) {
  start();
  codef().yieldAfterOneIs(true);
  const std::uint64_t dispatched = codef().dispatchCount();
  membersAre(threePorts);
  run();
  EXPECT_EQ(portsCarrying("A"), 1U);
  EXPECT_EQ(directory().dirtyVlan(10)->intf().size(), 2U);
  run();
  EXPECT_EQ(portsCarrying("A"), 2U);
  EXPECT_EQ(codef().yieldBeforeFinishingCount(), 2U);
  EXPECT_EQ(codef().dispatchCount(), dispatched);
  EXPECT_TRUE(codef().bookmark().isNone());
  run();
  EXPECT_EQ(portsCarrying("A"), 3U);
  EXPECT_EQ(codef().yieldBeforeFinishingCount(), 2U);
  EXPECT_EQ(codef().dispatchCount(), dispatched + 1);
}

TEST_F(BacklogSlice, runThatYieldsCountsAndTellsOnlyThat) {
  start();
  membersAre(threePorts);
  oneItemASlice();
  const std::uint64_t dispatched = codef().dispatchCount();
  const std::uint64_t processed = codef().updatesProcessed();
  const double used = codef().timeUsed();
  agent.time->tickIs(0.001);
  TraceLines trace("TopoLib", Mox::traceLevel(5) | Mox::traceLevel(9));
  run();
  ASSERT_GE(trace.lines().size(), 2U);
  EXPECT_EQ(Traces(trace.lines().end() - 2, trace.lines().end()),
            (Traces{{9, "TopoLibCodef::doProcessBacklog idleIs false"}, {5, "running out of time, stop processing "}}));
  EXPECT_FALSE(trace.has(5, "done processing "));
  EXPECT_FALSE(codef().codefState()->idle());
  EXPECT_EQ(codef().timeMin(), 0.0);
  EXPECT_EQ(codef().yieldBeforeFinishingCount(), 1U);
  EXPECT_EQ(codef().dispatchCount(), dispatched);
  EXPECT_EQ(codef().updatesProcessed(), processed);
  EXPECT_EQ(codef().timeUsed(), used);
}

TEST_F(BacklogSlice, runThatIsCalledAgainComesInTheNextRound) {
  start();
  membersAre(threePorts);
  oneItemASlice();
  for (std::size_t served = 1; served <= 3; ++served) {
    EXPECT_EQ(run(), 1U);
    EXPECT_EQ(portsCarrying("A"), served);
    EXPECT_EQ(Mox::activityManager()->nextDue(), 0.0);
  }
}

TEST_F(BacklogSlice, sliceIsMeasuredByTheTime) {
  start();
  membersAre({"Ethernet1", "Ethernet2", "Ethernet3", "Ethernet4", "Ethernet5"});
  // A slice of 10 ms: the readings are 3 ms after the start for the VLAN, then 6, 9 and 12 for its interfaces.
  agent.time->tickIs(0.003);
  run();
  EXPECT_EQ(portsCarrying("A"), 3U);
  codef().backlogQuantumIs(0.005);
  run();
  EXPECT_EQ(portsCarrying("A"), 4U);
}

TEST_F(BacklogSlice, timeUsedIsThatOfRunsThatDoNotYield) {
  start();
  membersAre({"Ethernet1", "Ethernet2"});
  const double before = codef().timeUsed();
  agent.time->tickIs(0.001);
  run();
  EXPECT_EQ(portsCarrying("A"), 2U);
  EXPECT_NEAR(codef().timeUsed() - before, 0.004, 1e-9);
}

TEST_F(BacklogSlice, betweenTwoVlansARunYieldsWithoutBookmark) {
  start();
  agent.vlanIs(11, "A");
  agent.brConfig->vlanConfigIs(11);
  agent.libSm->doOnVlanPortUpdate(10, {});
  oneItemASlice();
  const TraceLines trace("TopoLib");
  run();
  EXPECT_EQ(directory().dirtyVlan().size(), 1U);
  EXPECT_TRUE(codef().bookmark().isNone());
  ASSERT_GE(trace.lines().size(), 2U);
  EXPECT_EQ(Traces(trace.lines().end() - 2, trace.lines().end()),
            (Traces{{9, "TopoLibCodef::doProcessBacklog idleIs false"},
                    {5, "running out of time, stop processing, done! "}}));
  EXPECT_EQ(codef().yieldBeforeFinishingCount(), 1U);
  run();
  EXPECT_TRUE(directory().dirtyVlan().empty());
  EXPECT_EQ(codef().yieldBeforeFinishingCount(), 1U);
  EXPECT_TRUE(codef().codefState()->idle());
}

TEST_F(BacklogSlice, yieldAfterOneYieldsBetweenTwoVlansAsWell) {
  start();
  codef().yieldAfterOneIs(true);
  agent.libSm->doOnVlanPortUpdate(10, {});
  agent.libSm->doOnVlanPortUpdate(11, {});
  agent.libSm->doOnVlanPortUpdate(12, {});
  for (std::size_t left = 3; left-- > 0;) {
    run();
    EXPECT_EQ(directory().dirtyVlan().size(), left);
  }
  EXPECT_EQ(codef().yieldBeforeFinishingCount(), 2U);
}

TEST_F(BacklogSlice, wholeVlanThatASliceInterruptsIsBookmarkedAndGoesOn) {
  start();
  membersAre(threePorts);
  agent.drain();
  agent.vlanIs(10, "B");
  oneItemASlice();
  run();
  EXPECT_EQ(codef().bookmark(), Bridging::VlanIdOrNone(10));
  EXPECT_EQ(codef().oldTopoName(), "A");
  EXPECT_EQ(codef().delPendingPortSet()->port().size(), 2U);
  EXPECT_EQ(codef().deletedPortSet()->port().size(), 1U);
  EXPECT_FALSE(directory().dirtyVlan(10)->dirty());
  EXPECT_EQ(portsCarrying("A"), 2U);
  const TraceLines trace("TopoLib");
  run();
  run();
  EXPECT_EQ(portsCarrying("A"), 0U);
  EXPECT_EQ(codef().oldTopoName(), "A");
  EXPECT_EQ(registered().topoOfVlan(10), "A");
  run();
  EXPECT_EQ(codef().oldTopoName(), "");
  EXPECT_EQ(codef().bookmark(), Bridging::VlanIdOrNone(10));
  EXPECT_EQ(registered().topoOfVlan(10), "B");
  EXPECT_EQ(portsCarrying("B"), 1U);
  EXPECT_EQ(codef().deletedPortSet()->port().size(), 1U);
  agent.drain();
  EXPECT_EQ(portsCarrying("B"), 3U);
  EXPECT_TRUE(codef().bookmark().isNone());
  EXPECT_FALSE(trace.has(8, "doVlanMapped"));
  EXPECT_EQ(trace.count(5, " setting bookmark to 10"), trace.count(5, "start iterating over dirty vlans "));
  EXPECT_EQ(trace.count(5, "Finished serving all the ports in old topo,Cleaning-up the deletedPortSet"), 1U);
}

TEST_F(BacklogSlice, eachPortIsServedOnceHoweverOftenASliceInterrupts) {
  start();
  membersAre({"Ethernet1", "Ethernet2", "Ethernet3", "Ethernet4", "Ethernet5"});
  agent.drain();
  const StateLog log(agent.state);
  oneItemASlice();
  agent.vlanIs(10, "B");
  agent.drain();
  EXPECT_EQ(log.lines.size(), 20U);
  for (unsigned i = 1; i <= 5; ++i) {
    const std::string intf = "Ethernet" + std::to_string(i);
    EXPECT_EQ(std::count(log.lines.begin(), log.lines.end(), "-A/" + intf), 1);
    EXPECT_EQ(std::count(log.lines.begin(), log.lines.end(), "+B/" + intf), 1);
  }
}

TEST_F(BacklogSlice, vlanWithoutAnOldTopologyIsFinishedInSlices) {
  start();
  membersAre({"Ethernet1", "Ethernet2", "Ethernet3", "Ethernet4", "Ethernet5"}, 30);
  agent.vlanIs(30, "A");
  oneItemASlice();
  const StateLog log(agent.state);
  std::size_t runs = 0;
  while (!directory().dirtyVlan().empty()) {
    run();
    ASSERT_LT(++runs, 20U);
  }
  EXPECT_EQ(portsCarrying("A", 30), 5U);
  EXPECT_EQ(log.lines.size(), 10U);
}

TEST_F(BacklogSlice, bookmarkedVlanComesFirstAndTheOthersInACircle) {
  start();
  membersAre(threePorts);
  agent.drain();
  agent.libSm->doOnVlanPortUpdate(10, {});
  oneItemASlice();
  run();
  ASSERT_EQ(codef().bookmark(), Bridging::VlanIdOrNone(10));
  for (const unsigned vid : {1U, 2U, 3U, 4000U, 4001U, 4002U}) agent.libSm->doOnVlanPortUpdate(vid, {});
  codef().backlogQuantumIs(1.0);
  const TraceLines trace("TopoLib", Mox::traceLevel(5));
  run();
  ASSERT_GE(trace.lines().size(), 2U);
  EXPECT_EQ(trace.lines()[1].second, "Processing vlan 10");
  for (const unsigned vid : {1U, 2U, 3U, 4000U, 4001U, 4002U}) {
    EXPECT_EQ(trace.count(5, "Processing vlan " + std::to_string(vid)), 1U) << vid;
  }
  EXPECT_TRUE(directory().dirtyVlan().empty());
}

TEST_F(BacklogSlice, yieldAfterOneGoesOnFromTheOldTopologyToTheNewOne) {
  start();
  membersAre({"Ethernet1", "Ethernet2"});
  agent.drain();
  codef().yieldAfterOneIs(true);
  agent.vlanIs(10, "B");
  run();
  EXPECT_EQ(portsCarrying("A"), 1U);
  run();
  EXPECT_EQ(portsCarrying("A"), 0U);
  EXPECT_EQ(portsCarrying("B"), 1U);
  run();
  EXPECT_EQ(portsCarrying("B"), 2U);
  EXPECT_TRUE(directory().dirtyVlan().empty());
  EXPECT_EQ(codef().yieldBeforeFinishingCount(), 2U);
}

TEST(BacklogSliceImmediate, neverYields) {
  Agent agent(Start{.deferProcessing = false});
  agent.topoIs("A");
  agent.startLibrary();
  TopoLibCodef& codef = *agent.libSm->topoLibCodef();
  codef.backlogQuantumIs(0.0);
  codef.yieldAfterOneIs(true);
  agent.time->tickIs(1.0);
  for (const std::string& intf : threePorts) agent.memberIs(10, intf);
  agent.vlanIs(10, "A");
  for (const std::string& intf : threePorts) EXPECT_TRUE(agent.carries("A", intf, 10));
  codef.doMark([&] {
    for (const unsigned vid : {1U, 2U, 3U}) agent.libSm->doOnVlanPortUpdate(vid, {});
    for (const std::string& intf : threePorts) agent.brConfig->vlanConfig(10)->vlanPortConfigDel(intf);
  });
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan().empty());
  EXPECT_TRUE(agent.state->topo("A")->port().empty());
  EXPECT_EQ(codef.yieldBeforeFinishingCount(), 0U);
  EXPECT_TRUE(codef.codefState()->idle());
}

}  // namespace Topology::Library::BacklogSliceTest
