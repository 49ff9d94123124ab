// The collections that entities are made of, over either kind of map.

#include "mox/Collection.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "tests/support/Allocations.h"
#include "tests/support/MapKeys.h"
#include "tests/support/MapValues.h"

namespace Mox {
namespace {

using Test::FailingAllocations;
using Test::Number;
using Test::Numbered;
using Test::SmallId;

// A small number makes an IdMap, unless a seed asks for a HashMap.
static_assert(std::is_same_v<Map<SmallId, int>, IdMap<SmallId, int>>);
static_assert(std::is_same_v<Map<Number, int>, HashMap<Number, int>>);
static_assert(std::is_same_v<Map<String, int>, HashMap<String, int>>);
static_assert(std::is_same_v<Map<SmallId, int, FixedSeed<1>>, HashMap<SmallId, int, FixedSeed<1>>>);
// A key of a set takes no more than its hash and a flag.
static_assert(std::is_empty_v<Present>);

/// An entity that can do something at its end.
class Lamp : public Entity {
 public:
  explicit Lamp(std::function<void(Lamp&)> atEnd = {}) : atEnd_(std::move(atEnd)) { ++living; }
  ~Lamp() override {
    --living;
    if (atEnd_) atEnd_(*this);
  }

  [[nodiscard]] unsigned watt() const { return watt_; }
  void wattIs(unsigned v) { watt_ = v; }

  static inline int living = 0;

 private:
  unsigned watt_ = 0;
  std::function<void(Lamp&)> atEnd_;
};

class Owner : public Notifier {};

struct HashKeys {
  using Key = Number;
  using Seed = FixedSeed<5>;
  static Key key(std::size_t n) { return {n << 32}; }
};
struct NameKeys {
  using Key = String;
  using Seed = ProcessSeed;
  static Key key(std::size_t n) { return std::to_string(n); }
};
struct IdKeys {
  using Key = SmallId;
  using Seed = ProcessSeed;
  static Key key(std::size_t n) { return {static_cast<std::uint16_t>(n)}; }
};

template <class Keys>
class Collection : public testing::Test {
 protected:
  using Key = typename Keys::Key;
  using Numbers = ValueCollection<Key, std::size_t, typename Keys::Seed>;
  using Pointers = ValueCollection<Key, Ptr<Numbered>, typename Keys::Seed>;
  using Lamps = EntityCollection<Key, Lamp, typename Keys::Seed>;
  using Set = SetCollection<Key, typename Keys::Seed>;

  static constexpr std::size_t members = 500;
  [[nodiscard]] static Key key(std::size_t n) { return Keys::key(n); }

