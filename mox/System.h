// The time, and where it comes from.
//
// Overview
//   `System::currentTime()` is the time in seconds, read from the process-wide time source. The real one, in use from the
//   start, is the monotonic clock of the operating system: seconds since it booted, which no clock adjustment moves.
//   Tests and simulations put a `VirtualTime` in its place, which stands still until it is told to move.
//
// Usage
//   auto time = Mox::makePtr<Mox::VirtualTime>();
//   Mox::System::timeSourceIs(time);
//   time->advance(0.5);
//   ...
//   Mox::System::timeSourceIs(nullptr);                 // back to real time
//
// Change the source while nothing is armed on a clock, or accept that what is armed falls due by the new time.

#pragma once

#include "mox/Ptr.h"
#include "mox/Public.h"

namespace Mox {

class MOX_PUBLIC TimeSource : public PtrInterface {
 public:
  ~TimeSource() override;

  /// The present time in seconds, as code under measurement reads it. A virtual source may move on by its tick.
  [[nodiscard]] virtual double currentTime() = 0;
  /// The present time without any effect on the source, for loops and displays.
  [[nodiscard]] virtual double presentTime() const noexcept = 0;
  /// The same, but perhaps some milliseconds old in exchange for being cheap, for log messages.
  [[nodiscard]] virtual double coarseTime() const noexcept = 0;
  /// Lets the time reach `t`, unless it is later already: sleeps in real time, moves a virtual clock on.
  virtual void waitUntil(double t) = 0;
};

/// Time that stands still until it is moved. Starts at 0.
class MOX_PUBLIC VirtualTime : public TimeSource {
 public:
  ~VirtualTime() override;

  [[nodiscard]] double currentTime() override;
  [[nodiscard]] double presentTime() const noexcept override { return now_; }
  [[nodiscard]] double coarseTime() const noexcept override { return now_; }
  void waitUntil(double t) override;

  /// Moves the time on by so many seconds. A negative or unordered number raises RangeException.
  void advance(double seconds);

  /// How far each reading by `currentTime` moves the time on, in seconds, after it was read; 0 at start. Makes slices
  /// of work repeatable. A negative or unordered number raises RangeException.
  [[nodiscard]] double tick() const noexcept { return tick_; }
  void tickIs(double seconds);

 private:
  double now_ = 0.0;
  double tick_ = 0.0;
};

class MOX_PUBLIC System {
 public:
  [[nodiscard]] static double currentTime();
  [[nodiscard]] static double presentTime();
  [[nodiscard]] static double coarseTime();

  [[nodiscard]] static TimeSource& timeSource();
  /// Null selects real time.
  static void timeSourceIs(const Ptr<TimeSource>& source);
};

}  // namespace Mox
