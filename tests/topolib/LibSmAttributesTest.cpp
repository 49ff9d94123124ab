// The attributes of LibSm that are written from outside, what it owns, and its switch.

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/Recorder.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmAttributesTest {

using Bridging::VlanId;
using Test::inst;
using Test::KeyRecorder;
using Test::Recorder;
using Test::StateLog;
using Test::Switch;
using Events = std::vector<Recorder::Event>;
using Vlans = std::vector<VlanId>;

class LibSmAttributes : public testing::Test {
 protected:
  LibSmAttributes() {
    agent.startLibrary();
    agent.drain();
    recorder.notifierIs(agent.libSm.get());
  }
  [[nodiscard]] static Recorder::Event changed(Mox::ScalarAttribute attribute) { return {attribute.id(), false}; }

  Switch agent{inst};
  LibSm& libSm() { return *agent.libSm; }
  Recorder recorder;
};

TEST_F(LibSmAttributes, thresholdIsStoredAndNotifiedOnce) {
  libSm().dirtyVlanPortThresholdIs(20);
  EXPECT_TRUE(recorder.events.empty());
  libSm().dirtyVlanPortThresholdIs(65535);
  libSm().dirtyVlanPortThresholdIs(65535);
  EXPECT_EQ(libSm().dirtyVlanPortThreshold(), 65535U);
  EXPECT_EQ(recorder.events, Events{changed(LibSm::dirtyVlanPortThresholdAttr)});
}

TEST_F(LibSmAttributes, addressOfTheFilterIsStoredAndNotifiedOnce) {
  libSm().validIntfPtrIs(0);
  libSm().validIntfPtrIs(0xFFFF'FFFF'FFFF'FFF0);
  EXPECT_EQ(libSm().validIntfPtr(), 0xFFFF'FFFF'FFFF'FFF0);
  libSm().validIntfPtrIs(0);
  EXPECT_EQ(recorder.events, (Events{changed(LibSm::validIntfPtrAttr), changed(LibSm::validIntfPtrAttr)}));
}

TEST_F(LibSmAttributes, directoryIsStoredAndNotifiedOnce) {
  const auto directory = DirtyVlanDir::DirtyVlanDirIs("other");
  libSm().dirtyVlanDirIs(directory);
  libSm().dirtyVlanDirIs(directory);
  EXPECT_EQ(libSm().dirtyVlanDir(), directory);
  EXPECT_EQ(recorder.events, Events{changed(LibSm::dirtyVlanDirAttr)});
}

// ---- the maps of VLAN expansion

static_assert(std::is_same_v<decltype(std::declval<LibSm&>().vlanToExpVlanSetMap()), const VlanToExpVlanSetMap&>);
static_assert(std::is_same_v<decltype(std::declval<LibSm&>().expVlanToVlanSetMap()), const ExpVlanToVlanSetMap&>);

TEST_F(LibSmAttributes, setOfAVlanIsMadeOnceAndNotified) {
  const KeyRecorder<VlanId> vlans(&libSm(), LibSm::vlanToExpVlanSetMapAttr);
  const auto set = libSm().vlanToExpVlanSetMapIs(10);
  EXPECT_EQ(libSm().vlanToExpVlanSetMapIs(10), set);
  EXPECT_EQ(libSm().vlanToExpVlanSetMap(10), set.get());
  EXPECT_TRUE(libSm().vlanToExpVlanSetMapHas(10));
  EXPECT_EQ(set->vlanId(), VlanId(10));
  EXPECT_EQ(set->parent(), &libSm());
  EXPECT_EQ(vlans.keys, Vlans{10});
  libSm().vlanToExpVlanSetMapDel(10);
  libSm().vlanToExpVlanSetMapDel(10);
  EXPECT_FALSE(libSm().vlanToExpVlanSetMapHas(10));
  EXPECT_EQ(set->parent(), nullptr);
  EXPECT_EQ(vlans.keys, (Vlans{10, 10}));
}

TEST_F(LibSmAttributes, setOfAnExpandedVlanIsMadeOnceAndNotified) {
  const KeyRecorder<VlanId> vlans(&libSm(), LibSm::expVlanToVlanSetMapAttr);
  const auto set = libSm().expVlanToVlanSetMapIs(10);
  EXPECT_EQ(libSm().expVlanToVlanSetMapIs(10), set);
  EXPECT_EQ(libSm().expVlanToVlanSetMap(10), set.get());
  EXPECT_TRUE(libSm().expVlanToVlanSetMapHas(10));
  EXPECT_EQ(set->vlanId(), VlanId(10));
  EXPECT_EQ(set->parent(), &libSm());
  EXPECT_EQ(vlans.keys, Vlans{10});
  libSm().expVlanToVlanSetMapDel(10);
  libSm().expVlanToVlanSetMapDel(10);
  EXPECT_FALSE(libSm().expVlanToVlanSetMapHas(10));
  EXPECT_EQ(set->parent(), nullptr);
  EXPECT_EQ(vlans.keys, (Vlans{10, 10}));
}

TEST_F(LibSmAttributes, setsOfVlansAndOfExpandedVlansAreIndependent) {
  EXPECT_NE(libSm().vlanToExpVlanSetMapIs(10), libSm().expVlanToVlanSetMapIs(10));
  const KeyRecorder<VlanId> vlans(&libSm(), LibSm::vlanToExpVlanSetMapAttr);
  libSm().expVlanToVlanSetMapIs(20);
  EXPECT_TRUE(vlans.keys.empty());
  EXPECT_EQ(libSm().vlanToExpVlanSetMap().size(), 1U);
  EXPECT_EQ(libSm().expVlanToVlanSetMap().size(), 2U);
}

TEST_F(LibSmAttributes, setsAreAllDeletedInTheOrderOfAPass) {
  const auto keysOf = [](const auto& map) {
    Vlans keys;
    for (const auto& [vid, set] : map) keys.push_back(vid);
    return keys;
  };
  for (const int vid : {1, 2, 3, 100, 4094}) {
    libSm().vlanToExpVlanSetMapIs(vid);
    libSm().expVlanToVlanSetMapIs(vid);
  }
  const Vlans vlanPass = keysOf(libSm().vlanToExpVlanSetMap());
  const Vlans expandedPass = keysOf(libSm().expVlanToVlanSetMap());
  const KeyRecorder<VlanId> vlans(&libSm(), LibSm::vlanToExpVlanSetMapAttr);
  const KeyRecorder<VlanId> expanded(&libSm(), LibSm::expVlanToVlanSetMapAttr);
  libSm().vlanToExpVlanSetMapDelAll();
  EXPECT_TRUE(libSm().vlanToExpVlanSetMap().empty());
  EXPECT_EQ(vlans.keys, vlanPass);
  EXPECT_TRUE(expanded.keys.empty());
  libSm().expVlanToVlanSetMapDelAll();
  EXPECT_TRUE(libSm().expVlanToVlanSetMap().empty());
  EXPECT_EQ(expanded.keys, expandedPass);
}

// ---- what it owns

TEST_F(LibSmAttributes, mapIsKeptByItsNameAndReplacedByAnother) {
  const auto map = libSm().topoToVlanMap();
  EXPECT_EQ(libSm().topoToVlanMapIs("topoToVlanMap"), map);
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_NE(libSm().topoToVlanMapIs("other"), map);
  libSm().topoToVlanMapDel();
  EXPECT_EQ(libSm().topoToVlanMap(), nullptr);
  ASSERT_FALSE(recorder.events.empty());
  EXPECT_EQ(recorder.events.back(), changed(LibSm::topoToVlanMapAttr));
}

TEST_F(LibSmAttributes, processorIsKeptOnItsArgumentsAndReplacedOnOthers) {
  const auto codef = libSm().topoLibCodef();
  const Mox::Ptr<const Mox::Clock> clock = codef->clock();
  EXPECT_EQ(libSm().topoLibCodefIs(&libSm(), libSm().dirtyVlanDir(), clock), codef);
  EXPECT_TRUE(recorder.events.empty());
  const auto directory = DirtyVlanDir::DirtyVlanDirIs("other");
  const auto made = libSm().topoLibCodefIs(&libSm(), directory, clock);
  EXPECT_NE(made, codef);
  EXPECT_EQ(libSm().topoLibCodef(), made);
  EXPECT_EQ(made->dirtyVlanDir(), directory);
  EXPECT_TRUE(made->hasNotificationActive());
  EXPECT_TRUE(codef->isRetired());
  EXPECT_NE(libSm().topoLibCodefIs(&libSm(), directory, nullptr), made);
  libSm().topoLibCodefDel();
  EXPECT_EQ(libSm().topoLibCodef(), nullptr);
  EXPECT_TRUE(made->isRetired());
  EXPECT_EQ(recorder.events.size(), 3U);
}

TEST_F(LibSmAttributes, switchedOffItAndAllItOwnsAreDeaf) {
  libSm().hasNotificationActiveIs(false);
  EXPECT_FALSE(libSm().topoLibCodef()->hasNotificationActive());
  EXPECT_FALSE(libSm().topoConfigSm("A")->hasNotificationActive());
  EXPECT_FALSE(libSm().vlanConfigSm(10)->hasNotificationActive());
  const StateLog log(agent.state);
  agent.config->topoConfigIs("B", 2);
  agent.vlanIs(20, "A");
  agent.memberIs(10, "Ethernet2");
  agent.brConfig->vlanConfigIs(30);
  agent.statusInst->topoStatusDel("A");
  agent.topoPortIs("A", "Ethernet1", Bridging::Topology::PortState::learning);
  agent.drain();
  EXPECT_TRUE(log.lines.empty());
  EXPECT_TRUE(libSm().dirtyVlanDir()->dirtyVlan().empty());
}

TEST_F(LibSmAttributes, switchedOnAgainItReactsToWhatComes) {
  libSm().hasNotificationActiveIs(false);
  libSm().hasNotificationActiveIs(true);
  agent.config->topoConfigIs("B", 2);
  EXPECT_NE(agent.state->topo("B"), nullptr);
  agent.memberIs(10, "Ethernet2");
  agent.topoPortIs("A", "Ethernet1", Bridging::Topology::PortState::learning);
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 10));
  EXPECT_EQ(agent.port("A", "Ethernet1")->state(), Bridging::Topology::PortState::learning);
}

TEST_F(LibSmAttributes, switchIsPassedOnOnlyWhenItChanges) {
  libSm().topoConfigSm("A")->hasNotificationActiveIs(false);
  libSm().hasNotificationActiveIs(true);
  EXPECT_FALSE(libSm().topoConfigSm("A")->hasNotificationActive()) << "it was on already";
}

TEST_F(LibSmAttributes, factoryMakesOneThatNobodyOwns) {
  const auto made = LibSm::LibSmIs("mine", agent.config, nullptr, agent.statusInst, agent.brConfig,
                                   libStateFactory("other"), LibSmMode::createStatus, true, true, 0);
  EXPECT_EQ(made->references(), 1U);
  EXPECT_TRUE(made->initialized());
  EXPECT_EQ(made->dirtyVlanPortThreshold(), 20U);
  EXPECT_NE(agent.root->libSm(), made);
}

}  // namespace Topology::Library::LibSmAttributesTest
