#include "bridging/VlanId.h"

#include <gtest/gtest.h>

#include <compare>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "mox/Collection.h"
#include "tests/support/RangeError.h"

namespace Bridging::VlanIdTest {

using Test::rangeErrorOf;

constexpr const char* notAVlan = "VlanId::value < 1 or > 4094 not allowed";
constexpr const char* notAVlanOrNone = "VlanIdOrNone::value > 4094 not allowed";

template <class T>
std::string printed(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

static_assert(sizeof(VlanId) == sizeof(std::uint16_t) && sizeof(VlanIdOrNone) == sizeof(std::uint16_t));
static_assert(VlanId(10).value() == 10 && VlanIdOrNone(0).isNone());
static_assert(!std::is_default_constructible_v<VlanId>);
// Truth values, characters and fractions are no VLANs.
static_assert(!std::is_constructible_v<VlanId, bool> && !std::is_constructible_v<VlanId, char>);
static_assert(!std::is_constructible_v<VlanId, double> && !std::is_constructible_v<VlanIdOrNone, bool>);
// A VLAN is a VLAN or none, the reverse must be asked for.
static_assert(std::is_convertible_v<VlanId, VlanIdOrNone> && !std::is_convertible_v<VlanIdOrNone, VlanId>);
static_assert(std::is_convertible_v<int, VlanId> && std::is_convertible_v<int, VlanIdOrNone>);

TEST(VlanId, isAnyNumberFrom1To4094) {
  for (int number = 1; number <= 4094; ++number) EXPECT_EQ(VlanId(number).value(), number);
  EXPECT_EQ(VlanId::min, 1);
  EXPECT_EQ(VlanId::max, 4094);
}

TEST(VlanId, ofNumberOutOfRangeRaisesRangeException) {
  for (const int number : {0, 4095, 4096, -1, -4094, 65535}) {
    EXPECT_EQ(rangeErrorOf([&] { return VlanId(number); }), notAVlan) << number;
  }
}

TEST(VlanIdOrNone, isAnyNumberFrom0To4094) {
  for (int number = 0; number <= 4094; ++number) EXPECT_EQ(VlanIdOrNone(number).value(), number);
}

TEST(VlanIdOrNone, ofNumberOutOfRangeRaisesRangeException) {
  for (const int number : {4095, 4096, -1, -4094, 65535}) {
    EXPECT_EQ(rangeErrorOf([&] { return VlanIdOrNone(number); }), notAVlanOrNone) << number;
  }
}

template <class Number>
class VlanIdFrom : public testing::Test {};

using Numbers = testing::Types<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
                               std::int64_t, std::uint64_t>;
TYPED_TEST_SUITE(VlanIdFrom, Numbers);

/// Those of some numbers that the type can hold. 65546 and 4294967306 are 10 in their lower 16 bits.
template <class Number>
std::vector<Number> numbersOf() {
  std::vector<Number> numbers{std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max(), 0, 1, 2, 100};
  for (const std::int64_t n : {-1L, -10L, -65526L, 4094L, 4095L, 65535L, 65536L, 65546L, 4'294'967'306L}) {
    if (std::in_range<Number>(n)) numbers.push_back(static_cast<Number>(n));
  }
  return numbers;
}

TYPED_TEST(VlanIdFrom, everyNumberOfTheTypeIsCheckedWhole) {
  for (const TypeParam number : numbersOf<TypeParam>()) {
    const bool isVlan = std::cmp_greater_equal(number, 1) && std::cmp_less_equal(number, 4094);
    if (isVlan) {
      EXPECT_EQ(VlanId(number).value(), static_cast<std::uint16_t>(number));
      EXPECT_EQ(VlanIdOrNone(number).value(), static_cast<std::uint16_t>(number));
    } else {
      EXPECT_EQ(rangeErrorOf([&] { return VlanId(number); }), notAVlan) << +number;
    }
    if (!isVlan && number != 0) {
      EXPECT_EQ(rangeErrorOf([&] { return VlanIdOrNone(number); }), notAVlanOrNone) << +number;
    }
  }
}

TEST(VlanIdOrNone, isNoneByDefault) {
  EXPECT_TRUE(VlanIdOrNone().isNone());
  EXPECT_EQ(VlanIdOrNone().value(), 0);
  EXPECT_EQ(VlanIdOrNone(), VlanIdOrNone(0));
}

TEST(VlanIdOrNone, ofAVlanIsNotNone) {
  EXPECT_FALSE(VlanIdOrNone(1).isNone());
  EXPECT_FALSE(VlanIdOrNone(VlanId(4094)).isNone());
  EXPECT_EQ(VlanIdOrNone(VlanId(4094)).value(), 4094);
}

TEST(VlanId, ofVlanIdOrNoneIsItsVlan) { EXPECT_EQ(VlanId(VlanIdOrNone(10)), VlanId(10)); }

TEST(VlanId, ofNoneRaisesRangeException) {
  EXPECT_EQ(rangeErrorOf([] { return VlanId(VlanIdOrNone()); }), notAVlan);
}

TEST(VlanId, assignmentOfBadNumberKeepsTheValue) {
  VlanId vid = 10;
  EXPECT_THROW(vid = 4095, Mox::RangeException);
  EXPECT_EQ(vid, VlanId(10));
}

TEST(VlanId, comparesByNumber) {
  for (const int a : {1, 2, 9, 10, 255, 256, 4094}) {
    for (const int b : {1, 2, 9, 10, 255, 256, 4094}) {
      EXPECT_EQ(VlanId(a) <=> VlanId(b), a <=> b) << a << ' ' << b;
      EXPECT_EQ(VlanIdOrNone(a) <=> VlanIdOrNone(b), a <=> b) << a << ' ' << b;
      EXPECT_EQ(VlanIdOrNone(a) == VlanId(b), a == b) << a << ' ' << b;
      EXPECT_EQ(Mox::keyLessThan(VlanId(a), VlanId(b)), a < b) << a << ' ' << b;
    }
  }
}

TEST(VlanIdOrNone, noneIsBeforeEveryVlan) {
  EXPECT_LT(VlanIdOrNone(), VlanIdOrNone(1));
  EXPECT_NE(VlanIdOrNone(), VlanId(1));
}

TEST(VlanId, comparesWithNumbers) {
  EXPECT_TRUE(VlanId(10) == 10);
  EXPECT_TRUE(VlanId(10) < 11);
}

TEST(VlanId, printsAsItsNumber) {
  EXPECT_EQ(printed(VlanId(1)), "1");
  EXPECT_EQ(printed(VlanId(4094)), "4094");
  EXPECT_EQ(printed(VlanIdOrNone(4094)), "4094");
  EXPECT_EQ(printed(VlanIdOrNone()), "0");
}

TEST(VlanId, parsesEveryNumberThatItPrints) {
  for (int number = 1; number <= 4094; ++number) {
    EXPECT_EQ(VlanId::sequenceToValue(std::to_string(number)), VlanId(number));
    EXPECT_EQ(VlanIdOrNone::sequenceToValue(std::to_string(number)), VlanIdOrNone(number));
  }
  EXPECT_TRUE(VlanIdOrNone::sequenceToValue("0").isNone());
}

TEST(VlanId, parsesExactlyTheGivenPartOfAText) {
  const std::string_view text = "123456";
  EXPECT_EQ(VlanId::sequenceToValue(text.substr(1, 2)), VlanId(23));
}

/// Texts that are no VLAN, nor none.
const std::vector<std::string> badTexts{"",
                                        "abc",
                                        "10x",
                                        "x10",
                                        " 10",
                                        "10 ",
                                        "1 0",
                                        "+10",
                                        "-1",
                                        "-10",
                                        "--10",
                                        "1.0",
                                        "10.",
                                        "1e3",
                                        "0x10",
                                        "0b1",
                                        "1,000",
                                        "1'000",
                                        "4095",
                                        "65535",
                                        "65546",
                                        "4294967306",
                                        "10\n",
                                        "\t10",
                                        "ten",
                                        "10,11",
                                        "10-11",
                                        "none",
                                        "-",
                                        "+",
                                        "NaN",
                                        "4294967295",
                                        "18446744073709551616",
                                        "18446744073709551626",
                                        "-18446744073709551606",
                                        "99999999999999999999",
                                        std::string("10\0", 3),
                                        std::string(1, '\0')};

TEST(VlanId, parseOfBadTextRaisesRangeException) {
  for (const std::string& text : badTexts) {
    EXPECT_EQ(rangeErrorOf([&] { return VlanId::sequenceToValue(text); }), notAVlan) << '"' << text << '"';
  }
  EXPECT_EQ(rangeErrorOf([] { return VlanId::sequenceToValue("0"); }), notAVlan);
}

TEST(VlanIdOrNone, parseOfBadTextRaisesRangeException) {
  for (const std::string& text : badTexts) {
    EXPECT_EQ(rangeErrorOf([&] { return VlanIdOrNone::sequenceToValue(text); }), notAVlanOrNone) << '"' << text << '"';
  }
}

TEST(VlanId, isKeyOfCollections) {
  Mox::ValueCollection<VlanId, int> collection;
  for (const int number : {4094, 1, 10, 9}) collection.insertOrAssign(number, number);
  EXPECT_EQ(*collection.find(4094), 4094);
  EXPECT_FALSE(collection.has(2));
  std::vector<int> order;
  for (const auto& [vid, number] : collection) {
    EXPECT_EQ(vid, VlanId(number));
    order.push_back(number);
  }
  EXPECT_EQ(order, (std::vector{1, 9, 10, 4094}));
}

TEST(VlanId, isKeyOfCollectionsWithASeedOfTheirOwn) {
  Mox::ValueCollection<VlanId, int, Mox::FixedSeed<1>> collection;
  for (int number = 1; number <= 4094; ++number) collection.insertOrAssign(number, number);
  std::map<int, VlanId> visited;
  for (const auto& [vid, number] : collection) visited.emplace(number, vid);
  ASSERT_EQ(visited.size(), 4094U);
  for (const auto& [number, vid] : visited) EXPECT_EQ(vid, VlanId(number));
}

TEST(VlanId, isKeyOfStandardContainers) {
  const std::unordered_set<VlanId> set{1, 10, 10, 4094};
  EXPECT_EQ(set.size(), 3U);
  EXPECT_TRUE(set.contains(4094));
}

}  // namespace Bridging::VlanIdTest
