#include "mox/Notifiee.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "tests/support/Allocations.h"
#include "tests/support/Random.h"
#include "tests/support/Recorder.h"

namespace Mox::NotifieeTest {

using Test::AllocationCount;
using Test::KeyRecorder;
using Test::Random;
using Test::Recorder;
using Test::seedTrace;
using Events = std::vector<Recorder::Event>;
using Numbers = std::vector<std::size_t>;

class Lamp : public NamedEntity {
 public:
  static constexpr ScalarAttribute wattAttr{0, "watt"};
  static constexpr CollectionAttribute<String> sceneAttr{1, "scene"};

  Lamp() : NamedEntity("lamp") {}

  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }
  void sceneIs(const String& name, unsigned v) { valueIs(scene_, sceneAttr, name, v); }
  void sceneDel(const String& name) { valueDel(scene_, sceneAttr, name); }

 private:
  unsigned watt_ = 0;
  ValueCollection<String, unsigned> scene_;
};

/// Writes its number into a journal when it is called.
class Numbered : public PtrInterface::NotifieeConst {
 public:
  Numbered(Numbers& journal, std::size_t number, const PtrInterface* notifier = nullptr)
      : journal_(journal), number_(number) {
    hasNotificationActiveIs(true);
    notifierIs(notifier);
  }
  void onAttribute(AttributeId /*id*/, const void* /*key*/) override { journal_.push_back(number_); }

 private:
  Numbers& journal_;
  std::size_t number_;
};

class Silent : public PtrInterface::NotifieeConst {
  void onAttribute(AttributeId /*id*/, const void* /*key*/) override {}
};

/// So many reactors on one notifier.
class Row {
 public:
  Row(std::size_t size, const PtrInterface* notifier) {
    for (std::size_t i = 0; i < size; ++i) reactors_.push_back(std::make_unique<Numbered>(journal_, i, notifier));
  }

  Numbered& operator[](std::size_t i) { return *reactors_[i]; }
  /// The numbers of those that were called since the last time, in order.
  [[nodiscard]] Numbers called() { return std::exchange(journal_, {}); }

 private:
  Numbers journal_;
  std::vector<std::unique_ptr<Numbered>> reactors_;
};

TEST(Notifiee, writingValueTellsAttributeWithoutKey) {
  Lamp lamp;
  const Recorder recorder(&lamp);
  lamp.wattIs(7);
  EXPECT_EQ(recorder.events, (Events{{Lamp::wattAttr.id(), false}}));
}

TEST(Notifiee, writingEqualValueIsSilent) {
  Lamp lamp;
  lamp.wattIs(7);
  const Recorder recorder(&lamp);
  lamp.wattIs(7);
  EXPECT_EQ(recorder.events, Events{});
}

TEST(Notifiee, eachChangeIsToldOnce) {
  Lamp lamp;
  const Recorder recorder(&lamp);
  lamp.wattIs(7);
  lamp.wattIs(8);
  lamp.wattIs(7);
  EXPECT_EQ(recorder.events.size(), 3U);
}

TEST(Notifiee, changeOfMemberTellsAttributeAndKey) {
  Lamp lamp;
  const Recorder recorder(&lamp);
  const KeyRecorder<String> keys(&lamp, Lamp::sceneAttr);
  lamp.sceneIs("evening", 40);
  lamp.sceneDel("evening");
  EXPECT_EQ(recorder.events, (Events{{Lamp::sceneAttr.id(), true}, {Lamp::sceneAttr.id(), true}}));
  EXPECT_EQ(keys.keys, (std::vector<String>{"evening", "evening"}));
}

TEST(Notifiee, reactorsAreCalledInOrderOfRegistration) {
  for (const std::size_t size : {1U, 2U, 3U, 10U}) {
    Lamp lamp;
    Row row(size, &lamp);
    lamp.wattIs(7);
    Numbers expected(size);
    std::iota(expected.begin(), expected.end(), 0U);
    EXPECT_EQ(row.called(), expected);
  }
}

