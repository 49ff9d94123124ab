#include "bridging/VlanPortConfig.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace Bridging {
namespace {

struct Row {
  std::uint32_t number;
  AllowedTrafficDirection direction;
  std::string name;
};
const std::vector<Row> rows{{0, AllowedTrafficDirection::both, "both"},
                            {1, AllowedTrafficDirection::ingress, "ingress"},
                            {2, AllowedTrafficDirection::egress, "egress"},
                            {3, AllowedTrafficDirection::none, "none"}};

/// The text of the RangeException that the function raises.
template <class Function>
std::string rangeError(Function function) {
  try {
    function();
  } catch (const Mox::RangeException& e) {
    return e.what();
  }
  return "no exception";
}

TEST(AllowedTrafficDirection, hasItsNumbersAndNoOthers) {
  for (const auto& [number, direction, name] : rows) EXPECT_EQ(static_cast<std::uint32_t>(direction), number);
  EXPECT_EQ(moxEnumValues(AllowedTrafficDirection()).size(), rows.size());
}

TEST(AllowedTrafficDirection, isWrittenAsItsName) {
  for (const auto& [number, direction, name] : rows) {
    std::ostringstream out;
    out << direction;
    EXPECT_EQ(out.str(), name);
    EXPECT_EQ(stringValue(direction), name);
    EXPECT_EQ(valueToStrep(direction), name);
  }
}

TEST(AllowedTrafficDirection, isParsedFromItsName) {
  for (const auto& [number, direction, name] : rows) {
    EXPECT_EQ(Mox::EnumType<AllowedTrafficDirection>::sequenceToValue(name), direction);
    EXPECT_EQ(AllowedTrafficDirectionInstance(name).value(), direction);
  }
}

TEST(AllowedTrafficDirection, isChosenByItsNumber) {
  for (const auto& [number, direction, name] : rows) {
    const AllowedTrafficDirection chosen = AllowedTrafficDirectionInstance(number);
    EXPECT_EQ(chosen, direction);
  }
}

TEST(AllowedTrafficDirection, ofUnknownNameRaisesRangeException) {
  for (const std::string name : {"", "Both", "both ", "ingress,egress", "0"}) {
    EXPECT_EQ(rangeError([&] { return AllowedTrafficDirectionInstance(name); }),
              "AllowedTrafficDirection::value " + name + " not allowed");
  }
}

TEST(AllowedTrafficDirection, ofUnknownNumberRaisesRangeException) {
  EXPECT_EQ(rangeError([] { return AllowedTrafficDirectionInstance(4); }),
            "AllowedTrafficDirection::value 4 not allowed");
}

TEST(AllowedTrafficDirection, ofUnknownNumberIsWrittenAsTheNumber) {
  EXPECT_EQ(stringValue(static_cast<AllowedTrafficDirection>(4)), "4");
}

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
  for (const auto& [number, direction, name] : rows) {
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

}  // namespace
}  // namespace Bridging
