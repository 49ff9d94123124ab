#include <gtest/gtest.h>

#include "tests/topolib/Agent.h"

namespace Topology::Library {
namespace {

using Test::Agent;

TEST(LibSm, publishesAPortFromEndToEnd) {
  Agent agent;
  agent.topoIs("A");
  agent.topoPortIs("A", "Ethernet1");
  agent.linkIs("Ethernet1");
  agent.vlanIs(10, "A");
  agent.memberIs(10, "Ethernet1");
  agent.startLibrary();
  agent.drain();
  ASSERT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  EXPECT_EQ(agent.port("A", "Ethernet1")->state(), Bridging::Topology::PortState::forwarding);
}

}  // namespace
}  // namespace Topology::Library
