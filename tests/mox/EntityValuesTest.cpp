// Collections of values and sets of keys as entities offer them. The tests run for keys that are hashed and for keys
// that are small numbers, which are kept in different maps.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "tests/support/MapKeys.h"
#include "tests/support/Recorder.h"

namespace Mox::EntityValuesTest {

using Test::KeyRecorder;
using Test::Recorder;
using Events = std::vector<Recorder::Event>;

template <class K>
class Lamp : public NamedEntity {
 public:
  static constexpr CollectionAttribute<K> sceneAttr{0, "scene"};
  static constexpr CollectionAttribute<K> roomAttr{1, "room"};

  explicit Lamp(int* ends = nullptr) : NamedEntity("lamp"), ends_(ends) {}
  ~Lamp() override {
    if (ends_ != nullptr) ++*ends_;
  }

  // The brightness by scene, and the rooms that the lamp lights.
  [[nodiscard]] const auto& scene() const { return scene_; }
  [[nodiscard]] const unsigned* scene(const K& key) const { return scene_.find(key); }
  void sceneIs(const K& key, unsigned v) { valueIs(scene_, sceneAttr, key, v); }
  void sceneDel(const K& key) { valueDel(scene_, sceneAttr, key); }
  void sceneDelAll() { valueDelAll(scene_, sceneAttr); }
  [[nodiscard]] const auto& room() const { return room_; }
  void roomIs(const K& key) { valueIs(room_, roomAttr, key, Present{}); }
  void roomDel(const K& key) { valueDel(room_, roomAttr, key); }
  void roomDelAll() { valueDelAll(room_, roomAttr); }

 private:
  ValueCollection<K, unsigned> scene_;
  SetCollection<K> room_;
  int* ends_;
};

template <class K>
class EntityValues : public testing::Test {
 protected:
  static K key(unsigned n) {
    if constexpr (std::is_same_v<K, String>) {
      return String("key " + std::to_string(n));
    } else {
      return K{static_cast<std::uint16_t>(n)};
    }
  }
  [[nodiscard]] std::vector<K> keysInOrder() const {
    std::vector<K> keys;
    for (const auto& [k, value] : lamp.scene()) keys.push_back(k);
    return keys;
  }

