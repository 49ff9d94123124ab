#include "mox/AllocationTrack.h"

#include <algorithm>

#include "mox/Type.h"

namespace Mox {

namespace {

std::vector<const detail::AllocationCounter*>& counters() {
  static auto& instance = *new std::vector<const detail::AllocationCounter*>;
  return instance;
}

}  // namespace

detail::AllocationCounter::AllocationCounter(const std::type_info& counted) : type(&counted) {
  counters().push_back(this);
}

std::vector<AllocationCount> allocationCounts() {
  std::vector<AllocationCount> counts;
  for (const auto* counter : counters()) counts.push_back({typeName(*counter->type), counter->living, counter->made});
  std::sort(counts.begin(), counts.end(), [](const auto& a, const auto& b) { return a.type < b.type; });
  return counts;
}

}  // namespace Mox
