#include "topolib/LibState.h"

#include <gtest/gtest.h>

#include "tests/support/Recorder.h"

namespace Topology::Library {
namespace {

using Test::KeyRecorder;
using Test::Recorder;

TEST(LibState, topoIsOfExistingNameReturnsSameObjectSilently) {
  auto state = libStateFactory("state");
  auto a = state->topoIs("A");
  Recorder recorder(state.get());
  EXPECT_EQ(state->topoIs("A"), a);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(LibState, topoDelAllNotifiesEachTopology) {
  auto state = libStateFactory("state");
  state->topoIs("A");
  state->topoIs("B");
  state->topoIs("C");
  KeyRecorder<Mox::String> recorder(state.get(), LibState::topoAttr);
  state->topoDelAll();
  EXPECT_EQ(recorder.keys.size(), 3U);
  EXPECT_TRUE(state->topo().empty());
}

}  // namespace
}  // namespace Topology::Library
