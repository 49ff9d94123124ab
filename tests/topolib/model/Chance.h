// Sequences by chance, over so few names that everything meets everything.

#pragma once

#include <array>
#include <functional>
#include <numeric>
#include <utility>
#include <vector>

#include "tests/topolib/model/Sequence.h"

namespace Test {

class Chance {
 public:
  explicit Chance(std::uint64_t seed) : random_(seed) {}

  /// A sequence of so many actions, for a library that is started at the beginning, in the middle or at the end.
  [[nodiscard]] Sequence sequence(const Arrangement& arrangement, std::size_t actions = 200) {
    Sequence result{.arrangement = arrangement, .items = {}};
    result.arrangement.start.ignoreInternalVlan = random_.percent(70);
    result.arrangement.start.intfFilterType = random_.percent(50) ? "LocalInterface" : "";
    result.arrangement.dirtyVlanPortThreshold = std::array<std::uint16_t, 4>{0, 1, 3, 20}[random_.below(4)];
    const std::size_t startAt = std::array<std::size_t, 3>{0, random_.below(actions), actions}[random_.below(3)];
    const unsigned drains = std::array<unsigned, 3>{2, 10, 30}[random_.below(3)];
    std::vector<Action> furniture = random_.percent(80) ? configuration() : std::vector<Action>();
    random_.shuffle(furniture);
    for (std::size_t n = 0; n < actions; ++n) {
      if (n == startAt) result.items.push_back({.step = Sequence::Step::start});
      if (random_.percent(drains)) {
        result.items.push_back({.step = Sequence::Step::drain});
      } else if (!furniture.empty()) {
        result.items.push_back({.action = std::move(furniture.back())});
        furniture.pop_back();
      } else {
        const bool isInside = arrangement.hasReaders && random_.percent(20);
        result.items.push_back(
            {.step = isInside ? Sequence::Step::inside : Sequence::Step::action, .action = action()});
      }
    }
    return result;
  }

  /// One action on the inputs, or a little time.
  [[nodiscard]] Action action() {
    static const std::vector<Weighted> kinds{
        {14, [](Chance& c) { return mapVlan(c.vid(), c.topo()); }},
        {2, [](Chance& c) { return unmapVlan(c.vid()); }},
        {7, [](Chance& c) { return makeVlan(c.vid(), c.random_.percent(7)); }},
        {2, [](Chance& c) { return deleteVlan(c.vid()); }},
        {5, [](Chance& c) { return remakeVlan(c.vid(), c.random_.percent(7)); }},
        {38, [](Chance& c) { return addPort(c.vid(), c.intf(), c.anyValue()); }},
        {12, [](Chance& c) { return removePort(c.vid(), c.intf()); }},
        {9, [](Chance& c) { return expandVlan(c.vid(), c.vid()); }},
        {3, [](Chance& c) { return expandVlan(c.vid(), 0); }},
        {7, [](Chance& c) { return makeTopo(c.topo()); }},
        {1, [](Chance& c) { return deleteTopo(c.topo()); }},
        {5, [](Chance& c) { return remakeTopo(c.topo()); }},
        {34, [](Chance& c) { return portState(c.topo(), c.intf(), c.anyValue()); }},
        {5, [](Chance& c) { return flushPort(c.topo(), c.intf(), c.anyValue()); }},
        {3, [](Chance& c) { return deletePortConfig(c.topo(), c.intf()); }},
        {7, [](Chance& c) { return makeStatus(c.topo()); }},
        {1, [](Chance& c) { return deleteStatus(c.topo()); }},
        {5, [](Chance& c) { return remakeStatus(c.topo()); }},
        {34, [](Chance& c) { return portStatus(c.topo(), c.intf(), c.random_.percent(85)); }},
        {12, [](Chance& c) { return linkIs(c.intf()); }},
        {4, [](Chance& c) { return linkIs(c.intf(), Interface::LinkStatus(c.random_.below(2))); }},
        {2, [](Chance& c) { return forwarding(c.intf(), Interface::ForwardingModel::bridged); }},
        {2, [](Chance& c) { return forwarding(c.intf(), Interface::ForwardingModel(c.random_.below(6))); }},
        {2, [](Chance& c) { return deleteIntf(c.intf()); }},
        {6, [](Chance& c) { return markPort(c.vid(), c.random_.percent(80) ? c.intf() : ""); }},
        {14, [](Chance& /*c*/) { return dispatchOnce(); }},
        {2, [](Chance& c) { return advance(0.001 * static_cast<double>(c.random_.below(20))); }},
    };
    static const std::size_t total = std::accumulate(kinds.begin(), kinds.end(), std::size_t{0},
                                                     [](std::size_t sum, const Weighted& w) { return sum + w.weight; });
    std::size_t choice = random_.below(total);
    for (const Weighted& kind : kinds) {
      if (choice < kind.weight) return kind.make(*this);
      choice -= kind.weight;
    }
    return dispatchOnce();
  }

 private:
  /// A kind of action, and how often it comes in relation to the others.
  struct Weighted {
    std::size_t weight;
    std::function<Action(Chance&)> make;
  };

  /// Enough of everything to begin with.
  [[nodiscard]] std::vector<Action> configuration() {
    std::vector<Action> result;
    for (const char* const topo : topos) {
      result.insert(result.end(), {makeTopo(topo), makeStatus(topo)});
      for (const char* const intf : intfs) {
        if (random_.percent(70)) result.push_back(portState(topo, intf, anyValue()));
        if (random_.percent(70)) result.push_back(portStatus(topo, intf));
      }
    }
    for (const unsigned vid : vids) {
      result.insert(result.end(), {makeVlan(vid), mapVlan(vid, topo())});
      for (const char* const intf : intfs) {
        if (random_.percent(40)) result.push_back(addPort(vid, intf, anyValue()));
      }
      if (random_.percent(50)) result.push_back(expandVlan(vid, this->vid()));
    }
    for (const char* const intf : intfs) result.push_back(linkIs(intf));
    return result;
  }

  [[nodiscard]] std::string topo() { return topos[random_.below(topos.size())]; }
  [[nodiscard]] unsigned vid() { return vids[random_.below(vids.size())]; }
  [[nodiscard]] std::string intf() { return intfs[random_.below(intfs.size())]; }
  [[nodiscard]] unsigned anyValue() { return static_cast<unsigned>(random_.below(4)); }

  static constexpr std::array topos{"A", "B", "C"};
  static constexpr std::array vids{10U, 20U, 30U, 40U, 50U};
  static constexpr std::array intfs{"Ethernet1", "Ethernet2", "PortChannel1", "Ethernet1.5", "Cpu", "Vlan7"};

  Random random_;
};

}  // namespace Test
