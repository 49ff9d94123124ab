// What LibSm traces, logs, raises and asserts when topologies come and go.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/Recorder.h"
#include "tests/support/TraceLines.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmTopoTraceTest {

using Test::assertionReport;
using Test::instNotified;
using Test::Recorder;
using Test::Running;
using Test::Start;
using Test::Switch;
using Test::textOf;
using Lines = std::vector<std::pair<unsigned, std::string>>;
using Texts = std::vector<std::string>;

const std::string notInitialized = "initialized() && \"Did you forget to set ethIntfStatusDir?\"";
constexpr std::uint32_t lifeLevels = Mox::traceLevel(2) | Mox::traceLevel(3);

TEST(LibSmTopoTrace, ofATopologyThatComes) {
  Running agent;
  const ::Test::TraceLines trace("TopoLib", lifeLevels | Mox::traceLevel(8));
  const ::Test::Messages messages;
  agent.config->topoConfigIs("B", 2);
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleTopoConfigOrStatusB"},
                                  {3, "LibSm::handleTopoConfigOrStatus for TopoConfig B"},
                                  {3, "LibSm::handleTopoConfigOrStatus creating TopoConfigSm B"},
                                  {8, "B: TopoConfigSm initializing"},
                                  {8, "handleTopoPortConfigOrStatus"}}));
  EXPECT_EQ(messages.texts(), (Texts{"LibSm::handleTopoConfigOrStatus creating TopoConfigSm B"}));
}

TEST(LibSmTopoTrace, ofATopologyThatIsThere) {
  Running agent;
  const ::Test::TraceLines trace("TopoLib");
  const ::Test::Messages messages;
  agent.libSm->handleTopoConfigOrStatus("A");
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleTopoConfigOrStatusA"},
                                  {3, "LibSm::handleTopoConfigOrStatus for TopoConfig A"},
                                  {3, "LibSm::handleTopoConfigOrStatus TopoConfigSm already present A"}}));
  EXPECT_TRUE(messages.texts().empty());
}

TEST(LibSmTopoTrace, ofATopologyThatIsNeitherThereNorWanted) {
  Running agent;
  const ::Test::TraceLines trace("TopoLib");
  agent.libSm->handleTopoConfigOrStatus("B");
  EXPECT_EQ(trace.lines(),
            (Lines{{8, "handleTopoConfigOrStatusB"}, {3, "LibSm::handleTopoConfigOrStatus for TopoConfig B"}}));
}

TEST(LibSmTopoTrace, ofATopologyThatGoesAtOnce) {
  Running agent;
  agent.config->topoConfigIs("B", 2);
  const ::Test::TraceLines trace("TopoLib");
  const ::Test::Messages messages;
  agent.config->topoConfigDel("B");
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleTopoConfigOrStatusB"},
                                  {3, "LibSm::handleTopoConfigOrStatus for TopoConfig B"},
                                  {3, "no vlan mapped to this topo deleting it nowB"}}));
  EXPECT_EQ(messages.texts(), (Texts{"no vlan mapped to this topo deleting it nowB"}));
}

TEST(LibSmTopoTrace, ofATopologyThatLingers) {
  Running agent;
  agent.vlanIs(20, "A");
  agent.memberIs(20, "Ethernet2");
  agent.drain();
  const ::Test::TraceLines trace("TopoLib", lifeLevels | Mox::traceLevel(4));
  const ::Test::Messages messages;
  agent.config->topoConfigDel("A");
  EXPECT_EQ(trace.lines(), (Lines{{3, "LibSm::handleTopoConfigOrStatus for TopoConfig A"},
                                  {3, "there are vlanConfigSms, marking vlans dirty 10"},
                                  {4, "doOnVlanPortUpdate: setting dirty to true 10"},
                                  {3, "there are vlanConfigSms, marking vlans dirty 20"},
                                  {4, "doOnVlanPortUpdate: setting dirty to true 20"}}));
  EXPECT_EQ(messages.texts(), (Texts{"there are vlanConfigSms, marking vlans dirty 10",
                                     "there are vlanConfigSms, marking vlans dirty 20"}));
}

TEST(LibSmTopoTrace, ofATopologyThatIsConfiguredAgainWhileItLingers) {
  Running agent;
  agent.config->topoConfigDel("A");
  const ::Test::TraceLines trace("TopoLib", lifeLevels);
  agent.config->topoConfigIs("A", 1);
  EXPECT_EQ(trace.lines(), (Lines{{3, "LibSm::handleTopoConfigOrStatus for TopoConfig A"},
                                  {3, "LibSm::handleTopoConfigOrStatus TopoConfigSm already present A"}}));
}

