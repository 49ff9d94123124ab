// The topologies of the VLAN view.

#include "topolib/vlan/TopoSm.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "mox/Exception.h"
#include "tests/support/TraceLines.h"
#include "tests/topolib/vlan/View.h"

namespace Topology::Library::Vlan::TopoSmTest {

using Test::View;
using Test::ViewLog;
using Contents = std::set<std::string>;
using Lines = std::vector<std::string>;

const Contents inA{"10", "10/Ethernet1 open both", "10/Ethernet1 in A"};

/// A view of topology A with one active port.
class Running : public View {
 public:
  Running() {
    portUp("A");
    start();
  }
  [[nodiscard]] TopoSm& a() const { return *sm->topoSm("A"); }
};

TEST(ViewTopoSm, hasAMappingForEveryPortWhenItIsMade) {
  View agent;
  agent.portUp("A");
  agent.portIs("A", "Ethernet2");
  agent.start();
  const TopoSm& a = *agent.sm->topoSm("A");
  EXPECT_EQ(a.name(), "A");
  EXPECT_EQ(a.topo(), agent.state->topo("A"));
  EXPECT_EQ(a.vlanLibSm(), agent.sm.get());
  EXPECT_TRUE(a.initialized());
  EXPECT_TRUE(a.hasNotificationActive());
  EXPECT_EQ(a.vlanPortMapping().size(), 2U);
  EXPECT_EQ(a.vlanPortMapping("Ethernet2")->port(), &agent.port("A", "Ethernet2"));
  EXPECT_EQ(a.vlanPortMapping("Ethernet9"), nullptr);
}

TEST(ViewTopoSm, mapsAPortThatComes) {
  Running agent;
  agent.portUp("A", "Ethernet2", {20});
  EXPECT_EQ(agent.a().vlanPortMapping().size(), 2U);
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 open both", "10/Ethernet1 in A", "20",
                                        "20/Ethernet2 open both", "20/Ethernet2 in A"}));
}

TEST(ViewTopoSm, mapsAPortThatIsNeitherActiveNorConfigured) {
  Running agent;
  const ViewLog log(agent);
  agent.portIs("A", "Ethernet2");
  EXPECT_NE(agent.mapping("A", "Ethernet2"), nullptr);
  agent.port("A", "Ethernet2").activeIs(true);
  EXPECT_EQ(log.lines, Lines()) << "it carries no VLAN";
  agent.port("A", "Ethernet2").vlanPortConfigIs(20, {});
  EXPECT_EQ(log.lines, (Lines{"+20", "20 +Ethernet2", "20/Ethernet2 blocked", "20/Ethernet2 +A"}));
}

TEST(ViewTopoSm, withdrawsAPortThatGoes) {
  Running agent;
  agent.portUp("A", "Ethernet2", {10, 20});
  agent.portUp("B", "Ethernet1", {10});
  const ViewLog log(agent);
  agent.state->topo("A")->portDel("Ethernet1");
  EXPECT_EQ(log.lines, Lines{"10/Ethernet1 -A"}) << "the port is there through B";
  EXPECT_EQ(agent.a().vlanPortMapping("Ethernet1"), nullptr);
  agent.state->topo("B")->portDel("Ethernet1");
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet2 open both", "10/Ethernet2 in A", "20",
                                        "20/Ethernet2 open both", "20/Ethernet2 in A"}));
  agent.state->topo("A")->portDel("Ethernet2");
  EXPECT_EQ(agent.contents(), Contents());
}

TEST(ViewTopoSm, cleansAMappingUpBeforeItGoes) {
  Running agent;
  std::vector<bool> seen;
  ViewLog log(agent);
  log.actionIs([&](const std::string&) { seen.push_back(agent.a().vlanPortMapping("Ethernet1") != nullptr); });
  agent.state->topo("A")->portDel("Ethernet1");
  EXPECT_EQ(seen, (std::vector{true, true, true}));
  EXPECT_EQ(agent.a().vlanPortMapping("Ethernet1"), nullptr);
}

TEST(ViewTopoSm, synchronisesWhatItWasNotToldOf) {
  Running agent;
  agent.sm->hasNotificationActiveIs(false);
  agent.state->topo("A")->portDel("Ethernet1");
  agent.portUp("A", "Ethernet2");
  EXPECT_EQ(agent.contents(), inA);
  agent.sm->hasNotificationActiveIs(true);
  agent.a().handleTopoPort();
  EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet2 open both", "10/Ethernet2 in A"}));
  EXPECT_EQ(agent.a().vlanPortMapping().size(), 1U);
}

TEST(ViewTopoSm, changesNothingThatIsRight) {
  Running agent;
  const auto* const mapping = agent.mapping("A");
  const ViewLog log(agent);
  agent.a().handleTopoPort();
  agent.a().handleTopoPort("Ethernet1");
  agent.a().handleTopoPort("unknown");
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(agent.mapping("A"), mapping);
}

TEST(ViewTopoSm, onlySaysSoOfAPortThatNobodyHas) {
  const Running agent;
  const ::Test::TraceLines trace("TopoLibVlan", Mox::traceLevel(2) | Mox::traceLevel(9));
  agent.a().handleTopoPort("Ethernet9");
  EXPECT_EQ(trace.lines(),
            (std::vector<std::pair<unsigned, std::string>>{{9, " topo port A:Ethernet9 doesn't exist"}}));
}

