// How the members of a VLAN come into the ports of its topology, and go.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Agent.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"
#include "topolib/FilterIntf.h"

namespace Topology::Library::LibSmVlanPortTest {

using Bridging::AllowedTrafficDirection;
using Bridging::VlanPortConfig;
using Bridging::Topology::PortState;
using Test::Agent;
using Test::assertionReport;
using Test::Messages;
using Test::StateLog;
using Test::TraceLines;

using Lines = std::vector<std::string>;

const VlanPortConfig ingress{AllowedTrafficDirection::ingress};
const VlanPortConfig egress{AllowedTrafficDirection::egress};

/// Topologies A and B; VLANs 10 and 20 of A without members.
class LibSmVlanPort : public testing::Test {
 protected:
  LibSmVlanPort() {
    agent.twoTopologiesIs();
    for (const unsigned vid : {10U, 20U}) {
      agent.vlanIs(vid, "A");
      agent.brConfig->vlanConfigIs(vid);
    }
    agent.startLibrary();
    agent.drain();
  }

  Agent agent;
  LibSm& sm() { return *agent.libSm; }
};

TEST_F(LibSmVlanPort, memberBecomesAPortAndIsActivatedInThisOrder) {
  agent.config->topoConfig("A")->topoPortConfig("Ethernet1")->fdbFlushIs(7);
  const StateLog log(agent.state);
  agent.memberIs(10, "Ethernet1", ingress);
  agent.drain();
  EXPECT_EQ(log.lines, (Lines{"+A/Ethernet1", "A/Ethernet1 10", "A/Ethernet1 active", "A/Ethernet1 state forwarding",
                              "A/Ethernet1 flush 7"}));
  EXPECT_EQ(*agent.port("A", "Ethernet1")->vlanPortConfig(10), ingress);
}

TEST_F(LibSmVlanPort, changedMemberIsOverwritten) {
  agent.memberIs(10, "Ethernet1", ingress);
  agent.drain();
  const StateLog log(agent.state);
  agent.memberIs(10, "Ethernet1", egress);
  agent.drain();
  EXPECT_EQ(log.lines, Lines{"A/Ethernet1 10"});
  EXPECT_EQ(*agent.port("A", "Ethernet1")->vlanPortConfig(10), egress);
}

TEST_F(LibSmVlanPort, memberOfTheSameValueIsSilent) {
  agent.memberIs(10, "Ethernet1", ingress);
  agent.drain();
  const StateLog log(agent.state);
  sm().doOnVlanPortConfigAdd(10, "Ethernet1", "A");
  EXPECT_EQ(log.lines, Lines{});
}

TEST_F(LibSmVlanPort, secondVlanOfAPortIsNotAnnounced) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  agent.memberIs(20, "Ethernet1");
  agent.drain();
  EXPECT_EQ(log.lines, Lines{"A/Ethernet1 20"});
  EXPECT_FALSE(trace.has(2, "A: notifying TopoConfigSm about new Port Ethernet1"));
  EXPECT_FALSE(trace.has(3, "A: TopoPortConfig event for Ethernet1"));
}

TEST_F(LibSmVlanPort, oneOfTwoVlansLeavesThePort) {
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(20, "Ethernet1");
  agent.drain();
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  agent.brConfig->vlanConfig(10)->vlanPortConfigDel("Ethernet1");
  agent.drain();
  EXPECT_EQ(log.lines, Lines{"A/Ethernet1 no 10"});
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  EXPECT_FALSE(trace.has(3, "A: TopoPortConfig event for Ethernet1"));
}

TEST_F(LibSmVlanPort, lastVlanTakesThePortWithIt) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  ASSERT_NE(sm().topoConfigSm("A")->topoPortConfigSm("Ethernet1"), nullptr);
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  agent.brConfig->vlanConfig(10)->vlanPortConfigDel("Ethernet1");
  agent.drain();
  EXPECT_EQ(log.lines, (Lines{"A/Ethernet1 no 10", "-A/Ethernet1"}));
  EXPECT_EQ(trace.count(3, "A: TopoPortConfig event for Ethernet1"), 1U);
  EXPECT_EQ(trace.count(3, "Deleting TopoPortConfigSm for Ethernet1"), 1U);
  EXPECT_EQ(sm().topoConfigSm("A")->topoPortConfigSm("Ethernet1"), nullptr);
}

