// Readers of LibState that change the inputs from inside its notifications: the outcome is that of the inputs.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "tests/topolib/Agent.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::ReentrancyTest {

using Bridging::AllowedTrafficDirection;
using Bridging::VlanPortConfig;
using Bridging::Topology::PortState;
using Test::Agent;
using Test::StateLog;

const VlanPortConfig ingress{AllowedTrafficDirection::ingress};

/// With deferral and without.
class Reentrancy : public testing::TestWithParam<bool> {
 protected:
  Reentrancy() {
    agent.start.deferProcessing = GetParam();
    for (const char* const topo : {"A", "B"}) {
      agent.topoIs(topo);
      for (const char* const intf : {"Ethernet1", "Ethernet2"}) agent.topoPortIs(topo, intf);
    }
    for (const char* const intf : {"Ethernet1", "Ethernet2"}) agent.linkIs(intf);
    agent.vlanIs(10, "A");
    agent.vlanIs(20, "B");
    agent.brConfig->vlanConfigIs(10);
    agent.brConfig->vlanConfigIs(20);
    agent.startLibrary();
    agent.drain();
  }

  void replacePortConfig(const std::string& topo, const std::string& intf, PortState portState) {
    agent.config->topoConfig(topo)->topoPortConfigDel(intf);
    agent.config->topoConfig(topo)->topoPortConfigIs(intf, 0, portState);
  }

  Agent agent;
};

TEST_P(Reentrancy, portConfigurationReplacedInsideItsOwnActive) {
  StateLog log(agent.state);
  log.onceAt("A/Ethernet1 active", [this] { replacePortConfig("A", "Ethernet1", PortState::learning); });
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  ASSERT_NE(agent.port("A", "Ethernet1"), nullptr);
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  EXPECT_EQ(agent.port("A", "Ethernet1")->state(), PortState::learning);
  EXPECT_EQ(agent.libSm->topoConfigSm("A")->topoPortConfigSm("Ethernet1")->topoPortConfig(),
            agent.config->topoConfig("A")->topoPortConfig("Ethernet1"));
}

TEST_P(Reentrancy, portConfigurationReplacedInsideAChangeOfState) {
  agent.memberIs(10, "Ethernet1");
  agent.drain();
  StateLog log(agent.state);
  log.onceAt("A/Ethernet1 state blocking", [this] { replacePortConfig("A", "Ethernet1", PortState::learning); });
  agent.config->topoConfig("A")->topoPortConfig("Ethernet1")->portStateIs(PortState::blocking);
  agent.drain();
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  EXPECT_EQ(agent.port("A", "Ethernet1")->state(), PortState::learning);
}

TEST_P(Reentrancy, portThatWasInheritedIsAnnouncedWithItsOwnEntry) {
  agent.memberIs(10, "Ethernet1");
  agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(10);
  agent.drain();
  ASSERT_TRUE(agent.carries("B", "Ethernet1", 20));
  EXPECT_FALSE(agent.port("B", "Ethernet1")->active());
  agent.memberIs(20, "Ethernet1", ingress);
  agent.drain();
  EXPECT_TRUE(agent.port("B", "Ethernet1")->active());
}

TEST_P(Reentrancy, vlanMovedAndExpandedInsideTheEndOfAnExpansion) {
  agent.brConfig->vlanConfigIs(30);
  agent.vlanIs(30, "A");
  agent.memberIs(10, "Ethernet1");
  agent.memberIs(30, "Ethernet2");
  agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(10);
  agent.drain();
  ASSERT_TRUE(agent.carries("B", "Ethernet1", 20));
  StateLog log(agent.state);
  log.onceAt("-B/Ethernet1", [this] {
    agent.vlanIs(20, "A");
    agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(30);
  });
  agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(0);
  agent.drain();
  EXPECT_EQ(agent.port("B", "Ethernet1"), nullptr);
  EXPECT_FALSE(agent.carries("A", "Ethernet1", 20));
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 20));
}

TEST_P(Reentrancy, vlanOfAFailedRunIsServedWithItsNextChange) {
  StateLog log(agent.state);
  log.onceAt("+A/Ethernet1", [] { throw std::runtime_error("reader"); });
  try {
    agent.memberIs(10, "Ethernet1");
    agent.drain();
    ADD_FAILURE() << "no exception";
  } catch (const std::runtime_error&) {
  }
  agent.memberIs(10, "Ethernet2");
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 10));
}

TEST_P(Reentrancy, portOfADroppedExpansionIsAnnouncedWithAnOwnEntry) {
  for (const auto& [gone, stays] : {std::pair(20U, 30U), std::pair(30U, 20U)}) {
    SCOPED_TRACE(gone);
    Agent other(agent.start);
    for (const char* const topo : {"A", "B"}) {
      other.topoIs(topo);
      other.topoPortIs(topo, "Ethernet1");
    }
    other.linkIs("Ethernet1");
    other.vlanIs(10, "A");
    other.vlanIs(20, "B");
    other.vlanIs(30, "B");
    other.memberIs(10, "Ethernet1");
    other.brConfig->vlanConfigIs(gone)->floodsetExpandedVlanIs(10);
    other.brConfig->vlanConfigIs(stays);
    other.startLibrary();
    other.drain();
    ASSERT_TRUE(other.carries("B", "Ethernet1", gone));
    other.brConfig->vlanConfigDel(gone);
    other.config->vidToTopoMapDel(gone);
    other.memberIs(stays, "Ethernet1");
    other.drain();
    EXPECT_FALSE(other.carries("B", "Ethernet1", gone));
    EXPECT_TRUE(other.port("B", "Ethernet1")->active());
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, Reentrancy, testing::Bool(),
                         [](const auto& mode) { return mode.param ? "deferred" : "immediate"; });

}  // namespace Topology::Library::ReentrancyTest
