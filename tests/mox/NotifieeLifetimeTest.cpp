// What happens when reactors, state machines and notifiers end, also in the middle of a notification.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "mox/Notifiee.h"
#include "mox/StateMachine.h"

namespace Mox::NotifieeLifetimeTest {

using Numbers = std::vector<std::size_t>;

class Lamp : public NamedEntity {
 public:
  static constexpr ScalarAttribute wattAttr{0, "watt"};

  explicit Lamp(std::function<void()> atEnd = {}) : NamedEntity("lamp"), atEnd_(std::move(atEnd)) {}
  ~Lamp() override {
    if (atEnd_) atEnd_();
  }

  [[nodiscard]] unsigned watt() const { return watt_; }
  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }

 private:
  unsigned watt_ = 0;
  std::function<void()> atEnd_;
};

/// What the reactors do when they are called, and who was.
struct Script {
  void called(std::size_t number) {
    calls.push_back(number);
    // The action may end the reactor, and may be exchanged by itself.
    const auto found = does.find(number);
    if (found == does.end()) return;
    const auto action = found->second;
    action();
  }
  [[nodiscard]] Numbers takeCalls() { return std::exchange(calls, {}); }

  Numbers calls;
  std::map<std::size_t, std::function<void()>> does;
};

class Scripted : public PtrInterface::NotifieeConst {
 public:
  Scripted(Script& script, std::size_t number, const PtrInterface* notifier) : script_(script), number_(number) {
    hasNotificationActiveIs(true);
    notifierIs(notifier);
  }
  void onAttribute(AttributeId /*id*/, const void* /*key*/) override { script_.called(number_); }

 private:
  Script& script_;
  std::size_t number_;
};

/// So many reactors on a lamp that nobody else needs to hold.
class NotifieeLifetime : public testing::Test {
 protected:
  [[nodiscard]] Ptr<Lamp> lampThatTellsItsEnd() {
    return makePtr<Lamp>([this] { ++lampEnds; });
  }
  void addMany(std::size_t count, const PtrInterface* notifier) {
    while (count-- > 0) reactors.push_back(std::make_unique<Scripted>(script, reactors.size(), notifier));
  }

  int lampEnds = 0;
  Script script;
  std::vector<std::unique_ptr<Scripted>> reactors;
};

TEST_F(NotifieeLifetime, boundReactorKeepsItsNotifier) {
  auto lamp = lampThatTellsItsEnd();
  addMany(1, lamp.get());
  EXPECT_EQ(lamp->references(), 2U);
  lamp = nullptr;
  EXPECT_EQ(lampEnds, 0);
  reactors[0]->notifierIs(nullptr);
  EXPECT_EQ(lampEnds, 1);
}

TEST_F(NotifieeLifetime, unregisteredReactorKeepsItsNotifierUntilItEnds) {
  auto lamp = lampThatTellsItsEnd();
  addMany(2, lamp.get());
  lamp = nullptr;
  reactors[1]->isRegisteredNotifieeIs(false);
  reactors.erase(reactors.begin());
  EXPECT_EQ(lampEnds, 0);
  reactors.clear();
  EXPECT_EQ(lampEnds, 1);
}

TEST_F(NotifieeLifetime, endedReactorIsTakenOutOfList) {
  Lamp lamp;
  addMany(3, &lamp);
  reactors[1] = nullptr;
  EXPECT_EQ(lamp.notifieeList()->size(), 2U);
  lamp.wattIs(1);
  EXPECT_EQ(script.takeCalls(), (Numbers{0, 2}));
  reactors.clear();
  EXPECT_TRUE(lamp.notifieeList()->empty());
  lamp.wattIs(2);
  EXPECT_EQ(script.takeCalls(), Numbers{});
}

TEST_F(NotifieeLifetime, endOfOldNotifierMayBindReactorElsewhere) {
  Lamp other;
  addMany(1, nullptr);
  auto lamp = makePtr<Lamp>([&] { reactors[0]->notifierIs(&other); });
  reactors[0]->notifierIs(lamp.get());
  lamp = nullptr;
  reactors[0]->notifierIs(nullptr);
  EXPECT_EQ(reactors[0]->notifier(), &other);
  other.wattIs(1);
  EXPECT_EQ(script.takeCalls(), Numbers{0});
  reactors.clear();
}

TEST_F(NotifieeLifetime, endOfOldNotifierMayOverruleNewOne) {
  Lamp chosen;
  Lamp other;
  addMany(1, nullptr);
  auto lamp = makePtr<Lamp>([&] { reactors[0]->notifierIs(&other); });
  reactors[0]->notifierIs(lamp.get());
  lamp = nullptr;
  reactors[0]->notifierIs(&chosen);
  EXPECT_EQ(reactors[0]->notifier(), &other);
  EXPECT_TRUE(chosen.notifieeList()->empty());
  EXPECT_EQ(chosen.references(), 1U);
  other.wattIs(1);
  EXPECT_EQ(script.takeCalls(), Numbers{0});
  reactors.clear();
}

