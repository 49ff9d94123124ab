// The clock against a plain model: reactors that do anything to each other, in and between rounds.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

#include "mox/Clock.h"
#include "tests/support/Random.h"

namespace Mox::ClockRandomTest {

using Test::Random;
using Test::seedTrace;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// What the clock promises, by linear search.
class Model {
 public:
  struct Reactor {
    double time = 0.0;
    bool isArmed = true;
    bool isBound = true;
    bool isRegistered = true;
    bool isActive = true;
    std::uint64_t armedAs = 0;  // its place among equal times; what comes back is armed anew

    [[nodiscard]] bool isWaiting() const { return isArmed && isBound && isRegistered && isActive; }
  };

  explicit Model(std::size_t size) : reactors_(size) {
    for (Reactor& r : reactors_) r.armedAs = arming_++;
  }

  [[nodiscard]] const Reactor& operator[](std::size_t i) const { return reactors_[i]; }

  void armIs(std::size_t i, double time) {
    Reactor& r = reactors_[i];
    const bool isEqual = r.isArmed && r.time == time && time != infinity;
    r.time = time;
    r.isArmed = time != infinity;
    if (!isEqual) r.armedAs = arming_++;
  }
  void boundIs(std::size_t i, bool value) {
    reactors_[i].isBound = value;
    reactors_[i].isRegistered = value;
    reactors_[i].armedAs = arming_++;
  }
  void registeredIs(std::size_t i, bool value) {
    reactors_[i].isRegistered = value;
    reactors_[i].armedAs = arming_++;
  }
  void activeIs(std::size_t i, bool value) {
    reactors_[i].isActive = value;
    reactors_[i].armedAs = arming_++;
  }
  void remake(std::size_t i) {
    reactors_[i] = {};
    reactors_[i].armedAs = arming_++;
  }

  void roundBegins(double now) { rounds_.push_back({now, arming_, -infinity, 0, 0}); }
  void roundEnds() { rounds_.pop_back(); }
  [[nodiscard]] std::size_t depth() const { return rounds_.size(); }

  /// The next to be called in the innermost round.
  [[nodiscard]] std::optional<std::size_t> expected() const {
    const Round& round = rounds_.back();
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < reactors_.size(); ++i) {
      const Reactor& r = reactors_[i];
      const bool isInRound = r.isWaiting() && r.time <= round.now && r.armedAs < round.end;
      if (isInRound && place(i) > std::pair(round.time, round.armedAs) && (!best || place(i) < place(*best))) best = i;
    }
    return best;
  }
  void called(std::size_t i) {
    std::tie(rounds_.back().time, rounds_.back().armedAs) = place(i);
    ++rounds_.back().calls;
    reactors_[i].isArmed = false;
  }
  /// How many the innermost round has called.
  [[nodiscard]] std::size_t calls() const { return rounds_.back().calls; }

  [[nodiscard]] double nextDue() const {
    double due = infinity;
    for (const Reactor& r : reactors_) due = r.isWaiting() ? std::min(due, r.time) : due;
    return due;
  }

 private:
  struct Round {
    double now;
    std::uint64_t end;
    double time;  // how far the round has come
    std::uint64_t armedAs;
    std::size_t calls;
  };

  [[nodiscard]] std::pair<double, std::uint64_t> place(std::size_t i) const {
    return {reactors_[i].time, reactors_[i].armedAs};
  }

  std::vector<Reactor> reactors_;
  std::vector<Round> rounds_;
  std::uint64_t arming_ = 1;
};

/// The clock and the model side by side, and what happens to both.
class Trial {
 public:
  static constexpr std::size_t size = 24;

  Trial() : model_(size) {
    for (std::size_t i = 0; i < size; ++i) remade(i);
  }

  /// One random change of one reactor.
  void change() {
    const std::size_t i = random_.below(size);
    Timer& timer = *timers_[i];
    const Model::Reactor& r = model_[i];
    const std::size_t what = random_.below(100);
    if (what < 70) {
      const double time = randomTime(r);
      timer.timeMinIs(time);
      model_.armIs(i, time);
    } else if (what < 78) {
      timer.hasNotificationActiveIs(!r.isActive);
      model_.activeIs(i, !r.isActive);
    } else if (what < 86 && r.isBound) {
      timer.isRegisteredNotifieeIs(!r.isRegistered);
      model_.registeredIs(i, !r.isRegistered);
    } else if (what < 94) {
      timer.notifierIs(r.isBound ? nullptr : clock_.get());
      model_.boundIs(i, !r.isBound);
    } else {
      model_.remake(i);
      remade(i);
    }
  }

