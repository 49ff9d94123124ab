#include "topolib/TopoLibCodefState.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/Recorder.h"

namespace Topology::Library::TopoLibCodefStateTest {

using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event idleChanged{TopoLibCodefState::idleAttr.id(), false};

TEST(TopoLibCodefState, isMadeBusyWithItsName) {
  const auto state = Mox::makePtr<TopoLibCodefState>("codefState");
  EXPECT_EQ(state->name(), "codefState");
  EXPECT_EQ(state->parent(), nullptr);
  EXPECT_FALSE(state->idle());
}

TEST(TopoLibCodefState, idleIsNotifiesOnlyOnChange) {
  const auto state = Mox::makePtr<TopoLibCodefState>("codefState");
  const Recorder recorder(state.get());
  state->idleIs(false);
  EXPECT_TRUE(recorder.events.empty());
  state->idleIs(true);
  state->idleIs(true);
  EXPECT_TRUE(state->idle());
  EXPECT_EQ(recorder.events, Events{idleChanged});
  state->idleIs(false);
  EXPECT_FALSE(state->idle());
  EXPECT_EQ(recorder.events, Events(2, idleChanged));
}

TEST(TopoLibCodefState, idleHasItsNewValueWhenItIsNotified) {
  const auto state = Mox::makePtr<TopoLibCodefState>("codefState");
  const Recorder recorder(state.get(), [&](auto, const void*) { EXPECT_TRUE(state->idle()); });
  state->idleIs(true);
  EXPECT_EQ(recorder.events.size(), 1U);
}

}  // namespace Topology::Library::TopoLibCodefStateTest
