// What the backlog processor does at once, without deferral.

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Codef.h"
#include "topolib/TopoLibCodef.h"

namespace Topology::Library::TopoLibCodefImmediateTest {

using Test::Agent;
using Test::CodefBase;
using Test::Start;
using Test::TraceLines;

constexpr double never = std::numeric_limits<double>::infinity();

class TopoLibCodefImmediate : public CodefBase {
 protected:
  TopoLibCodefImmediate() : CodefBase(false) {}
};

TEST_F(TopoLibCodefImmediate, isIdleAndNeverOnTheClock) {
  EXPECT_TRUE(codef().codefState()->idle());
  EXPECT_EQ(codef().timeMin(), never);
  EXPECT_EQ(Mox::activityManager()->nextDue(), never);
  const TraceLines trace("TopoLib", Mox::traceLevel(9));
  Agent other(Start{.deferProcessing = false});
  other.startLibrary();
  EXPECT_TRUE(trace.has(9, "TopoLibCodef::handleInitialized idleIs true"));
  mark(10, "Ethernet1");
  EXPECT_TRUE(codef().codefState()->idle());
  EXPECT_EQ(Mox::activityManager()->nextDue(), never);
}

TEST_F(TopoLibCodefImmediate, markIsServedBeforeTheCallReturns) {
  agent.memberIs(10, "Ethernet1");
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan().empty());
  agent.brConfig->vlanConfigDel(10);
  EXPECT_EQ(agent.port("A", "Ethernet1"), nullptr);
}

TEST_F(TopoLibCodefImmediate, runNeverSeesHalfAMark) {
  const std::uint64_t before = codef().dispatchCount();
  const TraceLines trace("TopoLib");
  mark(10, "");
  EXPECT_EQ(codef().dispatchCount(), before + 1);
  EXPECT_EQ(trace.count(8, "TopoLibCodef::doProcessBacklog()"), 1U);
  EXPECT_TRUE(trace.has(5, " setting bookmark to 10"));
  mark(10, "Ethernet1");
  EXPECT_EQ(codef().dispatchCount(), before + 2);
  EXPECT_TRUE(trace.has(5, "processing interface Ethernet1"));
}

TEST_F(TopoLibCodefImmediate, marksNestAndTheRunComesWithTheOutermost) {
  const std::uint64_t before = codef().dispatchCount();
  codef().doMark([&] {
    mark(10, "");
    mark(11, "Ethernet1");
    EXPECT_EQ(codef().dispatchCount(), before);
    EXPECT_EQ(agent.libSm->dirtyVlanDir()->dirtyVlan().size(), 2U);
  });
  EXPECT_EQ(codef().dispatchCount(), before + 1);
  EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan().empty());
}

TEST_F(TopoLibCodefImmediate, startIsOneMark) {
  Agent other(Start{.deferProcessing = false});
  other.topoIs("A");
  for (unsigned vid = 1; vid <= 5; ++vid) {
    other.vlanIs(vid, "A");
    other.memberIs(vid, "Ethernet1");
  }
  const TraceLines trace("TopoLib");
  other.startLibrary();
  EXPECT_TRUE(other.state->initDone());
  EXPECT_EQ(other.libSm->topoLibCodef()->dispatchCount(), 1U);
  EXPECT_EQ(trace.count(8, "TopoLibCodef::doProcessBacklog()"), 1U);
  EXPECT_EQ(trace.count(8, "LibSm::doOnInitDone"), 1U);
  for (unsigned vid = 1; vid <= 5; ++vid) EXPECT_TRUE(other.carries("A", "Ethernet1", vid));
}

TEST_F(TopoLibCodefImmediate, oneBuiltOnAFilledDirectoryServesItWhenItIsThrough) {
  const auto filled = dirtyVlanDirFactory("filled");
  filled->dirtyVlanIs(11)->dirtyIs(true);
  filled->dirtyVlanIs(10)->intfIs("Ethernet1");
  const TraceLines trace("TopoLib");
  const auto other = TopoLibCodef::TopoLibCodefIs(agent.libSm.get(), filled, Mox::activityManager()->clock());
  EXPECT_TRUE(filled->dirtyVlan().empty());
  EXPECT_TRUE(other->dirtyVlan().empty());
  EXPECT_EQ(other->dispatchCount(), 1U);
  EXPECT_EQ(trace.lines().front(), std::pair(9U, std::string("TopoLibCodef::handleInitialized idleIs true")));
  EXPECT_EQ(trace.count(8, "TopoLibCodef::doProcessBacklog()"), 1U);
  EXPECT_EQ(trace.count(5, "processing interface Ethernet1"), 1U);
}

}  // namespace Topology::Library::TopoLibCodefImmediateTest
