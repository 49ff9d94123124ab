// Handlers that throw: who is called all the same, and who learns of it.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "mox/Notifiee.h"
#include "tests/support/Recorder.h"

namespace Mox::NotifieeExceptionsTest {

using Test::Recorder;
using Numbers = std::vector<std::size_t>;

class Bulb : public NamedEntity {
 public:
  using NamedEntity::NamedEntity;
};

class Lamp : public NamedEntity {
 public:
  static constexpr ScalarAttribute wattAttr{0, "watt"};
  static constexpr CollectionAttribute<String> bulbAttr{1, "bulb"};
  static constexpr CollectionAttribute<String> sceneAttr{2, "scene"};

  explicit Lamp(int* ends = nullptr) : NamedEntity("lamp"), ends_(ends) {}
  ~Lamp() override {
    if (ends_ != nullptr) ++*ends_;
  }

  [[nodiscard]] unsigned watt() const { return watt_; }
  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }
  [[nodiscard]] const auto& bulb() const { return bulb_; }
  Ptr<Bulb> bulbIs(const String& socket) { return memberIs(bulb_, bulbAttr, socket); }
  void bulbDel(const String& socket) { memberDel(bulb_, bulbAttr, socket); }
  void bulbDelAll() { memberDelAll(bulb_, bulbAttr); }
  [[nodiscard]] const auto& scene() const { return scene_; }
  void sceneIs(const String& name, unsigned v) { valueIs(scene_, sceneAttr, name, v); }
  void sceneDelAll() { valueDelAll(scene_, sceneAttr); }

 private:
  unsigned watt_ = 0;
  EntityCollection<String, Bulb> bulb_;
  ValueCollection<String, unsigned> scene_;
  int* ends_;
};

/// Reactors on a lamp, numbered from 0, that note their calls; `does[i]` is what reactor i does when it is called.
class NotifieeExceptions : public testing::Test {
 protected:
  void addMany(std::size_t count) { addMany(count, &lamp); }
  void addMany(std::size_t count, const PtrInterface* notifier) {
    while (count-- > 0) {
      const std::size_t number = reactors.size();
      reactors.push_back(makePtr<Recorder>(notifier, [this, number](AttributeId, const void*) {
        calls_.push_back(number);
        if (does.contains(number)) does.at(number)();
      }));
    }
  }
  void throwsIn(std::size_t i, std::string text) {
    does[i] = [text = std::move(text)] { throw std::runtime_error(text); };
  }
  [[nodiscard]] Numbers calls() { return std::exchange(calls_, {}); }