TEST(Notifiee, isUnboundAndInactiveAtConstruction) {
  class Plain : public PtrInterface::NotifieeConst {
    void onAttribute(AttributeId /*id*/, const void* /*key*/) override { ADD_FAILURE(); }
  };
  Plain plain;
  EXPECT_EQ(plain.notifier(), nullptr);
  EXPECT_FALSE(plain.isRegisteredNotifiee());
  EXPECT_FALSE(plain.hasNotificationActive());

  Lamp lamp;
  plain.notifierIs(&lamp);
  lamp.wattIs(7);
}

TEST(Notifiee, inactiveReactorIsNotCalledAndKeepsItsTurn) {
  for (const std::size_t size : {1U, 3U}) {
    Lamp lamp;
    Row row(size, &lamp);
    lamp.wattIs(1);
    const Numbers all = row.called();
    row[0].hasNotificationActiveIs(false);
    EXPECT_FALSE(row[0].hasNotificationActive());
    lamp.wattIs(2);
    EXPECT_EQ(row.called(), Numbers(all.begin() + 1, all.end()));
    row[0].hasNotificationActiveIs(true);
    EXPECT_EQ(row.called(), Numbers{});
    lamp.wattIs(3);
    EXPECT_EQ(row.called(), all);
  }
}

TEST(Notifiee, reactorSwitchedOffWhileUnboundIsNotCalledOnceBound) {
  Lamp lamp;
  Row row(3, nullptr);
  row[1].hasNotificationActiveIs(false);
  for (std::size_t i = 0; i < 3; ++i) row[i].notifierIs(&lamp);
  lamp.wattIs(1);
  EXPECT_EQ(row.called(), (Numbers{0, 2}));
}

TEST(Notifiee, switchOfUnregisteredReactorHoldsOnceItIsBack) {
  Lamp lamp;
  Row row(3, &lamp);
  row[1].isRegisteredNotifieeIs(false);
  row[1].hasNotificationActiveIs(false);
  row[1].isRegisteredNotifieeIs(true);
  lamp.wattIs(1);
  EXPECT_EQ(row.called(), (Numbers{0, 2}));
  row[1].hasNotificationActiveIs(true);
  lamp.wattIs(2);
  EXPECT_EQ(row.called(), (Numbers{0, 2, 1}));
}

TEST(Notifiee, switchesHoldWhileListGrowsAndShrinks) {
  Lamp lamp;
  Row row(8, &lamp);
  row[0].hasNotificationActiveIs(false);
  row[6].hasNotificationActiveIs(false);
  for (const std::size_t gone : {1U, 2U, 3U, 4U}) row[gone].isRegisteredNotifieeIs(false);
  lamp.wattIs(1);
  EXPECT_EQ(row.called(), (Numbers{5, 7}));
  for (const std::size_t gone : {5U, 6U, 7U}) row[gone].isRegisteredNotifieeIs(false);
  lamp.wattIs(2);
  EXPECT_EQ(row.called(), Numbers{});
  row[0].hasNotificationActiveIs(true);
  lamp.wattIs(3);
  EXPECT_EQ(row.called(), (Numbers{0}));
}

TEST(Notifiee, unregisteredReactorStaysBoundAndIsNotCalled) {
  for (const std::size_t size : {1U, 2U, 3U}) {
    Lamp lamp;
    Row row(size, &lamp);
    row[0].isRegisteredNotifieeIs(false);
    EXPECT_FALSE(row[0].isRegisteredNotifiee());
    EXPECT_EQ(row[0].notifier(), &lamp);
    lamp.wattIs(7);
    EXPECT_EQ(row.called().size(), size - 1);
  }
}

TEST(Notifiee, reactorRegisteredAgainStandsBehindOthers) {
  Lamp lamp;
  Row row(3, &lamp);
  row[0].isRegisteredNotifieeIs(false);
  row[0].isRegisteredNotifieeIs(true);
  EXPECT_TRUE(row[0].isRegisteredNotifiee());
  lamp.wattIs(7);
  EXPECT_EQ(row.called(), (Numbers{1, 2, 0}));
}

