#include "topolib/vlan/VlanLibSm.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "mox/Exception.h"
#include "tests/topolib/vlan/View.h"

namespace Topology::Library::Vlan::VlanLibSmTest {

using Test::View;
using Test::ViewLog;
using Contents = std::set<std::string>;
using Lines = std::vector<std::string>;

const Contents inA{"10", "10/Ethernet1 open both", "10/Ethernet1 in A"};

TEST(VlanLibSm, overAStateThatIsDoneIsCompleteWhenItIsMade) {
  View agent;
  agent.portUp("A");
  const ViewLog log(agent);
  agent.start();
  EXPECT_EQ(agent.contents(), inA);
  EXPECT_TRUE(agent.view->initDone());
  EXPECT_EQ(log.lines, (Lines{"+10", "10 +Ethernet1", "10/Ethernet1 +A", "initDone"}));
  EXPECT_EQ(agent.sm->topoLib(), agent.state.get());
  EXPECT_EQ(agent.sm->libVlanState(), agent.view);
  EXPECT_TRUE(agent.sm->hasNotificationActive());
  EXPECT_EQ(agent.sm->topoSm().size(), 1U);
  EXPECT_EQ(agent.sm->topoSm("A")->topo(), agent.state->topo("A"));
  EXPECT_EQ(agent.sm->topoSm("B"), nullptr);
}

TEST(VlanLibSm, buildsNothingBeforeTheFirstPassIsOver) {
  View agent;
  agent.portUp("A");
  const ViewLog log(agent);
  agent.start(false);
  agent.portUp("B", "Ethernet2", {20});
  agent.state->topoDel("B");
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  agent.sm->handleTopoLibTopo();
  agent.sm->handleTopoLibTopo("A");
  agent.sm->handleInitDone();
  EXPECT_EQ(log.lines, Lines());
  EXPECT_TRUE(agent.sm->topoSm().empty());
  EXPECT_FALSE(agent.view->initDone());
}

TEST(VlanLibSm, buildsEverythingWhenTheFirstPassIsOverAndIsDoneThen) {
  View agent;
  agent.start(false);
  agent.portUp("A");
  agent.portUp("B", "Ethernet2", {20});
  const ViewLog log(agent);
  agent.state->initDoneIs(true);
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 open both", "10/Ethernet1 in A", "20",
                                        "20/Ethernet2 open both", "20/Ethernet2 in B"}));
  EXPECT_EQ(log.lines.size(), 7U);
  EXPECT_EQ(log.lines.back(), "initDone");
}

TEST(VlanLibSm, isDoneOverAnEmptyState) {
  View agent;
  agent.start();
  EXPECT_TRUE(agent.view->initDone());
  EXPECT_EQ(agent.contents(), Contents());
}

TEST(VlanLibSm, followsTheTopologies) {
  View agent;
  agent.start();
  agent.portUp("A");
  EXPECT_EQ(agent.contents(), inA);
  agent.portUp("B", "Ethernet2", {10, 20});
  EXPECT_EQ(agent.sm->topoSm().size(), 2U);
  agent.state->topoDel("A");
  EXPECT_EQ(agent.sm->topoSm("A"), nullptr);
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet2 open both", "10/Ethernet2 in B", "20",
                                        "20/Ethernet2 open both", "20/Ethernet2 in B"}));
}

TEST(VlanLibSm, withdrawsATopologyBeforeItsStateMachineGoes) {
  View agent;
  agent.portUp("A");
  agent.start();
  std::vector<bool> seen;
  ViewLog log(agent);
  log.actionIs([&](const std::string&) { seen.push_back(agent.sm->topoSm("A") != nullptr); });
  agent.state->topoDel("A");
  EXPECT_EQ(log.lines, (Lines{"10/Ethernet1 -A", "10 -Ethernet1", "-10"}));
  EXPECT_EQ(seen, (std::vector{true, true, true}));
  EXPECT_EQ(agent.sm->topoSm("A"), nullptr);
}