TEST_F(LibSmVlanPort, absentEntryIsAddedWithTheDefaultValue) {
  sm().doOnVlanPortConfigAdd(10, "Ethernet1", "A");
  ASSERT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_EQ(*agent.port("A", "Ethernet1")->vlanPortConfig(10), VlanPortConfig());
}

TEST_F(LibSmVlanPort, vlanWithoutConfigurationIsAddedWithTheDefaultValue) {
  sm().doOnVlanPortConfigAdd(30, "Ethernet1", "A");
  ASSERT_TRUE(agent.carries("A", "Ethernet1", 30));
  EXPECT_EQ(*agent.port("A", "Ethernet1")->vlanPortConfig(30), VlanPortConfig());
}

TEST_F(LibSmVlanPort, additionToATopologyThatIsNotPublishedChangesNothing) {
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  sm().doOnVlanPortConfigAdd(10, "Ethernet1", "C");
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_EQ(trace.lines().back(), std::pair(2U, std::string(" topo not yet created in libSate, returning C")));
}

TEST_F(LibSmVlanPort, deletionFromAMissingTopologyOrPortIsSilent) {
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib", Mox::traceLevel(2));
  sm().doOnVlanPortConfigDelete(10, "Ethernet1", "C");
  sm().doOnVlanPortConfigDelete(10, "Ethernet1", "A");
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(LibSmVlanPort, additionIsTraced) {
  agent.memberIs(10, "Ethernet1");
  const TraceLines trace("TopoLib");
  sm().doOnVlanPortConfigAdd(10, "Ethernet1", "A");
  const std::vector<std::pair<unsigned, std::string>> expected{
      {8, "doOnVlanPortConfigAdd10 intf Ethernet1 topoName A"},
      {2, "A: Creating/Updating VlanPortConfig for Vlan10/Ethernet1"},
      {2, "A: notifying TopoConfigSm about new Port Ethernet1"},
      {8, "handleTopoPortConfigOrStatus"},
      {3, "A: TopoPortConfig event for Ethernet1"},
      {3, "Creating TopoPortConfigSm for Ethernet1"},
      {8, "A: Initialize Ethernet1"}};
  EXPECT_EQ(trace.lines(), expected);
}

TEST_F(LibSmVlanPort, deletionIsTraced) {
  sm().doOnVlanPortConfigAdd(10, "Ethernet1", "A");
  const TraceLines trace("TopoLib");
  sm().doOnVlanPortConfigDelete(10, "Ethernet1", "A");
  const std::vector<std::pair<unsigned, std::string>> expected{
      {8, "doOnVlanPortConfigDelete10 intf Ethernet1 topoName A"},
      {2, "A: Deleting VlanPortConfig for Vlan10/Ethernet1 topoName A"},
      {2, "A: no more VPCs, deleting Port Ethernet1"},
      {8, "handleTopoPortConfigOrStatus"},
      {3, "A: TopoPortConfig event for Ethernet1"},
      {3, "Deleting TopoPortConfigSm for Ethernet1"},
      {8, "A: Cleanup Ethernet1"}};
  EXPECT_EQ(trace.lines(), expected);
}

TEST_F(LibSmVlanPort, additionAndDeletionAreLogged) {
  const Messages log;
  sm().doOnVlanPortConfigAdd(10, "Ethernet1", "A");
  EXPECT_EQ(log.texts(),
            (Lines{"A: Creating/Updating VlanPortConfig for Ethernet1", "Creating TopoPortConfigSm for Ethernet1"}));
  sm().doOnVlanPortConfigDelete(10, "Ethernet1", "A");
  EXPECT_TRUE(log.has("A: Deleting VlanPortConfig for Vlan10/Ethernet1"));
}

TEST_F(LibSmVlanPort, changedMemberIsMarked) {
  const TraceLines trace("TopoLib");
  const Messages log;
  agent.memberIs(10, "Ethernet1");
  EXPECT_TRUE(trace.has(8, "handleVlanPortConfig"));
  EXPECT_TRUE(trace.has(4, "Marking port Ethernet1 in vlan 10 dirty "));
  EXPECT_TRUE(log.has("Marking port Ethernet1 dirty"));
  const DirtyVlan* const dv = sm().dirtyVlanDir()->dirtyVlan(10);
  ASSERT_NE(dv, nullptr);
  EXPECT_FALSE(dv->dirty());
  EXPECT_NE(dv->intf("Ethernet1"), nullptr);
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
}

TEST_F(LibSmVlanPort, additionAndRemovalBeforeTheRunComeToNothing) {
  const StateLog log(agent.state);
  agent.memberIs(10, "Ethernet1");
  agent.brConfig->vlanConfig(10)->vlanPortConfigDel("Ethernet1");
  agent.drain();
  EXPECT_EQ(log.lines, Lines{});
}

TEST_F(LibSmVlanPort, currentPortSetHoldsThePortsThatCarryTheVlan) {
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(20, "Ethernet2");
  agent.drain();
  const TraceLines trace("TopoLib");
  sm().doPopulateCurrentPortSet(10, "A");
  const PortSet& set = *sm().topoLibCodef()->delPendingPortSet();
  EXPECT_EQ(set.port().size(), 1U);
  ASSERT_NE(set.port("Ethernet1"), nullptr);
  EXPECT_TRUE(*set.port("Ethernet1"));
  EXPECT_EQ(trace.lines(), (std::vector<std::pair<unsigned, std::string>>{{2, "old topo is A"}}));
}

TEST_F(LibSmVlanPort, currentPortSetOfAnAbsentTopologyIsEmpty) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  sm().doPopulateCurrentPortSet(10, "A");
  sm().doPopulateCurrentPortSet(10, "C");
  EXPECT_TRUE(sm().topoLibCodef()->delPendingPortSet()->port().empty());
}

