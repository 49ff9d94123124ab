// Collections of entities as entities offer them.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "tests/support/MapKeys.h"
#include "tests/support/Recorder.h"

namespace Mox::EntityMembersTest {

using Test::KeyRecorder;
using Test::Recorder;
using Number = Test::SmallId;
using Events = std::vector<Recorder::Event>;

class Bulb : public NamedEntity {
 public:
  static constexpr ScalarAttribute wattAttr{0, "watt"};
  explicit Bulb(String socket) : NamedEntity(std::move(socket)) {}
  ~Bulb() override {
    if (atEnd) atEnd();
  }

  [[nodiscard]] unsigned watt() const { return watt_; }
  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }

  std::function<void()> atEnd;

 private:
  unsigned watt_ = 0;
};

/// Made from a key and from two further arguments.
class Cable : public Entity {
 public:
  Cable(Number number, const Ptr<const Bulb>& to, unsigned length) : number_(number), to_(to), length_(length) {}

  [[nodiscard]] bool isBuiltFrom(const Ptr<const Bulb>& to, unsigned length) const {
    return to_ == to && length_ == length;
  }
  [[nodiscard]] Number number() const { return number_; }
  [[nodiscard]] unsigned length() const { return length_; }

 private:
  Number number_;
  Ptr<const Bulb> to_;
  unsigned length_;
};

/// No entity: a member without a parent.
class Screw : public PtrInterface {
 public:
  explicit Screw(Number /*number*/) {}
};

/// One whose constructor sets something off.
class Twin : public Entity {
 public:
  Twin(Number /*number*/, const std::function<void()>& whileMade) {
    if (whileMade) whileMade();
  }

  [[nodiscard]] static bool isBuiltFrom(const std::function<void()>& /*whileMade*/) { return true; }
};

class Lamp : public NamedEntity {
 public:
  static constexpr CollectionAttribute<String> bulbAttr{0, "bulb"};
  static constexpr CollectionAttribute<Number> cableAttr{1, "cable"};
  static constexpr CollectionAttribute<Number> screwAttr{2, "screw"};
  static constexpr CollectionAttribute<Number> twinAttr{3, "twin"};

  Lamp() : NamedEntity("lamp") {}

  [[nodiscard]] const auto& bulb() const { return bulb_; }
  [[nodiscard]] Bulb* bulb(const String& socket) { return bulb_.find(socket); }
  Ptr<Bulb> bulbIs(const String& socket) { return memberIs(bulb_, bulbAttr, socket); }
  bool bulbInsert(const String& socket, Ptr<Bulb> bulb) {
    return memberInsert(bulb_, bulbAttr, socket, std::move(bulb));
  }
  void bulbDel(const String& socket) { memberDel(bulb_, bulbAttr, socket); }

  [[nodiscard]] const auto& cable() const { return cable_; }
  Ptr<Cable> cableIs(Number number, const Ptr<const Bulb>& to, unsigned length) {
    return memberIs(cable_, cableAttr, number, to, length);
  }
  Ptr<Screw> screwIs(Number number) { return memberIs(screw_, screwAttr, number); }
  void screwDel(Number number) { memberDel(screw_, screwAttr, number); }
  [[nodiscard]] const auto& twin() const { return twin_; }
  Ptr<Twin> twinIs(Number number, const std::function<void()>& whileMade) {
    return memberIs(twin_, twinAttr, number, whileMade);
  }

 private:
  EntityCollection<String, Bulb> bulb_;
  EntityCollection<Number, Cable> cable_;
  EntityCollection<Number, Screw> screw_;
  EntityCollection<Number, Twin> twin_;
};

class EntityMembers : public testing::Test {
 protected:
  Lamp lamp;
};

TEST_F(EntityMembers, newMemberIsMadeFromItsKeyAndTold) {
  const KeyRecorder<String> keys(&lamp, Lamp::bulbAttr);
  const Recorder recorder(&lamp, [&](AttributeId, const void*) {
    ASSERT_NE(lamp.bulb("left"), nullptr);
    EXPECT_EQ(lamp.bulb("left")->parent(), &lamp) << "it belongs to the lamp before it is told";
  });
  const Ptr<Bulb> bulb = lamp.bulbIs("left");
  EXPECT_EQ(bulb->name(), "left");
  EXPECT_EQ(lamp.bulb("left"), bulb.get());
  EXPECT_EQ(bulb->references(), 2U);
  EXPECT_EQ(keys.keys, std::vector<String>{"left"});
  EXPECT_EQ(recorder.events, (Events{{Lamp::bulbAttr.id(), true}}));
}

