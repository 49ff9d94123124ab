// What a pass over a map promises, whatever the kind of the map and whatever happens to it meanwhile.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "tests/support/MapKinds.h"
#include "tests/support/Random.h"

namespace Mox::MapPassTest {

template <class Kind>
class MapPass : public Test::MapSuite<Kind> {
 public:
  using typename Test::MapSuite<Kind>::Key;

  /// All the keys in the order of a pass; members are those at even places.
  const std::vector<Key> keys = this->keysInOrder();
  typename Test::MapSuite<Kind>::Map map;

  void SetUp() override {
    for (std::size_t i = 0; i < keys.size(); i += 2) map.insert(keys[i], i);
  }
  /// The keys at the even places from this one on.
  [[nodiscard]] std::vector<Key> evenFrom(std::size_t place) const {
    std::vector<Key> even;
    for (std::size_t i = place + place % 2; i < keys.size(); i += 2) even.push_back(keys[i]);
    return even;
  }
  /// A pass that stands at the member at this even place.
  [[nodiscard]] auto passAt(std::size_t place) const {
    auto i = map.begin();
    for (std::size_t n = place / 2; n > 0; --n) ++i;
    return i;
  }
};
TYPED_TEST_SUITE(MapPass, Test::MapKinds, Test::MapKindNames);

TYPED_TEST(MapPass, showsEachMember) {
  std::size_t place = 0;
  for (const auto& [key, value] : this->map) {
    ASSERT_LT(place, this->keys.size());
    EXPECT_EQ(key, this->keys[place]);
    EXPECT_EQ(value, place);
    place += 2;
  }
  EXPECT_EQ(place, this->keys.size());
}

TYPED_TEST(MapPass, endsAtOnceInEmptyMap) {
  const typename TestFixture::Map empty;
  EXPECT_FALSE(empty.begin());
  EXPECT_EQ(empty.begin(), empty.end());
  EXPECT_FALSE(empty.startAtHash(this->key(0)));
}

TYPED_TEST(MapPass, orderIsThatOfMembersNotOfHistory) {
  SCOPED_TRACE(Test::seedTrace());
  Test::Random random;
  std::vector<typename TestFixture::Key> shuffled = this->keys;
  for (int round = 0; round < 5; ++round) {
    random.shuffle(shuffled);
    typename TestFixture::Map other;
    for (const auto& key : shuffled) other.insert(key, 0);
    for (std::size_t i = 1; i < this->keys.size(); i += 2) other.erase(this->keys[i]);
    EXPECT_EQ(this->keysOf(other), this->keysOf(this->map));
  }
}

TYPED_TEST(MapPass, growthNeverReorders) {
  typename TestFixture::Map growing;
  std::vector<typename TestFixture::Key> before;
  for (std::size_t i = 0; i < this->members; ++i) {
    growing.insert(this->key(i), i);
    const auto after = this->keysOf(growing);
    auto old = after;
    std::erase(old, this->key(i));
    ASSERT_EQ(old, before);
    before = after;
  }
}

TYPED_TEST(MapPass, shrinkingNeverReorders) {
  this->fill(this->map);
  auto expected = this->keysOf(this->map);
  for (std::size_t i = 0; i < this->members; ++i) {
    this->map.erase(this->key(i));
    std::erase(expected, this->key(i));
    ASSERT_EQ(this->keysOf(this->map), expected);
  }
}

TYPED_TEST(MapPass, removingCurrentMemberGoesOnWithNext) {
  std::vector<typename TestFixture::Key> visited;
  for (auto i = this->map.begin(); i; ++i) {
    visited.push_back(i.key());
    this->map.erase(i.key());
  }
  EXPECT_EQ(visited, this->evenFrom(0));
  EXPECT_TRUE(this->map.empty());
}

TYPED_TEST(MapPass, removingNextMemberSkipsIt) {
  auto i = this->passAt(4);
  this->map.erase(this->keys[6]);
  EXPECT_EQ(this->keysFrom(++i), this->evenFrom(8));
}

TYPED_TEST(MapPass, removingMembersBehindSkipsNone) {
  auto i = this->passAt(8);
  for (std::size_t place = 0; place < 8; place += 2) this->map.erase(this->keys[place]);
  EXPECT_EQ(this->keysFrom(++i), this->evenFrom(10));
}

TYPED_TEST(MapPass, memberInsertedAheadIsVisited) {
  auto i = this->passAt(4);
  this->map.insert(this->keys[5], 0);
  i.advance();
  EXPECT_EQ(i.key(), this->keys[5]);
  EXPECT_EQ(this->keysFrom(++i), this->evenFrom(6));
}

TYPED_TEST(MapPass, memberInsertedBehindIsNotVisited) {
  auto i = this->passAt(4);
  this->map.insert(this->keys[1], 0);
  this->map.insert(this->keys[3], 0);
  EXPECT_EQ(this->keysFrom(++i), this->evenFrom(6));
}

TYPED_TEST(MapPass, currentMemberThatComesBackIsNotVisitedAgain) {
  auto i = this->passAt(4);
  this->map.erase(this->keys[4]);
  this->map.insert(this->keys[4], 0);
  EXPECT_EQ(this->keysFrom(++i), this->evenFrom(6));
}

TYPED_TEST(MapPass, growthMissesAndRepeatsNone) {
  for (std::size_t place : {std::size_t{0}, this->keys.size() / 4 * 2}) {
    typename TestFixture::Map few;
    for (std::size_t n = 0; n < this->keys.size(); n += 10) few.insert(this->keys[n], 0);
    auto i = few.startAtHash(this->keys[place]);
    const std::size_t memory = few.memory();
    for (const auto& key : this->keys) few.insert(key, 0);
    EXPECT_GT(few.memory(), memory);
    const auto start = std::find(this->keys.begin(), this->keys.end(), i.key());
    ASSERT_NE(start, this->keys.end());
    EXPECT_EQ(this->keysFrom(i), std::vector(start, this->keys.end()));
  }
}

TYPED_TEST(MapPass, removingMostMissesAndRepeatsNone) {
  this->fill(this->map);
  const std::size_t middle = this->keys.size() / 2;
  auto i = this->map.startAtHash(this->keys[middle]);
  std::vector<typename TestFixture::Key> stayers;
  for (std::size_t place = 0; place < this->keys.size(); ++place) {
    if (place % 15 != 0) {
      this->map.erase(this->keys[place]);
    } else if (place > middle) {
      stayers.push_back(this->keys[place]);
    }
  }
  EXPECT_EQ(this->keysFrom(++i), stayers);
}

TYPED_TEST(MapPass, clearEndsIt) {
  auto i = this->passAt(4);
  this->map.clear();
  EXPECT_TRUE(i);
  i.advance();
  EXPECT_FALSE(i);
}

TYPED_TEST(MapPass, goesOnInMapThatWasClearedAndFilledAgain) {
  auto i = this->passAt(4);
  this->map.clear();
  this->fill(this->map);
  EXPECT_EQ(this->keysFrom(++i), std::vector(this->keys.begin() + 5, this->keys.end()));
}

TYPED_TEST(MapPass, lastMemberRemovedEndsIt) {
  const std::size_t last = (this->keys.size() - 1) / 2 * 2;
  auto i = this->map.startAtHash(this->keys[last]);
  ASSERT_EQ(i.key(), this->keys[last]);
  this->map.erase(this->keys[last]);
  i.advance();
  EXPECT_FALSE(i);
}

TYPED_TEST(MapPass, keyStaysUntilIteratorAdvances) {
  auto i = this->passAt(4);
  const auto& [key, value] = *i;
  this->map.clear();
  EXPECT_EQ(key, this->keys[4]);
  EXPECT_EQ(i.key(), this->keys[4]);
}

TYPED_TEST(MapPass, isStaleAfterInsertion) {
  const auto i = this->passAt(4);
  EXPECT_FALSE(i.currNodeMaybeStale());
  this->map.insert(this->keys[1], 0);
  EXPECT_TRUE(i.currNodeMaybeStale());
}

TYPED_TEST(MapPass, isStaleAfterRemoval) {
  const auto i = this->passAt(4);
  this->map.erase(this->keys[4]);
  EXPECT_TRUE(i.currNodeMaybeStale());
}

TYPED_TEST(MapPass, isStaleAfterClear) {
  const auto i = this->passAt(4);
  this->map.clear();
  EXPECT_TRUE(i.currNodeMaybeStale());
}

TYPED_TEST(MapPass, isNotStaleWhereNothingWasInsertedOrRemoved) {
  const auto i = this->passAt(4);
  this->map.insert(this->keys[6], 0);
  this->map.erase(this->keys[1]);
  *this->map.find(this->keys[4]) = 99;
  EXPECT_FALSE(i.currNodeMaybeStale());
  EXPECT_EQ(i.value(), 99U);
}

TYPED_TEST(MapPass, isNotStaleOnceItAdvanced) {
  auto i = this->passAt(4);
  this->map.erase(this->keys[4]);
  i.advance();
  EXPECT_FALSE(i.currNodeMaybeStale());
  EXPECT_EQ(i.key(), this->keys[6]);
  EXPECT_EQ(i.value(), 6U);
}

TYPED_TEST(MapPass, startsAtMember) {
  for (std::size_t place = 0; place < this->keys.size(); place += 2) {
    ASSERT_EQ(this->keysFrom(this->map.startAtHash(this->keys[place])), this->evenFrom(place));
  }
}

TYPED_TEST(MapPass, startsBehindAbsentKey) {
  for (std::size_t place = 1; place < this->keys.size(); place += 2) {
    ASSERT_EQ(this->keysFrom(this->map.startAtHash(this->keys[place])), this->evenFrom(place));
  }
}

TYPED_TEST(MapPass, resumesBehindKeyThatIsGone) {
  const auto bookmark = this->passAt(4).key();
  this->map.erase(bookmark);
  EXPECT_EQ(this->keysFrom(this->map.startAtHash(bookmark)), this->evenFrom(6));
}

TYPED_TEST(MapPass, slicesTogetherVisitEachMemberOnce) {
  std::vector<typename TestFixture::Key> visited;
  auto i = this->map.begin();
  while (i) {
    for (int n = 0; n < 3 && i; ++n, ++i) {
      visited.push_back(i.key());
      this->map.erase(i.key());
    }
    if (!i) break;
    const auto bookmark = i.key();
    i = this->map.startAtHash(bookmark);
  }
  EXPECT_EQ(visited, this->evenFrom(0));
}

TYPED_TEST(MapPass, severalGoOnIndependently) {
  auto first = this->passAt(2);
  auto second = first;
  second.advance();
  this->map.erase(this->keys[4]);
  EXPECT_EQ(first.key(), this->keys[2]);
  EXPECT_EQ(second.key(), this->keys[4]);
  EXPECT_EQ(this->keysFrom(++first), this->evenFrom(6));
  EXPECT_EQ(this->keysFrom(++second), this->evenFrom(6));
}

TYPED_TEST(MapPass, incrementsAreAdvances) {
  auto i = this->map.begin();
  i++;
  EXPECT_EQ(i.key(), this->keys[2]);
  EXPECT_EQ((++i).key(), this->keys[4]);
  EXPECT_NE(i, this->map.end());
}

}  // namespace Mox::MapPassTest
