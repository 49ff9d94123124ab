#include "topolib/VlanConfigSm.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Recorder.h"
#include "tests/support/TraceLines.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/Switch.h"
#include "topolib/LocalIntfFilter.h"

namespace Topology::Library::VlanConfigSmTest {

using Test::assertionReport;
using Test::inst;
using Test::instAtOnce;
using Test::Recorder;
using Test::Start;
using Test::Switch;
using Lines = std::vector<std::pair<unsigned, std::string>>;
using Texts = std::vector<std::string>;

/// Everything is processed, and a VLAN 20 is configured that is not in service.
class VlanInService : public testing::Test {
 protected:
  VlanInService() {
    agent.startLibrary();
    agent.drain();
    agent.libSm->hasNotificationActiveIs(false);
    vlanConfig = agent.brConfig->vlanConfigIs(20);
    agent.libSm->hasNotificationActiveIs(true);
  }
  [[nodiscard]] Mox::Ptr<VlanConfigSm> vlanSm() { return agent.libSm->vlanConfigSmIs(20, vlanConfig); }
  [[nodiscard]] const DirtyVlan* dirtyVlan() const { return agent.libSm->dirtyVlanDir()->dirtyVlan(20); }

  Switch agent{inst};
  Mox::Ptr<Bridging::VlanConfig> vlanConfig;
};

std::uint64_t addressOf(FilterIntf& filter) { return reinterpret_cast<std::uintptr_t>(&filter); }

TEST_F(VlanInService, isMadeOfItsVlanAndConfiguration) {
  const auto sm = vlanSm();
  EXPECT_EQ(sm->vlanId(), 20U);
  EXPECT_EQ(sm->vlanConfig(), vlanConfig.get());
  EXPECT_EQ(sm->libSm(), agent.libSm.get());
  EXPECT_TRUE(sm->initialized());
  EXPECT_TRUE(sm->hasNotificationActive());
  EXPECT_EQ(vlanConfig->notifieeList()->size(), 1U);
}

TEST_F(VlanInService, factoryMakesOneThatNobodyOwns) {
  const auto sm = VlanConfigSm::VlanConfigSmIs(20, vlanConfig, agent.libSm.get());
  EXPECT_EQ(sm->references(), 1U);
  EXPECT_EQ(sm->vlanConfig(), vlanConfig.get());
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(agent.libSm->vlanConfigSm(20), nullptr);
}

TEST_F(VlanInService, marksTheWholeVlanWhenItIsMade) {
  (void)vlanSm();
  ASSERT_NE(dirtyVlan(), nullptr);
  EXPECT_TRUE(dirtyVlan()->dirty());
  EXPECT_TRUE(dirtyVlan()->intf().empty());
}

TEST_F(VlanInService, isMadeInThisOrder) {
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(4) | Mox::traceLevel(8));
  (void)vlanSm();
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleFloodsetExpandedVlan"},
                                  {8, "handleInitialized"},
                                  {4, "20: Updating vlan port configs"},
                                  {8, "doOnVlanPortUpdate vid 20 intf "},
                                  {4, "doOnVlanPortUpdate: setting dirty to true 20"},
                                  {8, "handleFloodsetExpandedVlan"},
                                  {8, "VlanConfigSm::handleFloodsetExpandedVlan vlan:20 expVlan:0"},
                                  {8, "LibSm::handleFloodsetExpandedVlan vlan:20 expVlan:0"}}));
}

TEST_F(VlanInService, hasNoFilterWhileItsOwnerHasNone) { EXPECT_EQ(vlanSm()->intfFilterPtr(), nullptr); }

TEST_F(VlanInService, takesTheFilterOfItsOwnerAndTracesIt) {
  LocalIntfFilter filter;
  agent.libSm->validIntfPtrIs(addressOf(filter));
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(4));
  EXPECT_EQ(vlanSm()->intfFilterPtr(), &filter);
  EXPECT_EQ(trace.lines(), (Lines{{4, "20: Updating vlan port configs"},
                                  {4, "Attaching a filter for topo port"},
                                  {4, "doOnVlanPortUpdate: setting dirty to true 20"}}));
}

TEST_F(VlanInService, keepsItsFilterWhenItsOwnerGetsAnother) {
  LocalIntfFilter first;
  LocalIntfFilter second;
  agent.libSm->validIntfPtrIs(addressOf(first));
  const auto sm = vlanSm();
  agent.libSm->validIntfPtrIs(addressOf(second));
  EXPECT_EQ(sm->intfFilterPtr(), &first);
  agent.libSm->validIntfPtrIs(0);
  EXPECT_EQ(sm->intfFilterPtr(), &first);
  EXPECT_EQ(agent.libSm->vlanConfigSm(10)->intfFilterPtr(), nullptr) << "it came into service before";
  agent.libSm->validIntfPtrIs(addressOf(second));
  agent.libSm->vlanConfigSmDel(20);
  EXPECT_EQ(vlanSm()->intfFilterPtr(), &second);
}

TEST_F(VlanInService, filterIsAnAttribute) {
  LocalIntfFilter filter;
  const auto sm = vlanSm();
  const Recorder recorder(sm.get());
  sm->intfFilterPtrIs(&filter);
  sm->intfFilterPtrIs(&filter);
  EXPECT_EQ(sm->intfFilterPtr(), &filter);
  EXPECT_EQ(recorder.events, (std::vector<Recorder::Event>{{VlanConfigSm::intfFilterPtrAttr.id(), false}}));
}

