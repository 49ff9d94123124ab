// A library whose backlog is worked off slice by slice, as the test says.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "tests/topolib/Agent.h"
#include "topolib/TopoLibCodef.h"

namespace Test {

inline const std::vector<std::string> threePorts{"Ethernet1", "Ethernet2", "Ethernet3"};

/// VLAN 10 of topology A and topology B; the runs are the test's.
class BacklogSlice : public testing::Test {
 protected:
  BacklogSlice() {
    agent.topoIs("A");
    agent.topoIs("B");
    agent.vlanIs(10, "A");
    agent.brConfig->vlanConfigIs(10);
  }

  void start() {
    agent.startLibrary();
    agent.drain();
  }
  /// With three members of VLAN 10, everything processed.
  void startWithThreePorts() {
    start();
    membersAre(threePorts);
    agent.drain();
  }
  Topology::Library::TopoLibCodef& codef() { return *agent.libSm->topoLibCodef(); }
  Topology::Library::DirtyVlanDir& directory() { return *agent.libSm->dirtyVlanDir(); }
  const Topology::Library::TopoToVlanMap& registered() { return *agent.libSm->topoToVlanMap(); }
  std::size_t run() { return Mox::activityManager()->dispatch(); }
  void membersAre(const std::vector<std::string>& intfs, unsigned vid = 10) {
    for (const std::string& intf : intfs) agent.memberIs(vid, intf);
  }
  /// From now on each slice is used up by its first item.
  void oneItemASlice() { codef().backlogQuantumIs(0.0); }
  [[nodiscard]] std::size_t portsCarrying(const std::string& topo, unsigned vid = 10) const {
    std::size_t count = 0;
    for (const auto& [intf, port] : std::as_const(*agent.state).topo(topo)->port()) {
      if (port.vlanPortConfig(vid) != nullptr) ++count;
    }
    return count;
  }

  Agent agent;
};

}  // namespace Test
