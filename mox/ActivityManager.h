// The activity thread's loop: when to wake up, and what to do then.
//
// Overview
//   All deferred work is armed on the activity manager's clock. An agent either hands its thread to the manager,
//
//     Mox::activityManager()->run();                 // returns after stop(), or when nothing is armed any more
//
//   or keeps a loop of its own and asks the manager:
//
//     auto& manager = *Mox::activityManager();
//     for (;;) {
//       waitForEventsUntil(manager.nextDue());       // poll(), select(), a host framework's timer; +infinity: no timer
//       handleEvents();                              // may arm something earlier, so ask again afterwards
//       manager.dispatch();                          // one round; never calls the same reactor twice
//     }
//
// Rules: one manager per process; all its operations belong to the activity thread. An exception that a handler lets out
// leaves `dispatch` or `run`; what was not called yet stays due.

#pragma once

#include <cstddef>

#include "mox/Clock.h"
#include "mox/Ptr.h"
#include "mox/Public.h"

namespace Mox {

/// What the activity manager runs on.
class MOX_PUBLIC ActivityManagerConfig : public Entity {
 public:
  ActivityManagerConfig();
  ~ActivityManagerConfig() override;

  /// The time source of deferred work.
  [[nodiscard]] const Ptr<Clock>& clock() const noexcept { return clock_; }

 private:
  Ptr<Clock> clock_;
};

class MOX_PUBLIC ActivityManager : public PtrInterface {
 public:
  ActivityManager();
  ~ActivityManager() override;

  [[nodiscard]] const Ptr<ActivityManagerConfig>& config() const noexcept { return config_; }
  [[nodiscard]] const Ptr<Clock>& clock() const noexcept { return config_->clock(); }

  /// When `dispatch` has something to do next, in seconds of `System::currentTime`; +infinity when nothing is armed.
  [[nodiscard]] double nextDue() const noexcept { return clock()->nextDue(); }

  /// Runs one round of what is due; returns how many reactors were called.
  std::size_t dispatch();

  /// Dispatches and waits until `stop()` is called or nothing is armed any more. In virtual time, waiting moves the time
  /// on to what is due next.
  void run();
  /// Ends `run`, and a `run` that it is inside of, after the present round; without effect on a later one.
  void stop() noexcept { isStopped_ = true; }

 private:
  Ptr<ActivityManagerConfig> config_;
  bool isStopped_ = false;
};

/// The process's activity manager, made on first use.
[[nodiscard]] MOX_PUBLIC const Ptr<ActivityManager>& activityManager();

}  // namespace Mox
