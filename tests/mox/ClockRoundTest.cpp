// What handlers may do during a round of the clock.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

#include "mox/Clock.h"
#include "mox/StateMachine.h"
#include "tests/support/Alarm.h"

namespace Mox::ClockRoundTest {

using Test::Alarm;
using Test::Journal;

constexpr double infinity = std::numeric_limits<double>::infinity();

class ClockRound : public testing::Test {
 protected:
  Ptr<Clock> clock = makePtr<Clock>();
  Journal journal;
};

// ---- arming in a round

TEST_F(ClockRound, selfArmingReactorIsCalledOncePerRound) {
  Alarm slice(clock, journal, "slice");
  slice.actionIs([&] { slice.timeMinIs(0.0); });
  for (int round = 0; round < 5; ++round) {
    EXPECT_EQ(clock->dispatch(7.0), 1U);
    EXPECT_EQ(clock->nextDue(), 0.0);
  }
}

TEST_F(ClockRound, selfArmingForAnyTimeThatIsDueWaitsForTheNextRound) {
  for (const double again : {-1.0, 0.0, 3.0, 5.0, 7.0}) {
    SCOPED_TRACE(again);
    Alarm slice(clock, journal, "slice", 3.0);
    slice.actionIs([&] { slice.timeMinIs(again); });
    EXPECT_EQ(clock->dispatch(7.0), 1U);
    EXPECT_EQ(clock->nextDue(), again);
    EXPECT_EQ(clock->dispatch(7.0), 1U);
  }
}

TEST_F(ClockRound, severalSelfArmingReactorsTakeTurns) {
  Alarm a(clock, journal, "a", 1.0);
  Alarm b(clock, journal, "b", 1.0);
  Alarm c(clock, journal, "c", 2.0);
  a.actionIs([&] { a.timeMinIs(2.0); });
  b.actionIs([&] { b.timeMinIs(0.0); });
  c.actionIs([&] { c.timeMinIs(2.0); });
  EXPECT_EQ(clock->dispatch(2.0), 3U);
  EXPECT_EQ(journal, (Journal{"a", "b", "c"}));
  journal.clear();
  EXPECT_EQ(clock->dispatch(2.0), 3U);
  EXPECT_EQ(journal, (Journal{"b", "a", "c"}));
}

TEST_F(ClockRound, reactorsThatArmEachOtherTakeTurns) {
  Alarm ping(clock, journal, "ping");
  Alarm pong(clock, journal, "pong", infinity);
  ping.actionIs([&] { pong.timeMinIs(0.0); });
  pong.actionIs([&] { ping.timeMinIs(0.0); });
  for (int round = 0; round < 4; ++round) EXPECT_EQ(clock->dispatch(0.0), 1U);
  EXPECT_EQ(journal, (Journal{"ping", "pong", "ping", "pong"}));
}

TEST_F(ClockRound, reactorThatBecomesDueInTheRoundWaitsForTheNext) {
  Alarm late(clock, journal, "late", 100.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { late.timeMinIs(2.0); });
  const Alarm last(clock, journal, "last", 3.0);
  EXPECT_EQ(clock->dispatch(4.0), 2U);
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  EXPECT_EQ(journal, (Journal{"first", "last", "late"}));
}

TEST_F(ClockRound, reactorThatMovesToAnotherDueTimeWaitsForTheNext) {
  Alarm moved(clock, journal, "moved", 3.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { moved.timeMinIs(2.0); });
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  EXPECT_EQ(journal, (Journal{"first", "moved"}));
}

TEST_F(ClockRound, reactorThatIsMadeInTheRoundWaitsForTheNext) {
  std::unique_ptr<Alarm> made;
  const Alarm first(clock, journal, "first", 1.0, [&] { made = std::make_unique<Alarm>(clock, journal, "made"); });
  EXPECT_EQ(clock->dispatch(1.0), 1U);
  EXPECT_EQ(clock->dispatch(1.0), 1U);
  EXPECT_EQ(journal, (Journal{"first", "made"}));
}

TEST_F(ClockRound, reactorThatComesBackWithItsTimeOverIsCalledOnce) {
  Alarm away(clock, journal, "away", 2.0);
  away.hasNotificationActiveIs(false);
  const Alarm first(clock, journal, "first", 1.0, [&] { away.hasNotificationActiveIs(true); });
  const auto called = clock->dispatch(4.0) + clock->dispatch(4.0) + clock->dispatch(4.0);
  EXPECT_EQ(called, 2U);
  EXPECT_EQ(journal, (Journal{"first", "away"}));
}

TEST_F(ClockRound, armingWithTheEqualTimeKeepsTheTurn) {
  Alarm second(clock, journal, "second", 2.0);
  const Alarm third(clock, journal, "third", 2.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { second.timeMinIs(2.0); });
  EXPECT_EQ(clock->dispatch(2.0), 3U);
  EXPECT_EQ(journal, (Journal{"first", "second", "third"}));
}

TEST_F(ClockRound, switchingOnWhatIsOnKeepsTheTurn) {
  Alarm second(clock, journal, "second", 2.0);
  const Alarm first(clock, journal, "first", 1.0, [&] {
    second.hasNotificationActiveIs(true);
    second.isRegisteredNotifieeIs(true);
  });
  EXPECT_EQ(clock->dispatch(2.0), 2U);
}

// ---- taking another's turn away

TEST_F(ClockRound, reactorThatMovesOutOfTheRoundIsNotCalled) {
  Alarm second(clock, journal, "second", 2.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { second.timeMinIs(9.0); });
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  EXPECT_EQ(clock->nextDue(), 9.0);
  EXPECT_EQ(clock->dispatch(9.0), 1U);
}

TEST_F(ClockRound, reactorThatIsDisarmedIsNotCalled) {
  Alarm second(clock, journal, "second", 2.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { second.timeMinIs(infinity); });
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  EXPECT_EQ(clock->dispatch(4.0), 0U);
}

TEST_F(ClockRound, reactorThatIsSwitchedOffIsNotCalled) {
  Alarm second(clock, journal, "second", 2.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { second.hasNotificationActiveIs(false); });
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  second.hasNotificationActiveIs(true);
  EXPECT_EQ(clock->dispatch(4.0), 1U);
}

TEST_F(ClockRound, reactorThatIsTakenOutIsNotCalled) {
  Alarm second(clock, journal, "second", 2.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { second.isRegisteredNotifieeIs(false); });
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  second.isRegisteredNotifieeIs(true);
  EXPECT_EQ(clock->dispatch(4.0), 1U);
}

TEST_F(ClockRound, reactorThatIsUnboundIsNotCalled) {
  Alarm second(clock, journal, "second", 2.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { second.notifierIs(nullptr); });
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  EXPECT_EQ(journal, (Journal{"first"}));
}

TEST_F(ClockRound, reactorThatIsDestroyedIsNotCalled) {
  std::vector<std::unique_ptr<Alarm>> others;
  const Alarm first(clock, journal, "first", 1.0, [&] { others.clear(); });
  for (const double time : {1.0, 2.0, 3.0, 9.0}) others.push_back(std::make_unique<Alarm>(clock, journal, "x", time));
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  EXPECT_EQ(clock->nextDue(), infinity);
}

TEST_F(ClockRound, roundGoesOnBehindReactorsThatAreDestroyed) {
  auto second = std::make_unique<Alarm>(clock, journal, "second", 2.0);
  const Alarm first(clock, journal, "first", 1.0, [&] { second.reset(); });
  const Alarm third(clock, journal, "third", 3.0);
  EXPECT_EQ(clock->dispatch(4.0), 2U);
  EXPECT_EQ(journal, (Journal{"first", "third"}));
}

// ---- what a handler may do to itself

TEST_F(ClockRound, handlerMayDestroyItsReactor) {
  std::unique_ptr<Alarm> alarm;
  alarm = std::make_unique<Alarm>(clock, journal, "a", 1.0, [&] { alarm.reset(); });
  const Alarm next(clock, journal, "next", 2.0);
  EXPECT_EQ(clock->dispatch(2.0), 2U);
  EXPECT_EQ(alarm, nullptr);
}

TEST_F(ClockRound, handlerMayArmAndLeave) {
  const auto other = makePtr<Clock>();
  Alarm alarm(clock, journal, "a", 1.0);
  alarm.actionIs([&] {
    alarm.timeMinIs(0.0);
    alarm.notifierIs(other.get());
  });
  EXPECT_EQ(clock->dispatch(2.0), 1U);
  EXPECT_EQ(clock->nextDue(), infinity);
  EXPECT_EQ(other->nextDue(), 0.0);
}

/// Works once, and then drops its last reference.
class OnceSm : public StateMachine<OnceSm> {
 public:
  OnceSm(const Ptr<Clock>& clock, Ptr<OnceSm>& owner, bool& hasEnded)
      : owner_(owner), hasEnded_(hasEnded), clock_(this, clock), other_(this, clock) {}
  ~OnceSm() override {
    moxDoZombieReactors(true);
    hasEnded_ = true;
  }

