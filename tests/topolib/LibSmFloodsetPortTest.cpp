// VLANs that reach the ports of another VLAN: what becomes of inherited entries when members, mappings and configurations
// come and go.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Agent.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::LibSmFloodsetPortTest {

using Bridging::AllowedTrafficDirection;
using Bridging::VlanPortConfig;
using Test::Agent;
using Test::Messages;
using Test::StateLog;
using Test::TraceLines;

using Lines = std::vector<std::string>;
using Traces = std::vector<std::pair<unsigned, std::string>>;

const VlanPortConfig ingress{AllowedTrafficDirection::ingress};
const VlanPortConfig egress{AllowedTrafficDirection::egress};

/// VLAN 10 of topology A, into which VLAN 20 of topology B expands; both without members.
class LibSmFloodsetPort : public testing::Test {
 protected:
  LibSmFloodsetPort() {
    agent.twoTopologiesIs();
    agent.vlanIs(10, "A");
    agent.vlanIs(20, "B");
    agent.brConfig->vlanConfigIs(10);
    agent.brConfig->vlanConfigIs(20)->floodsetExpandedVlanIs(10);
    agent.startLibrary();
    agent.drain();
  }

  LibSm& sm() { return *agent.libSm; }
  void memberDel(unsigned vid, const std::string& intf) { agent.brConfig->vlanConfig(vid)->vlanPortConfigDel(intf); }
  [[nodiscard]] const VlanPortConfig* entry(const std::string& topo, const std::string& intf, unsigned vid) const {
    const Port* const port = agent.port(topo, intf);
    return port == nullptr ? nullptr : port->vlanPortConfig(vid);
  }
  [[nodiscard]] bool booksAreEmpty() {
    return sm().vlanToExpVlanSetMap().empty() && sm().expVlanToVlanSetMap().empty() &&
           sm().vidToExpandedTopoMap().empty();
  }

  Agent agent;
};

TEST_F(LibSmFloodsetPort, newMemberIsInherited) {
  const StateLog log(agent.state);
  agent.memberIs(10, "Ethernet1", ingress);
  agent.drain();
  EXPECT_EQ(log.lines, (Lines{"+A/Ethernet1", "A/Ethernet1 10", "A/Ethernet1 active", "A/Ethernet1 state forwarding",
                              "+B/Ethernet1", "B/Ethernet1 20"}));
  EXPECT_EQ(*entry("B", "Ethernet1", 20), ingress);
}

TEST_F(LibSmFloodsetPort, changedMemberIsInherited) {
  agent.memberIs(10, "Ethernet1", ingress);
  agent.drain();
  agent.memberIs(10, "Ethernet1", egress);
  agent.drain();
  EXPECT_EQ(*entry("B", "Ethernet1", 20), egress);
}

TEST_F(LibSmFloodsetPort, removedMemberIsWithdrawn) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  const StateLog log(agent.state);
  memberDel(10, "Ethernet1");
  agent.drain();
  EXPECT_EQ(log.lines, (Lines{"A/Ethernet1 no 10", "-A/Ethernet1", "B/Ethernet1 no 20", "-B/Ethernet1"}));
}

TEST_F(LibSmFloodsetPort, ownEntryWinsOverMembersThatComeAndGo) {
  agent.memberIs(20, "Ethernet1", egress);
  agent.drain();
  const StateLog log(agent.state);
  agent.memberIs(10, "Ethernet1", ingress);
  agent.drain();
  EXPECT_EQ(*entry("B", "Ethernet1", 20), egress);
  memberDel(10, "Ethernet1");
  agent.drain();
  EXPECT_EQ(*entry("B", "Ethernet1", 20), egress);
  EXPECT_FALSE(log.has("B/Ethernet1 20"));
}

TEST_F(LibSmFloodsetPort, unmappedVlanInheritsNothing) {
  agent.config->vidToTopoMapDel(20);
  agent.drain();
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
}

TEST_F(LibSmFloodsetPort, vlanOfAnAbsentTopologyInheritsNothing) {
  agent.vlanIs(20, "C");
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_EQ(agent.state->topo("C"), nullptr);
}

TEST_F(LibSmFloodsetPort, vlanWhoseConfigurationIsGoneInheritsNothing) {
  agent.brConfig->vlanConfigDel(20);
  sm().doOnVlanPortConfigAdd(10, "Ethernet1", "A");
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
}

TEST_F(LibSmFloodsetPort, ownEntryThatGoesIsReplacedByTheInheritedOne) {
  agent.memberIs(10, "Ethernet1", ingress);
  agent.memberIs(20, "Ethernet1", egress);
  agent.drain();
  memberDel(20, "Ethernet1");
  agent.drain();
  ASSERT_TRUE(agent.carries("B", "Ethernet1", 20));
  EXPECT_EQ(*entry("B", "Ethernet1", 20), ingress);
}

