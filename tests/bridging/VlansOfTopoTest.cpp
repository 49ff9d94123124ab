// The VLANs of a topology, asked by its name.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>
#include <vector>

#include "bridging/TopologyConfig.h"
#include "tests/support/Allocations.h"
#include "tests/support/Random.h"
#include "tests/support/Recorder.h"

namespace Bridging::Topology::VlansOfTopoTest {

using Mox::String;
using Test::FailingAllocations;
using Test::Recorder;
using Vlans = std::vector<VlanId>;

/// What the map itself says.
Vlans mappedTo(const Config& config, const String& name) {
  Vlans vlans;
  for (const auto& [vid, topo] : config.vidToTopoMap()) {
    if (topo == name) vlans.push_back(vid);
  }
  std::sort(vlans.begin(), vlans.end());
  return vlans;
}

TEST(VlansOfTopo, areNoneAtFirst) {
  const auto config = configFactory("config");
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{});
  EXPECT_EQ(config->vlansOfTopo(""), Vlans{});
  config->topoConfigIs("A", 1);
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{});
}

TEST(VlansOfTopo, areInAscendingOrder) {
  const auto config = configFactory("config");
  for (const int vid : {4094, 10, 1, 30, 20}) config->vidToTopoMapIs(vid, "A");
  config->vidToTopoMapIs(15, "B");
  EXPECT_EQ(config->vlansOfTopo("A"), (Vlans{1, 10, 20, 30, 4094}));
  EXPECT_EQ(config->vlansOfTopo("B"), Vlans{15});
  EXPECT_EQ(config->vlansOfTopo("C"), Vlans{});
}

TEST(VlansOfTopo, areNotRepeatedWhenWrittenAgain) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "A");
  config->vidToTopoMapIs(10, std::string("A"));
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{10});
  config->vidToTopoMapDel(10);
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{});
}

TEST(VlansOfTopo, moveWithTheMapping) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "A");
  config->vidToTopoMapIs(20, "A");
  config->vidToTopoMapIs(10, "B");
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{20});
  EXPECT_EQ(config->vlansOfTopo("B"), Vlans{10});
  config->vidToTopoMapIs(10, "A");
  EXPECT_EQ(config->vlansOfTopo("A"), (Vlans{10, 20}));
  EXPECT_EQ(config->vlansOfTopo("B"), Vlans{});
}

TEST(VlansOfTopo, leaveWithTheMapping) {
  const auto config = configFactory("config");
  for (const int vid : {10, 20, 30}) config->vidToTopoMapIs(vid, "A");
  config->vidToTopoMapDel(20);
  EXPECT_EQ(config->vlansOfTopo("A"), (Vlans{10, 30}));
  config->vidToTopoMapDel(20);
  config->vidToTopoMapDel(40);
  EXPECT_EQ(config->vlansOfTopo("A"), (Vlans{10, 30}));
}

TEST(VlansOfTopo, areGoneWithAllMappings) {
  const auto config = configFactory("config");
  for (const int vid : {10, 20}) config->vidToTopoMapIs(vid, "A");
  config->vidToTopoMapIs(30, "B");
  config->vidToTopoMapDelAll();
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{});
  EXPECT_EQ(config->vlansOfTopo("B"), Vlans{});
  config->vidToTopoMapIs(20, "B");
  EXPECT_EQ(config->vlansOfTopo("B"), Vlans{20});
}

TEST(VlansOfTopo, mayBelongToTheEmptyName) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "");
  EXPECT_EQ(config->vlansOfTopo(""), Vlans{10});
  config->vidToTopoMapIs(10, "A");
  EXPECT_EQ(config->vlansOfTopo(""), Vlans{});
}

TEST(VlansOfTopo, stayWhenTheTopologyIsDeleted) {
  const auto config = configFactory("config");
  config->topoConfigIs("A", 1);
  config->vidToTopoMapIs(10, "A");
  config->topoConfigDel("A");
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{10});
}

TEST(VlansOfTopo, areACopyThatLaterChangesLeaveAlone) {
  const auto config = configFactory("config");
  config->vidToTopoMapIs(10, "A");
  const Vlans before = config->vlansOfTopo("A");
  config->vidToTopoMapDelAll();
  EXPECT_EQ(before, Vlans{10});
}

