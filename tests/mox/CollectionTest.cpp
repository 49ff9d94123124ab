// Collections of values and of keys, over either kind of map.

#include "mox/Collection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/Allocations.h"
#include "tests/support/MapKeys.h"
#include "tests/support/MapKinds.h"
#include "tests/support/MapValues.h"

namespace Mox::CollectionTest {

using Test::FailingAllocations;
using Test::Number;
using Test::Numbered;
using Test::SmallId;

// A small number makes an IdMap, unless a seed asks for a HashMap.
static_assert(std::is_same_v<Map<SmallId, int>, IdMap<SmallId, int>>);
static_assert(std::is_same_v<Map<Number, int>, HashMap<Number, int>>);
static_assert(std::is_same_v<Map<String, int>, HashMap<String, int>>);
static_assert(std::is_same_v<Map<Number, int, FixedSeed<1>>, HashMap<Number, int, FixedSeed<1>>>);
static_assert(std::is_same_v<Map<SmallId, int, FixedSeed<1>>, HashMap<SmallId, int, FixedSeed<1>>>);
static_assert(std::is_empty_v<Present>);

using KeyKinds = testing::Types<Test::Numbers, Test::Names, Test::ManyIds>;

template <class Kind>
class ValueCollections : public Test::MapSuite<Kind> {
 protected:
  using Numbers = ValueCollection<typename Kind::Key, std::size_t>;
  using Pointers = ValueCollection<typename Kind::Key, Ptr<Numbered>>;

