// What LibSm does when VLANs come and go.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Recorder.h"
#include "tests/support/TraceLines.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmVlanTest {

using Bridging::VlanId;
using Test::Agent;
using Test::assertionReport;
using Test::inst;
using Test::instAtOnce;
using Test::KeyRecorder;
using Test::Recorder;
using Test::Start;
using Test::StateLog;
using Test::Switch;
using Test::textOf;
using Lines = std::vector<std::pair<unsigned, std::string>>;
using Texts = std::vector<std::string>;

const std::string notInitialized = "initialized() && \"Did you forget to set ethIntfStatusDir?\"";

/// Started, with everything processed and nothing waiting.
class Running : public Switch {
 public:
  explicit Running(const Start& how = inst) : Switch(how) {
    startLibrary();
    drain();
  }

  [[nodiscard]] bool isWhollyDirty(VlanId vid) const {
    const DirtyVlan* const dv = libSm->dirtyVlanDir()->dirtyVlan(vid);
    return dv != nullptr && dv->dirty() && dv->intf().empty();
  }
};

TEST(LibSmVlan, mappingMarksTheVlanAndChangesNothingElse) {
  Running agent;
  agent.memberIs(20, "Ethernet1");
  agent.drain();
  const auto before = ::Test::contentsOf(*agent.state);
  const StateLog log(agent.state);
  agent.vlanIs(20, "A");
  EXPECT_TRUE(agent.isWhollyDirty(20));
  EXPECT_EQ(agent.libSm->dirtyVlanDir()->dirtyVlan().size(), 1U);
  EXPECT_TRUE(log.lines.empty());
  EXPECT_EQ(::Test::contentsOf(*agent.state), before);
  EXPECT_FALSE(vlanMappedToTopo(agent.libSm, "A", 20));
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 20));
  EXPECT_TRUE(vlanMappedToTopo(agent.libSm, "A", 20));
}

