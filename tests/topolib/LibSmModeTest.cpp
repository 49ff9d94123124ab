#include "topolib/LibSmMode.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/Enumeration.h"

namespace Topology::Library::LibSmModeTest {

struct Modes {
  using Instance = LibSmModeInstance;
  static inline const std::string type = "LibSmMode";
  static inline const std::vector<std::pair<LibSmMode, std::string>> values{{LibSmMode::createStatus, "createStatus"},
                                                                            {LibSmMode::notifyStatus, "notifyStatus"}};
  static inline const std::vector<std::string> unknown{"", "NotifyStatus", "notify", "notifyStatus ", "1"};
};

}  // namespace Topology::Library::LibSmModeTest

namespace Test {
INSTANTIATE_TYPED_TEST_SUITE_P(LibSmMode, Enumeration, Topology::Library::LibSmModeTest::Modes);
}  // namespace Test
