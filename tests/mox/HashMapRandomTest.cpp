// Hash maps against a plain map under long random sequences: kinds of keys, kinds of values, seeds.

#include "mox/HashMap.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/MapKeys.h"
#include "tests/support/MapModel.h"
#include "tests/support/MapValues.h"

namespace Mox::HashMapRandomTest {

using Test::MapModel;
using Test::Number;
using Test::Random;
using Test::Triple;

/// Keys all over, with neighbours and multiples of powers of two among them.
template <class Seed>
struct Spread {
  using Key = Number;
  static std::vector<Key> keys(std::size_t n, Random& random) {
    std::vector<Key> keys;
    for (std::uint64_t i = 0; i < n; ++i) {
      const std::array values{i, i << 20, i << 32, i << 44, random.bits() >> 1};
      keys.push_back({values[i % 5]});
    }
    return keys;
  }
};

/// Keys whose hashes are as great as hashes can be, so that they all want the last place.
template <class Seed>
struct Crowded {
  using Key = Number;
  static std::vector<Key> keys(std::size_t n, Random& /*random*/) {
    std::vector<Key> keys;
    for (std::uint64_t i = 0; i < n; ++i) keys.push_back({Seed::value().bits(~std::uint64_t{0} - 1 - i)});
    return keys;
  }
};

/// Keys of which a half wants one place in the middle, so that runs of other keys are pushed aside.
template <class Seed>
struct Clotted {
  using Key = Number;
  static std::vector<Key> keys(std::size_t n, Random& random) {
    std::vector<Key> keys;
    for (std::uint64_t i = 0; i < n; ++i) {
      keys.push_back({i % 2 == 0 ? Seed::value().bits((std::uint64_t{1} << 63) + i) : random.bits() >> 1});
    }
    return keys;
  }
};

/// Keys that the hash does not tell.
template <class K>
struct Counting {
  using Key = K;
  static std::vector<Key> keys(std::size_t n, Random& random) {
    std::vector<Key> keys;
    for (std::uint32_t i = 0; i < n; ++i) keys.push_back({i});
    random.shuffle(keys);
    return keys;
  }
};

struct Names {
  using Key = String;
  static std::vector<Key> keys(std::size_t n, Random& /*random*/) {
    std::vector<Key> keys{""};
    for (std::size_t i = 1; i < n; ++i) keys.emplace_back("Ethernet" + std::to_string(i));
    return keys;
  }
};

using Seed0 = FixedSeed<0>;
using Seed1 = FixedSeed<1>;
using SeedLast = FixedSeed<0xFFFF'FFFF>;

/// One kind of map under one load.
template <class K, class V, class S, std::size_t n>
struct Load {
  using Keys = K;
  using Map = HashMap<typename K::Key, V, S>;
  static constexpr std::size_t keys = n;
};

template <class L>
class HashMapRandom : public testing::Test {};

using Loads = testing::Types<
    Load<Spread<ProcessSeed>, std::uint64_t, ProcessSeed, 8>, Load<Spread<ProcessSeed>, Triple, ProcessSeed, 100>,
    Load<Spread<Seed0>, Test::SelfPointing, Seed0, 1500>, Load<Spread<Seed1>, String, Seed1, 700>,
    Load<Spread<SeedLast>, Ptr<Test::Numbered>, SeedLast, 4000>,
    Load<Crowded<ProcessSeed>, Test::SelfPointing, ProcessSeed, 300>, Load<Crowded<Seed1>, Triple, Seed1, 40>,
    Load<Clotted<ProcessSeed>, std::uint64_t, ProcessSeed, 400>, Load<Clotted<Seed0>, Test::SelfPointing, Seed0, 1000>,
    Load<Counting<Test::Tied>, std::uint64_t, ProcessSeed, 150>,
    Load<Counting<Test::Tied>, Test::SelfPointing, Seed1, 12>,
    Load<Counting<Test::TiedLast>, Ptr<Test::Numbered>, ProcessSeed, 150>,
    Load<Counting<Test::TiedLast>, Triple, Seed0, 6>, Load<Counting<Test::Grouped>, Test::SelfPointing, SeedLast, 200>,
    Load<Names, std::uint64_t, ProcessSeed, 800>, Load<Names, Test::SelfPointing, Seed1, 60>,
    Load<Names, String, SeedLast, 2500>>;
TYPED_TEST_SUITE(HashMapRandom, Loads);

TYPED_TEST(HashMapRandom, agreesWithPlainMap) {
  SCOPED_TRACE(Test::seedTrace());
  const std::int64_t living = Test::SelfPointing::living + Test::Numbered::living;
  {
    Random random;
    MapModel<typename TypeParam::Map> model(random, TypeParam::Keys::keys(TypeParam::keys, random));
    model.run(20'000);
    // The load must have done what it is here for.
    EXPECT_GE(model.peak(), TypeParam::keys * 9 / 10);
    EXPECT_GT(model.changedPasses(), 10U);
  }
  EXPECT_EQ(Test::SelfPointing::living + Test::Numbered::living, living);
  EXPECT_EQ(Test::SelfPointing::misplaced, 0U);
}

}  // namespace Mox::HashMapRandomTest
