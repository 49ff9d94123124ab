#include "mox/Hash.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "mox/Exception.h"
#include "mox/HashMap.h"
#include "tests/support/Random.h"
#include "tests/support/ScopedHashSeed.h"

namespace Mox::HashTest {

using Test::Random;
using Test::ScopedHashSeed;
using Test::seedTrace;

constexpr std::uint64_t allOnes = std::numeric_limits<std::uint64_t>::max();
constexpr std::array<std::uint32_t, 7> seeds = {0, 1, 2, 0x5EED'0001, 0x7FFF'FFFF, 0x8000'0000, 0xFFFF'FFFF};

/// Bits that tend to be treated wrongly, and many others.
std::vector<std::uint64_t> bitPatterns() {
  Random random;
  std::vector<std::uint64_t> patterns{0, allOnes, allOnes - 1};
  for (int shift = 0; shift < 64; ++shift) {
    patterns.push_back(std::uint64_t{1} << shift);
    patterns.push_back(allOnes >> shift);
    patterns.push_back(allOnes << shift);
    patterns.push_back(~(std::uint64_t{1} << shift));
  }
  for (int i = 0; i < 2000; ++i) patterns.push_back(random.bits());
  return patterns;
}

TEST(Hash, bitsComeBackFromTheirHash) {
  SCOPED_TRACE(seedTrace());
  for (const std::uint32_t seed : seeds) {
    const HashSeed s(seed);
    for (const std::uint64_t bits : bitPatterns()) ASSERT_EQ(s.bits(s.hash(bits)), bits) << seed;
  }
}

TEST(Hash, eachHashBelongsToSomeBits) {
  SCOPED_TRACE(seedTrace());
  for (const std::uint32_t seed : seeds) {
    const HashSeed s(seed);
    for (const std::uint64_t hash : bitPatterns()) ASSERT_EQ(s.hash(s.bits(hash)), hash) << seed;
  }
}

TEST(Hash, allOnesHashToAllOnesUnderEachSeed) {
  SCOPED_TRACE(seedTrace());
  for (const std::uint32_t seed : seeds) EXPECT_EQ(HashSeed(seed).hash(allOnes), allOnes) << seed;
  Random random;
  for (int i = 0; i < 10'000; ++i) {
    const auto seed = static_cast<std::uint32_t>(random.bits());
    ASSERT_EQ(HashSeed(seed).hash(allOnes), allOnes) << seed;
  }
}

TEST(Hash, nothingElseHashesToAllOnes) {
  SCOPED_TRACE(seedTrace());
  for (const std::uint32_t seed : seeds) {
    EXPECT_EQ(HashSeed(seed).bits(allOnes), allOnes);
    for (const std::uint64_t bits : bitPatterns()) {
      ASSERT_EQ(HashSeed(seed).hash(bits) == allOnes, bits == allOnes) << bits << " under " << seed;
    }
  }
}

TEST(Hash, seedsGiveDifferentHashes) {
  for (const std::uint32_t a : seeds) {
    for (const std::uint32_t b : seeds) EXPECT_EQ(HashSeed(a).hash(17) == HashSeed(b).hash(17), a == b);
  }
}

TEST(Hash, neighboursGoToPlacesAllOver) {
  // Of 4096 keys in a row, no sixteenth of the places gets more than twice its share.
  for (const std::uint32_t seed : seeds) {
    for (const int shift : {0, 8, 16, 32, 48}) {
      std::vector<int> places(16);
      for (std::uint64_t i = 0; i < 4096; ++i) ++places[HashSeed(seed).hash(i << shift) >> 60];
      for (const int members : places) EXPECT_LT(members, 512) << seed << ", " << shift;
    }
  }
}

TEST(Hash, isKnownAtCompileTime) {
  static_assert(HashSeed(7).bits(HashSeed(7).hash(42)) == 42);
  static_assert(HashSeed(7).hash(allOnes) == allOnes);
  static_assert(FixedSeed<7>::value().hash(42) == HashSeed(7).hash(42));
  static_assert(detail::unmix(detail::mix(42)) == 42);
}

TEST(Hash, inverseOfOddNumberMultipliesToOne) {
  SCOPED_TRACE(seedTrace());
  Random random;
  for (const std::uint64_t odd :
       {std::uint64_t{1}, std::uint64_t{3}, allOnes, detail::mixFactor1, detail::mixFactor2}) {
    EXPECT_EQ(odd * detail::inverse(odd), 1U);
  }
  for (int i = 0; i < 1000; ++i) {
    const std::uint64_t odd = random.bits() | 1;
    ASSERT_EQ(odd * detail::inverse(odd), 1U) << odd;
  }
}

TEST(Hash, mixingIsUndone) {
  SCOPED_TRACE(seedTrace());
  for (const std::uint64_t bits : bitPatterns()) {
    ASSERT_EQ(detail::unmix(detail::mix(bits)), bits);
    ASSERT_EQ(detail::mix(detail::unmix(bits)), bits);
  }
}

TEST(Hash, processSeedIsTheOneThatWasSet) {
  const std::uint32_t before = hashSeed32();
  {
    const ScopedHashSeed seed(0xABCD'EF01);
    EXPECT_EQ(hashSeed32(), 0xABCD'EF01U);
    EXPECT_EQ(ProcessSeed::value().hash(5), HashSeed(0xABCD'EF01).hash(5));
  }
  EXPECT_EQ(hashSeed32(), before);
  EXPECT_EQ(ProcessSeed::value().hash(5), HashSeed(before).hash(5));
}

TEST(Hash, processSeedStaysWhileACollectionThatUsesItHasMembers) {
  const std::uint32_t before = hashSeed32();
  HashMap<String, int> map;
  HashMap<String, int, FixedSeed<7>> other;
  map.insert("lamp", 1);
  other.insert("lamp", 1);
  EXPECT_THROW(hashSeed32Is(before + 1), RangeException);
  hashSeed32Is(before);  // as it is
  EXPECT_EQ(hashSeed32(), before);
  EXPECT_NE(map.find("lamp"), nullptr);

  HashMap<String, int> heir = std::move(map);
  EXPECT_THROW(hashSeed32Is(before + 1), RangeException);
  heir.erase("lamp");
  const ScopedHashSeed seed(before + 1);
  EXPECT_EQ(hashSeed32(), before + 1);
}

TEST(Hash, fixedSeedIsItsOwn) {
  const ScopedHashSeed seed(1);
  EXPECT_EQ(FixedSeed<2>::value().hash(5), HashSeed(2).hash(5));
}

TEST(Hash, namesAreHashedByTheirCharacters) {
  const String name = "Ethernet1";
  EXPECT_EQ(KeyTraits<String>::toBits(name), name.hash());
  EXPECT_EQ(KeyTraits<String>::toBits(name), KeyTraits<String>::toBits(std::string("Ethernet1")));
  static_assert(!KeyTraits<String>::isBijective);
}

TEST(Hash, namesAreOrderedByTheirBytes) {
  EXPECT_TRUE(keyLessThan<String>("Ethernet10", "Ethernet2"));
  EXPECT_FALSE(keyLessThan<String>("Ethernet2", "Ethernet10"));
  EXPECT_FALSE(keyLessThan<String>("a", "a"));
  EXPECT_TRUE(keyLessThan<String>("", "a"));
  EXPECT_TRUE(keyLessThan<String>("z", "\xC3\xA4"));
}

TEST(Hash, numbersAreOrderedByTheirSize) {
  EXPECT_TRUE(keyLessThan(2, 10));
  EXPECT_FALSE(keyLessThan(10, 2));
}

}  // namespace Mox::HashTest
