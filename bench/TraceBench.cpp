// A trace statement whose level is off, in a loop; the floor is the loop without it.

#include "bench/Suites.h"
#include "mox/Trace.h"

namespace Bench {
namespace {

constexpr std::size_t rounds = 1024;

Mox::TraceHandle benchTrace("Bench", false);

void empty(benchmark::State& state) {
  for (auto _ : state) {
    for (std::size_t i = 0; i < rounds; ++i) benchmark::ClobberMemory();
  }
  itemsAre(state, rounds);
}

void traceOff(benchmark::State& state) {
  for (auto _ : state) {
    for (std::size_t i = 0; i < rounds; ++i) {
      // Also makes the compiler load the levels afresh in each round, as between statements of a program.
      benchmark::ClobberMemory();
      MOX_TRACE("bench/TraceBench.cpp", benchTrace, 8) << "round " << i;
    }
  }
  itemsAre(state, rounds);
}

}  // namespace

void addTraces(Targets& targets) {
  add("Trace/off/Mox", traceOff);
  add("Trace/off/empty", empty);
  targets.difference("trace statement that is off", "Trace/off/Mox", "Trace/off/empty", 1.0, "an empty loop");
}

}  // namespace Bench
