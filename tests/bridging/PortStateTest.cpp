#include "bridging/PortState.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/Enumeration.h"

namespace Bridging::Topology::PortStateTest {

struct PortStates {
  using Instance = PortStateInstance;
  static inline const std::string type = "PortState";
  static inline const std::vector<std::pair<PortState, std::string>> values{{PortState::disabled, "disabled"},
                                                                            {PortState::blocking, "blocking"},
                                                                            {PortState::learning, "learning"},
                                                                            {PortState::forwarding, "forwarding"}};
  static inline const std::vector<std::string> unknown{"listening",   "",        "Forwarding", "forwarding ",
                                                       " forwarding", "forward", "3"};
};

TEST(PortState, zeroValueIsDisabled) { EXPECT_EQ(PortState(), PortState::disabled); }

}  // namespace Bridging::Topology::PortStateTest

namespace Test {
INSTANTIATE_TYPED_TEST_SUITE_P(PortState, Enumeration, Bridging::Topology::PortStateTest::PortStates);
}  // namespace Test
