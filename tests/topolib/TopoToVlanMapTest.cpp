#include "topolib/TopoToVlanMap.h"

#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"

namespace Topology::Library::TopoToVlanMapTest {

using Bridging::VlanId;
using Mox::String;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event mappedVlanChanged{TopoToVlanMap::mappedVlanAttr.id(), true};
constexpr Recorder::Event vlanChanged{MappedVlan::vlanAttr.id(), true};

TEST(TopoToVlanMap, isMadeEmptyWithItsName) {
  const auto map = topoToVlanMapFactory("topoToVlanMap");
  EXPECT_EQ(map->name(), "topoToVlanMap");
  EXPECT_EQ(map->parent(), nullptr);
  EXPECT_TRUE(map->mappedVlan().empty());
  EXPECT_NE(topoToVlanMapFactory("topoToVlanMap"), map);
}

TEST(TopoToVlanMap, mappedVlanIsMakesATopology) {
  const auto map = topoToVlanMapFactory("map");
  const auto mapped = map->mappedVlanIs("A");
  EXPECT_EQ(map->mappedVlan("A"), mapped.get());
  EXPECT_EQ(map->mappedVlan().size(), 1U);
  EXPECT_EQ(mapped->name(), "A");
  EXPECT_EQ(mapped->parent(), map.get());
  EXPECT_TRUE(mapped->vlan().empty());
  EXPECT_EQ(map->mappedVlan("B"), nullptr);
}

TEST(TopoToVlanMap, mappedVlanIsNotifiesOnceWithItsKey) {
  const auto map = topoToVlanMapFactory("map");
  const Recorder all(map.get(), [&](auto, const void*) { EXPECT_NE(map->mappedVlan("A"), nullptr); });
  const KeyRecorder<String> topos(map.get(), TopoToVlanMap::mappedVlanAttr);
  map->mappedVlanIs("A");
  EXPECT_EQ(all.events, Events{mappedVlanChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(TopoToVlanMap, mappedVlanIsOfExistingTopologyReturnsItSilently) {
  const auto map = topoToVlanMapFactory("map");
  const auto mapped = map->mappedVlanIs("A");
  const Recorder recorder(map.get());
  EXPECT_EQ(map->mappedVlanIs("A"), mapped);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(TopoToVlanMap, mappedVlanDelRemovesTheTopologyAndNotifiesOnce) {
  const auto map = topoToVlanMapFactory("map");
  const auto mapped = map->mappedVlanIs("A");
  map->mappedVlanIs("B");
  const Recorder all(map.get(), [&](auto, const void*) { EXPECT_EQ(map->mappedVlan("A"), nullptr); });
  const KeyRecorder<String> topos(map.get(), TopoToVlanMap::mappedVlanAttr);
  map->mappedVlanDel("C");
  EXPECT_TRUE(all.events.empty());
  map->mappedVlanDel("A");
  EXPECT_EQ(map->mappedVlan().size(), 1U);
  EXPECT_EQ(mapped->parent(), nullptr);
  EXPECT_EQ(all.events, Events{mappedVlanChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(TopoToVlanMap, mappedVlanDelAllNotifiesEachTopologyInOrderOfThePass) {
  const auto map = topoToVlanMapFactory("map");
  for (const char* name : {"A", "B", "C"}) map->mappedVlanIs(name);
  std::vector<String> pass;
  for (const auto& [name, mapped] : map->mappedVlan()) pass.push_back(name);
  const KeyRecorder<String> topos(map.get(), TopoToVlanMap::mappedVlanAttr);
  map->mappedVlanDelAll();
  EXPECT_TRUE(map->mappedVlan().empty());
  EXPECT_EQ(topos.keys, pass);
  EXPECT_EQ(pass.size(), 3U);
  map->mappedVlanDelAll();
  EXPECT_EQ(topos.keys.size(), 3U);
}

TEST(TopoToVlanMap, topologyMadeAgainIsANewEntity) {
  const auto map = topoToVlanMapFactory("map");
  const auto old = map->mappedVlanIs("A");
  old->vlanIs(10, true);
  map->mappedVlanDel("A");
  EXPECT_NE(map->mappedVlanIs("A"), old);
  EXPECT_TRUE(map->mappedVlan("A")->vlan().empty());
}

TEST(TopoToVlanMap, iterationVisitsEachTopology) {
  const auto map = topoToVlanMapFactory("map");
  for (const char* name : {"A", "B", ""}) map->mappedVlanIs(name);
  std::map<String, const MappedVlan*> visited;
  for (const auto& [name, mapped] : map->mappedVlan()) {
    static_assert(std::is_same_v<decltype(mapped), const MappedVlan&>);
    EXPECT_TRUE(visited.emplace(name, &mapped).second);
  }
  ASSERT_EQ(visited.size(), 3U);
  for (const auto& [name, mapped] : visited) EXPECT_EQ(mapped, map->mappedVlan(name));
}

TEST(TopoToVlanMap, leavesHeldMembersBehindWhenItEnds) {
  auto map = topoToVlanMapFactory("map");
  const auto mapped = map->mappedVlanIs("A");
  mapped->vlanIs(10, true);
  map = nullptr;
  EXPECT_EQ(mapped->references(), 1U);
  EXPECT_EQ(mapped->parent(), nullptr);
  EXPECT_NE(mapped->vlan(10), nullptr);
}

/// Keeps one map, as a state machine does.
class Holder : public Mox::Notifier {
 public:
  static constexpr Mox::ScalarAttribute topoToVlanMapAttr{0, "topoToVlanMap"};

  [[nodiscard]] const TopoToVlanMap* topoToVlanMap() const { return map_.get(); }
  Mox::Ptr<TopoToVlanMap> topoToVlanMapIs(const String& name) { return singleIs(map_, topoToVlanMapAttr, name); }
  void topoToVlanMapDel() { singleDel(map_, topoToVlanMapAttr); }

 private:
  Mox::Ptr<TopoToVlanMap> map_;
};

TEST(TopoToVlanMap, askedForTwiceByOneNameIsKept) {
  Holder holder;
  const auto map = holder.topoToVlanMapIs("topoToVlanMap");
  map->mappedVlanIs("A");
  const Recorder recorder(&holder);
  EXPECT_EQ(holder.topoToVlanMapIs("topoToVlanMap"), map);
  EXPECT_EQ(map->mappedVlan().size(), 1U);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(TopoToVlanMap, askedForByAnotherNameIsReplaced) {
  Holder holder;
  const auto old = holder.topoToVlanMapIs("topoToVlanMap");
  const Recorder recorder(&holder, [&](auto, const void*) { EXPECT_NE(holder.topoToVlanMap(), old.get()); });
  const auto made = holder.topoToVlanMapIs("another");
  EXPECT_EQ(holder.topoToVlanMap(), made.get());
  EXPECT_EQ(made->name(), "another");
  EXPECT_EQ(old->references(), 1U);
  EXPECT_EQ(recorder.events.size(), 1U);
  holder.topoToVlanMapDel();
  EXPECT_EQ(holder.topoToVlanMap(), nullptr);
  EXPECT_EQ(made->references(), 1U);
}

TEST(MappedVlan, vlanIsInsertsAndNotifiesOnceWithItsKey) {
  const auto mapped = topoToVlanMapFactory("map")->mappedVlanIs("A");
  const Recorder all(mapped.get(), [&](auto, const void*) { EXPECT_NE(mapped->vlan(10), nullptr); });
  const KeyRecorder<VlanId> vlans(mapped.get(), MappedVlan::vlanAttr);
  mapped->vlanIs(10, true);
  ASSERT_NE(mapped->vlan(10), nullptr);
  EXPECT_TRUE(*mapped->vlan(10));
  EXPECT_EQ(mapped->vlan(11), nullptr);
  EXPECT_EQ(all.events, Events{vlanChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(MappedVlan, vlanIsThereWhateverItsValue) {
  const auto mapped = topoToVlanMapFactory("map")->mappedVlanIs("A");
  const Recorder recorder(mapped.get());
  mapped->vlanIs(10, false);
  ASSERT_NE(mapped->vlan(10), nullptr);
  EXPECT_FALSE(*mapped->vlan(10));
  EXPECT_EQ(recorder.events, Events{vlanChanged});
}

TEST(MappedVlan, vlanIsOfEqualValueIsSilent) {
  const auto mapped = topoToVlanMapFactory("map")->mappedVlanIs("A");
  mapped->vlanIs(10, true);
  const Recorder recorder(mapped.get());
  mapped->vlanIs(10, true);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(MappedVlan, vlanIsOfAnotherValueNotifiesOnceMore) {
  const auto mapped = topoToVlanMapFactory("map")->mappedVlanIs("A");
  mapped->vlanIs(10, true);
  const Recorder recorder(mapped.get());
  mapped->vlanIs(10, false);
  EXPECT_FALSE(*mapped->vlan(10));
  EXPECT_EQ(mapped->vlan().size(), 1U);
  EXPECT_EQ(recorder.events, Events{vlanChanged});
}

TEST(MappedVlan, vlanDelNotifiesOnceAndOnlyWhenPresent) {
  const auto mapped = topoToVlanMapFactory("map")->mappedVlanIs("A");
  mapped->vlanIs(10, true);
  const Recorder all(mapped.get());
  const KeyRecorder<VlanId> vlans(mapped.get(), MappedVlan::vlanAttr);
  mapped->vlanDel(11);
  EXPECT_TRUE(all.events.empty());
  mapped->vlanDel(10);
  EXPECT_EQ(mapped->vlan(10), nullptr);
  EXPECT_EQ(all.events, Events{vlanChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(MappedVlan, vlanDelAllNotifiesEachVlan) {
  const auto mapped = topoToVlanMapFactory("map")->mappedVlanIs("A");
  for (const int vid : {30, 10, 20}) mapped->vlanIs(vid, true);
  const KeyRecorder<VlanId> vlans(mapped.get(), MappedVlan::vlanAttr);
  mapped->vlanDelAll();
  EXPECT_TRUE(mapped->vlan().empty());
  EXPECT_EQ(vlans.keys, (std::vector<VlanId>{10, 20, 30}));
  mapped->vlanDelAll();
  EXPECT_EQ(vlans.keys.size(), 3U);
}

TEST(MappedVlan, iterationVisitsEachVlan) {
  const auto mapped = topoToVlanMapFactory("map")->mappedVlanIs("A");
  mapped->vlanIs(4094, false);
  mapped->vlanIs(1, true);
  std::map<VlanId, bool> visited;
  for (const auto& [vid, value] : mapped->vlan()) visited.emplace(vid, value);
  EXPECT_EQ(visited, (std::map<VlanId, bool>{{1, true}, {4094, false}}));
}

}  // namespace Topology::Library::TopoToVlanMapTest
