// The published state of one topology.

#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"
#include "topolib/LibState.h"

namespace Topology::Library::TopoTest {

using Quill::IntfId;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event portChanged{Topo::portAttr.id(), true};

Mox::Ptr<Topo> topology() { return libStateFactory("state")->topoIs("A"); }

TEST(Topo, isMadeWithoutPorts) { EXPECT_TRUE(topology()->port().empty()); }

TEST(Topo, portIsMakesAPort) {
  const auto topo = topology();
  const auto port = topo->portIs("Ethernet1");
  EXPECT_EQ(topo->port("Ethernet1"), port.get());
  EXPECT_EQ(topo->port().size(), 1U);
  EXPECT_EQ(port->intf(), IntfId("Ethernet1"));
  EXPECT_EQ(port->parent(), topo.get());
  EXPECT_EQ(topo->port("Ethernet2"), nullptr);
}

TEST(Topo, portIsNotifiesOnceWithItsKey) {
  const auto topo = topology();
  const Recorder all(topo.get());
  const KeyRecorder<IntfId> ports(topo.get(), Topo::portAttr);
  topo->portIs("Ethernet1");
  EXPECT_EQ(all.events, Events{portChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(Topo, portIsThereWithItsParentWhenItIsNotified) {
  const auto topo = topology();
  const Recorder recorder(topo.get(), [&](auto, const void*) {
    ASSERT_NE(topo->port("Ethernet1"), nullptr);
    EXPECT_EQ(topo->port("Ethernet1")->parent(), topo.get());
  });
  topo->portIs("Ethernet1");
  EXPECT_EQ(recorder.events.size(), 1U);
}

TEST(Topo, portIsOfExistingInterfaceReturnsSameObjectSilently) {
  const auto topo = topology();
  const auto port = topo->portIs("Ethernet1");
  const Recorder recorder(topo.get());
  EXPECT_EQ(topo->portIs("Ethernet1"), port);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(Topo, changesOfItsPortsAreNotItsOwn) {
  const auto topo = topology();
  const auto port = topo->portIs("Ethernet1");
  const Recorder recorder(topo.get());
  port->activeIs(true);
  port->vlanPortConfigIs(10, Bridging::VlanPortConfig());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(Topo, portDelRemovesThePortAndNotifiesOnce) {
  const auto topo = topology();
  const auto port = topo->portIs("Ethernet1");
  topo->portIs("Ethernet2");
  const Recorder all(topo.get(), [&](auto, const void*) { EXPECT_EQ(topo->port("Ethernet1"), nullptr); });
  const KeyRecorder<IntfId> ports(topo.get(), Topo::portAttr);
  topo->portDel("Ethernet1");
  EXPECT_EQ(topo->port().size(), 1U);
  EXPECT_NE(topo->port("Ethernet2"), nullptr);
  EXPECT_EQ(port->parent(), nullptr);
  EXPECT_EQ(all.events, Events{portChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(Topo, portDelOfAbsentInterfaceDoesNothing) {
  const auto topo = topology();
  topo->portIs("Ethernet1");
  const Recorder recorder(topo.get());
  topo->portDel("Ethernet2");
  EXPECT_EQ(topo->port().size(), 1U);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(Topo, portDelAllNotifiesEachPortInOrderOfThePass) {
  const auto topo = topology();
  for (const char* intf : {"Ethernet1", "Ethernet2", "PortChannel1"}) topo->portIs(intf);
  std::vector<IntfId> pass;
  for (const auto& [intf, port] : topo->port()) pass.push_back(intf);
  const Recorder all(topo.get());
  const KeyRecorder<IntfId> ports(topo.get(), Topo::portAttr);
  topo->portDelAll();
  EXPECT_TRUE(topo->port().empty());
  EXPECT_EQ(all.events, Events(3, portChanged));
  EXPECT_EQ(ports.keys, pass);
}

TEST(Topo, portDelAllOfNoneIsSilent) {
  const auto topo = topology();
  const Recorder recorder(topo.get());
  topo->portDelAll();
  EXPECT_TRUE(recorder.events.empty());
}

TEST(Topo, portMadeAgainIsANewEntity) {
  const auto topo = topology();
  const auto old = topo->portIs("Ethernet1");
  old->activeIs(true);
  old->vlanPortConfigIs(10, Bridging::VlanPortConfig());
  topo->portDel("Ethernet1");
  const auto made = topo->portIs("Ethernet1");
  EXPECT_NE(made, old);
  EXPECT_FALSE(made->active());
  EXPECT_TRUE(made->vlanPortConfig().empty());
}

TEST(Topo, iterationVisitsEachPort) {
  const auto topo = topology();
  for (const char* intf : {"Ethernet1", "Ethernet2", "Cpu", "Ethernet1.5", "no known form"}) topo->portIs(intf);
  std::map<IntfId, const Port*> visited;
  for (const auto& [intf, port] : topo->port()) {
    static_assert(std::is_same_v<decltype(port), const Port&>);
    EXPECT_TRUE(visited.emplace(intf, &port).second);
  }
  ASSERT_EQ(visited.size(), 5U);
  for (const auto& [intf, port] : visited) EXPECT_EQ(port, topo->port(intf));
}

TEST(Topo, sameInterfaceInTwoTopologiesIsTwoPorts) {
  const auto state = libStateFactory("state");
  const auto inA = state->topoIs("A")->portIs("Ethernet1");
  const auto inB = state->topoIs("B")->portIs("Ethernet1");
  EXPECT_NE(inA, inB);
  inA->activeIs(true);
  EXPECT_FALSE(inB->active());
}

TEST(Topo, ownsItsPorts) {
  const auto topo = topology();
  const auto port = topo->portIs("Ethernet1");
  EXPECT_EQ(port->references(), 2U);
  topo->portDelAll();
  EXPECT_EQ(port->references(), 1U);
}

TEST(Topo, keepsItsPortsWhenItIsRemovedAndHeld) {
  const auto state = libStateFactory("state");
  const auto topo = state->topoIs("A");
  const auto port = topo->portIs("Ethernet1");
  state->topoDel("A");
  EXPECT_EQ(topo->port("Ethernet1"), port.get());
  EXPECT_EQ(port->parent(), topo.get());
}

template <class T>
concept WritesTopo = requires(T& topo) {
  topo.portIs("Ethernet1");
}
|| requires(T& topo) { topo.portDel("Ethernet1"); }
|| requires(T& topo) { topo.portDelAll(); };
static_assert(WritesTopo<Topo> && !WritesTopo<const Topo>);

}  // namespace Topology::Library::TopoTest
