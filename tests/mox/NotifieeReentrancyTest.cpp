// What handlers may do to reactors, attributes and members while they are notified.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "mox/Notifiee.h"
#include "tests/support/Recorder.h"

namespace Mox::NotifieeReentrancyTest {

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

  Lamp() : NamedEntity("lamp") {}

  [[nodiscard]] unsigned watt() const { return watt_; }
  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }
  [[nodiscard]] const auto& bulb() const { return bulb_; }
  [[nodiscard]] Bulb* bulb(const String& socket) { return bulb_.find(socket); }
  Ptr<Bulb> bulbIs(const String& socket) { return memberIs(bulb_, bulbAttr, socket); }
  void bulbDel(const String& socket) { memberDel(bulb_, bulbAttr, socket); }

 private:
  unsigned watt_ = 0;
  EntityCollection<String, Bulb> bulb_;
};

/// Reactors on a lamp, numbered from 0, that note their calls; `does[i]` is what reactor i does when it is called.
class NotifieeReentrancy : public testing::Test {
 protected:
  Recorder& add(const PtrInterface& notifier) {
    const std::size_t number = reactors.size();
    reactors.push_back(makePtr<Recorder>(&notifier, [this, number](AttributeId, const void*) {
      calls_.push_back(number);
      if (does.contains(number)) does.at(number)();
    }));
    return *reactors.back();
  }
  void addMany(std::size_t count) {
    while (count-- > 0) add(lamp);
  }
  /// Changes the lamp; returns who was called, in order.
  [[nodiscard]] Numbers callsOfChange() {
    lamp.wattIs(lamp.watt() + 1);
    return calls();
  }
  [[nodiscard]] Numbers calls() { return std::exchange(calls_, {}); }
  /// Lets reactor i do this at its next call only.
  void doesOnce(std::size_t i, std::function<void()> action) {
    does[i] = [this, i, todo = std::move(action)] {
      const auto now = todo;
      does.erase(i);
      now();
    };
  }

  Lamp lamp;
  std::vector<Ptr<Recorder>> reactors;
  std::map<std::size_t, std::function<void()>> does;

 private:
  Numbers calls_;
};

/// For each of the positions of a list of so many reactors.
class NotifieeReentrancyAt : public NotifieeReentrancy,
                             public testing::WithParamInterface<std::pair<std::size_t, std::size_t>> {
 protected:
  NotifieeReentrancyAt() { addMany(size); }

  [[nodiscard]] Numbers all() const {
    Numbers numbers;
    for (std::size_t i = 0; i < size; ++i) numbers.push_back(i);
    return numbers;
  }
  [[nodiscard]] Numbers allButActor() const {
    Numbers numbers = all();
    std::erase(numbers, actor);
    return numbers;
  }
  /// The others in order, and the actor behind them.
  [[nodiscard]] Numbers actorLast() const {
    Numbers numbers = allButActor();
    numbers.push_back(actor);
    return numbers;
  }

  std::size_t size = GetParam().first;
  std::size_t actor = GetParam().second;
};

INSTANTIATE_TEST_SUITE_P(Notifiee, NotifieeReentrancyAt,
                         testing::Values(std::pair{1, 0}, std::pair{2, 0}, std::pair{2, 1}, std::pair{3, 1},
                                         std::pair{8, 0}, std::pair{8, 4}, std::pair{8, 7}),
                         [](const testing::TestParamInfo<std::pair<std::size_t, std::size_t>>& at) {
                           return std::to_string(at.param.second) + "of" + std::to_string(at.param.first);
                         });

TEST_P(NotifieeReentrancyAt, handlerMayUnregisterItself) {
  doesOnce(actor, [&] { reactors[actor]->isRegisteredNotifieeIs(false); });
  EXPECT_EQ(callsOfChange(), all());
  EXPECT_EQ(callsOfChange(), allButActor());
}

TEST_P(NotifieeReentrancyAt, handlerMayUnbindItself) {
  doesOnce(actor, [&] { reactors[actor]->notifierIs(nullptr); });
  EXPECT_EQ(callsOfChange(), all());
  EXPECT_EQ(callsOfChange(), allButActor());
}

