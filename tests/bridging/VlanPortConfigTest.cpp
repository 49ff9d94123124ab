#include "bridging/VlanPortConfig.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/Enumeration.h"

namespace Bridging::VlanPortConfigTest {

struct Directions {
  using Instance = AllowedTrafficDirectionInstance;
  static inline const std::string type = "AllowedTrafficDirection";
  static inline const std::vector<std::pair<AllowedTrafficDirection, std::string>> values{
      {AllowedTrafficDirection::both, "both"},
      {AllowedTrafficDirection::ingress, "ingress"},
      {AllowedTrafficDirection::egress, "egress"},
      {AllowedTrafficDirection::none, "none"}};
  static inline const std::vector<std::string> unknown{"", "Both", "both ", "ingress,egress", "0"};
};

TEST(VlanPortConfig, isBothWaysTaggedAndNotThePvidByDefault) {
  const VlanPortConfig config;
  EXPECT_EQ(config.allowedTrafficDirection(), AllowedTrafficDirection::both);
  EXPECT_FALSE(config.untagged());
  EXPECT_FALSE(config.pvid());
}

TEST(VlanPortConfig, isBuiltFromItsParts) {
  const VlanPortConfig config(AllowedTrafficDirection::egress, true, true);
  EXPECT_EQ(config.allowedTrafficDirection(), AllowedTrafficDirection::egress);
  EXPECT_TRUE(config.untagged());
  EXPECT_TRUE(config.pvid());
  EXPECT_EQ(VlanPortConfig(AllowedTrafficDirection::both), VlanPortConfig());
  EXPECT_EQ(VlanPortConfig(AllowedTrafficDirection::ingress, true),
            VlanPortConfig(AllowedTrafficDirection::ingress, true, false));
}

TEST(VlanPortConfig, eachPartIsWrittenAlone) {
  VlanPortConfig config;
  config.allowedTrafficDirectionIs(AllowedTrafficDirection::ingress);
  EXPECT_EQ(config, VlanPortConfig(AllowedTrafficDirection::ingress, false, false));
  config.untaggedIs(true);
  EXPECT_EQ(config, VlanPortConfig(AllowedTrafficDirection::ingress, true, false));
  config.pvidIs(true);
  EXPECT_EQ(config, VlanPortConfig(AllowedTrafficDirection::ingress, true, true));
  config.untaggedIs(false);
  EXPECT_EQ(config, VlanPortConfig(AllowedTrafficDirection::ingress, false, true));
}

TEST(VlanPortConfig, isEqualExactlyWhenEveryPartIs) {
  std::vector<VlanPortConfig> all;
  for (const auto& [direction, name] : Directions::values) {
    for (const bool untagged : {false, true}) {
      for (const bool pvid : {false, true}) all.emplace_back(direction, untagged, pvid);
    }
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t j = 0; j < all.size(); ++j) EXPECT_EQ(all[i] == all[j], i == j) << i << ' ' << j;
  }
}

TEST(VlanPortConfig, isCopied) {
  const VlanPortConfig original(AllowedTrafficDirection::none, true, true);
  VlanPortConfig copy = original;
  EXPECT_EQ(copy, original);
  copy.pvidIs(false);
  EXPECT_NE(copy, original);
  EXPECT_TRUE(original.pvid());
}

}  // namespace Bridging::VlanPortConfigTest

namespace Test {
INSTANTIATE_TYPED_TEST_SUITE_P(AllowedTrafficDirection, Enumeration, Bridging::VlanPortConfigTest::Directions);
}  // namespace Test
