// How LibSm starts up, and what it is then.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmStartTest {

using Bridging::VlanId;
using Test::Agent;
using Test::inst;
using Test::instAtOnce;
using Test::Start;
using Test::StateLog;
using Test::Switch;
using Lines = std::vector<std::pair<unsigned, std::string>>;
using Texts = std::vector<std::string>;

constexpr unsigned entryLevels = Mox::traceLevel(8) | Mox::traceLevel(9);

TEST(LibSmStart, waitsForTheInterfaceStatusesWherePlainStatusIsWatched) {
  Switch agent;
  const StateLog log(agent.state);
  const ::Test::TraceLines trace("TopoLib");
  agent.startWaiting();
  EXPECT_FALSE(agent.libSm->initialized());
  EXPECT_EQ(agent.libSm->dirtyVlanDir(), nullptr);
  EXPECT_EQ(agent.libSm->topoLibCodef(), nullptr);
  EXPECT_EQ(agent.libSm->topoToVlanMap(), nullptr);
  EXPECT_TRUE(agent.libSm->topoConfigSm().empty());
  agent.drain();
  EXPECT_TRUE(log.lines.empty());
  EXPECT_TRUE(trace.lines().empty());
  EXPECT_TRUE(agent.intfDir->notifieeList()->empty());
}

TEST(LibSmStart, startsUpWhenTheInterfaceStatusesAreThere) {
  Switch agent;
  agent.startWaiting();
  const ::Test::TraceLines trace("TopoLib", entryLevels);
  agent.libSm->ethIntfStatusDirIs(agent.intfDir);
  EXPECT_EQ(agent.libSm->ethIntfStatusDir(), agent.intfDir.get());
  EXPECT_TRUE(agent.libSm->initialized());
  ASSERT_GE(trace.lines().size(), 2U);
  EXPECT_EQ(trace.lines()[0], std::pair(8U, std::string("handleEthIntfStatusDir")));
  EXPECT_EQ(trace.lines()[1], std::pair(8U, std::string("LibSm::handleInitialized")));
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.state->initDone());
}

TEST(LibSmStart, waitsOnWithNoDirectoryAtAll) {
  Switch agent;
  agent.startWaiting();
  const ::Test::TraceLines trace("TopoLib");
  agent.libSm->ethIntfStatusDirIs(nullptr);
  agent.libSm->ethIntfStatusDirDel();
  EXPECT_FALSE(agent.libSm->initialized());
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleEthIntfStatusDir"}, {8, "handleEthIntfStatusDir"}}));
}

TEST(LibSmStart, needsNoInterfaceStatusesWithInstanceStatus) {
  Switch agent(inst);
  agent.startLibrary();
  EXPECT_TRUE(agent.libSm->initialized());
  EXPECT_EQ(agent.libSm->ethIntfStatusDir(), nullptr);
  EXPECT_NE(agent.libSm->dirtyVlanDir(), nullptr);
}

TEST(LibSmStart, needsNoInterfaceStatusesWithoutStatus) {
  Switch agent({.status = Start::Status::none});
  agent.startLibrary();
  EXPECT_TRUE(agent.libSm->initialized());
}

TEST(LibSmStart, directoryThatIsReplacedStartsNothingAgain) {
  Switch agent;
  agent.startLibrary();
  agent.drain();
  const auto directory = agent.libSm->dirtyVlanDir();
  const ::Test::TraceLines trace("TopoLib");
  const auto other = Interface::ethIntfStatusDirFactory("other");
  agent.libSm->ethIntfStatusDirIs(other);
  EXPECT_EQ(agent.libSm->ethIntfStatusDir(), other.get());
  agent.libSm->ethIntfStatusDirDel();
  EXPECT_EQ(agent.libSm->ethIntfStatusDir(), nullptr);
  EXPECT_EQ(other->references(), 1U);
  EXPECT_TRUE(other->notifieeList()->empty());
  EXPECT_EQ(agent.libSm->dirtyVlanDir(), directory);
  EXPECT_TRUE(agent.libSm->initialized());
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleEthIntfStatusDir"}, {8, "handleEthIntfStatusDir"}}));
}

TEST(LibSmStart, topologyThatComesLaterTakesTheNewDirectoryOver) {
  Switch agent;
  agent.startLibrary();
  const auto other = Interface::ethIntfStatusDirFactory("other");
  agent.libSm->ethIntfStatusDirIs(other);
  agent.topoIs("B");
  EXPECT_EQ(agent.libSm->topoConfigSm("A")->ethIntfStatusDir(), agent.intfDir.get());
  EXPECT_EQ(agent.libSm->topoConfigSm("B")->ethIntfStatusDir(), other.get());
}