TEST(VlanLibSm, keepsWhatAnotherTopologyHasOfThePort) {
  View agent;
  agent.portUp("A");
  agent.portUp("B");
  agent.start();
  const ViewLog log(agent);
  agent.state->topoDel("A");
  EXPECT_EQ(log.lines, Lines{"10/Ethernet1 -A"});
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 open both", "10/Ethernet1 in B"}));
}

TEST(VlanLibSm, staysDoneWhenTheStateBeginsAgain) {
  View agent;
  agent.portUp("A");
  agent.start();
  const ViewLog log(agent);
  agent.state->initDoneIs(false);
  agent.portUp("B", "Ethernet2");
  agent.state->topoDel("A");
  agent.sm->handleTopoLibTopo();
  EXPECT_TRUE(agent.view->initDone());
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(agent.contents(), inA);
  agent.state->initDoneIs(true);
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet2 open both", "10/Ethernet2 in B"}));
}

TEST(VlanLibSm, synchronisesWhatItWasNotToldOf) {
  View agent;
  agent.portUp("A");
  agent.start();
  agent.sm->hasNotificationActiveIs(false);
  agent.state->topoDel("A");
  agent.portUp("B", "Ethernet2");
  EXPECT_EQ(agent.contents(), inA);
  agent.sm->hasNotificationActiveIs(true);
  agent.sm->handleTopoLibTopo();
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet2 open both", "10/Ethernet2 in B"}));
  EXPECT_EQ(agent.sm->topoSm("A"), nullptr);
}

TEST(VlanLibSm, changesNothingThatIsRight) {
  View agent;
  agent.portUp("A");
  agent.start();
  const auto* const topoSm = agent.sm->topoSm("A");
  const auto* const mapping = agent.mapping("A");
  const ViewLog log(agent);
  agent.sm->handleInitDone();
  agent.sm->handleTopoLibTopo();
  agent.sm->handleTopoLibTopo("A");
  agent.sm->handleTopoLibTopo("unknown");
  agent.sm->handleForceEnabledPorts("Ethernet1");
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(agent.sm->topoSm("A"), topoSm);
  EXPECT_EQ(agent.mapping("A"), mapping);
}

TEST(VlanLibSm, handsAForcedPortToEveryTopologyThatHasIt) {
  View agent;
  for (const char* const topo : {"A", "B"}) agent.portIs(topo)->vlanPortConfigIs(10, {});
  agent.portIs("B", "Ethernet2")->vlanPortConfigIs(10, {});
  agent.start();
  EXPECT_EQ(agent.contents(), Contents());
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 open both", "10/Ethernet1 in A", "10/Ethernet1 in B"}));
  agent.view->forceEnabledPortsDel("Ethernet1");
  EXPECT_EQ(agent.contents(), Contents());
}

TEST(VlanLibSm, doesNothingForAForcedPortThatNoTopologyHas) {
  View agent;
  agent.portUp("A");
  agent.start();
  const ViewLog log(agent);
  agent.view->forceEnabledPortsIs("Ethernet9", true);
  agent.view->forceEnabledPortsDelAll();
  EXPECT_EQ(log.lines, Lines());
}

TEST(VlanLibSm, ignoresChangesWhileItsNotificationsAreOff) {
  View agent;
  agent.portIs("A")->vlanPortConfigIs(10, {});
  agent.start();
  agent.sm->hasNotificationActiveIs(false);
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  agent.port("A").activeIs(true);
  (void)agent.portUp("B", "Ethernet2");
  EXPECT_EQ(agent.contents(), Contents());
}

TEST(VlanLibSm, keepsOneStateMachineForATopology) {
  View agent;
  agent.portUp("A");
  agent.start();
  const Mox::Ptr<Topo> a = agent.state->topo("A");
  const Mox::Ptr<TopoSm> existing = agent.sm->topoSm("A");
  EXPECT_EQ(agent.sm->topoSmIs("A", a), existing);
  const auto other = libStateFactory("other")->topoIs("A");
  try {
    (void)agent.sm->topoSmIs("A", other);
    FAIL();
  } catch (const Mox::MutatorReinstantiatingException& e) {
    EXPECT_STREQ(e.what(), "topoSmIs: a member of this key exists, made with other arguments");
  }
  EXPECT_EQ(agent.sm->topoSm("A"), existing.get());
  EXPECT_EQ(agent.sm->topoSmIs("B", other)->name(), "B");
}

