// Maps and memory: what they hold, what they give back, and what happens when there is none.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/Allocations.h"
#include "tests/support/MapKinds.h"
#include "tests/support/MapValues.h"
#include "tests/support/Random.h"

namespace Mox::MapMemoryTest {

using Test::AllocationCount;
using Test::FailingAllocations;
using Test::SelfPointing;
using Test::Triple;

template <class Kind>
class MapMemory : public Test::MapSuite<Kind> {
 public:
  using typename Test::MapSuite<Kind>::Key;
  using SelfPointingMap = typename Kind::template Map<SelfPointing>;

  /// One key more than members. Made beforehand, since names need memory themselves.
  const std::vector<Key> keys = [] {
    std::vector<Key> result;
    for (std::size_t i = 0; i <= Kind::members; ++i) result.push_back(Kind::key(i));
    return result;
  }();

  /// Compares the map, which has the first `n` members, with what it must be.
  void expectFirst(std::size_t n, const SelfPointingMap& map) const {
    ASSERT_EQ(map.size(), n);
    for (std::size_t i = 0; i < n; ++i) {
      ASSERT_NE(map.find(keys[i]), nullptr) << i;
      ASSERT_EQ(map.find(keys[i])->number(), i);
    }
    ASSERT_EQ(map.find(keys[n]), nullptr);
    std::size_t steps = 0;
    for (auto i = map.begin(); i; ++i) ++steps;
    ASSERT_EQ(steps, n);
  }

  /// Inserts with no memory after the first `spared` allocations; returns whether it worked.
  bool isInserted(SelfPointingMap& map, std::size_t n, std::size_t spared) const {
    SelfPointing value(n);
    try {
      const FailingAllocations failing(spared);
      map.insert(keys[n], std::move(value));
    } catch (const std::bad_alloc&) {
      return false;
    }
    return true;
  }
};
TYPED_TEST_SUITE(MapMemory, Test::MapKinds, Test::MapKindNames);

TYPED_TEST(MapMemory, isWhatIsAllocated) {
  SCOPED_TRACE(Test::seedTrace());
  Test::Random random;
  auto shuffled = this->keys;
  random.shuffle(shuffled);
  typename TypeParam::template Map<Triple> map;
  const AllocationCount allocations;
  for (const auto& key : shuffled) {
    map.insert(key, {});
    ASSERT_EQ(map.memory(), allocations.bytes());
  }
  random.shuffle(shuffled);
  for (const auto& key : shuffled) {
    map.erase(key);
    ASSERT_EQ(map.memory(), allocations.bytes());
  }
  EXPECT_EQ(allocations.bytes(), 0U);
}

TYPED_TEST(MapMemory, readingAllocatesNone) {
  typename TestFixture::Map map;
  this->fill(map);
  const AllocationCount allocations;
  EXPECT_NE(map.find(this->keys[3]), nullptr);
  EXPECT_EQ(map.find(this->keys[this->members]), nullptr);
  for (const auto& [key, value] : map) EXPECT_LT(value, this->members);
  EXPECT_TRUE(map.startAtHash(this->keys[3]));
  EXPECT_EQ(allocations.made(), 0U);
}

TYPED_TEST(MapMemory, isKeptWhileOneMemberComesAndGoes) {
  typename TestFixture::Map map;
  map.insert(this->keys[0], 0);
  for (std::size_t n = 1; n < this->members; ++n) {
    // The first round may grow the map.
    map.insert(this->keys[n], n);
    map.erase(this->keys[n]);
    const AllocationCount allocations;
    for (int round = 0; round < 10; ++round) {
      map.insert(this->keys[n], n);
      map.erase(this->keys[n]);
    }
    // A page of ids comes and goes with its only member; nothing else may.
    const bool isAloneInPage = std::is_same_v<TypeParam, Test::ManyIds> && n % 64 == 63;
    ASSERT_LE(allocations.made(), isAloneInPage ? 10U : 0U) << n;
    map.insert(this->keys[n], n);
  }
}

TYPED_TEST(MapMemory, failedInsertionLeavesMapAsItWas) {
  typename TestFixture::SelfPointingMap map;
  std::size_t failures = 0;
  for (std::size_t n = 0; n < this->members; ++n) {
    for (std::size_t spared = 0; !this->isInserted(map, n, spared); ++spared) {
      ++failures;
      ASSERT_NO_FATAL_FAILURE(this->expectFirst(n, map));
    }
    ASSERT_NO_FATAL_FAILURE(this->expectFirst(n + 1, map));
  }
  EXPECT_GT(failures, 3U);
  EXPECT_EQ(SelfPointing::living, static_cast<std::int64_t>(this->members));
  map.clear();
  EXPECT_EQ(SelfPointing::living, 0);
  EXPECT_EQ(SelfPointing::misplaced, 0U);
}

TYPED_TEST(MapMemory, failedInsertionLosesNoMemory) {
  typename TestFixture::SelfPointingMap map;
  const AllocationCount allocations;
  for (std::size_t n = 0; n < this->members; ++n) {
    for (std::size_t spared = 0; !this->isInserted(map, n, spared); ++spared) {
      ASSERT_EQ(map.memory(), allocations.bytes());
    }
  }
  map.clear();
  EXPECT_EQ(allocations.bytes(), 0U);
}

TYPED_TEST(MapMemory, passGoesOnAfterFailedInsertion) {
  typename TestFixture::SelfPointingMap map;
  for (std::size_t n = 0; n < this->members; ++n) {
    for (std::size_t spared = 0;; ++spared) {
      const auto before = this->keysOf(map);
      auto i = map.begin();
      if (this->isInserted(map, n, spared)) break;
      for (const auto& key : before) {
        ASSERT_TRUE(i);
        ASSERT_EQ(i.key(), key);
        if (!i.currNodeMaybeStale()) {
          // A position that claims to be fresh must know where its value is.
          ASSERT_EQ(&i.value(), map.find(key)) << "member " << n << ", " << spared << " allocations";
        }
        i.advance();
      }
      ASSERT_FALSE(i);
    }
  }
}

TYPED_TEST(MapMemory, removalNeedsNone) {
  typename TestFixture::SelfPointingMap map;
  this->fill(map);
  for (std::size_t n = this->members; n-- > 0;) {
    bool isErased = false;
    {
      const FailingAllocations failing;
      isErased = map.erase(this->keys[n]);
    }
    ASSERT_TRUE(isErased);
    ASSERT_NO_FATAL_FAILURE(this->expectFirst(n, map));
  }
  this->fill(map);
  ASSERT_NO_FATAL_FAILURE(this->expectFirst(this->members, map));
}

TYPED_TEST(MapMemory, isNotNeededForRemoving) {
  typename TestFixture::SelfPointingMap map;
  this->fill(map);
  const auto all = this->keysInOrder();
  const FailingAllocations failing;
  for (std::size_t n = 0; n + 2 < all.size(); ++n) EXPECT_TRUE(map.erase(all[n]));
  EXPECT_EQ(map.size(), 2U);
}

TYPED_TEST(MapMemory, isGivenBackWithLastMember) {
  typename TestFixture::Map map;
  this->fill(map);
  for (std::size_t n = this->members; n-- > 0;) {
    EXPECT_GT(map.memory(), 0U);
    map.erase(this->keys[n]);
  }
  EXPECT_EQ(map.memory(), 0U);
}

}  // namespace Mox::MapMemoryTest