TEST_F(LibSmFloodsetPort, ownEntryThatGoesIsNotReplacedWhereTheExpandedVlanHasNone) {
  agent.memberIs(10, "Ethernet2");
  agent.memberIs(20, "Ethernet1");
  agent.drain();
  memberDel(20, "Ethernet1");
  agent.drain();
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  EXPECT_TRUE(agent.carries("B", "Ethernet2", 20));
}

TEST_F(LibSmFloodsetPort, inheritedEntryGoesIntoTheExpandingVlansTopologyOnly) {
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(20, "Ethernet1");
  agent.drain();
  memberDel(20, "Ethernet1");
  agent.drain();
  EXPECT_FALSE(agent.carries("A", "Ethernet1", 20));
}

TEST_F(LibSmFloodsetPort, memberOfBothIsNotInheritedWhileItIsOwn) {
  agent.memberIs(10, "Ethernet1", ingress);
  agent.memberIs(20, "Ethernet1", egress);
  agent.drain();
  sm().doOnVlanPortConfigDelete(20, "Ethernet1", "B");
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
}

TEST_F(LibSmFloodsetPort, propagationIsTraced) {
  agent.brConfig->vlanConfig(10)->vlanPortConfigIs("Ethernet1", ingress);
  agent.drain();
  TraceLines trace("TopoLib", Mox::traceLevel(2) | Mox::traceLevel(8));
  const Messages messages;
  sm().doOnVlanPortConfigAdd(10, "Ethernet1", "A");
  EXPECT_EQ(trace.lines(), (Traces{{8, "doOnVlanPortConfigAdd10 intf Ethernet1 topoName A"},
                                   {2, "A: Creating/Updating VlanPortConfig for Vlan10/Ethernet1"},
                                   {2, "B: Creating/Updating VlanPortConfig for Vlan20/Ethernet1"}}));
  EXPECT_EQ(messages.texts(), (Lines{"A: Creating/Updating VlanPortConfig for Ethernet1",
                                     "B: Creating/Updating VlanPortConfig for Vlan20/Ethernet1"}));
  trace.clear();
  sm().doOnVlanPortConfigDelete(10, "Ethernet1", "A");
  EXPECT_TRUE(trace.has(2, "B: Deleting VlanPortConfig for Vlan20/Ethernet1"));
  EXPECT_TRUE(trace.has(2, "B: no more VPCs, deleting Port Ethernet1"));
}

TEST_F(LibSmFloodsetPort, entryThatIsInheritedAgainIsTraced) {
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(20, "Ethernet1");
  agent.drain();
  agent.brConfig->vlanConfig(20)->vlanPortConfigDel("Ethernet1");
  const TraceLines trace("TopoLib", Mox::traceLevel(2));
  sm().doOnVlanPortConfigDelete(20, "Ethernet1", "B");
  EXPECT_EQ(trace.lines(), (Traces{{2, "B: Deleting VlanPortConfig for Vlan20/Ethernet1 topoName B"},
                                   {2, "B: no more VPCs, deleting Port Ethernet1"},
                                   {2, "B: Creating/Updating VlanPortConfig for Vlan20/Ethernet1"}}));
}

TEST_F(LibSmFloodsetPort, admittedPortIsMadeInactiveBeforeItIsWithdrawn) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  sm().topoConfigSm("B")->handleTopoPortConfigOrStatus("Ethernet1");
  ASSERT_TRUE(agent.port("B", "Ethernet1")->active());
  const StateLog log(agent.state);
  agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(0);
  EXPECT_EQ(log.lines,
            (Lines{"B/Ethernet1 no 20", "B/Ethernet1 inactive", "B/Ethernet1 state disabled", "-B/Ethernet1"}));
  EXPECT_EQ(sm().topoConfigSm("B")->topoPortConfigSm("Ethernet1"), nullptr);
}

TEST_F(LibSmFloodsetPort, firstOwnEntryOfAnotherVlanAnnouncesAnInheritedPort) {
  agent.memberIs(10, "Ethernet1");
  agent.vlanIs(30, "B");
  agent.brConfig->vlanConfigIs(30);
  agent.drain();
  ASSERT_FALSE(agent.port("B", "Ethernet1")->active());
  const TraceLines trace("TopoLib");
  agent.memberIs(30, "Ethernet1");
  agent.drain();
  EXPECT_TRUE(trace.has(2, "B: notifying TopoConfigSm about new Port Ethernet1"));
  EXPECT_TRUE(agent.port("B", "Ethernet1")->active());
}

TEST_F(LibSmFloodsetPort, expandedVlanThatIsUnmappedTakesTheInheritedEntriesAlong) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  agent.config->vidToTopoMapDel(10);
  agent.drain();
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
}