  void doWork() { owner_ = nullptr; }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(clock_);
    act(other_);
  }

  class MoxClock : public Reactor<MoxClock, OnceSm, Clock, Clock::NotifieeConst> {
   public:
    using Reactor::Reactor;
    void onTimeMin() override { sm().doWork(); }
  };

  Ptr<OnceSm>& owner_;
  bool& hasEnded_;
  MoxClock clock_;
  MoxClock other_;
};

TEST_F(ClockRound, handlerMayDropTheLastReferenceToItsStateMachine) {
  bool hasEnded = false;
  Ptr<OnceSm> owner;
  owner = makePtr<OnceSm>(clock, owner, hasEnded);
  const Alarm next(clock, journal, "next");
  EXPECT_EQ(clock->dispatch(0.0), 2U);
  EXPECT_TRUE(hasEnded);
  EXPECT_EQ(journal, (Journal{"next"}));
  EXPECT_EQ(clock->nextDue(), infinity);
}

TEST_F(ClockRound, stateMachineThatIsSwitchedOffIsCalledOnceItIsBack) {
  bool hasEnded = false;
  Ptr<OnceSm> owner;
  owner = makePtr<OnceSm>(clock, owner, hasEnded);
  owner->hasNotificationActiveIs(true);
  owner->hasNotificationActiveIs(false);
  EXPECT_EQ(clock->dispatch(1.0), 0U);
  owner->hasNotificationActiveIs(true);
  EXPECT_EQ(clock->dispatch(1.0), 1U);
  EXPECT_TRUE(hasEnded);
}

