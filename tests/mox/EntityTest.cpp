#include "mox/Entity.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "mox/Type.h"
#include "tests/support/Recorder.h"

namespace Mox::EntityTest {

using Test::KeyRecorder;
using Test::Recorder;
using Events = std::vector<Recorder::Event>;

class Plate : public NamedEntity {
 public:
  using NamedEntity::NamedEntity;
};

class Lamp : public NamedEntity {
 public:
  static constexpr ScalarAttribute litAttr{0, "lit"};
  static constexpr ScalarAttribute labelAttr{1, "label"};
  static constexpr ScalarAttribute neighbourAttr{2, "neighbour"};
  static constexpr ScalarAttribute plateAttr{3, "plate"};
  static constexpr CollectionAttribute<String> sceneAttr{4, "scene"};
  explicit Lamp(String name, std::function<void()> atEnd = {})
      : NamedEntity(std::move(name)), atEnd_(std::move(atEnd)) {}
  ~Lamp() override {
    if (atEnd_) atEnd_();
  }

  [[nodiscard]] bool lit() const { return lit_; }
  void litIs(bool v) { scalarIs(lit_, v, litAttr); }
  [[nodiscard]] const String& label() const { return label_; }
  void labelIs(const String& v) { scalarIs(label_, v, labelAttr); }
  [[nodiscard]] const Ptr<const Lamp>& neighbour() const { return neighbour_; }
  void neighbourIs(const Ptr<const Lamp>& v) { scalarIs(neighbour_, v, neighbourAttr); }
  [[nodiscard]] const Ptr<Plate>& plate() const { return plate_; }
  Ptr<Plate> plateIs(const String& name) { return singleIs(plate_, plateAttr, name); }
  void plateDel() { singleDel(plate_, plateAttr); }
  /// Changes that are stored by other means.
  void bothTold() {
    notify(litAttr);
    notify(sceneAttr, String("evening"));
  }

