// VLANs that reach the ports of another VLAN: the books, and what is inherited and withdrawn when they change.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Agent.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::LibSmFloodsetTest {

using Bridging::AllowedTrafficDirection;
using Bridging::VlanPortConfig;
using Test::Agent;
using Test::assertionReport;
using Test::Messages;
using Test::StateLog;
using Test::TraceLines;

using Lines = std::vector<std::string>;
using Traces = std::vector<std::pair<unsigned, std::string>>;

const VlanPortConfig ingress{AllowedTrafficDirection::ingress};
const VlanPortConfig egress{AllowedTrafficDirection::egress};

/// VLAN 10 of topology A with Ethernet1, VLAN 11 of A with Ethernet2, VLAN 20 of topology B without members.
class LibSmFloodset : public testing::Test {
 protected:
  LibSmFloodset() {
    agent.twoTopologiesIs();
    agent.vlanIs(10, "A");
    agent.vlanIs(11, "A");
    agent.vlanIs(20, "B");
    agent.memberIs(10, "Ethernet1", ingress);
    agent.memberIs(11, "Ethernet2");
    agent.brConfig->vlanConfigIs(20);
    agent.startLibrary();
    agent.drain();
  }

  LibSm& sm() { return *agent.libSm; }
  void expansionIs(unsigned vid, unsigned expVid) { agent.brConfig->vlanConfig(vid)->floodsetExpandedVlanIs(expVid); }
  /// Whether the books hold that one expansion of VLAN 20, and no other.
  [[nodiscard]] bool booksHold(unsigned expVid, const Mox::String& topo) {
    const VlanToVlanSet* const set = sm().vlanToExpVlanSetMap(20);
    const VlanToVlanSet* const inverse = sm().expVlanToVlanSetMap(expVid);
    const Mox::String* const recorded = sm().vidToExpandedTopoMap(20);
    return sm().vlanToExpVlanSetMap().size() == 1 && sm().expVlanToVlanSetMap().size() == 1 && set != nullptr &&
           set->someVlan().size() == 1 && set->someVlan(expVid) && inverse != nullptr &&
           inverse->someVlan().size() == 1 && inverse->someVlan(20) && recorded != nullptr && *recorded == topo;
  }
  [[nodiscard]] bool booksAreEmpty() {
    return sm().vlanToExpVlanSetMap().empty() && sm().expVlanToVlanSetMap().empty() &&
           sm().vidToExpandedTopoMap().empty();
  }

  Agent agent;
};

TEST_F(LibSmFloodset, expansionIsAppliedAtOnceWithTheExpandedVlansValue) {
  const StateLog log(agent.state);
  expansionIs(20, 10);
  EXPECT_EQ(log.lines, (Lines{"+B/Ethernet1", "B/Ethernet1 20"}));
  EXPECT_EQ(*agent.port("B", "Ethernet1")->vlanPortConfig(20), ingress);
  EXPECT_TRUE(booksHold(10, "B"));
}

TEST_F(LibSmFloodset, inheritedPortIsNotActiveUntilSomethingAnnouncesIt) {
  expansionIs(20, 10);
  agent.drain();
  ASSERT_NE(agent.port("B", "Ethernet1"), nullptr);
  EXPECT_FALSE(agent.port("B", "Ethernet1")->active());
  EXPECT_EQ(sm().topoConfigSm("B")->topoPortConfigSm("Ethernet1"), nullptr);
  agent.linkIs("Ethernet1", Interface::LinkStatus::down);
  agent.linkIs("Ethernet1");
  EXPECT_TRUE(agent.port("B", "Ethernet1")->active());
}

TEST_F(LibSmFloodset, ownEntryIsNeitherOverwrittenNorRemoved) {
  agent.memberIs(20, "Ethernet1", egress);
  agent.drain();
  const StateLog log(agent.state);
  expansionIs(20, 10);
  expansionIs(20, 0);
  agent.drain();
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_EQ(*agent.port("B", "Ethernet1")->vlanPortConfig(20), egress);
}