TEST(Notifiee, registeringTwiceChangesNothing) {
  Lamp lamp;
  Row row(2, &lamp);
  row[0].isRegisteredNotifieeIs(true);
  lamp.wattIs(7);
  EXPECT_EQ(row.called(), (Numbers{0, 1}));
  row[0].isRegisteredNotifieeIs(false);
  row[0].isRegisteredNotifieeIs(false);
  lamp.wattIs(8);
  EXPECT_EQ(row.called(), (Numbers{1}));
}

TEST(Notifiee, unboundReactorStaysOutOfEveryList) {
  Row row(1, nullptr);
  row[0].isRegisteredNotifieeIs(true);
  EXPECT_FALSE(row[0].isRegisteredNotifiee());
}

TEST(Notifiee, nullNotifierUnbinds) {
  Lamp lamp;
  Row row(2, &lamp);
  row[0].notifierIs(nullptr);
  EXPECT_EQ(row[0].notifier(), nullptr);
  EXPECT_FALSE(row[0].isRegisteredNotifiee());
  lamp.wattIs(7);
  EXPECT_EQ(row.called(), (Numbers{1}));
  row[0].notifierIs(nullptr);
  EXPECT_EQ(row[0].notifier(), nullptr);
}

TEST(Notifiee, bindingToAnotherNotifierLeavesFirst) {
  Lamp first;
  Lamp second;
  Row row(1, &first);
  row[0].notifierIs(&second);
  EXPECT_EQ(row[0].notifier(), &second);
  EXPECT_TRUE(row[0].isRegisteredNotifiee());
  first.wattIs(1);
  EXPECT_EQ(row.called(), Numbers{});
  second.wattIs(1);
  EXPECT_EQ(row.called(), (Numbers{0}));
}

TEST(Notifiee, bindingRegistersOneThatWasNotRegistered) {
  Lamp first;
  Lamp second;
  Row row(1, &first);
  row[0].isRegisteredNotifieeIs(false);
  row[0].notifierIs(&second);
  second.wattIs(1);
  EXPECT_EQ(row.called(), (Numbers{0}));
}

TEST(Notifiee, bindingToPresentNotifierChangesNothing) {
  Lamp lamp;
  Row row(2, &lamp);
  const auto references = lamp.references();
  row[0].notifierIs(&lamp);
  EXPECT_EQ(lamp.references(), references);
  lamp.wattIs(1);
  EXPECT_EQ(row.called(), (Numbers{0, 1}));

  row[0].isRegisteredNotifieeIs(false);
  row[0].notifierIs(&lamp);
  EXPECT_FALSE(row[0].isRegisteredNotifiee());
}

TEST(Notifiee, countedConstantPointerBindsToo) {
  const auto lamp = makePtr<Lamp>();
  Row row(1, nullptr);
  row[0].notifierIs(Ptr<const PtrInterface>(lamp));
  lamp->wattIs(1);
  EXPECT_EQ(row.called(), (Numbers{0}));
}

TEST(NotifieeList, isOneWord) { EXPECT_EQ(sizeof(NotifieeList), sizeof(void*)); }

TEST(NotifieeList, sizeCountsRegisteredReactors) {
  Lamp lamp;
  const NotifieeList& list = *lamp.notifieeList();
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.size(), 0U);
  Row row(5, &lamp);
  EXPECT_FALSE(list.empty());
  for (std::size_t left = 5; left > 0; --left) {
    EXPECT_EQ(list.size(), left);
    row[left - 1].isRegisteredNotifieeIs(false);
  }
  EXPECT_TRUE(list.empty());
}

TEST(NotifieeList, visitDeliversToReactorsOfItsNotifier) {
  Lamp lamp;
  const Recorder recorder(&lamp);
  const String scene = "evening";
  const KeyRecorder<String> keys(&lamp, Lamp::sceneAttr);
  lamp.notifieeList()->visit(4711);
  lamp.notifieeList()->visit(Lamp::sceneAttr.id(), &scene);
  EXPECT_EQ(recorder.events, (Events{{4711, false}, {Lamp::sceneAttr.id(), true}}));
  EXPECT_EQ(keys.keys, std::vector<String>{scene});
}

