// Reactors that leave their clock, come back, and end.

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "mox/Clock.h"
#include "mox/Entity.h"
#include "tests/support/Alarm.h"

namespace Mox::ClockBindingTest {

using Test::Alarm;
using Test::Journal;

constexpr double infinity = std::numeric_limits<double>::infinity();

// ---- reactors that are away when their time comes

TEST(ClockBinding, inactiveReactorStaysArmedAndIsCalledOnceItIsBack) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  alarm.hasNotificationActiveIs(false);
  EXPECT_EQ(clock->dispatch(2.0), 0U);
  EXPECT_TRUE(alarm.isArmed());
  alarm.hasNotificationActiveIs(true);
  EXPECT_EQ(clock->nextDue(), 1.0);
  EXPECT_EQ(clock->dispatch(2.0), 1U);
}

TEST(ClockBinding, unregisteredReactorStaysArmedAndIsCalledOnceItIsBack) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  alarm.isRegisteredNotifieeIs(false);
  EXPECT_EQ(clock->dispatch(2.0), 0U);
  EXPECT_TRUE(alarm.isArmed());
  alarm.isRegisteredNotifieeIs(true);
  EXPECT_EQ(clock->nextDue(), 1.0);
  EXPECT_EQ(clock->dispatch(2.0), 1U);
}

TEST(ClockBinding, reactorIsArmedAndDisarmedWhileItIsAway) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm moved(clock, journal, "moved", 1.0);
  Alarm disarmed(clock, journal, "disarmed", 1.0);
  for (Alarm* const alarm : {&moved, &disarmed}) alarm->hasNotificationActiveIs(false);
  moved.timeMinIs(4.0);
  disarmed.timeMinIs(infinity);
  for (Alarm* const alarm : {&moved, &disarmed}) alarm->hasNotificationActiveIs(true);
  EXPECT_EQ(clock->nextDue(), 4.0);
  EXPECT_EQ(clock->dispatch(9.0), 1U);
  EXPECT_EQ(journal, (Journal{"moved"}));
}

TEST(ClockBinding, comingBackDoesNotArmWhatIsDisarmed) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  clock->dispatch(1.0);
  alarm.hasNotificationActiveIs(false);
  alarm.hasNotificationActiveIs(true);
  alarm.isRegisteredNotifieeIs(false);
  alarm.isRegisteredNotifieeIs(true);
  alarm.notifierIs(nullptr);
  alarm.notifierIs(clock.get());
  EXPECT_EQ(clock->nextDue(), infinity);
  EXPECT_EQ(clock->dispatch(9.0), 0U);
}

TEST(ClockBinding, reactorsThatTheListDropsAreNotCalled) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  clock->notifieeList()->deleteAll();
  EXPECT_EQ(clock->dispatch(2.0), 0U);
  EXPECT_TRUE(alarm.isArmed());
  alarm.isRegisteredNotifieeIs(true);
  EXPECT_EQ(clock->dispatch(2.0), 1U);
}

TEST(ClockBinding, reactorsThatTheListDropsMayEndAndLeave) {
  const auto clock = makePtr<Clock>();
  const auto other = makePtr<Clock>();
  Journal journal;
  auto ended = std::make_unique<Alarm>(clock, journal, "ended", 1.0);
  Alarm unbound(clock, journal, "unbound", 1.0);
  Alarm moved(clock, journal, "moved", 1.0);
  Alarm back(clock, journal, "back", 1.0);
  clock->notifieeList()->deleteAll();
  ended.reset();
  unbound.notifierIs(nullptr);
  moved.notifierIs(other.get());
  back.isRegisteredNotifieeIs(true);
  EXPECT_EQ(clock->dispatch(2.0), 1U);
  EXPECT_EQ(other->dispatch(2.0), 1U);
  EXPECT_EQ(journal, (Journal{"back", "moved"}));
  EXPECT_EQ(clock->nextDue(), infinity);
}

TEST(ClockBinding, reactorThatTheListDropsTakesNewTimes) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 1.0);
  clock->notifieeList()->deleteAll();
  alarm.timeMinIs(3.0);
  EXPECT_EQ(clock->dispatch(2.0), 0U);
  alarm.isRegisteredNotifieeIs(true);
  EXPECT_EQ(clock->dispatch(2.0), 0U);
  EXPECT_EQ(clock->dispatch(3.0), 1U);
}

// ---- binding and lifetimes

TEST(ClockBinding, reactorTakesItsTimeToAnotherClock) {
  const auto first = makePtr<Clock>();
  const auto second = makePtr<Clock>();
  Journal journal;
  Alarm alarm(first, journal, "a", 3.0);
  alarm.notifierIs(second.get());
  EXPECT_EQ(first->nextDue(), infinity);
  EXPECT_EQ(second->nextDue(), 3.0);
  EXPECT_EQ(first->dispatch(9.0), 0U);
  EXPECT_EQ(second->dispatch(9.0), 1U);
}

TEST(ClockBinding, unboundReactorIsNotCalled) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a");
  alarm.notifierIs(nullptr);
  EXPECT_TRUE(alarm.isArmed());
  EXPECT_EQ(clock->nextDue(), infinity);
  EXPECT_EQ(clock->dispatch(9.0), 0U);
}

TEST(ClockBinding, destroyedReactorIsNotCalled) {
  const auto clock = makePtr<Clock>();
  Journal journal;
  auto a = std::make_unique<Alarm>(clock, journal, "a");
  const Alarm b(clock, journal, "b");
  a.reset();
  EXPECT_EQ(clock->dispatch(0.0), 1U);
  EXPECT_EQ(journal, (Journal{"b"}));
}

TEST(ClockBinding, reactorKeepsItsClock) {
  auto clock = makePtr<Clock>();
  Journal journal;
  Alarm alarm(clock, journal, "a", 2.0);
  const Clock* const kept = clock.get();
  clock = nullptr;
  EXPECT_EQ(alarm.notifier(), kept);
  EXPECT_EQ(kept->nextDue(), 2.0);
}

TEST(ClockBinding, clockThatEndsFirstLetsGoOfItsReactors) {
  Journal journal;
  Alarm a(nullptr, journal, "a");
  Alarm b(nullptr, journal, "b");
  {
    const Clock clock;
    a.notifierIs(&clock);
    b.notifierIs(&clock);
    EXPECT_EQ(clock.nextDue(), 0.0);
  }
  EXPECT_EQ(a.notifier(), nullptr);
  EXPECT_TRUE(a.isArmed());
  a.timeMinIs(5.0);
  const auto next = makePtr<Clock>();
  a.notifierIs(next.get());
  b.notifierIs(next.get());
  next->dispatch(9.0);
  EXPECT_EQ(journal, (Journal{"b", "a"}));
}

TEST(ClockBindingDeathTest, reactorIsBoundToAClockOnly) {
  const auto entity = makePtr<NamedEntity>("hall");
  Journal journal;
  Alarm alarm(nullptr, journal, "a");
  EXPECT_DEATH(
      alarm.notifierIs(entity.get()),
      "^mox/Clock\\.cpp:[0-9]+: virtual void Mox::Clock::NotifieeConst::isRegisteredNotifieeIs\\(bool\\): "
      "Assertion 'notifier\\(\\) == nullptr \\|\\| dynamic_cast<const Clock\\*>\\(notifier\\(\\)\\) != nullptr' "
      "failed\\.\n$");
}

}  // namespace Mox::ClockBindingTest
