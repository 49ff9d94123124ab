// The topology library at work: the initial synchronisation, one work item of the backlog, single changes at two scales,
// and the large reconfigurations. Time passes from the change until nothing is pending.

#include <cmath>
#include <string>

#include "bench/Allocations.h"
#include "bench/Peers.h"
#include "bench/Suites.h"
#include "bench/Switch.h"

namespace Bench {
namespace {

constexpr Shape small{.topologies = 4, .vlans = 128, .ports = 512};   // 64 thousand members
constexpr Shape large{.topologies = 4, .vlans = 4094, .ports = 512};  // 2.1 million
constexpr Shape hundredth{.topologies = 4, .vlans = 41, .ports = 512};
constexpr std::size_t itemsPerMember = 3;  // added; after the initial pass removed and added once more

double secondsOf(auto&& job) {
  const auto start = std::chrono::steady_clock::now();
  job();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// From the start of the library until the second pass is over.
double syncSeconds(const Shape& shape) {
  Switch sw(shape);
  return secondsOf([&] {
    sw.startLibrary();
    drain();
  });
}

void initialSync(benchmark::State& state, Shape shape, std::size_t items) {
  for (auto _ : state) {
    state.PauseTiming();
    Switch sw(shape);
    state.ResumeTiming();
    sw.startLibrary();
    drain();
    state.PauseTiming();
    sw.clear();
    state.ResumeTiming();
  }
  itemsAre(state, items);
}

void syncItems(benchmark::State& state, Shape shape) {
  initialSync(state, shape, std::size_t{shape.vlans} * shape.ports * itemsPerMember);
}

/// Every topology has one VLAN on every port.
void manyTopologies(benchmark::State& state, unsigned count) {
  initialSync(state, {.topologies = count, .vlans = count, .ports = 16}, count);
}

/// The power of the number of members with which the time grows.
void syncGrowth(benchmark::State& state) {
  double exponent = 0;
  for (auto _ : state) {
    double few = 0;
    constexpr int rounds = 8;
    for (int i = 0; i < rounds; ++i) few += syncSeconds(small) / rounds;
    const double many = syncSeconds(large);
    exponent = std::log(many / few) / std::log(double{large.vlans} / small.vlans);
  }
  amountIs(state, exponent, "exponent");
}

void longestRun(benchmark::State& state) {
  double longest = 0;
  for (auto _ : state) {
    Switch sw(large);
    sw.startLibrary();
    longest = drain();
  }
  amountIs(state, longest * 1e3, "ms");
}

/// What is given back when the published state ends, after all others have.
void bytesPerMember(benchmark::State& state) {
  double bytes = 0;
  for (auto _ : state) {
    Switch sw(large);
    sw.startLibrary();
    drain();
    const auto members = static_cast<double>(sw.members());
    Mox::Ptr<Topology::Library::LibState> published = sw.state;
    sw.clear();
    const Allocations allocations;
    published = nullptr;
    bytes = -static_cast<double>(allocations.bytes()) / members;
  }
  amountIs(state, bytes, "bytes");
}

/// A port leaves a VLAN and comes back.
void onePortChange(benchmark::State& state, Shape shape) {
  Switch sw(shape);
  sw.startLibrary();
  drain();
  for (auto _ : state) sw.changeOnePort();
  itemsAre(state, 2);
}

/// A VLAN goes from one topology to another and back.
void vlanMoved(benchmark::State& state, unsigned ports) {
  Switch sw({.topologies = 2, .vlans = 2, .ports = ports});
  sw.startLibrary();
  drain();
  unsigned at = 1;
  for (auto _ : state) {
    at = 1 - at;
    sw.config->vidToTopoMapIs(1, Switch::topoName(at));
    drain();
  }
  itemsAre(state, std::size_t{2} * ports);
}

/// A topology goes with all its VLANs.
void topologyDeleted(benchmark::State& state, unsigned vlans) {
  constexpr unsigned ports = 64;
  for (auto _ : state) {
    state.PauseTiming();
    Switch sw({.topologies = 1, .vlans = vlans, .ports = ports});
    sw.startLibrary();
    drain();
    state.ResumeTiming();
    sw.config->topoConfigDel(Switch::topoName(0));
    drain();
    state.PauseTiming();
    sw.clear();
    state.ResumeTiming();
  }
  itemsAre(state, std::size_t{vlans} * ports);
}

}  // namespace

void addLibrary(Targets& targets) {
  const std::string floor = std::string("BuildState/") + stdUnordered;
  add("Library/item/Mox", syncItems, Shape{.topologies = 1, .vlans = 4094, .ports = 256})->Iterations(1);
  targets.ratio("backlog work item", "Library/item/Mox", floor, 2.0, stdUnordered);
  targets.compare("backlog work item", "Library/item/Mox", "BuildState/direct arrays", "direct arrays");

  add("Library/sync/2.1M/Mox", syncItems, large)->Iterations(1)->Repetitions(3);
  add("Library/sync/64k/Mox", syncItems, small)->Iterations(4)->Repetitions(3);
  add("Library/growth/Mox", syncGrowth)->Iterations(1)->Repetitions(3);
  add("Library/longestRun/Mox", longestRun)->Iterations(1)->Repetitions(3);
  add("Library/bytes/Mox", bytesPerMember)->Iterations(1)->Repetitions(1);
  targets.amount("initial sync, growth from 64 thousand to 2.1 million members", "Library/growth/Mox", 1.05,
                 "exponent");
  targets.amount("initial sync, longest run", "Library/longestRun/Mox", 12, "ms");
  targets.amount("initial sync, state, bytes a member", "Library/bytes/Mox", 16.5, "bytes");
  targets.compare("initial sync of 2.1 million members, an item", "Library/sync/2.1M/Mox", floor, stdUnordered);

  add("Library/portChange/2.1M/Mox", onePortChange, large)->Repetitions(3);
  add("Library/portChange/21k/Mox", onePortChange, hundredth)->Repetitions(3);
  targets.ratio("one port change, 2.1 million members", "Library/portChange/2.1M/Mox", "Library/portChange/21k/Mox",
                1.5, "1/100 of it");

  add("Library/topologies/4094/Mox", manyTopologies, 4094U)->Iterations(1)->Repetitions(3);
  add("Library/topologies/409/Mox", manyTopologies, 409U)->Iterations(4)->Repetitions(3);
  targets.compare("start with 4094 topologies, a topology", "Library/topologies/4094/Mox", "Library/topologies/409/Mox",
                  "409 topologies");
  add("Library/vlanMoved/4096/Mox", vlanMoved, 4096U)->Repetitions(3);
  add("Library/vlanMoved/409/Mox", vlanMoved, 409U)->Repetitions(3);
  targets.compare("VLAN with 4096 ports moved, an item", "Library/vlanMoved/4096/Mox", "Library/vlanMoved/409/Mox",
                  "409 ports");
  targets.compare("VLAN with 4096 ports moved, an item", "Library/vlanMoved/4096/Mox", floor, stdUnordered);
  add("Library/topologyDeleted/4094/Mox", topologyDeleted, 4094U)->Iterations(1)->Repetitions(3);
  add("Library/topologyDeleted/409/Mox", topologyDeleted, 409U)->Iterations(4)->Repetitions(3);
  targets.compare("topology of 4094 VLANs deleted, a member", "Library/topologyDeleted/4094/Mox",
                  "Library/topologyDeleted/409/Mox", "409 VLANs");
}

}  // namespace Bench