TEST_F(LibSmFloodset, endOfAnExpansionTakesThePortsThatCarriedNothingElse) {
  agent.brConfig->vlanConfigIs(21);
  agent.vlanIs(21, "B");
  agent.memberIs(10, "Ethernet2");
  agent.memberIs(21, "Ethernet2");
  agent.drain();
  expansionIs(20, 10);
  agent.drain();
  const StateLog log(agent.state);
  expansionIs(20, 0);
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  ASSERT_NE(agent.port("B", "Ethernet2"), nullptr);
  EXPECT_FALSE(agent.carries("B", "Ethernet2", 20));
  EXPECT_TRUE(agent.carries("B", "Ethernet2", 21));
  EXPECT_EQ(log.lines.size(), 3U);
  EXPECT_TRUE(booksAreEmpty());
}

TEST_F(LibSmFloodset, mappingToTheTopologyOfTheExpansionChangesNothing) {
  expansionIs(20, 10);
  agent.drain();
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  sm().handleVidToTopoMap(20);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_FALSE(trace.has(8, "LibSm::undoExpandVlanTopo vlan:20 expVlan:10"));
  EXPECT_FALSE(trace.has(8, "LibSm::doExpandVlanTopo topo:B expVlan:10"));
  EXPECT_TRUE(booksHold(10, "B"));
}

TEST_F(LibSmFloodset, otherExpandedVlanWithdrawsTheFirstOneBefore) {
  expansionIs(20, 10);
  agent.drain();
  const StateLog log(agent.state);
  expansionIs(20, 11);
  EXPECT_EQ(log.lines, (Lines{"B/Ethernet1 no 20", "-B/Ethernet1", "+B/Ethernet2", "B/Ethernet2 20"}));
  EXPECT_TRUE(booksHold(11, "B"));
}

TEST_F(LibSmFloodset, sameExpandedVlanAgainIsAppliedAgainAndWithdrawsNothing) {
  expansionIs(20, 10);
  agent.drain();
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  sm().handleFloodsetExpandedVlan(20, 10);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_TRUE(trace.has(8, "LibSm::doExpandVlanTopo topo:B expVlan:10"));
  EXPECT_FALSE(trace.has(8, "LibSm::undoExpandVlanTopo vlan:20 expVlan:10"));
  EXPECT_TRUE(booksHold(10, "B"));
}

TEST_F(LibSmFloodset, movedVlanTakesItsExpansionAlongAtOnce) {
  expansionIs(20, 10);
  agent.drain();
  const StateLog log(agent.state);
  agent.vlanIs(20, "A");
  EXPECT_EQ(log.lines, (Lines{"B/Ethernet1 no 20", "-B/Ethernet1", "A/Ethernet1 20"}));
  EXPECT_TRUE(booksHold(10, "A"));
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 20));
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
}

TEST_F(LibSmFloodset, unmappedVlanLosesWhatItInheritedAndTheRecord) {
  expansionIs(20, 10);
  agent.drain();
  agent.config->vidToTopoMapDel(20);
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  EXPECT_EQ(sm().vidToExpandedTopoMap(20), nullptr);
  EXPECT_TRUE(sm().vlanToExpVlanSetMapHas(20));
  EXPECT_TRUE(sm().expVlanToVlanSetMapHas(10));
  agent.drain();
  agent.vlanIs(20, "B");
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 20));
  EXPECT_TRUE(booksHold(10, "B"));
}

TEST_F(LibSmFloodset, expansionOfAnUnmappedVlanIsAppliedWhenItIsMapped) {
  agent.config->vidToTopoMapDel(20);
  agent.drain();
  const StateLog log(agent.state);
  expansionIs(20, 10);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_TRUE(booksHold(10, ""));
  agent.vlanIs(20, "B");
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 20));
  EXPECT_TRUE(booksHold(10, "B"));
}

