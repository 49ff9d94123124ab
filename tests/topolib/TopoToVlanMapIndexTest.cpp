// Which topology a VLAN is registered with, asked by the VLAN.

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "tests/support/Allocations.h"
#include "tests/support/Random.h"
#include "tests/support/Recorder.h"
#include "topolib/TopoToVlanMap.h"

namespace Topology::Library::TopoToVlanMapIndexTest {

using Bridging::VlanId;
using Mox::String;
using Test::FailingAllocations;
using Test::Recorder;

/// The first topology of a pass that has the VLAN.
String firstOf(const TopoToVlanMap& map, VlanId vid) {
  for (const auto& [name, mapped] : map.mappedVlan()) {
    if (mapped.vlan(vid) != nullptr) return name;
  }
  return {};
}

TEST(TopoOfVlan, isEmptyWithoutRegistration) {
  const auto map = topoToVlanMapFactory("map");
  EXPECT_EQ(map->topoOfVlan(10), "");
  map->mappedVlanIs("A");
  EXPECT_EQ(map->topoOfVlan(10), "");
  map->mappedVlanIs("A")->vlanIs(10);
  EXPECT_EQ(map->topoOfVlan(11), "");
}

TEST(TopoOfVlan, isTheOnlyRegistration) {
  const auto map = topoToVlanMapFactory("map");
  map->mappedVlanIs("A")->vlanIs(10);
  map->mappedVlanIs("B")->vlanIs(20, false);
  EXPECT_EQ(map->topoOfVlan(10), "A");
  EXPECT_EQ(map->topoOfVlan(20), "B") << "whatever the value";
}

TEST(TopoOfVlan, isTheFirstInThePassOfSeveral) {
  const auto map = topoToVlanMapFactory("map");
  for (const char* const name : {"A", "B", "C", "D"}) map->mappedVlanIs(name)->vlanIs(10);
  EXPECT_EQ(map->topoOfVlan(10), firstOf(*map, 10));
  while (!firstOf(*map, 10).empty()) {
    map->mappedVlan(firstOf(*map, 10))->vlanDel(10);
    EXPECT_EQ(map->topoOfVlan(10), firstOf(*map, 10));
  }
}

TEST(TopoOfVlan, isTheOneThatRemainsOfTwo) {
  for (const char* const gone : {"A", "B"}) {
    const auto map = topoToVlanMapFactory("map");
    map->mappedVlanIs("A")->vlanIs(10);
    map->mappedVlanIs("B")->vlanIs(10);
    map->mappedVlan(gone)->vlanDel(10);
    EXPECT_EQ(map->topoOfVlan(10), gone == std::string("A") ? "B" : "A");
    map->mappedVlanIs("C")->vlanIs(10);
    map->mappedVlan(gone == std::string("A") ? "B" : "A")->vlanDel(10);
    EXPECT_EQ(map->topoOfVlan(10), "C");
  }
}

TEST(TopoOfVlan, registrationThatIsWrittenAgainCountsOnce) {
  const auto map = topoToVlanMapFactory("map");
  const auto mapped = map->mappedVlanIs("A");
  mapped->vlanIs(10, true);
  mapped->vlanIs(10, true);
  mapped->vlanIs(10, false);
  mapped->vlanDel(10);
  EXPECT_EQ(map->topoOfVlan(10), "");
  mapped->vlanDel(10);
  mapped->vlanIs(10);
  EXPECT_EQ(map->topoOfVlan(10), "A");
}

TEST(TopoOfVlan, agreesWithTheMapWhenMemoryRunsOut) {
  for (const bool isElsewhere : {false, true}) {
    bool isDone = false;
    for (std::size_t spared = 0; !isDone; ++spared) {
      SCOPED_TRACE(spared);
      const auto map = topoToVlanMapFactory("map");
      if (isElsewhere) map->mappedVlanIs("B")->vlanIs(10);
      const auto mapped = map->mappedVlanIs("A");
      Recorder recorder(mapped.get());
      recorder.events.reserve(1);
      try {
        const FailingAllocations failing(spared);
        mapped->vlanIs(10);
        isDone = true;
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(mapped->vlan(10), nullptr);
      }
      EXPECT_EQ(recorder.events.size(), isDone ? 1U : 0U);
      EXPECT_EQ(map->topoOfVlan(10), firstOf(*map, 10));
      map->mappedVlanDelAll();
      EXPECT_EQ(map->topoOfVlan(10), "");
    }
  }
}

TEST(TopoOfVlan, isEmptyOnceTheTopologyIsDeleted) {
  const auto map = topoToVlanMapFactory("map");
  map->mappedVlanIs("A")->vlanIs(10);
  map->mappedVlanIs("B")->vlanIs(20);
  map->mappedVlanDel("A");
  map->mappedVlanDel("A");
  EXPECT_EQ(map->topoOfVlan(10), "");
  EXPECT_EQ(map->topoOfVlan(20), "B");
  map->mappedVlanIs("A");
  EXPECT_EQ(map->topoOfVlan(10), "") << "made again it starts empty";
}

TEST(TopoOfVlan, deletedTopologyIsNoLongerCounted) {
  const auto map = topoToVlanMapFactory("map");
  const auto held = map->mappedVlanIs("A");
  held->vlanIs(10);
  map->mappedVlanDel("A");
  held->vlanIs(11);
  held->vlanDel(10);
  EXPECT_EQ(map->topoOfVlan(10), "");
  EXPECT_EQ(map->topoOfVlan(11), "");
  map->mappedVlanIs("A")->vlanIs(10);
  held->vlanDelAll();
  EXPECT_EQ(map->topoOfVlan(10), "A");
}

TEST(TopoOfVlan, isEmptyOnceTheVlansAreDeleted) {
  const auto map = topoToVlanMapFactory("map");
  const auto mapped = map->mappedVlanIs("A");
  for (const int vid : {10, 20, 30}) mapped->vlanIs(vid);
  map->mappedVlanIs("B")->vlanIs(30);
  mapped->vlanDelAll();
  EXPECT_EQ(map->topoOfVlan(10), "");
  EXPECT_EQ(map->topoOfVlan(20), "");
  EXPECT_EQ(map->topoOfVlan(30), "B");
}

TEST(TopoOfVlan, isEmptyOnceAllTopologiesAreDeleted) {
  const auto map = topoToVlanMapFactory("map");
  for (const char* const name : {"A", "B", "C"}) {
    map->mappedVlanIs(name)->vlanIs(10);
    map->mappedVlan(name)->vlanIs(20);
  }
  map->mappedVlanDelAll();
  EXPECT_EQ(map->topoOfVlan(10), "");
  EXPECT_EQ(map->topoOfVlan(20), "");
  map->mappedVlanIs("C")->vlanIs(10);
  EXPECT_EQ(map->topoOfVlan(10), "C");
}

TEST(TopoOfVlan, agreesWithTheMapInsideEachNotification) {
  const auto map = topoToVlanMapFactory("map");
  const auto mapped = map->mappedVlanIs("A");
  std::vector<String> seen;
  const auto look = [&](auto, const void*) {
    EXPECT_EQ(map->topoOfVlan(10), firstOf(*map, 10));
    seen.push_back(map->topoOfVlan(10));
  };
  const Recorder onVlans(mapped.get(), look);
  const Recorder onTopologies(map.get(), look);
  mapped->vlanIs(10);
  mapped->vlanDel(10);
  mapped->vlanIs(10);
  map->mappedVlanDel("A");
  EXPECT_EQ(seen, (std::vector<String>{"A", "", "A", ""}));
}

TEST(TopoOfVlan, readerMayRegisterAndUnregisterInsideANotification) {
  const auto map = topoToVlanMapFactory("map");
  const auto a = map->mappedVlanIs("A");
  const auto b = map->mappedVlanIs("B");
  const Recorder mover(a.get(), [&](auto, const void*) {
    if (a->vlan(10) == nullptr) return;
    a->vlanDel(10);
    b->vlanIs(10);
  });
  a->vlanIs(10);
  EXPECT_EQ(map->topoOfVlan(10), "B");
  EXPECT_EQ(a->vlan(10), nullptr);
}

TEST(TopoOfVlan, agreesWithTheMapThroughRandomChanges) {
  SCOPED_TRACE(::Test::seedTrace());
  ::Test::Random random;
  const auto map = topoToVlanMapFactory("map");
  const std::vector<String> names{"A", "B", "C"};
  for (int step = 0; step < 4000 && !HasFailure(); ++step) {
    const String& name = names[random.below(names.size())];
    const VlanId vid(static_cast<unsigned>(1 + random.below(6)));
    const std::size_t what = random.below(100);
    if (what < 55) {
      map->mappedVlanIs(name)->vlanIs(vid, random.percent(50));
    } else if (what < 90) {
      if (const Mox::Ptr<MappedVlan> mapped = map->mappedVlan(name)) mapped->vlanDel(vid);
    } else if (what < 95) {
      map->mappedVlanDel(name);
    } else if (what < 99) {
      if (const Mox::Ptr<MappedVlan> mapped = map->mappedVlan(name)) mapped->vlanDelAll();
    } else {
      map->mappedVlanDelAll();
    }
    for (unsigned n = 1; n <= 6; ++n) ASSERT_EQ(map->topoOfVlan(n), firstOf(*map, n)) << "step " << step;
  }
}

}  // namespace Topology::Library::TopoToVlanMapIndexTest
