// A reactor on a clock that writes down when it is called.

#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "mox/Clock.h"

namespace Test {

/// The names of the alarms that were called, in order.
using Journal = std::vector<std::string>;

/// Writes its name into a journal when its time has come, and then does what the test asks for.
class Alarm : public Mox::Clock::NotifieeConst {
 public:
  using Action = std::function<void()>;

  /// On a clock, active, and so armed for the next round.
  Alarm(const Mox::Ptr<Mox::Clock>& clock, Journal& journal, std::string name, Action action = {})
      : journal_(journal), name_(std::move(name)), action_(std::move(action)) {
    hasNotificationActiveIs(true);
    notifierIs(clock.get());
  }
  /// The same, armed for a time.
  Alarm(const Mox::Ptr<Mox::Clock>& clock, Journal& journal, std::string name, double time, Action action = {})
      : Alarm(clock, journal, std::move(name), std::move(action)) {
    timeMinIs(time);
  }

  void actionIs(Action action) { action_ = std::move(action); }

  void onTimeMin() override {
    journal_.push_back(name_);
    // The action may destroy this alarm.
    if (const Action action = action_) action();
  }

 private:
  Journal& journal_;
  std::string name_;
  Action action_;
};

}  // namespace Test
