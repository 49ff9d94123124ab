// Changes that come between two slices of the backlog.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/TraceLines.h"
#include "tests/topolib/BacklogSlice.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::BacklogBetweenSlicesTest {

using Test::BacklogSlice;
using Test::StateLog;
using Test::threePorts;
using Test::TraceLines;

const Bridging::VlanPortConfig ingress{Bridging::AllowedTrafficDirection::ingress};

/// The VLAN is moved while its visit is interrupted, in the initial pass, where marks are dropped.
class BacklogSliceInitial : public BacklogSlice {
 protected:
  BacklogSliceInitial() {
    membersAre(threePorts);
    agent.startLibrary();
    oneItemASlice();
    run();
    EXPECT_FALSE(agent.state->initDone());
    EXPECT_EQ(codef().bookmark(), Bridging::VlanIdOrNone(10));
    EXPECT_EQ(registered().topoOfVlan(10), "A");
    EXPECT_EQ(portsCarrying("A"), 1U);
  }
  /// Where the VLAN is when the initial pass ends.
  void endInitialPass() {
    StateLog log(agent.state);
    log.onceAt("initDone", [this] {
      inA = portsCarrying("A");
      inB = portsCarrying("B");
      topo = registered().topoOfVlan(10);
    });
    agent.drain();
    EXPECT_TRUE(agent.state->initDone());
  }

  std::size_t inA = 0;
  std::size_t inB = 0;
  Mox::String topo = "?";
};

TEST_F(BacklogSliceInitial, movedVlanIsVisitedFromTheFirstStep) {
  agent.vlanIs(10, "B");
  EXPECT_FALSE(directory().dirtyVlan(10)->dirty());
  const TraceLines trace("TopoLib", Mox::traceLevel(5));
  endInitialPass();
  EXPECT_TRUE(trace.has(5, "oldTopoName is A"));
  EXPECT_EQ(inA, 0U);
  EXPECT_EQ(inB, 3U);
  EXPECT_EQ(topo, "B");
  EXPECT_EQ(portsCarrying("A"), 0U);
  EXPECT_EQ(portsCarrying("B"), 3U);
}

TEST_F(BacklogSliceInitial, unmappedVlanLeavesAgain) {
  agent.config->vidToTopoMapDel(10);
  endInitialPass();
  EXPECT_EQ(inA, 0U);
  EXPECT_EQ(topo, "");
  EXPECT_EQ(portsCarrying("A"), 0U);
}

TEST_F(BacklogSliceInitial, vlanThatStaysGoesOn) {
  const TraceLines trace("TopoLib", Mox::traceLevel(5));
  const StateLog log(agent.state);
  run();
  run();
  EXPECT_EQ(log.lines.size(), 4U);
  EXPECT_EQ(trace.count(5, " setting bookmark to 10"), 2U);
  EXPECT_FALSE(trace.has(5, "oldTopoName is A"));
  endInitialPass();
  EXPECT_EQ(inA, 3U);
  EXPECT_EQ(topo, "A");
}

TEST_F(BacklogSlice, vlanMovedBetweenSlicesIsVisitedAgain) {
  startWithThreePorts();
  oneItemASlice();
  for (unsigned slices = 1; slices <= 7; ++slices) {
    SCOPED_TRACE(slices);
    const std::string from = slices % 2 == 1 ? "A" : "B";
    const std::string to = slices % 2 == 1 ? "B" : "A";
    agent.libSm->doOnVlanPortUpdate(10, {});
    for (unsigned i = 0; i < slices; ++i) run();
    agent.vlanIs(10, to);
    agent.drain();
    EXPECT_EQ(portsCarrying(from), 0U);
    EXPECT_EQ(portsCarrying(to), 3U);
    EXPECT_EQ(registered().topoOfVlan(10), to.c_str());
  }
}

TEST_F(BacklogSlice, portChangedBetweenSlicesAfterItWasServedIsServedAgain) {
  startWithThreePorts();
  agent.libSm->doOnVlanPortUpdate(10, {});
  oneItemASlice();
  for (unsigned i = 0; i < 4; ++i) run();
  ASSERT_EQ(portsCarrying("A"), 1U);
  const Quill::IntfId served = std::as_const(*agent.state).topo("A")->port().begin().key();
  agent.brConfig->vlanConfig(10)->vlanPortConfigIs(served, ingress);
  ASSERT_NE(directory().dirtyVlan(10)->intf(served), nullptr);
  const TraceLines trace("TopoLib", Mox::traceLevel(5));
  agent.drain();
  EXPECT_EQ(*agent.state->topo("A")->port(served)->vlanPortConfig(10), ingress);
  EXPECT_EQ(trace.count(5, "vlan is not all dirty "), 2U);
  EXPECT_TRUE(directory().dirtyVlan().empty());
}

TEST_F(BacklogSlice, vlanMarkedWhileItIsBookmarkedIsServedFromTheFirstStep) {
  startWithThreePorts();
  agent.libSm->doOnVlanPortUpdate(10, {});
  oneItemASlice();
  for (unsigned i = 0; i < 4; ++i) run();
  agent.libSm->doOnVlanPortUpdate(10, {});
  const TraceLines trace("TopoLib", Mox::traceLevel(5));
  agent.drain();
  EXPECT_TRUE(trace.has(5, " setting bookmark to 10"));
  EXPECT_EQ(portsCarrying("A"), 3U);
  EXPECT_TRUE(codef().bookmark().isNone());
}

TEST_F(BacklogSlice, configurationThatGoesBetweenSlicesTakesEverythingAlong) {
  startWithThreePorts();
  oneItemASlice();
  for (unsigned slices = 1; slices <= 6; ++slices) {
    SCOPED_TRACE(slices);
    agent.libSm->doOnVlanPortUpdate(10, {});
    for (unsigned i = 0; i < slices; ++i) run();
    agent.brConfig->vlanConfigDel(10);
    agent.drain();
    EXPECT_EQ(portsCarrying("A"), 0U);
    EXPECT_EQ(agent.libSm->vlanConfigSm(10), nullptr);
    membersAre(threePorts);
    agent.drain();
    EXPECT_EQ(portsCarrying("A"), 3U);
  }
}

}  // namespace Topology::Library::BacklogBetweenSlicesTest