TEST(VlansOfTopo, agreeWithTheMapInsideEachNotification) {
  const auto config = configFactory("config");
  std::vector<Vlans> ofA;
  const Recorder recorder(config.get(), [&](auto, const void*) {
    for (const char* const name : {"A", "B"}) EXPECT_EQ(config->vlansOfTopo(name), mappedTo(*config, name));
    ofA.push_back(config->vlansOfTopo("A"));
  });
  config->vidToTopoMapIs(10, "A");
  config->vidToTopoMapIs(20, "A");
  config->vidToTopoMapIs(10, "B");
  config->vidToTopoMapDel(20);
  config->vidToTopoMapIs(20, "A");
  config->vidToTopoMapDelAll();
  EXPECT_EQ(ofA, (std::vector<Vlans>{{10}, {10, 20}, {20}, {}, {20}, {20}, {}}));
}

TEST(VlansOfTopo, readerMayMoveTheVlanItIsToldOf) {
  const auto config = configFactory("config");
  const Recorder mover(config.get(), [&](auto, const void*) {
    if (*config->vidToTopoMap(10) == "A") config->vidToTopoMapIs(10, "B");
  });
  config->vidToTopoMapIs(10, "A");
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{});
  EXPECT_EQ(config->vlansOfTopo("B"), Vlans{10});
}

TEST(VlansOfTopo, readerMayMapAgainWhatIsBeingDeleted) {
  const auto config = configFactory("config");
  for (const int vid : {10, 20, 30}) config->vidToTopoMapIs(vid, "A");
  const Recorder reader(config.get(), [&](auto, const void*) {
    if (config->vlansOfTopo("A") == Vlans{20, 30}) config->vidToTopoMapIs(10, "B");
  });
  config->vidToTopoMapDelAll();
  EXPECT_EQ(config->vlansOfTopo("A"), Vlans{});
  EXPECT_EQ(config->vlansOfTopo("B"), mappedTo(*config, "B"));
  EXPECT_EQ(config->vlansOfTopo("B"), Vlans{10}) << "it was put in behind the pass";
}

TEST(VlansOfTopo, agreeWithTheMapWhenMemoryRunsOut) {
  const String other = "B";
  for (const bool isMapped : {false, true}) {
    for (const bool isOtherKnown : {false, true}) {
      bool isDone = false;
      for (std::size_t spared = 0; !isDone; ++spared) {
        SCOPED_TRACE(spared);
        const auto config = configFactory("config");
        if (isMapped) config->vidToTopoMapIs(10, "A");
        if (isOtherKnown) config->vidToTopoMapIs(20, other);
        Recorder recorder(config.get());
        recorder.events.reserve(1);
        try {
          const FailingAllocations failing(spared);
          config->vidToTopoMapIs(10, other);
          isDone = true;
        } catch (const std::bad_alloc&) {
          EXPECT_EQ(config->vidToTopoMapHas(10), isMapped);
        }
        EXPECT_EQ(recorder.events.size(), isDone ? 1U : 0U);
        EXPECT_EQ(config->vlansOfTopo("A"), mappedTo(*config, "A"));
        EXPECT_EQ(config->vlansOfTopo(other), mappedTo(*config, other));
        config->vidToTopoMapDelAll();
        EXPECT_EQ(config->vlansOfTopo(other), Vlans{});
      }
    }
  }
}

TEST(VlansOfTopo, agreeWithTheMapThroughRandomChanges) {
  SCOPED_TRACE(::Test::seedTrace());
  ::Test::Random random;
  const auto config = configFactory("config");
  const std::vector<String> names{"A", "B", "C", ""};
  for (int step = 0; step < 4000 && !HasFailure(); ++step) {
    const VlanId vid(static_cast<unsigned>(1 + random.below(12)));
    const std::size_t what = random.below(100);
    if (what < 65) {
      config->vidToTopoMapIs(vid, names[random.below(names.size())]);
    } else if (what < 99) {
      config->vidToTopoMapDel(vid);
    } else {
      config->vidToTopoMapDelAll();
    }
    for (const String& name : names) ASSERT_EQ(config->vlansOfTopo(name), mappedTo(*config, name)) << "step " << step;
  }
}

}  // namespace Bridging::Topology::VlansOfTopoTest
