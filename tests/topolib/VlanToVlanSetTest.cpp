#include "topolib/VlanToVlanSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>

#include "tests/support/Recorder.h"

namespace Topology::Library::VlanToVlanSetTest {

using Bridging::VlanId;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event someVlanChanged{VlanToVlanSet::someVlanAttr.id(), true};

TEST(VlanToVlanSet, isMadeEmptyWithItsVlan) {
  const auto set = vlanToVlanSetFactory(10);
  EXPECT_EQ(set->vlanId(), VlanId(10));
  EXPECT_EQ(set->parent(), nullptr);
  EXPECT_TRUE(set->someVlan().empty());
  EXPECT_NE(vlanToVlanSetFactory(10), set);
}

TEST(VlanToVlanSet, ofNoVlanRaisesRangeException) {
  EXPECT_THROW(static_cast<void>(vlanToVlanSetFactory(0)), Mox::RangeException);
  EXPECT_THROW(static_cast<void>(vlanToVlanSetFactory(4095)), Mox::RangeException);
}

TEST(VlanToVlanSet, someVlanIsInsertsAndNotifiesOnceWithItsKey) {
  const auto set = vlanToVlanSetFactory(10);
  const Recorder all(set.get(), [&](auto, const void*) { EXPECT_TRUE(set->someVlan(20)); });
  const KeyRecorder<VlanId> vlans(set.get(), VlanToVlanSet::someVlanAttr);
  set->someVlanIs(20);
  EXPECT_TRUE(set->someVlan(20));
  EXPECT_FALSE(set->someVlan(10));
  EXPECT_EQ(all.events, Events{someVlanChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{20});
}

TEST(VlanToVlanSet, someVlanIsOfPresentVlanIsSilent) {
  const auto set = vlanToVlanSetFactory(10);
  set->someVlanIs(20);
  const Recorder recorder(set.get());
  set->someVlanIs(20);
  EXPECT_EQ(set->someVlan().size(), 1U);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(VlanToVlanSet, someVlanDelNotifiesOnceAndOnlyWhenPresent) {
  const auto set = vlanToVlanSetFactory(10);
  set->someVlanIs(20);
  const Recorder all(set.get());
  const KeyRecorder<VlanId> vlans(set.get(), VlanToVlanSet::someVlanAttr);
  set->someVlanDel(21);
  EXPECT_TRUE(all.events.empty());
  set->someVlanDel(20);
  EXPECT_FALSE(set->someVlan(20));
  EXPECT_EQ(all.events, Events{someVlanChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{20});
}

TEST(VlanToVlanSet, someVlanDelAllNotifiesEachVlan) {
  const auto set = vlanToVlanSetFactory(10);
  for (const int vid : {40, 20, 30}) set->someVlanIs(vid);
  const KeyRecorder<VlanId> vlans(set.get(), VlanToVlanSet::someVlanAttr);
  set->someVlanDelAll();
  EXPECT_TRUE(set->someVlan().empty());
  EXPECT_EQ(vlans.keys, (std::vector<VlanId>{20, 30, 40}));
  set->someVlanDelAll();
  EXPECT_EQ(vlans.keys.size(), 3U);
}

TEST(VlanToVlanSet, iterationVisitsEachVlan) {
  const auto set = vlanToVlanSetFactory(10);
  for (const int vid : {4094, 1, 10}) set->someVlanIs(vid);
  std::vector<VlanId> visited;
  for (const auto& [vid, present] : set->someVlan()) visited.push_back(vid);
  std::sort(visited.begin(), visited.end());
  EXPECT_EQ(visited, (std::vector<VlanId>{1, 10, 4094}));
}

/// The VLANs in the order in which the map iterates.
template <class Map>
std::vector<VlanId> orderOf(const Map& map) {
  std::vector<VlanId> order;
  for (const auto& [vid, set] : map) {
    EXPECT_EQ(set.vlanId(), vid);
    order.push_back(vid);
  }
  return order;
}

template <class Map>
void fill(Map& map) {
  for (int vid = 4094; vid >= 1; --vid) map.insert(vid, vlanToVlanSetFactory(vid));
}

/// All VLANs in the order of their hashes under a seed.
std::vector<VlanId> hashOrder(std::uint32_t seed) {
  const auto hash = [seed](VlanId vid) { return Mox::HashSeed(seed).hash(vid.value()); };
  std::vector<VlanId> order;
  for (int vid = 1; vid <= 4094; ++vid) order.emplace_back(vid);
  std::sort(order.begin(), order.end(), [&](VlanId a, VlanId b) { return hash(a) < hash(b); });
  return order;
}

TEST(VlanToVlanSetMaps, eachIteratesByASeedOfItsOwn) {
  VlanToExpVlanSetMap vlanToExpVlanSetMap;
  ExpVlanToVlanSetMap expVlanToVlanSetMap;
  fill(vlanToExpVlanSetMap);
  fill(expVlanToVlanSetMap);
  EXPECT_EQ(orderOf(vlanToExpVlanSetMap), hashOrder(3100735116));
  EXPECT_EQ(orderOf(expVlanToVlanSetMap), hashOrder(1759628072));
  EXPECT_NE(orderOf(vlanToExpVlanSetMap), orderOf(expVlanToVlanSetMap));
}

TEST(VlanToVlanSetMaps, orderIsNeitherThatOfTheNumbersNorOfTheProcessSeed) {
  VlanToExpVlanSetMap map;
  fill(map);
  std::vector<VlanId> numbers = orderOf(map);
  std::sort(numbers.begin(), numbers.end());
  EXPECT_NE(orderOf(map), numbers);
  EXPECT_NE(orderOf(map), hashOrder(Mox::hashSeed32()));
}

TEST(VlanToVlanSetMaps, orderIsTheSameUnderAnyProcessSeed) {
  VlanToExpVlanSetMap before;
  fill(before);
  const std::uint32_t seed = Mox::hashSeed32();
  Mox::hashSeed32Is(seed + 1);
  VlanToExpVlanSetMap after;
  fill(after);
  Mox::hashSeed32Is(seed);
  EXPECT_EQ(orderOf(after), orderOf(before));
}

TEST(VlanToVlanSetMaps, ownTheirSets) {
  const auto set = vlanToVlanSetFactory(10);
  {
    VlanToExpVlanSetMap map;
    EXPECT_TRUE(map.insert(10, set));
    EXPECT_FALSE(map.insert(10, vlanToVlanSetFactory(10)));
    EXPECT_EQ(map.find(10), set.get());
    EXPECT_EQ(set->references(), 2U);
    EXPECT_EQ(map.take(10), set);
    EXPECT_EQ(map.find(10), nullptr);
    EXPECT_TRUE(map.insert(10, set));
  }
  EXPECT_EQ(set->references(), 1U);
}

}  // namespace Topology::Library::VlanToVlanSetTest
