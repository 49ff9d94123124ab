#include "bridging/TopologyStatus.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"

namespace Bridging::Topology::TopologyStatusTest {

using Mox::String;
using Quill::IntfId;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event topoStatusChanged{Status::topoStatusAttr.id(), true};
constexpr Recorder::Event topoPortStatusChanged{TopoStatus::topoPortStatusAttr.id(), true};

TEST(TopologyStatus, isMadeEmptyWithItsName) {
  const auto status = statusFactory("status");
  EXPECT_EQ(status->name(), "status");
  EXPECT_EQ(status->parent(), nullptr);
  EXPECT_TRUE(status->topoStatus().empty());
  EXPECT_NE(statusFactory("status"), status);
}

TEST(TopologyStatus, topoStatusIsMakesATopology) {
  const auto status = statusFactory("status");
  const auto topo = status->topoStatusIs("A");
  EXPECT_EQ(status->topoStatus("A"), topo.get());
  EXPECT_EQ(status->topoStatus().size(), 1U);
  EXPECT_EQ(topo->name(), "A");
  EXPECT_EQ(topo->parent(), status.get());
  EXPECT_TRUE(topo->topoPortStatus().empty());
  EXPECT_EQ(status->topoStatus("B"), nullptr);
}

TEST(TopologyStatus, topoStatusIsNotifiesOnceWithItsKey) {
  const auto status = statusFactory("status");
  const Recorder all(status.get(), [&](auto, const void*) { EXPECT_NE(status->topoStatus("A"), nullptr); });
  const KeyRecorder<String> topos(status.get(), Status::topoStatusAttr);
  status->topoStatusIs("A");
  EXPECT_EQ(all.events, Events{topoStatusChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(TopologyStatus, topoStatusIsOfExistingTopologyReturnsItSilently) {
  const auto status = statusFactory("status");
  const auto topo = status->topoStatusIs("A");
  const Recorder recorder(status.get());
  EXPECT_EQ(status->topoStatusIs("A"), topo);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(TopologyStatus, topoStatusDelRemovesTheTopologyAndNotifiesOnce) {
  const auto status = statusFactory("status");
  const auto topo = status->topoStatusIs("A");
  status->topoStatusIs("B");
  const Recorder all(status.get(), [&](auto, const void*) { EXPECT_EQ(status->topoStatus("A"), nullptr); });
  const KeyRecorder<String> topos(status.get(), Status::topoStatusAttr);
  status->topoStatusDel("C");
  EXPECT_TRUE(all.events.empty());
  status->topoStatusDel("A");
  EXPECT_EQ(status->topoStatus().size(), 1U);
  EXPECT_EQ(topo->parent(), nullptr);
  EXPECT_EQ(all.events, Events{topoStatusChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(TopologyStatus, topoStatusDelAllNotifiesEachTopologyInOrderOfThePass) {
  const auto status = statusFactory("status");
  for (const char* name : {"A", "B", "C"}) status->topoStatusIs(name);
  std::vector<String> pass;
  for (const auto& [name, topo] : status->topoStatus()) pass.push_back(name);
  const KeyRecorder<String> topos(status.get(), Status::topoStatusAttr);
  status->topoStatusDelAll();
  EXPECT_TRUE(status->topoStatus().empty());
  EXPECT_EQ(topos.keys, pass);
  EXPECT_EQ(pass.size(), 3U);
  status->topoStatusDelAll();
  EXPECT_EQ(topos.keys.size(), 3U);
}

TEST(TopologyStatus, topologyMadeAgainIsANewEntity) {
  const auto status = statusFactory("status");
  const auto old = status->topoStatusIs("A");
  old->topoPortStatusIs("Ethernet1");
  status->topoStatusDel("A");
  const auto made = status->topoStatusIs("A");
  EXPECT_NE(made, old);
  EXPECT_TRUE(made->topoPortStatus().empty());
}

TEST(TopologyStatus, iterationVisitsEachTopology) {
  const auto status = statusFactory("status");
  for (const char* name : {"A", "B", ""}) status->topoStatusIs(name);
  std::map<String, const TopoStatus*> visited;
  for (const auto& [name, topo] : status->topoStatus()) {
    static_assert(std::is_same_v<decltype(topo), const TopoStatus&>);
    EXPECT_TRUE(visited.emplace(name, &topo).second);
  }
  ASSERT_EQ(visited.size(), 3U);
  for (const auto& [name, topo] : visited) EXPECT_EQ(topo, status->topoStatus(name));
}

TEST(TopoStatus, topoPortStatusIsInsertsAndNotifiesOnceWithItsKey) {
  const auto topo = statusFactory("status")->topoStatusIs("A");
  const Recorder all(topo.get(), [&](auto, const void*) { EXPECT_TRUE(topo->topoPortStatus("Ethernet1")); });
  const KeyRecorder<IntfId> ports(topo.get(), TopoStatus::topoPortStatusAttr);
  topo->topoPortStatusIs("Ethernet1");
  EXPECT_TRUE(topo->topoPortStatus("Ethernet1"));
  EXPECT_FALSE(topo->topoPortStatus("Ethernet2"));
  EXPECT_EQ(all.events, Events{topoPortStatusChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(TopoStatus, topoPortStatusIsOfPresentPortIsSilent) {
  const auto topo = statusFactory("status")->topoStatusIs("A");
  topo->topoPortStatusIs("Ethernet1");
  const Recorder recorder(topo.get());
  topo->topoPortStatusIs("Ethernet1");
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_EQ(topo->topoPortStatus().size(), 1U);
}

TEST(TopoStatus, topoPortStatusDelNotifiesOnceAndOnlyWhenPresent) {
  const auto topo = statusFactory("status")->topoStatusIs("A");
  topo->topoPortStatusIs("Ethernet1");
  const Recorder all(topo.get());
  const KeyRecorder<IntfId> ports(topo.get(), TopoStatus::topoPortStatusAttr);
  topo->topoPortStatusDel("Ethernet2");
  EXPECT_TRUE(all.events.empty());
  topo->topoPortStatusDel("Ethernet1");
  EXPECT_FALSE(topo->topoPortStatus("Ethernet1"));
  EXPECT_EQ(all.events, Events{topoPortStatusChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(TopoStatus, topoPortStatusDelAllNotifiesEachPortInOrderOfThePass) {
  const auto topo = statusFactory("status")->topoStatusIs("A");
  for (const char* intf : {"Ethernet1", "Ethernet2", "Ethernet3"}) topo->topoPortStatusIs(intf);
  std::vector<IntfId> pass;
  for (const auto& [intf, present] : topo->topoPortStatus()) pass.push_back(intf);
  EXPECT_EQ(std::set<IntfId>(pass.begin(), pass.end()), (std::set<IntfId>{"Ethernet1", "Ethernet2", "Ethernet3"}));
  const KeyRecorder<IntfId> ports(topo.get(), TopoStatus::topoPortStatusAttr);
  topo->topoPortStatusDelAll();
  EXPECT_TRUE(topo->topoPortStatus().empty());
  EXPECT_EQ(ports.keys, pass);
  topo->topoPortStatusDelAll();
  EXPECT_EQ(ports.keys.size(), 3U);
}

template <class T>
concept WritesStatus = requires(T& status) {
  status.topoStatusIs("A");
}
|| requires(T& status) { status.topoStatusDel("A"); }
|| requires(T& status) { status.topoStatusDelAll(); };
template <class T>
concept WritesTopo = requires(T& topo) {
  topo.topoPortStatusIs("Ethernet1");
}
|| requires(T& topo) { topo.topoPortStatusDel("Ethernet1"); }
|| requires(T& topo) { topo.topoPortStatusDelAll(); };
static_assert(WritesStatus<Status> && !WritesStatus<const Status>);
static_assert(WritesTopo<TopoStatus> && !WritesTopo<const TopoStatus>);

TEST(TopologyStatus, isReadThroughPointerToConst) {
  const auto writable = statusFactory("status");
  writable->topoStatusIs("A")->topoPortStatusIs("Ethernet1");
  const Mox::Ptr<const Status> status = writable;
  const Recorder recorder(status.get());
  const auto* const topo = status->topoStatus("A");
  static_assert(std::is_same_v<decltype(topo), const TopoStatus* const>);
  EXPECT_EQ(topo, writable->topoStatus("A"));
  EXPECT_TRUE(topo->topoPortStatus("Ethernet1"));
  writable->topoStatusDel("A");
  EXPECT_EQ(recorder.events, Events{topoStatusChanged});
}

}  // namespace Bridging::Topology::TopologyStatusTest