 private:
  bool lit_ = false;
  String label_;
  Ptr<const Lamp> neighbour_;
  Ptr<Plate> plate_;
  std::function<void()> atEnd_;
};

/// An entity that is known by a key which is no text.
class Unnamed : public Entity {};

template <class T>
[[nodiscard]] std::string printed(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(Entity, scalarIsStoredBeforeItIsTold) {
  Lamp lamp("hall");
  std::vector<bool> seen;
  const Recorder recorder(&lamp, [&](AttributeId, const void*) { seen.push_back(lamp.lit()); });
  lamp.litIs(true);
  lamp.litIs(false);
  EXPECT_EQ(seen, (std::vector<bool>{true, false}));
  EXPECT_EQ(recorder.events, (Events{{Lamp::litAttr.id(), false}, {Lamp::litAttr.id(), false}}));
}

TEST(Entity, writingPresentScalarIsSilent) {
  Lamp lamp("hall");
  const Recorder recorder(&lamp);
  lamp.litIs(false);
  EXPECT_EQ(recorder.events, Events{});
  lamp.litIs(true);
  lamp.litIs(true);
  EXPECT_EQ(recorder.events.size(), 1U);
}

TEST(Entity, equalTextIsPresentValue) {
  Lamp lamp("hall");
  lamp.labelIs("to the left");
  const Recorder recorder(&lamp);
  lamp.labelIs(std::string("to the ") + "left");
  EXPECT_EQ(recorder.events, Events{});
  lamp.labelIs("");
  EXPECT_EQ(recorder.events, (Events{{Lamp::labelAttr.id(), false}}));
  EXPECT_EQ(lamp.label(), "");
}

TEST(Entity, scalarMayPointToEntityWhichItKeeps) {
  Lamp lamp("hall");
  auto other = makePtr<Lamp>("kitchen");
  const Recorder recorder(&lamp);
  lamp.neighbourIs(other);
  lamp.neighbourIs(other);
  EXPECT_EQ(recorder.events.size(), 1U);
  EXPECT_EQ(other->references(), 2U);
  lamp.neighbourIs(nullptr);
  EXPECT_EQ(other->references(), 1U);
  EXPECT_EQ(recorder.events.size(), 2U);
}

TEST(Entity, overwrittenScalarEndsAfterItsNotification) {
  std::vector<std::string> happened;
  Lamp lamp("hall");
  lamp.neighbourIs(makePtr<Lamp>("kitchen", [&] { happened.emplace_back("ended"); }));
  const Recorder recorder(&lamp, [&](AttributeId, const void*) { happened.emplace_back("told"); });
  lamp.neighbourIs(nullptr);
  EXPECT_EQ(happened, (std::vector<std::string>{"told", "ended"}));
}

TEST(Entity, endOfOverwrittenScalarMayEndItsOwner) {
  int ends = 0;
  auto lamp = makePtr<Lamp>("hall", [&] { ++ends; });
  lamp->neighbourIs(makePtr<Lamp>("kitchen", [&] { lamp = nullptr; }));
  lamp->neighbourIs(nullptr);
  EXPECT_EQ(lamp, nullptr);
  EXPECT_EQ(ends, 1);
}

TEST(Entity, classMayTellWhatItStoredByOtherMeans) {
  Lamp lamp("hall");
  const Recorder recorder(&lamp);
  const KeyRecorder<String> keys(&lamp, Lamp::sceneAttr);
  lamp.bothTold();
  EXPECT_EQ(recorder.events, (Events{{Lamp::litAttr.id(), false}, {Lamp::sceneAttr.id(), true}}));
  EXPECT_EQ(keys.keys, std::vector<String>{"evening"});
}

TEST(Entity, attributesAreToldApart) {
  Lamp lamp("hall");
  const Recorder recorder(&lamp);
  lamp.labelIs("to the left");
  lamp.litIs(true);
  EXPECT_EQ(recorder.events, (Events{{Lamp::labelAttr.id(), false}, {Lamp::litAttr.id(), false}}));
}

TEST(Entity, nameIsFixedAtConstruction) {
  const Lamp lamp("hall");
  EXPECT_EQ(lamp.name(), "hall");
  EXPECT_EQ(Unnamed().name(), "");
}

TEST(Entity, hasListAndNoParent) {
  const Lamp lamp("hall");
  ASSERT_NE(lamp.notifieeList(), nullptr);
  EXPECT_TRUE(lamp.notifieeList()->empty());
  EXPECT_EQ(lamp.parent(), nullptr);
}

TEST(Entity, parentIsWhatItIsSetTo) {
  Lamp lamp("hall");
  Plate plate("brass");
  plate.parentIs(&lamp);
  EXPECT_EQ(plate.parent(), &lamp);
  static_assert(std::is_same_v<decltype(plate.parent()), Notifier*>);
  static_assert(std::is_same_v<decltype(std::as_const(plate).parent()), const Notifier*>);
  plate.parentIs(nullptr);
  EXPECT_EQ(plate.parent(), nullptr);
}

TEST(Entity, endTellsNobody) {
  auto lamp = std::make_unique<Lamp>("hall");
  const Recorder recorder(lamp.get());
  lamp.reset();
  EXPECT_EQ(recorder.events, Events{});
}

TEST(Entity, printsTypeAndName) {
  const auto lamp = makePtr<Lamp>("hall");
  const std::string expected = typeName(typeid(Lamp)) + "(hall)";
  EXPECT_EQ(printed(static_cast<const Entity*>(lamp.get())), expected);
  EXPECT_EQ(printed(lamp), expected);
  EXPECT_EQ(printed(Ptr<const Lamp>(lamp)), expected);
}

TEST(Entity, printsTypeAloneWithoutName) {
  const Unnamed unnamed;
  EXPECT_EQ(printed(static_cast<const Entity*>(&unnamed)), typeName(typeid(Unnamed)));
}

TEST(Entity, printsNull) {
  EXPECT_EQ(printed(static_cast<const Entity*>(nullptr)), "null");
  EXPECT_EQ(printed(Ptr<Lamp>()), "null");
}

TEST(EntitySingle, isMadeWithItsName) {
  Lamp lamp("hall");
  const Recorder recorder(&lamp);
  const Ptr<Plate> plate = lamp.plateIs("brass");
  ASSERT_NE(plate, nullptr);
  EXPECT_EQ(plate->name(), "brass");
  EXPECT_EQ(lamp.plate(), plate);
  EXPECT_EQ(plate->references(), 2U);
  EXPECT_EQ(plate->parent(), nullptr) << "a single entity has none";
  EXPECT_EQ(recorder.events, (Events{{Lamp::plateAttr.id(), false}}));
}

TEST(EntitySingle, sameNameReturnsSameEntitySilently) {
  Lamp lamp("hall");
  const Ptr<Plate> plate = lamp.plateIs("brass");
  const Recorder recorder(&lamp);
  EXPECT_EQ(lamp.plateIs("brass"), plate);
  EXPECT_EQ(recorder.events, Events{});
}

TEST(EntitySingle, anotherNameTakesItsPlace) {
  Lamp lamp("hall");
  const Ptr<Plate> brass = lamp.plateIs("brass");
  std::vector<String> seen;
  const Recorder recorder(&lamp, [&](AttributeId, const void*) {
    seen.push_back(lamp.plate()->name());
    EXPECT_EQ(brass->references(), 2U) << "the old one goes after the notification";
  });
  const Ptr<Plate> steel = lamp.plateIs("steel");
  EXPECT_NE(steel, brass);
  EXPECT_EQ(lamp.plate(), steel);
  EXPECT_EQ(seen, std::vector<String>{"steel"});
  EXPECT_EQ(brass->references(), 1U);
}

TEST(EntitySingle, oneThatHandlerReplacesIsStillReturned) {
  Lamp lamp("hall");
  const Recorder recorder(&lamp, [&](AttributeId, const void*) { lamp.plateIs("steel"); });
  const Ptr<Plate> brass = lamp.plateIs("brass");
  EXPECT_EQ(brass->name(), "brass");
  EXPECT_EQ(brass->references(), 1U);
  EXPECT_EQ(lamp.plate()->name(), "steel");
  EXPECT_EQ(recorder.events.size(), 2U);
}

TEST(EntitySingle, deletionIsToldOnce) {
  Lamp lamp("hall");
  const Ptr<Plate> plate = lamp.plateIs("brass");
  std::vector<bool> seen;
  const Recorder recorder(&lamp, [&](AttributeId, const void*) { seen.push_back(lamp.plate() != nullptr); });
  lamp.plateDel();
  lamp.plateDel();
  EXPECT_EQ(lamp.plate(), nullptr);
  EXPECT_EQ(plate->references(), 1U);
  EXPECT_EQ(seen, std::vector<bool>{false});
  EXPECT_EQ(recorder.events, (Events{{Lamp::plateAttr.id(), false}}));
}

TEST(EntitySingle, newOneUnderOldNameIsAnother) {
  Lamp lamp("hall");
  const Ptr<Plate> first = lamp.plateIs("brass");
  lamp.plateDel();
  EXPECT_NE(lamp.plateIs("brass"), first);
}

}  // namespace Mox::EntityTest