TEST(LibSmStart, tracesEachStepInOrder) {
  Switch agent(inst);
  const ::Test::TraceLines trace("TopoLib", entryLevels);
  agent.startLibrary();
  EXPECT_EQ(trace.lines(), (Lines{{8, "LibSm::handleInitialized"},
                                  {9, "LibSm::handleInitialized create Codef"},
                                  {9, "TopoLibCodef::handleInitialized idleIs false"},
                                  {8, "handleTopoConfigOrStatusA"},
                                  {8, "A: TopoConfigSm initializing"},
                                  {8, "handleTopoPortConfigOrStatus"},
                                  {8, "handleTopoPortConfigOrStatus"},
                                  {8, "doOnVlanPortUpdate vid 10 intf "},
                                  {9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"},
                                  {9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"}}));
}

TEST(LibSmStart, ownsItsDirectoryProcessorAndMapOnceInitialised) {
  Switch agent(inst);
  agent.startLibrary();
  const LibSm& libSm = *agent.libSm;
  ASSERT_NE(libSm.topoLibCodef(), nullptr);
  EXPECT_EQ(libSm.topoLibCodef()->libSm(), &libSm);
  EXPECT_EQ(libSm.topoLibCodef()->dirtyVlanDir(), libSm.dirtyVlanDir());
  EXPECT_EQ(libSm.topoLibCodef()->clock(), Mox::activityManager()->config()->clock().get());
  EXPECT_TRUE(libSm.topoLibCodef()->hasNotificationActive());
  EXPECT_EQ(libSm.dirtyVlanDir()->name(), "dirtyVlanDir");
  EXPECT_EQ(libSm.topoToVlanMap()->name(), "topoToVlanMap");
  EXPECT_EQ(libSm.topoLibCodef()->codefState()->name(), "codefState");
  EXPECT_EQ(libSm.dirtyVlanPortThreshold(), 20U);
}

TEST(LibSmStart, handlesEveryConfiguredTopologyAndMarksEveryMappedVlanWholly) {
  Switch agent(inst);
  agent.topoIs("B");
  agent.vlanIs(20, "B");
  agent.vlanIs(30, "nowhere");
  agent.memberIs(40, "Ethernet1");
  agent.startLibrary();
  EXPECT_NE(agent.libSm->topoConfigSm("A"), nullptr);
  EXPECT_NE(agent.libSm->topoConfigSm("B"), nullptr);
  EXPECT_NE(agent.state->topo("A"), nullptr);
  EXPECT_NE(agent.state->topo("B"), nullptr);
  EXPECT_EQ(agent.state->topo("nowhere"), nullptr);
  std::map<VlanId, std::pair<bool, std::size_t>> dirty;
  for (const auto& [vid, dv] : agent.libSm->dirtyVlanDir()->dirtyVlan()) {
    dirty[vid] = {dv.dirty(), dv.intf().size()};
  }
  const std::pair<bool, std::size_t> wholly{true, 0};
  EXPECT_EQ(dirty, (std::map<VlanId, std::pair<bool, std::size_t>>{{10, wholly}, {20, wholly}, {30, wholly}}));
  EXPECT_FALSE(agent.state->initDone());
  EXPECT_FALSE(agent.libSm->topoLibCodef()->codefState()->idle());
}

TEST(LibSmStart, initDoneTurnsTrueAtOnceWithoutVlans) {
  Agent agent(inst);
  agent.topoIs("A");
  const StateLog log(agent.state);
  agent.startLibrary();
  EXPECT_EQ(log.lines, (Texts{"+A", "initDone"}));
}

TEST(LibSmStart, initDoneTurnsTrueWithTheFirstDrain) {
  Switch agent(inst);
  agent.startLibrary();
  EXPECT_FALSE(agent.state->initDone());
  StateLog log(agent.state);
  bool wasEmpty = false;
  log.onceAt("initDone", [&] { wasEmpty = agent.libSm->dirtyVlanDir()->dirtyVlan().empty(); });
  agent.drain();
  EXPECT_TRUE(wasEmpty);
  EXPECT_EQ(log.lines, (Texts{"+A/Ethernet1", "A/Ethernet1 10", "A/Ethernet1 active", "A/Ethernet1 state forwarding",
                              "initDone", "A/Ethernet1 no 10", "-A/Ethernet1", "+A/Ethernet1", "A/Ethernet1 10",
                              "A/Ethernet1 active", "A/Ethernet1 state forwarding"}))
      << "every VLAN is processed a second time";
}

TEST(LibSmStart, withoutDeferralEverythingIsPublishedWhenTheConstructorReturns) {
  Switch agent(instAtOnce);
  agent.topoIs("B");
  agent.vlanIs(20, "B");
  agent.memberIs(20, "Ethernet2");
  StateLog log(agent.state);
  bool hadBoth = false;
  log.onceAt("initDone", [&] { hadBoth = agent.carries("A", "Ethernet1", 10) && agent.carries("B", "Ethernet2", 20); });
  agent.startLibrary();
  EXPECT_TRUE(hadBoth) << "the first complete drain has come to every VLAN";
  EXPECT_TRUE(agent.state->initDone());
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan().empty());
  EXPECT_TRUE(agent.libSm->topoLibCodef()->codefState()->idle());
}

TEST(LibSmStart, endOfTheInitialPassIsTracedAndLogged) {
  Agent agent(inst);
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(8));
  const ::Test::Messages messages;
  agent.startLibrary();
  EXPECT_EQ(trace.lines(), (Lines{{8, "LibSm::handleInitialized"}, {8, "LibSm::doOnInitDone"}}));
  EXPECT_EQ(messages.texts(), (Texts{"LibSm::doOnInitDone"}));
}

TEST(LibSmStart, endOfTheInitialPassComesOnceForOneState) {
  for (const bool isDeferred : {true, false}) {
    Agent agent({.status = Start::Status::instance, .deferProcessing = isDeferred});
    agent.vlanIs(10, "A");
    const StateLog log(agent.state);
    const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(8));
    agent.startLibrary();
    agent.drain();
    EXPECT_EQ(trace.count(8, "LibSm::doOnInitDone"), 1U);
    EXPECT_EQ(log.lines, (Texts{"initDone"}));
  }
}

TEST(LibSmStart, onAStateThatIsDoneAlreadyItIsNotToldAgain) {
  for (const bool hasVlan : {false, true}) {
    Agent agent(inst);
    if (hasVlan) agent.vlanIs(10, "A");
    agent.state->initDoneIs(true);
    const StateLog log(agent.state);
    const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(8));
    agent.startLibrary();
    agent.drain();
    EXPECT_FALSE(trace.has(8, "LibSm::doOnInitDone"));
    EXPECT_TRUE(log.lines.empty());
  }
}

TEST(LibSmStart, marksEveryMappedVlanAfterInitDone) {
  Switch agent(inst);
  agent.vlanIs(20, "nowhere");
  agent.startLibrary();
  ::Test::TraceLines trace("TopoLib", Mox::traceLevel(4) | Mox::traceLevel(8));
  StateLog log(agent.state);
  log.onceAt("initDone", [&] { trace.clear(); });
  while (!agent.state->initDone()) Mox::activityManager()->dispatch();
  ASSERT_GE(trace.lines().size(), 4U);
  EXPECT_EQ(Lines(trace.lines().begin(), trace.lines().begin() + 4),
            (Lines{{8, "doOnVlanPortUpdate vid 10 intf "},
                   {4, "doOnVlanPortUpdate: setting dirty to true 10"},
                   {8, "doOnVlanPortUpdate vid 20 intf "},
                   {4, "doOnVlanPortUpdate: setting dirty to true 20"}}));
}

// VLANs that leave while marks are dropped yet.

/// Works the backlog off item by item until a VLAN has been taken into service.
void dispatchUntilInService(Agent& agent, VlanId vid) {
  agent.libSm->topoLibCodef()->yieldAfterOneIs(true);
  for (int i = 0; i < 100 && agent.libSm->vlanConfigSm(vid) == nullptr; ++i) Mox::activityManager()->dispatch();
  ASSERT_NE(agent.libSm->vlanConfigSm(vid), nullptr);
  ASSERT_FALSE(agent.state->initDone());
}

TEST(LibSmStart, vlanThatIsUnmappedDuringTheInitialPassLeavesItsTopologyAfterIt) {
  Switch agent(inst);
  agent.vlanIs(20, "A");
  agent.memberIs(20, "Ethernet2");
  agent.startLibrary();
  dispatchUntilInService(agent, 10);
  ASSERT_TRUE(vlanMappedToTopo(agent.libSm, "A", 10));
  agent.config->vidToTopoMapDel(10);
  agent.drain();
  EXPECT_TRUE(agent.state->initDone());
  EXPECT_FALSE(vlanMappedToTopo(agent.libSm, "A", 10));
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 20));
}

TEST(LibSmStart, vlanThatLosesItsConfigurationDuringTheInitialPassGoesOutOfServiceAfterIt) {
  Switch agent(inst);
  agent.vlanIs(5, "nowhere");
  agent.memberIs(5, "Ethernet2");
  agent.startLibrary();
  dispatchUntilInService(agent, 5);
  ASSERT_TRUE(agent.libSm->topoToVlanMap()->topoOfVlan(5).empty()) << "it is registered nowhere";
  agent.config->vidToTopoMapDel(5);
  agent.brConfig->vlanConfigDel(5);
  agent.drain();
  EXPECT_TRUE(agent.state->initDone());
  EXPECT_EQ(agent.libSm->vlanConfigSm(5), nullptr);
  EXPECT_NE(agent.libSm->vlanConfigSm(10), nullptr);
}

}  // namespace Topology::Library::LibSmStartTest
