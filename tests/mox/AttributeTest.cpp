#include "mox/Attribute.h"

#include <gtest/gtest.h>

#include "mox/String.h"

namespace Mox::AttributeTest {

constexpr ScalarAttribute litAttr{0, "lit"};
constexpr ScalarAttribute wattAttr{1, "watt"};
constexpr CollectionAttribute<String> bulbAttr{2, "bulb"};
constexpr CollectionAttribute<int> floorAttr{3, "floor"};

TEST(ScalarAttribute, knowsItsNumberAndName) {
  EXPECT_EQ(wattAttr.id(), 1U);
  EXPECT_STREQ(wattAttr.name(), "watt");
  EXPECT_FALSE(ScalarAttribute::isCollection);
}

TEST(ScalarAttribute, recognisesItsNotifications) {
  EXPECT_TRUE(litAttr.is(0));
  EXPECT_FALSE(litAttr.is(1));
  EXPECT_FALSE(wattAttr.is(0));
  static_assert(litAttr.is(0));
}

TEST(CollectionAttribute, knowsItsNumberAndName) {
  EXPECT_EQ(bulbAttr.id(), 2U);
  EXPECT_STREQ(bulbAttr.name(), "bulb");
  EXPECT_TRUE(CollectionAttribute<String>::isCollection);
}

TEST(CollectionAttribute, givesKeyOfItsNotifications) {
  const String socket = "left";
  const int floor = 4;
  EXPECT_EQ(bulbAttr.keyOf(2, &socket), &socket);
  EXPECT_EQ(floorAttr.keyOf(3, &floor), &floor);
}

TEST(CollectionAttribute, givesNullForOtherAttributes) {
  const int floor = 4;
  EXPECT_EQ(bulbAttr.keyOf(3, &floor), nullptr);
  EXPECT_EQ(bulbAttr.keyOf(0, nullptr), nullptr);
}

TEST(CollectionAttribute, givesNullWithoutKey) { EXPECT_EQ(bulbAttr.keyOf(2, nullptr), nullptr); }

}  // namespace Mox::AttributeTest
