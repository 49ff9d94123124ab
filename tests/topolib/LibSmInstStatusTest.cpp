// How LibSm follows the instance status of a topology.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/StateLog.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmInstStatusTest {

using Test::inst;
using Test::instNotified;
using Test::Running;
using Test::Start;
using Test::StateLog;
using Lines = std::vector<std::pair<unsigned, std::string>>;
using Texts = std::vector<std::string>;

TEST(LibSmInstStatus, thatIsReplacedIsFollowed) {
  for (const Start& how : {inst, instNotified}) {
    Running agent(how);
    ASSERT_TRUE(agent.port("A", "Ethernet1")->active());
    const auto sm = agent.topoSm();
    const StateLog log(agent.state);
    agent.statusInst->topoStatusDel("A");
    agent.statusInst->topoStatusIs("A", 2);
    EXPECT_EQ(agent.topoSm(), sm);
    EXPECT_EQ(sm->topoInstStatus(), agent.statusInst->topoStatus("A"));
    EXPECT_FALSE(agent.port("A", "Ethernet1")->active()) << "the port has no status yet";
    agent.statusInst->topoStatus("A")->topoPortStatusIs("Ethernet1", 0);
    EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
    EXPECT_EQ(log.lines, (Texts{"A/Ethernet1 inactive", "A/Ethernet1 state disabled", "A/Ethernet1 active",
                                "A/Ethernet1 state forwarding"}));
    agent.drain();
    EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
    EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  }
}

TEST(LibSmInstStatus, thatBringsItsPortsIsEvaluatedAtOnce) {
  Running agent;
  agent.statusInst->topoStatusDel("A");
  agent.libSm->hasNotificationActiveIs(false);
  agent.statusInst->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet1", 0);
  agent.libSm->hasNotificationActiveIs(true);
  EXPECT_FALSE(agent.port("A", "Ethernet1")->active());
  agent.libSm->handleTopoInstStatus("A");
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
}

TEST(LibSmInstStatus, portThatIsNoLongerConfiguredIsEvaluatedToo) {
  Running agent;
  agent.libSm->hasNotificationActiveIs(false);
  agent.config->topoConfig("A")->topoPortConfigDel("Ethernet1");
  agent.libSm->hasNotificationActiveIs(true);
  ASSERT_TRUE(agent.port("A", "Ethernet1")->active());
  agent.statusInst->topoStatusDel("A");
  EXPECT_FALSE(agent.port("A", "Ethernet1")->active());
}

TEST(LibSmInstStatus, bindingThatDidNotChangeEvaluatesNothing) {
  Running agent;
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(8));
  agent.libSm->handleTopoInstStatus("A");
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleTopoInstStatusA"}}));
}

TEST(LibSmInstStatus, bindingByHandEvaluatesNothing) {
  Running agent;
  const StateLog log(agent.state);
  agent.topoSm()->topoInstStatusIs(nullptr);
  EXPECT_TRUE(log.lines.empty());
}

TEST(LibSmInstStatus, thatIsBackBeforeTheTopologyWasDeletedBringsTheVlansBack) {
  Running agent(instNotified);
  agent.vlanIs(20, "A");
  agent.memberIs(20, "Ethernet2");
  agent.drain();
  agent.statusInst->topoStatusDel("A");
  // One item at a time: VLAN 10 has left when the status comes back, VLAN 20 has not.
  agent.libSm->topoLibCodef()->yieldAfterOneIs(true);
  for (int i = 0; i < 10 && vlanMappedToTopo(agent.libSm, "A", 10); ++i) Mox::activityManager()->dispatch();
  ASSERT_FALSE(vlanMappedToTopo(agent.libSm, "A", 10));
  ASSERT_TRUE(vlanMappedToTopo(agent.libSm, "A", 20));
  const auto sm = agent.topoSm();
  agent.statusInst->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet1", 0);
  agent.drain();
  EXPECT_EQ(agent.topoSm(), sm) << "it was never deleted";
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 20));
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
}

TEST(LibSmInstStatus, inModeCreateStatusMarksNoVlan) {
  Running agent;
  agent.statusInst->topoStatusDel("A");
  agent.statusInst->topoStatusIs("A", 1);
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan().empty());
}

}  // namespace Topology::Library::LibSmInstStatusTest
