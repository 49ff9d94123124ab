// How maps treat their values: each is made once and ended once, moved as its type demands, and ends when the map is in
// order.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "tests/support/MapKinds.h"
#include "tests/support/MapValues.h"

namespace Mox::MapValuesTest {

using Test::Farewell;
using Test::Numbered;
using Test::SelfPointing;
using Test::Triple;

template <class Kind>
class MapValues : public Test::MapSuite<Kind> {
 protected:
  using SelfPointingMap = typename Kind::template Map<SelfPointing>;
  using FarewellMap = typename Kind::template Map<Farewell>;

  void SetUp() override {
    SelfPointing::living = 0;
    SelfPointing::misplaced = 0;
    Numbered::living = 0;
  }
  void TearDown() override {
    EXPECT_EQ(SelfPointing::living, 0);
    EXPECT_EQ(SelfPointing::misplaced, 0U);
    EXPECT_EQ(Numbered::living, 0);
  }
};
TYPED_TEST_SUITE(MapValues, Test::MapKinds, Test::MapKindNames);

TYPED_TEST(MapValues, selfPointingValuesStayWholeWhileMapGrowsAndShrinks) {
  typename TestFixture::SelfPointingMap map;
  for (std::size_t i = 0; i < this->members; ++i) {
    map.insert(this->key(i), SelfPointing(i));
    ASSERT_EQ(SelfPointing::living, static_cast<std::int64_t>(i + 1));
  }
  for (std::size_t i = 0; i < this->members; ++i) ASSERT_EQ(map.find(this->key(i))->number(), i);
  for (std::size_t i = 0; i < this->members; ++i) {
    map.erase(this->key(i));
    ASSERT_EQ(SelfPointing::living, static_cast<std::int64_t>(map.size()));
    for (std::size_t n = i + 1; n < this->members; n += 7) ASSERT_EQ(map.find(this->key(n))->number(), n);
  }
}

TYPED_TEST(MapValues, valuesEndWithMap) {
  {
    typename TestFixture::SelfPointingMap map;
    this->fill(map);
  }
  EXPECT_EQ(SelfPointing::living, 0);
}

TYPED_TEST(MapValues, valuesEndWithClear) {
  typename TestFixture::SelfPointingMap map;
  this->fill(map);
  map.clear();
  EXPECT_EQ(SelfPointing::living, 0);
}

TYPED_TEST(MapValues, valueInsertedUnderPresentKeyEndsAlone) {
  typename TestFixture::SelfPointingMap map;
  this->fill(map);
  map.insert(this->key(1), SelfPointing(99));
  EXPECT_EQ(SelfPointing::living, static_cast<std::int64_t>(this->members));
  EXPECT_EQ(map.find(this->key(1))->number(), 1U);
}

TYPED_TEST(MapValues, takenValueLivesOnOutsideMap) {
  typename TestFixture::SelfPointingMap map;
  this->fill(map);
  {
    const std::optional<SelfPointing> taken = map.take(this->key(1));
    map.clear();
    ASSERT_TRUE(taken.has_value());
    EXPECT_EQ(taken->number(), 1U);
    EXPECT_EQ(SelfPointing::living, 1);
  }
  EXPECT_EQ(SelfPointing::living, 0);
}

TYPED_TEST(MapValues, moveOnlyValuesAreAccepted) {
  typename TypeParam::template Map<std::unique_ptr<std::size_t>> map;
  for (std::size_t i = 0; i < this->members; ++i) map.insert(this->key(i), std::make_unique<std::size_t>(i));
  for (std::size_t i = 0; i < this->members; ++i) ASSERT_EQ(**map.find(this->key(i)), i);
}

TYPED_TEST(MapValues, pointersKeepTheirObjectsAsLongAsTheyAreMembers) {
  typename TypeParam::template Map<Ptr<Numbered>> map;
  this->fill(map);
  EXPECT_EQ(Numbered::living, static_cast<std::int64_t>(this->members));
  const Ptr<Numbered> kept = *map.find(this->key(2));
  EXPECT_EQ(kept->references(), 2U);
  map.erase(this->key(1));
  map.erase(this->key(2));
  EXPECT_EQ(Numbered::living, static_cast<std::int64_t>(this->members - 1));
  EXPECT_EQ(kept->references(), 1U);
  map.clear();
  EXPECT_EQ(Numbered::living, 1);
}

TYPED_TEST(MapValues, textsAreSharedNotCopied) {
  typename TypeParam::template Map<String> map;
  this->fill(map);
  const String text = "a text";
  map.insert(this->key(this->members), text);
  EXPECT_EQ(map.find(this->key(this->members))->c_str(), text.c_str());
  for (std::size_t i = 0; i < this->members; ++i) ASSERT_EQ(*map.find(this->key(i)), std::to_string(i));
}

TYPED_TEST(MapValues, twelveByteValuesStayAsTheyAre) {
  typename TypeParam::template Map<Triple> map;
  for (std::uint32_t i = 0; i < this->members; ++i) map.insert(this->key(i), {i, i * 3, i * 5});
  for (std::uint32_t i = 0; i < this->members; i += 2) map.erase(this->key(i));
  for (std::uint32_t i = 1; i < this->members; i += 2) {
    ASSERT_EQ(*map.find(this->key(i)), (Triple{i, i * 3, i * 5}));
  }
}

TYPED_TEST(MapValues, singleBytesStayAsTheyAre) {
  typename TypeParam::template Map<std::uint8_t> map;
  for (std::size_t i = 0; i < this->members; ++i) map.insert(this->key(i), static_cast<std::uint8_t>(i));
  for (std::size_t i = 0; i < this->members; i += 2) map.erase(this->key(i));
  for (std::size_t i = 1; i < this->members; i += 2) {
    ASSERT_EQ(*map.find(this->key(i)), static_cast<std::uint8_t>(i));
  }
}

TYPED_TEST(MapValues, removedValueEndsAfterItsMember) {
  typename TestFixture::FarewellMap map;
  int farewells = 0;
  for (std::size_t i = 0; i < this->members; ++i) {
    map.insert(this->key(i), Farewell([this, &map, &farewells, i] {
                 ++farewells;
                 EXPECT_EQ(map.find(this->key(i)), nullptr);
                 EXPECT_EQ(map.size(), this->members - i - 1);
                 EXPECT_EQ(this->keysOf(map).size(), map.size());
               }));
  }
  for (std::size_t i = 0; i < this->members; ++i) {
    EXPECT_TRUE(map.erase(this->key(i)));
    ASSERT_EQ(farewells, static_cast<int>(i + 1));
  }
}

TYPED_TEST(MapValues, removedValueMayInsertAtItsEnd) {
  typename TestFixture::FarewellMap map;
  for (std::size_t i = 0; i < this->members; ++i) {
    map.insert(this->key(i), Farewell([this, &map, i] { map.insert(this->key(i), Farewell()); }));
  }
  for (std::size_t i = 0; i < this->members; ++i) {
    EXPECT_TRUE(map.erase(this->key(i)));
    ASSERT_NE(map.find(this->key(i)), nullptr);
  }
  EXPECT_EQ(map.size(), this->members);
  EXPECT_EQ(this->keysOf(map), this->keysInOrder());
}

TYPED_TEST(MapValues, removedValueMayRemoveOthersAtItsEnd) {
  typename TestFixture::FarewellMap map;
  // Each takes the next one with it.
  for (std::size_t i = 0; i < this->members; ++i) {
    map.insert(this->key(i), Farewell([this, &map, i] { map.erase(this->key(i + 1)); }));
  }
  map.erase(this->key(2));
  EXPECT_EQ(map.size(), 2U);
  EXPECT_NE(map.find(this->key(1)), nullptr);
  map.erase(this->key(0));
  EXPECT_TRUE(map.empty());
}

TYPED_TEST(MapValues, removedValueMayClearAtItsEnd) {
  typename TestFixture::FarewellMap map;
  for (std::size_t i = 0; i < this->members; ++i) map.insert(this->key(i), Farewell([&map] { map.clear(); }));
  EXPECT_TRUE(map.erase(this->key(this->members / 2)));
  EXPECT_TRUE(map.empty());
}

TYPED_TEST(MapValues, clearedValuesMeetAnEmptyMap) {
  typename TestFixture::FarewellMap map;
  std::size_t farewells = 0;
  for (std::size_t i = 0; i < this->members; ++i) {
    map.insert(this->key(i), Farewell([this, &map, &farewells, i] {
                 ++farewells;
                 EXPECT_TRUE(map.empty());
                 EXPECT_EQ(map.find(this->key(i)), nullptr);
                 EXPECT_FALSE(map.erase(this->key(i)));
                 EXPECT_FALSE(map.begin());
                 map.clear();
               }));
  }
  map.clear();
  EXPECT_EQ(farewells, this->members);
}

TYPED_TEST(MapValues, clearedValuesMayInsertAnew) {
  typename TestFixture::FarewellMap map;
  for (std::size_t i = 0; i < this->members; ++i) {
    map.insert(this->key(i), Farewell([this, &map, i] { map.insert(this->key(i), Farewell()); }));
  }
  map.clear();
  EXPECT_EQ(map.size(), this->members);
  EXPECT_EQ(this->keysOf(map), this->keysInOrder());
}

TYPED_TEST(MapValues, passGoesOnAfterRemovedValueRemovedOthers) {
  typename TestFixture::FarewellMap map;
  const auto keys = this->keysInOrder();
  for (std::size_t i = 0; i < keys.size(); ++i) {
    map.insert(keys[i], Farewell([&map, &keys, i] {
                 if (i + 1 < keys.size() && i % 3 == 0) map.erase(keys[i + 1]);
               }));
  }
  std::vector<typename TestFixture::Key> expected;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (i % 3 != 1) expected.push_back(keys[i]);
  }
  std::vector<typename TestFixture::Key> visited;
  for (auto i = map.begin(); i; ++i) {
    visited.push_back(i.key());
    map.erase(i.key());
  }
  EXPECT_EQ(visited, expected);
}

TYPED_TEST(MapValues, chainOfEndsReachesAnyDepth) {
  typename TestFixture::FarewellMap map;
  for (std::size_t i = 0; i < this->members; ++i) {
    map.insert(this->key(i), Farewell([this, &map, i] { map.erase(this->key(i + 1)); }));
  }
  map.erase(this->key(0));
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.memory(), 0U);
}

}  // namespace Mox::MapValuesTest
