#include "topolib/LibState.h"

#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"

namespace Topology::Library::LibStateTest {

using Mox::String;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event topoChanged{LibState::topoAttr.id(), true};
constexpr Recorder::Event initDoneChanged{LibState::initDoneAttr.id(), false};

TEST(LibState, isMadeEmptyWithItsName) {
  const auto state = libStateFactory("state");
  EXPECT_EQ(state->name(), "state");
  EXPECT_EQ(state->parent(), nullptr);
  EXPECT_TRUE(state->topo().empty());
  EXPECT_FALSE(state->initDone());
  EXPECT_EQ(state->references(), 1U);
}

TEST(LibState, factoryMakesANewOneEachTime) { EXPECT_NE(libStateFactory("state"), libStateFactory("state")); }

TEST(LibState, topoIsMakesATopology) {
  const auto state = libStateFactory("state");
  const auto topo = state->topoIs("A");
  EXPECT_EQ(state->topo("A"), topo.get());
  EXPECT_EQ(state->topo().size(), 1U);
  EXPECT_EQ(topo->name(), "A");
  EXPECT_EQ(topo->parent(), state.get());
  EXPECT_EQ(state->topo("B"), nullptr);
}

TEST(LibState, topoIsNotifiesOnceWithItsKey) {
  const auto state = libStateFactory("state");
  const Recorder all(state.get());
  const KeyRecorder<String> topos(state.get(), LibState::topoAttr);
  state->topoIs("A");
  EXPECT_EQ(all.events, Events{topoChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(LibState, topologyIsThereWithItsParentWhenItIsNotified) {
  const auto state = libStateFactory("state");
  const Recorder recorder(state.get(), [&](auto, const void*) {
    ASSERT_NE(state->topo("A"), nullptr);
    EXPECT_EQ(state->topo("A")->parent(), state.get());
  });
  state->topoIs("A");
  EXPECT_EQ(recorder.events.size(), 1U);
}

TEST(LibState, topoIsOfExistingNameReturnsSameObjectSilently) {
  const auto state = libStateFactory("state");
  const auto topo = state->topoIs("A");
  const Recorder recorder(state.get());
  EXPECT_EQ(state->topoIs("A"), topo);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibState, topologyMayHaveAnyName) {
  const auto state = libStateFactory("");
  EXPECT_EQ(state->name(), "");
  EXPECT_EQ(state->topoIs("")->name(), "");
  EXPECT_EQ(state->topo(""), state->topoIs("").get());
  EXPECT_NE(state->topoIs("a"), state->topoIs("A"));
}

TEST(LibState, topoDelRemovesTheTopologyAndNotifiesOnce) {
  const auto state = libStateFactory("state");
  const auto topo = state->topoIs("A");
  state->topoIs("B");
  const Recorder all(state.get(), [&](auto, const void*) { EXPECT_EQ(state->topo("A"), nullptr); });
  const KeyRecorder<String> topos(state.get(), LibState::topoAttr);
  state->topoDel("A");
  EXPECT_EQ(state->topo().size(), 1U);
  EXPECT_NE(state->topo("B"), nullptr);
  EXPECT_EQ(topo->parent(), nullptr);
  EXPECT_EQ(all.events, Events{topoChanged});
  EXPECT_EQ(topos.keys, std::vector<String>{"A"});
}

TEST(LibState, topoDelOfAbsentNameDoesNothing) {
  const auto state = libStateFactory("state");
  state->topoIs("A");
  const Recorder recorder(state.get());
  state->topoDel("B");
  state->topoDel("");
  EXPECT_EQ(state->topo().size(), 1U);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibState, topoDelAllNotifiesEachTopologyInOrderOfThePass) {
  const auto state = libStateFactory("state");
  for (const char* name : {"A", "B", "C"}) state->topoIs(name);
  std::vector<String> pass;
  for (const auto& [name, topo] : state->topo()) pass.push_back(name);
  const Recorder all(state.get());
  const KeyRecorder<String> topos(state.get(), LibState::topoAttr);
  state->topoDelAll();
  EXPECT_TRUE(state->topo().empty());
  EXPECT_EQ(all.events, Events(3, topoChanged));
  EXPECT_EQ(topos.keys, pass);
}

TEST(LibState, topoDelAllRemovesOneByOne) {
  const auto state = libStateFactory("state");
  for (const char* name : {"A", "B", "C"}) state->topoIs(name);
  std::vector<std::size_t> sizes;
  const Recorder recorder(state.get(), [&](auto, const void*) { sizes.push_back(state->topo().size()); });
  state->topoDelAll();
  EXPECT_EQ(sizes, (std::vector<std::size_t>{2, 1, 0}));
}

TEST(LibState, topoDelAllOfNoneIsSilent) {
  const auto state = libStateFactory("state");
  const Recorder recorder(state.get());
  state->topoDelAll();
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibState, topologyMadeAgainIsANewEntity) {
  const auto state = libStateFactory("state");
  const auto old = state->topoIs("A");
  old->portIs("Ethernet1");
  state->topoDel("A");
  const auto made = state->topoIs("A");
  EXPECT_NE(made, old);
  EXPECT_TRUE(made->port().empty());
  EXPECT_EQ(old->port().size(), 1U);
}

TEST(LibState, topologyThatAHandlerDeletesIsStillReturned) {
  const auto state = libStateFactory("state");
  const Recorder recorder(state.get(), [&](auto, const void*) { state->topoDel("A"); });
  const auto topo = state->topoIs("A");
  ASSERT_NE(topo, nullptr);
  EXPECT_EQ(topo->name(), "A");
  EXPECT_EQ(topo->parent(), nullptr);
  EXPECT_TRUE(state->topo().empty());
  EXPECT_EQ(recorder.events, Events(2, topoChanged));
}

TEST(LibState, iterationVisitsEachTopology) {
  const auto state = libStateFactory("state");
  for (const char* name : {"A", "B", "", "another"}) state->topoIs(name);
  std::map<String, const Topo*> visited;
  for (const auto& [name, topo] : state->topo()) {
    static_assert(std::is_same_v<decltype(topo), const Topo&>);
    EXPECT_TRUE(visited.emplace(name, &topo).second);
  }
  ASSERT_EQ(visited.size(), 4U);
  for (const auto& [name, topo] : visited) EXPECT_EQ(topo, state->topo(name));
}

TEST(LibState, iterationGoesOnWhenItsTopologyIsDeleted) {
  const auto state = libStateFactory("state");
  for (int i = 0; i < 20; ++i) state->topoIs(std::to_string(i));
  std::size_t visited = 0;
  for (const auto& [name, topo] : state->topo()) {
    ++visited;
    state->topoDel(name);
  }
  EXPECT_EQ(visited, 20U);
  EXPECT_TRUE(state->topo().empty());
}

TEST(LibState, initDoneIsTwiceNotifiesOnce) {
  const auto state = libStateFactory("state");
  const Recorder recorder(state.get(), [&](auto, const void*) { EXPECT_TRUE(state->initDone()); });
  state->initDoneIs(true);
  state->initDoneIs(true);
  EXPECT_TRUE(state->initDone());
  EXPECT_EQ(recorder.events, Events{initDoneChanged});
}

TEST(LibState, initDoneIsOfItsFirstValueIsSilent) {
  const auto state = libStateFactory("state");
  const Recorder recorder(state.get());
  state->initDoneIs(false);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibState, ownsItsTopologies) {
  const auto state = libStateFactory("state");
  const auto topo = state->topoIs("A");
  EXPECT_EQ(topo->references(), 2U);
  state->topoDel("A");
  EXPECT_EQ(topo->references(), 1U);
}

TEST(LibState, leavesHeldMembersBehindWhenItEnds) {
  auto state = libStateFactory("state");
  const auto topo = state->topoIs("A");
  const auto port = state->topoIs("B")->portIs("Ethernet1");
  port->stateIs(Bridging::Topology::PortState::forwarding);
  state = nullptr;
  EXPECT_EQ(topo->references(), 1U);
  EXPECT_EQ(topo->parent(), nullptr);
  EXPECT_EQ(topo->name(), "A");
  EXPECT_EQ(port->references(), 1U);
  EXPECT_EQ(port->parent(), nullptr);
  EXPECT_EQ(port->intf(), Quill::IntfId("Ethernet1"));
  EXPECT_EQ(port->state(), Bridging::Topology::PortState::forwarding);
}

TEST(LibState, endIsNotNotified) {
  auto state = libStateFactory("state");
  const auto topo = state->topoIs("A");
  topo->portIs("Ethernet1");
  const Recorder recorder(topo.get());
  state = nullptr;
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_EQ(topo->port().size(), 1U);
}

template <class T>
concept WritesState = requires(T& state) {
  state.topoIs("A");
}
|| requires(T& state) { state.topoDel("A"); }
|| requires(T& state) { state.topoDelAll(); }
|| requires(T& state) { state.initDoneIs(true); };
static_assert(WritesState<LibState> && !WritesState<const LibState>);

TEST(LibState, isReadThroughPointerToConst) {
  const auto writable = libStateFactory("state");
  writable->topoIs("A")->portIs("Ethernet1");
  const Mox::Ptr<const LibState> state = writable;
  const Recorder recorder(state.get());
  const auto* const topo = state->topo("A");
  static_assert(std::is_same_v<decltype(topo), const Topo* const>);
  static_assert(std::is_same_v<decltype(topo->port("Ethernet1")), const Port*>);
  EXPECT_EQ(topo, writable->topo("A"));
  EXPECT_NE(topo->port("Ethernet1"), nullptr);
  writable->initDoneIs(true);
  EXPECT_TRUE(state->initDone());
  EXPECT_EQ(recorder.events, Events{initDoneChanged});
}

}  // namespace Topology::Library::LibStateTest