TEST(LibSmVlan, mappingTracesTheMarkAlone) {
  Running agent;
  const ::Test::TraceLines trace("TopoLib");
  agent.vlanIs(20, "A");
  EXPECT_EQ(trace.lines(), (Lines{{8, "doOnVlanPortUpdate vid 20 intf "},
                                  {9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"},
                                  {4, "doOnVlanPortUpdate: setting dirty to true 20"},
                                  {9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"}}));
}

TEST(LibSmVlan, unmappingMarksTheVlanAndTheBacklogRemovesIt) {
  Running agent;
  const StateLog log(agent.state);
  agent.config->vidToTopoMapDel(10);
  EXPECT_TRUE(agent.isWhollyDirty(10));
  EXPECT_TRUE(vlanMappedToTopo(agent.libSm, "A", 10));
  EXPECT_TRUE(log.lines.empty());
  agent.drain();
  EXPECT_FALSE(vlanMappedToTopo(agent.libSm, "A", 10));
  EXPECT_EQ(log.lines, (Texts{"A/Ethernet1 no 10", "-A/Ethernet1"}));
  EXPECT_NE(agent.state->topo("A"), nullptr);
}

TEST(LibSmVlan, configurationThatComesOrGoesMarksTheVlanAndTracesIt) {
  Running agent;
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(8));
  agent.brConfig->vlanConfigIs(20);
  EXPECT_TRUE(agent.isWhollyDirty(20));
  EXPECT_EQ(agent.libSm->vlanConfigSm(20), nullptr) << "the backlog has not come to it";
  agent.brConfig->vlanConfigDel(10);
  EXPECT_TRUE(agent.isWhollyDirty(10));
  EXPECT_NE(agent.libSm->vlanConfigSm(10), nullptr);
  EXPECT_EQ(trace.lines(), (Lines{{8, "LibSm::handleVlanConfig for vlan 20"},
                                  {8, "doOnVlanPortUpdate vid 20 intf "},
                                  {8, "LibSm::handleVlanConfig for vlan 10"},
                                  {8, "doOnVlanPortUpdate vid 10 intf "}}));
  agent.drain();
  EXPECT_NE(agent.libSm->vlanConfigSm(20), nullptr);
  EXPECT_EQ(agent.libSm->vlanConfigSm(10), nullptr);
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
}

TEST(LibSmVlan, withoutDeferralEachChangeIsProcessedInsideItsNotification) {
  Running agent(instAtOnce);
  agent.memberIs(20, "Ethernet1");
  EXPECT_NE(agent.libSm->vlanConfigSm(20), nullptr);
  agent.vlanIs(20, "A");
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 20));
  agent.config->vidToTopoMapDel(20);
  EXPECT_FALSE(agent.carries("A", "Ethernet1", 20));
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan().empty());
}

TEST(LibSmVlan, vlanThatMovesLeavesOneTopologyAndEntersTheOther) {
  Running agent;
  agent.topoIs("B");
  agent.topoPortIs("B", "Ethernet1");
  agent.drain();
  const StateLog log(agent.state);
  agent.vlanIs(10, "B");
  agent.drain();
  EXPECT_EQ(log.lines, (Texts{"A/Ethernet1 no 10", "-A/Ethernet1", "+B/Ethernet1", "B/Ethernet1 10",
                              "B/Ethernet1 active", "B/Ethernet1 state forwarding"}));
  EXPECT_EQ(agent.libSm->topoToVlanMap()->topoOfVlan(10), "B");
}

// Questions.

TEST(LibSmVlan, internalVlanIsSkippedOnlyWhereThatWasAskedFor) {
  for (const bool isIgnored : {true, false}) {
    Agent agent({.status = Start::Status::instance, .ignoreInternalVlan = isIgnored});
    agent.brConfig->vlanConfigIs(10, true);
    agent.brConfig->vlanConfigIs(20, false);
    agent.startLibrary();
    EXPECT_EQ(skipInternalVlan(agent.libSm, 10), isIgnored);
    EXPECT_FALSE(skipInternalVlan(agent.libSm, 20));
    EXPECT_FALSE(skipInternalVlan(agent.libSm, 30)) << "it has no configuration";
  }
}

TEST(LibSmVlan, skippedInternalVlanIsNotTakenIntoService) {
  for (const bool isIgnored : {true, false}) {
    Agent agent({.status = Start::Status::instance, .ignoreInternalVlan = isIgnored});
    agent.topoIs("A");
    agent.vlanIs(10, "A");
    agent.brConfig->vlanConfigIs(10, true)->vlanPortConfigIs("Ethernet1", {});
    agent.startLibrary();
    agent.drain();
    EXPECT_EQ(agent.libSm->vlanConfigSm(10) == nullptr, isIgnored);
    EXPECT_EQ(vlanMappedToTopo(agent.libSm, "A", 10), !isIgnored);
    EXPECT_EQ(agent.carries("A", "Ethernet1", 10), !isIgnored);
  }
}

TEST(LibSmVlan, vlanIsMappedToTheTopologyWithWhichItIsRegistered) {
  Running agent;
  EXPECT_TRUE(vlanMappedToTopo(agent.libSm, "A", 10));
  EXPECT_FALSE(vlanMappedToTopo(agent.libSm, "A", 20));
  EXPECT_FALSE(vlanMappedToTopo(agent.libSm, "B", 10)) << "the topology has no entry";
  EXPECT_FALSE(vlanMappedToTopo(agent.libSm, "", 10));
  agent.libSm->topoToVlanMap()->mappedVlanIs("B")->vlanIs(30, false);
  EXPECT_TRUE(vlanMappedToTopo(agent.libSm, "B", 30)) << "its presence counts";
  agent.libSm->topoToVlanMapDel();
  EXPECT_FALSE(vlanMappedToTopo(agent.libSm, "A", 10));
}

// Into service and out of it.

TEST(LibSmVlan, comesIntoServiceWithAStateMachineOnItsConfiguration) {
  Running agent;
  const auto vlanConfig = agent.brConfig->vlanConfigIs(20);
  const KeyRecorder<VlanId> changes(agent.libSm.get(), LibSm::vlanConfigSmAttr);
  agent.libSm->doVlanMapped(20, vlanConfig);
  const auto* const sm = agent.libSm->vlanConfigSm(20);
  ASSERT_NE(sm, nullptr);
  EXPECT_EQ(sm->vlanConfig(), vlanConfig.get());
  EXPECT_EQ(sm->libSm(), agent.libSm.get());
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(changes.keys, std::vector<VlanId>{20});
}

TEST(LibSmVlan, comesIntoServiceOnceOnOneConfiguration) {
  Running agent;
  const auto vlanConfig = agent.brConfig->vlanConfigIs(20);
  agent.libSm->doVlanMapped(20, vlanConfig);
  const Mox::Ptr<VlanConfigSm> sm = agent.libSm->vlanConfigSm(20);
  const Recorder recorder(agent.libSm.get());
  agent.libSm->doVlanMapped(20, vlanConfig);
  EXPECT_EQ(agent.libSm->vlanConfigSm(20), sm.get());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibSmVlan, isReplacedInServiceOnAnotherConfiguration) {
  Running agent;
  agent.libSm->doVlanMapped(20, agent.brConfig->vlanConfigIs(20));
  const Mox::Ptr<VlanConfigSm> old = agent.libSm->vlanConfigSm(20);
  agent.brConfig->vlanConfigDel(20);
  const auto vlanConfig = agent.brConfig->vlanConfigIs(20);
  const KeyRecorder<VlanId> changes(agent.libSm.get(), LibSm::vlanConfigSmAttr);
  agent.libSm->doVlanMapped(20, vlanConfig);
  EXPECT_NE(agent.libSm->vlanConfigSm(20), old.get());
  EXPECT_EQ(agent.libSm->vlanConfigSm(20)->vlanConfig(), vlanConfig.get());
  EXPECT_TRUE(old->isRetired());
  EXPECT_EQ(old->vlanConfig(), nullptr) << "its reactor is unbound";
  EXPECT_EQ(changes.keys, (std::vector<VlanId>{20, 20})) << "it goes and comes";
}

TEST(LibSmVlan, twoNullConfigurationsAreTheSame) {
  Running agent;
  agent.libSm->doVlanMapped(20, nullptr);
  const Mox::Ptr<VlanConfigSm> sm = agent.libSm->vlanConfigSm(20);
  ASSERT_NE(sm, nullptr);
  EXPECT_EQ(sm->vlanConfig(), nullptr);
  agent.libSm->doVlanMapped(20, nullptr);
  EXPECT_EQ(agent.libSm->vlanConfigSm(20), sm.get());
  agent.libSm->doVlanMapped(20, agent.brConfig->vlanConfigIs(20));
  EXPECT_NE(agent.libSm->vlanConfigSm(20), sm.get());
}

TEST(LibSmVlan, comingIntoServiceIsTracedAndLogged) {
  Running agent;
  const auto vlanConfig = agent.brConfig->vlanConfigIs(20);
  ::Test::TraceLines trace("TopoLib");
  ::Test::Messages messages;
  agent.libSm->doVlanMapped(20, vlanConfig);
  const std::string printed = textOf(vlanConfig);
  ASSERT_GE(trace.lines().size(), 4U);
  EXPECT_EQ(Lines(trace.lines().begin(), trace.lines().begin() + 4),
            (Lines{{8, "doVlanMapped"},
                   {2, " vlanConfigSm( vid ) is null vid is 20"},
                   {2, " vlanConfig is " + printed},
                   {2, "Delete old vlanConfigSm and create new for vlan 20"}}));
  EXPECT_EQ(messages.texts(), (Texts{"Delete old vlanConfigSm and create new for vlan 20"}))
      << "also when there was no old one";

  trace.clear();
  messages.clear();
  const auto* const sm = agent.libSm->vlanConfigSm(20);
  agent.libSm->doVlanMapped(20, vlanConfig);
  EXPECT_EQ(trace.lines(), (Lines{{8, "doVlanMapped"},
                                  {2, textOf(" vlanConfigSm( vid ) is ", static_cast<const void*>(sm), " vid is 20")},
                                  {2, " vlanConfigSm( vid )->vlanConfig() is " + printed},
                                  {2, " vlanConfig is " + printed},
                                  {2, "VlanConfigSm already there for vlan 20"}}));
  EXPECT_TRUE(messages.texts().empty());
}

TEST(LibSmVlan, goesOutOfServiceTracedAndLogged) {
  Running agent;
  const Mox::Ptr<VlanConfigSm> sm = agent.libSm->vlanConfigSm(10);
  const ::Test::TraceLines trace("TopoLib");
  const ::Test::Messages messages;
  const KeyRecorder<VlanId> changes(agent.libSm.get(), LibSm::vlanConfigSmAttr);
  agent.libSm->doVlanUnmapped(10);
  EXPECT_EQ(agent.libSm->vlanConfigSm(10), nullptr);
  EXPECT_TRUE(sm->isRetired());
  EXPECT_EQ(changes.keys, std::vector<VlanId>{10});
  EXPECT_EQ(trace.lines(), (Lines{{8, "doVlanUnmapped"}, {2, "libSm: deleting VlanConfigSm for vlan 10"}}));
  EXPECT_EQ(messages.texts(), (Texts{"libSm: deleting VlanConfigSm for vlan 10"}));
}

TEST(LibSmVlan, goesOutOfServiceInSilenceWhenItIsNotInService) {
  Running agent;
  const ::Test::TraceLines trace("TopoLib");
  const ::Test::Messages messages;
  const Recorder recorder(agent.libSm.get());
  agent.libSm->doVlanUnmapped(20);
  EXPECT_EQ(trace.lines(), (Lines{{8, "doVlanUnmapped"}}));
  EXPECT_TRUE(messages.texts().empty());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibSmVlan, lowestAndHighestVlanMayGoOutOfService) {
  Running agent;
  agent.libSm->doVlanUnmapped(1);
  agent.libSm->doVlanUnmapped(4094);
  EXPECT_NE(agent.libSm->vlanConfigSm(10), nullptr);
}

TEST(LibSmVlan, stateMachineIsAskedForByItsConfiguration) {
  Running agent;
  const Mox::Ptr<const Bridging::VlanConfig> vlanConfig = agent.brConfig->vlanConfig(10);
  const Mox::Ptr<VlanConfigSm> sm = agent.libSm->vlanConfigSm(10);
  EXPECT_EQ(agent.libSm->vlanConfigSmIs(10, vlanConfig), sm);
  const Recorder recorder(agent.libSm.get());
  EXPECT_THROW(agent.libSm->vlanConfigSmIs(10, agent.brConfig->vlanConfigIs(20)), Mox::MutatorReinstantiatingException);
  EXPECT_THROW(agent.libSm->vlanConfigSmIs(10, nullptr), Mox::MutatorReinstantiatingException);
  EXPECT_EQ(agent.libSm->vlanConfigSm(10), sm.get());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibSmVlan, allStateMachinesAreRemovedAndRetired) {
  Running agent;
  agent.libSm->doVlanMapped(20, nullptr);
  const Mox::Ptr<VlanConfigSm> one = agent.libSm->vlanConfigSm(10);
  const Mox::Ptr<VlanConfigSm> two = agent.libSm->vlanConfigSm(20);
  const KeyRecorder<VlanId> changes(agent.libSm.get(), LibSm::vlanConfigSmAttr);
  agent.libSm->vlanConfigSmDelAll();
  EXPECT_TRUE(agent.libSm->vlanConfigSm().empty());
  EXPECT_TRUE(one->isRetired());
  EXPECT_TRUE(two->isRetired());
  EXPECT_EQ(std::set<VlanId>(changes.keys.begin(), changes.keys.end()), (std::set<VlanId>{10, 20}));
  agent.libSm->vlanConfigSmDel(10);
  EXPECT_EQ(changes.keys.size(), 2U);
}

TEST(LibSmVlanDeathTest, mappingBeforeTheStartUpAborts) {
  Switch agent;
  agent.startWaiting();
  EXPECT_DEATH(agent.vlanIs(20, "A"), assertionReport(notInitialized, "LibSm::handleVidToTopoMap"));
  EXPECT_DEATH(agent.config->vidToTopoMapDel(10), assertionReport(notInitialized, "LibSm::handleVidToTopoMap"));
}

TEST(LibSmVlanDeathTest, configurationBeforeTheStartUpAborts) {
  Switch agent;
  agent.startWaiting();
  EXPECT_DEATH(agent.brConfig->vlanConfigIs(20), assertionReport(notInitialized, "LibSm::handleVlanConfig"));
}

TEST(LibSmVlanDeathTest, goingOutOfServiceBeforeTheStartUpAborts) {
  Switch agent;
  agent.startWaiting();
  EXPECT_DEATH(agent.libSm->doVlanUnmapped(10), assertionReport("initialized()", "LibSm::doVlanUnmapped"));
}

TEST(LibSmVlanDeathTest, vlanThatExpandsAndIsExpandedIntoAborts) {
  Running agent;
  agent.libSm->vlanToExpVlanSetMapIs(10)->someVlanIs(20);
  agent.libSm->expVlanToVlanSetMapIs(10)->someVlanIs(30);
  EXPECT_DEATH(
      agent.libSm->handleVidToTopoMap(10),
      assertionReport("!vlanToExpVlanSetMapHas( vid ) || !expVlanToVlanSetMapHas( vid )", "LibSm::moveExpansion"));
}

}  // namespace Topology::Library::LibSmVlanTest
