// The costs that hash maps promise, counted: how many values an operation moves, how often keys are looked at, how much
// memory stays. A value moves where a walk goes by, so its moves tell how long walks are.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "mox/HashMap.h"
#include "tests/support/Allocations.h"
#include "tests/support/MapKeys.h"
#include "tests/support/MapValues.h"
#include "tests/support/Random.h"

namespace Test {

/// A key that counts how often it is looked at.
struct Watched {
  std::uint64_t value = 0;

  friend bool operator==(const Watched& a, const Watched& b) {
    ++looks;
    return a.value == b.value;
  }
  friend bool operator<(const Watched& a, const Watched& b) {
    ++looks;
    return a.value < b.value;
  }

  static inline std::uint64_t looks = 0;
};

}  // namespace Test

template <>
struct Mox::KeyTraits<Test::Watched> {
  static constexpr bool isBijective = false;
  static std::uint64_t toBits(const Test::Watched& key) noexcept {
    ++Test::Watched::looks;
    return key.value;
  }
};

namespace Mox::HashMapCostTest {

using Test::AllocationCount;
using Test::Number;
using Test::Random;
using Test::seedTrace;
using Test::SelfPointing;
using Test::Watched;

constexpr std::size_t many = 100'000;

/// Keys as they come in practice: counted, in steps of powers of two, in pairs of small words, at random.
std::vector<Number> keys(std::size_t pattern) {
  Random random;
  std::vector<Number> result;
  for (std::uint64_t i = 0; i < many; ++i) {
    const std::array patterns{i,
                              i << 6,
                              i << 16,
                              i << 32,
                              i << 46,
                              (i % 64) << 32 | i / 64,
                              (i % 64) << 56 | i / 64 << 8,
                              random.bits() >> 1};
    result.push_back({patterns[pattern]});
  }
  return result;
}
constexpr std::size_t patterns = 8;

template <class Seed>
class HashMapCost : public testing::Test {};
using Seeds = testing::Types<ProcessSeed, FixedSeed<0>, FixedSeed<0xFFFF'FFFF>>;
TYPED_TEST_SUITE(HashMapCost, Seeds);

TYPED_TEST(HashMapCost, insertionAndRemovalMoveFewValues) {
  SCOPED_TRACE(seedTrace());
  for (std::size_t pattern = 0; pattern < patterns; ++pattern) {
    HashMap<Number, SelfPointing, TypeParam> map;
    const auto all = keys(pattern);
    SelfPointing::moves = 0;
    for (const Number key : all) map.insert(key, SelfPointing(0));
    EXPECT_LT(SelfPointing::moves / many, 15U) << "insertions, pattern " << pattern;
    SelfPointing::moves = 0;
    for (const Number key : all) map.erase(key);
    EXPECT_LT(SelfPointing::moves / many, 15U) << "removals, pattern " << pattern;
  }
}

TYPED_TEST(HashMapCost, changesAtFullLoadMoveFewValues) {
  SCOPED_TRACE(seedTrace());
  // As many members as fit before the map grows.
  constexpr std::size_t full = (std::size_t{1} << 16) / 4 * 3;
  for (std::size_t pattern = 0; pattern < patterns; ++pattern) {
    HashMap<Number, SelfPointing, TypeParam> map;
    const auto all = keys(pattern);
    for (std::size_t i = 0; i < full; ++i) map.insert(all[i], SelfPointing(0));
    SelfPointing::moves = 0;
    for (std::size_t i = full; i < many; ++i) {
      map.erase(all[i - full]);
      map.insert(all[i], SelfPointing(0));
    }
    // Three times what chance brings.
    EXPECT_LT(SelfPointing::moves / (many - full), 52U) << "pattern " << pattern;
  }
}

TYPED_TEST(HashMapCost, removingEachMemberDuringPassMovesFewValues) {
  HashMap<Number, SelfPointing, TypeParam> map;
  for (const Number key : keys(0)) map.insert(key, SelfPointing(0));
  SelfPointing::moves = 0;
  for (auto i = map.begin(); i; ++i) map.erase(i.key());
  EXPECT_LT(SelfPointing::moves / many, 15U);
  EXPECT_TRUE(map.empty());
}

TEST(HashMapCost, findLooksAtFewKeys) {
  HashMap<Watched, int> map;
  for (std::uint64_t i = 0; i < many; ++i) map.insert({i}, 0);
  Watched::looks = 0;
  for (std::uint64_t i = 0; i < 2 * many; ++i) (void)map.find({i});
  // One for the hash, one for the member where there is one.
  EXPECT_LE(Watched::looks, 3 * many);
}

TEST(HashMapCost, stepOfPassThatIsFreshLooksAtNoKey) {
  HashMap<Watched, int> map;
  for (std::uint64_t i = 0; i < many; ++i) map.insert({i}, 0);
  Watched::looks = 0;
  std::size_t steps = 0;
  for (auto i = map.begin(); i; ++i) ++steps;
  EXPECT_EQ(steps, many);
  EXPECT_EQ(Watched::looks, 0U);
}

TEST(HashMapCost, stepOfPassAfterChangeLooksAtFewKeys) {
  HashMap<Watched, int> map;
  for (std::uint64_t i = 0; i < many; ++i) map.insert({i}, 0);
  std::size_t steps = 0;
  std::uint64_t looks = 0;
  for (auto i = map.begin(); i;) {
    // A member that comes and goes makes the position look its place up again.
    map.insert({many}, 0);
    map.erase({many});
    Watched::looks = 0;
    ++i;
    looks += Watched::looks;
    ++steps;
  }
  EXPECT_EQ(steps, many);
  // The hash, the order and the equality of the key.
  EXPECT_LE(looks, 3 * many);
}

TEST(HashMapCost, growthAllocatesSeldom) {
  HashMap<Number, int> map;
  const auto all = keys(0);
  const AllocationCount allocations;
  for (const Number key : all) map.insert(key, 0);
  // Each table has twice the places of the one before.
  EXPECT_LE(allocations.made(), 20U);
}

TEST(HashMapCost, growthOfCrowdAllocatesSeldom) {
  HashMap<Number, int> map;
  const AllocationCount allocations;
  for (std::uint64_t i = 1; i <= 5000; ++i) map.insert({ProcessSeed::value().bits(~i)}, 0);
  EXPECT_LE(allocations.made(), 40U);
}

}  // namespace Mox::HashMapCostTest