/// A clock that tells when it ends.
class WatchedClock : public Clock {
 public:
  explicit WatchedClock(bool& hasEnded) : hasEnded_(hasEnded) {}
  ~WatchedClock() override { hasEnded_ = true; }

 private:
  bool& hasEnded_;
};

TEST_F(ClockRound, clockOutlivesTheRoundInWhichItsLastReferenceGoes) {
  bool hasEnded = false;
  clock = makePtr<WatchedClock>(hasEnded);
  Alarm second(clock, journal, "second", 2.0);
  Alarm first(clock, journal, "first", 1.0);
  first.actionIs([&] {
    second.notifierIs(nullptr);
    first.notifierIs(nullptr);
    clock = nullptr;
    EXPECT_FALSE(hasEnded);
  });
  Clock& borrowed = *clock;
  EXPECT_EQ(borrowed.dispatch(3.0), 1U);
  EXPECT_TRUE(hasEnded);
}

// ---- exceptions

TEST_F(ClockRound, exceptionEndsTheRoundAndTheRestStaysArmed) {
  const Alarm first(clock, journal, "first", 1.0);
  const Alarm broken(clock, journal, "broken", 2.0, [] { throw std::runtime_error("broken"); });
  const Alarm third(clock, journal, "third", 3.0);
  EXPECT_THROW(clock->dispatch(4.0), std::runtime_error);
  EXPECT_EQ(journal, (Journal{"first", "broken"}));
  EXPECT_FALSE(broken.isArmed());
  EXPECT_TRUE(third.isArmed());
  EXPECT_EQ(clock->nextDue(), 3.0);
  EXPECT_EQ(clock->dispatch(4.0), 1U);
  EXPECT_EQ(journal, (Journal{"first", "broken", "third"}));
}