  /// The text of the runtime error that the action lets out, or "none".
  [[nodiscard]] static std::string errorOf(const std::function<void()>& action) {
    try {
      action();
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "none";
  }
  [[nodiscard]] std::string errorOfWriting(unsigned watt) {
    return errorOf([&] { lamp.wattIs(watt); });
  }

  Lamp lamp;
  std::vector<Ptr<Recorder>> reactors;
  std::map<std::size_t, std::function<void()>> does;

 private:
  Numbers calls_;
};

TEST_F(NotifieeExceptions, exceptionOfSoleHandlerReachesWriter) {
  addMany(1);
  throwsIn(0, "zero");
  EXPECT_EQ(errorOfWriting(1), "zero");
  EXPECT_EQ(calls(), Numbers{0});
}

TEST_F(NotifieeExceptions, remainingReactorsAreCalledFirst) {
  for (const std::size_t actor : {0U, 1U, 2U}) {
    reactors.clear();
    addMany(3);
    does.clear();
    throwsIn(actor, "thrown");
    EXPECT_EQ(errorOfWriting(lamp.watt() + 1), "thrown");
    EXPECT_EQ(calls(), (Numbers{0, 1, 2}));
  }
}

TEST_F(NotifieeExceptions, firstOfSeveralReachesWriter) {
  addMany(5);
  throwsIn(1, "first");
  throwsIn(2, "second");
  throwsIn(4, "third");
  EXPECT_EQ(errorOfWriting(1), "first");
  EXPECT_EQ(calls(), (Numbers{0, 1, 2, 3, 4}));
}

TEST_F(NotifieeExceptions, exceptionOfAnyTypeKeepsItsType) {
  addMany(2);
  does[0] = [] { throw 4711; };
  throwsIn(1, "second");
  try {
    lamp.wattIs(1);
    FAIL() << "nothing was thrown";
  } catch (int number) {
    EXPECT_EQ(number, 4711);
  }
}

TEST_F(NotifieeExceptions, changeStaysStored) {
  addMany(2);
  throwsIn(0, "zero");
  EXPECT_EQ(errorOfWriting(7), "zero");
  EXPECT_EQ(lamp.watt(), 7U);
  static_cast<void>(calls());
  EXPECT_EQ(errorOfWriting(7), "none");
  EXPECT_EQ(calls(), Numbers{});
}

TEST_F(NotifieeExceptions, insertedMemberStays) {
  addMany(2);
  throwsIn(0, "zero");
  EXPECT_EQ(errorOf([&] { lamp.bulbIs("left"); }), "zero");
  ASSERT_TRUE(lamp.bulb().has("left"));
  EXPECT_EQ(lamp.bulb().find("left")->parent(), &lamp);
}

TEST_F(NotifieeExceptions, removedMemberIsGone) {
  const auto left = lamp.bulbIs("left");
  addMany(2);
  throwsIn(0, "zero");
  EXPECT_EQ(errorOf([&] { lamp.bulbDel("left"); }), "zero");
  EXPECT_FALSE(lamp.bulb().has("left"));
  EXPECT_EQ(left->references(), 1U);
}

TEST_F(NotifieeExceptions, removalOfAllEndsWithMemberWhoseHandlerThrows) {
  for (const char* name : {"a", "b", "c"}) {
    lamp.bulbIs(name);
    lamp.sceneIs(name, 1);
  }
  addMany(1);
  throwsIn(0, "zero");
  EXPECT_EQ(errorOf([&] { lamp.bulbDelAll(); }), "zero");
  EXPECT_EQ(lamp.bulb().size(), 2U);
  EXPECT_EQ(errorOf([&] { lamp.sceneDelAll(); }), "zero");
  EXPECT_EQ(lamp.scene().size(), 2U);
  EXPECT_EQ(lamp.references(), 1U + reactors.size());
}

TEST_F(NotifieeExceptions, listIsUsableAfterwards) {
  addMany(4);
  throwsIn(1, "one");
  EXPECT_EQ(errorOfWriting(1), "one");
  does.clear();
  reactors[0]->notifierIs(nullptr);
  addMany(1);
  static_cast<void>(calls());
  EXPECT_EQ(errorOfWriting(2), "none");
  EXPECT_EQ(calls(), (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(lamp.notifieeList()->size(), 4U);
}

TEST_F(NotifieeExceptions, handlerMayRemoveAndAddReactorsAndThenThrow) {
  addMany(4);
  does[1] = [&] {
    reactors[1]->notifierIs(nullptr);
    reactors[2]->notifierIs(nullptr);
    addMany(1);
    throw std::runtime_error("one");
  };
  EXPECT_EQ(errorOfWriting(1), "one");
  EXPECT_EQ(calls(), (Numbers{0, 1, 3}));
  EXPECT_EQ(errorOfWriting(2), "none");
  EXPECT_EQ(calls(), (Numbers{0, 3, 4}));
}

TEST_F(NotifieeExceptions, reactorSwitchedOffAfterThrowIsNotCalled) {
  addMany(4);
  throwsIn(0, "zero");
  does[1] = [&] { reactors[2]->hasNotificationActiveIs(false); };
  EXPECT_EQ(errorOfWriting(1), "zero");
  EXPECT_EQ(calls(), (Numbers{0, 1, 3}));
}

TEST_F(NotifieeExceptions, nestedExceptionPassesThroughHandlerThatWrote) {
  addMany(3);
  does[0] = [&] {
    if (lamp.watt() == 1) lamp.wattIs(2);
  };
  does[1] = [&] { throw std::runtime_error("at " + std::to_string(lamp.watt())); };
  // Both visits come to reactor 1; what it throws in the nested one comes first.
  EXPECT_EQ(errorOfWriting(1), "at 2");
  EXPECT_EQ(calls(), (Numbers{0, 0, 1, 2, 1, 2}));
  EXPECT_EQ(lamp.watt(), 2U);
}

TEST_F(NotifieeExceptions, handlerThatCatchesNestedExceptionKeepsItFromWriter) {
  addMany(2);
  std::string caught;
  does[0] = [&] {
    if (lamp.watt() == 1) caught = errorOfWriting(2);
  };
  does[1] = [&] {
    if (does.erase(1) != 0) throw std::runtime_error("nested");
  };
  EXPECT_EQ(errorOfWriting(1), "none");
  EXPECT_EQ(caught, "nested");
  EXPECT_EQ(calls(), (Numbers{0, 0, 1, 1}));
}

TEST_F(NotifieeExceptions, handlerCalledAfterThrowMayWriteAndThrowItself) {
  addMany(3);
  throwsIn(0, "first");
  std::vector<std::string> caught;
  does[1] = [&] {
    if (lamp.watt() == 1) caught.push_back(errorOfWriting(2));
  };
  does[2] = [&] { throw std::runtime_error("last"); };
  EXPECT_EQ(errorOfWriting(1), "first");
  EXPECT_EQ(caught, std::vector<std::string>{"first"});
  EXPECT_EQ(calls(), (Numbers{0, 1, 0, 1, 2, 2}));
}

TEST_F(NotifieeExceptions, exceptionPassesThroughEachLevelOfDepthOfHundred) {
  addMany(2);
  does[0] = [&] {
    if (lamp.watt() == 100) throw std::runtime_error("bottom");
    lamp.wattIs(lamp.watt() + 1);
  };
  EXPECT_EQ(errorOfWriting(1), "bottom");
  Numbers expected(100, 0);
  expected.insert(expected.end(), 100, 1);
  EXPECT_EQ(calls(), expected);
  does.clear();
  EXPECT_EQ(errorOfWriting(1), "none");
  EXPECT_EQ(calls(), (Numbers{0, 1}));
}

TEST_F(NotifieeExceptions, handlerMayEndItsReactorAndThrow) {
  for (const std::size_t size : {1U, 3U}) {
    reactors.clear();
    addMany(size);
    does[0] = [this] {
      reactors[0]->notifierIs(nullptr);
      throw std::runtime_error("zero");
    };
    EXPECT_EQ(errorOfWriting(lamp.watt() + 1), "zero");
    EXPECT_EQ(calls().size(), size);
    EXPECT_EQ(lamp.notifieeList()->size(), size - 1);
  }
}

TEST_F(NotifieeExceptions, handlerMayEndNotifierAndThrow) {
  for (const std::size_t size : {1U, 2U, 8U}) {
    int ends = 0;
    auto owner = makePtr<Lamp>(&ends);
    reactors.clear();
    addMany(size, owner.get());
    Lamp* const doomed = owner.get();
    owner = nullptr;
    does[0] = [this] {
      for (const auto& reactor : reactors) reactor->notifierIs(nullptr);
      throw std::runtime_error("doomed");
    };
    EXPECT_EQ(errorOf([&] { doomed->wattIs(1); }), "doomed");
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(calls(), Numbers{0});
  }
}

}  // namespace Mox::NotifieeExceptionsTest
