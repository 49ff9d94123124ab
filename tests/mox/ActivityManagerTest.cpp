#include "mox/ActivityManager.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <vector>

#include "mox/StateMachine.h"
#include "mox/System.h"
#include "tests/support/Alarm.h"
#include "tests/support/VirtualTime.h"

namespace Mox::ActivityManagerTest {

using Test::Alarm;
using Test::Journal;
using Test::VirtualTimeInUse;

constexpr double infinity = std::numeric_limits<double>::infinity();

class ActivityLoop : public testing::Test {
 protected:
  VirtualTimeInUse time;
  Ptr<ActivityManager> manager = makePtr<ActivityManager>();
  Ptr<Clock> clock = manager->clock();
  Journal journal;
};

TEST(ActivityManager, processHasOneManagerWithOneClock) {
  const Ptr<ActivityManager>& manager = activityManager();
  ASSERT_TRUE(manager);
  EXPECT_EQ(&activityManager(), &manager);
  ASSERT_TRUE(manager->config());
  ASSERT_TRUE(manager->config()->clock());
  EXPECT_EQ(manager->clock(), manager->config()->clock());
  EXPECT_EQ(activityManager()->config()->clock(), manager->config()->clock());
}

/// As the manual of the clock shows it.
class WorkSm : public StateMachine<WorkSm> {
 public:
  WorkSm() = default;
  ~WorkSm() override { moxDoZombieReactors(true); }

  void doWork() { workedAt.push_back(System::presentTime()); }
  void restAndWork(double seconds) { clock_.timeMinIs(System::currentTime() + seconds); }

  std::vector<double> workedAt;

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(clock_); }

  class MoxClock : public Reactor<MoxClock, WorkSm, Clock, Clock::NotifieeConst> {
   public:
    using Reactor::Reactor;
    void onTimeMin() override { sm().doWork(); }
  };

  MoxClock clock_{this, activityManager()->config()->clock()};
};

TEST(ActivityManager, stateMachineWorksOnTheProcessWideClock) {
  const VirtualTimeInUse time;
  ASSERT_EQ(activityManager()->nextDue(), infinity);
  {
    const auto worker = makePtr<WorkSm>();
    EXPECT_EQ(activityManager()->nextDue(), 0.0);
    EXPECT_EQ(activityManager()->dispatch(), 1U);
    worker->restAndWork(1.5);
    EXPECT_EQ(activityManager()->dispatch(), 0U);
    activityManager()->run();
    EXPECT_EQ(worker->workedAt, (std::vector{0.0, 1.5}));
    worker->restAndWork(1.0);
  }
  EXPECT_EQ(activityManager()->nextDue(), infinity);
}

TEST_F(ActivityLoop, managersHaveClocksOfTheirOwn) {
  const auto other = makePtr<ActivityManager>();
  const Alarm alarm(clock, journal, "a");
  EXPECT_EQ(other->nextDue(), infinity);
  EXPECT_EQ(other->dispatch(), 0U);
  EXPECT_EQ(manager->dispatch(), 1U);
}

// ---- driven by a host's loop

TEST_F(ActivityLoop, dispatchCallsWhatIsDueByThePresentTime) {
  const Alarm a(clock, journal, "a", 1.0);
  const Alarm b(clock, journal, "b", 2.0);
  EXPECT_EQ(manager->nextDue(), 1.0);
  EXPECT_EQ(manager->dispatch(), 0U);
  time->advance(1.0);
  EXPECT_EQ(manager->dispatch(), 1U);
  EXPECT_EQ(manager->nextDue(), 2.0);
  time->advance(1.0);
  EXPECT_EQ(manager->dispatch(), 1U);
  EXPECT_EQ(manager->nextDue(), infinity);
}

