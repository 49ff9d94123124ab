#include "mox/Clock.h"

#include <cmath>
#include <limits>
#include <utility>

#include "mox/Assert.h"
#include "mox/Exception.h"

namespace Mox {

Clock::Clock() noexcept = default;

Clock::~Clock() {
  while (!armed_.empty()) {
    NotifieeConst* const reactor = armed_.begin()->reactor;
    reactor->place_ = armed_.extract(armed_.begin());
  }
}

double Clock::nextDue() const noexcept {
  return armed_.empty() ? std::numeric_limits<double>::infinity() : armed_.begin()->time;
}

std::size_t Clock::dispatch(double now) {
  const Ptr<Clock> self(this);
  const std::uint64_t roundEnd = nextOrder_;
  std::size_t called = 0;
  Armed position{-std::numeric_limits<double>::infinity(), 0, nullptr};
  for (;;) {
    // Handlers arm, disarm and destroy reactors, so each step finds its place afresh.
    auto next = armed_.upper_bound(position);
    while (next != armed_.end() && next->time <= now && next->order >= roundEnd) ++next;
    if (next == armed_.end() || !(next->time <= now)) return called;
    position = *next;
    position.reactor->dequeue();
    position.reactor->isArmed_ = false;
    ++called;
    position.reactor->onTimeMin();
  }
}

Clock::NotifieeConst::NotifieeConst() {
  Queue made{{timeMin_, order_, this}};
  place_ = made.extract(made.begin());
}

Clock::NotifieeConst::~NotifieeConst() { Clock::NotifieeConst::isRegisteredNotifieeIs(false); }

void Clock::NotifieeConst::timeMinIs(double seconds) {
  if (std::isnan(seconds) || seconds == -std::numeric_limits<double>::infinity()) {
    throwRangeException("Clock::timeMin must be a time in seconds");
  }
  const bool isTime = !std::isinf(seconds);
  if (isTime && isArmed_ && seconds == timeMin_) return;
  dequeue();
  timeMin_ = seconds;
  isArmed_ = isTime;
  enqueue();
}

void Clock::NotifieeConst::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  dequeue();
  PtrInterface::NotifieeConst::hasNotificationActiveIs(active);
  enqueue();
}

void Clock::NotifieeConst::isRegisteredNotifieeIs(bool registered) {
  if (registered == isRegisteredNotifiee()) return;
  MOX_ASSERT("mox/Clock.cpp", notifier() == nullptr || dynamic_cast<const Clock*>(notifier()) != nullptr);
  dequeue();
  PtrInterface::NotifieeConst::isRegisteredNotifieeIs(registered);
  enqueue();
}

void Clock::NotifieeConst::onAttribute(AttributeId /*id*/, const void* /*key*/) {}

void Clock::NotifieeConst::enqueue() noexcept {
  if (!isArmed_ || !isRegisteredNotifiee() || !hasNotificationActive()) return;
  const auto& clock = static_cast<const Clock&>(*notifier());
  order_ = clock.nextOrder_++;
  place_.value() = {timeMin_, order_, this};
  clock.armed_.insert(std::move(place_));
}

void Clock::NotifieeConst::dequeue() noexcept {
  if (place_) return;
  place_ = static_cast<const Clock&>(*notifier()).armed_.extract({timeMin_, order_, this});
}

}  // namespace Mox
