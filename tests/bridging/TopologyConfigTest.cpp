#include "bridging/TopologyConfig.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"

namespace Bridging::Topology::TopologyConfigTest {

using Mox::String;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event vidToTopoMapChanged{Config::vidToTopoMapAttr.id(), true};
constexpr Recorder::Event topoConfigChanged{Config::topoConfigAttr.id(), true};

TEST(TopologyConfig, isMadeEmptyWithItsName) {
  const auto config = configFactory("config");
  EXPECT_EQ(config->name(), "config");
  EXPECT_EQ(config->parent(), nullptr);
  EXPECT_TRUE(config->vidToTopoMap().empty());
  EXPECT_TRUE(config->topoConfig().empty());
  EXPECT_NE(configFactory("config"), config);
}

TEST(TopologyConfig, vidToTopoMapIsStoresAndNotifiesOnceWithItsKey) {
  const auto config = configFactory("config");
  const Recorder all(config.get());
  const KeyRecorder<VlanId> vlans(config.get(), Config::vidToTopoMapAttr);
  config->vidToTopoMapIs(10, "A");
  ASSERT_NE(config->vidToTopoMap(10), nullptr);
  EXPECT_EQ(*config->vidToTopoMap(10), "A");
  EXPECT_TRUE(config->vidToTopoMapHas(10));
  EXPECT_EQ(all.events, Events{vidToTopoMapChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(TopologyConfig, vlanThatIsNotMappedReadsAsNull) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "A");
  EXPECT_EQ(config->vidToTopoMap(11), nullptr);
  EXPECT_FALSE(config->vidToTopoMapHas(11));
}

TEST(TopologyConfig, vlanMayBeMappedToATopologyThatIsNotConfigured) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "A");
  EXPECT_EQ(config->topoConfig("A"), nullptr);
  config->vidToTopoMapIs(11, "");
  EXPECT_TRUE(config->vidToTopoMapHas(11));
}

TEST(TopologyConfig, vidToTopoMapIsOfEqualNameIsSilent) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "A");
  const Recorder recorder(config.get());
  config->vidToTopoMapIs(10, std::string("A"));
  EXPECT_TRUE(recorder.events.empty());
}

TEST(TopologyConfig, vidToTopoMapIsOfAnotherNameNotifiesOnceMore) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "A");
  const Recorder recorder(config.get(), [&](auto, const void*) { EXPECT_EQ(*config->vidToTopoMap(10), "B"); });
  config->vidToTopoMapIs(10, "B");
  EXPECT_EQ(recorder.events, Events{vidToTopoMapChanged});
  EXPECT_EQ(config->vidToTopoMap().size(), 1U);
}