  void round() {
    now_ += 0.5 * static_cast<double>(random_.below(4));
    model_.roundBegins(now_);
    const std::size_t depth = model_.depth();
    try {
      const std::size_t called = clock_->dispatch(now_);
      EXPECT_EQ(model_.expected(), std::nullopt) << "a reactor was left out";
      EXPECT_EQ(called, model_.calls());
    } catch (const std::runtime_error&) {
      EXPECT_EQ(model_.depth(), depth);
    }
    model_.roundEnds();
    check();
  }

  void check() const {
    EXPECT_EQ(clock_->nextDue(), model_.nextDue());
    for (std::size_t i = 0; i < size; ++i) {
      EXPECT_EQ(timers_[i]->isArmed(), model_[i].isArmed) << i;
      EXPECT_EQ(timers_[i]->timeMin(), model_[i].time) << i;
    }
  }

  [[nodiscard]] std::size_t calls() const { return calls_; }
  [[nodiscard]] Random& random() { return random_; }

 private:
  class Timer : public Clock::NotifieeConst {
   public:
    Timer(Trial& trial, std::size_t i) : trial_(trial), i_(i) {
      hasNotificationActiveIs(true);
      notifierIs(trial.clock_.get());
    }
    void onTimeMin() override { trial_.called(i_); }

   private:
    Trial& trial_;
    std::size_t i_;
  };

  // Few different times, so that many are equal; often the one that is armed already.
  double randomTime(const Model::Reactor& r) {
    if (random_.percent(15)) return r.time;
    if (random_.percent(10)) return infinity;
    return now_ - 2.0 + 0.5 * static_cast<double>(random_.below(10));
  }

  void remade(std::size_t i) {
    timers_[i].reset();
    timers_[i] = std::make_unique<Timer>(*this, i);
  }

  /// The handler of all reactors. It may end the reactor that is called.
  void called(std::size_t i) {
    ++calls_;
    EXPECT_EQ(model_.expected(), i);
    model_.called(i);
    EXPECT_FALSE(timers_[i]->isArmed());
    for (std::size_t n = random_.below(4); n > 0; --n) change();
    if (model_.depth() < 3 && random_.percent(5)) round();
    if (random_.percent(3)) throw std::runtime_error("broken");
  }

  Random random_;
  Ptr<Clock> clock_ = makePtr<Clock>();
  Model model_;
  std::array<std::unique_ptr<Timer>, size> timers_;
  double now_ = 0.0;
  std::size_t calls_ = 0;
};

TEST(ClockRandom, callsWhatTheModelCalls) {
  SCOPED_TRACE(seedTrace());
  Trial trial;
  for (int i = 0; i < 20'000 && !testing::Test::HasFailure(); ++i) {
    for (std::size_t n = trial.random().below(6); n > 0; --n) trial.change();
    trial.check();
    trial.round();
  }
  EXPECT_GT(trial.calls(), 20'000U);
}

/// Without changes in the rounds: every reactor once, sorted.
TEST(ClockRandom, callsManyReactorsInOrder) {
  SCOPED_TRACE(seedTrace());
  constexpr std::size_t size = 5'000;
  Random random;
  const auto clock = makePtr<Clock>();

  class Timer : public Clock::NotifieeConst {
   public:
    Timer(const Clock* clock, std::vector<const Timer*>& calls, double time) : calls_(calls) {
      timeMinIs(time);
      hasNotificationActiveIs(true);
      notifierIs(clock);
    }
    void onTimeMin() override { calls_.push_back(this); }

   private:
    std::vector<const Timer*>& calls_;
  };

  std::vector<const Timer*> calls;
  std::vector<std::unique_ptr<Timer>> timers;
  while (timers.size() < size) {
    const auto time = static_cast<double>(random.below(1'000));
    timers.push_back(std::make_unique<Timer>(clock.get(), calls, time));
  }
  std::vector<const Timer*> expected;
  expected.reserve(size);
  for (const auto& timer : timers) expected.push_back(timer.get());
  std::stable_sort(expected.begin(), expected.end(),
                   [](const Timer* a, const Timer* b) { return a->timeMin() < b->timeMin(); });

  std::size_t called = 0;
  for (double now = clock->nextDue(); now != infinity; now = clock->nextDue()) {
    called += clock->dispatch(now + static_cast<double>(random.below(5)));
  }
  EXPECT_EQ(called, size);
  EXPECT_EQ(calls, expected);
}

}  // namespace Mox::ClockRandomTest