TEST_F(LibSmFloodset, expandedVlanThatIsMappedLaterIsInherited) {
  agent.config->vidToTopoMapDel(10);
  agent.drain();
  expansionIs(20, 10);
  agent.drain();
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  agent.vlanIs(10, "A");
  agent.drain();
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 20));
}

TEST_F(LibSmFloodset, topologyThatAppearsLaterIsExpandedInto) {
  agent.vlanIs(20, "C");
  expansionIs(20, 10);
  agent.drain();
  agent.topoIs("C");
  agent.drain();
  EXPECT_TRUE(agent.carries("C", "Ethernet1", 20));
}

TEST_F(LibSmFloodset, visitAppliesTheExpansionsBeforeItFinishes) {
  expansionIs(20, 10);
  agent.drain();
  sm().doOnVlanPortUpdate(20, {});
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib", Mox::traceLevel(5) | Mox::traceLevel(8));
  agent.drain();
  EXPECT_EQ(log.lines, (Lines{"B/Ethernet1 no 20", "-B/Ethernet1", "+B/Ethernet1", "B/Ethernet1 20"}));
  const auto& lines = trace.lines();
  const auto applied =
      std::find(lines.begin(), lines.end(), std::pair(8U, std::string("LibSm::doExpandVlanTopo topo:B expVlan:10")));
  ASSERT_NE(applied, lines.end());
  EXPECT_EQ(*(applied + 1), std::pair(5U, std::string("deleting vlan 20 from the dirtyVlan ")));
}

TEST_F(LibSmFloodset, twoVlansExpandIntoOne) {
  agent.brConfig->vlanConfigIs(21);
  agent.vlanIs(21, "B");
  agent.drain();
  expansionIs(20, 10);
  expansionIs(21, 10);
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 20));
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 21));
  EXPECT_EQ(sm().expVlanToVlanSetMap(10)->someVlan().size(), 2U);
  expansionIs(20, 0);
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 21));
  EXPECT_EQ(sm().expVlanToVlanSetMap(10)->someVlan().size(), 1U);
}

TEST_F(LibSmFloodset, expansionInTheSameTopology) {
  agent.vlanIs(20, "A");
  agent.drain();
  expansionIs(20, 10);
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 20));
  EXPECT_FALSE(agent.carries("A", "Ethernet2", 20));
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 20));
  expansionIs(20, 0);
  EXPECT_FALSE(agent.carries("A", "Ethernet1", 20));
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
}

TEST_F(LibSmFloodset, expansionThatIsThereAtTheStartIsApplied) {
  Agent other;
  other.topoIs("A");
  other.topoIs("B");
  other.vlanIs(10, "A");
  other.vlanIs(20, "B");
  other.memberIs(10, "Ethernet1");
  other.brConfig->vlanConfigIs(20)->floodsetExpandedVlanIs(10);
  other.startLibrary();
  other.drain();
  EXPECT_TRUE(other.carries("B", "Ethernet1", 20));
}

TEST_F(LibSmFloodset, doAndUndoNeedBothTopologiesAndTheMapping) {
  expansionIs(20, 10);
  agent.drain();
  const StateLog log(agent.state);
  sm().doExpandVlanTopo("C", 20, 10);
  sm().undoExpandVlanTopo("C", 20, 10);
  sm().doExpandVlanTopo("B", 20, 12);
  sm().undoExpandVlanTopo("B", 20, 12);
  agent.config->vidToTopoMapIs(12, "C");
  sm().doExpandVlanTopo("B", 20, 12);
  sm().undoExpandVlanTopo("B", 20, 12);
  sm().doExpandVlanTopo("B", 22, 10);
  sm().undoExpandVlanTopo("B", 22, 10);
  EXPECT_EQ(log.lines, Lines{});
}

