#include "mox/System.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/RangeError.h"
#include "tests/support/VirtualTime.h"

namespace Mox::SystemTest {

using Test::rangeErrorOf;
using Test::VirtualTimeInUse;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// ---- virtual time

TEST(VirtualTime, standsStillAtZero) {
  const VirtualTimeInUse time;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(System::currentTime(), 0.0);
    EXPECT_EQ(System::presentTime(), 0.0);
    EXPECT_EQ(System::coarseTime(), 0.0);
  }
}

TEST(VirtualTime, advanceMovesItOn) {
  const VirtualTimeInUse time;
  time->advance(0.5);
  time->advance(0.0);
  time->advance(2.0);
  EXPECT_EQ(System::currentTime(), 2.5);
  EXPECT_EQ(System::presentTime(), 2.5);
  EXPECT_EQ(System::coarseTime(), 2.5);
}

TEST(VirtualTime, tickMovesItOnAfterEachReading) {
  const VirtualTimeInUse time;
  EXPECT_EQ(time->tick(), 0.0);
  time->tickIs(0.25);
  EXPECT_EQ(time->tick(), 0.25);
  EXPECT_EQ(System::currentTime(), 0.0);
  EXPECT_EQ(System::currentTime(), 0.25);
  EXPECT_EQ(System::presentTime(), 0.5);
  time->tickIs(0.0);
  EXPECT_EQ(System::currentTime(), 0.5);
  EXPECT_EQ(System::currentTime(), 0.5);
}

TEST(VirtualTime, loopsDisplaysAndLogsDoNotTick) {
  const VirtualTimeInUse time;
  time->tickIs(1.0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(System::presentTime(), 0.0);
    EXPECT_EQ(System::coarseTime(), 0.0);
    System::timeSource().waitUntil(0.0);
  }
  EXPECT_EQ(System::currentTime(), 0.0);
  EXPECT_EQ(System::currentTime(), 1.0);
}

TEST(VirtualTime, waitUntilReachesTheTime) {
  const VirtualTimeInUse time;
  System::timeSource().waitUntil(4.0);
  EXPECT_EQ(System::presentTime(), 4.0);
}

TEST(VirtualTime, waitUntilNeverGoesBack) {
  const VirtualTimeInUse time;
  time->advance(4.0);
  for (const double over : {4.0, 3.0, 0.0, -1.0, -infinity, notANumber}) {
    time->waitUntil(over);
    EXPECT_EQ(System::presentTime(), 4.0) << over;
  }
}

TEST(VirtualTime, advanceByNoDurationRaisesAndChangesNothing) {
  const VirtualTimeInUse time;
  time->advance(4.0);
  for (const double noDuration : {-1.0, -std::numeric_limits<double>::denorm_min(), -infinity, infinity, notANumber}) {
    EXPECT_EQ(rangeErrorOf([&] { time->advance(noDuration); }), "VirtualTime::advance < 0 not allowed") << noDuration;
    EXPECT_EQ(System::presentTime(), 4.0);
  }
}

TEST(VirtualTime, tickOfNoDurationRaisesAndChangesNothing) {
  const VirtualTimeInUse time;
  time->tickIs(0.5);
  for (const double noDuration : {-1.0, -std::numeric_limits<double>::denorm_min(), -infinity, infinity, notANumber}) {
    EXPECT_EQ(rangeErrorOf([&] { time->tickIs(noDuration); }), "VirtualTime::tick < 0 not allowed") << noDuration;
    EXPECT_EQ(time->tick(), 0.5);
  }
  EXPECT_EQ(System::currentTime(), 0.0);
  EXPECT_EQ(System::currentTime(), 0.5);
}

// ---- the source of time

/// A source whose operations can be told apart, and which tells when it ends.
class OddSource : public TimeSource {
 public:
  explicit OddSource(double& endedAt) : endedAt_(endedAt) {}
  ~OddSource() override { endedAt_ = System::presentTime(); }

  double currentTime() override { return 1.0; }
  double presentTime() const noexcept override { return 2.0; }
  double coarseTime() const noexcept override { return 3.0; }
  void waitUntil(double /*t*/) override {}

 private:
  double& endedAt_;
};

TEST(System, readsTheTimeFromItsSource) {
  double endedAt = -1.0;
  const VirtualTimeInUse restoring;
  const auto source = makePtr<OddSource>(endedAt);
  System::timeSourceIs(source);
  EXPECT_EQ(&System::timeSource(), source.get());
  EXPECT_EQ(System::currentTime(), 1.0);
  EXPECT_EQ(System::presentTime(), 2.0);
  EXPECT_EQ(System::coarseTime(), 3.0);
}

TEST(System, keepsItsSourceUntilThereIsAnother) {
  double endedAt = -1.0;
  const VirtualTimeInUse restoring;
  System::timeSourceIs(makePtr<OddSource>(endedAt));
  EXPECT_EQ(System::currentTime(), 1.0);
  EXPECT_EQ(endedAt, -1.0);
  const auto next = makePtr<VirtualTime>();
  next->advance(7.0);
  System::timeSourceIs(next);
  EXPECT_EQ(endedAt, 7.0) << "what the old source sets off at its end sees the new one";
}

TEST(System, sourceCanBeTheSameAgain) {
  const VirtualTimeInUse time;
  time->advance(1.0);
  System::timeSourceIs(Ptr<TimeSource>(&System::timeSource()));
  EXPECT_EQ(System::presentTime(), 1.0);
}

TEST(System, nullSelectsRealTime) {
  const VirtualTimeInUse time;
  System::timeSourceIs(nullptr);
  EXPECT_NE(&System::timeSource(), &*time);
  time->tickIs(1.0);
  // Time is that since the machine booted, so it is not zero.
  EXPECT_GT(System::currentTime(), 0.0);
  EXPECT_EQ(time->presentTime(), 0.0);
}

TEST(System, realTimeIsMonotone) {
  const VirtualTimeInUse restoring;
  System::timeSourceIs(nullptr);
  double last = System::coarseTime();
  for (int i = 0; i < 1'000; ++i) {
    const double next = i % 2 == 0 ? System::currentTime() : System::presentTime();
    EXPECT_GE(next, last);
    last = next;
  }
  const double coarse = System::coarseTime();
  EXPECT_GE(System::presentTime(), coarse);
}

TEST(System, realTimeDoesNotWaitForWhatIsOver) {
  const VirtualTimeInUse restoring;
  System::timeSourceIs(nullptr);
  for (const double over : {System::currentTime(), 0.0, -1.0, -infinity, notANumber}) {
    System::timeSource().waitUntil(over);
  }
}

TEST(System, realTimeHasComeAfterTheWait) {
  const VirtualTimeInUse restoring;
  System::timeSourceIs(nullptr);
  for (const double seconds : {1e-9, 1e-6, 1e-5}) {
    const double t = System::currentTime() + seconds;
    System::timeSource().waitUntil(t);
    EXPECT_GE(System::presentTime(), t);
  }
}

}  // namespace Mox::SystemTest