  Lamp<K> lamp;
};

using Keys = testing::Types<String, Test::Number, Test::SmallId>;
TYPED_TEST_SUITE(EntityValues, Keys);

TYPED_TEST(EntityValues, newValueIsStoredAndTold) {
  const KeyRecorder<TypeParam> keys(&this->lamp, Lamp<TypeParam>::sceneAttr);
  const Recorder recorder(&this->lamp, [&](AttributeId, const void* key) {
    const auto* const changed = Lamp<TypeParam>::sceneAttr.keyOf(0, key);
    EXPECT_EQ(*this->lamp.scene(*changed), 40U) << "stored before it is told";
  });
  this->lamp.sceneIs(this->key(1), 40);
  EXPECT_EQ(*this->lamp.scene(this->key(1)), 40U);
  EXPECT_EQ(this->lamp.scene().size(), 1U);
  EXPECT_EQ(keys.keys, std::vector<TypeParam>{this->key(1)});
  EXPECT_EQ(recorder.events, (Events{{Lamp<TypeParam>::sceneAttr.id(), true}}));
}

TYPED_TEST(EntityValues, equalValueIsSilent) {
  this->lamp.sceneIs(this->key(1), 40);
  const Recorder recorder(&this->lamp);
  this->lamp.sceneIs(this->key(1), 40);
  EXPECT_EQ(recorder.events, Events{});
}

TYPED_TEST(EntityValues, valueThatDiffersOverwritesAndIsToldOnce) {
  this->lamp.sceneIs(this->key(1), 40);
  const Recorder recorder(&this->lamp);
  this->lamp.sceneIs(this->key(1), 41);
  EXPECT_EQ(*this->lamp.scene(this->key(1)), 41U);
  EXPECT_EQ(this->lamp.scene().size(), 1U);
  EXPECT_EQ(recorder.events.size(), 1U);
}

TYPED_TEST(EntityValues, removedValueIsToldAsAbsent) {
  this->lamp.sceneIs(this->key(1), 40);
  this->lamp.sceneIs(this->key(2), 50);
  const KeyRecorder<TypeParam> keys(&this->lamp, Lamp<TypeParam>::sceneAttr);
  const Recorder recorder(&this->lamp,
                          [&](AttributeId, const void*) { EXPECT_EQ(this->lamp.scene(this->key(1)), nullptr); });
  this->lamp.sceneDel(this->key(1));
  EXPECT_EQ(keys.keys, std::vector<TypeParam>{this->key(1)});
  EXPECT_TRUE(this->lamp.scene().has(this->key(2)));
}

TYPED_TEST(EntityValues, removingAbsentValueIsSilent) {
  const Recorder recorder(&this->lamp);
  this->lamp.sceneDel(this->key(1));
  this->lamp.sceneDelAll();
  EXPECT_EQ(recorder.events, Events{});
}

TYPED_TEST(EntityValues, removingAllTellsEachInOrderOfPass) {
  for (unsigned n = 0; n < 200; ++n) this->lamp.sceneIs(this->key(n), n);
  const std::vector<TypeParam> order = this->keysInOrder();
  ASSERT_EQ(order.size(), 200U);
  const KeyRecorder<TypeParam> keys(&this->lamp, Lamp<TypeParam>::sceneAttr);
  std::size_t left = 200;
  const Recorder recorder(
      &this->lamp, [&](AttributeId, const void*) { EXPECT_EQ(this->lamp.scene().size(), --left) << "one by one"; });
  this->lamp.sceneDelAll();
  EXPECT_EQ(keys.keys, order);
  EXPECT_TRUE(this->lamp.scene().empty());
}

TYPED_TEST(EntityValues, valueInsertedBehindPositionOfRemovalStays) {
  for (unsigned n = 0; n < 10; ++n) this->lamp.sceneIs(this->key(n), n);
  const std::vector<TypeParam> order = this->keysInOrder();
  int told = 0;
  const Recorder recorder(&this->lamp, [&](AttributeId, const void*) {
    if (++told == 3) this->lamp.sceneIs(order[0], 99);
  });
  this->lamp.sceneDelAll();
  EXPECT_EQ(this->keysInOrder(), std::vector<TypeParam>{order[0]});
  EXPECT_EQ(*this->lamp.scene(order[0]), 99U);
}

TYPED_TEST(EntityValues, valueInsertedAheadOfPositionOfRemovalGoes) {
  for (unsigned n = 0; n < 10; ++n) this->lamp.sceneIs(this->key(n), n);
  const TypeParam last = this->keysInOrder().back();
  this->lamp.sceneDel(last);
  int told = 0;
  const Recorder recorder(&this->lamp, [&](AttributeId, const void*) {
    if (++told == 3) this->lamp.sceneIs(last, 99);
  });
  this->lamp.sceneDelAll();
  EXPECT_TRUE(this->lamp.scene().empty());
  EXPECT_EQ(told, 11);
}

TYPED_TEST(EntityValues, ownerMayEndWhileAllAreRemoved) {
  int ends = 0;
  auto owner = makePtr<Lamp<TypeParam>>(&ends);
  for (unsigned n = 0; n < 10; ++n) owner->sceneIs(this->key(n), n);
  Recorder recorder(owner.get());
  recorder.actionIs([&](AttributeId, const void*) {
    owner = nullptr;
    recorder.notifierIs(nullptr);
    EXPECT_EQ(ends, 0) << "the removal holds its owner";
  });
  owner->sceneDelAll();
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(recorder.events.size(), 1U);
}

TYPED_TEST(EntityValues, keyOfNotificationLivesUntilHandlerReturns) {
  std::vector<TypeParam> seen;
  bool isActing = false;
  const Recorder recorder(&this->lamp, [&](AttributeId id, const void* key) {
    if (std::exchange(isActing, true)) return;
    const TypeParam* const changed = Lamp<TypeParam>::sceneAttr.keyOf(id, key);
    for (unsigned n = 0; n < 100; ++n) this->lamp.sceneIs(this->key(n), n);
    this->lamp.sceneDelAll();
    seen.push_back(*changed);
  });
  this->lamp.sceneIs(this->key(7), 40);
  EXPECT_EQ(seen, std::vector<TypeParam>{this->key(7)});
}

TYPED_TEST(EntityValues, loopBodyMayRemoveCurrentValue) {
  for (unsigned n = 0; n < 100; ++n) this->lamp.sceneIs(this->key(n), n);
  unsigned sum = 0;
  for (auto i = this->lamp.scene().begin(); i; i.advance()) {
    const unsigned value = i.value();
    sum += value;
    if (value % 2 == 0) this->lamp.sceneDel(i.key());
  }
  EXPECT_EQ(sum, 4950U);
  EXPECT_EQ(this->lamp.scene().size(), 50U);
}

/// An object that tells its end, and an entity that holds such ones by key.
class TellingEnd : public PtrInterface {
 public:
  explicit TellingEnd(std::vector<std::string>& happened) : happened_(happened) {}
  ~TellingEnd() override { happened_.emplace_back("ended"); }