TEST_F(LibSmFloodset, expansionIsTraced) {
  const TraceLines trace("TopoLib");
  const Messages messages;
  expansionIs(20, 10);
  EXPECT_EQ(trace.lines(), (Traces{{8, "handleFloodsetExpandedVlan"},
                                   {8, "VlanConfigSm::handleFloodsetExpandedVlan vlan:20 expVlan:10"},
                                   {8, "LibSm::handleFloodsetExpandedVlan vlan:20 expVlan:10"},
                                   {8, "LibSm::doExpandVlanTopo topo:B expVlan:10"},
                                   {2, "B: Creating/Updating VlanPortConfig for Vlan20/Ethernet1"}}));
  EXPECT_EQ(messages.texts(), Lines{"B: Creating/Updating VlanPortConfig for Vlan20/Ethernet1"});
}

TEST_F(LibSmFloodset, endOfAnExpansionIsTraced) {
  expansionIs(20, 10);
  agent.drain();
  const TraceLines trace("TopoLib");
  expansionIs(20, 0);
  EXPECT_EQ(trace.lines(), (Traces{{8, "handleFloodsetExpandedVlan"},
                                   {8, "VlanConfigSm::handleFloodsetExpandedVlan vlan:20 expVlan:0"},
                                   {8, "LibSm::handleFloodsetExpandedVlan vlan:20 expVlan:0"},
                                   {8, "LibSm::undoExpandVlanTopo vlan:20 expVlan:10"},
                                   {2, "B: Deleting VlanPortConfig for Vlan20/Ethernet1"},
                                   {2, "B: no more VPCs, deleting Port Ethernet1"}}));
}

class LibSmFloodsetDeathTest : public LibSmFloodset {
 protected:
  /// A state machine that waits for the interface statuses.
  LibSm& waiting() {
    other = LibSm::LibSmIs("other", agent.config, agent.status, nullptr, agent.brConfig, libStateFactory("other"),
                           LibSmMode::createStatus, true, true, 0);
    return *other;
  }
  static auto notInitialised(const std::string& function) {
    return assertionReport("initialized() && \"Did you forget to set ethIntfStatusDir?\"", function);
  }

  Mox::Ptr<LibSm> other;
};

TEST_F(LibSmFloodsetDeathTest, entryPointsNeedTheStartUp) {
  ASSERT_FALSE(waiting().initialized());
  EXPECT_DEATH(other->handleFloodsetExpandedVlan(20, 10), notInitialised("handleFloodsetExpandedVlan"));
  EXPECT_DEATH(other->doExpandVlanTopo("B", 20, 10), notInitialised("doExpandVlanTopo"));
  EXPECT_DEATH(other->undoExpandVlanTopo("B", 20, 10), notInitialised("undoExpandVlanTopo"));
  EXPECT_DEATH(other->handleVidToTopoMap(20), notInitialised("handleVidToTopoMap"));
}

TEST_F(LibSmFloodsetDeathTest, recordThatDisagreesWithTheMappingAborts) {
  expansionIs(20, 10);
  sm().vidToExpandedTopoMapIs(20, "A");
  EXPECT_DEATH(expansionIs(20, 11),
               testing::HasSubstr("Assertion '( !config()->vidToTopoMapHas( vid ) || config()->vidToTopoMap( vid "
                                  ")->name() == topoName ) && \"Current topo is not the expanded topo!\"' failed."));
}

TEST_F(LibSmFloodsetDeathTest, vlanThatIsSourceAndTargetAbortsWhenItIsMapped) {
  agent.brConfig->vlanConfigIs(30);
  expansionIs(20, 10);
  expansionIs(10, 30);
  EXPECT_DEATH(
      agent.vlanIs(10, "B"),
      testing::HasSubstr("Assertion '!vlanToExpVlanSetMapHas( vid ) || !expVlanToVlanSetMapHas( vid )' failed."));
}

}  // namespace Topology::Library::LibSmFloodsetTest
