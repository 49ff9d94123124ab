// Id maps against a plain map under long random sequences: sets of ids that make one form or the other, or both in
// turn, and kinds of values.

#include "mox/IdMap.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/support/MapKeys.h"
#include "tests/support/MapModel.h"
#include "tests/support/MapValues.h"

namespace Mox::IdMapRandomTest {

using Test::MapModel;
using Test::Random;
using Test::SmallId;
using Test::Triple;

SmallId smallId(std::size_t n) { return {static_cast<std::uint16_t>(n)}; }

/// The first ids.
struct Dense {
  static std::vector<SmallId> keys(std::size_t n, Random& /*random*/) {
    std::vector<SmallId> keys;
    for (std::size_t i = 0; i < n; ++i) keys.push_back(smallId(i));
    return keys;
  }
};

/// The last ids.
struct DenseLast {
  static std::vector<SmallId> keys(std::size_t n, Random& /*random*/) {
    std::vector<SmallId> keys;
    for (std::size_t i = 4096 - n; i < 4096; ++i) keys.push_back(smallId(i));
    return keys;
  }
};

/// Each id is 64 above the last, as long as there are such.
struct Interleaved {
  static std::vector<SmallId> keys(std::size_t n, Random& /*random*/) {
    std::vector<SmallId> keys;
    for (std::size_t i = 0; i < n; ++i) keys.push_back(smallId(i * 64 % 4096 + i / 64));
    return keys;
  }
};

/// Any ids, the least and the greatest among them.
struct Scattered {
  static std::vector<SmallId> keys(std::size_t n, Random& random) {
    std::vector<SmallId> keys = Dense::keys(4095, random);
    std::swap(keys.front(), keys.back());
    keys.pop_back();
    random.shuffle(keys);
    keys.resize(n - 2);
    keys.push_back(smallId(0));
    keys.push_back(smallId(4095));
    return keys;
  }
};

template <class K, class V, std::size_t n>
struct Load {
  using Keys = K;
  using Map = IdMap<SmallId, V>;
  static constexpr std::size_t keys = n;
};

template <class L>
class IdMapRandom : public testing::Test {};

using Loads =
    testing::Types<Load<Dense, std::uint64_t, 10>, Load<Dense, Triple, 500>, Load<Dense, Test::SelfPointing, 420>,
                   Load<Dense, Triple, 4096>, Load<DenseLast, String, 400>, Load<DenseLast, Test::SelfPointing, 64>,
                   Load<Interleaved, Triple, 64>, Load<Interleaved, Test::SelfPointing, 1500>,
                   Load<Interleaved, Ptr<Test::Numbered>, 1200>, Load<Scattered, std::uint64_t, 300>,
                   Load<Scattered, Test::SelfPointing, 1300>, Load<Scattered, Ptr<Test::Numbered>, 2500>,
                   Load<Scattered, Triple, 4095>>;
TYPED_TEST_SUITE(IdMapRandom, Loads);

TYPED_TEST(IdMapRandom, agreesWithPlainMap) {
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

}  // namespace Mox::IdMapRandomTest
