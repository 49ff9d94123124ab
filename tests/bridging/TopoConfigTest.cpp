// The configuration of one topology and of its ports.

#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <vector>

#include "bridging/TopologyConfig.h"
#include "tests/support/Recorder.h"

namespace Bridging::Topology::TopoConfigTest {

using Quill::IntfId;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event topoPortConfigChanged{TopoConfig::topoPortConfigAttr.id(), true};
constexpr Recorder::Event publishPortConfigChanged{TopoConfig::publishPortConfigAttr.id(), false};
constexpr Recorder::Event publishedPortStateChanged{TopoConfig::publishedPortStateAttr.id(), false};
constexpr Recorder::Event portStateChanged{TopoPortConfig::portStateAttr.id(), false};
constexpr Recorder::Event fdbFlushChanged{TopoPortConfig::fdbFlushAttr.id(), false};

Mox::Ptr<TopoConfig> topoConfig() { return configFactory("config")->topoConfigIs("A", 1); }

TEST(TopoConfig, isMadeWithDefaults) {
  const auto topo = topoConfig();
  EXPECT_TRUE(topo->topoPortConfig().empty());
  EXPECT_FALSE(topo->publishPortConfig());
  EXPECT_EQ(topo->publishedPortState(), PortState::forwarding);
}

TEST(TopoConfig, topoPortConfigIsMakesAPortInTheState) {
  const auto topo = topoConfig();
  const auto port = topo->topoPortConfigIs("Ethernet1", 5, PortState::learning);
  EXPECT_EQ(topo->topoPortConfig("Ethernet1"), port.get());
  EXPECT_EQ(topo->topoPortConfig().size(), 1U);
  EXPECT_EQ(port->intfId(), IntfId("Ethernet1"));
  EXPECT_EQ(port->number(), 5U);
  EXPECT_EQ(port->portState(), PortState::learning);
  EXPECT_EQ(port->fdbFlush(), 0U);
  EXPECT_EQ(port->parent(), topo.get());
  EXPECT_EQ(topo->topoPortConfig("Ethernet2"), nullptr);
}

TEST(TopoConfig, topoPortConfigIsNotifiesOnceWithItsKey) {
  const auto topo = topoConfig();
  const Recorder all(topo.get(), [&](auto, const void*) {
    ASSERT_NE(topo->topoPortConfig("Ethernet1"), nullptr);
    EXPECT_EQ(topo->topoPortConfig("Ethernet1")->portState(), PortState::blocking);
  });
  const KeyRecorder<IntfId> ports(topo.get(), TopoConfig::topoPortConfigAttr);
  topo->topoPortConfigIs("Ethernet1", 0, PortState::blocking);
  EXPECT_EQ(all.events, Events{topoPortConfigChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(TopoConfig, topoPortConfigIsOfExistingPortInItsStateReturnsItSilently) {
  const auto topo = topoConfig();
  const auto port = topo->topoPortConfigIs("Ethernet1", 0, PortState::blocking);
  const Recorder topoRecorder(topo.get());
  const Recorder portRecorder(port.get());
  EXPECT_EQ(topo->topoPortConfigIs("Ethernet1", 0, PortState::blocking), port);
  EXPECT_TRUE(topoRecorder.events.empty());
  EXPECT_TRUE(portRecorder.events.empty());
}

TEST(TopoConfig, topoPortConfigIsOfExistingPortInAnotherStateWritesTheState) {
  const auto topo = topoConfig();
  const auto port = topo->topoPortConfigIs("Ethernet1", 0, PortState::blocking);
  port->fdbFlushIs(3);
  const Recorder topoRecorder(topo.get());
  const Recorder portRecorder(port.get());
  EXPECT_EQ(topo->topoPortConfigIs("Ethernet1", 0, PortState::forwarding), port);
  EXPECT_EQ(port->portState(), PortState::forwarding);
  EXPECT_EQ(port->fdbFlush(), 3U);
  EXPECT_TRUE(topoRecorder.events.empty());
  EXPECT_EQ(portRecorder.events, Events{portStateChanged});
}

TEST(TopoConfig, topoPortConfigIsOfPortWhoseStateWasWrittenSinceReturnsIt) {
  const auto topo = topoConfig();
  const auto port = topo->topoPortConfigIs("Ethernet1", 0, PortState::blocking);
  port->portStateIs(PortState::forwarding);
  EXPECT_EQ(topo->topoPortConfigIs("Ethernet1", 0, PortState::forwarding), port);
  EXPECT_EQ(port->portState(), PortState::forwarding);
}

TEST(TopoConfig, topoPortConfigIsOfExistingPortWithAnotherNumberRaisesAndChangesNothing) {
  const auto topo = topoConfig();
  const auto port = topo->topoPortConfigIs("Ethernet1", 1, PortState::blocking);
  const Recorder topoRecorder(topo.get());
  const Recorder portRecorder(port.get());
  try {
    topo->topoPortConfigIs("Ethernet1", 2, PortState::forwarding);
    ADD_FAILURE() << "no exception";
  } catch (const Mox::MutatorReinstantiatingException& e) {
    EXPECT_STREQ(e.what(), "topoPortConfigIs: a member of this key exists, made with other arguments");
  }
  EXPECT_EQ(topo->topoPortConfig("Ethernet1"), port.get());
  EXPECT_EQ(port->number(), 1U);
  EXPECT_EQ(port->portState(), PortState::blocking);
  EXPECT_TRUE(topoRecorder.events.empty());
  EXPECT_TRUE(portRecorder.events.empty());
}

TEST(TopoConfig, topoPortConfigDelRemovesThePortAndNotifiesOnce) {
  const auto topo = topoConfig();
  const auto port = topo->topoPortConfigIs("Ethernet1", 0, PortState::forwarding);
  topo->topoPortConfigIs("Ethernet2", 0, PortState::forwarding);
  const Recorder all(topo.get(), [&](auto, const void*) { EXPECT_EQ(topo->topoPortConfig("Ethernet1"), nullptr); });
  const KeyRecorder<IntfId> ports(topo.get(), TopoConfig::topoPortConfigAttr);
  topo->topoPortConfigDel("Ethernet3");
  EXPECT_TRUE(all.events.empty());
  topo->topoPortConfigDel("Ethernet1");
  EXPECT_EQ(topo->topoPortConfig().size(), 1U);
  EXPECT_EQ(port->parent(), nullptr);
  EXPECT_EQ(all.events, Events{topoPortConfigChanged});
  EXPECT_EQ(ports.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(TopoConfig, topoPortConfigDelAllNotifiesEachPortInOrderOfThePass) {
  const auto topo = topoConfig();
  for (const char* intf : {"Ethernet1", "Ethernet2", "Cpu"}) topo->topoPortConfigIs(intf, 0, PortState::forwarding);
  std::vector<IntfId> pass;
  for (const auto& [intf, port] : topo->topoPortConfig()) pass.push_back(intf);
  const KeyRecorder<IntfId> ports(topo.get(), TopoConfig::topoPortConfigAttr);
  topo->topoPortConfigDelAll();
  EXPECT_TRUE(topo->topoPortConfig().empty());
  EXPECT_EQ(ports.keys, pass);
  EXPECT_EQ(pass.size(), 3U);
  topo->topoPortConfigDelAll();
  EXPECT_EQ(ports.keys.size(), 3U);
}

TEST(TopoConfig, portMadeAgainIsANewEntity) {
  const auto topo = topoConfig();
  const auto old = topo->topoPortConfigIs("Ethernet1", 1, PortState::blocking);
  old->fdbFlushIs(9);
  topo->topoPortConfigDel("Ethernet1");
  const auto made = topo->topoPortConfigIs("Ethernet1", 2, PortState::forwarding);
  EXPECT_NE(made, old);
  EXPECT_EQ(made->number(), 2U);
  EXPECT_EQ(made->fdbFlush(), 0U);
  EXPECT_EQ(old->portState(), PortState::blocking);
}

TEST(TopoConfig, iterationVisitsEachPort) {
  const auto topo = topoConfig();
  for (const char* intf : {"Ethernet1", "PortChannel1", "Ethernet1.5"}) topo->topoPortConfigIs(intf, 0, PortState());
  std::map<IntfId, const TopoPortConfig*> visited;
  for (const auto& [intf, port] : topo->topoPortConfig()) {
    static_assert(std::is_same_v<decltype(port), const TopoPortConfig&>);
    EXPECT_TRUE(visited.emplace(intf, &port).second);
  }
  ASSERT_EQ(visited.size(), 3U);
  for (const auto& [intf, port] : visited) EXPECT_EQ(port, topo->topoPortConfig(intf));
}

TEST(TopoConfig, publishPortConfigIsNotifiesOnlyOnChange) {
  const auto topo = topoConfig();
  const Recorder recorder(topo.get());
  topo->publishPortConfigIs(false);
  EXPECT_TRUE(recorder.events.empty());
  topo->publishPortConfigIs(true);
  topo->publishPortConfigIs(true);
  EXPECT_TRUE(topo->publishPortConfig());
  EXPECT_EQ(recorder.events, Events{publishPortConfigChanged});
  topo->publishPortConfigIs(false);
  EXPECT_FALSE(topo->publishPortConfig());
  EXPECT_EQ(recorder.events, Events(2, publishPortConfigChanged));
}

TEST(TopoConfig, publishedPortStateIsNotifiesOnlyOnChange) {
  const auto topo = topoConfig();
  const Recorder recorder(topo.get());
  topo->publishedPortStateIs(PortState::forwarding);
  EXPECT_TRUE(recorder.events.empty());
  topo->publishedPortStateIs(PortState::blocking);
  topo->publishedPortStateIs(PortState::blocking);
  EXPECT_EQ(topo->publishedPortState(), PortState::blocking);
  EXPECT_EQ(recorder.events, Events{publishedPortStateChanged});
}

TEST(TopoPortConfig, portStateIsNotifiesOnlyOnChange) {
  const auto port = topoConfig()->topoPortConfigIs("Ethernet1", 0, PortState::blocking);
  const Recorder recorder(port.get(), [&](auto, const void*) { EXPECT_EQ(port->portState(), PortState::learning); });
  port->portStateIs(PortState::blocking);
  EXPECT_TRUE(recorder.events.empty());
  port->portStateIs(PortState::learning);
  port->portStateIs(PortState::learning);
  EXPECT_EQ(recorder.events, Events{portStateChanged});
}

TEST(TopoPortConfig, fdbFlushIsNotifiesOnlyOnChange) {
  const auto port = topoConfig()->topoPortConfigIs("Ethernet1", 0, PortState::blocking);
  const Recorder recorder(port.get());
  port->fdbFlushIs(0);
  EXPECT_TRUE(recorder.events.empty());
  port->fdbFlushIs(4294967295U);
  port->fdbFlushIs(4294967295U);
  EXPECT_EQ(port->fdbFlush(), 4294967295U);
  EXPECT_EQ(recorder.events, Events{fdbFlushChanged});
  port->fdbFlushIs(0);
  EXPECT_EQ(recorder.events, Events(2, fdbFlushChanged));
}

TEST(TopoPortConfig, outlivesItsTopologyWhileHeld) {
  auto topo = topoConfig();
  const auto port = topo->topoPortConfigIs("Ethernet1", 0, PortState::blocking);
  topo = nullptr;
  EXPECT_EQ(port->parent(), nullptr);
  EXPECT_EQ(port->intfId(), IntfId("Ethernet1"));
}

template <class T>
concept WritesTopo = requires(T& topo) {
  topo.topoPortConfigIs("Ethernet1", 0, PortState::blocking);
}
|| requires(T& topo) { topo.topoPortConfigDel("Ethernet1"); }
|| requires(T& topo) { topo.topoPortConfigDelAll(); }
|| requires(T& topo) { topo.publishPortConfigIs(true); }
|| requires(T& topo) { topo.publishedPortStateIs(PortState::blocking); };
template <class T>
concept WritesPort = requires(T& port) {
  port.portStateIs(PortState::blocking);
}
|| requires(T& port) { port.fdbFlushIs(1); };
static_assert(WritesTopo<TopoConfig> && !WritesTopo<const TopoConfig>);
static_assert(WritesPort<TopoPortConfig> && !WritesPort<const TopoPortConfig>);

TEST(TopoConfig, isReadThroughPointerToConst) {
  const auto writable = topoConfig();
  writable->topoPortConfigIs("Ethernet1", 0, PortState::blocking);
  const Mox::Ptr<const TopoConfig> topo = writable;
  const Recorder recorder(topo.get());
  const auto* const port = topo->topoPortConfig("Ethernet1");
  static_assert(std::is_same_v<decltype(port), const TopoPortConfig* const>);
  EXPECT_EQ(port, writable->topoPortConfig("Ethernet1"));
  writable->topoPortConfigDel("Ethernet1");
  EXPECT_EQ(recorder.events, Events{topoPortConfigChanged});
}

}  // namespace Bridging::Topology::TopoConfigTest
