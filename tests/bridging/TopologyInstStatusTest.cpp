#include "bridging/TopologyInstStatus.h"

#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"

namespace Bridging::Topology::Inst::TopologyInstStatusTest {

using Mox::String;
using Quill::IntfId;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event topoStatusChanged{Status::topoStatusAttr.id(), true};
constexpr Recorder::Event topoPortStatusChanged{TopoStatus::topoPortStatusAttr.id(), true};

TEST(InstStatus, isMadeEmptyWithItsName) {
  const auto status = statusFactory("instance");
  EXPECT_EQ(status->name(), "instance");
  EXPECT_EQ(status->parent(), nullptr);
  EXPECT_TRUE(status->topoStatus().empty());
  EXPECT_NE(statusFactory("instance"), status);
}

TEST(InstStatus, topoStatusIsMakesATopology) {
  const auto status = statusFactory("instance");
  const auto topo = status->topoStatusIs("A", 7);
  EXPECT_EQ(status->topoStatus("A"), topo.get());
  EXPECT_EQ(status->topoStatus().size(), 1U);
  EXPECT_EQ(topo->name(), "A");
  EXPECT_EQ(topo->topoNumber(), 7U);
  EXPECT_EQ(topo->parent(), status.get());
  EXPECT_TRUE(topo->topoPortStatus().empty());
  EXPECT_EQ(status->topoStatus("B"), nullptr);
}

TEST(InstStatus, topoStatusIsNotifiesOnceWithItsKey) {
  const auto status = statusFactory("instance");
  const Recorder all(status.get(), [&](auto, const void*) { EXPECT_NE(status->topoStatus("A"), nullptr); });
  const KeyRecorder<String> topos(status.get(), Status::topoStatusAttr);
  status->topoStatusIs("A", 1);
  EXPECT_EQ(all.events, Events{topoStatusChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(InstStatus, topoStatusIsOfExistingTopologyReturnsItSilently) {
  const auto status = statusFactory("instance");
  const auto topo = status->topoStatusIs("A", 1);
  const Recorder recorder(status.get());
  EXPECT_EQ(status->topoStatusIs("A", 1), topo);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(InstStatus, topoStatusIsOfExistingTopologyWithAnotherNumberRaisesAndChangesNothing) {
  const auto status = statusFactory("instance");
  const auto topo = status->topoStatusIs("A", 1);
  const Recorder recorder(status.get());
  try {
    status->topoStatusIs("A", 2);
    ADD_FAILURE() << "no exception";
  } catch (const Mox::MutatorReinstantiatingException& e) {
    EXPECT_STREQ(e.what(), "topoStatusIs: a member of this key exists, made with other arguments");
  }
  EXPECT_EQ(status->topoStatus("A"), topo.get());
  EXPECT_EQ(topo->topoNumber(), 1U);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(InstStatus, topoStatusDelRemovesTheTopologyAndNotifiesOnce) {
  const auto status = statusFactory("instance");
  const auto topo = status->topoStatusIs("A", 1);
  status->topoStatusIs("B", 2);
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

TEST(InstStatus, topoStatusDelAllNotifiesEachTopologyInOrderOfThePass) {
  const auto status = statusFactory("instance");
  for (const char* name : {"A", "B", "C"}) status->topoStatusIs(name, 1);
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

TEST(InstStatus, topologyMadeAgainIsANewEntity) {
  const auto status = statusFactory("instance");
  const auto old = status->topoStatusIs("A", 1);
  old->topoPortStatusIs("Ethernet1", 0);
  status->topoStatusDel("A");
  const auto made = status->topoStatusIs("A", 2);
  EXPECT_NE(made, old);
  EXPECT_EQ(made->topoNumber(), 2U);
  EXPECT_TRUE(made->topoPortStatus().empty());
}

TEST(InstStatus, iterationVisitsEachTopology) {
  const auto status = statusFactory("instance");
  for (const char* name : {"A", "B", ""}) status->topoStatusIs(name, 1);
  std::map<String, const TopoStatus*> visited;
  for (const auto& [name, topo] : status->topoStatus()) {
    static_assert(std::is_same_v<decltype(topo), const TopoStatus&>);
    EXPECT_TRUE(visited.emplace(name, &topo).second);
  }
  ASSERT_EQ(visited.size(), 3U);
  for (const auto& [name, topo] : visited) EXPECT_EQ(topo, status->topoStatus(name));
}

TEST(InstTopoStatus, topoPortStatusIsStoresAndNotifiesOnceWithItsKey) {
  const auto topo = statusFactory("instance")->topoStatusIs("A", 1);
  const Recorder all(topo.get(), [&](auto, const void*) { EXPECT_NE(topo->topoPortStatus("Ethernet1"), nullptr); });
  const KeyRecorder<IntfId> ports(topo.get(), TopoStatus::topoPortStatusAttr);
  topo->topoPortStatusIs("Ethernet1", 5);
  ASSERT_NE(topo->topoPortStatus("Ethernet1"), nullptr);
  EXPECT_EQ(*topo->topoPortStatus("Ethernet1"), 5U);
  EXPECT_EQ(topo->topoPortStatus("Ethernet2"), nullptr);
  EXPECT_EQ(all.events, Events{topoPortStatusChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(InstTopoStatus, topoPortStatusIsOfEqualNumberIsSilent) {
  const auto topo = statusFactory("instance")->topoStatusIs("A", 1);
  topo->topoPortStatusIs("Ethernet1", 0);
  const Recorder recorder(topo.get());
  topo->topoPortStatusIs("Ethernet1", 0);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(InstTopoStatus, topoPortStatusIsOfAnotherNumberNotifiesOnceMore) {
  const auto topo = statusFactory("instance")->topoStatusIs("A", 1);
  topo->topoPortStatusIs("Ethernet1", 0);
  const Recorder recorder(topo.get(), [&](auto, const void*) { EXPECT_EQ(*topo->topoPortStatus("Ethernet1"), 1U); });
  topo->topoPortStatusIs("Ethernet1", 1);
  EXPECT_EQ(recorder.events, Events{topoPortStatusChanged});
  EXPECT_EQ(topo->topoPortStatus().size(), 1U);
}

TEST(InstTopoStatus, topoPortStatusDelNotifiesOnceAndOnlyWhenPresent) {
  const auto topo = statusFactory("instance")->topoStatusIs("A", 1);
  topo->topoPortStatusIs("Ethernet1", 0);
  const Recorder all(topo.get());
  const KeyRecorder<IntfId> ports(topo.get(), TopoStatus::topoPortStatusAttr);
  topo->topoPortStatusDel("Ethernet2");
  EXPECT_TRUE(all.events.empty());
  topo->topoPortStatusDel("Ethernet1");
  EXPECT_EQ(topo->topoPortStatus("Ethernet1"), nullptr);
  EXPECT_EQ(all.events, Events{topoPortStatusChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(InstTopoStatus, topoPortStatusDelAllNotifiesEachPortInOrderOfThePass) {
  const auto topo = statusFactory("instance")->topoStatusIs("A", 1);
  std::map<IntfId, unsigned> numbers{{"Ethernet1", 1}, {"Ethernet2", 2}, {"Ethernet3", 3}};
  for (const auto& [intf, number] : numbers) topo->topoPortStatusIs(intf, number);
  std::vector<IntfId> pass;
  for (const auto& [intf, number] : topo->topoPortStatus()) {
    pass.push_back(intf);
    EXPECT_EQ(numbers.at(intf), number);
  }
  const KeyRecorder<IntfId> ports(topo.get(), TopoStatus::topoPortStatusAttr);
  topo->topoPortStatusDelAll();
  EXPECT_TRUE(topo->topoPortStatus().empty());
  EXPECT_EQ(ports.keys, pass);
  EXPECT_EQ(pass.size(), 3U);
  topo->topoPortStatusDelAll();
  EXPECT_EQ(ports.keys.size(), 3U);
}

template <class T>
concept WritesStatus = requires(T& status) {
  status.topoStatusIs("A", 1);
}
|| requires(T& status) { status.topoStatusDel("A"); }
|| requires(T& status) { status.topoStatusDelAll(); };
template <class T>
concept WritesTopo = requires(T& topo) {
  topo.topoPortStatusIs("Ethernet1", 0);
}
|| requires(T& topo) { topo.topoPortStatusDel("Ethernet1"); }
|| requires(T& topo) { topo.topoPortStatusDelAll(); };
static_assert(WritesStatus<Status> && !WritesStatus<const Status>);
static_assert(WritesTopo<TopoStatus> && !WritesTopo<const TopoStatus>);

TEST(InstStatus, isReadThroughPointerToConst) {
  const auto writable = statusFactory("instance");
  writable->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet1", 0);
  const Mox::Ptr<const Status> status = writable;
  const Recorder recorder(status.get());
  const auto* const topo = status->topoStatus("A");
  static_assert(std::is_same_v<decltype(topo), const TopoStatus* const>);
  EXPECT_EQ(topo, writable->topoStatus("A"));
  EXPECT_NE(topo->topoPortStatus("Ethernet1"), nullptr);
  writable->topoStatusDel("A");
  EXPECT_EQ(recorder.events, Events{topoStatusChanged});
}

}  // namespace Bridging::Topology::Inst::TopologyInstStatusTest
