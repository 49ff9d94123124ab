// What the status publisher traces and logs.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Publisher.h"

namespace Topology::Library::PublisherTraceTest {

using Interface::ForwardingModel;
using Interface::LinkStatus;
using Test::Messages;
using Test::Publisher;
using Test::TraceLines;
using Lines = std::vector<std::pair<unsigned, std::string>>;
using Texts = std::vector<std::string>;

/// Started, with a port that is up.
class PortUp : public Publisher {
 public:
  PortUp() {
    portUp();
    start();
  }
};

TEST(PublisherTrace, ofAStartBeforeTheFirstPassIsOver) {
  Publisher agent;
  const TraceLines trace("TopoLib");
  agent.start(false);
  EXPECT_EQ(trace.lines(), (Lines{{2, "TopologyStatusLibSm::handleLibStateInit"},
                                  {2, "TopologyStatusLibSm::handleTopo"},
                                  {8, "Initialized called for TopologySm"},
                                  {8, "topoLibSm init not done yet, returning "}}));
}

TEST(PublisherTrace, ofTheEndOfTheFirstPass) {
  Publisher agent;
  agent.start(false);
  const TraceLines trace("TopoLib");
  agent.sm->handleTopo();
  EXPECT_EQ(trace.lines(),
            (Lines{{2, "TopologyStatusLibSm::handleTopo"}, {7, "topoLibSm init not done yet, returning "}}));
  TraceLines other("TopoLib");
  agent.state->initDoneIs(true);
  EXPECT_EQ(other.lines(), (Lines{{2, "TopologyStatusLibSm::handleLibStateInit"},
                                  {2, "TopologyStatusLibSm::handleTopo"},
                                  {7, "Syncing up topology state machines"}}));
}

TEST(PublisherTrace, ofAStartWithAPortThatIsUp) {
  Publisher agent;
  agent.portUp();
  agent.state->initDoneIs(true);
  const Messages messages;
  const TraceLines trace("TopoLib");
  agent.start();
  EXPECT_EQ(trace.lines(), (Lines{{2, "TopologyStatusLibSm::handleLibStateInit"},
                                  {2, "TopologyStatusLibSm::handleTopo"},
                                  {8, "Initialized called for TopologySm"},
                                  {2, "TopologyStatusLibSm::handleTopo"},
                                  {7, "Syncing up topology state machines"},
                                  {8, "handleTopoA"},
                                  {7, "A: Topo object created, adding Topology Status"},
                                  {8, "A: Syncing up port state machines"},
                                  {7, "A: Port Ethernet1 created, creating Sm"},
                                  {6, "Linkstatus up for Ethernet1 adding port to topology "}}));
  EXPECT_EQ(messages.texts(), (Texts{"A: Topo object created, adding Topology Status",
                                     "Linkstatus up for Ethernet1 adding port to topology "}));
}

TEST(PublisherTrace, ofATopologyThatGoes) {
  PortUp agent;
  const Messages messages;
  const TraceLines trace("TopoLib");
  agent.state->topoDel("A");
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleTopoA"},
                                  {7, "A: Topo object deleted, deleting Topology Status"},
                                  {8, "A: Cleanup, removing all port state machines "},
                                  {8, ": Cleanup, removing port from topology Ethernet1"}}));
  EXPECT_EQ(messages.texts(), Texts{"A: Topo object deleted, deleting Topology Status"});
}

TEST(PublisherTrace, ofATopologyThatIsThereOrUnknown) {
  PortUp agent;
  const Messages messages;
  const TraceLines trace("TopoLib");
  agent.sm->handleTopo("A");
  agent.sm->handleTopo("unknown");
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleTopoA"}, {8, "handleTopounknown"}}));
  EXPECT_EQ(messages.texts(), Texts());
}

TEST(PublisherTrace, ofStatusesLeftFromBefore) {
  Publisher agent;
  agent.topoIs("A");
  (void)agent.status->topoStatusIs("stale", 1);
  agent.status->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet9", 0);
  const TraceLines trace("TopoLib", Mox::traceLevel(7));
  agent.start();
  Lines lines = trace.lines();
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0], (Lines::value_type{7, "Syncing up topology state machines"}));
  EXPECT_EQ(lines[1], (Lines::value_type{7, "A: Topo object created, adding Topology Status"}));
  EXPECT_TRUE(trace.has(7, "Deleting TopoStatus because no TopoConfig found"));
  EXPECT_TRUE(trace.has(7, "Deleting topoPortStatus for topo: AEthernet9"));
}

