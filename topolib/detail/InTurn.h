// Does pieces of work one after the other: what is asked for inside one waits until it has ended.

#pragma once

#include <deque>
#include <functional>
#include <utility>

#include "topolib/detail/Flag.h"

namespace Topology::Library::detail {

class InTurn {
 public:
  [[nodiscard]] bool isRunning() const noexcept { return isRunning_; }

  /// Does the work now, or after the one under way. What an exception has kept waiting is done first.
  void run(auto&& work) {
    waiting_.emplace_back(std::forward<decltype(work)>(work));
    if (isRunning_) return;
    const Flag running(isRunning_);
    while (!waiting_.empty()) {
      const std::function<void()> next = std::move(waiting_.front());
      waiting_.pop_front();
      next();
    }
  }

 private:
  std::deque<std::function<void()>> waiting_;
  bool isRunning_ = false;
};

}  // namespace Topology::Library::detail
