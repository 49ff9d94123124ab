#include "topolib/vlan/VlanPortMapping.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/topolib/vlan/View.h"

namespace Topology::Library::Vlan::VlanPortMappingTest {

using Bridging::VlanPortConfig;
using Test::View;
using Test::ViewLog;
using Contents = std::set<std::string>;
using Direction = Bridging::AllowedTrafficDirection;
using Lines = std::vector<std::string>;
using PortState = Bridging::Topology::PortState;

const Contents openInA{"10", "10/Ethernet1 open both", "10/Ethernet1 in A"};
const Contents blockedInA{"10", "10/Ethernet1 blocked both", "10/Ethernet1 in A"};

/// A view over topology A, whose Ethernet1 is in a VLAN or two.
class PortOfA : public View {
 public:
  explicit PortOfA(const std::vector<unsigned>& vids = {10}, PortState portState = PortState::forwarding) {
    portUp("A", "Ethernet1", vids, portState);
    start();
  }
  [[nodiscard]] Library::Port& a() const { return port("A"); }
};

TEST(VlanPortMapping, knowsWhatItWasMadeOf) {
  const PortOfA agent;
  const VlanPortMapping& mapping = *agent.mapping("A");
  EXPECT_EQ(mapping.intf(), "Ethernet1");
  EXPECT_EQ(mapping.port(), &agent.a());
  EXPECT_TRUE(mapping.initialized());
  EXPECT_TRUE(mapping.hasNotificationActive());
  EXPECT_EQ(*std::as_const(*agent.view).topoVlan(10)->topoPort("Ethernet1")->topo("A"), &mapping);
}

TEST(VlanPortMapping, tellsOfANewVlanInOrder) {
  View agent;
  agent.portIs("A")->vlanPortConfigIs(10, VlanPortConfig(Direction::egress));
  agent.start();
  const ViewLog log(agent);
  agent.port("A").activeIs(true);
  EXPECT_EQ(log.lines,
            (Lines{"+10", "10 +Ethernet1", "10/Ethernet1 blocked", "10/Ethernet1 +A", "10/Ethernet1 egress"}));
}

TEST(VlanPortMapping, tellsOfNoBlockingOfANewPortThatStaysOpen) {
  View agent;
  agent.portIs("A")->vlanPortConfigIs(10, {});
  agent.port("A").stateIs(PortState::forwarding);
  agent.start();
  const ViewLog log(agent);
  agent.port("A").activeIs(true);
  EXPECT_EQ(log.lines, (Lines{"+10", "10 +Ethernet1", "10/Ethernet1 +A"}));
}

TEST(VlanPortMapping, tellsOfAnEndInOrder) {
  PortOfA agent({10}, PortState::blocking);
  const ViewLog log(agent);
  agent.a().activeIs(false);
  EXPECT_EQ(log.lines, (Lines{"10/Ethernet1 -A", "10 -Ethernet1", "-10"}));
}

TEST(VlanPortMapping, isInEveryVlanOfAnActivePort) {
  const PortOfA agent({10, 20});
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 open both", "10/Ethernet1 in A", "20",
                                        "20/Ethernet1 open both", "20/Ethernet1 in A"}));
}

TEST(VlanPortMapping, isOpenOnlyWhileForwarding) {
  PortOfA agent;
  for (const auto state : {PortState::disabled, PortState::blocking, PortState::learning}) {
    agent.a().stateIs(state);
    EXPECT_EQ(agent.contents(), blockedInA) << state;
    agent.a().stateIs(PortState::forwarding);
    EXPECT_EQ(agent.contents(), openInA);
  }
}

TEST(VlanPortMapping, opensAndBlocksInEveryVlan) {
  PortOfA agent({10, 20, 30});
  const ViewLog log(agent);
  agent.a().stateIs(PortState::learning);
  EXPECT_EQ(std::set<std::string>(log.lines.begin(), log.lines.end()),
            (Contents{"10/Ethernet1 blocked", "20/Ethernet1 blocked", "30/Ethernet1 blocked"}));
  EXPECT_EQ(log.lines.size(), 3U);
  agent.a().stateIs(PortState::blocking);
  EXPECT_EQ(log.lines.size(), 3U) << "nothing changes from one blocked state to another";
}

TEST(VlanPortMapping, leavesTheViewWithTheActivityOfItsPort) {
  PortOfA agent({10, 20});
  agent.portUp("B", "Ethernet2", {20});
  agent.a().activeIs(false);
  EXPECT_EQ(agent.contents(), (Contents{"20", "20/Ethernet2 open both", "20/Ethernet2 in B"}));
  agent.a().activeIs(true);
  EXPECT_EQ(agent.contents().size(), 8U);
}

