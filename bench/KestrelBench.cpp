// A message to the ring-buffer log, with a log and without one.

#include "bench/Suites.h"
#include "bridging/VlanId.h"
#include "kestrel/Kestrel.h"
#include "quill/IntfId.h"

namespace Bench {
namespace {

constexpr std::size_t rounds = 1024;
/// So many messages fit that a round overwrites no message of its own.
constexpr std::size_t logBytes = std::size_t{1} << 20;

void numbers() {
  for (std::size_t i = 0; i < rounds; ++i) {
    benchmark::ClobberMemory();
    KESTREL_MSG("bench/KestrelBench.cpp", "served {} of {}", i, rounds);
  }
}

void portOfVlan() {
  const Quill::IntfId intf("Ethernet3/1");
  const Bridging::VlanId vid = 10;
  for (std::size_t i = 0; i < rounds; ++i) {
    benchmark::ClobberMemory();
    KESTREL_MSG("bench/KestrelBench.cpp", "port {} of VLAN {}", intf, vid);
  }
}

void withLog(benchmark::State& state, void (*send)()) {
  Kestrel::traceFileIs(logBytes);
  // The log is full in what follows: every message overwrites an old one.
  for (std::size_t i = 0; i < logBytes / rounds / sizeof(std::uint64_t); ++i) send();
  for (auto _ : state) send();
  Kestrel::traceFileDel();
  itemsAre(state, rounds);
}

void withoutLog(benchmark::State& state, void (*send)()) {
  for (auto _ : state) send();
  itemsAre(state, rounds);
}

void empty(benchmark::State& state) {
  for (auto _ : state) {
    for (std::size_t i = 0; i < rounds; ++i) benchmark::ClobberMemory();
  }
  itemsAre(state, rounds);
}

}  // namespace

void addKestrel(Targets& targets) {
  add("Kestrel/numbers/log", withLog, numbers);
  add("Kestrel/numbers/noLog", withoutLog, numbers);
  add("Kestrel/numbers/empty", empty);
  add("Kestrel/portOfVlan/log", withLog, portOfVlan);

  targets.amount("log message, two numbers", "Kestrel/numbers/log", 20, "ns");
  targets.amount("log message, interface and VLAN", "Kestrel/portOfVlan/log", 20, "ns");
  targets.compare("log message without a log", "Kestrel/numbers/noLog", "Kestrel/numbers/empty", "an empty loop");
}

}  // namespace Bench
