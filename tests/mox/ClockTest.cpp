#include "mox/Clock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "tests/support/Alarm.h"
#include "tests/support/Allocations.h"
#include "tests/support/RangeError.h"

namespace Mox::ClockTest {

using Test::Alarm;
using Test::FailingAllocations;
using Test::Journal;
using Test::rangeErrorOf;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// ---- what arms and what disarms

TEST(Clock, emptyClockIsNeverDue) {
  const auto clock = makePtr<Clock>();
  EXPECT_EQ(clock->nextDue(), infinity);
  EXPECT_EQ(clock->dispatch(infinity), 0U);
}

TEST(Clock, freshReactorIsArmedForTimeZero) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  const Alarm alarm(clock, journal, "a");
  EXPECT_TRUE(alarm.isArmed());
  EXPECT_EQ(alarm.timeMin(), 0.0);
  EXPECT_EQ(clock->nextDue(), 0.0);
  EXPECT_EQ(clock->dispatch(0.0), 1U);
  EXPECT_EQ(journal, (Journal{"a"}));
}

TEST(Clock, freshReactorWaitsUntilItIsBound) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(nullptr, journal, "a");
  EXPECT_EQ(clock->dispatch(9.0), 0U);
  alarm.notifierIs(clock.get());
  EXPECT_EQ(clock->dispatch(9.0), 1U);
}

TEST(Clock, freshReactorWaitsUntilItIsActive) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(nullptr, journal, "a");
  alarm.hasNotificationActiveIs(false);
  alarm.notifierIs(clock.get());
  EXPECT_EQ(clock->nextDue(), infinity);
  EXPECT_EQ(clock->dispatch(9.0), 0U);
  alarm.hasNotificationActiveIs(true);
  EXPECT_EQ(clock->nextDue(), 0.0);
  EXPECT_EQ(clock->dispatch(9.0), 1U);
}

TEST(Clock, armingNeedsNoMemory) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  journal.reserve(2);
  Alarm alarm(nullptr, journal, "a");
  {
    const FailingAllocations failing;
    alarm.notifierIs(clock.get());
    alarm.timeMinIs(1.0);
    alarm.timeMinIs(infinity);
    alarm.timeMinIs(2.0);
    alarm.hasNotificationActiveIs(false);
    alarm.hasNotificationActiveIs(true);
    clock->dispatch(2.0);
    alarm.timeMinIs(0.0);
    clock->dispatch(2.0);
  }
  EXPECT_EQ(journal, (Journal{"a", "a"}));
}

TEST(Clock, reactorMayTakeItsArmingToAnotherClock) {
  const auto second = makePtr<Clock>();
  Journal journal;
  Alarm alarm(makePtr<Clock>(), journal, "a", 1.0);
  alarm.notifierIs(second.get());
  EXPECT_EQ(second->nextDue(), 1.0);
  EXPECT_EQ(second->dispatch(1.0), 1U);
}

TEST(Clock, reactorIsNotCalledBeforeItsTime) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  const Alarm alarm(clock, journal, "a", 1.0);
  EXPECT_EQ(clock->dispatch(std::nextafter(1.0, 0.0)), 0U);
  EXPECT_EQ(clock->dispatch(1.0), 1U);
}

TEST(Clock, timeThatIsOverIsDue) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  const Alarm alarm(clock, journal, "a", -5.0);
  EXPECT_EQ(clock->nextDue(), -5.0);
  EXPECT_EQ(clock->dispatch(100.0), 1U);
}

TEST(Clock, beingCalledDisarms) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  bool wasArmedInHandler = true;
  alarm.actionIs([&] { wasArmedInHandler = alarm.isArmed(); });
  clock->dispatch(1.0);
  EXPECT_FALSE(wasArmedInHandler);
  EXPECT_FALSE(alarm.isArmed());
  EXPECT_EQ(alarm.timeMin(), 1.0);
  EXPECT_EQ(clock->nextDue(), infinity);
  EXPECT_EQ(clock->dispatch(2.0), 0U);
}

TEST(Clock, equalTimeArmsAgainAfterTheCall) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  clock->dispatch(1.0);
  alarm.timeMinIs(1.0);
  EXPECT_TRUE(alarm.isArmed());
  EXPECT_EQ(clock->nextDue(), 1.0);
  EXPECT_EQ(clock->dispatch(1.0), 1U);
  EXPECT_EQ(clock->dispatch(1.0), 0U);
}

TEST(Clock, initialTimeArmsAgainAfterTheCall) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a");
  clock->dispatch(0.0);
  alarm.timeMinIs(0.0);
  EXPECT_EQ(clock->dispatch(0.0), 1U);
}

TEST(Clock, reactorHasOnePendingTime) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  alarm.timeMinIs(3.0);
  EXPECT_EQ(clock->dispatch(2.0), 0U);
  alarm.timeMinIs(2.0);
  EXPECT_EQ(clock->dispatch(2.0), 1U);
  EXPECT_EQ(clock->dispatch(3.0), 0U);
}