TEST(ViewTopoSm, cleansUpWithoutRemovingItsMappings) {
  Running agent;
  agent.portUp("A", "Ethernet2", {10, 20});
  const Mox::Ptr<VlanPortMapping> mapping = agent.mapping("A");
  agent.a().handleCleanup();
  EXPECT_EQ(agent.contents(), Contents());
  EXPECT_EQ(agent.a().vlanPortMapping().size(), 2U);
  EXPECT_FALSE(mapping->isRetired());
}

TEST(ViewTopoSm, keepsOneMappingForAPort) {
  Running agent;
  const Mox::Ptr<VlanPortMapping> existing = agent.mapping("A");
  const Mox::Ptr<Library::Port> port = &agent.port("A");
  EXPECT_EQ(agent.a().vlanPortMappingIs("Ethernet1", port), existing);
  const auto other = libStateFactory("other")->topoIs("A")->portIs("Ethernet1");
  try {
    (void)agent.a().vlanPortMappingIs("Ethernet1", other);
    FAIL();
  } catch (const Mox::MutatorReinstantiatingException& e) {
    EXPECT_STREQ(e.what(), "vlanPortMappingIs: a member of this key exists, made with other arguments");
  }
  EXPECT_EQ(agent.mapping("A"), existing.get());
}

TEST(ViewTopoSm, isToldToRemoveItsMappings) {
  Running agent;
  agent.portUp("A", "Ethernet2");
  const Mox::Ptr<VlanPortMapping> first = agent.mapping("A");
  const ViewLog log(agent);
  agent.a().vlanPortMappingDel("Ethernet1");
  agent.a().vlanPortMappingDel("unknown");
  EXPECT_TRUE(first->isRetired());
  EXPECT_EQ(agent.a().vlanPortMapping().size(), 1U);
  agent.a().vlanPortMappingDelAll();
  EXPECT_TRUE(agent.a().vlanPortMapping().empty());
  EXPECT_EQ(log.lines, Lines());
}

TEST(ViewTopoSm, isUnboundFromItsTopology) {
  Running agent;
  agent.a().topoDel();
  EXPECT_EQ(agent.a().topo(), nullptr);
  EXPECT_TRUE(agent.state->topo("A")->notifieeList()->empty());
  agent.state->topo("A")->portDel("Ethernet1");
  agent.portUp("A", "Ethernet2");
  EXPECT_EQ(agent.contents(), inA);
}

// Readers of the view that change the ports from inside its notifications.

TEST(ViewTopoSm, servesAReaderThatTakesThePortBackWhileItIsMapped) {
  for (const char* const at : {"+10", "10 +Ethernet1", "10/Ethernet1 blocked", "10/Ethernet1 +A"}) {
    SCOPED_TRACE(at);
    View agent;
    (void)agent.state->topoIs("A");
    agent.start();
    // The port is complete before it is told of, so that its mapping builds everything at once.
    agent.sm->hasNotificationActiveIs(false);
    agent.portUp("A", "Ethernet1", {10}, View::PortState::blocking);
    agent.sm->hasNotificationActiveIs(true);
    ViewLog log(agent);
    log.onceAt(at, [&] { agent.state->topo("A")->portDel("Ethernet1"); });
    agent.sm->topoSm("A")->handleTopoPort("Ethernet1");
    EXPECT_EQ(agent.contents(), Contents());
    EXPECT_EQ(agent.mapping("A"), nullptr);
    agent.portUp("A");
    EXPECT_EQ(agent.contents(), inA);
  }
}

TEST(ViewTopoSm, servesAReaderThatReplacesThePortWhileItIsMapped) {
  for (const char* const at : {"+10", "10 +Ethernet1", "10/Ethernet1 +A"}) {
    SCOPED_TRACE(at);
    View agent;
    agent.portUp("A");
    ViewLog log(agent);
    log.onceAt(at, [&] {
      agent.state->topo("A")->portDel("Ethernet1");
      agent.portUp("A", "Ethernet1", {20});
    });
    agent.start();
    EXPECT_EQ(agent.contents(), (Contents{"20", "20/Ethernet1 open both", "20/Ethernet1 in A"}));
    ASSERT_NE(agent.mapping("A"), nullptr);
    EXPECT_EQ(agent.mapping("A")->port(), &agent.port("A"));
  }
}

TEST(ViewTopoSm, servesAReaderThatBringsThePortBackWhileItIsWithdrawn) {
  for (const char* const at : {"10/Ethernet1 -A", "10 -Ethernet1", "-10"}) {
    SCOPED_TRACE(at);
    Running agent;
    ViewLog log(agent);
    log.onceAt(at, [&] { agent.portUp("A", "Ethernet1", {20}); });
    agent.state->topo("A")->portDel("Ethernet1");
    EXPECT_EQ(agent.contents(), (Contents{"20", "20/Ethernet1 open both", "20/Ethernet1 in A"}));
    ASSERT_NE(agent.mapping("A"), nullptr);
    EXPECT_EQ(agent.mapping("A")->port(), &agent.port("A"));
  }
}

}  // namespace Topology::Library::Vlan::TopoSmTest
