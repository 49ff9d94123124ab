// What the maps do with members, whatever their kind.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "tests/support/MapKinds.h"

namespace Mox::MapMembersTest {

template <class Kind>
class MapMembers : public Test::MapSuite<Kind> {};
TYPED_TEST_SUITE(MapMembers, Test::MapKinds, Test::MapKindNames);

TYPED_TEST(MapMembers, isEmptyAtFirst) {
  const typename TestFixture::Map map;
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.size(), 0U);
  EXPECT_EQ(map.memory(), 0U);
  EXPECT_EQ(map.find(this->key(0)), nullptr);
}

TYPED_TEST(MapMembers, findsWhatWasInserted) {
  typename TestFixture::Map map;
  for (std::size_t i = 0; i < this->members; ++i) {
    const auto [place, isNew] = map.insert(this->key(i), i);
    EXPECT_TRUE(isNew);
    EXPECT_EQ(*place, i);
    EXPECT_EQ(map.size(), i + 1);
  }
  EXPECT_FALSE(map.empty());
  for (std::size_t i = 0; i < this->members; ++i) {
    ASSERT_NE(map.find(this->key(i)), nullptr);
    EXPECT_EQ(*map.find(this->key(i)), i);
  }
}

TYPED_TEST(MapMembers, findsNoAbsentKey) {
  typename TestFixture::Map map;
  for (std::size_t i = 0; i < this->members; i += 2) map.insert(this->key(i), i);
  for (std::size_t i = 1; i < this->members; i += 2) EXPECT_EQ(map.find(this->key(i)), nullptr);
}

TYPED_TEST(MapMembers, insertingPresentKeyKeepsItsValue) {
  typename TestFixture::Map map;
  this->fill(map);
  const auto [place, isNew] = map.insert(this->key(3), 77);
  EXPECT_FALSE(isNew);
  EXPECT_EQ(*place, 3U);
  EXPECT_EQ(place, map.find(this->key(3)));
  EXPECT_EQ(map.size(), this->members);
}

TYPED_TEST(MapMembers, valueIsWrittenInItsPlace) {
  typename TestFixture::Map map;
  this->fill(map);
  *map.find(this->key(3)) = 77;
  EXPECT_EQ(*std::as_const(map).find(this->key(3)), 77U);
}

TYPED_TEST(MapMembers, takeHandsValueOut) {
  typename TestFixture::Map map;
  this->fill(map);
  EXPECT_EQ(map.take(this->key(3)), std::optional<std::uint64_t>(3));
  EXPECT_EQ(map.find(this->key(3)), nullptr);
  EXPECT_EQ(map.size(), this->members - 1);
}

TYPED_TEST(MapMembers, takingAbsentKeyGivesNothing) {
  typename TestFixture::Map map;
  EXPECT_EQ(map.take(this->key(0)), std::nullopt);
  this->fill(map, this->members - 1);
  EXPECT_EQ(map.take(this->key(this->members - 1)), std::nullopt);
  EXPECT_EQ(map.size(), this->members - 1);
}

TYPED_TEST(MapMembers, eraseSaysWhetherThereWasMember) {
  typename TestFixture::Map map;
  this->fill(map);
  EXPECT_TRUE(map.erase(this->key(3)));
  EXPECT_FALSE(map.erase(this->key(3)));
  EXPECT_EQ(map.size(), this->members - 1);
}

TYPED_TEST(MapMembers, isEmptyOnceLastMemberIsGone) {
  typename TestFixture::Map map;
  this->fill(map);
  for (std::size_t i = this->members; i-- > 0;) {
    EXPECT_TRUE(map.erase(this->key(i)));
    EXPECT_EQ(map.size(), i);
  }
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.memory(), 0U);
  EXPECT_FALSE(map.begin());
}

TYPED_TEST(MapMembers, isUsableAfterItWasEmptied) {
  typename TestFixture::Map map;
  this->fill(map);
  for (std::size_t i = 0; i < this->members; ++i) map.erase(this->key(i));
  this->fill(map);
  EXPECT_EQ(this->keysOf(map), this->keysInOrder());
}

TYPED_TEST(MapMembers, clearRemovesAll) {
  typename TestFixture::Map map;
  this->fill(map);
  map.clear();
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.memory(), 0U);
  EXPECT_EQ(map.find(this->key(3)), nullptr);
  EXPECT_FALSE(map.begin());
  this->fill(map);
  EXPECT_EQ(this->keysOf(map), this->keysInOrder());
}

TYPED_TEST(MapMembers, clearOfEmptyMapDoesNothing) {
  typename TestFixture::Map map;
  map.clear();
  EXPECT_TRUE(map.empty());
}

TYPED_TEST(MapMembers, moveTakesMembersAlong) {
  typename TestFixture::Map from;
  this->fill(from);
  const std::uint64_t* const place = from.find(this->key(3));
  const typename TestFixture::Map to(std::move(from));
  EXPECT_EQ(to.size(), this->members);
  EXPECT_EQ(to.find(this->key(3)), place);
  EXPECT_EQ(this->keysOf(to), this->keysInOrder());
}

TYPED_TEST(MapMembers, movedFromMapIsEmptyAndUsable) {
  typename TestFixture::Map from;
  this->fill(from);
  const typename TestFixture::Map to(std::move(from));
  EXPECT_TRUE(from.empty());
  EXPECT_EQ(from.memory(), 0U);
  EXPECT_FALSE(from.begin());
  from.insert(this->key(1), 1);
  EXPECT_EQ(from.size(), 1U);
  EXPECT_EQ(to.size(), this->members);
}

TYPED_TEST(MapMembers, passOverMovedFromMapEnds) {
  typename TestFixture::Map from;
  this->fill(from);
  auto i = from.begin();
  const typename TestFixture::Map to(std::move(from));
  EXPECT_TRUE(i.currNodeMaybeStale());
  i.advance();
  EXPECT_FALSE(i);
}

}  // namespace Mox::MapMembersTest