TEST_P(NotifieeReentrancyAt, handlerThatRegistersItselfAgainIsNotCalledTwice) {
  doesOnce(actor, [&] {
    reactors[actor]->isRegisteredNotifieeIs(false);
    reactors[actor]->isRegisteredNotifieeIs(true);
  });
  EXPECT_EQ(callsOfChange(), all());
  EXPECT_EQ(callsOfChange(), actorLast());
}

TEST_P(NotifieeReentrancyAt, handlerMayMoveItselfToAnotherNotifier) {
  Lamp other;
  doesOnce(actor, [&] { reactors[actor]->notifierIs(&other); });
  EXPECT_EQ(callsOfChange(), all());
  EXPECT_EQ(callsOfChange(), allButActor());
  other.wattIs(1);
  EXPECT_EQ(calls(), Numbers{actor});
  reactors[actor] = nullptr;
}

TEST_P(NotifieeReentrancyAt, handlerMaySwitchItselfOff) {
  doesOnce(actor, [&] { reactors[actor]->hasNotificationActiveIs(false); });
  EXPECT_EQ(callsOfChange(), all());
  EXPECT_EQ(callsOfChange(), allButActor());
}

TEST_P(NotifieeReentrancyAt, handlerMayRemoveAllOthers) {
  doesOnce(actor, [&] {
    for (const std::size_t i : allButActor()) reactors[i]->notifierIs(nullptr);
  });
  Numbers upToActor = all();
  upToActor.resize(actor + 1);
  EXPECT_EQ(callsOfChange(), upToActor);
  EXPECT_EQ(callsOfChange(), Numbers{actor});
}

TEST_P(NotifieeReentrancyAt, reactorAddedMeanwhileIsCalledForLaterChangesOnly) {
  doesOnce(actor, [&] { add(lamp); });
  EXPECT_EQ(callsOfChange(), all());
  Numbers withNew = all();
  withNew.push_back(size);
  EXPECT_EQ(callsOfChange(), withNew);
}

TEST_P(NotifieeReentrancyAt, reactorAddedMeanwhileIsCalledForNestedChange) {
  doesOnce(actor, [&] {
    add(lamp);
    lamp.wattIs(100);
  });
  Numbers expected = all();
  Numbers nested = all();
  nested.push_back(size);
  expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(actor) + 1, nested.begin(), nested.end());
  EXPECT_EQ(callsOfChange(), expected);
}

TEST_P(NotifieeReentrancyAt, nestedChangeIsDeliveredToEndBeforeOuterGoesOn) {
  doesOnce(actor, [&] { lamp.wattIs(100); });
  Numbers expected = all();
  const Numbers nested = all();
  expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(actor) + 1, nested.begin(), nested.end());
  EXPECT_EQ(callsOfChange(), expected);
}

TEST_P(NotifieeReentrancyAt, deleteAllEndsDelivery) {
  doesOnce(actor, [&] { lamp.notifieeList()->deleteAll(); });
  Numbers upToActor = all();
  upToActor.resize(actor + 1);
  EXPECT_EQ(callsOfChange(), upToActor);
  EXPECT_TRUE(lamp.notifieeList()->empty());
  EXPECT_EQ(callsOfChange(), Numbers{});
  for (const auto& reactor : reactors) reactor->isRegisteredNotifieeIs(true);
  EXPECT_EQ(callsOfChange(), all());
}

TEST_P(NotifieeReentrancyAt, reactorsBackAfterDeleteAllWaitForNextChange) {
  doesOnce(actor, [&] {
    lamp.notifieeList()->deleteAll();
    for (const auto& reactor : reactors) reactor->isRegisteredNotifieeIs(true);
  });
  Numbers upToActor = all();
  upToActor.resize(actor + 1);
  EXPECT_EQ(callsOfChange(), upToActor);
  EXPECT_EQ(callsOfChange(), all());
}

