// What is particular to maps keyed by small numbers: ascending order, two forms, little memory.

#include "mox/IdMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "tests/support/Allocations.h"
#include "tests/support/MapKeys.h"
#include "tests/support/MapValues.h"
#include "tests/support/Random.h"

namespace Mox::IdMapTest {

using Test::AllocationCount;
using Test::FailingAllocations;
using Test::Random;
using Test::seedTrace;
using Test::SelfPointing;
using Test::SmallId;
using Test::Triple;

SmallId smallId(std::size_t n) { return {static_cast<std::uint16_t>(n)}; }

/// The ids 1 to 4094, as VLANs have them.
std::vector<SmallId> ascending() {
  std::vector<SmallId> ids;
  for (std::size_t n = 1; n <= 4094; ++n) ids.push_back(smallId(n));
  return ids;
}
std::vector<SmallId> descending() {
  auto ids = ascending();
  std::reverse(ids.begin(), ids.end());
  return ids;
}
/// Every 64th id, and so on with those between.
std::vector<SmallId> interleaved() {
  std::vector<SmallId> ids;
  for (std::size_t n = 1; n <= 64; ++n) {
    for (std::size_t page = 0; page < 64; ++page) {
      if (const std::size_t id = page * 64 + n; id <= 4094) ids.push_back(smallId(id));
    }
  }
  return ids;
}
std::vector<SmallId> shuffled() {
  Random random;
  auto ids = ascending();
  random.shuffle(ids);
  return ids;
}

template <class V>
void expectAscending(const IdMap<SmallId, V>& map) {
  int last = -1;
  std::size_t steps = 0;
  for (const auto& [id, value] : map) {
    EXPECT_GT(id.value, last);
    last = id.value;
    ++steps;
  }
  EXPECT_EQ(steps, map.size());
}

class IdMapOrders : public testing::TestWithParam<std::vector<SmallId> (*)()> {};
INSTANTIATE_TEST_SUITE_P(Ascending, IdMapOrders, testing::Values(&ascending));
INSTANTIATE_TEST_SUITE_P(Descending, IdMapOrders, testing::Values(&descending));
INSTANTIATE_TEST_SUITE_P(Interleaved, IdMapOrders, testing::Values(&interleaved));
INSTANTIATE_TEST_SUITE_P(Shuffled, IdMapOrders, testing::Values(&shuffled));

TEST_P(IdMapOrders, allIdsFindTheirPlace) {
  SCOPED_TRACE(seedTrace());
  const auto ids = GetParam()();
  IdMap<SmallId, SelfPointing> map;
  for (std::size_t n = 0; n < ids.size(); ++n) {
    ASSERT_TRUE(map.insert(ids[n], SelfPointing(ids[n].value)).second);
    if (n % 256 == 0) expectAscending(map);
  }
  expectAscending(map);
  for (const SmallId id : ids) ASSERT_EQ(map.find(id)->number(), id.value);
  for (std::size_t n = 0; n < ids.size(); ++n) {
    ASSERT_EQ(map.take(ids[n])->number(), ids[n].value);
    if (n % 256 == 0) expectAscending(map);
  }
  EXPECT_TRUE(map.empty());
}

TEST_P(IdMapOrders, twelveByteValuesNeedAtMostSixteenAndAHalfBytesAMember) {
  SCOPED_TRACE(seedTrace());
  const auto ids = GetParam()();
  const AllocationCount allocations;
  IdMap<SmallId, Triple> map;
  for (const SmallId id : ids) {
    map.insert(id, {});
    ASSERT_EQ(map.memory(), allocations.bytes()) << map.size();
    if (map.size() >= 64) {
      ASSERT_LE(static_cast<double>(map.memory()) / static_cast<double>(map.size()), 16.5) << map.size();
    }
  }
  EXPECT_LT(static_cast<double>(map.memory()) / static_cast<double>(map.size()), 13);
}

TEST_P(IdMapOrders, memoryGoesBackWithMembers) {
  SCOPED_TRACE(seedTrace());
  IdMap<SmallId, Triple> map;
  for (const SmallId id : ascending()) map.insert(id, {});
  const std::size_t most = map.memory();
  const AllocationCount allocations;
  for (const SmallId id : GetParam()()) {
    map.erase(id);
    ASSERT_LE(map.memory(), most);
    // A page holds at most a small one's room, or four times what its members need.
    ASSERT_LE(map.memory(), 64 * (16 + 16 * sizeof(Triple)) + 4 * sizeof(Triple) * map.size() + 1000);
    // A handful of members holds no more than a small block.
    ASSERT_TRUE(map.size() >= 64 || map.memory() <= 64 * (sizeof(Triple) + 2)) << map.size();
    ASSERT_TRUE(map.size() >= 4 || map.memory() <= 16 * (sizeof(Triple) + 2)) << map.size();
  }
  EXPECT_EQ(map.memory(), 0U);
  EXPECT_EQ(allocations.bytes(), 0U);
}

TEST_P(IdMapOrders, insertionMovesFewValues) {
  SCOPED_TRACE(seedTrace());
  const auto ids = GetParam()();
  IdMap<SmallId, SelfPointing> map;
  SelfPointing::moves = 0;
  for (const SmallId id : ids) map.insert(id, SelfPointing(id.value));
  EXPECT_LT(SelfPointing::moves / ids.size(), 150U);
  SelfPointing::moves = 0;
  for (const SmallId id : ids) map.erase(id);
  EXPECT_LT(SelfPointing::moves / ids.size(), 150U);
}

TEST(IdMap, leastAndGreatestIdsAreMembersLikeOthers) {
  IdMap<SmallId, int> map;
  for (const std::size_t filling : {0U, 40U, 400U}) {
    for (std::size_t n = 0; n < filling; ++n) map.insert(smallId(1000 + n), 0);
    map.insert(smallId(0), 1);
    map.insert(smallId(4095), 2);
    EXPECT_EQ(*map.find(smallId(0)), 1);
    EXPECT_EQ(*map.find(smallId(4095)), 2);
    EXPECT_EQ(map.begin().key(), smallId(0));
    auto last = map.startAtHash(smallId(4095));
    ASSERT_TRUE(last);
    EXPECT_EQ(last.key(), smallId(4095));
    last.advance();
    EXPECT_FALSE(last);
    EXPECT_TRUE(map.erase(smallId(4095)));
    EXPECT_FALSE(map.startAtHash(smallId(4095)));
    EXPECT_TRUE(map.erase(smallId(0)));
    EXPECT_FALSE(map.erase(smallId(0)));
    expectAscending(map);
  }
}

TEST(IdMap, passThatStandsAtGreatestIdEndsWhateverChanges) {
  for (const std::size_t filling : {1U, 400U}) {
    IdMap<SmallId, int> map;
    for (std::size_t n = 0; n < filling; ++n) map.insert(smallId(n), 0);
    map.insert(smallId(4095), 0);
    auto i = map.startAtHash(smallId(4095));
    map.insert(smallId(3000), 0);
    i.advance();
    EXPECT_FALSE(i);
    i = map.startAtHash(smallId(4095));
    map.erase(smallId(4095));
    i.advance();
    EXPECT_FALSE(i);
  }
}

TEST(IdMap, holdsAllIdsAtOnce) {
  IdMap<SmallId, std::uint16_t> map;
  for (std::size_t n = 4096; n-- > 0;) map.insert(smallId(n), static_cast<std::uint16_t>(n));
  EXPECT_EQ(map.size(), 4096U);
  std::uint16_t expected = 0;
  for (const auto& [id, value] : map) {
    EXPECT_EQ(id, smallId(expected));
    EXPECT_EQ(value, expected);
    ++expected;
  }
  EXPECT_EQ(expected, 4096);
}

TEST(IdMap, interleavedIdsDoNotMakePages) {
  // 64 ids in 64 pages: a page for each would cost many times the block.
  IdMap<SmallId, Triple> map;
  for (std::size_t page = 0; page < 64; ++page) map.insert(smallId(page * 64 + 5), {});
  EXPECT_LE(map.memory(), 64 * (sizeof(Triple) + 2) * 9 / 8);
}

TEST(IdMap, passGoesOnWhenBlockBecomesPages) {
  for (const std::size_t place : {0U, 5U, 99U}) {
    IdMap<SmallId, std::size_t> map;
    for (std::size_t n = 0; n < 100; ++n) map.insert(smallId(n * 2), n * 2);
    auto i = map.startAtHash(smallId(place * 2));
    for (std::size_t n = 0; n < 4000; ++n) map.insert(smallId(n), n);
    for (std::size_t expected = place * 2 + 1; expected < 4000; ++expected) {
      i.advance();
      ASSERT_TRUE(i);
      ASSERT_EQ(i.key(), smallId(expected));
      ASSERT_EQ(i.value(), expected);
    }
    i.advance();
    EXPECT_FALSE(i);
  }
}

TEST(IdMap, passGoesOnWhenPagesBecomeBlock) {
  for (const std::size_t place : {0U, 50U, 1999U, 3999U}) {
    IdMap<SmallId, std::size_t> map;
    for (std::size_t n = 0; n < 4000; ++n) map.insert(smallId(n), n);
    auto i = map.startAtHash(smallId(place));
    for (std::size_t n = 0; n < 4000; ++n) {
      if (n % 100 != 0) map.erase(smallId(n));
    }
    for (std::size_t expected = (place / 100 + 1) * 100; expected < 4000; expected += 100) {
      i.advance();
      ASSERT_TRUE(i);
      ASSERT_EQ(i.key(), smallId(expected));
      ASSERT_EQ(i.value(), expected);
    }
    i.advance();
    EXPECT_FALSE(i);
  }
}

TEST(IdMap, passGoesOnWhenFormChangesBackAndForth) {
  IdMap<SmallId, std::size_t> map;
  for (std::size_t n = 0; n < 4096; n += 128) map.insert(smallId(n), n);
  auto i = map.begin();
  for (std::size_t expected = 0; expected < 4096; expected += 128) {
    ASSERT_TRUE(i);
    ASSERT_EQ(i.key(), smallId(expected));
    ASSERT_EQ(i.value(), expected);
    if (expected % 256 == 0) {
      for (std::size_t n = 0; n < 4096; ++n) map.insert(smallId(n), n);
    }
    for (std::size_t n = 0; n < 4096; ++n) {
      if (n % 128 != 0) map.erase(smallId(n));
    }
    i.advance();
  }
  EXPECT_FALSE(i);
}

TEST(IdMap, lastMemberOfPageTakesPageWithIt) {
  IdMap<SmallId, Triple> map;
  for (std::size_t n = 0; n < 640; ++n) map.insert(smallId(n), {});
  std::size_t memory = map.memory();
  for (std::size_t page = 9; page > 1; --page) {
    for (std::size_t n = 0; n < 64; ++n) map.erase(smallId(page * 64 + n));
    EXPECT_LE(map.memory(), memory - 64 * sizeof(Triple));
    memory = map.memory();
    EXPECT_FALSE(map.startAtHash(smallId(page * 64)));
  }
}

/// The map, as a pass shows it.
std::vector<std::pair<SmallId, std::uint64_t>> content(const IdMap<SmallId, SelfPointing>& map) {
  std::vector<std::pair<SmallId, std::uint64_t>> members;
  for (const auto& [id, value] : map) members.emplace_back(id, value.number());
  return members;
}

/// Inserts with no memory after the first `spared` allocations; returns whether it worked.
bool isInserted(IdMap<SmallId, SelfPointing>& map, SmallId id, std::size_t spared) {
  try {
    const FailingAllocations failing(spared);
    map.insert(id, SelfPointing(id.value));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

TEST(IdMap, failedInsertionIntoNewPageLeavesMapAsItWas) {
  IdMap<SmallId, SelfPointing> map;
  for (std::size_t n = 0; n < 1000; ++n) {
    const auto before = content(map);
    // An id far from the others, which needs a page of its own should there be pages.
    for (std::size_t spared = 0; !isInserted(map, smallId(4000), spared); ++spared) ASSERT_EQ(content(map), before);
    map.erase(smallId(4000));
    map.insert(smallId(n), SelfPointing(n));
  }
}

TEST(IdMap, passGoesOnAfterFailedInsertionIntoNewPage) {
  IdMap<SmallId, SelfPointing> map;
  map.insert(smallId(0), SelfPointing(0));
  for (std::size_t n = 1; n < 1000; ++n) {
    for (std::size_t spared = 0;; ++spared) {
      auto i = map.begin();
      if (isInserted(map, smallId(4000), spared)) break;
      for (std::size_t expected = 0; expected < n; ++expected) {
        ASSERT_TRUE(i);
        ASSERT_EQ(i.key(), smallId(expected));
        if (!i.currNodeMaybeStale()) {
          // A position that claims to be fresh must know where its value is.
          ASSERT_EQ(&i.value(), map.find(smallId(expected))) << n << " members, " << spared << " allocations";
        }
        i.advance();
      }
      ASSERT_FALSE(i);
    }
    map.erase(smallId(4000));
    map.insert(smallId(n), SelfPointing(n));
  }
}

TEST(IdMap, pagesStayWhereThereIsNoMemoryForBlock) {
  IdMap<SmallId, SelfPointing> map;
  for (std::size_t n = 0; n < 1000; ++n) map.insert(smallId(n), SelfPointing(n));
  {
    const FailingAllocations failing;
    for (std::size_t n = 0; n < 990; ++n) map.erase(smallId(n));
  }
  EXPECT_EQ(map.size(), 10U);
  for (std::size_t n = 990; n < 1000; ++n) EXPECT_EQ(map.find(smallId(n))->number(), n);
  {
    const FailingAllocations failing;
    for (std::size_t n = 990; n < 1000; ++n) map.erase(smallId(n));
  }
  EXPECT_TRUE(map.empty());
  EXPECT_FALSE(map.begin());
  EXPECT_FALSE(map.startAtHash(smallId(4095)));
  map.insert(smallId(7), SelfPointing(7));
  EXPECT_EQ(map.find(smallId(7))->number(), 7U);
  EXPECT_EQ(map.begin().key(), smallId(7));
}

}  // namespace Mox::IdMapTest