  void SetUp() override { Numbered::living = 0; }
  void TearDown() override { EXPECT_EQ(Numbered::living, 0); }
};
TYPED_TEST_SUITE(ValueCollections, KeyKinds, Test::MapKindNames);

template <class Kind>
class SetCollections : public Test::MapSuite<Kind> {
 protected:
  using Set = SetCollection<typename Kind::Key>;
};
TYPED_TEST_SUITE(SetCollections, KeyKinds, Test::MapKindNames);

TYPED_TEST(ValueCollections, isEmptyAtFirst) {
  const typename TestFixture::Numbers numbers;
  EXPECT_TRUE(numbers.empty());
  EXPECT_EQ(numbers.size(), 0U);
  EXPECT_FALSE(numbers.has(this->key(1)));
  EXPECT_EQ(numbers.find(this->key(1)), nullptr);
  EXPECT_EQ(numbers.begin(), numbers.end());
  EXPECT_EQ(numbers.memory(), 0U);
}

TYPED_TEST(ValueCollections, insertsAndOverwrites) {
  typename TestFixture::Numbers numbers;
  EXPECT_TRUE(numbers.insertOrAssign(this->key(1), 10));
  EXPECT_EQ(*numbers.find(this->key(1)), 10U);
  EXPECT_TRUE(numbers.insertOrAssign(this->key(1), 11));
  EXPECT_EQ(*numbers.find(this->key(1)), 11U);
  EXPECT_EQ(numbers.size(), 1U);
  EXPECT_TRUE(numbers.has(this->key(1)));
}

TYPED_TEST(ValueCollections, tellsEqualValue) {
  typename TestFixture::Numbers numbers;
  numbers.insertOrAssign(this->key(1), 10);
  EXPECT_FALSE(numbers.insertOrAssign(this->key(1), 10));
  EXPECT_EQ(*numbers.find(this->key(1)), 10U);
}

TYPED_TEST(ValueCollections, erasesMember) {
  typename TestFixture::Numbers numbers;
  numbers.insertOrAssign(this->key(1), 10);
  EXPECT_FALSE(numbers.erase(this->key(2)));
  EXPECT_TRUE(numbers.erase(this->key(1)));
  EXPECT_FALSE(numbers.erase(this->key(1)));
  EXPECT_FALSE(numbers.has(this->key(1)));
}

TYPED_TEST(ValueCollections, clears) {
  typename TestFixture::Numbers numbers;
  for (std::size_t i = 0; i < this->members; ++i) numbers.insertOrAssign(this->key(i), i);
  EXPECT_GT(numbers.memory(), 0U);
  numbers.clear();
  EXPECT_TRUE(numbers.empty());
  EXPECT_EQ(numbers.memory(), 0U);
}

TYPED_TEST(ValueCollections, showsEachMemberOnce) {
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

TYPED_TEST(ValueCollections, resumesAtKey) {
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

TYPED_TEST(ValueCollections, endsOverwrittenValueLast) {
  // The old value's end sees the new one in its place.
  class Observer : public PtrInterface {
   public:
    explicit Observer(std::function<void()> action) : action_(std::move(action)) {}
    ~Observer() override { action_(); }

   private:
    std::function<void()> action_;
  };
  ValueCollection<typename TestFixture::Key, Ptr<PtrInterface>> pointers;
  const Ptr<PtrInterface> next = makePtr<Numbered>(1U);
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

TYPED_TEST(ValueCollections, comparesBeforeItOverwrites) {
  typename TestFixture::Pointers pointers;
  const Ptr<Numbered> object = makePtr<Numbered>(1U);
  EXPECT_TRUE(pointers.insertOrAssign(this->key(1), object));
  EXPECT_EQ(object->references(), 2U);
  EXPECT_FALSE(pointers.insertOrAssign(this->key(1), object));
  EXPECT_EQ(object->references(), 2U);
  EXPECT_TRUE(pointers.insertOrAssign(this->key(1), nullptr));
  EXPECT_EQ(object->references(), 1U);
}

TYPED_TEST(ValueCollections, exchangeHandsOverwrittenValueOut) {
  typename TestFixture::Pointers pointers;
  const Ptr<Numbered> first = makePtr<Numbered>(1U);
  const Ptr<Numbered> second = makePtr<Numbered>(2U);
  Ptr<Numbered> value = first;
  EXPECT_TRUE(pointers.exchange(this->key(1), value));
  EXPECT_EQ(*pointers.find(this->key(1)), first);
  value = second;
  EXPECT_TRUE(pointers.exchange(this->key(1), value));
  EXPECT_EQ(value, first);
  EXPECT_EQ(*pointers.find(this->key(1)), second);
  EXPECT_EQ(pointers.size(), 1U);
}

TYPED_TEST(ValueCollections, exchangeTellsEqualValue) {
  typename TestFixture::Pointers pointers;
  Ptr<Numbered> value = makePtr<Numbered>(1U);
  pointers.insertOrAssign(this->key(1), value);
  EXPECT_FALSE(pointers.exchange(this->key(1), value));
  EXPECT_EQ(*pointers.find(this->key(1)), value);
}

TYPED_TEST(ValueCollections, takeHandsValueOut) {
  typename TestFixture::Pointers pointers;
  const Ptr<Numbered> object = makePtr<Numbered>(1U);
  pointers.insertOrAssign(this->key(1), object);
  EXPECT_EQ(pointers.take(this->key(2)), std::nullopt);
  EXPECT_EQ(pointers.take(this->key(1)), object);
  EXPECT_EQ(pointers.take(this->key(1)), std::nullopt);
  EXPECT_TRUE(pointers.empty());
  EXPECT_EQ(object->references(), 1U);
}

TYPED_TEST(ValueCollections, isUnchangedWhereMemoryLacks) {
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

TYPED_TEST(SetCollections, tellsWhetherKeyIsThere) {
  typename TestFixture::Set set;
  EXPECT_TRUE(set.insertOrAssign(this->key(1), {}));
  EXPECT_FALSE(set.insertOrAssign(this->key(1), {}));
  EXPECT_TRUE(set.has(this->key(1)));
  EXPECT_FALSE(set.has(this->key(2)));
  EXPECT_TRUE(set.erase(this->key(1)));
  EXPECT_FALSE(set.has(this->key(1)));
}

TYPED_TEST(SetCollections, showsEachKeyOnce) {
  typename TestFixture::Set set;
  for (std::size_t i = 0; i < this->members; ++i) set.insertOrAssign(this->key(i), {});
  std::size_t steps = 0;
  for (auto i = set.begin(); i; ++i) {
    EXPECT_TRUE(set.has(i.key()));
    ++steps;
  }
  EXPECT_EQ(steps, this->members);
}

TEST(ValueCollections, seedOfTheirOwnMakesOrderThatOfItsHash) {
  ValueCollection<SmallId, int, FixedSeed<1>> hashed;
  ValueCollection<SmallId, int> ascending;
  for (std::uint16_t id = 0; id < 100; ++id) {
    hashed.insertOrAssign({id}, id);
    ascending.insertOrAssign({id}, id);
  }
  std::vector<std::uint64_t> hashes;
  for (const auto& [id, value] : hashed) hashes.push_back(FixedSeed<1>::value().hash(id.value));
  EXPECT_EQ(hashes.size(), 100U);
  EXPECT_TRUE(std::is_sorted(hashes.begin(), hashes.end()));
  int expected = 0;
  for (const auto& [id, value] : ascending) EXPECT_EQ(id.value, expected++);
}

}  // namespace Mox::CollectionTest