TEST_F(ActivityLoop, hostLoopWakesUpForTimersAndEvents) {
  std::vector<double> calledAt;
  Alarm periodic(clock, journal, "periodic", 2.0);
  periodic.actionIs([&] {
    calledAt.push_back(System::presentTime());
    periodic.timeMinIs(System::presentTime() + 2.0);
  });
  // The host has an event of its own every 0.75 seconds; the fourth asks for work at once.
  int events = 0;
  double nextEvent = 0.75;
  while (time->presentTime() < 6.0) {
    if (nextEvent < manager->nextDue()) {
      time->waitUntil(nextEvent);
      nextEvent += 0.75;
      if (++events == 4) periodic.timeMinIs(0.0);
    } else {
      time->waitUntil(manager->nextDue());
    }
    manager->dispatch();
  }
  EXPECT_EQ(calledAt, (std::vector{2.0, 3.0, 5.0}));
}

TEST_F(ActivityLoop, sliceThatArmsItselfReturnsBetweenRounds) {
  int left = 100;
  Alarm slice(clock, journal, "slice");
  slice.actionIs([&] {
    if (--left != 0) slice.timeMinIs(0.0);
  });
  int rounds = 0;
  while (manager->nextDue() <= time->presentTime()) {
    EXPECT_EQ(manager->dispatch(), 1U);
    ++rounds;
  }
  EXPECT_EQ(rounds, 100);
}

TEST_F(ActivityLoop, loopDoesNotTickVirtualTime) {
  time->tickIs(0.25);
  const Alarm alarm(clock, journal, "a");
  static_cast<void>(manager->nextDue());
  manager->dispatch();
  manager->run();
  EXPECT_EQ(time->presentTime(), 0.0);
}

TEST_F(ActivityLoop, workMeasuresItselfInVirtualTime) {
  time->tickIs(0.25);
  Alarm slice(clock, journal, "slice");
  int done = 0;
  slice.actionIs([&] {
    const double end = System::currentTime() + 1.0;
    while (System::currentTime() < end) ++done;
  });
  manager->dispatch();
  EXPECT_EQ(done, 3);
}

TEST_F(ActivityLoop, exceptionLeavesDispatchAndTheRestStaysDue) {
  const Alarm broken(clock, journal, "broken", [] { throw std::runtime_error("broken"); });
  const Alarm next(clock, journal, "next");
  EXPECT_THROW(manager->dispatch(), std::runtime_error);
  EXPECT_EQ(manager->nextDue(), 0.0);
  EXPECT_EQ(manager->dispatch(), 1U);
  EXPECT_EQ(journal, (Journal{"broken", "next"}));
}

// ---- its own loop

TEST_F(ActivityLoop, runMovesVirtualTimeToWhatIsDueAndReturnsWhenNothingIsArmed) {
  std::vector<double> calledAt;
  const auto note = [&] { calledAt.push_back(System::presentTime()); };
  const Alarm c(clock, journal, "c", 1e6, note);
  const Alarm a(clock, journal, "a", 1.0, note);
  const Alarm b(clock, journal, "b", 3.5, note);
  manager->run();
  EXPECT_EQ(journal, (Journal{"a", "b", "c"}));
  EXPECT_EQ(calledAt, (std::vector{1.0, 3.5, 1e6}));
  EXPECT_EQ(manager->nextDue(), infinity);
  EXPECT_EQ(time->presentTime(), 1e6);
}

TEST_F(ActivityLoop, runReturnsAtOnceWhenNothingIsArmed) {
  time->advance(3.0);
  manager->run();
  EXPECT_EQ(time->presentTime(), 3.0);
}

TEST_F(ActivityLoop, runReturnsWhenOnlySwitchedOffReactorsAreArmed) {
  Alarm away(clock, journal, "away", 1.0);
  away.hasNotificationActiveIs(false);
  manager->run();
  EXPECT_TRUE(journal.empty());
  EXPECT_EQ(time->presentTime(), 0.0);
}

TEST_F(ActivityLoop, runDoesNotMoveTheTimeBack) {
  time->advance(10.0);
  const Alarm over(clock, journal, "over", 4.0);
  manager->run();
  EXPECT_EQ(journal, (Journal{"over"}));
  EXPECT_EQ(time->presentTime(), 10.0);
}