TEST_F(LibSmFloodsetPort, endOfAnExpansionWithdrawsWhatAnUnmappedVlanLeft) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  agent.config->vidToTopoMapDel(10);
  agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(0);
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
}

TEST_F(LibSmFloodsetPort, moveWithdrawsWhatAMovedExpandedVlanLeft) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  agent.topoIs("C");
  agent.vlanIs(10, "C");
  agent.vlanIs(20, "A");
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  agent.drain();
  EXPECT_TRUE(agent.carries("C", "Ethernet1", 10));
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 20));
}

TEST_F(LibSmFloodsetPort, withdrawalLeavesTheOwnEntriesOfARegisteredVlan) {
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(20, "Ethernet2", egress);
  agent.drain();
  agent.config->vidToTopoMapDel(10);
  agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(0);
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  ASSERT_TRUE(agent.carries("B", "Ethernet2", 20));
  EXPECT_EQ(*entry("B", "Ethernet2", 20), egress);
}

TEST_F(LibSmFloodsetPort, replacedExpansionLeavesTheOldInverse) {
  agent.vlanIs(11, "A");
  agent.memberIs(11, "Ethernet2");
  agent.drain();
  agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(11);
  EXPECT_FALSE(sm().expVlanToVlanSetMapHas(10));
  EXPECT_TRUE(sm().expVlanToVlanSetMap(11)->someVlan(20));
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
}

TEST_F(LibSmFloodsetPort, vlanWithoutConfigurationLeavesTheBooksAndItsPorts) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  agent.brConfig->vlanConfigDel(20);
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 20));
  agent.drain();
  EXPECT_TRUE(booksAreEmpty());
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
}

TEST_F(LibSmFloodsetPort, visitAnnouncesTheRemovalOfWhatAVlanWithoutConfigurationInherited) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  sm().topoConfigSm("B")->handleTopoPortConfigOrStatus("Ethernet1");
  agent.brConfig->vlanConfigDel(20);
  const TraceLines trace("TopoLib");
  agent.drain();
  EXPECT_EQ(trace.count(2, "B: Deleting VlanPortConfig for Vlan20/Ethernet1 topoName B"), 1U);
  EXPECT_EQ(trace.count(3, "Deleting TopoPortConfigSm for Ethernet1"), 1U);
}

TEST_F(LibSmFloodsetPort, configurationThatGoesWithAMoveLeavesTheBooksAtOnce) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  agent.brConfig->vlanConfigDel(20);
  agent.vlanIs(20, "A");
  EXPECT_TRUE(booksAreEmpty());
  agent.drain();
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  EXPECT_FALSE(agent.carries("A", "Ethernet1", 20));
}

TEST_F(LibSmFloodsetPort, configurationThatGoesBeforeTheExpandedVlanMovesLeavesTheBooksAtOnce) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  agent.brConfig->vlanConfigDel(20);
  agent.vlanIs(10, "B");
  EXPECT_TRUE(booksAreEmpty());
  agent.drain();
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 10));
  EXPECT_FALSE(agent.carries("B", "Ethernet1", 20));
}

TEST_F(LibSmFloodsetPort, replacedConfigurationLeavesTheBooksAtOnceWhenItIsMoved) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  agent.brConfig->vlanConfigDel(20);
  agent.brConfig->vlanConfigIs(20);
  agent.vlanIs(20, "A");
  EXPECT_TRUE(booksAreEmpty());
  agent.drain();
  EXPECT_FALSE(agent.carries("A", "Ethernet1", 20));
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
}

TEST_F(LibSmFloodsetPort, sourceThatBecomesATargetAfterItsConfigurationWasReplaced) {
  agent.brConfig->vlanConfigDel(20);
  agent.memberIs(20, "Ethernet2", egress);
  agent.brConfig->vlanConfig(10)->floodsetExpandedVlanIs(20);
  EXPECT_FALSE(sm().vlanToExpVlanSetMapHas(20));
  EXPECT_FALSE(sm().expVlanToVlanSetMapHas(10));
  EXPECT_TRUE(sm().vlanToExpVlanSetMapHas(10));
  agent.vlanIs(10, "A");
  agent.drain();
  ASSERT_TRUE(agent.carries("A", "Ethernet2", 10));
  EXPECT_EQ(*entry("A", "Ethernet2", 10), egress);
}

TEST_F(LibSmFloodsetPort, replacedConfigurationIsExpandedAfresh) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  agent.brConfig->vlanConfigDel(20);
  agent.brConfig->vlanConfigIs(20)->floodsetExpandedVlanIs(10);
  agent.drain();
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 20));
  EXPECT_TRUE(sm().vlanToExpVlanSetMapHas(20));
}

}  // namespace Topology::Library::LibSmFloodsetPortTest