TEST(VlanLibSm, isToldToRemoveItsTopologies) {
  View agent;
  agent.portUp("A");
  agent.portUp("B", "Ethernet2");
  agent.start();
  const Mox::Ptr<TopoSm> a = agent.sm->topoSm("A");
  const ViewLog log(agent);
  agent.sm->topoSmDel("A");
  agent.sm->topoSmDel("unknown");
  EXPECT_TRUE(a->isRetired());
  agent.sm->topoSmDelAll();
  EXPECT_TRUE(agent.sm->topoSm().empty());
  EXPECT_EQ(log.lines, Lines()) << "only a clean-up withdraws from the view";
}

TEST(VlanLibSm, isUnboundFromTheState) {
  View agent;
  agent.start();
  agent.sm->topoLibDel();
  EXPECT_EQ(agent.sm->topoLib(), nullptr);
  agent.portUp("A");
  agent.state->initDoneIs(false);
  EXPECT_EQ(agent.contents(), Contents());
  EXPECT_TRUE(agent.state->notifieeList()->empty());
}

TEST(VlanLibSm, isUnboundFromTheView) {
  View agent;
  agent.portIs("A")->vlanPortConfigIs(10, {});
  agent.start();
  agent.sm->libVlanStateDel();
  EXPECT_EQ(agent.sm->libVlanState(), nullptr);
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  EXPECT_EQ(agent.contents(), Contents());
  EXPECT_TRUE(agent.view->notifieeList()->empty());
}

TEST(VlanLibSm, leavesTheViewAsItStandsWhenItEnds) {
  View agent;
  agent.portUp("A");
  agent.start();
  const ViewLog log(agent);
  agent.sm = nullptr;
  agent.port("A").activeIs(false);
  agent.state->topoDel("A");
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(agent.contents(), inA);
  EXPECT_TRUE(agent.view->initDone());
  EXPECT_TRUE(agent.state->notifieeList()->empty());
}

// Readers of the view that change what it reads from inside its notifications.

TEST(VlanLibSm, servesAReaderThatTakesTheTopologyBack) {
  for (const char* const at : {"+10", "10 +Ethernet1", "10/Ethernet1 blocked", "10/Ethernet1 +A"}) {
    SCOPED_TRACE(at);
    View agent;
    agent.portUp("A", "Ethernet1", {10}, View::PortState::blocking);
    ViewLog log(agent);
    log.onceAt(at, [&] { agent.state->topoDel("A"); });
    agent.start();
    EXPECT_EQ(agent.contents(), Contents());
    EXPECT_EQ(agent.sm->topoSm("A"), nullptr);
    EXPECT_TRUE(agent.view->initDone());
  }
}

TEST(VlanLibSm, servesAReaderThatReplacesTheTopology) {
  for (const char* const at : {"+10", "10 +Ethernet1", "10/Ethernet1 +A", "10/Ethernet1 -A", "10 -Ethernet1", "-10"}) {
    SCOPED_TRACE(at);
    View agent;
    agent.portUp("A");
    ViewLog log(agent);
    log.onceAt(at, [&] {
      agent.state->topoDel("A");
      agent.portUp("A", "Ethernet2");
    });
    agent.start();
    agent.state->topoDel("A");
    if (std::string(at).find('-') != std::string::npos) {
      EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet2 open both", "10/Ethernet2 in A"}));
      EXPECT_EQ(agent.sm->topoSm("A")->topo(), agent.state->topo("A"));
    } else {
      EXPECT_EQ(agent.contents(), Contents());
    }
  }
}

}  // namespace Topology::Library::Vlan::VlanLibSmTest