TEST(Clock, infinityDisarms) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  alarm.timeMinIs(infinity);
  EXPECT_FALSE(alarm.isArmed());
  EXPECT_EQ(alarm.timeMin(), infinity);
  EXPECT_EQ(clock->nextDue(), infinity);
  EXPECT_EQ(clock->dispatch(infinity), 0U);
  alarm.timeMinIs(1.0);
  EXPECT_EQ(clock->dispatch(1.0), 1U);
}

TEST(Clock, greatestNumberIsATime) {
  constexpr double latest = std::numeric_limits<double>::max();
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", latest);
  EXPECT_EQ(clock->nextDue(), latest);
  alarm.timeMinIs(-latest);
  EXPECT_EQ(clock->nextDue(), -latest);
}

TEST(Clock, numberThatIsNoTimeRaisesAndChangesNothing) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm armed(clock, journal, "armed", 5.0);
  const Alarm next(clock, journal, "next", 5.0);
  Alarm called(clock, journal, "called", 1.0);
  clock->dispatch(1.0);
  for (const double noTime : {notANumber, -notANumber, -infinity}) {
    for (Alarm* const alarm : {&armed, &called}) {
      EXPECT_EQ(rangeErrorOf([&] { alarm->timeMinIs(noTime); }), "Clock::timeMin must be a time in seconds") << noTime;
    }
  }
  EXPECT_TRUE(armed.isArmed());
  EXPECT_EQ(armed.timeMin(), 5.0);
  EXPECT_FALSE(called.isArmed());
  EXPECT_EQ(called.timeMin(), 1.0);
  EXPECT_EQ(clock->nextDue(), 5.0);
  clock->dispatch(5.0);
  EXPECT_EQ(journal, (Journal{"called", "armed", "next"}));
}

// ---- order

TEST(Clock, callsInOrderOfTime) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  const Alarm c(clock, journal, "3", 3.0);
  const Alarm a(clock, journal, "1", 1.0);
  const Alarm d(clock, journal, "4", 4.0);
  const Alarm b(clock, journal, "-2", -2.0);
  EXPECT_EQ(clock->dispatch(3.0), 3U);
  EXPECT_EQ(journal, (Journal{"-2", "1", "3"}));
}

TEST(Clock, callsInOrderOfArmingAmongEqualTimes) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm a(clock, journal, "a");
  Alarm b(clock, journal, "b");
  Alarm c(clock, journal, "c");
  clock->dispatch(0.0);
  journal.clear();
  b.timeMinIs(1.0);
  c.timeMinIs(1.0);
  a.timeMinIs(1.0);
  clock->dispatch(1.0);
  EXPECT_EQ(journal, (Journal{"b", "c", "a"}));
}

TEST(Clock, movedReactorGoesBehindThoseOfEqualTime) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm a(clock, journal, "a", 1.0);
  const Alarm b(clock, journal, "b", 1.0);
  a.timeMinIs(2.0);
  a.timeMinIs(1.0);
  clock->dispatch(1.0);
  EXPECT_EQ(journal, (Journal{"b", "a"}));
}

TEST(Clock, armingForTheTimeThatIsArmedKeepsThePlace) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm a(clock, journal, "a", 1.0);
  const Alarm b(clock, journal, "b", 1.0);
  a.timeMinIs(1.0);
  clock->dispatch(1.0);
  EXPECT_EQ(journal, (Journal{"a", "b"}));
}

TEST(Clock, switchingOnWhatIsOnKeepsThePlace) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm a(clock, journal, "a", 1.0);
  const Alarm b(clock, journal, "b", 1.0);
  a.hasNotificationActiveIs(true);
  a.isRegisteredNotifieeIs(true);
  a.notifierIs(clock.get());
  clock->dispatch(1.0);
  EXPECT_EQ(journal, (Journal{"a", "b"}));
}

TEST(Clock, nextDueIsTheEarliestTime) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm a(clock, journal, "a", 3.0);
  auto b = std::make_unique<Alarm>(clock, journal, "b", 1.0);
  EXPECT_EQ(clock->nextDue(), 1.0);
  b.reset();
  EXPECT_EQ(clock->nextDue(), 3.0);
  a.timeMinIs(7.0);
  EXPECT_EQ(clock->nextDue(), 7.0);
}

TEST(Clock, nothingIsDueBeforeAllTime) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  const Alarm a(clock, journal, "a", -1e300);
  EXPECT_EQ(clock->dispatch(-infinity), 0U);
  EXPECT_EQ(clock->dispatch(notANumber), 0U);
  EXPECT_EQ(clock->dispatch(infinity), 1U);
}

TEST(Clock, reactorIsNoMoreThanATimer) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  const Alarm alarm(clock, journal, "a");
  clock->notifieeList()->visit(0);
  EXPECT_TRUE(journal.empty());
  EXPECT_TRUE(alarm.isArmed());
}

}  // namespace Mox::ClockTest
