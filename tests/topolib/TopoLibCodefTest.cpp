// Marking VLANs and asking for runs.

#include "topolib/TopoLibCodef.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "mox/Exception.h"
#include "tests/support/Recorder.h"
#include "tests/support/TraceLines.h"
#include "tests/topolib/Codef.h"
#include "tests/topolib/Observed.h"

namespace Topology::Library::TopoLibCodefTest {

using Test::Agent;
using Test::assertionReport;
using Test::CodefBase;
using Test::Messages;
using Test::Recorder;
using Test::TraceLines;

using Lines = std::vector<std::string>;
using Traces = std::vector<std::pair<unsigned, std::string>>;

constexpr double never = std::numeric_limits<double>::infinity();

std::string ethernet(unsigned number) { return "Ethernet" + std::to_string(number); }

class TopoLibCodefTest : public CodefBase {
 protected:
  TopoLibCodefTest() : CodefBase(true) {}
};

TEST_F(TopoLibCodefTest, interfaceIsMarked) {
  const TraceLines trace("TopoLib");
  const Messages messages;
  mark(10, "Ethernet1");
  ASSERT_NE(dirtyVlan(10), nullptr);
  EXPECT_FALSE(dirtyVlan(10)->dirty());
  EXPECT_EQ(dirtyVlan(10)->intf().size(), 1U);
  ASSERT_NE(dirtyVlan(10)->intf("Ethernet1"), nullptr);
  EXPECT_TRUE(*dirtyVlan(10)->intf("Ethernet1"));
  EXPECT_EQ(trace.lines(), (Traces{{8, "doOnVlanPortUpdate vid 10 intf Ethernet1"},
                                   {9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"},
                                   {4, "doOnVlanPortUpdate: adding intf Ethernet1 to vlan 10"},
                                   {9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"}}));
  EXPECT_EQ(messages.texts(), Lines{"doOnVlanPortUpdate: adding intf Ethernet1 to vlan 10"});
}

TEST_F(TopoLibCodefTest, interfaceMarkedTwiceIsRecordedOnce) {
  mark(10, "Ethernet1");
  const TraceLines trace("TopoLib");
  mark(10, "Ethernet1");
  EXPECT_EQ(trace.lines(), (Traces{{8, "doOnVlanPortUpdate vid 10 intf Ethernet1"},
                                   {4, "Already marked dirty, nothing to do, returning"}}));
  EXPECT_EQ(dirtyVlan(10)->intf().size(), 1U);
  EXPECT_EQ(codef().updatesSeen(), 1U);
}

TEST_F(TopoLibCodefTest, emptyInterfaceMarksTheWholeVlan) {
  mark(10, "Ethernet1");
  mark(10, "Ethernet2");
  const TraceLines trace("TopoLib");
  const Messages messages;
  mark(10, "");
  EXPECT_TRUE(dirtyVlan(10)->dirty());
  EXPECT_TRUE(dirtyVlan(10)->intf().empty());
  ASSERT_GE(trace.lines().size(), 2U);
  EXPECT_EQ(trace.lines()[0], std::pair(8U, std::string("doOnVlanPortUpdate vid 10 intf ")));
  EXPECT_EQ(trace.lines()[1], std::pair(4U, std::string("doOnVlanPortUpdate: setting dirty to true 10")));
  EXPECT_EQ(trace.count(9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"), 3U);
  EXPECT_EQ(messages.texts(), Lines{});
}

TEST_F(TopoLibCodefTest, wholeVlanIsMarkedBeforeItsInterfacesAreEmptied) {
  mark(10, "Ethernet1");
  std::vector<bool> wasDirty;
  const Recorder recorder(dirtyVlan(10), [&](Mox::AttributeId id, const void*) {
    if (id == DirtyVlan::intfAttr.id()) wasDirty.push_back(dirtyVlan(10)->dirty());
  });
  mark(10, "");
  EXPECT_EQ(wasDirty, std::vector<bool>{true});
}

TEST_F(TopoLibCodefTest, interfaceOfAWhollyDirtyVlanChangesNothing) {
  mark(10, "");
  const TraceLines trace("TopoLib");
  mark(10, "Ethernet1");
  mark(10, "");
  EXPECT_TRUE(dirtyVlan(10)->dirty());
  EXPECT_TRUE(dirtyVlan(10)->intf().empty());
  EXPECT_EQ(trace.count(4, "Already marked dirty, nothing to do, returning"), 2U);
  EXPECT_EQ(trace.lines().size(), 4U);
}

TEST_F(TopoLibCodefTest, oneInterfaceMoreThanTheThresholdIsRecordedOneByOne) {
  ASSERT_EQ(agent.libSm->dirtyVlanPortThreshold(), 20U);
  for (unsigned i = 1; i <= 21; ++i) mark(10, ethernet(i));
  EXPECT_FALSE(dirtyVlan(10)->dirty());
  EXPECT_EQ(dirtyVlan(10)->intf().size(), 21U);
  EXPECT_EQ(codef().updatesSeen(), 21U);
  mark(10, ethernet(21));
  EXPECT_FALSE(dirtyVlan(10)->dirty());
  const TraceLines trace("TopoLib");
  mark(10, ethernet(22));
  EXPECT_TRUE(dirtyVlan(10)->dirty());
  EXPECT_TRUE(dirtyVlan(10)->intf().empty());
  EXPECT_EQ(codef().updatesSeen(), 42U);
  EXPECT_TRUE(trace.has(4, "doOnVlanPortUpdate: setting dirty to true 10"));
  EXPECT_EQ(trace.lines().back(), std::pair(9U, std::string("TopoLibCodef::doScheduleBacklogProcessing idleIs false")));
}

TEST_F(TopoLibCodefTest, thresholdOfZeroRecordsOneInterface) {
  agent.libSm->dirtyVlanPortThresholdIs(0);
  mark(10, "Ethernet1");
  EXPECT_FALSE(dirtyVlan(10)->dirty());
  mark(10, "Ethernet2");
  EXPECT_TRUE(dirtyVlan(10)->dirty());
}

TEST_F(TopoLibCodefTest, interfacesOfEachVlanCountByThemselves) {
  agent.libSm->dirtyVlanPortThresholdIs(0);
  mark(10, "Ethernet1");
  mark(11, "Ethernet2");
  EXPECT_FALSE(dirtyVlan(10)->dirty());
  EXPECT_FALSE(dirtyVlan(11)->dirty());
}

TEST_F(TopoLibCodefTest, marksBeforeTheInitialPassIsOverAreDropped) {
  Agent other;
  other.vlanIs(10, "A");
  other.startLibrary();
  ASSERT_FALSE(other.state->initDone());
  const TraceLines trace("TopoLib");
  other.libSm->doOnVlanPortUpdate(11, "Ethernet1");
  EXPECT_EQ(trace.lines(), (Traces{{8, "doOnVlanPortUpdate vid 11 intf Ethernet1"},
                                   {4, "doOnVlanPortUpdate: intf Ethernet1 vlan 11 init not done, returning "}}));
  EXPECT_EQ(other.libSm->dirtyVlanDir()->dirtyVlan(11), nullptr);
}

TEST_F(TopoLibCodefTest, requestIsServedAtTheNextDispatch) {
  const std::uint64_t before = codef().dispatchCount();
  EXPECT_TRUE(codef().codefState()->idle());
  EXPECT_EQ(Mox::activityManager()->nextDue(), never);
  const TraceLines trace("TopoLib");
  codef().doScheduleBacklogProcessing();
  codef().doScheduleBacklogProcessing();
  EXPECT_EQ(trace.count(9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"), 2U);
  EXPECT_FALSE(codef().codefState()->idle());
  EXPECT_EQ(codef().timeMin(), 0.0);
  EXPECT_EQ(Mox::activityManager()->nextDue(), 0.0);
  EXPECT_EQ(codef().dispatchCount(), before);
  EXPECT_EQ(Mox::activityManager()->dispatch(), 1U);
  EXPECT_EQ(codef().dispatchCount(), before + 1);
  EXPECT_TRUE(codef().codefState()->idle());
  EXPECT_EQ(codef().timeMin(), 0.0);
  EXPECT_EQ(Mox::activityManager()->dispatch(), 0U);
}

TEST_F(TopoLibCodefTest, startsPendingAndRunsAtTheFirstDispatch) {
  Agent other;
  const TraceLines trace("TopoLib", Mox::traceLevel(9));
  other.startLibrary();
  EXPECT_EQ(trace.lines(), (Traces{{9, "LibSm::handleInitialized create Codef"},
                                   {9, "TopoLibCodef::handleInitialized idleIs false"}}));
  const TopoLibCodef& started = *other.libSm->topoLibCodef();
  EXPECT_FALSE(started.codefState()->idle());
  EXPECT_EQ(Mox::activityManager()->dispatch(), 1U);
  EXPECT_EQ(started.dispatchCount(), 1U);
  EXPECT_TRUE(started.codefState()->idle());
}

TEST_F(TopoLibCodefTest, quantumThatIsNoNumberIsRefused) {
  codef().backlogQuantumIs(0.5);
  EXPECT_THROW(codef().backlogQuantumIs(std::numeric_limits<double>::quiet_NaN()), Mox::RangeException);
  EXPECT_EQ(codef().backlogQuantum(), 0.5);
}

TEST_F(TopoLibCodefTest, attributesStartAsDocumented) {
  Agent other;
  other.startLibrary();
  const TopoLibCodef& started = *other.libSm->topoLibCodef();
  EXPECT_EQ(started.libSm(), other.libSm.get());
  EXPECT_EQ(started.dirtyVlanDir(), other.libSm->dirtyVlanDir());
  EXPECT_EQ(started.clock(), Mox::activityManager()->clock().get());
  EXPECT_EQ(started.backlogQuantum(), 0.01);
  EXPECT_EQ(started.updatesSeen(), 0U);
  EXPECT_EQ(started.updatesProcessed(), 0U);
  EXPECT_EQ(started.timeUsed(), 0.0);
  EXPECT_EQ(started.dispatchCount(), 0U);
  EXPECT_EQ(started.yieldBeforeFinishingCount(), 0U);
  EXPECT_FALSE(started.yieldAfterOne());
  EXPECT_TRUE(started.bookmark().isNone());
  EXPECT_TRUE(started.oldTopoName().empty());
  EXPECT_TRUE(started.dirtyVlan().empty());
  EXPECT_TRUE(started.initialized());
  EXPECT_FALSE(started.isRunning());
  for (const auto& set : {started.delPendingPortSet(), started.deletedPortSet()}) {
    ASSERT_TRUE(set);
    EXPECT_TRUE(set->port().empty());
    EXPECT_TRUE(set->hasNotificationActive());
  }
  EXPECT_EQ(started.codefState()->name(), "codefState");
  EXPECT_EQ(started.timeMin(), 0.0);
}

TEST_F(TopoLibCodefTest, countersAreSetAndIncremented) {
  codef().updatesSeenIs(5);
  codef().updatesSeenInc(2);
  EXPECT_EQ(codef().updatesSeen(), 7U);
  codef().updatesProcessedIs(6);
  codef().updatesProcessedInc(0);
  EXPECT_EQ(codef().updatesProcessed(), 6U);
  codef().timeUsedIs(1.5);
  codef().timeUsedInc(0.25);
  EXPECT_EQ(codef().timeUsed(), 1.75);
  codef().dispatchCountIs(1);
  codef().dispatchCountInc(3);
  EXPECT_EQ(codef().dispatchCount(), 4U);
  codef().yieldBeforeFinishingCountIs(8);
  codef().yieldBeforeFinishingCountInc(1);
  EXPECT_EQ(codef().yieldBeforeFinishingCount(), 9U);
}

TEST_F(TopoLibCodefTest, stateIsKeptUnderItsNameAndReplacedUnderAnother) {
  const Mox::Ptr<TopoLibCodefState> first = codef().codefState();
  EXPECT_EQ(codef().codefStateIs("codefState"), first);
  EXPECT_NE(codef().codefStateIs("other"), first);
  EXPECT_EQ(codef().codefState()->name(), "other");
  codef().codefStateDel();
  EXPECT_EQ(codef().codefState(), nullptr);
  codef().codefStateIs("codefState");
}

TEST_F(TopoLibCodefTest, hasAReactorForEachDirtyVlanWhileItIsDirty) {
  mark(10, "Ethernet1");
  mark(11, "");
  ASSERT_NE(codef().dirtyVlan(10), nullptr);
  ASSERT_NE(codef().dirtyVlan(11), nullptr);
  EXPECT_EQ(codef().dirtyVlan(10)->notifier(), dirtyVlan(10));
  EXPECT_TRUE(codef().dirtyVlan(10)->initialized());
  agent.drain();
  EXPECT_TRUE(codef().dirtyVlan().empty());
}

TEST_F(TopoLibCodefTest, newlyDirtyVlanAsksForARun) {
  const TraceLines trace("TopoLib");
  agent.libSm->dirtyVlanDir()->dirtyVlanIs(30);
  EXPECT_EQ(trace.lines(), (Traces{{9, "TopoLibCodef::doScheduleBacklogProcessing idleIs false"}}));
  EXPECT_EQ(codef().updatesSeen(), 0U);
}

TEST_F(TopoLibCodefTest, everyChangeOfTheInterfacesIsAnUpdateSeen) {
  const Mox::Ptr<DirtyVlan> dv = agent.libSm->dirtyVlanDir()->dirtyVlanIs(30);
  dv->intfIs("Ethernet1", true);
  dv->intfIs("Ethernet1", true);
  EXPECT_EQ(codef().updatesSeen(), 1U);
  dv->intfIs("Ethernet1", false);
  EXPECT_EQ(codef().updatesSeen(), 2U);
  dv->intfDel("Ethernet1");
  EXPECT_EQ(codef().updatesSeen(), 3U);
  dv->intfDel("Ethernet1");
  dv->dirtyIs(true);
  EXPECT_EQ(codef().updatesSeen(), 3U);
}

TEST_F(TopoLibCodefTest, reactorsCanBeMadeAndRemoved) {
  const auto other = dirtyVlanDirFactory("other");
  codef().dirtyVlanIs(other->dirtyVlanIs(40));
  codef().dirtyVlanIs(other->dirtyVlan(40));
  codef().dirtyVlanIs(other->dirtyVlanIs(41));
  EXPECT_EQ(codef().dirtyVlan().size(), 2U);
  codef().dirtyVlanDel(40);
  codef().dirtyVlanDel(40);
  EXPECT_EQ(codef().dirtyVlan().size(), 1U);
  other->dirtyVlan(40)->intfIs("Ethernet1");
  EXPECT_EQ(codef().updatesSeen(), 0U);
  codef().dirtyVlanDelAll();
  EXPECT_TRUE(codef().dirtyVlan().empty());
}

TEST_F(TopoLibCodefTest, nullDirtyVlanRaisesItsException) {
  try {
    codef().dirtyVlanIs(nullptr);
    ADD_FAILURE() << "no exception";
  } catch (const Mox::MutatorArgNullPointerException& e) {
    EXPECT_STREQ(e.what(), "dirtyVlanIs: argument dirtyVlan must not be null");
  }
}

TEST_F(TopoLibCodefTest, nullLibSmRaisesItsException) {
  try {
    static_cast<void>(topoLibCodefFactory(nullptr, dirtyVlanDirFactory("dir"), nullptr));
    ADD_FAILURE() << "no exception";
  } catch (const Mox::NewEntityArgsException& e) {
    EXPECT_STREQ(e.what(), "topoLibCodefFactory: unusable arguments: libSm is null");
  }
}

TEST_F(TopoLibCodefTest, nullClockIsNotWatched) {
  const auto other = topoLibCodefFactory(agent.libSm.get(), dirtyVlanDirFactory("dir"), nullptr);
  EXPECT_EQ(other->clock(), nullptr);
  EXPECT_FALSE(other->codefState()->idle());
  other->doScheduleBacklogProcessing();
  EXPECT_EQ(Mox::activityManager()->nextDue(), never);
}

TEST_F(TopoLibCodefTest, nullDirectoryIsNotWatched) {
  const auto other = topoLibCodefFactory(agent.libSm.get(), nullptr, Mox::activityManager()->clock());
  EXPECT_EQ(other->dirtyVlanDir(), nullptr);
  agent.drain();
  EXPECT_TRUE(other->codefState()->idle());
}

TEST_F(TopoLibCodefTest, oneBuiltFromTheSameArgumentsIsKept) {
  const Mox::Ptr<TopoLibCodef> first = agent.libSm->topoLibCodef();
  const auto clock = Mox::activityManager()->clock();
  EXPECT_EQ(agent.libSm->topoLibCodefIs(agent.libSm.get(), agent.libSm->dirtyVlanDir(), clock), first);
  const auto second = agent.libSm->topoLibCodefIs(agent.libSm.get(), dirtyVlanDirFactory("other"), clock);
  EXPECT_NE(second, first);
  EXPECT_EQ(agent.libSm->topoLibCodef(), second);
}

TEST_F(TopoLibCodefTest, oneBuiltOnAFilledDirectoryServesItAtTheNextDispatch) {
  agent.memberIs(10, "Ethernet1");
  agent.libSm->dirtyVlanDir()->dirtyVlanDelAll();
  const auto filled = dirtyVlanDirFactory("filled");
  filled->dirtyVlanIs(10)->dirtyIs(true);
  const auto other = TopoLibCodef::TopoLibCodefIs(agent.libSm.get(), filled, Mox::activityManager()->clock());
  ASSERT_NE(other->dirtyVlan(10), nullptr);
  EXPECT_TRUE(other->dirtyVlan(10)->initialized());
  EXPECT_FALSE(agent.carries("A", "Ethernet1", 10));
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(filled->dirtyVlan().empty());
}

using TopoLibCodefDeathTest = TopoLibCodefTest;

TEST_F(TopoLibCodefDeathTest, reactorThatIsNotInitialisedAborts) {
  const auto dir = dirtyVlanDirFactory("dir");
  const auto reactor = Mox::makePtr<TopoLibCodef::MoxDirtyVlan>(&codef(), dir->dirtyVlanIs(10));
  EXPECT_DEATH(reactor->handleVlanPortUpdate("Ethernet1"), assertionReport("initialized_", "handleVlanPortUpdate"));
  reactor->handleInitialized();
  reactor->handleVlanPortUpdate("Ethernet1");
  EXPECT_EQ(codef().updatesSeen(), 1U);
}

}  // namespace Topology::Library::TopoLibCodefTest
