// A scenario to begin with, and how scenarios with expectations are run.

#pragma once

#include <string>
#include <vector>

#include "tests/topo/Run.h"

namespace Test {

/// A topology of two ports in one VLAN, with everything there that a port needs to be active.
inline const std::string bridge =
    "interface Ethernet1-2 link up model bridged\nvlan 10\nvlan 10 port Ethernet1-2\n"
    "topology A number 1\ntopology A port Ethernet1-2 state forwarding\nmap 10 A\n"
    "instance A number 1\ninstance A port Ethernet1-2\nstatus A\nstatus A port Ethernet1-2\n";

/// Runs a scenario whose expectations must all hold.
inline void holds(const std::string& scenario, const std::vector<std::string>& options = {}) {
  const Outcome outcome = runScenario(scenario, options);
  EXPECT_EQ(outcome.status, 0) << outcome.err << "in\n" << scenario;
}

}  // namespace Test
