#include "mox/System.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <ctime>
#include <new>
#include <utility>

#include "mox/Exception.h"

namespace Mox {

namespace {

double read(clockid_t clock) {
  std::timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

class RealTime final : public TimeSource {
 public:
  double currentTime() override { return read(CLOCK_MONOTONIC); }
  double presentTime() const noexcept override { return read(CLOCK_MONOTONIC); }
  double coarseTime() const noexcept override { return read(CLOCK_MONOTONIC_COARSE); }
  void waitUntil(double t) override {
    // In steps, since a far time does not fit a timespec, and until the time is there, since signals cut sleeps short.
    constexpr double longest = 3600.0;
    for (double left = t - currentTime(); left > 0; left = t - currentTime()) {
      const double step = std::min(left, longest);
      const auto seconds = static_cast<std::time_t>(step);
      const std::timespec wait{seconds, static_cast<long>((step - static_cast<double>(seconds)) * 1e9)};
      nanosleep(&wait, nullptr);
    }
  }
};

/// The source in use. Null until somebody chooses one: then it is the real one.
constinit TimeSource* source = nullptr;

TimeSource& realTime() {
  // Never destroyed: destructors of other static objects may still read the time. Nor allocated, so that the time can be
  // read when there is no memory.
  alignas(RealTime) static std::array<std::byte, sizeof(RealTime)> storage;
  static auto& instance = *new (storage.data()) RealTime;
  return instance;
}

void requireDuration(double seconds, const char* what) {
  if (!(seconds >= 0.0) || std::isinf(seconds)) throwRangeException(what);
}

}  // namespace

TimeSource::~TimeSource() = default;

VirtualTime::~VirtualTime() = default;

double VirtualTime::currentTime() {
  const double now = now_;
  now_ += tick_;
  return now;
}

void VirtualTime::waitUntil(double t) { now_ = std::max(now_, t); }

void VirtualTime::advance(double seconds) {
  requireDuration(seconds, "VirtualTime::advance < 0 not allowed");
  now_ += seconds;
}

void VirtualTime::tickIs(double seconds) {
  requireDuration(seconds, "VirtualTime::tick < 0 not allowed");
  tick_ = seconds;
}

double System::currentTime() { return timeSource().currentTime(); }

double System::presentTime() { return timeSource().presentTime(); }

double System::coarseTime() { return timeSource().coarseTime(); }

TimeSource& System::timeSource() { return source != nullptr ? *source : realTime(); }

void System::timeSourceIs(const Ptr<TimeSource>& newSource) {
  TimeSource* const old = std::exchange(source, Ptr(newSource).release());
  if (old != nullptr) old->referencesDec();
}

}  // namespace Mox
