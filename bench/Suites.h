// The subjects, a file each: every function registers its benchmarks and says what they are held against.
//
// A benchmark is named subject/job[/size]/contender; ours is called Mox. It reports the items that it worked on, or sets
// the counter `amount` where it measures something other than time.

#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <utility>

#include "bench/Targets.h"

namespace Bench {

void addScalarWrites(Targets& targets);
void addNotifications(Targets& targets);
void addPtrs(Targets& targets);
void addEntityMaps(Targets& targets);
void addVlanMaps(Targets& targets);
void addTraces(Targets& targets);
void addKestrel(Targets& targets);
void addBuildStates(Targets& targets);
void addLibrary(Targets& targets);
void addView(Targets& targets);

/// Registers a benchmark under a name that is made up at run time.
template <class Job, class... Args>
auto* add(const std::string& name, Job&& job, Args&&... args) {
  return benchmark::RegisterBenchmark(name.c_str(), std::forward<Job>(job), std::forward<Args>(args)...);
}

/// Says how many items each iteration worked on. What is reported is the time per item.
inline void itemsAre(benchmark::State& state, std::size_t perIteration) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(perIteration));
}

/// The counter that stands for the result where that is not the time per item.
inline constexpr const char* amountCounter = "amount";

/// Reports an amount instead of a time.
inline void amountIs(benchmark::State& state, double amount, const char* unit) {
  state.counters[amountCounter] = amount;
  state.SetLabel(unit);
}

}  // namespace Bench