TEST(VlanPortMapping, followsTheVlansOfItsPort) {
  PortOfA agent({10, 20});
  const ViewLog log(agent);
  agent.a().vlanPortConfigDel(20);
  EXPECT_EQ(agent.contents(), openInA);
  agent.a().vlanPortConfigIs(30, {});
  EXPECT_EQ(log.lines, (Lines{"20/Ethernet1 -A", "20 -Ethernet1", "-20", "+30", "30 +Ethernet1", "30/Ethernet1 +A"}));
}

TEST(VlanPortMapping, takesOnlyTheDirectionFromAConfigurationThatChanges) {
  PortOfA agent;
  const ViewLog log(agent);
  agent.a().vlanPortConfigIs(10, VlanPortConfig(Direction::ingress));
  agent.a().vlanPortConfigIs(10, VlanPortConfig(Direction::ingress, true));
  agent.a().vlanPortConfigIs(10, VlanPortConfig(Direction::none, true));
  agent.a().vlanPortConfigIs(10, {});
  EXPECT_EQ(log.lines, (Lines{"10/Ethernet1 ingress", "10/Ethernet1 none", "10/Ethernet1 both"}));
}

TEST(VlanPortMapping, ignoresTheFlushCounter) {
  PortOfA agent;
  const ViewLog log(agent);
  agent.a().fdbFlushIs(7);
  EXPECT_EQ(log.lines, Lines());
}

TEST(VlanPortMapping, saysNothingOfAnInactivePort) {
  View agent;
  agent.portIs("A")->vlanPortConfigIs(10, {});
  agent.start();
  const ViewLog log(agent);
  agent.port("A").stateIs(PortState::forwarding);
  agent.port("A").vlanPortConfigIs(20, {});
  agent.port("A").vlanPortConfigDel(10);
  EXPECT_EQ(log.lines, Lines());
}

// Several topologies.

TEST(VlanPortMapping, isInTheUnionOfTheTopologies) {
  PortOfA agent;
  agent.portUp("B");
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 open both", "10/Ethernet1 in A", "10/Ethernet1 in B"}));
  agent.a().activeIs(false);
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 open both", "10/Ethernet1 in B"}));
  agent.port("B").activeIs(false);
  EXPECT_EQ(agent.contents(), Contents());
}

TEST(VlanPortMapping, theLastWriterWins) {
  PortOfA agent;
  agent.portUp("B");
  agent.port("B").stateIs(PortState::blocking);
  EXPECT_TRUE(agent.contents().contains("10/Ethernet1 blocked both"));
  agent.a().vlanPortConfigIs(10, VlanPortConfig(Direction::egress));
  EXPECT_TRUE(agent.contents().contains("10/Ethernet1 open egress")) << "A's state and direction";
  agent.port("B").vlanPortConfigIs(10, VlanPortConfig(Direction::ingress));
  EXPECT_TRUE(agent.contents().contains("10/Ethernet1 blocked ingress")) << "B's state and direction";
}

TEST(VlanPortMapping, writesBlockedAlsoWhereItsOwnPortIsNoMember) {
  PortOfA agent;
  agent.portIs("B")->vlanPortConfigIs(10, {});
  agent.port("B").stateIs(PortState::learning);
  EXPECT_EQ(agent.contents(), blockedInA) << "B rewrites what A alone is in";
  agent.port("B").stateIs(PortState::forwarding);
  EXPECT_EQ(agent.contents(), openInA);
}

TEST(VlanPortMapping, leavesBlockedAndDirectionWhenATopologyIsWithdrawn) {
  PortOfA agent;
  agent.portUp("B");
  agent.port("B").vlanPortConfigIs(10, VlanPortConfig(Direction::none));
  agent.port("B").stateIs(PortState::blocking);
  agent.port("B").activeIs(false);
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 blocked none", "10/Ethernet1 in A"}));
}

// Forced ports.

TEST(VlanPortMapping, ofAForcedPortIsAMemberAndOpenWhateverItsState) {
  View agent;
  agent.portIs("A")->vlanPortConfigIs(10, {});
  agent.start();
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  for (const auto state : {PortState::disabled, PortState::blocking, PortState::learning, PortState::forwarding}) {
    agent.port("A").stateIs(state);
    EXPECT_EQ(agent.contents(), openInA) << state;
  }
  agent.port("A").vlanPortConfigIs(20, {});
  EXPECT_EQ(agent.contents().size(), 6U);
  agent.port("A").activeIs(true);
  agent.port("A").activeIs(false);
  EXPECT_EQ(agent.contents().size(), 6U);
}