TEST_F(VlanInService, initialisedOnceMoreItTakesTheFilterAgain) {
  LocalIntfFilter filter;
  agent.libSm->validIntfPtrIs(addressOf(filter));
  const auto sm = vlanSm();
  agent.libSm->validIntfPtrIs(0);
  sm->handleInitialized();
  EXPECT_EQ(sm->intfFilterPtr(), nullptr);
}

TEST_F(VlanInService, marksThePortThatChanges) {
  (void)vlanSm();
  agent.drain();
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(4) | Mox::traceLevel(8));
  const ::Test::Messages messages;
  vlanConfig->vlanPortConfigIs("Ethernet1", {});
  ASSERT_NE(dirtyVlan(), nullptr);
  EXPECT_FALSE(dirtyVlan()->dirty());
  EXPECT_NE(dirtyVlan()->intf("Ethernet1"), nullptr);
  EXPECT_EQ(trace.lines(), (Lines{{8, "handleVlanPortConfig"},
                                  {4, "Marking port Ethernet1 in vlan 20 dirty "},
                                  {8, "doOnVlanPortUpdate vid 20 intf Ethernet1"},
                                  {4, "doOnVlanPortUpdate: adding intf Ethernet1 to vlan 20"}}));
  EXPECT_EQ(messages.texts(),
            (Texts{"Marking port Ethernet1 dirty", "doOnVlanPortUpdate: adding intf Ethernet1 to vlan 20"}));
}

TEST_F(VlanInService, tellsOfItsExpandedVlan) {
  (void)vlanSm();
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(8));
  vlanConfig->floodsetExpandedVlanIs(10);
  ASSERT_GE(trace.lines().size(), 3U);
  EXPECT_EQ(Lines(trace.lines().begin(), trace.lines().begin() + 3),
            (Lines{{8, "handleFloodsetExpandedVlan"},
                   {8, "VlanConfigSm::handleFloodsetExpandedVlan vlan:20 expVlan:10"},
                   {8, "LibSm::handleFloodsetExpandedVlan vlan:20 expVlan:10"}}));
  ASSERT_NE(agent.libSm->vlanToExpVlanSetMap(20), nullptr);
  EXPECT_NE(agent.libSm->vlanToExpVlanSetMap(20)->someVlan(10), false);
}

TEST_F(VlanInService, expandedVlanIsKnownWhenItIsMade) {
  vlanConfig->floodsetExpandedVlanIs(10);
  (void)vlanSm();
  EXPECT_TRUE(agent.libSm->vlanToExpVlanSetMapHas(20));
  EXPECT_TRUE(agent.libSm->expVlanToVlanSetMapHas(10));
}

TEST_F(VlanInService, withoutConfigurationItWatchesNothing) {
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(4) | Mox::traceLevel(8));
  const auto sm = agent.libSm->vlanConfigSmIs(20, nullptr);
  EXPECT_EQ(sm->vlanConfig(), nullptr);
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(trace.lines().back(), std::pair(8U, std::string("handleFloodsetExpandedVlan")));
  EXPECT_TRUE(trace.has(4, "20: Updating vlan port configs"));
  EXPECT_TRUE(vlanConfig->notifieeList()->empty());
}

TEST_F(VlanInService, isDeafOnceItIsRemoved) {
  const auto sm = vlanSm();
  agent.drain();
  agent.libSm->vlanConfigSmDel(20);
  const ::Test::TraceLines trace("TopoLib");
  vlanConfig->vlanPortConfigIs("Ethernet1", {});
  vlanConfig->floodsetExpandedVlanIs(10);
  EXPECT_TRUE(trace.lines().empty());
  EXPECT_TRUE(vlanConfig->notifieeList()->empty());
  EXPECT_EQ(sm->references(), 1U);
}

TEST_F(VlanInService, isDeafWhileItsOwnersNotificationsAreOff) {
  (void)vlanSm();
  agent.drain();
  agent.libSm->hasNotificationActiveIs(false);
  vlanConfig->vlanPortConfigIs("Ethernet1", {});
  EXPECT_EQ(dirtyVlan(), nullptr);
  agent.libSm->hasNotificationActiveIs(true);
  vlanConfig->vlanPortConfigIs("Ethernet2", {});
  ASSERT_NE(dirtyVlan(), nullptr);
  EXPECT_EQ(dirtyVlan()->intf().size(), 1U);
}

TEST(VlanConfigSmFilter, decidesWhichPortsAVlanHas) {
  for (const bool isDeferred : {true, false}) {
    Switch agent(
        {.status = Start::Status::instance, .deferProcessing = isDeferred, .intfFilterType = "LocalInterface"});
    agent.memberIs(10, "Ethernet1.5");
    agent.startLibrary();
    agent.drain();
    EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
    EXPECT_FALSE(agent.carries("A", "Ethernet1.5", 10));
    agent.memberIs(10, "Vlan7");
    agent.memberIs(10, "PortChannel3");
    agent.drain();
    EXPECT_EQ(agent.port("A", "Vlan7"), nullptr);
    EXPECT_TRUE(agent.carries("A", "PortChannel3", 10));
  }
}

TEST(VlanConfigSmDeathTest, portsAreHandledAllAtOnceOnlyBeforeItIsInitialised) {
  Switch agent(instAtOnce);
  agent.startLibrary();
  const VlanConfigSm& sm = *agent.libSm->vlanConfigSm(10);
  EXPECT_DEATH(sm.handleVlanPortConfig(), assertionReport("!initialized()", "VlanConfigSm::handleVlanPortConfig"));
}

}  // namespace Topology::Library::VlanConfigSmTest
