// The VLAN view: a link that flaps under a trunk with all VLANs, its port state, building the view, and its memory. The
// floor does what the view must do at least, with plain arrays.

#include <memory>
#include <string>
#include <vector>

#include "bench/Allocations.h"
#include "bench/Suites.h"
#include "bench/Switch.h"

namespace Bench {
namespace {

using Interface::LinkStatus;

constexpr Shape trunk{.topologies = 1, .vlans = 4094, .ports = 16};
constexpr Shape large{.topologies = 4, .vlans = 4094, .ports = 512};
constexpr Shape hundredth{.topologies = 4, .vlans = 41, .ports = 512};

/// A switch that has everything running: the library, the publisher on its instance status, and the view.
class Running : public Switch {
 public:
  explicit Running(const Shape& s) : Switch(s) {
    startLibrary();
    startPublisher();
    startView();
    drain();
  }
};

/// The view's result in arrays, by port and VLAN.
class Arrays {
 public:
  struct Entry {
    bool isMember;
    bool isBlocked;
    std::uint32_t direction;
  };

  explicit Arrays(const Shape& shape) : entries_(std::size_t{shape.ports} * 4095), vlans_(shape.vlans) {}

  void portIs(unsigned port, bool isMember, bool isBlocked) {
    Entry* const entries = entries_.data() + std::size_t{port} * 4095;
    for (unsigned vid = 1; vid <= vlans_; ++vid) entries[vid] = {isMember, isBlocked, 0};
    benchmark::ClobberMemory();
  }

 private:
  std::vector<Entry> entries_;
  unsigned vlans_;
};

void flap(benchmark::State& state, Shape shape) {
  Running sw(shape);
  const auto intf = sw.interfaces->intfStatusIs(sw.intfs[0]);
  for (auto _ : state) {
    intf->linkStatusIs(LinkStatus::down);
    intf->linkStatusIs(LinkStatus::up);
  }
  itemsAre(state, std::size_t{2} * shape.vlans);
}

void portState(benchmark::State& state) {
  using Bridging::Topology::PortState;
  Running sw(trunk);
  const auto port = Mox::Ptr(sw.config->topoConfig(Switch::topoName(0))->topoPortConfig(sw.intfs[0]));
  for (auto _ : state) {
    port->portStateIs(PortState::blocking);
    port->portStateIs(PortState::forwarding);
  }
  itemsAre(state, std::size_t{2} * trunk.vlans);
}

void arrayWrites(benchmark::State& state) {
  Arrays arrays(trunk);
  for (auto _ : state) {
    arrays.portIs(0, false, true);
    arrays.portIs(0, true, false);
  }
  itemsAre(state, std::size_t{2} * trunk.vlans);
}

void build(benchmark::State& state, Shape shape) {
  Switch sw(shape);
  sw.startLibrary();
  drain();
  for (auto _ : state) {
    sw.startView();
    state.PauseTiming();
    sw.viewSm = nullptr;
    sw.view = Topology::Library::Vlan::libVlanStateFactory("view");
    state.ResumeTiming();
  }
  itemsAre(state, sw.members());
}

void buildArrays(benchmark::State& state) {
  for (auto _ : state) {
    const auto arrays = std::make_unique<Arrays>(large);
    for (unsigned port = 0; port < large.ports; ++port) arrays->portIs(port, true, false);
  }
  itemsAre(state, std::size_t{large.vlans} * large.ports);
}

void bytesPerEntry(benchmark::State& state) {
  double bytes = 0;
  for (auto _ : state) {
    Switch sw(large);
    sw.startLibrary();
    drain();
    const Allocations allocations;
    sw.startView();
    bytes = static_cast<double>(allocations.bytes()) / static_cast<double>(sw.members());
  }
  amountIs(state, bytes, "bytes");
}

/// A VLAN's port configuration changes on one port.
void oneChange(benchmark::State& state, Shape shape) {
  Running sw(shape);
  for (auto _ : state) sw.changeOnePort();
  itemsAre(state, 2);
}

}  // namespace

void addView(Targets& targets) {
  const char* const arrays = "plain arrays";
  add("View/flap/Mox", flap, trunk)->Repetitions(3);
  add("View/portState/Mox", portState)->Repetitions(3);
  add("View/arrays", arrayWrites)->Repetitions(3);
  targets.compare("link flap of a trunk with 4094 VLANs, an entry", "View/flap/Mox", "View/arrays", arrays);
  targets.compare("port state of a trunk with 4094 VLANs, an entry", "View/portState/Mox", "View/arrays", arrays);
  add("View/flap/largeSwitch/Mox", flap, Shape{.topologies = 1, .vlans = 4094, .ports = 512})->Repetitions(3);
  targets.compare("link flap on a switch with 512 trunks", "View/flap/largeSwitch/Mox", "View/flap/Mox", "16 trunks");

  add("View/build/Mox", build, large)->Iterations(1)->Repetitions(3);
  add("View/build/arrays", buildArrays)->Iterations(1)->Repetitions(3);
  targets.compare("view over 2.1 million members, an entry", "View/build/Mox", "View/build/arrays", arrays);
  add("View/bytes/Mox", bytesPerEntry)->Iterations(1)->Repetitions(1);
  targets.amount("view, bytes an entry", "View/bytes/Mox", 40, "bytes");

  add("View/change/2.1M/Mox", oneChange, large)->Repetitions(3);
  add("View/change/21k/Mox", oneChange, hundredth)->Repetitions(3);
  targets.ratio("one port change until the view, 2.1 million members", "View/change/2.1M/Mox", "View/change/21k/Mox",
                1.5, "1/100 of it");
}

}  // namespace Bench