TEST(VlanPortMapping, ofAPortForcedBeforeTheStartIsAMember) {
  View agent;
  agent.portIs("A")->vlanPortConfigIs(10, {});
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  agent.start();
  EXPECT_EQ(agent.contents(), openInA);
}

TEST(VlanPortMapping, leavesTheViewWhenAnInactivePortIsNoLongerForced) {
  for (const bool isFalse : {true, false}) {
    View agent;
    agent.portIs("A")->vlanPortConfigIs(10, {});
    agent.start();
    agent.view->forceEnabledPortsIs("Ethernet1", true);
    if (isFalse) agent.view->forceEnabledPortsIs("Ethernet1", false);
    if (!isFalse) agent.view->forceEnabledPortsDel("Ethernet1");
    EXPECT_EQ(agent.contents(), Contents());
  }
}

TEST(VlanPortMapping, isBlockedByItsStateAloneWhenAnActivePortIsNoLongerForced) {
  PortOfA agent({10}, PortState::blocking);
  const ViewLog log(agent);
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  EXPECT_EQ(agent.contents(), openInA);
  agent.view->forceEnabledPortsIs("Ethernet1", false);
  EXPECT_EQ(agent.contents(), blockedInA);
  EXPECT_EQ(log.lines, (Lines{"10/Ethernet1 open", "10/Ethernet1 blocked"}));
}

TEST(VlanPortMapping, takesFalseForNoEntry) {
  PortOfA agent({10}, PortState::blocking);
  const ViewLog log(agent);
  agent.view->forceEnabledPortsIs("Ethernet1", false);
  EXPECT_EQ(log.lines, Lines());
  agent.a().activeIs(false);
  EXPECT_EQ(agent.contents(), Contents());
}

// Its actions, called from outside.

TEST(VlanPortMapping, isUnboundFromItsPort) {
  PortOfA agent;
  VlanPortMapping& mapping = *agent.mapping("A");
  mapping.portDel();
  EXPECT_EQ(mapping.port(), nullptr);
  EXPECT_TRUE(agent.a().notifieeList()->empty());
  agent.a().activeIs(false);
  EXPECT_EQ(agent.contents(), openInA);
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  mapping.handleTopoPortStates();
  mapping.handleTopoVlanPort(10);
  EXPECT_EQ(agent.contents(), openInA) << "without a port it has nothing to say";
}

TEST(VlanPortMapping, takesTheZeroDirectionForAVlanThatThePortIsNotIn) {
  PortOfA agent;
  agent.a().vlanPortConfigIs(10, VlanPortConfig(Direction::none));
  agent.mapping("A")->doTopoVlanPortIs(20);
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 open none", "10/Ethernet1 in A", "20",
                                        "20/Ethernet1 open both", "20/Ethernet1 in A"}));
  agent.mapping("A")->handleTopoVlanPort(20);
  EXPECT_EQ(agent.contents().size(), 3U) << "the rule takes it away";
}

TEST(VlanPortMapping, deletesAVlanThatIsEmptyAlready) {
  PortOfA agent;
  (void)agent.view->topoVlanIs(20)->topoPortIs("Ethernet1");
  agent.mapping("A")->doTopoVlanPortDel(20);
  EXPECT_EQ(agent.contents(), openInA) << "the port was there through nobody";
  agent.mapping("A")->doTopoVlanPortDel(30);
  EXPECT_EQ(agent.contents(), openInA);
}

TEST(VlanPortMapping, changesNothingWhenItIsAskedAgain) {
  PortOfA agent({10, 20}, PortState::learning);
  const ViewLog log(agent);
  VlanPortMapping& mapping = *agent.mapping("A");
  mapping.handleInitialized();
  mapping.handleTopoPortActive();
  mapping.handleTopoVlanPort();
  mapping.handleTopoVlanPort(10);
  mapping.handleTopoPortStates();
  mapping.handleTopoPortState(10);
  mapping.handleTopoPortState(4094);
  mapping.doTopoVlanPortIs(20);
  EXPECT_EQ(log.lines, Lines());
}

TEST(VlanPortMapping, cleansUpEveryVlan) {
  PortOfA agent({10, 20});
  agent.mapping("A")->handleCleanup();
  EXPECT_EQ(agent.contents(), Contents());
}

}  // namespace Topology::Library::Vlan::VlanPortMappingTest
