#include "bridging/Config.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"

namespace Bridging::ConfigTest {

using Quill::IntfId;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event vlanConfigChanged{Config::vlanConfigAttr.id(), true};
constexpr Recorder::Event vlanPortConfigChanged{VlanConfig::vlanPortConfigAttr.id(), true};
constexpr Recorder::Event floodsetExpandedVlanChanged{VlanConfig::floodsetExpandedVlanAttr.id(), false};

const VlanPortConfig tagged;
const VlanPortConfig untagged(AllowedTrafficDirection::both, true, true);

TEST(BridgingConfig, isMadeEmptyWithItsName) {
  const auto config = configFactory("bridging");
  EXPECT_EQ(config->name(), "bridging");
  EXPECT_EQ(config->parent(), nullptr);
  EXPECT_TRUE(config->vlanConfig().empty());
  EXPECT_NE(configFactory("bridging"), config);
}

TEST(BridgingConfig, vlanConfigIsMakesAVlan) {
  const auto config = configFactory("bridging");
  const auto vlan = config->vlanConfigIs(10);
  EXPECT_EQ(config->vlanConfig(10), vlan.get());
  EXPECT_EQ(config->vlanConfig().size(), 1U);
  EXPECT_EQ(vlan->vlanId(), VlanId(10));
  EXPECT_EQ(vlan->parent(), config.get());
  EXPECT_EQ(config->vlanConfig(11), nullptr);
}

TEST(BridgingConfig, vlanConfigIsNotifiesOnceWithItsKey) {
  const auto config = configFactory("bridging");
  const Recorder all(config.get());
  const KeyRecorder<VlanId> vlans(config.get(), Config::vlanConfigAttr);
  config->vlanConfigIs(10);
  EXPECT_EQ(all.events, Events{vlanConfigChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(BridgingConfig, vlanConfigIsThereWhenItIsNotified) {
  const auto config = configFactory("bridging");
  const Recorder recorder(config.get(), [&](auto, const void*) {
    ASSERT_NE(config->vlanConfig(10), nullptr);
    EXPECT_EQ(config->vlanConfig(10)->parent(), config.get());
  });
  config->vlanConfigIs(10);
  EXPECT_EQ(recorder.events.size(), 1U);
}

TEST(BridgingConfig, vlanConfigIsOfExistingVlanReturnsItSilently) {
  const auto config = configFactory("bridging");
  const auto vlan = config->vlanConfigIs(10);
  const auto internal = config->vlanConfigIs(20, true);
  const Recorder recorder(config.get());
  EXPECT_EQ(config->vlanConfigIs(10), vlan);
  EXPECT_EQ(config->vlanConfigIs(10, false), vlan);
  EXPECT_EQ(config->vlanConfigIs(20, true), internal);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(BridgingConfig, vlanIsInternalOnlyWhenMadeSo) {
  const auto config = configFactory("bridging");
  EXPECT_FALSE(config->vlanConfigIs(10)->internal());
  EXPECT_FALSE(config->vlanConfigIs(11, false)->internal());
  EXPECT_TRUE(config->vlanConfigIs(12, true)->internal());
}

TEST(BridgingConfig, vlanConfigIsOfExistingVlanWithOtherInternalRaisesAndChangesNothing) {
  const auto config = configFactory("bridging");
  const auto vlan = config->vlanConfigIs(10);
  const auto internal = config->vlanConfigIs(20, true);
  const Recorder recorder(config.get());
  try {
    config->vlanConfigIs(10, true);
    ADD_FAILURE() << "no exception";
  } catch (const Mox::MutatorReinstantiatingException& e) {
    EXPECT_STREQ(e.what(), "vlanConfigIs: a member of this key exists, made with other arguments");
  }
  EXPECT_THROW(config->vlanConfigIs(20), Mox::MutatorReinstantiatingException);
  EXPECT_EQ(config->vlanConfig(10), vlan.get());
  EXPECT_EQ(config->vlanConfig(20), internal.get());
  EXPECT_FALSE(vlan->internal());
  EXPECT_TRUE(internal->internal());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(BridgingConfig, vlanConfigIsOfNoVlanRaisesAndChangesNothing) {
  const auto config = configFactory("bridging");
  const Recorder recorder(config.get());
  EXPECT_THROW(config->vlanConfigIs(0), Mox::RangeException);
  EXPECT_THROW(config->vlanConfigIs(4095), Mox::RangeException);
  EXPECT_TRUE(config->vlanConfig().empty());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(BridgingConfig, vlanConfigDelRemovesTheVlanAndNotifiesOnce) {
  const auto config = configFactory("bridging");
  const auto vlan = config->vlanConfigIs(10);
  config->vlanConfigIs(20);
  const KeyRecorder<VlanId> vlans(config.get(), Config::vlanConfigAttr);
  const Recorder all(config.get(), [&](auto, const void*) { EXPECT_EQ(config->vlanConfig(10), nullptr); });
  config->vlanConfigDel(10);
  EXPECT_EQ(config->vlanConfig().size(), 1U);
  EXPECT_EQ(vlan->parent(), nullptr);
  EXPECT_EQ(all.events, Events{vlanConfigChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(BridgingConfig, vlanConfigDelOfAbsentVlanIsSilent) {
  const auto config = configFactory("bridging");
  config->vlanConfigIs(20);
  const Recorder recorder(config.get());
  config->vlanConfigDel(10);
  EXPECT_EQ(config->vlanConfig().size(), 1U);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(BridgingConfig, vlanConfigDelAllNotifiesEachVlan) {
  const auto config = configFactory("bridging");
  for (const int vid : {30, 10, 20}) config->vlanConfigIs(vid);
  const Recorder all(config.get());
  const KeyRecorder<VlanId> vlans(config.get(), Config::vlanConfigAttr);
  config->vlanConfigDelAll();
  EXPECT_TRUE(config->vlanConfig().empty());
  EXPECT_EQ(all.events, Events(3, vlanConfigChanged));
  EXPECT_EQ(vlans.keys, (std::vector<VlanId>{10, 20, 30}));
  config->vlanConfigDelAll();
  EXPECT_EQ(all.events.size(), 3U);
}

TEST(BridgingConfig, vlanMadeAgainIsANewEntity) {
  const auto config = configFactory("bridging");
  const auto old = config->vlanConfigIs(10);
  old->vlanPortConfigIs("Ethernet1", tagged);
  old->floodsetExpandedVlanIs(20);
  config->vlanConfigDel(10);
  const auto made = config->vlanConfigIs(10, true);
  EXPECT_NE(made, old);
  EXPECT_TRUE(made->internal());
  EXPECT_TRUE(made->vlanPortConfig().empty());
  EXPECT_TRUE(made->floodsetExpandedVlan().isNone());
}

TEST(BridgingConfig, iterationVisitsEachVlan) {
  const auto config = configFactory("bridging");
  for (const int vid : {4094, 1, 100}) config->vlanConfigIs(vid);
  std::map<VlanId, const VlanConfig*> visited;
  for (const auto& [vid, vlan] : config->vlanConfig()) {
    static_assert(std::is_same_v<decltype(vlan), const VlanConfig&>);
    EXPECT_TRUE(visited.emplace(vid, &vlan).second);
  }
  ASSERT_EQ(visited.size(), 3U);
  for (const auto& [vid, vlan] : visited) EXPECT_EQ(vlan, config->vlanConfig(vid));
}

TEST(VlanConfig, isMadeWithDefaults) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  EXPECT_TRUE(vlan->vlanPortConfig().empty());
  EXPECT_TRUE(vlan->floodsetExpandedVlan().isNone());
  EXPECT_EQ(vlan->name(), "");
}

TEST(VlanConfig, vlanPortConfigIsStoresAndNotifiesOnceWithItsKey) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  const Recorder all(vlan.get());
  const KeyRecorder<IntfId> ports(vlan.get(), VlanConfig::vlanPortConfigAttr);
  vlan->vlanPortConfigIs("Ethernet1", untagged);
  ASSERT_NE(vlan->vlanPortConfig("Ethernet1"), nullptr);
  EXPECT_EQ(*vlan->vlanPortConfig("Ethernet1"), untagged);
  EXPECT_EQ(vlan->vlanPortConfig("Ethernet2"), nullptr);
  EXPECT_EQ(all.events, Events{vlanPortConfigChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(VlanConfig, vlanPortConfigIsOfEqualValueIsSilent) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  vlan->vlanPortConfigIs("Ethernet1", untagged);
  const Recorder recorder(vlan.get());
  vlan->vlanPortConfigIs("Ethernet1", VlanPortConfig(AllowedTrafficDirection::both, true, true));
  EXPECT_TRUE(recorder.events.empty());
}

TEST(VlanConfig, vlanPortConfigIsOfAnotherValueNotifiesOnceMore) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  vlan->vlanPortConfigIs("Ethernet1", untagged);
  const Recorder recorder(vlan.get(),
                          [&](auto, const void*) { EXPECT_EQ(*vlan->vlanPortConfig("Ethernet1"), tagged); });
  vlan->vlanPortConfigIs("Ethernet1", tagged);
  EXPECT_EQ(recorder.events, Events{vlanPortConfigChanged});
  EXPECT_EQ(vlan->vlanPortConfig().size(), 1U);
}

TEST(VlanConfig, vlanPortConfigDelNotifiesOnceAndOnlyWhenPresent) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  vlan->vlanPortConfigIs("Ethernet1", tagged);
  const Recorder all(vlan.get());
  const KeyRecorder<IntfId> ports(vlan.get(), VlanConfig::vlanPortConfigAttr);
  vlan->vlanPortConfigDel("Ethernet2");
  EXPECT_TRUE(all.events.empty());
  vlan->vlanPortConfigDel("Ethernet1");
  EXPECT_EQ(vlan->vlanPortConfig("Ethernet1"), nullptr);
  EXPECT_EQ(all.events, Events{vlanPortConfigChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(VlanConfig, vlanPortConfigDelAllNotifiesEachPortInOrderOfThePass) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  for (const char* intf : {"Ethernet1", "Ethernet2", "PortChannel1"}) vlan->vlanPortConfigIs(intf, tagged);
  std::vector<IntfId> pass;
  for (const auto& [intf, config] : vlan->vlanPortConfig()) pass.push_back(intf);
  const KeyRecorder<IntfId> ports(vlan.get(), VlanConfig::vlanPortConfigAttr);
  vlan->vlanPortConfigDelAll();
  EXPECT_TRUE(vlan->vlanPortConfig().empty());
  EXPECT_EQ(ports.keys, pass);
  EXPECT_EQ(pass.size(), 3U);
  vlan->vlanPortConfigDelAll();
  EXPECT_EQ(ports.keys.size(), 3U);
}

TEST(VlanConfig, iterationVisitsEachPort) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  vlan->vlanPortConfigIs("Ethernet1", tagged);
  vlan->vlanPortConfigIs("Ethernet2", untagged);
  std::map<IntfId, bool> visited;
  for (const auto& [intf, config] : vlan->vlanPortConfig()) visited.emplace(intf, config.untagged());
  EXPECT_EQ(visited, (std::map<IntfId, bool>{{"Ethernet1", false}, {"Ethernet2", true}}));
}

TEST(VlanConfig, floodsetExpandedVlanIsNotifiesOnlyOnChange) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  const Recorder recorder(vlan.get());
  vlan->floodsetExpandedVlanIs(0);
  EXPECT_TRUE(recorder.events.empty());
  vlan->floodsetExpandedVlanIs(20);
  vlan->floodsetExpandedVlanIs(20);
  EXPECT_EQ(vlan->floodsetExpandedVlan(), VlanId(20));
  EXPECT_EQ(recorder.events, Events{floodsetExpandedVlanChanged});
  vlan->floodsetExpandedVlanIs(VlanIdOrNone());
  EXPECT_TRUE(vlan->floodsetExpandedVlan().isNone());
  EXPECT_EQ(recorder.events, Events(2, floodsetExpandedVlanChanged));
}

TEST(VlanConfig, floodsetExpandedVlanIsOfBadNumberRaisesAndChangesNothing) {
  const auto vlan = configFactory("bridging")->vlanConfigIs(10);
  vlan->floodsetExpandedVlanIs(20);
  const Recorder recorder(vlan.get());
  EXPECT_THROW(vlan->floodsetExpandedVlanIs(4095), Mox::RangeException);
  EXPECT_EQ(vlan->floodsetExpandedVlan(), VlanId(20));
  EXPECT_TRUE(recorder.events.empty());
}

TEST(VlanConfig, outlivesItsConfigWhileHeld) {
  auto config = configFactory("bridging");
  const auto vlan = config->vlanConfigIs(10);
  vlan->vlanPortConfigIs("Ethernet1", untagged);
  config = nullptr;
  EXPECT_EQ(vlan->parent(), nullptr);
  EXPECT_EQ(*vlan->vlanPortConfig("Ethernet1"), untagged);
}

template <class T>
concept WritesAnythingOfConfig = requires(T& config) {
  config.vlanConfigIs(VlanId(10));
}
|| requires(T& config) { config.vlanConfigDel(VlanId(10)); }
|| requires(T& config) { config.vlanConfigDelAll(); };
template <class T>
concept WritesAnythingOfVlan = requires(T& vlan) {
  vlan.vlanPortConfigIs("Ethernet1", tagged);
}
|| requires(T& vlan) { vlan.vlanPortConfigDel("Ethernet1"); }
|| requires(T& vlan) { vlan.vlanPortConfigDelAll(); }
|| requires(T& vlan) { vlan.floodsetExpandedVlanIs(20); };
static_assert(WritesAnythingOfConfig<Config> && !WritesAnythingOfConfig<const Config>);
static_assert(WritesAnythingOfVlan<VlanConfig> && !WritesAnythingOfVlan<const VlanConfig>);

TEST(BridgingConfig, isReadThroughPointerToConst) {
  const auto writable = configFactory("bridging");
  writable->vlanConfigIs(10)->vlanPortConfigIs("Ethernet1", tagged);
  const Mox::Ptr<const Config> config = writable;
  const Recorder recorder(config.get());
  const auto* const vlan = config->vlanConfig(10);
  static_assert(std::is_same_v<decltype(vlan), const VlanConfig* const>);
  EXPECT_EQ(vlan, writable->vlanConfig(10));
  EXPECT_NE(vlan->vlanPortConfig("Ethernet1"), nullptr);
  writable->vlanConfigIs(20);
  EXPECT_EQ(recorder.events, Events{vlanConfigChanged});
}

}  // namespace Bridging::ConfigTest