TEST(PublisherTrace, ofAPortThatComesAndGoes) {
  PortUp agent;
  const Messages messages;
  const TraceLines trace("TopoLib");
  agent.portIs("A", "Cpu");
  agent.state->topo("A")->portDel("Cpu");
  agent.portIs("A", "Ethernet7");
  EXPECT_EQ(trace.lines(), (Lines{{7, "A: Port Cpu created, creating Sm"},
                                  {6, "Linkstatus up for Cpu adding port to topology "},
                                  {7, "A: Port Cpu deleted, removing Sm "},
                                  {8, ": Cleanup, removing port from topology Cpu"}}))
      << "and nothing for a port without an interface status";
  EXPECT_EQ(messages.texts(), Texts{"Linkstatus up for Cpu adding port to topology "});
}

TEST(PublisherTrace, ofAnInterfaceStatusThatIsReplaced) {
  PortUp agent;
  agent.sm->hasNotificationActiveIs(false);
  agent.intfDir->intfStatusDel("Ethernet1");
  agent.linkIs("Ethernet1", LinkStatus::down);
  agent.sm->hasNotificationActiveIs(true);
  const TraceLines trace("TopoLib");
  agent.topoSm("A")->handlePort();
  EXPECT_EQ(trace.lines(), (Lines{{8, "A: Syncing up port state machines"},
                                  {8, ": Cleanup, removing port from topology Ethernet1"},
                                  {7, "A: Port Ethernet1 created, creating Sm"}}));
}

TEST(PublisherTrace, ofALinkThatFlaps) {
  PortUp agent;
  const Messages messages;
  const TraceLines trace("TopoLib");
  agent.linkIs("Ethernet1", LinkStatus::down);
  agent.linkIs("Ethernet1", LinkStatus::unknown);
  agent.linkIs("Ethernet1");
  EXPECT_EQ(trace.lines(), (Lines{{6, ": Linkstatus down for Ethernet1 removing port from topology "},
                                  {6, "Linkstatus up for Ethernet1 adding port to topology "}}));
  EXPECT_EQ(messages.texts(), (Texts{": Linkstatus down for Ethernet1 removing port from topology ",
                                     "Linkstatus up for Ethernet1 adding port to topology "}));
}

TEST(PublisherTrace, ofAForwardingModel) {
  PortUp agent;
  const Messages messages;
  const TraceLines trace("TopoLib");
  agent.linkIs("Ethernet1", LinkStatus::up, ForwardingModel::tunneled);
  agent.linkIs("Ethernet1", LinkStatus::up, ForwardingModel::routed);
  EXPECT_EQ(trace.lines(), (Lines{{8, "EthIntfSm::handleForwardingModelEthernet1"},
                                  {8, "EthIntfSm::handleForwardingModelEthernet1"},
                                  {6, ": Linkstatus down for Ethernet1 removing port from topology "}}));
  EXPECT_EQ(messages.texts(),
            (Texts{"EthIntfSm::handleForwardingModelEthernet1", "EthIntfSm::handleForwardingModelEthernet1",
                   ": Linkstatus down for Ethernet1 removing port from topology "}));
}

TEST(PublisherTrace, ofStateMachinesThatAreNotInitialised) {
  Publisher agent;
  agent.portUp();
  const auto topoStatus = agent.status->topoStatusIs("A", 1);
  const auto topoConfig = agent.config->topoConfigIs("A", 1);
  const auto topoSm = Mox::makePtr<TopoSm>(agent.state->topo("A"), agent.intfDir, topoConfig, topoStatus);
  const auto port =
      Mox::makePtr<EthIntfSm>("Ethernet1", topoConfig, topoStatus, agent.intfDir->intfStatus("Ethernet1"));
  const TraceLines trace("TopoLib");
  topoSm->handlePort();
  topoSm->handlePort("Ethernet1");
  port->handleForwardingModel();
  port->handleLinkStatus();
  EXPECT_EQ(trace.lines(), Lines());
}

TEST(PublisherTrace, isWrittenOnlyAtTheLevelsThatAreOn) {
  for (unsigned level = 0; level < 32; ++level) {
    Publisher agent;
    agent.portUp();
    (void)agent.status->topoStatusIs("stale", 1);
    const TraceLines trace("TopoLib", Mox::traceLevel(level));
    agent.start();
    agent.linkIs("Ethernet1", LinkStatus::down, ForwardingModel::tunneled);
    agent.state->topoDel("A");
    for (const auto& [at, text] : trace.lines()) EXPECT_EQ(at, level) << text;
    EXPECT_EQ(trace.lines().empty(), level != 2 && level != 6 && level != 7 && level != 8) << level;
  }
}

}  // namespace Topology::Library::PublisherTraceTest
