#include "mox/AllocationTrack.h"

#include <map>

#include "mox/Type.h"

namespace Mox {

namespace {

// By name, since the description of a type may be unloaded with its module.
std::map<std::string, detail::AllocationCounter>& counters() {
  static auto& instance = *new std::map<std::string, detail::AllocationCounter>;
  return instance;
}

}  // namespace

detail::AllocationCounter& detail::allocationCounter(const std::type_info& type) { return counters()[typeName(type)]; }

std::vector<AllocationCount> allocationCounts() {
  std::vector<AllocationCount> counts;
  for (const auto& [type, counter] : counters()) counts.push_back({type, counter.living, counter.made});
  return counts;
}

}  // namespace Mox
