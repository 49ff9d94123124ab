// The kinds of maps that share their promises, for tests that hold for each of them.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "mox/HashMap.h"
#include "mox/IdMap.h"
#include "tests/support/MapKeys.h"
#include "tests/support/MapValues.h"

namespace Test {

// Each kind has keys by number and tells how many members make it what it is.

struct Numbers {
  using Key = Number;
  template <class V>
  using Map = Mox::HashMap<Key, V>;
  static constexpr std::size_t members = 200;
  static Key key(std::size_t n) { return {n}; }
};
struct Names {
  using Key = Mox::String;
  template <class V>
  using Map = Mox::HashMap<Key, V, Mox::FixedSeed<7>>;
  static constexpr std::size_t members = 200;
  static Key key(std::size_t n) { return "name" + std::to_string(n); }
};
struct Ties {
  using Key = Tied;
  template <class V>
  using Map = Mox::HashMap<Key, V>;
  static constexpr std::size_t members = 70;
  static Key key(std::size_t n) { return {static_cast<std::uint32_t>(n)}; }
};
/// Few ids, which make a block.
struct FewIds {
  using Key = SmallId;
  template <class V>
  using Map = Mox::IdMap<Key, V>;
  static constexpr std::size_t members = 40;
  static Key key(std::size_t n) { return {static_cast<std::uint16_t>(n * 100)}; }
};
/// Many dense ids, which make pages.
struct ManyIds {
  using Key = SmallId;
  template <class V>
  using Map = Mox::IdMap<Key, V>;
  static constexpr std::size_t members = 700;
  static Key key(std::size_t n) { return {static_cast<std::uint16_t>(n + 1)}; }
};

using MapKinds = testing::Types<Numbers, Names, Ties, FewIds, ManyIds>;

struct MapKindNames {
  template <class Kind>
  static std::string GetName(int /*index*/) {  // NOLINT(readability-identifier-naming): GoogleTest calls it so.
    if constexpr (std::is_same_v<Kind, Numbers>) return "Numbers";
    if constexpr (std::is_same_v<Kind, Names>) return "Names";
    if constexpr (std::is_same_v<Kind, Ties>) return "Ties";
    if constexpr (std::is_same_v<Kind, FewIds>) return "FewIds";
    if constexpr (std::is_same_v<Kind, ManyIds>) return "ManyIds";
  }
};

/// The suite of such tests: what they say of a map in short.
template <class K>
class MapSuite : public testing::Test {
 protected:
  using Kind = K;
  using Key = typename Kind::Key;
  template <class V>
  using MapOf = typename Kind::template Map<V>;
  using Map = MapOf<std::uint64_t>;

  static constexpr std::size_t members = Kind::members;
  [[nodiscard]] static Key key(std::size_t n) { return Kind::key(n); }

  /// The members 0 to n - 1, each with its number as its value.
  template <class M>
  static void fill(M& map, std::size_t n = members) {
    for (std::size_t i = 0; i < n; ++i) map.insert(key(i), Values<typename M::Value>::make(i));
  }
  /// The keys from this position on.
  template <class Iterator>
  [[nodiscard]] static std::vector<Key> keysFrom(Iterator i) {
    std::vector<Key> keys;
    for (; i; ++i) keys.push_back(i.key());
    return keys;
  }
  template <class M>
  [[nodiscard]] static std::vector<Key> keysOf(const M& map) {
    return keysFrom(map.begin());
  }
  /// All the keys of `members`, in the order of a pass.
  [[nodiscard]] static std::vector<Key> keysInOrder() {
    Map map;
    fill(map);
    return keysOf(map);
  }
};

}  // namespace Test