TEST_F(ActivityLoop, runGoesOnWhileHandlersArm) {
  std::vector<double> calledAt;
  Alarm periodic(clock, journal, "periodic", 1.0);
  periodic.actionIs([&] {
    calledAt.push_back(System::presentTime());
    if (calledAt.size() < 4) periodic.timeMinIs(periodic.timeMin() + 1.0);
  });
  manager->run();
  EXPECT_EQ(calledAt, (std::vector{1.0, 2.0, 3.0, 4.0}));
}

TEST_F(ActivityLoop, runGivesOthersTheirTurnBetweenSlices) {
  int left = 3;
  Alarm slice(clock, journal, "slice");
  slice.actionIs([&] {
    if (--left != 0) slice.timeMinIs(0.0);
  });
  Alarm other(clock, journal, "other");
  other.actionIs([&] {
    if (left != 0) other.timeMinIs(0.0);
  });
  manager->run();
  EXPECT_EQ(journal, (Journal{"slice", "other", "slice", "other", "slice", "other"}));
}

TEST_F(ActivityLoop, stopEndsRunAfterThePresentRound) {
  const Alarm stopper(clock, journal, "stopper", 1.0, [&] { manager->stop(); });
  const Alarm sameRound(clock, journal, "sameRound", 1.0);
  const Alarm later(clock, journal, "later", 2.0);
  manager->run();
  EXPECT_EQ(journal, (Journal{"stopper", "sameRound"}));
  EXPECT_EQ(time->presentTime(), 1.0);
  EXPECT_EQ(manager->nextDue(), 2.0);
}

TEST_F(ActivityLoop, stopEndsASliceThatArmsItselfForEver) {
  int rounds = 0;
  Alarm slice(clock, journal, "slice");
  slice.actionIs([&] {
    slice.timeMinIs(0.0);
    if (++rounds == 50) manager->stop();
  });
  manager->run();
  EXPECT_EQ(rounds, 50);
  EXPECT_TRUE(slice.isArmed());
}

TEST_F(ActivityLoop, runAgainGoesOnWithWhatIsLeft) {
  const Alarm stopper(clock, journal, "stopper", 1.0, [&] { manager->stop(); });
  const Alarm later(clock, journal, "later", 2.0);
  manager->run();
  manager->run();
  EXPECT_EQ(journal, (Journal{"stopper", "later"}));
  EXPECT_EQ(time->presentTime(), 2.0);
}

TEST_F(ActivityLoop, stopEndsTheRunsAroundToo) {
  const Alarm outer(clock, journal, "outer", 1.0, [&] { manager->run(); });
  const Alarm stopper(clock, journal, "stopper", 2.0, [&] { manager->stop(); });
  const Alarm later(clock, journal, "later", 3.0);
  manager->run();
  EXPECT_EQ(journal, (Journal{"outer", "stopper"}));
  EXPECT_EQ(manager->nextDue(), 3.0);
}

TEST_F(ActivityLoop, stopHasNoEffectOnALaterRun) {
  manager->stop();
  const Alarm alarm(clock, journal, "a");
  manager->run();
  EXPECT_EQ(journal, (Journal{"a"}));
}

TEST_F(ActivityLoop, stopHasNoEffectOnDispatch) {
  manager->stop();
  const Alarm alarm(clock, journal, "a");
  EXPECT_EQ(manager->dispatch(), 1U);
}

TEST_F(ActivityLoop, exceptionLeavesRunAndTheRestStaysDue) {
  const Alarm broken(clock, journal, "broken", 1.0, [] { throw std::runtime_error("broken"); });
  const Alarm next(clock, journal, "next", 1.0);
  const Alarm later(clock, journal, "later", 2.0);
  EXPECT_THROW(manager->run(), std::runtime_error);
  EXPECT_EQ(journal, (Journal{"broken"}));
  EXPECT_EQ(manager->nextDue(), 1.0);
  manager->run();
  EXPECT_EQ(journal, (Journal{"broken", "next", "later"}));
}

TEST_F(ActivityLoop, runInRealTimeCallsWhatIsDueAlready) {
  System::timeSourceIs(nullptr);
  const Alarm first(clock, journal, "first");
  const Alarm second(clock, journal, "second", System::currentTime());
  manager->run();
  EXPECT_EQ(journal, (Journal{"first", "second"}));
}

}  // namespace Mox::ActivityManagerTest
