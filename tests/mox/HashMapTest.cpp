// What is particular to hash maps: the order of (hash, key), seeds, ties, and crowds of neighbouring hashes.

#include "mox/HashMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "tests/support/MapKeys.h"
#include "tests/support/Random.h"
#include "tests/support/ScopedHashSeed.h"

namespace Mox::HashMapTest {

using Test::Grouped;
using Test::Number;
using Test::Random;
using Test::ScopedHashSeed;
using Test::seedTrace;
using Test::Tied;
using Test::TiedLast;

constexpr std::uint64_t allOnes = std::numeric_limits<std::uint64_t>::max();

template <class Map>
std::vector<typename Map::Key> keysOf(const Map& map) {
  std::vector<typename Map::Key> keys;
  for (const auto& [key, value] : map) keys.push_back(key);
  return keys;
}

/// Numbers all over, the least and the greatest that can be keys among them.
std::vector<Number> numbers(std::size_t n) {
  Random random;
  std::vector<Number> keys{{0}, {1}, {allOnes - 1}, {allOnes >> 1}, {std::uint64_t{1} << 63}};
  while (keys.size() < n) keys.push_back({random.bits() >> 1});
  return keys;
}

template <class Seed>
class HashMapSeeds : public testing::Test {};
using Seeds = testing::Types<ProcessSeed, FixedSeed<0>, FixedSeed<1>, FixedSeed<0xFFFF'FFFF>, FixedSeed<0x1234'5678>>;
TYPED_TEST_SUITE(HashMapSeeds, Seeds);

TYPED_TEST(HashMapSeeds, numbersIterateInOrderOfHash) {
  SCOPED_TRACE(seedTrace());
  HashMap<Number, int, TypeParam> map;
  auto expected = numbers(1000);
  for (const Number key : expected) map.insert(key, 0);
  std::sort(expected.begin(), expected.end(),
            [](Number a, Number b) { return TypeParam::value().hash(a.value) < TypeParam::value().hash(b.value); });
  EXPECT_EQ(keysOf(map), expected);
}

TYPED_TEST(HashMapSeeds, namesIterateInOrderOfHash) {
  HashMap<String, int, TypeParam> map;
  std::vector<String> expected;
  expected.reserve(500);
  for (int i = 0; i < 500; ++i) expected.emplace_back("Ethernet" + std::to_string(i));
  for (const String& key : expected) map.insert(key, 0);
  std::sort(expected.begin(), expected.end(), [](const String& a, const String& b) {
    return TypeParam::value().hash(a.hash()) < TypeParam::value().hash(b.hash());
  });
  EXPECT_EQ(keysOf(map), expected);
}

TYPED_TEST(HashMapSeeds, keysOfOneHashIterateInOrderOfKey) {
  HashMap<Grouped, int, TypeParam> map;
  std::vector<Grouped> expected;
  for (std::uint32_t i = 300; i-- > 0;) expected.push_back({i});
  for (const Grouped key : expected) map.insert(key, 0);
  std::sort(expected.begin(), expected.end(), [](Grouped a, Grouped b) {
    const auto hash = [](Grouped key) { return TypeParam::value().hash(KeyTraits<Grouped>::toBits(key)); };
    return hash(a) != hash(b) ? hash(a) < hash(b) : a < b;
  });
  EXPECT_EQ(keysOf(map), expected);
}

TYPED_TEST(HashMapSeeds, seedDecidesOnlyTheOrder) {
  SCOPED_TRACE(seedTrace());
  HashMap<Number, int, TypeParam> map;
  HashMap<Number, int, FixedSeed<99>> other;
  const auto keys = numbers(100);
  for (const Number key : keys) {
    EXPECT_EQ(map.insert(key, 0).second, other.insert(key, 0).second);
  }
  const auto some = keysOf(map);
  const auto others = keysOf(other);
  EXPECT_NE(some, others);
  EXPECT_EQ(std::set(some.begin(), some.end()), std::set(others.begin(), others.end()));
}

TEST(HashMap, processSeedDecidesOrderWhereNoOtherIsGiven) {
  SCOPED_TRACE(seedTrace());
  const ScopedHashSeed seed(4242);
  HashMap<Number, int> map;
  HashMap<Number, int, FixedSeed<4242>> same;
  for (const Number key : numbers(100)) {
    map.insert(key, 0);
    same.insert(key, 0);
  }
  EXPECT_EQ(keysOf(map), keysOf(same));
}

TEST(HashMap, tiedKeysAreDifferentMembers) {
  HashMap<Tied, std::uint32_t> map;
  for (std::uint32_t i = 0; i < 500; ++i) EXPECT_TRUE(map.insert({i * 7 % 500}, i * 7 % 500).second);
  for (std::uint32_t i = 0; i < 500; ++i) ASSERT_EQ(*map.find({i}), i);
  EXPECT_EQ(map.find({500}), nullptr);
  for (std::uint32_t i = 0; i < 500; i += 2) EXPECT_TRUE(map.erase({i}));
  for (std::uint32_t i = 0; i < 500; ++i) ASSERT_EQ(map.find({i}) != nullptr, i % 2 == 1);
}

TEST(HashMap, greatestHashIsNoFreePlace) {
  HashMap<TiedLast, std::uint32_t> map;
  EXPECT_EQ(map.find({0}), nullptr);
  for (std::uint32_t i = 0; i < 500; ++i) EXPECT_TRUE(map.insert({i}, i).second);
  for (std::uint32_t i = 0; i < 500; ++i) ASSERT_EQ(*map.find({i}), i);
  std::uint32_t expected = 0;
  for (const auto& [key, value] : map) EXPECT_EQ(key.value, expected++);
  EXPECT_EQ(expected, 500U);
  for (std::uint32_t i = 0; i < 500; ++i) EXPECT_TRUE(map.erase({i}));
  EXPECT_TRUE(map.empty());
}

/// A key by its hash.
template <class Seed>
Number withHash(std::uint64_t hash) {
  return {Seed::value().bits(hash)};
}

TEST(HashMap, keysOfLastBucketsGrowTableByTheirNumberOnly) {
  HashMap<Number, std::uint64_t> map;
  for (std::uint64_t i = 1; i <= 2000; ++i) {
    map.insert(withHash<ProcessSeed>(allOnes - i), i);
    ASSERT_LE(map.memory(), 200 + i * 150);
  }
  std::uint64_t expected = 2000;
  for (const auto& [key, value] : map) ASSERT_EQ(value, expected--);
  EXPECT_EQ(expected, 0U);
  for (std::uint64_t i = 1; i <= 2000; ++i) ASSERT_EQ(map.take(withHash<ProcessSeed>(allOnes - i)), i);
}

TEST(HashMap, keysOfFirstBucketPushOthersAside) {
  HashMap<Number, std::uint64_t> map;
  // One key for each of eight buckets, then seven more for the first.
  for (std::uint64_t i = 0; i < 8; ++i) map.insert(withHash<ProcessSeed>(i << 61), i << 61);
  for (std::uint64_t i = 1; i < 8; ++i) map.insert(withHash<ProcessSeed>(i), i);
  const std::vector<std::uint64_t> hashes = [] {
    std::vector<std::uint64_t> all;
    for (std::uint64_t i = 0; i < 8; ++i) all.push_back(i);
    for (std::uint64_t i = 1; i < 8; ++i) all.push_back(i << 61);
    return all;
  }();
  const auto expectOnly = [&map](const std::vector<std::uint64_t>& expected) {
    auto next = expected.begin();
    for (const auto& [key, value] : map) {
      ASSERT_NE(next, expected.end());
      ASSERT_EQ(value, *next++);
    }
    ASSERT_EQ(next, expected.end());
    for (const std::uint64_t hash : expected) ASSERT_NE(map.find(withHash<ProcessSeed>(hash)), nullptr);
  };
  ASSERT_NO_FATAL_FAILURE(expectOnly(hashes));
  // Each removal lets those behind move back, but none before its own bucket.
  for (std::size_t gone = 0; gone < hashes.size(); ++gone) {
    const Number key = withHash<ProcessSeed>(hashes[gone]);
    ASSERT_TRUE(map.erase(key));
    auto others = hashes;
    std::erase(others, hashes[gone]);
    ASSERT_NO_FATAL_FAILURE(expectOnly(others));
    map.insert(key, hashes[gone]);
    ASSERT_NO_FATAL_FAILURE(expectOnly(hashes));
  }
}

TEST(HashMap, neighbouringHashesAreToldApart) {
  HashMap<Number, std::uint64_t> map;
  for (std::uint64_t hash = 1000; hash < 1100; hash += 2) map.insert(withHash<ProcessSeed>(hash), hash);
  for (std::uint64_t hash = 999; hash < 1101; ++hash) {
    const bool isMember = hash >= 1000 && hash < 1100 && hash % 2 == 0;
    EXPECT_EQ(map.find(withHash<ProcessSeed>(hash)) != nullptr, isMember);
    auto i = map.startAtHash(withHash<ProcessSeed>(hash));
    if (hash > 1098) {
      EXPECT_FALSE(i);
    } else {
      EXPECT_EQ(i.value(), std::max<std::uint64_t>(1000, hash + hash % 2));
    }
  }
}

TEST(HashMap, emptyNameIsAKeyLikeOthers) {
  HashMap<String, int> map;
  EXPECT_EQ(map.find(""), nullptr);
  map.insert("", 1);
  map.insert("a", 2);
  EXPECT_EQ(*map.find(""), 1);
  EXPECT_TRUE(map.erase(""));
  EXPECT_EQ(map.find(""), nullptr);
  EXPECT_EQ(map.size(), 1U);
}

TEST(HashMap, nameIsFoundByAnotherCopyOfItsText) {
  HashMap<String, int> map;
  map.insert(std::string("Ethernet1"), 1);
  EXPECT_EQ(*map.find("Ethernet1"), 1);
  EXPECT_FALSE(map.insert("Ethernet1", 2).second);
  EXPECT_EQ(map.find(std::string("Ethernet1\0", 10)), nullptr);
}

}  // namespace Mox::HashMapTest
