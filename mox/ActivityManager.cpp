#include "mox/ActivityManager.h"

#include <cmath>

#include "mox/System.h"

namespace Mox {

ActivityManagerConfig::ActivityManagerConfig() : clock_(makePtr<Clock>()) {}
ActivityManagerConfig::~ActivityManagerConfig() = default;

ActivityManager::ActivityManager() : config_(makePtr<ActivityManagerConfig>()) {}
ActivityManager::~ActivityManager() = default;

// NOLINTNEXTLINE(readability-make-member-function-const): it runs the work.
std::size_t ActivityManager::dispatch() {
  // The loop only looks at the time: a virtual clock's tick belongs to the work that is measured.
  return clock()->dispatch(System::presentTime());
}

void ActivityManager::run() {
  isStopped_ = false;
  while (!isStopped_) {
    const double due = nextDue();
    if (std::isinf(due)) return;
    System::timeSource().waitUntil(due);
    dispatch();
  }
}

const Ptr<ActivityManager>& activityManager() {
  // Never destroyed: state machines that outlive main still unbind from its clock.
  static const auto& instance = *new Ptr<ActivityManager>(makePtr<ActivityManager>());
  return instance;
}

}  // namespace Mox
