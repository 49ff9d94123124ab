// Reconfigurations of a small switch, and what may happen while the library is at work on one.

#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/topolib/model/Actions.h"

namespace Test {

using Actions = std::vector<Action>;

/// Ethernet1 to Ethernet<n>.
[[nodiscard]] inline std::vector<std::string> ethernets(unsigned n) {
  std::vector<std::string> result;
  for (unsigned i = 1; i <= n; ++i) result.push_back("Ethernet" + std::to_string(i));
  return result;
}

/// The topologies A, B and C with all that makes four ports active, and VLANs 10, 20 and 30 on three of them each.
[[nodiscard]] inline Actions furniture() {
  Actions result;
  for (const auto& intf : ethernets(4)) result.push_back(linkIs(intf));
  for (const char* const topo : {"A", "B", "C"}) {
    result.insert(result.end(), {makeTopo(topo), makeStatus(topo)});
    for (const auto& intf : ethernets(4)) {
      result.insert(result.end(), {portState(topo, intf, 3), portStatus(topo, intf)});
    }
  }
  for (const unsigned vid : {10U, 20U, 30U, 40U}) {
    result.push_back(makeVlan(vid));
    for (unsigned n = vid / 10; n < vid / 10 + 3; ++n) {
      result.push_back(addPort(vid, "Ethernet" + std::to_string(1 + n % 4), n));
    }
  }
  return result;
}

/// What happens while the library is at work.
[[nodiscard]] inline std::vector<Actions> disturbances() {
  constexpr auto down = Interface::LinkStatus::down;
  return {
      {},
      {mapVlan(10, "B")},
      {mapVlan(10, "C")},
      {mapVlan(10, "A")},
      {mapVlan(10, "B"), mapVlan(10, "A")},
      {unmapVlan(10)},
      {unmapVlan(10), mapVlan(10, "A")},
      {mapVlan(20, "B")},
      {unmapVlan(20)},
      {deleteVlan(10)},
      {remakeVlan(10)},
      {remakeVlan(10, true)},
      {deleteVlan(10), makeVlan(10)},
      {deleteVlan(20)},
      {remakeVlan(20)},
      {removePort(10, "Ethernet2")},
      {removePort(10, "Ethernet2"), removePort(10, "Ethernet3"), removePort(10, "Ethernet4")},
      {addPort(10, "Ethernet1", 2)},
      {addPort(10, "Ethernet2", 3)},
      {removePort(20, "Ethernet3"), addPort(20, "Ethernet3", 1)},
      {markPort(10, "")},
      {markPort(10, "Ethernet1"), markPort(10, "Ethernet2")},
      {markPort(20, "Ethernet3"), remakeVlan(20, true)},
      {deleteTopo("A")},
      {remakeTopo("A")},
      {deleteTopo("B")},
      {remakeTopo("B")},
      {deleteStatus("A")},
      {deleteStatus("A"), makeStatus("A")},
      {makeStatus("A"), portStatus("A", "Ethernet2"), portStatus("A", "Ethernet3")},
      {makeTopo("A"), portState("A", "Ethernet2", 2), portState("A", "Ethernet3", 3)},
      {remakeStatus("A")},
      {remakeStatus("B")},
      {portStatus("A", "Ethernet2", false)},
      {portStatus("B", "Ethernet2", false), portStatus("B", "Ethernet2")},
      {linkIs("Ethernet2", down)},
      {linkIs("Ethernet2", down), linkIs("Ethernet2")},
      {expandVlan(10, 30)},
      {expandVlan(20, 10)},
      {expandVlan(20, 0)},
      {expandVlan(20, 0), expandVlan(20, 10), remakeVlan(10)},
      {expandVlan(20, 0), remakeVlan(20)},
      {deleteVlan(20), makeVlan(20), expandVlan(10, 20), mapVlan(20, "C")},
      {deleteVlan(20), expandVlan(10, 20), mapVlan(20, "A"), makeVlan(20)},
      {deleteVlan(20), expandVlan(10, 40), mapVlan(10, "C")},
      {deleteVlan(20), makeVlan(20), expandVlan(10, 40), mapVlan(10, "C")},
  };
}

/// A reconfiguration: what is there before, and what then changes.
struct Scene {
  const char* name;
  Actions before;
  Actions change;
  bool isFirstSync = false;  // the library is started only by the change
};

inline std::ostream& operator<<(std::ostream& out, const Scene& scene) { return out << scene.name; }

[[nodiscard]] inline std::vector<Scene> scenes() {
  Actions burst;
  for (unsigned n = 5; n < 27; ++n) burst.push_back(addPort(10, "Ethernet" + std::to_string(n), n));
  return {
      {"firstSync", {mapVlan(10, "A"), mapVlan(20, "A"), mapVlan(30, "B")}, {}, true},
      {"vlanMoves", {mapVlan(10, "A"), mapVlan(20, "A"), mapVlan(30, "B")}, {mapVlan(10, "B")}},
      {"topologyIsRebuilt", {mapVlan(10, "A"), mapVlan(30, "B")}, {remakeTopo("A")}},
      {"orphanWithThreeVlans", {mapVlan(10, "A"), mapVlan(20, "A"), mapVlan(30, "A")}, {remakeTopo("A")}},
      {"orphanByItsStatus", {mapVlan(10, "A"), mapVlan(20, "A"), mapVlan(30, "A")}, {remakeStatus("A")}},
      {"topologyGoes", {mapVlan(10, "A"), mapVlan(20, "A"), mapVlan(30, "A")}, {deleteStatus("A")}},
      {"portBurst", {mapVlan(10, "A"), mapVlan(20, "B")}, burst},
      {"portByPort",
       {mapVlan(10, "A"), mapVlan(20, "A")},
       {removePort(10, "Ethernet2"), addPort(10, "Ethernet3", 3), addPort(10, "Ethernet1", 1)}},
      {"floodsetIsSet", {mapVlan(10, "A"), mapVlan(20, "B"), mapVlan(40, "A")}, {expandVlan(20, 40), remakeVlan(10)}},
      {"floodsetChanges",
       {mapVlan(10, "A"), mapVlan(20, "B"), mapVlan(30, "C"), expandVlan(20, 30)},
       {expandVlan(20, 10), remakeVlan(10), mapVlan(20, "A")}},
  };
}

}  // namespace Test
