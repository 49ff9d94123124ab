// Removal of all members, passes over members that change meanwhile, and the end of their owner.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "tests/support/Recorder.h"

namespace Mox::EntityPassesTest {

using Test::KeyRecorder;
using Test::Recorder;

class Bulb : public NamedEntity {
 public:
  static constexpr ScalarAttribute wattAttr{0, "watt"};
  explicit Bulb(String socket) : NamedEntity(std::move(socket)) {}
  ~Bulb() override {
    if (atEnd) atEnd();
  }

  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }

  std::function<void()> atEnd;

 private:
  unsigned watt_ = 0;
};

class Lamp : public NamedEntity {
 public:
  static constexpr CollectionAttribute<String> bulbAttr{0, "bulb"};

  explicit Lamp(std::function<void()> atEnd = {}) : NamedEntity("lamp"), atEnd_(std::move(atEnd)) {}
  ~Lamp() override {
    if (atEnd_) atEnd_();
  }

  [[nodiscard]] const auto& bulb() const { return bulb_; }
  [[nodiscard]] Bulb* bulb(const String& socket) { return bulb_.find(socket); }
  Ptr<Bulb> bulbIs(const String& socket) { return memberIs(bulb_, bulbAttr, socket); }
  void bulbDel(const String& socket) { memberDel(bulb_, bulbAttr, socket); }
  void bulbDelAll() { memberDelAll(bulb_, bulbAttr); }

 private:
  EntityCollection<String, Bulb> bulb_;
  std::function<void()> atEnd_;
};

class EntityPasses : public testing::Test {
 protected:
  void addMany(unsigned count) {
    for (unsigned n = 0; n < count; ++n) lamp.bulbIs(std::to_string(n));
  }
  [[nodiscard]] std::vector<String> keysInOrder() const {
    std::vector<String> keys;
    for (const auto& [socket, bulb] : lamp.bulb()) keys.push_back(socket);
    return keys;
  }

  Lamp lamp;
};

TEST_F(EntityPasses, removingAllTellsEachInOrderOfPass) {
  addMany(200);
  const std::vector<String> order = keysInOrder();
  ASSERT_EQ(order.size(), 200U);
  const KeyRecorder<String> keys(&lamp, Lamp::bulbAttr);
  std::size_t left = order.size();
  const Recorder recorder(&lamp, [&](AttributeId, const void*) { EXPECT_EQ(lamp.bulb().size(), --left); });
  lamp.bulbDelAll();
  EXPECT_EQ(keys.keys, order);
  EXPECT_TRUE(lamp.bulb().empty());
  lamp.bulbDelAll();
  EXPECT_EQ(keys.keys.size(), order.size());
}

TEST_F(EntityPasses, removingAllSkipsOneThatHandlerRemovedFirst) {
  addMany(10);
  const std::vector<String> order = keysInOrder();
  const KeyRecorder<String> keys(&lamp, Lamp::bulbAttr);
  const Recorder recorder(&lamp, [&](AttributeId, const void*) { lamp.bulbDel(order[5]); });
  lamp.bulbDelAll();
  EXPECT_EQ(keys.keys.size(), 10U);
  EXPECT_EQ(keys.keys[1], order[5]);
  EXPECT_TRUE(lamp.bulb().empty());
}

TEST_F(EntityPasses, memberInsertedBehindPositionOfRemovalStays) {
  addMany(10);
  const std::vector<String> order = keysInOrder();
  int told = 0;
  const Recorder recorder(&lamp, [&](AttributeId, const void*) {
    if (++told == 3) lamp.bulbIs(order[0]);
  });
  lamp.bulbDelAll();
  EXPECT_EQ(keysInOrder(), std::vector<String>{order[0]});
}

TEST_F(EntityPasses, nestedRemovalOfAllTellsEachOnce) {
  addMany(10);
  const KeyRecorder<String> keys(&lamp, Lamp::bulbAttr);
  int told = 0;
  const Recorder recorder(&lamp, [&](AttributeId, const void*) {
    if (++told == 3) lamp.bulbDelAll();
  });
  lamp.bulbDelAll();
  EXPECT_EQ(keys.keys.size(), 10U);
  EXPECT_TRUE(lamp.bulb().empty());
}

TEST_F(EntityPasses, ownerMayEndWhileAllAreRemoved) {
  int ends = 0;
  int bulbEnds = 0;
  auto owner = makePtr<Lamp>([&] { ++ends; });
  for (int n = 0; n < 10; ++n) {
    owner->bulbIs(std::to_string(n))->atEnd = [&] { ++bulbEnds; };
  }
  Recorder recorder(owner.get());
  recorder.actionIs([&](AttributeId, const void*) {
    owner = nullptr;
    recorder.notifierIs(nullptr);
    EXPECT_EQ(ends, 0) << "the removal holds its owner";
  });
  owner->bulbDelAll();
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(bulbEnds, 10);
  EXPECT_EQ(recorder.events.size(), 1U);
}

TEST_F(EntityPasses, ownerMayEndWhileMemberIsRemovedOrInserted) {
  for (const bool isRemoval : {false, true}) {
    int ends = 0;
    auto owner = makePtr<Lamp>([&] { ++ends; });
    if (isRemoval) owner->bulbIs("left");
    Recorder recorder(owner.get());
    recorder.actionIs([&](AttributeId, const void*) {
      owner = nullptr;
      recorder.notifierIs(nullptr);
    });
    if (isRemoval) {
      owner->bulbDel("left");
    } else {
      const Ptr<Bulb> bulb = owner->bulbIs("left");
      EXPECT_EQ(bulb->name(), "left");
      EXPECT_EQ(bulb->parent(), nullptr);
      EXPECT_EQ(bulb->references(), 1U);
    }
    EXPECT_EQ(ends, 1);
  }
}

TEST_F(EntityPasses, loopBodyMayRemoveCurrentMember) {
  addMany(100);
  const std::vector<String> order = keysInOrder();
  std::vector<String> visited;
  for (const auto& [socket, bulb] : lamp.bulb()) {
    visited.push_back(socket);
    lamp.bulbDel(socket);
  }
  EXPECT_EQ(visited, order);
  EXPECT_TRUE(lamp.bulb().empty());
}

TEST_F(EntityPasses, loopBodyMayRemoveNextMember) {
  addMany(100);
  const std::vector<String> order = keysInOrder();
  std::vector<String> visited;
  for (const auto& [socket, bulb] : lamp.bulb()) {
    visited.push_back(socket);
    if (const std::size_t next = 2 * visited.size() - 1; next < order.size()) lamp.bulbDel(order[next]);
  }
  std::vector<String> expected;
  for (std::size_t i = 0; i < order.size(); i += 2) expected.push_back(order[i]);
  EXPECT_EQ(visited, expected);
}

TEST_F(EntityPasses, handlerMayRemoveMemberOnWhichLoopStands) {
  addMany(10);
  std::size_t visited = 0;
  Recorder recorder(lamp.bulb("7"), [&](AttributeId, const void*) { lamp.bulbDel("7"); });
  for (auto i = lamp.bulb().begin(); i; i.advance()) {
    ++visited;
    const Ptr<Bulb> bulb(lamp.bulb(i.key()));
    bulb->wattIs(7);
  }
  EXPECT_EQ(visited, 10U);
  EXPECT_EQ(lamp.bulb().size(), 9U);
}

}  // namespace Mox::EntityPassesTest
