#include "mox/detail/Relocate.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "mox/detail/Slot.h"
#include "tests/support/MapKeys.h"
#include "tests/support/MapValues.h"

namespace Mox::detail::RelocateTest {

using Test::Number;
using Test::Numbered;
using Test::SelfPointing;
using Test::Tied;
using Test::Triple;
using Test::Values;

static_assert(IsTriviallyRelocatable<int>::value);
static_assert(IsTriviallyRelocatable<Triple>::value);
static_assert(IsTriviallyRelocatable<Ptr<Numbered>>::value);
static_assert(IsTriviallyRelocatable<String>::value);
static_assert(!IsTriviallyRelocatable<SelfPointing>::value);
static_assert(!IsTriviallyRelocatable<std::string>::value);
// A slot moves as its value does, and its key where it has one.
static_assert(IsTriviallyRelocatable<Slot<Number, Triple>>::value);
static_assert(IsTriviallyRelocatable<Slot<String, Ptr<Numbered>>>::value);
static_assert(!IsTriviallyRelocatable<Slot<Number, SelfPointing>>::value);
// A key that the hash tells takes no place.
static_assert(sizeof(Slot<Number, std::uint64_t>) == 16);
static_assert(sizeof(Slot<String, std::uint64_t>) == 24);

constexpr std::size_t places = 12;

/// Raw places of which some hold a value.
template <class T>
class Storage {
 public:
  [[nodiscard]] T* place(std::size_t i) { return std::launder(reinterpret_cast<T*>(bytes_.data())) + i; }
  void fill(std::size_t first, std::size_t n) {
    for (std::size_t i = first; i < first + n; ++i) new (place(i)) T(Values<T>::make(i));
  }
  void expectMoved(std::size_t from, std::size_t to, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) EXPECT_EQ(Values<T>::number(*place(to + i)), from + i);
  }
  void destroy(std::size_t first, std::size_t n) { std::destroy_n(place(first), n); }

 private:
  alignas(T) std::array<std::byte, places * sizeof(T)> bytes_{};
};

template <class T>
class Relocate : public testing::Test {
 protected:
  void SetUp() override {
    SelfPointing::living = 0;
    SelfPointing::misplaced = 0;
    Numbered::living = 0;
  }
  void TearDown() override {
    EXPECT_EQ(SelfPointing::living, 0);
    EXPECT_EQ(SelfPointing::misplaced, 0U);
    EXPECT_EQ(Numbered::living, 0);
  }
};
using Types = testing::Types<std::uint64_t, Triple, String, Ptr<Numbered>, SelfPointing>;
TYPED_TEST_SUITE(Relocate, Types);

TYPED_TEST(Relocate, movesValuesApart) {
  Storage<TypeParam> from;
  Storage<TypeParam> to;
  from.fill(0, 5);
  relocate(to.place(3), from.place(0), 5);
  to.expectMoved(0, 3, 5);
  to.destroy(3, 5);
}

TYPED_TEST(Relocate, movesOverlappingValuesEitherWay) {
  for (std::size_t from = 0; from < 6; ++from) {
    for (std::size_t to = 0; to < 6; ++to) {
      for (std::size_t n = 0; n <= 6; ++n) {
        Storage<TypeParam> storage;
        storage.fill(from, n);
        relocate(storage.place(to), storage.place(from), n);
        storage.expectMoved(from, to, n);
        storage.destroy(to, n);
      }
    }
  }
}

TYPED_TEST(Relocate, takesValueOutOfItsPlace) {
  Storage<TypeParam> storage;
  storage.fill(4, 1);
  {
    const TypeParam taken = takeOut(storage.place(4));
    EXPECT_EQ(Values<TypeParam>::number(taken), 4U);
    storage.fill(4, 1);  // The place is raw again.
  }
  storage.destroy(4, 1);
}

TEST(Relocate, movesEachValueOnce) {
  Storage<SelfPointing> storage;
  storage.fill(0, 6);
  SelfPointing::moves = 0;
  relocate(storage.place(1), storage.place(0), 6);
  EXPECT_EQ(SelfPointing::moves, 6U);
  relocate(storage.place(1), storage.place(1), 6);
  EXPECT_EQ(SelfPointing::moves, 6U);
  storage.destroy(1, 6);
}

TEST(Relocate, movesPointersWithoutCounting) {
  Storage<Ptr<Numbered>> storage;
  storage.fill(0, 1);
  relocate(storage.place(5), storage.place(0), 1);
  EXPECT_EQ((*storage.place(5))->references(), 1U);
  storage.destroy(5, 1);
}

template <class K, class V>
void moveSlot(const K& key, V value, std::uint64_t number) {
  using Place = Slot<K, V>;
  alignas(Place) std::array<std::byte, 2 * sizeof(Place)> bytes{};
  auto* const slots = reinterpret_cast<Place*>(bytes.data());
  new (slots) Place(77, key, std::move(value));
  relocate(slots + 1, slots, 1);
  EXPECT_FALSE(slots[1].isFree());
  EXPECT_EQ(slots[1].hash(), 77U);
  EXPECT_TRUE(slots[1].holds(77, key));
  EXPECT_FALSE(slots[1].holds(78, key));
  EXPECT_EQ(Values<V>::number(*slots[1].value()), number);
  slots[1].destroy();
  EXPECT_TRUE(slots[1].isFree());
  EXPECT_EQ(slots[1].hash(), freeHash);
}

TEST(Relocate, movesSlotsWithTheirContent) {
  SelfPointing::living = 0;
  SelfPointing::misplaced = 0;
  moveSlot(Number{5}, Triple{1, 0, 7}, 1);
  moveSlot(Number{5}, SelfPointing(2), 2);
  moveSlot(Tied{5}, SelfPointing(3), 3);
  moveSlot(String("key"), String("4"), 4);
  moveSlot(String("key"), SelfPointing(5), 5);
  EXPECT_EQ(SelfPointing::living, 0);
  EXPECT_EQ(SelfPointing::misplaced, 0U);
}

}  // namespace Mox::detail::RelocateTest
