// The published state of one port of a topology.

#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"
#include "topolib/LibState.h"

namespace Topology::Library::PortTest {

using Bridging::AllowedTrafficDirection;
using Bridging::VlanId;
using Bridging::VlanPortConfig;
using Bridging::Topology::PortState;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event vlanPortConfigChanged{Port::vlanPortConfigAttr.id(), true};
constexpr Recorder::Event activeChanged{Port::activeAttr.id(), false};
constexpr Recorder::Event stateChanged{Port::stateAttr.id(), false};
constexpr Recorder::Event fdbFlushChanged{Port::fdbFlushAttr.id(), false};

const VlanPortConfig tagged;
const VlanPortConfig untagged(AllowedTrafficDirection::both, true);

Mox::Ptr<Port> madePort() { return libStateFactory("state")->topoIs("A")->portIs("Ethernet1"); }

TEST(Port, isMadeWithDefaults) {
  const auto port = madePort();
  EXPECT_EQ(port->intf(), Quill::IntfId("Ethernet1"));
  EXPECT_EQ(port->name(), "");
  EXPECT_TRUE(port->vlanPortConfig().empty());
  EXPECT_FALSE(port->active());
  EXPECT_EQ(port->state(), PortState());
  EXPECT_EQ(static_cast<unsigned>(port->state()), 0U);
  EXPECT_EQ(port->fdbFlush(), 0U);
}

TEST(Port, vlanPortConfigIsOfNewVlanInsertsAndNotifiesOnce) {
  const auto port = madePort();
  const Recorder all(port.get(), [&](auto, const void*) { EXPECT_EQ(*port->vlanPortConfig(10), untagged); });
  const KeyRecorder<VlanId> vlans(port.get(), Port::vlanPortConfigAttr);
  port->vlanPortConfigIs(10, untagged);
  ASSERT_NE(port->vlanPortConfig(10), nullptr);
  EXPECT_EQ(*port->vlanPortConfig(10), untagged);
  EXPECT_EQ(port->vlanPortConfig(11), nullptr);
  EXPECT_EQ(port->vlanPortConfig().size(), 1U);
  EXPECT_EQ(all.events, Events{vlanPortConfigChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(Port, vlanPortConfigIsOfDefaultValueInsertsAsWell) {
  const auto port = madePort();
  const Recorder recorder(port.get());
  port->vlanPortConfigIs(10, VlanPortConfig());
  EXPECT_NE(port->vlanPortConfig(10), nullptr);
  EXPECT_EQ(recorder.events, Events{vlanPortConfigChanged});
}

TEST(Port, vlanPortConfigIsOfEqualValueIsSilent) {
  const auto port = madePort();
  port->vlanPortConfigIs(10, untagged);
  const Recorder recorder(port.get());
  port->vlanPortConfigIs(10, VlanPortConfig(AllowedTrafficDirection::both, true));
  EXPECT_TRUE(recorder.events.empty());
}

TEST(Port, vlanPortConfigIsOfAnotherValueNotifiesExactlyOnce) {
  const auto port = madePort();
  port->vlanPortConfigIs(10, untagged);
  const Recorder all(port.get(), [&](auto, const void*) { EXPECT_EQ(*port->vlanPortConfig(10), tagged); });
  const KeyRecorder<VlanId> vlans(port.get(), Port::vlanPortConfigAttr);
  port->vlanPortConfigIs(10, tagged);
  EXPECT_EQ(port->vlanPortConfig().size(), 1U);
  EXPECT_EQ(all.events, Events{vlanPortConfigChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(Port, vlanPortConfigIsNotifiesADifferenceInAnyPart) {
  const auto port = madePort();
  port->vlanPortConfigIs(10, VlanPortConfig());
  const Recorder recorder(port.get());
  port->vlanPortConfigIs(10, VlanPortConfig(AllowedTrafficDirection::ingress));
  port->vlanPortConfigIs(10, VlanPortConfig(AllowedTrafficDirection::ingress, true));
  port->vlanPortConfigIs(10, VlanPortConfig(AllowedTrafficDirection::ingress, true, true));
  EXPECT_EQ(recorder.events, Events(3, vlanPortConfigChanged));
}

TEST(Port, vlanPortConfigIsOfNoVlanRaisesAndChangesNothing) {
  const auto port = madePort();
  const Recorder recorder(port.get());
  EXPECT_THROW(port->vlanPortConfigIs(0, tagged), Mox::RangeException);
  EXPECT_THROW(port->vlanPortConfigIs(4095, tagged), Mox::RangeException);
  EXPECT_TRUE(port->vlanPortConfig().empty());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(Port, vlanPortConfigDelNotifiesOnceAndOnlyWhenPresent) {
  const auto port = madePort();
  port->vlanPortConfigIs(10, tagged);
  port->vlanPortConfigIs(20, tagged);
  const Recorder all(port.get(), [&](auto, const void*) { EXPECT_EQ(port->vlanPortConfig(10), nullptr); });
  const KeyRecorder<VlanId> vlans(port.get(), Port::vlanPortConfigAttr);
  port->vlanPortConfigDel(11);
  EXPECT_TRUE(all.events.empty());
  port->vlanPortConfigDel(10);
  EXPECT_EQ(port->vlanPortConfig().size(), 1U);
  EXPECT_EQ(all.events, Events{vlanPortConfigChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(Port, vlanPortConfigDelAllNotifiesEachVlan) {
  const auto port = madePort();
  std::vector<VlanId> all;
  for (int vid = 1; vid <= 4094; ++vid) {
    port->vlanPortConfigIs(vid, tagged);
    all.emplace_back(vid);
  }
  const KeyRecorder<VlanId> vlans(port.get(), Port::vlanPortConfigAttr);
  port->vlanPortConfigDelAll();
  EXPECT_TRUE(port->vlanPortConfig().empty());
  EXPECT_EQ(vlans.keys, all);
  port->vlanPortConfigDelAll();
  EXPECT_EQ(vlans.keys.size(), all.size());
}

TEST(Port, iterationVisitsEachVlan) {
  const auto port = madePort();
  port->vlanPortConfigIs(4094, tagged);
  port->vlanPortConfigIs(1, untagged);
  port->vlanPortConfigIs(10, tagged);
  std::map<VlanId, bool> visited;
  for (const auto& [vid, config] : port->vlanPortConfig()) visited.emplace(vid, config.untagged());
  EXPECT_EQ(visited, (std::map<VlanId, bool>{{1, true}, {10, false}, {4094, false}}));
}

TEST(Port, activeIsNotifiesOnlyOnChange) {
  const auto port = madePort();
  const Recorder recorder(port.get());
  port->activeIs(false);
  EXPECT_TRUE(recorder.events.empty());
  port->activeIs(true);
  port->activeIs(true);
  EXPECT_TRUE(port->active());
  EXPECT_EQ(recorder.events, Events{activeChanged});
  port->activeIs(false);
  EXPECT_FALSE(port->active());
  EXPECT_EQ(recorder.events, Events(2, activeChanged));
}

TEST(Port, stateIsNotifiesOnlyOnChange) {
  const auto port = madePort();
  const Recorder recorder(port.get());
  port->stateIs(PortState::disabled);
  EXPECT_TRUE(recorder.events.empty());
  for (const auto state : {PortState::blocking, PortState::learning, PortState::forwarding, PortState::disabled}) {
    port->stateIs(state);
    port->stateIs(state);
    EXPECT_EQ(port->state(), state);
  }
  EXPECT_EQ(recorder.events, Events(4, stateChanged));
}

TEST(Port, fdbFlushIsNotifiesOnlyOnChange) {
  const auto port = madePort();
  const Recorder recorder(port.get());
  port->fdbFlushIs(0);
  EXPECT_TRUE(recorder.events.empty());
  for (const std::uint32_t count : {1U, 2U, 4294967295U, 0U}) {
    port->fdbFlushIs(count);
    port->fdbFlushIs(count);
    EXPECT_EQ(port->fdbFlush(), count);
  }
  EXPECT_EQ(recorder.events, Events(4, fdbFlushChanged));
}

TEST(Port, attributesAreWrittenOneByOne) {
  const auto port = madePort();
  port->vlanPortConfigIs(10, untagged);
  port->activeIs(true);
  port->stateIs(PortState::learning);
  port->fdbFlushIs(7);
  EXPECT_EQ(*port->vlanPortConfig(10), untagged);
  EXPECT_TRUE(port->active());
  EXPECT_EQ(port->state(), PortState::learning);
  EXPECT_EQ(port->fdbFlush(), 7U);
}

TEST(Port, notifiesAfterItsRemovalWhileItIsHeld) {
  const auto topo = libStateFactory("state")->topoIs("A");
  const auto port = topo->portIs("Ethernet1");
  const Recorder recorder(port.get());
  topo->portDel("Ethernet1");
  EXPECT_TRUE(recorder.events.empty());
  port->activeIs(true);
  EXPECT_EQ(recorder.events, Events{activeChanged});
}

TEST(Port, isKeptByAReactorOnIt) {
  const auto topo = libStateFactory("state")->topoIs("A");
  const Recorder recorder(topo->portIs("Ethernet1").get());
  topo->portDelAll();
  EXPECT_EQ(static_cast<const Port*>(recorder.notifier())->intf(), Quill::IntfId("Ethernet1"));
}

template <class T>
concept WritesPort = requires(T& port) {
  port.vlanPortConfigIs(10, tagged);
}
|| requires(T& port) { port.vlanPortConfigDel(10); }
|| requires(T& port) { port.vlanPortConfigDelAll(); }
|| requires(T& port) { port.activeIs(true); }
|| requires(T& port) { port.stateIs(PortState::blocking); }
|| requires(T& port) { port.fdbFlushIs(1); };
static_assert(WritesPort<Port> && !WritesPort<const Port>);

}  // namespace Topology::Library::PortTest