TEST_F(EntityMembers, presentMemberIsReturnedSilently) {
  const Ptr<Bulb> bulb = lamp.bulbIs("left");
  bulb->wattIs(7);
  const Recorder recorder(&lamp);
  EXPECT_EQ(lamp.bulbIs("left"), bulb);
  EXPECT_EQ(bulb->watt(), 7U);
  EXPECT_EQ(lamp.bulb().size(), 1U);
  EXPECT_EQ(recorder.events, Events{});
}

TEST_F(EntityMembers, changeOfMemberIsToldToItsOwnReactorsOnly) {
  const Ptr<Bulb> bulb = lamp.bulbIs("left");
  const Recorder ofLamp(&lamp);
  const Recorder ofBulb(bulb.get());
  lamp.bulb("left")->wattIs(7);
  EXPECT_EQ(ofLamp.events, Events{});
  EXPECT_EQ(ofBulb.events, (Events{{Bulb::wattAttr.id(), false}}));
}

TEST_F(EntityMembers, presentMemberOfSameArgumentsIsReturned) {
  const Ptr<Bulb> bulb = lamp.bulbIs("left");
  const Ptr<Cable> cable = lamp.cableIs({1}, bulb, 30);
  const Recorder recorder(&lamp);
  EXPECT_EQ(lamp.cableIs({1}, bulb, 30), cable);
  EXPECT_EQ(cable->number().value, 1U);
  EXPECT_EQ(recorder.events, Events{});
}

TEST_F(EntityMembers, presentMemberOfOtherArgumentsRaisesAndChangesNothing) {
  const Ptr<Bulb> bulb = lamp.bulbIs("left");
  const Ptr<Bulb> other = lamp.bulbIs("right");
  const Ptr<Cable> cable = lamp.cableIs({1}, bulb, 30);
  const auto references = bulb->references();
  const Recorder recorder(&lamp);
  using Arguments = std::pair<Bulb*, unsigned>;
  for (const auto& [to, length] : {Arguments(bulb.get(), 31), Arguments(other.get(), 30), Arguments(nullptr, 30)}) {
    try {
      lamp.cableIs({1}, to, length);
      ADD_FAILURE() << "nothing was raised";
    } catch (const MutatorReinstantiatingException& e) {
      EXPECT_STREQ(e.what(), "cableIs: a member of this key exists, made with other arguments");
    }
  }
  EXPECT_EQ(lamp.cable().size(), 1U);
  EXPECT_EQ(lamp.cable().find({1}), cable.get());
  EXPECT_EQ(cable->length(), 30U);
  EXPECT_EQ(bulb->references(), references);
  EXPECT_EQ(recorder.events, Events{});
}

TEST_F(EntityMembers, memberWithoutParentIsFine) {
  const KeyRecorder<Number> keys(&lamp, Lamp::screwAttr);
  const Ptr<Screw> screw = lamp.screwIs({3});
  EXPECT_EQ(lamp.screwIs({3}), screw);
  lamp.screwDel({3});
  EXPECT_EQ(screw->references(), 1U);
  EXPECT_EQ(keys.keys, (std::vector<Number>{{3}, {3}}));
}

TEST_F(EntityMembers, memberThatIsMadeAlreadyIsInserted) {
  const auto bulb = makePtr<Bulb>("left");
  const KeyRecorder<String> keys(&lamp, Lamp::bulbAttr);
  EXPECT_TRUE(lamp.bulbInsert("left", bulb));
  EXPECT_EQ(lamp.bulb("left"), bulb.get());
  EXPECT_EQ(bulb->parent(), &lamp);
  EXPECT_EQ(keys.keys, std::vector<String>{"left"});
}

TEST_F(EntityMembers, memberIsNotInsertedUnderKeyOfAnother) {
  const Ptr<Bulb> present = lamp.bulbIs("left");
  const auto bulb = makePtr<Bulb>("left");
  const Recorder recorder(&lamp);
  EXPECT_FALSE(lamp.bulbInsert("left", bulb));
  EXPECT_EQ(lamp.bulb("left"), present.get());
  EXPECT_EQ(bulb->parent(), nullptr);
  EXPECT_EQ(bulb->references(), 1U);
  EXPECT_EQ(recorder.events, Events{});
}