  void SetUp() override {
    Lamp::living = 0;
    Numbered::living = 0;
  }
  void TearDown() override {
    EXPECT_EQ(Lamp::living, 0);
    EXPECT_EQ(Numbered::living, 0);
  }
};
using KeyKinds = testing::Types<HashKeys, NameKeys, IdKeys>;
TYPED_TEST_SUITE(Collection, KeyKinds);

// --- values ---

TYPED_TEST(Collection, ofValuesIsEmptyAtFirst) {
  const typename TestFixture::Numbers numbers;
  EXPECT_TRUE(numbers.empty());
  EXPECT_EQ(numbers.size(), 0U);
  EXPECT_FALSE(numbers.has(this->key(1)));
  EXPECT_EQ(numbers.find(this->key(1)), nullptr);
  EXPECT_EQ(numbers.begin(), numbers.end());
  EXPECT_EQ(numbers.memory(), 0U);
}

TYPED_TEST(Collection, ofValuesInsertsAndOverwrites) {
  typename TestFixture::Numbers numbers;
  EXPECT_TRUE(numbers.insertOrAssign(this->key(1), 10));
  EXPECT_EQ(*numbers.find(this->key(1)), 10U);
  EXPECT_TRUE(numbers.insertOrAssign(this->key(1), 11));
  EXPECT_EQ(*numbers.find(this->key(1)), 11U);
  EXPECT_EQ(numbers.size(), 1U);
  EXPECT_TRUE(numbers.has(this->key(1)));
}

TYPED_TEST(Collection, ofValuesTellsEqualValue) {
  typename TestFixture::Numbers numbers;
  numbers.insertOrAssign(this->key(1), 10);
  EXPECT_FALSE(numbers.insertOrAssign(this->key(1), 10));
  EXPECT_EQ(*numbers.find(this->key(1)), 10U);
}

TYPED_TEST(Collection, ofValuesErasesMember) {
  typename TestFixture::Numbers numbers;
  numbers.insertOrAssign(this->key(1), 10);
  EXPECT_FALSE(numbers.erase(this->key(2)));
  EXPECT_TRUE(numbers.erase(this->key(1)));
  EXPECT_FALSE(numbers.erase(this->key(1)));
  EXPECT_FALSE(numbers.has(this->key(1)));
}

TYPED_TEST(Collection, ofValuesClears) {
  typename TestFixture::Numbers numbers;
  for (std::size_t i = 0; i < this->members; ++i) numbers.insertOrAssign(this->key(i), i);
  EXPECT_GT(numbers.memory(), 0U);
  numbers.clear();
  EXPECT_TRUE(numbers.empty());
  EXPECT_EQ(numbers.memory(), 0U);
}

TYPED_TEST(Collection, ofValuesShowsEachMemberOnce) {
  typename TestFixture::Numbers numbers;
  for (std::size_t i = 0; i < this->members; ++i) numbers.insertOrAssign(this->key(i), i);
  std::vector<bool> isSeen(this->members);
  for (const auto& [key, value] : numbers) {
    EXPECT_EQ(key, this->key(value));
    EXPECT_FALSE(isSeen[value]);
    isSeen[value] = true;
  }
  EXPECT_EQ(isSeen, std::vector<bool>(this->members, true));
}

TYPED_TEST(Collection, ofValuesResumesAtKey) {
  typename TestFixture::Numbers numbers;
  for (std::size_t i = 0; i < this->members; ++i) numbers.insertOrAssign(this->key(i), i);
  auto i = numbers.begin();
  for (int n = 0; n < 100; ++n) i.advance();
  const auto bookmark = i.key();
  i.advance();
  const auto next = i.key();
  EXPECT_EQ(numbers.startAtHash(bookmark).key(), bookmark);
  numbers.erase(bookmark);
  EXPECT_EQ(numbers.startAtHash(bookmark).key(), next);
}

TYPED_TEST(Collection, ofValuesEndsOverwrittenValueLast) {
  // The old value's end sees the new one in its place.
  class Observer : public PtrInterface {
   public:
    explicit Observer(std::function<void()> action) : action_(std::move(action)) {}
    ~Observer() override { action_(); }

   private:
    std::function<void()> action_;
  };
  ValueCollection<typename TestFixture::Key, Ptr<PtrInterface>, typename TypeParam::Seed> pointers;
  const Ptr<PtrInterface> next = makePtr<Numbered>(1);
  int ends = 0;
  pointers.insertOrAssign(this->key(1), makePtr<Observer>([&] {
                            ++ends;
                            EXPECT_EQ(*pointers.find(this->key(1)), next);
                            EXPECT_EQ(pointers.size(), 1U);
                            pointers.erase(this->key(1));
                          }));
  EXPECT_TRUE(pointers.insertOrAssign(this->key(1), next));
  EXPECT_EQ(ends, 1);
  EXPECT_TRUE(pointers.empty());
}

TYPED_TEST(Collection, ofValuesComparesBeforeItOverwrites) {
  typename TestFixture::Pointers pointers;
  const Ptr<Numbered> object = makePtr<Numbered>(1);
  EXPECT_TRUE(pointers.insertOrAssign(this->key(1), object));
  EXPECT_EQ(object->references(), 2U);
  EXPECT_FALSE(pointers.insertOrAssign(this->key(1), object));
  EXPECT_EQ(object->references(), 2U);
  EXPECT_TRUE(pointers.insertOrAssign(this->key(1), nullptr));
  EXPECT_EQ(object->references(), 1U);
}

TYPED_TEST(Collection, ofValuesIsUnchangedWhereMemoryLacks) {
  typename TestFixture::Numbers numbers;
  int failures = 0;
  for (std::size_t i = 0; i < this->members; ++i) {
    const auto key = this->key(i);
    try {
      const FailingAllocations failing;
      numbers.insertOrAssign(key, i);
    } catch (const std::bad_alloc&) {
      ++failures;
      ASSERT_EQ(numbers.size(), i);
      ASSERT_FALSE(numbers.has(key));
      numbers.insertOrAssign(key, i);
    }
    ASSERT_EQ(*numbers.find(key), i);
  }
  EXPECT_GT(failures, 0);
}

// --- sets ---

TYPED_TEST(Collection, ofKeysTellsWhetherKeyIsThere) {
  typename TestFixture::Set set;
  EXPECT_TRUE(set.insertOrAssign(this->key(1), {}));
  EXPECT_FALSE(set.insertOrAssign(this->key(1), {}));
  EXPECT_TRUE(set.has(this->key(1)));
  EXPECT_FALSE(set.has(this->key(2)));
  EXPECT_TRUE(set.erase(this->key(1)));
  EXPECT_FALSE(set.has(this->key(1)));
}

TYPED_TEST(Collection, ofKeysShowsEachKeyOnce) {
  typename TestFixture::Set set;
  for (std::size_t i = 0; i < this->members; ++i) set.insertOrAssign(this->key(i), {});
  std::size_t steps = 0;
  for (auto i = set.begin(); i; ++i) {
    EXPECT_TRUE(set.has(i.key()));
    ++steps;
  }
  EXPECT_EQ(steps, this->members);
}

// --- entities ---

TYPED_TEST(Collection, ofEntitiesIsEmptyAtFirst) {
  const typename TestFixture::Lamps lamps;
  EXPECT_TRUE(lamps.empty());
  EXPECT_EQ(lamps.size(), 0U);
  EXPECT_FALSE(lamps.has(this->key(1)));
  EXPECT_EQ(lamps.find(this->key(1)), nullptr);
  EXPECT_EQ(lamps.begin(), lamps.end());
}

TYPED_TEST(Collection, ofEntitiesOwnsItsMembers) {
  typename TestFixture::Lamps lamps;
  EXPECT_TRUE(lamps.insert(this->key(1), makePtr<Lamp>()));
  EXPECT_EQ(Lamp::living, 1);
  EXPECT_TRUE(lamps.has(this->key(1)));
  lamps.find(this->key(1))->wattIs(7);
  EXPECT_EQ(std::as_const(lamps).find(this->key(1))->watt(), 7U);
  lamps.clear();
  EXPECT_EQ(Lamp::living, 0);
}

TYPED_TEST(Collection, ofEntitiesGivesConstMembersWhereItIsConst) {
  using All = typename TestFixture::Lamps;
  static_assert(std::is_same_v<decltype(std::declval<const All&>().find(this->key(1))), const Lamp*>);
  static_assert(std::is_same_v<decltype(std::declval<All&>().find(this->key(1))), Lamp*>);
  static_assert(std::is_same_v<decltype(std::declval<All&>().begin().value()), const Lamp&>);
}

TYPED_TEST(Collection, ofEntitiesKeepsMemberThatIsThere) {
  typename TestFixture::Lamps lamps;
  const Ptr<Lamp> lamp = makePtr<Lamp>();
  lamps.insert(this->key(1), lamp);
  EXPECT_FALSE(lamps.insert(this->key(1), makePtr<Lamp>()));
  EXPECT_EQ(lamps.find(this->key(1)), lamp.get());
  EXPECT_EQ(Lamp::living, 1);
}

TYPED_TEST(Collection, ofEntitiesHandsMemberOut) {
  typename TestFixture::Lamps lamps;
  Lamp* const lamp = makePtr<Lamp>().release();
  lamps.insert(this->key(1), Ptr<Lamp>::adopt(lamp));
  const Ptr<Lamp> taken = lamps.take(this->key(1));
  EXPECT_EQ(taken, lamp);
  EXPECT_EQ(taken->references(), 1U);
  EXPECT_TRUE(lamps.empty());
  EXPECT_EQ(lamps.take(this->key(1)), nullptr);
}

TYPED_TEST(Collection, ofEntitiesLeavesTakenMemberWithoutParent) {
  Owner owner;
  typename TestFixture::Lamps lamps;
  lamps.insert(this->key(1), makePtr<Lamp>());
  lamps.find(this->key(1))->parentIs(&owner);
  EXPECT_EQ(lamps.take(this->key(1))->parent(), nullptr);
}

TYPED_TEST(Collection, ofEntitiesLeavesClearedMembersWithoutParent) {
  Owner owner;
  std::vector<Ptr<Lamp>> kept;
  int ends = 0;
  {
    typename TestFixture::Lamps lamps;
    for (std::size_t i = 0; i < this->members; ++i) {
      lamps.insert(this->key(i), makePtr<Lamp>([&ends](Lamp& lamp) {
                     EXPECT_EQ(lamp.parent(), nullptr);
                     ++ends;
                   }));
      lamps.find(this->key(i))->parentIs(&owner);
      if (i % 2 == 0) kept.emplace_back(lamps.find(this->key(i)));
    }
  }
  EXPECT_EQ(ends, static_cast<int>(this->members / 2));
  for (const Ptr<Lamp>& lamp : kept) EXPECT_EQ(lamp->parent(), nullptr);
}

TYPED_TEST(Collection, ofEntitiesIsEmptyWhenClearedMembersEnd) {
  typename TestFixture::Lamps lamps;
  for (std::size_t i = 0; i < this->members; ++i) {
    lamps.insert(this->key(i), makePtr<Lamp>([this, &lamps, i](Lamp& /*lamp*/) {
                   EXPECT_FALSE(lamps.has(this->key(i)));
                   EXPECT_EQ(lamps.take(this->key(i)), nullptr);
                   EXPECT_TRUE(lamps.empty());
                   lamps.clear();
                 }));
  }
  lamps.clear();
  EXPECT_EQ(Lamp::living, 0);
}

TYPED_TEST(Collection, ofEntitiesTakesMembersThatAreInsertedWhileOthersEnd) {
  typename TestFixture::Lamps lamps;
  for (std::size_t i = 0; i < this->members; ++i) {
    lamps.insert(this->key(i),
                 makePtr<Lamp>([this, &lamps, i](Lamp& /*lamp*/) { lamps.insert(this->key(i), makePtr<Lamp>()); }));
  }
  lamps.clear();
  EXPECT_EQ(lamps.size(), this->members);
  EXPECT_EQ(Lamp::living, static_cast<int>(this->members));
}

TYPED_TEST(Collection, ofEntitiesShowsEachMemberOnce) {
  typename TestFixture::Lamps lamps;
  for (std::size_t i = 0; i < this->members; ++i) {
    lamps.insert(this->key(i), makePtr<Lamp>());
    lamps.find(this->key(i))->wattIs(static_cast<unsigned>(i));
  }
  std::vector<bool> isSeen(this->members);
  for (const auto& [key, lamp] : lamps) {
    EXPECT_EQ(key, this->key(lamp.watt()));
    isSeen[lamp.watt()] = true;
  }
  EXPECT_EQ(isSeen, std::vector<bool>(this->members, true));
}

TYPED_TEST(Collection, ofEntitiesMayChangeDuringPass) {
  typename TestFixture::Lamps lamps;
  for (std::size_t i = 0; i < this->members; ++i) lamps.insert(this->key(i), makePtr<Lamp>());
  std::vector<typename TestFixture::Key> keys;
  for (auto i = lamps.begin(); i; i++) keys.push_back(i.key());
  // Each visited member goes, and its next one with it.
  std::size_t place = 0;
  for (auto i = lamps.begin(); i; ++i) {
    ASSERT_EQ(i.key(), keys[place]);
    EXPECT_FALSE(i.currNodeMaybeStale());
    lamps.take(keys[place]);
    EXPECT_TRUE(i.currNodeMaybeStale());
    if (place + 1 < keys.size()) lamps.take(keys[place + 1]);
    place += 2;
  }
  EXPECT_TRUE(lamps.empty());
  EXPECT_EQ(place, keys.size());
}

TYPED_TEST(Collection, ofEntitiesKeepsMemberOfPassWhileSomebodyOwnsIt) {
  typename TestFixture::Lamps lamps;
  for (std::size_t i = 0; i < 10; ++i) lamps.insert(this->key(i), makePtr<Lamp>());
  const auto i = lamps.begin();
  const auto& [key, lamp] = *i;
  const Ptr<const Lamp> kept(&lamp);
  lamps.take(key);
  EXPECT_EQ(lamp.watt(), 0U);
  EXPECT_EQ(i.key(), key);
  EXPECT_EQ(kept->references(), 1U);
}

TYPED_TEST(Collection, ofEntitiesResumesAtKey) {
  typename TestFixture::Lamps lamps;
  for (std::size_t i = 0; i < this->members; ++i) lamps.insert(this->key(i), makePtr<Lamp>());
  auto i = lamps.begin();
  for (int n = 0; n < 100; ++n) ++i;
  const auto bookmark = i.key();
  ++i;
  const auto next = i.key();
  EXPECT_EQ(lamps.startAtHash(bookmark).key(), bookmark);
  lamps.take(bookmark);
  EXPECT_EQ(lamps.startAtHash(bookmark).key(), next);
}

TYPED_TEST(Collection, ofEntitiesTakesCountedObjectsThatHaveNoParent) {
  EntityCollection<typename TestFixture::Key, Numbered, typename TypeParam::Seed> objects;
  objects.insert(this->key(1), makePtr<Numbered>(5));
  EXPECT_EQ(objects.find(this->key(1))->number(), 5U);
  EXPECT_EQ(objects.take(this->key(1))->number(), 5U);
  objects.insert(this->key(2), makePtr<Numbered>(6));
}

TYPED_TEST(Collection, ofEntitiesIsUnchangedWhereMemoryLacks) {
  typename TestFixture::Lamps lamps;
  int failures = 0;
  for (std::size_t i = 0; i < this->members; ++i) {
    const auto key = this->key(i);
    Ptr<Lamp> lamp = makePtr<Lamp>();
    try {
      const FailingAllocations failing;
      lamps.insert(key, lamp);
    } catch (const std::bad_alloc&) {
      ++failures;
      ASSERT_EQ(lamps.size(), i);
      ASSERT_EQ(lamp->references(), 1U);
      lamps.insert(key, lamp);
    }
    ASSERT_EQ(lamps.find(key), lamp.get());
  }
  EXPECT_GT(failures, 0);
  EXPECT_EQ(Lamp::living, static_cast<int>(this->members));
}

}  // namespace
}  // namespace Mox