TEST(LibSmTopoTrace, ofTheQuestionForAnOrphan) {
  Running agent(Start{});
  const Mox::Ptr<const Bridging::Topology::TopoConfig> oldConfig = agent.config->topoConfig("A");
  const Mox::Ptr<const Bridging::Topology::TopoStatus> oldStatus = agent.status->topoStatus("A");
  const std::string question =
      textOf("Check topoIsOrphan, topoConfigSm is ", static_cast<const void*>(agent.topoSm().get()));
  ::Test::TraceLines trace("TopoLib");
  ::Test::Messages messages;
  EXPECT_FALSE(topoIsOrphan(agent.libSm, nullptr));
  EXPECT_TRUE(trace.lines().empty());
  EXPECT_FALSE(topoIsOrphan(agent.libSm, oldConfig));
  EXPECT_EQ(trace.lines(), (Lines{{2, question}}));
  ASSERT_EQ(messages.texts().size(), 1U);
  EXPECT_TRUE(messages.texts()[0].starts_with("Check topoIsOrphan, topoConfigSm is 0x")) << messages.texts()[0];

  agent.status->topoStatusDel("A");
  trace.clear();
  EXPECT_TRUE(topoIsOrphan(agent.libSm, oldConfig));
  EXPECT_EQ(trace.lines(), (Lines{{2, question}})) << "its status is another";

  agent.config->topoConfigDel("A");
  agent.config->topoConfigIs("A", 1);
  trace.clear();
  EXPECT_TRUE(topoIsOrphan(agent.libSm, agent.config->topoConfig("A")));
  EXPECT_EQ(trace.lines(), (Lines{{2, question},
                                  {2, textOf("topoIsOrphan, topoConfig is ", oldConfig)},
                                  {2, "topoStatus is null"},
                                  {2, textOf("topoConfigSm->topoConfig() is ", oldConfig)},
                                  {2, textOf("topoConfigSm->topoStatus() is ", oldStatus)}}));
}

TEST(LibSmTopoTrace, ofTheDeletionAfterTheLastVlan) {
  Running agent;
  agent.libSm->hasNotificationActiveIs(false);
  ::Test::TraceLines trace("TopoLib", lifeLevels);
  ::Test::Messages messages;
  maybeDeleteTopo(agent.libSm, "A");
  const std::string question =
      textOf("Check topoIsOrphan, topoConfigSm is ", static_cast<const void*>(agent.topoSm().get()));
  EXPECT_EQ(trace.lines(), (Lines{{2, "maybeDeleteTopo:  oldTopoName A"}, {2, question}}));
  EXPECT_EQ(messages.texts().at(0), "maybeDeleteTopo:  oldTopoName A");
  EXPECT_EQ(messages.texts().size(), 2U);

  agent.libSm->topoToVlanMap()->mappedVlan("A")->vlanDelAll();
  agent.config->topoConfigDel("A");
  trace.clear();
  messages.clear();
  maybeDeleteTopo(agent.libSm, "A");
  EXPECT_EQ(trace.lines(), (Lines{{2, "maybeDeleteTopo:  oldTopoName A"}, {2, "Deleting topo"}}));
  EXPECT_EQ(messages.texts(), (Texts{"maybeDeleteTopo:  oldTopoName A", "Deleting topo"}));
}

TEST(LibSmTopoTrace, ofARebuiltOrphan) {
  Running agent;
  agent.libSm->hasNotificationActiveIs(false);
  agent.config->topoConfigDel("A");
  agent.config->topoConfigIs("A", 1);
  agent.libSm->topoToVlanMap()->mappedVlan("A")->vlanDelAll();
  const Mox::Ptr<TopoConfigSm> old = agent.topoSm();
  const Mox::Ptr<const Topo> oldTopo = agent.state->topo("A");
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(3) | Mox::traceLevel(2) | Mox::traceLevel(4));
  const ::Test::Messages messages;
  maybeDeleteTopo(agent.libSm, "A");
  EXPECT_NE(agent.topoSm(), old);
  EXPECT_NE(agent.state->topo("A"), oldTopo.get());
  ASSERT_GE(trace.lines().size(), 6U);
  EXPECT_EQ(Lines(trace.lines().end() - 6, trace.lines().end()),
            (Lines{{2, textOf("topoConfigSm->topoStatus() is ", static_cast<const Mox::Entity*>(nullptr))},
                   {2, "Deleting topo"},
                   {2, "May be we deleted an orphaned topo, create again"},
                   {3, "LibSm::handleTopoConfigOrStatus for TopoConfig A"},
                   {3, "LibSm::handleTopoConfigOrStatus creating TopoConfigSm A"},
                   {4, "doOnVlanPortUpdate: setting dirty to true 10"}}));
  const Texts texts = messages.texts();
  ASSERT_EQ(texts.size(), 5U);
  EXPECT_EQ(Texts(texts.begin() + 2, texts.end()),
            (Texts{"Deleting topo", "May be we deleted an orphaned topo, create again",
                   "LibSm::handleTopoConfigOrStatus creating TopoConfigSm A"}));
}

