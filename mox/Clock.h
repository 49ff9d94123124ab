// The clock: calls a reactor when its time has come.
//
// Usage
//   class MoxClock : public Mox::Reactor<MoxClock, WorkSm, Mox::Clock, Mox::Clock::NotifieeConst> {
//    public:
//     using Reactor::Reactor;
//     void onTimeMin() override { sm().doWork(); }
//   };
//
//   MoxClock clock_{this, Mox::activityManager()->config()->clock()};    // armed for the next round
//   clock_.timeMinIs(Mox::System::currentTime() + 1.0);                  // or: a second from now
//   clock_.timeMinIs(0.0);                                               // or: at the next round, whatever the time
//
// Rules
//   - A reactor has one pending time. It is armed by its initial `timeMin` of 0.0, as soon as it is bound, registered and
//     active, and by each `timeMinIs` with a finite time, also an equal one; being called disarms it, and so does
//     `timeMinIs` with +infinity.
//   - Reactors that are due are called in the order of their times, and of arming among equal times.
//   - One that is armed during a round for a time already due is called in the next round, never again in the same one:
//     work that arms itself again and again does not hold the caller's loop.
//   - A reactor that is inactive or not registered when its time comes stays armed and is called once it is back.
//   - An exception that a handler lets out ends the round; those not called yet stay armed.
//
// Cost: arming for the time that is armed already is a comparison; any other arming is logarithmic in the number armed. A
// reactor brings its place along, so that arming never lacks memory.

#pragma once

#include <cstdint>
#include <set>
#include <utility>

#include "mox/Entity.h"
#include "mox/Public.h"

namespace Mox {

class MOX_PUBLIC Clock : public Entity {
 public:
  class NotifieeConst;

  Clock() noexcept;
  ~Clock() override;

  /// When the next armed reactor is due, in seconds; +infinity when none is armed. A time in the past is due now.
  [[nodiscard]] double nextDue() const noexcept;

  /// One round: calls every reactor that is due by `now` and was armed before the round began. Returns how many. A round
  /// inside a round, from a handler, calls those that the outer one has not come to, and those armed meanwhile.
  std::size_t dispatch(double now);

 private:
  /// Armed reactors by time, then by order of arming.
  struct Armed {
    double time;
    std::uint64_t order;
    NotifieeConst* reactor;

    [[nodiscard]] friend bool operator<(const Armed& a, const Armed& b) noexcept {
      return std::pair(a.time, a.order) < std::pair(b.time, b.order);
    }
  };

  using Queue = std::set<Armed>;

  // Reactors hold their clock as a constant entity; being armed is their state, kept here in order.
  mutable Queue armed_;
  mutable std::uint64_t nextOrder_ = 0;
};

class MOX_PUBLIC Clock::NotifieeConst : public PtrInterface::NotifieeConst {
 public:
  ~NotifieeConst() override;

  /// The time that was set last, in seconds; also after the call.
  [[nodiscard]] double timeMin() const noexcept { return timeMin_; }
  /// Arms the reactor for `onTimeMin`, once the time reaches `seconds`; +infinity disarms it. A number that is no time
  /// (NaN, -infinity) raises RangeException and changes nothing.
  void timeMinIs(double seconds);
  [[nodiscard]] bool isArmed() const noexcept { return isArmed_; }

  void hasNotificationActiveIs(bool active) override;
  void isRegisteredNotifieeIs(bool registered) override;

  /// A clock has no attributes that change.
  void onAttribute(AttributeId id, const void* key) override;

  /// Called when the time has come. The reactor is disarmed already and may arm itself again.
  virtual void onTimeMin() = 0;

 protected:
  NotifieeConst();

 private:
  friend Clock;

  void enqueue() noexcept;
  void dequeue() noexcept;

  double timeMin_ = 0.0;
  std::uint64_t order_ = 0;
  bool isArmed_ = true;
  Queue::node_type place_;  // in the clock's order while the reactor is armed, registered and active; otherwise here
};

}  // namespace Mox