TEST(NotifieeList, deleteAllRemovesReactorsWhichStayBound) {
  for (const std::size_t size : {0U, 1U, 2U, 5U}) {
    Lamp lamp;
    Row row(size, &lamp);
    lamp.notifieeList()->deleteAll();
    EXPECT_TRUE(lamp.notifieeList()->empty());
    lamp.wattIs(1);
    EXPECT_EQ(row.called(), Numbers{});
    Numbers reverse;
    for (std::size_t i = size; i > 0; --i) {
      EXPECT_EQ(row[i - 1].notifier(), &lamp);
      EXPECT_FALSE(row[i - 1].isRegisteredNotifiee());
      row[i - 1].isRegisteredNotifieeIs(true);
      reverse.push_back(i - 1);
    }
    lamp.wattIs(2);
    EXPECT_EQ(row.called(), reverse);
  }
}

TEST(NotifieeList, visitAllocatesNoMemory) {
  for (const std::size_t size : {0U, 1U, 8U}) {
    Lamp lamp;
    std::vector<Silent> reactors(size);
    for (std::size_t i = 0; i < size; ++i) {
      reactors[i].hasNotificationActiveIs(true);
      reactors[i].notifierIs(&lamp);
    }
    const AllocationCount allocations;
    lamp.wattIs(1);
    EXPECT_EQ(allocations.made(), 0U);
  }
}

TEST(NotifieeList, manyReactorsComeAndGoInAnyOrder) {
  SCOPED_TRACE(seedTrace());
  constexpr std::size_t size = 1000;
  Random random;
  Lamp lamp;
  Row row(size, nullptr);
  Numbers numbers(size);
  std::iota(numbers.begin(), numbers.end(), 0U);

  random.shuffle(numbers);
  Numbers expected = numbers;
  for (const std::size_t i : numbers) row[i].notifierIs(&lamp);
  lamp.wattIs(1);
  ASSERT_EQ(row.called(), expected);

  random.shuffle(numbers);
  unsigned watt = 1;
  for (std::size_t i = 0; i < size; ++i) {
    row[numbers[i]].notifierIs(nullptr);
    std::erase(expected, numbers[i]);
    if (random.percent(30)) {
      row[numbers[i]].notifierIs(&lamp);
      expected.push_back(numbers[i]);
    }
    ASSERT_EQ(lamp.notifieeList()->size(), expected.size());
    if (i % 50 != 0) continue;
    lamp.wattIs(++watt);
    ASSERT_EQ(row.called(), expected);
  }
}

// A list that searched or shifted its reactors at each removal would not be through in the time that a test has.
TEST(NotifieeList, removalFromMillionReactorsStaysConstant) {
  constexpr std::size_t size = 1'000'000;
  Lamp lamp;
  std::vector<Silent> reactors(size);
  for (std::size_t i = 0; i < size; ++i) reactors[i].notifierIs(&lamp);
  for (std::size_t i = 0; i < size; i += 2) reactors[i].notifierIs(nullptr);
  EXPECT_EQ(lamp.notifieeList()->size(), size / 2);
  for (std::size_t i = size; i > 0; i -= 2) reactors[i - 1].notifierIs(nullptr);
  EXPECT_TRUE(lamp.notifieeList()->empty());
}

TEST(NotifieeDeathTest, bindingToObjectWithoutListAborts) {
  struct Mute : PtrInterface {};
  const auto mute = makePtr<Mute>();
  Row row(1, nullptr);
  EXPECT_EXIT(
      row[0].notifierIs(mute.get()), testing::KilledBySignal(SIGABRT),
      testing::MatchesRegex("mox/Notifiee\\.cpp:[0-9]+: void Mox::PtrInterface::NotifieeConst::notifierIs"
                            "\\(const Mox::PtrInterface ?\\*\\): Assertion "
                            "'notifier == nullptr \\|\\| notifier->notifieeList\\(\\) != nullptr' failed\\.\n"));
}

}  // namespace Mox::NotifieeTest
