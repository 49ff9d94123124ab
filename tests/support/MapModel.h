// A map beside a plain one that must agree with it, whatever happens to both: how the tests of the maps hunt for
// sequences of operations that nobody thought of.

#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "mox/HashMap.h"
#include "mox/IdMap.h"
#include "tests/support/MapValues.h"
#include "tests/support/Random.h"

namespace Test {

/// The order in which a map promises to iterate.
template <class Map>
struct PassOrder;
template <class K, class V, class Seed>
struct PassOrder<Mox::HashMap<K, V, Seed>> {
  [[nodiscard]] static std::uint64_t hash(const K& key) { return Seed::value().hash(Mox::KeyTraits<K>::toBits(key)); }
  [[nodiscard]] bool operator()(const K& a, const K& b) const {
    return std::tuple(hash(a), std::cref(a)) < std::tuple(hash(b), std::cref(b));
  }
};
template <class K, class V>
struct PassOrder<Mox::IdMap<K, V>> {
  [[nodiscard]] bool operator()(const K& a, const K& b) const {
    return Mox::KeyTraits<K>::toId(a) < Mox::KeyTraits<K>::toId(b);
  }
};

template <class Map>
class MapModel {
 public:
  using Key = typename Map::Key;
  using Value = typename Map::Value;

  /// The keys that come and go.
  MapModel(Random& random, std::vector<Key> keys) : random_(random), keys_(std::move(keys)) {}

  /// Does that many random operations, in phases between which the number of members rises and falls.
  void run(std::size_t operations) {
    for (std::size_t i = 0; i < operations && !testing::Test::HasFailure(); ++i) {
      if (i % phase == 0) {
        aimAtSize();
        check();
      }
      step();
      ASSERT_EQ(map_.size(), reference_.size());
    }
    check();
  }

  /// Compares everything that both show.
  void check() {
    ASSERT_EQ(map_.empty(), reference_.empty());
    auto expected = reference_.begin();
    for (const auto& [key, value] : map_) {
      ASSERT_NE(expected, reference_.end());
      ASSERT_EQ(key, expected->first);
      ASSERT_EQ(numberOf(value), expected->second);
      ++expected;
    }
    ASSERT_EQ(expected, reference_.end());
    for (const Key& key : keys_) find(key);
  }

  /// The greatest number of members so far, and how many of the passes were changed while they went on.
  [[nodiscard]] std::size_t peak() const { return peak_; }
  [[nodiscard]] std::size_t changedPasses() const { return changedPasses_; }
  [[nodiscard]] const Map& map() const { return map_; }

 private:
  using Reference = std::map<Key, std::uint64_t, PassOrder<Map>>;
  using Iterator = typename Map::Iterator;

  static constexpr std::size_t phase = 800;
  static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

  [[nodiscard]] static std::uint64_t numberOf(const Value& value) { return Values<Value>::number(value); }
  [[nodiscard]] const Key& anyKey() { return keys_[random_.below(keys_.size())]; }

  void aimAtSize() {
    static constexpr std::array shares{0U, 2U, 10U, 50U, 100U};
    aim_ = keys_.size() * shares[random_.below(shares.size())] / 100;
  }

  void step() {
    const std::size_t choice = random_.below(1000);
    if (choice < 500) {
      change();
    } else if (choice < 700) {
      find(anyKey());
    } else if (choice < 800) {
      overwrite(anyKey());
    } else if (choice < 810) {
      burst();
    } else if (choice < 814) {
      pass(map_.begin(), reference_.begin(), unlimited);
    } else if (choice < 900) {
      resumingPass();
    } else if (choice < 901) {
      clear();
    } else {
      take(anyKey());
    }
  }

  /// Inserts or removes, mostly towards the size that is aimed at, and mostly a key with which something happens.
  void change() {
    const bool isTowards = random_.percent(75);
    const bool isEffective = random_.percent(80);
    if ((reference_.size() < aim_) == isTowards) {
      insert(isEffective ? absentKey() : anyKey());
    } else {
      erase(isEffective ? presentKey() : anyKey());
    }
  }

  /// Changes so many members at once that the map grows or shrinks.
  void burst() {
    aimAtSize();
    for (std::size_t n = random_.below(2 * keys_.size()) + 1; n > 0 && reference_.size() < aim_; --n)
      insert(absentKey());
    for (std::size_t n = random_.below(2 * keys_.size()) + 1; n > 0 && reference_.size() > aim_; --n)
      erase(presentKey());
  }

  /// A member's key, or any while there are none.
  [[nodiscard]] Key presentKey() {
    if (reference_.empty()) return anyKey();
    const auto found = reference_.lower_bound(anyKey());
    return found == reference_.end() ? reference_.begin()->first : found->first;
  }

  /// A key without a member, or any while there are all.
  [[nodiscard]] Key absentKey() {
    std::size_t place = random_.below(keys_.size());
    for (std::size_t n = keys_.size(); n > 1 && reference_.contains(keys_[place]); --n) {
      place = (place + 1) % keys_.size();
    }
    return keys_[place];
  }