/// Lists of so many reactors.
class NotifieeLifetimeOf : public NotifieeLifetime, public testing::WithParamInterface<std::size_t> {
 protected:
  [[nodiscard]] static Numbers upTo(std::size_t last) {
    Numbers numbers;
    for (std::size_t i = 0; i <= last; ++i) numbers.push_back(i);
    return numbers;
  }
  [[nodiscard]] static Numbers allBut(std::size_t absent) {
    Numbers numbers = upTo(size() - 1);
    std::erase(numbers, absent);
    return numbers;
  }

  static std::size_t size() { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(Notifiee, NotifieeLifetimeOf, testing::Values(1, 2, 8));

TEST_P(NotifieeLifetimeOf, endOfLocalNotifierUnbindsReactorsWhichMayBindAgain) {
  {
    Lamp local;
    addMany(size(), &local);
  }
  for (const auto& reactor : reactors) {
    EXPECT_EQ(reactor->notifier(), nullptr);
    EXPECT_FALSE(reactor->isRegisteredNotifiee());
    reactor->isRegisteredNotifieeIs(true);
    EXPECT_FALSE(reactor->isRegisteredNotifiee());
  }
  Lamp next;
  for (const auto& reactor : reactors) reactor->notifierIs(&next);
  next.wattIs(1);
  EXPECT_EQ(script.takeCalls(), upTo(size() - 1));
  reactors.clear();
}

TEST_P(NotifieeLifetimeOf, handlerMayEndItsReactor) {
  for (std::size_t actor = 0; actor < size(); ++actor) {
    Lamp lamp;
    addMany(size(), &lamp);
    script.does[actor] = [this, actor] { reactors[actor] = nullptr; };
    lamp.wattIs(1);
    EXPECT_EQ(script.takeCalls(), upTo(size() - 1));
    lamp.wattIs(2);
    EXPECT_EQ(script.takeCalls(), allBut(actor));
    reactors.clear();
    script.does.clear();
  }
}

TEST_P(NotifieeLifetimeOf, handlerMayEndAllReactors) {
  for (std::size_t actor = 0; actor < size(); ++actor) {
    Lamp lamp;
    addMany(size(), &lamp);
    script.does[actor] = [this] { reactors.clear(); };
    lamp.wattIs(1);
    EXPECT_EQ(script.takeCalls(), upTo(actor));
    EXPECT_TRUE(lamp.notifieeList()->empty());
    lamp.wattIs(2);
    EXPECT_EQ(script.takeCalls(), Numbers{});
    script.does.clear();
  }
}

TEST_P(NotifieeLifetimeOf, handlerMayEndAllReactorsInNestedVisit) {
  for (std::size_t actor = 0; actor < size(); ++actor) {
    Lamp lamp;
    addMany(size(), &lamp);
    script.does[actor] = [this, actor, &lamp] {
      script.does[actor] = [this] { reactors.clear(); };
      lamp.wattIs(100);
    };
    lamp.wattIs(1);
    Numbers expected = upTo(actor);
    const Numbers nested = upTo(actor);
    expected.insert(expected.end(), nested.begin(), nested.end());
    EXPECT_EQ(script.takeCalls(), expected);
    script.does.clear();
  }
}

TEST_P(NotifieeLifetimeOf, handlerMayEndNotifierByUnbindingAll) {
  for (std::size_t actor = 0; actor < size(); ++actor) {
    lampEnds = 0;
    auto owner = lampThatTellsItsEnd();
    addMany(size(), owner.get());
    Lamp* const lamp = owner.release();
    lamp->referencesDec();
    script.does[actor] = [this] {
      for (const auto& reactor : reactors) reactor->notifierIs(nullptr);
      EXPECT_EQ(lampEnds, 1);
    };
    lamp->wattIs(1);
    EXPECT_EQ(script.takeCalls(), upTo(actor));
    EXPECT_EQ(lampEnds, 1);
    reactors.clear();
    script.does.clear();
  }
}

TEST_P(NotifieeLifetimeOf, handlerMayEndNotifierInNestedVisit) {
  for (std::size_t actor = 0; actor < size(); ++actor) {
    lampEnds = 0;
    auto owner = lampThatTellsItsEnd();
    addMany(size(), owner.get());
    Lamp* const lamp = owner.release();
    lamp->referencesDec();
    script.does[actor] = [this, actor, lamp] {
      script.does[actor] = [this] {
        for (const auto& reactor : reactors) reactor->notifierIs(nullptr);
      };
      lamp->wattIs(100);
      EXPECT_EQ(lampEnds, 1);
    };
    lamp->wattIs(1);
    EXPECT_EQ(lampEnds, 1);
    EXPECT_EQ(script.takeCalls().size(), 2 * (actor + 1));
    reactors.clear();
    script.does.clear();
  }
}

TEST_P(NotifieeLifetimeOf, handlerMayEndNotifierTogetherWithReactors) {
  for (std::size_t actor = 0; actor < size(); ++actor) {
    lampEnds = 0;
    auto owner = lampThatTellsItsEnd();
    addMany(size(), owner.get());
    Lamp* const lamp = owner.release();
    lamp->referencesDec();
    script.does[actor] = [this] { reactors.clear(); };
    lamp->wattIs(1);
    EXPECT_EQ(lampEnds, 1);
    EXPECT_EQ(script.takeCalls(), upTo(actor));
    script.does.clear();
  }
}

TEST_P(NotifieeLifetimeOf, handlerMayEndLocalNotifierWithReactorsBound) {
  for (std::size_t actor = 0; actor < size(); ++actor) {
    std::optional<Lamp> lamp(std::in_place);
    addMany(size(), &*lamp);
    script.does[actor] = [&lamp] { lamp.reset(); };
    lamp->wattIs(1);
    EXPECT_EQ(script.takeCalls(), upTo(actor));
    for (const auto& reactor : reactors) EXPECT_EQ(reactor->notifier(), nullptr);

    Lamp next;
    script.does.clear();
    for (const auto& reactor : reactors) reactor->notifierIs(&next);
    next.wattIs(1);
    EXPECT_EQ(script.takeCalls(), upTo(size() - 1));
    reactors.clear();
  }
}

TEST_P(NotifieeLifetimeOf, reactorsOfEndedNotifierMayWatchAnotherInTheSameHandler) {
  for (std::size_t actor = 0; actor < size(); ++actor) {
    Lamp next;
    std::optional<Lamp> lamp(std::in_place);
    addMany(size(), &*lamp);
    script.does[actor] = [&] {
      script.does.clear();
      lamp.reset();
      for (const auto& reactor : reactors) reactor->notifierIs(&next);
      next.wattIs(1);
    };
    lamp->wattIs(1);
    Numbers expected = upTo(actor);
    const Numbers ofNext = upTo(size() - 1);
    expected.insert(expected.end(), ofNext.begin(), ofNext.end());
    EXPECT_EQ(script.takeCalls(), expected);
    reactors.clear();
  }
}

/// A state machine that ends itself when its lamp changes.
class OneShotSm : public StateMachine<OneShotSm> {
 public:
  OneShotSm(Ptr<OneShotSm>& holder, int& ends, const Ptr<const Lamp>& lamp)
      : holder_(holder), ends_(ends), lamp_(this, lamp) {}
  ~OneShotSm() override {
    moxDoZombieReactors(true);
    ++ends_;
  }

  void handleWatt() { holder_ = nullptr; }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(lamp_); }

  class MoxLamp : public Reactor<MoxLamp, OneShotSm, Lamp> {
   public:
    using Reactor::Reactor;
    void onAttribute(AttributeId id, const void* /*key*/) override {
      if (Lamp::wattAttr.is(id)) sm().handleWatt();
    }
  };

  Ptr<OneShotSm>& holder_;
  int& ends_;
  MoxLamp lamp_;
};

TEST_P(NotifieeLifetimeOf, handlerMayDropLastReferenceToItsStateMachine) {
  for (std::size_t before = 0; before < size(); ++before) {
    int ends = 0;
    const auto lamp = makePtr<Lamp>();
    Ptr<OneShotSm> sm;
    addMany(before, lamp.get());
    sm = makePtr<OneShotSm>(sm, ends, lamp);
    addMany(size() - 1 - before, lamp.get());
    lamp->wattIs(1);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(script.takeCalls().size(), size() - 1);
    lamp->wattIs(2);
    EXPECT_EQ(script.takeCalls().size(), size() - 1);
    reactors.clear();
  }
}

TEST_F(NotifieeLifetime, stateMachineMayTakeItsNotifierAlong) {
  int ends = 0;
  Ptr<OneShotSm> sm;
  auto lamp = lampThatTellsItsEnd();
  Lamp* const borrowed = lamp.get();
  sm = makePtr<OneShotSm>(sm, ends, lamp);
  lamp = nullptr;
  borrowed->wattIs(1);
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(lampEnds, 1);
}

TEST_F(NotifieeLifetime, reactorBoundWhileItsNotifierEndsIsUnbound) {
  addMany(1, nullptr);
  Lamp* borrowed = nullptr;
  auto lamp = makePtr<Lamp>([&] { reactors[0]->notifierIs(borrowed); });
  borrowed = lamp.get();
  lamp = nullptr;
  EXPECT_EQ(reactors[0]->notifier(), nullptr);
  EXPECT_FALSE(reactors[0]->isRegisteredNotifiee());
}

}  // namespace Mox::NotifieeLifetimeTest