TEST(TopologyConfig, vidToTopoMapDelNotifiesOnceAndOnlyWhenPresent) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "A");
  const Recorder all(config.get());
  const KeyRecorder<VlanId> vlans(config.get(), Config::vidToTopoMapAttr);
  config->vidToTopoMapDel(11);
  EXPECT_TRUE(all.events.empty());
  config->vidToTopoMapDel(10);
  EXPECT_FALSE(config->vidToTopoMapHas(10));
  EXPECT_EQ(all.events, Events{vidToTopoMapChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(TopologyConfig, vidToTopoMapDelAllNotifiesEachVlan) {
  const auto config = configFactory("config");
  for (const int vid : {30, 10, 20}) config->vidToTopoMapIs(vid, "A");
  const KeyRecorder<VlanId> vlans(config.get(), Config::vidToTopoMapAttr);
  config->vidToTopoMapDelAll();
  EXPECT_TRUE(config->vidToTopoMap().empty());
  EXPECT_EQ(vlans.keys, (std::vector<VlanId>{10, 20, 30}));
  config->vidToTopoMapDelAll();
  EXPECT_EQ(vlans.keys.size(), 3U);
}

TEST(TopologyConfig, vidToTopoMapRaisesOnBadVlanAndChangesNothing) {
  const auto config = configFactory("config");
  const Recorder recorder(config.get());
  EXPECT_THROW(config->vidToTopoMapIs(0, "A"), Mox::RangeException);
  EXPECT_THROW(config->vidToTopoMapIs(4095, "A"), Mox::RangeException);
  EXPECT_TRUE(config->vidToTopoMap().empty());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(TopologyConfig, vidToTopoMapIterationVisitsEachVlan) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(4094, "A");
  config->vidToTopoMapIs(1, "B");
  config->vidToTopoMapIs(10, "A");
  std::map<VlanId, String> visited;
  for (const auto& [vid, name] : config->vidToTopoMap()) visited.emplace(vid, name);
  EXPECT_EQ(visited, (std::map<VlanId, String>{{1, "B"}, {10, "A"}, {4094, "A"}}));
}

TEST(TopologyConfig, topoConfigIsMakesATopology) {
  const auto config = configFactory("config");
  const auto topo = config->topoConfigIs("A", 7);
  EXPECT_EQ(config->topoConfig("A"), topo.get());
  EXPECT_EQ(config->topoConfig().size(), 1U);
  EXPECT_EQ(topo->name(), "A");
  EXPECT_EQ(topo->topoNumber(), 7U);
  EXPECT_EQ(topo->parent(), config.get());
  EXPECT_EQ(config->topoConfig("B"), nullptr);
}

TEST(TopologyConfig, topoConfigIsNotifiesOnceWithItsKey) {
  const auto config = configFactory("config");
  const Recorder all(config.get(), [&](auto, const void*) { EXPECT_NE(config->topoConfig("A"), nullptr); });
  const KeyRecorder<String> topos(config.get(), Config::topoConfigAttr);
  config->topoConfigIs("A", 1);
  EXPECT_EQ(all.events, Events{topoConfigChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(TopologyConfig, topoConfigIsOfExistingTopologyReturnsItSilently) {
  const auto config = configFactory("config");
  const auto topo = config->topoConfigIs("A", 1);
  const Recorder recorder(config.get());
  EXPECT_EQ(config->topoConfigIs("A", 1), topo);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(TopologyConfig, topoConfigIsOfExistingTopologyWithAnotherNumberRaisesAndChangesNothing) {
  const auto config = configFactory("config");
  const auto topo = config->topoConfigIs("A", 1);
  const Recorder recorder(config.get());
  try {
    config->topoConfigIs("A", 2);
    ADD_FAILURE() << "no exception";
  } catch (const Mox::MutatorReinstantiatingException& e) {
    EXPECT_STREQ(e.what(), "topoConfigIs: a member of this key exists, made with other arguments");
  }
  EXPECT_EQ(config->topoConfig("A"), topo.get());
  EXPECT_EQ(topo->topoNumber(), 1U);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(TopologyConfig, topologiesMayShareANumber) {
  const auto config = configFactory("config");
  EXPECT_NE(config->topoConfigIs("A", 1), config->topoConfigIs("B", 1));
  EXPECT_EQ(config->topoConfigIs("", 0)->name(), "");
}

TEST(TopologyConfig, topoConfigDelRemovesTheTopologyAndNotifiesOnce) {
  const auto config = configFactory("config");
  const auto topo = config->topoConfigIs("A", 1);
  config->topoConfigIs("B", 2);
  const Recorder all(config.get(), [&](auto, const void*) { EXPECT_EQ(config->topoConfig("A"), nullptr); });
  const KeyRecorder<String> topos(config.get(), Config::topoConfigAttr);
  config->topoConfigDel("C");
  EXPECT_TRUE(all.events.empty());
  config->topoConfigDel("A");
  EXPECT_EQ(config->topoConfig().size(), 1U);
  EXPECT_EQ(topo->parent(), nullptr);
  EXPECT_EQ(all.events, Events{topoConfigChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(TopologyConfig, topoConfigDelAllNotifiesEachTopologyInOrderOfThePass) {
  const auto config = configFactory("config");
  for (const char* name : {"A", "B", "C"}) config->topoConfigIs(name, 1);
  config->vidToTopoMapIs(10, "A");
  std::vector<String> pass;
  for (const auto& [name, topo] : config->topoConfig()) pass.push_back(name);
  const KeyRecorder<String> topos(config.get(), Config::topoConfigAttr);
  config->topoConfigDelAll();
  EXPECT_TRUE(config->topoConfig().empty());
  EXPECT_EQ(topos.keys, pass);
  EXPECT_EQ(pass.size(), 3U);
  EXPECT_TRUE(config->vidToTopoMapHas(10));
  config->topoConfigDelAll();
  EXPECT_EQ(topos.keys.size(), 3U);
}

TEST(TopologyConfig, topologyMadeAgainIsANewEntity) {
  const auto config = configFactory("config");
  const auto old = config->topoConfigIs("A", 1);
  old->topoPortConfigIs("Ethernet1", 0, PortState::forwarding);
  old->publishPortConfigIs(true);
  old->publishedPortStateIs(PortState::learning);
  config->topoConfigDel("A");
  const auto made = config->topoConfigIs("A", 2);
  EXPECT_NE(made, old);
  EXPECT_EQ(made->topoNumber(), 2U);
  EXPECT_TRUE(made->topoPortConfig().empty());
  EXPECT_FALSE(made->publishPortConfig());
  EXPECT_EQ(made->publishedPortState(), PortState::forwarding);
}

TEST(TopologyConfig, topoConfigIterationVisitsEachTopology) {
  const auto config = configFactory("config");
  for (const char* name : {"A", "B", ""}) config->topoConfigIs(name, 1);
  std::map<String, const TopoConfig*> visited;
  for (const auto& [name, topo] : config->topoConfig()) {
    static_assert(std::is_same_v<decltype(topo), const TopoConfig&>);
    EXPECT_TRUE(visited.emplace(name, &topo).second);
  }
  ASSERT_EQ(visited.size(), 3U);
  for (const auto& [name, topo] : visited) EXPECT_EQ(topo, config->topoConfig(name));
}

template <class T>
concept WritesConfig = requires(T& config) {
  config.vidToTopoMapIs(10, "A");
}
|| requires(T& config) { config.vidToTopoMapDel(10); }
|| requires(T& config) { config.vidToTopoMapDelAll(); }
|| requires(T& config) { config.topoConfigIs("A", 1); }
|| requires(T& config) { config.topoConfigDel("A"); }
|| requires(T& config) { config.topoConfigDelAll(); };
static_assert(WritesConfig<Config> && !WritesConfig<const Config>);

TEST(TopologyConfig, isReadThroughPointerToConst) {
  const auto writable = configFactory("config");
  writable->topoConfigIs("A", 1);
  writable->vidToTopoMapIs(10, "A");
  const Mox::Ptr<const Config> config = writable;
  const Recorder recorder(config.get());
  const auto* const topo = config->topoConfig("A");
  static_assert(std::is_same_v<decltype(topo), const TopoConfig* const>);
  EXPECT_EQ(topo, writable->topoConfig("A"));
  EXPECT_EQ(*config->vidToTopoMap(10), "A");
  writable->vidToTopoMapDel(10);
  EXPECT_EQ(recorder.events, Events{vidToTopoMapChanged});
}

}  // namespace Bridging::Topology::TopologyConfigTest