/// Takes every interface but one.
class AllBut : public FilterIntf {
 public:
  explicit AllBut(Quill::IntfId refused) : refused_(refused) {}
  bool isValidIntf(Quill::IntfId intf) override { return intf != refused_; }
  [[nodiscard]] std::uint64_t address() { return reinterpret_cast<std::uintptr_t>(static_cast<FilterIntf*>(this)); }

 private:
  Quill::IntfId refused_;
};

TEST_F(LibSmVlanPort, refusedPortIsNeverPublished) {
  AllBut filter("Ethernet1");
  sm().validIntfPtrIs(filter.address());
  agent.vlanIs(30, "A");
  agent.brConfig->vlanConfigIs(30);
  agent.drain();
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  agent.memberIs(30, "Ethernet1");
  agent.memberIs(30, "Ethernet2");
  agent.drain();
  EXPECT_TRUE(trace.has(2, "Port Ethernet1 is not a valid port in the context of libSm"));
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
  EXPECT_FALSE(log.has("+A/Ethernet1"));
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 30));
}

TEST_F(LibSmVlanPort, filterReachesOnlyVlansThatComeIntoServiceLater) {
  AllBut filter("Ethernet1");
  sm().validIntfPtrIs(filter.address());
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
}

TEST_F(LibSmVlanPort, vlanMovesWithItsPorts) {
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(20, "Ethernet1");
  agent.drain();
  const StateLog log(agent.state);
  agent.vlanIs(10, "B");
  agent.drain();
  EXPECT_EQ(log.lines, (Lines{"A/Ethernet1 no 10", "+B/Ethernet1", "B/Ethernet1 10", "B/Ethernet1 active",
                              "B/Ethernet1 state forwarding"}));
}

TEST_F(LibSmVlanPort, syncWritesActiveThenStateThenFlush) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  const StateLog log(agent.state);
  sm().doSyncTopoPort("Ethernet1", "A", PortState::learning, 3, false);
  EXPECT_EQ(log.lines, (Lines{"A/Ethernet1 inactive", "A/Ethernet1 state learning", "A/Ethernet1 flush 3"}));
}

TEST_F(LibSmVlanPort, syncOfAMissingTopologyOrPortDoesNothing) {
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  sm().doSyncTopoPort("Ethernet1", "C", PortState::learning, 3, true);
  sm().doSyncTopoPort("Ethernet1", "A", PortState::learning, 3, true);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_TRUE(trace.lines().empty());
}

using LibSmVlanPortDeathTest = LibSmVlanPort;

TEST_F(LibSmVlanPortDeathTest, initialPassIsOverOnceTheVlanIsInitialised) {
  EXPECT_DEATH(sm().vlanConfigSm(10)->handleVlanPortConfig(),
               assertionReport("!initialized()", "handleVlanPortConfig"));
}

}  // namespace Topology::Library::LibSmVlanPortTest
