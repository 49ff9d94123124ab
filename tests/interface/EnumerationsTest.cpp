// The enumerations of interface status.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "interface/EthIntfStatus.h"
#include "tests/support/Enumeration.h"

namespace Interface::EnumerationsTest {

const std::vector<std::string> unknownNames{"", "Up", "up ", " up", "Routed", "bridge", "0", "x"};

struct LinkStates {
  using Instance = Mox::EnumInstance<LinkStatus>;
  static inline const std::string type = "LinkStatus";
  static inline const std::vector<std::pair<LinkStatus, std::string>> values{
      {LinkStatus::unknown, "unknown"}, {LinkStatus::down, "down"}, {LinkStatus::up, "up"}};
  static inline const std::vector<std::string>& unknown = unknownNames;
};

struct ForwardingModels {
  using Instance = Mox::EnumInstance<ForwardingModel>;
  static inline const std::string type = "ForwardingModel";
  static inline const std::vector<std::pair<ForwardingModel, std::string>> values{
      {ForwardingModel::unspecified, "unspecified"}, {ForwardingModel::dropped, "dropped"},
      {ForwardingModel::routed, "routed"},           {ForwardingModel::mirrored, "mirrored"},
      {ForwardingModel::bridged, "bridged"},         {ForwardingModel::tunneled, "tunneled"}};
  static inline const std::vector<std::string>& unknown = unknownNames;
};

}  // namespace Interface::EnumerationsTest

namespace Test {
INSTANTIATE_TYPED_TEST_SUITE_P(LinkStatus, Enumeration, Interface::EnumerationsTest::LinkStates);
INSTANTIATE_TYPED_TEST_SUITE_P(ForwardingModel, Enumeration, Interface::EnumerationsTest::ForwardingModels);
}  // namespace Test