TEST(LibSmTopoTrace, ofAnInstanceStatusInModeCreateStatus) {
  Running agent;
  ::Test::TraceLines trace("TopoLib", Mox::traceLevel(3) | Mox::traceLevel(8));
  agent.statusInst->topoStatusIs("B", 1);
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleTopoInstStatusB"}, {3, "TopoStatus created for B"}}));
  trace.clear();
  agent.statusInst->topoStatusDel("A");
  ASSERT_GE(trace.lines().size(), 3U);
  EXPECT_EQ(Lines(trace.lines().begin(), trace.lines().begin() + 3),
            (Lines{{8, "handleTopoInstStatusA"}, {3, "TopoStatus created for A"}, {3, "Assigning topo status to A"}}))
      << "written for a deletion as well";
}

TEST(LibSmTopoTrace, ofAnInstanceStatusInModeNotifyStatus) {
  Running agent(instNotified);
  ::Test::TraceLines trace("TopoLib", Mox::traceLevel(3) | Mox::traceLevel(8));
  agent.statusInst->topoStatusIs("B", 1);
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleTopoInstStatusB"},
                                  {3, "TopoStatus created for B"},
                                  {8, "handleTopoConfigOrStatusB"},
                                  {3, "LibSm::handleTopoConfigOrStatus for TopoConfig B"}}));
}

// Raised and asserted.

TEST(LibSmTopoSm, isAskedForByItsConfigurationAndStatus) {
  Running agent(Start{});
  const Mox::Ptr<const Bridging::Topology::TopoConfig> config = agent.config->topoConfig("A");
  const Mox::Ptr<const Bridging::Topology::TopoStatus> status = agent.status->topoStatus("A");
  const Recorder recorder(agent.libSm.get());
  EXPECT_EQ(agent.libSm->topoConfigSmIs(config, status, nullptr, agent.intfDir), agent.topoSm());
  EXPECT_THROW(agent.libSm->topoConfigSmIs(config, nullptr, nullptr, agent.intfDir),
               Mox::MutatorReinstantiatingException);
  const auto other = Bridging::Topology::configFactory("other")->topoConfigIs("A", 1);
  EXPECT_THROW(agent.libSm->topoConfigSmIs(other, status, nullptr, agent.intfDir),
               Mox::MutatorReinstantiatingException);
  try {
    agent.libSm->topoConfigSmIs(nullptr, status, nullptr, agent.intfDir);
    FAIL() << "nothing was raised";
  } catch (const Mox::MutatorArgNullPointerException& e) {
    EXPECT_STREQ(e.what(), "topoConfigSmIs: argument topoConfig must not be null");
  }
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibSmTopoSm, askedForAgainTakesTheInstanceStatusOver) {
  Running agent;
  const Mox::Ptr<const Bridging::Topology::TopoConfig> config = agent.config->topoConfig("A");
  const auto other = Bridging::Topology::Inst::statusFactory("other")->topoStatusIs("A", 1);
  const auto sm = agent.topoSm();
  EXPECT_EQ(agent.libSm->topoConfigSmIs(config, nullptr, other, nullptr), sm);
  EXPECT_EQ(sm->topoInstStatus(), other.get());
}

TEST(LibSmTopoDeathTest, statusOrConfigurationBeforeTheStartUpAborts) {
  Switch agent;
  agent.startWaiting();
  const auto report = assertionReport(notInitialized, "LibSm::handleTopoConfigOrStatus");
  EXPECT_DEATH(agent.config->topoConfigIs("B", 1), report);
  EXPECT_DEATH(agent.config->topoConfigDel("A"), report);
  EXPECT_DEATH(agent.status->topoStatusIs("B"), report);
  EXPECT_DEATH(agent.libSm->handleTopoInstStatus("A"), assertionReport(notInitialized, "LibSm::handleTopoInstStatus"));
}

TEST(LibSmTopoDeathTest, stateMachineWithoutItsTopologyAborts) {
  Running agent;
  agent.state->topoDel("A");
  EXPECT_DEATH(agent.libSm->handleTopoConfigOrStatus("A"), assertionReport("topo", "LibSm::reconcileTopo"));
}

}  // namespace Topology::Library::LibSmTopoTraceTest