 private:
  std::vector<std::string>& happened_;
};
template <class K>
class Shelf : public Entity {
 public:
  static constexpr CollectionAttribute<K> thingAttr{0, "thing"};
  [[nodiscard]] const auto& thing() const { return thing_; }
  void thingIs(const K& key, Ptr<TellingEnd> v) { valueIs(thing_, thingAttr, key, std::move(v)); }
  void thingDel(const K& key) { valueDel(thing_, thingAttr, key); }

 private:
  ValueCollection<K, Ptr<TellingEnd>> thing_;
};

TYPED_TEST(EntityValues, overwrittenAndRemovedValuesEndAfterTheirNotification) {
  std::vector<std::string> happened;
  Shelf<TypeParam> shelf;
  const TypeParam key = this->key(1);
  shelf.thingIs(key, makePtr<TellingEnd>(happened));
  const Recorder recorder(&shelf, [&](AttributeId, const void*) {
    happened.emplace_back(shelf.thing().has(key) ? "told of new" : "told of none");
  });
  shelf.thingIs(key, makePtr<TellingEnd>(happened));
  EXPECT_EQ(happened, (std::vector<std::string>{"told of new", "ended"}));
  happened.clear();
  shelf.thingDel(key);
  EXPECT_EQ(happened, (std::vector<std::string>{"told of none", "ended"}));
}

TYPED_TEST(EntityValues, setTellsKeysThatComeAndGo) {
  const KeyRecorder<TypeParam> keys(&this->lamp, Lamp<TypeParam>::roomAttr);
  this->lamp.roomIs(this->key(1));
  this->lamp.roomIs(this->key(1));
  EXPECT_TRUE(this->lamp.room().has(this->key(1)));
  this->lamp.roomDel(this->key(1));
  this->lamp.roomDel(this->key(1));
  EXPECT_FALSE(this->lamp.room().has(this->key(1)));
  EXPECT_EQ(keys.keys, (std::vector<TypeParam>{this->key(1), this->key(1)}));
}

TYPED_TEST(EntityValues, removingAllOfSetTellsEachInOrderOfPass) {
  std::vector<TypeParam> order;
  for (unsigned n = 0; n < 50; ++n) this->lamp.roomIs(this->key(n));
  for (const auto& [key, present] : this->lamp.room()) order.push_back(key);
  const KeyRecorder<TypeParam> keys(&this->lamp, Lamp<TypeParam>::roomAttr);
  this->lamp.roomDelAll();
  EXPECT_EQ(keys.keys, order);
  EXPECT_TRUE(this->lamp.room().empty());
}

}  // namespace Mox::EntityValuesTest
