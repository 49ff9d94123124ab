// Collections of entities, over either kind of map.

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "mox/Collection.h"
#include "mox/Entity.h"
#include "tests/support/Allocations.h"
#include "tests/support/MapKinds.h"
#include "tests/support/MapValues.h"

namespace Mox::CollectionOfEntitiesTest {

using Test::FailingAllocations;
using Test::Numbered;

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

template <class Kind>
class EntityCollections : public Test::MapSuite<Kind> {
 protected:
  using Lamps = EntityCollection<typename Kind::Key, Lamp>;

  void SetUp() override {
    Lamp::living = 0;
    Numbered::living = 0;
  }
  void TearDown() override {
    EXPECT_EQ(Lamp::living, 0);
    EXPECT_EQ(Numbered::living, 0);
  }
};
using KeyKinds = testing::Types<Test::Numbers, Test::Names, Test::ManyIds>;
TYPED_TEST_SUITE(EntityCollections, KeyKinds, Test::MapKindNames);

TYPED_TEST(EntityCollections, isEmptyAtFirst) {
  const typename TestFixture::Lamps lamps;
  EXPECT_TRUE(lamps.empty());
  EXPECT_EQ(lamps.size(), 0U);
  EXPECT_FALSE(lamps.has(this->key(1)));
  EXPECT_EQ(lamps.find(this->key(1)), nullptr);
  EXPECT_EQ(lamps.begin(), lamps.end());
}

TYPED_TEST(EntityCollections, ownsItsMembers) {
  typename TestFixture::Lamps lamps;
  EXPECT_TRUE(lamps.insert(this->key(1), makePtr<Lamp>()));
  EXPECT_EQ(Lamp::living, 1);
  EXPECT_TRUE(lamps.has(this->key(1)));
  lamps.find(this->key(1))->wattIs(7);
  EXPECT_EQ(std::as_const(lamps).find(this->key(1))->watt(), 7U);
  lamps.clear();
  EXPECT_EQ(Lamp::living, 0);
}

TYPED_TEST(EntityCollections, givesConstMembersWhereItIsConst) {
  using All = typename TestFixture::Lamps;
  static_assert(std::is_same_v<decltype(std::declval<const All&>().find(this->key(1))), const Lamp*>);
  static_assert(std::is_same_v<decltype(std::declval<All&>().find(this->key(1))), Lamp*>);
  static_assert(std::is_same_v<decltype(std::declval<const All&>().begin().value()), const Lamp&>);
  static_assert(std::is_same_v<decltype(std::declval<All&>().begin().value()), Lamp&>);
}

TYPED_TEST(EntityCollections, membersMayBeWrittenDuringPass) {
  typename TestFixture::Lamps lamps;
  for (std::size_t i = 0; i < this->members; ++i) lamps.insert(this->key(i), makePtr<Lamp>());
  unsigned watt = 0;
  for (const auto& [key, lamp] : lamps) lamp.wattIs(++watt);
  unsigned expected = 0;
  for (const auto& [key, lamp] : std::as_const(lamps)) EXPECT_EQ(lamp.watt(), ++expected);
  EXPECT_EQ(expected, this->members);
}

TYPED_TEST(EntityCollections, keepsMemberThatIsThere) {
  typename TestFixture::Lamps lamps;
  const Ptr<Lamp> lamp = makePtr<Lamp>();
  lamps.insert(this->key(1), lamp);
  EXPECT_FALSE(lamps.insert(this->key(1), makePtr<Lamp>()));
  EXPECT_EQ(lamps.find(this->key(1)), lamp.get());
  EXPECT_EQ(Lamp::living, 1);
}

TYPED_TEST(EntityCollections, handsMemberOut) {
  typename TestFixture::Lamps lamps;
  Lamp* const lamp = makePtr<Lamp>().release();
  lamps.insert(this->key(1), Ptr<Lamp>::adopt(lamp));
  const Ptr<Lamp> taken = lamps.take(this->key(1));
  EXPECT_EQ(taken, lamp);
  EXPECT_EQ(taken->references(), 1U);
  EXPECT_TRUE(lamps.empty());
  EXPECT_EQ(lamps.take(this->key(1)), nullptr);
}

TYPED_TEST(EntityCollections, leavesTakenMemberWithoutParent) {
  Owner owner;
  typename TestFixture::Lamps lamps;
  lamps.insert(this->key(1), makePtr<Lamp>());
  lamps.find(this->key(1))->parentIs(&owner);
  EXPECT_EQ(lamps.take(this->key(1))->parent(), nullptr);
}

TYPED_TEST(EntityCollections, leavesClearedMembersWithoutParent) {
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

TYPED_TEST(EntityCollections, isEmptyWhenClearedMembersEnd) {
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

TYPED_TEST(EntityCollections, takesMembersThatAreInsertedWhileOthersEnd) {
  typename TestFixture::Lamps lamps;
  for (std::size_t i = 0; i < this->members; ++i) {
    lamps.insert(this->key(i),
                 makePtr<Lamp>([this, &lamps, i](Lamp& /*lamp*/) { lamps.insert(this->key(i), makePtr<Lamp>()); }));
  }
  lamps.clear();
  EXPECT_EQ(lamps.size(), this->members);
  EXPECT_EQ(Lamp::living, static_cast<int>(this->members));
}

TYPED_TEST(EntityCollections, showsEachMemberOnce) {
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

TYPED_TEST(EntityCollections, mayChangeDuringPass) {
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

TYPED_TEST(EntityCollections, keepsMemberOfPassWhileSomebodyOwnsIt) {
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

TYPED_TEST(EntityCollections, resumesAtKey) {
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

TYPED_TEST(EntityCollections, takesCountedObjectsThatHaveNoParent) {
  EntityCollection<typename TestFixture::Key, Numbered> objects;
  objects.insert(this->key(1), makePtr<Numbered>(5U));
  EXPECT_EQ(objects.find(this->key(1))->number(), 5U);
  EXPECT_EQ(objects.take(this->key(1))->number(), 5U);
  objects.insert(this->key(2), makePtr<Numbered>(6U));
}

TYPED_TEST(EntityCollections, isUnchangedWhereMemoryLacks) {
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

}  // namespace Mox::CollectionOfEntitiesTest
