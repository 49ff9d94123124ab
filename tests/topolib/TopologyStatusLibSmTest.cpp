#include "topolib/TopologyStatusLibSm.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/topolib/Publisher.h"

namespace Topology::Library::TopologyStatusLibSmTest {

using Test::Publisher;
using Test::StatusLog;
using Contents = std::set<std::string>;
using Lines = std::vector<std::string>;

TEST(TopologyStatusLibSm, holdsWhatItWasMadeOf) {
  Publisher agent;
  agent.start();
  EXPECT_EQ(agent.sm->status(), agent.status);
  EXPECT_EQ(agent.sm->libState(), agent.state.get());
  EXPECT_EQ(agent.sm->config(), agent.config);
  EXPECT_EQ(agent.sm->ethIntfStatusDir(), agent.intfDir);
  ASSERT_NE(agent.sm->smFactory(), nullptr);
  EXPECT_EQ(agent.sm->smFactory()->ethIntfStatusDir(), agent.intfDir);
  EXPECT_TRUE(agent.sm->initialized());
  EXPECT_TRUE(agent.sm->hasNotificationActive());
}

TEST(TopologyStatusLibSm, overAStateThatIsDonePublishesAtOnce) {
  Publisher agent;
  agent.portUp("A");
  agent.topoIs("B", 2);
  agent.start();
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0", "B 2"}));
  EXPECT_EQ(agent.sm->topoSm().size(), 2U);
}

TEST(TopologyStatusLibSm, writesNothingBeforeTheFirstPassIsOver) {
  Publisher agent;
  agent.portUp("A");
  const StatusLog log(agent);
  agent.start(false);
  agent.topoIs("B", 2);
  agent.linkIs("Ethernet1", Publisher::LinkStatus::down);
  agent.linkIs("Ethernet1");
  agent.state->topoDel("B");
  EXPECT_EQ(log.lines, Lines());
  EXPECT_TRUE(agent.sm->topoSm().empty());
  agent.state->initDoneIs(true);
  EXPECT_EQ(log.lines, (Lines{"+A", "A +Ethernet1"}));
}

TEST(TopologyStatusLibSm, synchronisesEverythingWhenTheFirstPassIsOver) {
  Publisher agent;
  agent.start(false);
  agent.portUp("A");
  agent.portUp("B", "Ethernet2");
  EXPECT_EQ(agent.contents(), Contents());
  agent.state->initDoneIs(true);
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0", "B 1", "B/Ethernet2 0"}));
}

TEST(TopologyStatusLibSm, followsTheTopologiesNameByName) {
  Publisher agent;
  agent.start();
  const StatusLog log(agent);
  agent.topoIs("A", 7);
  ASSERT_NE(agent.topoSm("A"), nullptr);
  EXPECT_EQ(agent.topoSm("A")->name(), "A");
  EXPECT_EQ(agent.topoSm("A")->fwkKey(), "A");
  EXPECT_EQ(agent.topoSm("A")->topo(), agent.state->topo("A"));
  EXPECT_EQ(agent.topoSm("A")->topoStatus(), agent.status->topoStatus("A"));
  EXPECT_EQ(agent.topoSm("A")->topoConfig(), agent.config->topoConfig("A"));
  EXPECT_EQ(agent.topoSm("A")->ethIntfStatusDir(), agent.intfDir.get());
  EXPECT_EQ(agent.contents(), Contents{"A 7"});
  agent.state->topoDel("A");
  EXPECT_EQ(agent.contents(), Contents());
  EXPECT_EQ(agent.topoSm("A"), nullptr);
  EXPECT_EQ(log.lines, (Lines{"+A", "-A"}));
}

TEST(TopologyStatusLibSm, withdrawsTheStatusBeforeItsPorts) {
  Publisher agent;
  agent.portUp();
  agent.config->topoConfig("A")->publishPortConfigIs(true);
  const StatusLog log(agent);
  agent.start();
  agent.state->topoDel("A");
  EXPECT_EQ(log.lines,
            (Lines{"+A", "A +Ethernet1", "A config +Ethernet1", "-A", "A -Ethernet1", "A config -Ethernet1"}));
}

TEST(TopologyStatusLibSm, keepsAStatusLeftFromBeforeWhoseNumberIsStillRight) {
  Publisher agent;
  agent.portUp("A");
  const auto left = agent.status->topoStatusIs("A", 1);
  left->topoPortStatusIs("Ethernet1", 5);
  const StatusLog log(agent);
  agent.start();
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(agent.status->topoStatus("A"), left.get());
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 5"})) << "an entry that is there already stays as it is";
}

TEST(TopologyStatusLibSm, replacesAStatusLeftFromBeforeWithAnotherNumber) {
  Publisher agent;
  agent.portUp("A");
  const auto left = agent.status->topoStatusIs("A", 2);
  left->topoPortStatusIs("Ethernet1", 5);
  const StatusLog log(agent);
  agent.start();
  EXPECT_EQ(log.lines, (Lines{"-A", "+A", "A +Ethernet1"}));
  EXPECT_NE(agent.status->topoStatus("A"), left.get());
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
}

TEST(TopologyStatusLibSm, replacesAStatusWithAnotherNumberWhenItsTopologyComes) {
  Publisher agent;
  agent.start();
  (void)agent.status->topoStatusIs("A", 2);
  const StatusLog log(agent);
  agent.topoIs("A", 1);
  EXPECT_EQ(log.lines, (Lines{"-A", "+A"}));
}

TEST(TopologyStatusLibSm, removesAStatusWithoutConfiguration) {
  Publisher agent;
  agent.topoIs("A");
  (void)agent.status->topoStatusIs("stale", 1);
  const StatusLog log(agent);
  agent.start();
  EXPECT_EQ(log.lines, (Lines{"+A", "-stale"}));
}

TEST(TopologyStatusLibSm, keepsAStatusThatIsConfiguredAndNotPublished) {
  Publisher agent;
  (void)agent.config->topoConfigIs("A", 1);
  agent.status->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet1", 0);
  (void)agent.config->topoConfigIs("B", 1);
  agent.status->topoStatusIs("B", 2)->topoPortStatusIs("Ethernet1", 0);
  agent.start();
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0", "B 2", "B/Ethernet1 0"}))
      << "the ports of a topology that is not published are left alone";
}

TEST(TopologyStatusLibSm, removesPortStatusesThatNoPortIsBehind) {
  Publisher agent;
  agent.portUp("A");
  const auto left = agent.status->topoStatusIs("A", 1);
  left->topoPortStatusIs("Ethernet1", 0);
  left->topoPortStatusIs("Ethernet9", 0);
  const StatusLog log(agent);
  agent.start();
  EXPECT_EQ(log.lines, Lines{"A -Ethernet9"});
}

TEST(TopologyStatusLibSm, removesAPortStatusLeftFromBeforeWhosePortIsDown) {
  Publisher agent;
  agent.portUp("A");
  agent.linkIs("Ethernet1", Publisher::LinkStatus::down);
  agent.status->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet1", 0);
  agent.start();
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
}

TEST(TopologyStatusLibSm, passesOverATopologyWhoseConfigurationIsGone) {
  Publisher agent;
  agent.portUp("A");
  agent.portUp("B", "Ethernet2");
  agent.config->topoConfigDel("A");
  agent.status->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet1", 0);
  agent.start();
  EXPECT_EQ(agent.contents(), (Contents{"B 1", "B/Ethernet2 0"}));
  EXPECT_EQ(agent.topoSm("A"), nullptr);
  agent.state->topoDel("A");
  EXPECT_EQ(agent.contents(), (Contents{"B 1", "B/Ethernet2 0"}));
}

TEST(TopologyStatusLibSm, followsATopologyWhoseConfigurationIsGoneUntilItIsWithdrawn) {
  Publisher agent;
  agent.portUp("A");
  agent.start();
  agent.config->topoConfigDel("A");
  agent.sm->handleTopo("A");
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
  agent.linkIs("Ethernet1", Publisher::LinkStatus::down);
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  agent.state->topoDel("A");
  EXPECT_EQ(agent.contents(), Contents());
}

TEST(TopologyStatusLibSm, fullSynchronisationChangesNothingThatIsRight) {
  Publisher agent;
  agent.portUp("A");
  agent.portUp("B", "Ethernet2");
  agent.start();
  const auto* const topoSm = agent.topoSm("A");
  const StatusLog log(agent);
  agent.sm->handleTopo();
  agent.sm->handleLibStateInit();
  agent.sm->handleInitialized();
  agent.sm->handleTopo("A");
  agent.sm->handleTopo("unknown");
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(agent.topoSm("A"), topoSm);
}

TEST(TopologyStatusLibSm, fullSynchronisationRemovesWhatItWasNotToldOf) {
  Publisher agent;
  agent.portUp("A");
  agent.portUp("B", "Ethernet2");
  agent.start();
  agent.sm->hasNotificationActiveIs(false);
  agent.state->topoDel("A");
  agent.topoIs("C", 3);
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0", "B 1", "B/Ethernet2 0"})) << "it is not told";
  agent.sm->hasNotificationActiveIs(true);
  agent.sm->handleTopo();
  EXPECT_EQ(agent.contents(), (Contents{"B 1", "B/Ethernet2 0", "C 3"}));
  EXPECT_EQ(agent.topoSm("A"), nullptr);
}

TEST(TopologyStatusLibSm, withTheSameEntitiesIsTheSameOne) {
  Publisher agent;
  agent.start();
  const auto first = agent.sm;
  const ::Test::Recorder recorder(agent.root.get());
  agent.start();
  EXPECT_EQ(agent.sm, first);
  EXPECT_EQ(agent.root->topologyStatusLibSm(), first);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(TopologyStatusLibSm, withAnotherEntityIsAnotherOne) {
  for (const int which : {0, 1, 2, 3}) {
    SCOPED_TRACE(which);
    Publisher agent;
    agent.portUp("A");
    agent.start();
    const auto first = agent.sm;
    const Publisher other;
    if (which == 0) agent.status = other.status;
    if (which == 1) agent.state = other.state;
    if (which == 2) agent.config = other.config;
    if (which == 3) agent.intfDir = other.intfDir;
    const ::Test::Recorder recorder(agent.root.get());
    agent.start();
    EXPECT_NE(agent.sm, first);
    EXPECT_EQ(agent.root->topologyStatusLibSm(), agent.sm);
    EXPECT_TRUE(first->isRetired());
    EXPECT_EQ(recorder.events, (std::vector<::Test::Recorder::Event>{{Root::topologyStatusLibSmAttr.id(), false}}));
  }
}

TEST(TopologyStatusLibSm, afterItIsReplacedWritesNothing) {
  Publisher agent;
  agent.portUp("A");
  agent.start();
  const auto first = agent.sm;
  const auto firstStatus = agent.status;
  agent.status = Bridging::Topology::Inst::statusFactory("other");
  agent.start();
  agent.linkIs("Ethernet1", Publisher::LinkStatus::down);
  agent.topoIs("B");
  EXPECT_EQ(::Test::contentsOf(*firstStatus), (Contents{"A 1", "A/Ethernet1 0"}));
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "B 1"}));
}

TEST(TopologyStatusLibSm, leavesTheStatusAsItStandsWhenItEnds) {
  Publisher agent;
  agent.portUp("A");
  agent.start();
  const StatusLog log(agent);
  agent.stop();
  agent.linkIs("Ethernet1", Publisher::LinkStatus::down);
  agent.state->topoDel("A");
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
  EXPECT_TRUE(agent.state->notifieeList()->empty());
}

TEST(TopologyStatusLibSm, goesOnWithWhatAnEarlierOneLeft) {
  Publisher agent;
  agent.portUp("A");
  agent.portUp("B", "Ethernet2");
  agent.start();
  agent.stop();
  agent.linkIs("Ethernet1", Publisher::LinkStatus::down);
  agent.state->topoDel("B");
  agent.config->topoConfigDel("B");
  const StatusLog log(agent);
  agent.start();
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  EXPECT_EQ(log.lines, (Lines{"A -Ethernet1", "-B"}));
}

}  // namespace Topology::Library::TopologyStatusLibSmTest
