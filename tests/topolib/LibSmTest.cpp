#include <gtest/gtest.h>

#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmTest {

using Test::Running;
using Test::Start;

TEST(LibSm, publishesAPortFromEndToEnd) {
  const Running agent{Start{}};
  ASSERT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  EXPECT_EQ(agent.port("A", "Ethernet1")->state(), Bridging::Topology::PortState::forwarding);
}

}  // namespace Topology::Library::LibSmTest