  void insert(const Key& key) {
    const std::uint64_t number = ++lastNumber_;
    const auto [place, isNew] = map_.insert(key, Values<Value>::make(number));
    const auto [expected, isNewExpected] = reference_.emplace(key, number);
    ASSERT_EQ(isNew, isNewExpected) << key;
    ASSERT_EQ(numberOf(*place), expected->second) << key;
    ASSERT_EQ(place, map_.find(key)) << key;
    peak_ = std::max(peak_, map_.size());
  }

  void erase(const Key& key) {
    stayers_.erase(key);
    ASSERT_EQ(map_.erase(key), reference_.erase(key) != 0) << key;
  }

  void take(const Key& key) {
    stayers_.erase(key);
    const auto expected = reference_.extract(key);
    const std::optional<Value> taken = map_.take(key);
    ASSERT_EQ(taken.has_value(), !expected.empty()) << key;
    if (taken) {
      ASSERT_EQ(numberOf(*taken), expected.mapped()) << key;
    }
  }

  void overwrite(const Key& key) {
    Value* const place = map_.find(key);
    if (place == nullptr) return;
    const std::uint64_t number = ++lastNumber_;
    *place = Values<Value>::make(number);
    reference_.at(key) = number;
  }

  void find(const Key& key) {
    const Value* const found = std::as_const(map_).find(key);
    const auto expected = reference_.find(key);
    ASSERT_EQ(found != nullptr, expected != reference_.end()) << key;
    if (found != nullptr) {
      ASSERT_EQ(numberOf(*found), expected->second) << key;
    }
  }

  void clear() {
    stayers_.clear();
    map_.clear();
    reference_.clear();
  }

  /// A pass in slices: each goes on at the last key of the slice before, which may be gone by then.
  void resumingPass() {
    Key bookmark = anyKey();
    for (std::size_t slices = random_.below(4) + 1; slices > 0; --slices) {
      const std::optional<Key> last =
          pass(map_.startAtHash(bookmark), reference_.lower_bound(bookmark), random_.below(8) + 1);
      if (!last) return;
      bookmark = *last;
      if (random_.percent(50)) erase(bookmark);
      if (random_.percent(10)) burst();
    }
  }

  /// Visits up to `limit` members, with changes in between; returns the key of the one where it stopped.
  std::optional<Key> pass(Iterator i, typename Reference::const_iterator expected, std::size_t limit) {
    stayers_.clear();
    if (limit == unlimited) {
      for (auto member = expected; member != reference_.end(); ++member) stayers_.insert(member->first);
    }
    const bool isChanging = random_.percent(80);
    bool isChanged = false;
    std::set<Key, PassOrder<Map>> visited;
    while (expected != reference_.end()) {
      if (!i || i.key() != expected->first) {
        ADD_FAILURE() << "not at " << expected->first;
        return std::nullopt;
      }
      EXPECT_FALSE(i.currNodeMaybeStale());
      EXPECT_EQ(numberOf(i.value()), expected->second);
      EXPECT_TRUE(visited.insert(i.key()).second) << i.key() << " visited twice";
      const Key at = i.key();
      if (isChanging) changeDuringPass(at);
      isChanged = isChanged || i.currNodeMaybeStale();
      EXPECT_EQ(i.key(), at);
      if (!i.currNodeMaybeStale()) {
        EXPECT_EQ(&i.value(), map_.find(at));
      }
      if (visited.size() == limit) return at;
      i.advance();
      expected = reference_.upper_bound(at);
    }
    EXPECT_FALSE(i);
    EXPECT_EQ(i, map_.end());
    for (const Key& key : stayers_) EXPECT_TRUE(visited.contains(key)) << key << " not visited";
    changedPasses_ += isChanged ? 1 : 0;
    return std::nullopt;
  }

  void changeDuringPass(const Key& current) {
    switch (random_.below(20)) {
      case 0:
      case 1:
        return erase(current);
      case 2: {  // the next one
        const auto next = reference_.upper_bound(current);
        if (next != reference_.end()) erase(Key(next->first));
        return;
      }
      case 3: {  // the one before
        const auto next = reference_.lower_bound(current);
        if (next != reference_.begin()) erase(Key(std::prev(next)->first));
        return;
      }
      case 4:  // the current one is removed and comes back
        erase(current);
        return insert(current);
      case 5:
      case 6:
      case 7:
        return change();
      case 8:
        return overwrite(anyKey());
      case 9:
        if (random_.percent(3)) clear();
        return;
      case 10:
        if (random_.percent(5)) burst();
        return;
      default:
        return;
    }
  }

  Random& random_;
  std::vector<Key> keys_;
  Map map_;
  Reference reference_;
  /// Those members that were there when the pass began, and have been since.
  std::set<Key, PassOrder<Map>> stayers_;
  std::uint64_t lastNumber_ = 0;
  std::size_t aim_ = 0;
  std::size_t peak_ = 0;
  std::size_t changedPasses_ = 0;
};

}  // namespace Test