TEST_P(NotifieeReentrancyAt, manyMayComeAndGoMeanwhile) {
  doesOnce(actor, [&] {
    for (int i = 0; i < 100; ++i) {
      Recorder& passing = add(lamp);
      if (i % 10 != 0) passing.notifierIs(nullptr);
    }
  });
  EXPECT_EQ(callsOfChange(), all());
  Numbers expected = all();
  for (std::size_t i = 0; i < 100; i += 10) expected.push_back(size + i);
  EXPECT_EQ(callsOfChange(), expected);
}

TEST_F(NotifieeReentrancy, earlierReactorThatIsRemovedWasCalledOnce) {
  addMany(3);
  doesOnce(2, [&] { reactors[0]->notifierIs(nullptr); });
  EXPECT_EQ(callsOfChange(), (Numbers{0, 1, 2}));
  EXPECT_EQ(callsOfChange(), (Numbers{1, 2}));
}

TEST_F(NotifieeReentrancy, laterReactorThatIsRemovedIsNotCalled) {
  addMany(3);
  doesOnce(0, [&] { reactors[1]->isRegisteredNotifieeIs(false); });
  EXPECT_EQ(callsOfChange(), (Numbers{0, 2}));
  EXPECT_EQ(callsOfChange(), (Numbers{0, 2}));
}

TEST_F(NotifieeReentrancy, laterReactorThatGoesAndComesBackWaitsForNextChange) {
  addMany(3);
  doesOnce(0, [&] {
    reactors[1]->isRegisteredNotifieeIs(false);
    reactors[1]->isRegisteredNotifieeIs(true);
  });
  EXPECT_EQ(callsOfChange(), (Numbers{0, 2}));
  EXPECT_EQ(callsOfChange(), (Numbers{0, 2, 1}));
}

TEST_F(NotifieeReentrancy, laterReactorThatVisitsAnotherNotifierWaitsForNextChange) {
  addMany(3);
  Lamp other;
  doesOnce(0, [&] {
    reactors[1]->notifierIs(&other);
    reactors[1]->notifierIs(&lamp);
  });
  EXPECT_EQ(callsOfChange(), (Numbers{0, 2}));
  EXPECT_EQ(callsOfChange(), (Numbers{0, 2, 1}));
}

TEST_F(NotifieeReentrancy, laterReactorThatIsSwitchedOffIsNotCalled) {
  addMany(3);
  doesOnce(0, [&] { reactors[1]->hasNotificationActiveIs(false); });
  EXPECT_EQ(callsOfChange(), (Numbers{0, 2}));
}

TEST_F(NotifieeReentrancy, laterReactorThatIsSwitchedOnIsCalled) {
  addMany(3);
  reactors[1]->hasNotificationActiveIs(false);
  doesOnce(0, [&] { reactors[1]->hasNotificationActiveIs(true); });
  EXPECT_EQ(callsOfChange(), (Numbers{0, 1, 2}));
}

TEST_F(NotifieeReentrancy, soleReactorReplacedByAnotherLeavesThatForNextChange) {
  addMany(1);
  doesOnce(0, [&] {
    reactors[0]->notifierIs(nullptr);
    add(lamp);
  });
  EXPECT_EQ(callsOfChange(), (Numbers{0}));
  EXPECT_EQ(callsOfChange(), (Numbers{1}));
}

TEST_F(NotifieeReentrancy, reactorRemovedInNestedVisitIsNotCalledInOuterOne) {
  addMany(4);
  doesOnce(0, [&] { lamp.wattIs(100); });
  // Reactor 1 acts in the nested visit, which comes to it first.
  doesOnce(1, [&] {
    reactors[0]->notifierIs(nullptr);
    reactors[2]->notifierIs(nullptr);
  });
  EXPECT_EQ(callsOfChange(), (Numbers{0, 0, 1, 3, 1, 3}));
  EXPECT_EQ(callsOfChange(), (Numbers{1, 3}));
}

TEST_F(NotifieeReentrancy, laterReactorsReadPresentValue) {
  std::vector<unsigned> read;
  addMany(2);
  doesOnce(0, [&] { lamp.wattIs(100); });
  does[1] = [&] { read.push_back(lamp.watt()); };
  lamp.wattIs(1);
  EXPECT_EQ(read, (std::vector<unsigned>{100, 100}));
}