TEST_F(EntityMembers, memberThatAppearsWhileAnotherIsMadeIsReturned) {
  const KeyRecorder<Number> keys(&lamp, Lamp::twinAttr);
  Ptr<Twin> first;
  const Ptr<Twin> returned = lamp.twinIs({1}, [&] { first = lamp.twinIs({1}, nullptr); });
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(returned, first);
  EXPECT_EQ(lamp.twin().find({1}), first.get());
  EXPECT_EQ(first->parent(), &lamp);
  EXPECT_EQ(keys.keys, std::vector<Number>{{1}});
}

TEST_F(EntityMembers, removedMemberIsAbsentWhenToldAndEndsLast) {
  std::vector<std::string> happened;
  lamp.bulbIs("left")->atEnd = [&] { happened.emplace_back("ended"); };
  const KeyRecorder<String> keys(&lamp, Lamp::bulbAttr);
  const Recorder recorder(&lamp, [&](AttributeId, const void*) {
    happened.emplace_back(lamp.bulb("left") == nullptr ? "told" : "told too early");
  });
  lamp.bulbDel("left");
  EXPECT_EQ(happened, (std::vector<std::string>{"told", "ended"}));
  EXPECT_EQ(keys.keys, std::vector<String>{"left"});
  EXPECT_EQ(recorder.events, (Events{{Lamp::bulbAttr.id(), true}}));
}

TEST_F(EntityMembers, removingAbsentMemberIsSilent) {
  lamp.bulbIs("right");
  const Recorder recorder(&lamp);
  lamp.bulbDel("left");
  EXPECT_EQ(recorder.events, Events{});
}

TEST_F(EntityMembers, removedMemberHasNoParent) {
  const Ptr<Bulb> bulb = lamp.bulbIs("left");
  const Recorder recorder(&lamp, [&](AttributeId, const void*) { EXPECT_EQ(bulb->parent(), nullptr); });
  lamp.bulbDel("left");
  EXPECT_EQ(recorder.events.size(), 1U);
}

TEST_F(EntityMembers, newMemberUnderOldKeyIsAnother) {
  const Ptr<Bulb> first = lamp.bulbIs("left");
  first->wattIs(7);
  lamp.bulbDel("left");
  const Ptr<Bulb> second = lamp.bulbIs("left");
  EXPECT_NE(second, first);
  EXPECT_EQ(second->watt(), 0U);
  EXPECT_EQ(first->parent(), nullptr);
  EXPECT_EQ(second->parent(), &lamp);
}

TEST_F(EntityMembers, endOfRemovedMemberMayInsertItsSuccessor) {
  lamp.bulbIs("left")->atEnd = [&] { lamp.bulbIs("left")->wattIs(60); };
  const KeyRecorder<String> keys(&lamp, Lamp::bulbAttr);
  lamp.bulbDel("left");
  ASSERT_NE(lamp.bulb("left"), nullptr);
  EXPECT_EQ(lamp.bulb("left")->watt(), 60U);
  EXPECT_EQ(keys.keys, (std::vector<String>{"left", "left"}));
}

TEST(EntityMembersOfEndedOwner, readerMayHoldMemberLonger) {
  auto lamp = makePtr<Lamp>();
  const Ptr<const Bulb> bulb = lamp->bulbIs("left");
  EXPECT_EQ(bulb->parent(), lamp.get());
  lamp = nullptr;
  EXPECT_EQ(bulb->parent(), nullptr);
  EXPECT_EQ(bulb->name(), "left");
  EXPECT_EQ(bulb->references(), 1U);
}

TEST(EntityMembersOfEndedOwner, reactorsOfMemberStayBoundToIt) {
  auto lamp = makePtr<Lamp>();
  Ptr<Bulb> bulb = lamp->bulbIs("left");
  const Recorder recorder(bulb.get());
  lamp = nullptr;
  bulb->wattIs(7);
  EXPECT_EQ(recorder.events.size(), 1U);
}

}  // namespace Mox::EntityMembersTest