TEST_F(ClockRound, reactorThatArmsItselfAndThrowsStaysArmed) {
  Alarm broken(clock, journal, "broken", 2.0);
  broken.actionIs([&] {
    broken.timeMinIs(2.0);
    throw std::runtime_error("broken");
  });
  EXPECT_THROW(clock->dispatch(4.0), std::runtime_error);
  EXPECT_EQ(clock->nextDue(), 2.0);
  EXPECT_THROW(clock->dispatch(4.0), std::runtime_error);
}

// ---- rounds in rounds

TEST_F(ClockRound, innerRoundCallsThoseThatTheOuterHasNotComeTo) {
  std::size_t inner = 0;
  const Alarm first(clock, journal, "first", 1.0, [&] { inner = clock->dispatch(3.0); });
  const Alarm second(clock, journal, "second", 2.0);
  const Alarm third(clock, journal, "third", 3.0);
  const Alarm later(clock, journal, "later", 4.0);
  EXPECT_EQ(clock->dispatch(3.0), 1U);
  EXPECT_EQ(inner, 2U);
  EXPECT_EQ(journal, (Journal{"first", "second", "third"}));
}

TEST_F(ClockRound, innerRoundCallsThoseThatWereArmedMeanwhile) {
  Alarm woken(clock, journal, "woken", infinity);
  std::size_t inner = 0;
  const Alarm first(clock, journal, "first", 1.0, [&] {
    woken.timeMinIs(0.0);
    inner = clock->dispatch(1.0);
  });
  EXPECT_EQ(clock->dispatch(1.0), 1U);
  EXPECT_EQ(inner, 1U);
  EXPECT_EQ(journal, (Journal{"first", "woken"}));
}

TEST_F(ClockRound, whatIsArmedInTheInnerRoundWaitsForTheNextOuterOne) {
  Alarm slice(clock, journal, "slice", 2.0);
  slice.actionIs([&] { slice.timeMinIs(2.0); });
  const Alarm first(clock, journal, "first", 1.0, [&] { clock->dispatch(2.0); });
  const Alarm third(clock, journal, "third", 3.0);
  EXPECT_EQ(clock->dispatch(3.0), 2U);
  EXPECT_EQ(journal, (Journal{"first", "slice", "third"}));
  EXPECT_EQ(clock->nextDue(), 2.0);
}

TEST_F(ClockRound, innerRoundMayBeLaterThanTheOuter) {
  const Alarm first(clock, journal, "first", 1.0, [&] { clock->dispatch(5.0); });
  const Alarm early(clock, journal, "early", 2.0);
  const Alarm late(clock, journal, "late", 5.0);
  EXPECT_EQ(clock->dispatch(2.0), 1U);
  EXPECT_EQ(journal, (Journal{"first", "early", "late"}));
}

TEST_F(ClockRound, roundsNestToDepth) {
  constexpr int depth = 100;
  int left = depth;
  Alarm slice(clock, journal, "slice");
  slice.actionIs([&] {
    if (--left == 0) return;
    slice.timeMinIs(0.0);
    EXPECT_EQ(clock->dispatch(0.0), 1U);
  });
  EXPECT_EQ(clock->dispatch(0.0), 1U);
  EXPECT_EQ(journal.size(), static_cast<std::size_t>(depth));
  EXPECT_EQ(clock->nextDue(), infinity);
}

}  // namespace Mox::ClockRoundTest