TEST_F(NotifieeReentrancy, writingEqualValueInHandlerEndsRecursion) {
  addMany(2);
  does[0] = [&] { lamp.wattIs(5); };
  lamp.wattIs(1);
  EXPECT_EQ(calls(), (Numbers{0, 0, 1, 1}));
}

TEST_F(NotifieeReentrancy, soleHandlerMayWriteAgainToDepthOfHundred) {
  addMany(1);
  does[0] = [&] {
    if (lamp.watt() < 100) lamp.wattIs(lamp.watt() + 1);
  };
  lamp.wattIs(1);
  EXPECT_EQ(lamp.watt(), 100U);
  EXPECT_EQ(calls(), Numbers(100, 0));
}

TEST_F(NotifieeReentrancy, handlersMayWriteAgainToDepthOfHundred) {
  addMany(3);
  does[1] = [&] {
    if (lamp.watt() < 100) lamp.wattIs(lamp.watt() + 1);
  };
  lamp.wattIs(1);
  Numbers expected;
  for (int i = 0; i < 100; ++i) expected.insert(expected.end(), {0, 1});
  expected.insert(expected.end(), 100, 2);
  EXPECT_EQ(calls(), expected);
}

TEST_F(NotifieeReentrancy, twoNotifiersMayAnswerEachOther) {
  Lamp other;
  add(lamp);
  const Ptr<Recorder> answering = makePtr<Recorder>(&other, [&](AttributeId, const void*) {
    if (lamp.watt() < 100) lamp.wattIs(lamp.watt() + 1);
  });
  does[0] = [&] { other.wattIs(lamp.watt()); };
  lamp.wattIs(1);
  EXPECT_EQ(calls().size(), 100U);
  EXPECT_EQ(answering->events.size(), 100U);
  EXPECT_EQ(other.watt(), 100U);
}

TEST_F(NotifieeReentrancy, handlerMayDeleteMemberThatItIsToldOf) {
  std::vector<bool> seen;
  addMany(2);
  does[0] = [&] { lamp.bulbDel("left"); };
  does[1] = [&] { seen.push_back(lamp.bulb("left") != nullptr); };
  const Ptr<Bulb> bulb = lamp.bulbIs("left");
  ASSERT_NE(bulb, nullptr);
  EXPECT_EQ(bulb->name(), "left");
  EXPECT_EQ(bulb->references(), 1U);
  EXPECT_EQ(bulb->parent(), nullptr);
  EXPECT_TRUE(lamp.bulb().empty());
  // First of the removal, then of the insertion; the member is gone for both.
  EXPECT_EQ(calls(), (Numbers{0, 0, 1, 1}));
  EXPECT_EQ(seen, (std::vector<bool>{false, false}));
}

TEST_F(NotifieeReentrancy, handlerMayReplaceMemberThatItIsToldOf) {
  addMany(1);
  doesOnce(0, [&] {
    lamp.bulbDel("left");
    lamp.bulbIs("left");
  });
  const Ptr<Bulb> bulb = lamp.bulbIs("left");
  EXPECT_NE(lamp.bulb("left"), bulb.get());
  EXPECT_EQ(bulb->parent(), nullptr);
  EXPECT_EQ(lamp.bulb("left")->parent(), &lamp);
}

TEST_F(NotifieeReentrancy, handlerMayDeleteAndInsertOtherMembers) {
  const Ptr<Bulb> left = lamp.bulbIs("left");
  addMany(2);
  doesOnce(0, [&] {
    lamp.bulbDel("left");
    for (int i = 0; i < 100; ++i) lamp.bulbIs(std::to_string(i));
  });
  const Ptr<Bulb> right = lamp.bulbIs("right");
  EXPECT_EQ(lamp.bulb("right"), right.get());
  EXPECT_EQ(lamp.bulb("left"), nullptr);
  EXPECT_EQ(lamp.bulb().size(), 101U);
  EXPECT_EQ(calls().size(), 2U * 102U);
}

}  // namespace Mox::NotifieeReentrancyTest
