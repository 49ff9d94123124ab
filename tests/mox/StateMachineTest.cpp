#include "mox/StateMachine.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "mox/Type.h"

namespace Mox::StateMachineTest {

using Calls = std::vector<std::string>;

class Bulb : public NamedEntity {
 public:
  static constexpr ScalarAttribute wattAttr{0, "watt"};
  using NamedEntity::NamedEntity;

  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }

 private:
  unsigned watt_ = 0;
};

class Lamp : public NamedEntity {
 public:
  static constexpr ScalarAttribute litAttr{0, "lit"};
  static constexpr CollectionAttribute<String> bulbAttr{1, "bulb"};
  Lamp() : NamedEntity("hall") {}

  [[nodiscard]] bool lit() const { return lit_; }
  void litIs(bool v) { scalarIs(lit_, v, litAttr); }
  [[nodiscard]] const Bulb* bulb(const String& socket) const { return bulb_.find(socket); }
  Ptr<Bulb> bulbIs(const String& socket) { return memberIs(bulb_, bulbAttr, socket); }
  void bulbDel(const String& socket) { memberDel(bulb_, bulbAttr, socket); }

 private:
  bool lit_ = false;
  EntityCollection<String, Bulb> bulb_;
};

/// A child that watches a lamp for its parent.
class ChildSm : public StateMachine<ChildSm> {
 public:
  ChildSm(Calls& calls, const Ptr<const Lamp>& lamp) : calls_(calls), lamp_(this, lamp) {}
  ~ChildSm() override { moxDoZombieReactors(true); }

  [[nodiscard]] bool isBound() const { return lamp_.notifier() != nullptr; }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(lamp_); }

  class MoxLamp : public Reactor<MoxLamp, ChildSm, Lamp> {
   public:
    using Reactor::Reactor;
    void onAttribute(AttributeId /*id*/, const void* /*key*/) override { sm().calls_.emplace_back("child"); }
  };

  Calls& calls_;
  MoxLamp lamp_;
};

/// Watches a lamp by a member, one bulb by a pointer that may be null, further bulbs by a collection, and has a child.
class GuardSm : public StateMachine<GuardSm> {
 public:
  GuardSm(Calls& calls, const Ptr<const Lamp>& lamp) : calls_(calls), lamp_(this, lamp) {}
  ~GuardSm() override {
    calls_.emplace_back("~GuardSm");
    moxDoZombieReactors(true);
    if (atEnd) atEnd();
  }

  void handleInitialized() { initializedIs(true); }
  void handleLit() {
    if (!initialized()) return;
    calls_.emplace_back(lamp_.notifier()->lit() ? "lit" : "unlit");
  }
  void handleBulb(const String& socket) {
    if (!initialized()) return;
    calls_.push_back("bulb " + std::string(socket.view()));
    if (onBulb) onBulb(socket);
  }
  void handleWatt(const char* what) { calls_.emplace_back(what); }

  void bulbIs(const Ptr<const Bulb>& bulb) { bulb_ = makePtr<MoxBulb>(this, bulb); }
  void spareIs(const String& socket, const Ptr<const Bulb>& bulb) { spare_[socket] = makePtr<MoxSpare>(this, bulb); }
  void childIs(const Ptr<const Lamp>& lamp) { child_ = makePtr<ChildSm>(calls_, lamp); }

  [[nodiscard]] auto& lamp() { return lamp_; }
  [[nodiscard]] const auto& bulb() const { return bulb_; }
  [[nodiscard]] const auto& spare(const String& socket) const { return spare_.at(socket); }
  [[nodiscard]] const auto& child() const { return child_; }

  std::function<void(const String&)> onBulb;
  std::function<void()> atEnd;

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(lamp_);
    act(bulb_);
    for (auto& [socket, reactor] : spare_) act(reactor);
    act(child_);
  }

  class MoxLamp : public Reactor<MoxLamp, GuardSm, Lamp> {
   public:
    using Reactor::Reactor;
    void onAttribute(AttributeId id, const void* key) override {
      if (Lamp::litAttr.is(id)) sm().handleLit();
      if (const auto* socket = Lamp::bulbAttr.keyOf(id, key)) sm().handleBulb(*socket);
    }
  };
  class MoxBulb : public Reactor<MoxBulb, GuardSm, Bulb> {
   public:
    using Reactor::Reactor;
    void onAttribute(AttributeId /*id*/, const void* /*key*/) override { sm().handleWatt("bulb's watt"); }
  };
  class MoxSpare : public Reactor<MoxSpare, GuardSm, Bulb> {
   public:
    using Reactor::Reactor;
    void onAttribute(AttributeId /*id*/, const void* /*key*/) override { sm().handleWatt("spare's watt"); }
  };

  Calls& calls_;
  MoxLamp lamp_;
  Ptr<MoxBulb> bulb_;
  std::map<String, Ptr<MoxSpare>> spare_;
  Ptr<ChildSm> child_;
};

/// One from which another derives.
class BaseSm : public StateMachine<BaseSm> {
 public:
  BaseSm(Calls& calls, const Ptr<const Lamp>& lamp) : calls_(calls), lamp_(this, lamp) {}
  ~BaseSm() override { moxDoZombieReactors(true); }

 protected:
  using Action = std::function<void(PtrInterface&)>;
  friend StateMachine;
  virtual void forEachReactor(const Action& act) { act(lamp_); }
  [[nodiscard]] Calls& calls() { return calls_; }

 private:
  class MoxLamp : public Reactor<MoxLamp, BaseSm, Lamp> {
   public:
    using Reactor::Reactor;
    void onAttribute(AttributeId /*id*/, const void* /*key*/) override { sm().calls_.emplace_back("base"); }
  };

  Calls& calls_;
  MoxLamp lamp_;
};

class DerivedSm : public BaseSm {
 public:
  DerivedSm(Calls& calls, const Ptr<const Lamp>& lamp, const Ptr<const Bulb>& bulb)
      : BaseSm(calls, lamp), bulb_(this, bulb) {}
  ~DerivedSm() override { moxDoZombieReactors(true); }

 private:
  void forEachReactor(const Action& act) override {
    act(bulb_);
    BaseSm::forEachReactor(act);
  }

  class MoxBulb : public Reactor<MoxBulb, DerivedSm, Bulb> {
   public:
    using Reactor::Reactor;
    void onAttribute(AttributeId /*id*/, const void* /*key*/) override { sm().calls().emplace_back("derived"); }
  };

  MoxBulb bulb_;
};

class StateMachines : public testing::Test {
 protected:
  /// A guard with a reactor of each kind.
  [[nodiscard]] Ptr<GuardSm> guard() {
    auto sm = makePtr<GuardSm>(calls, lamp);
    sm->bulbIs(left);
    sm->spareIs("a", right);
    sm->spareIs("b", right);
    sm->childIs(lamp);
    sm->handleInitialized();
    return sm;
  }
  /// Changes everything that the guard watches.
  [[nodiscard]] Calls callsOfChange() {
    calls.clear();
    lamp->litIs(!lamp->lit());
    left->wattIs(++watt);
    right->wattIs(watt);
    return calls;
  }

  Calls calls;
  Ptr<Lamp> lamp = makePtr<Lamp>();
  Ptr<Bulb> left = makePtr<Bulb>("left");
  Ptr<Bulb> right = makePtr<Bulb>("right");
  unsigned watt = 0;
  const Calls all{"lit", "child", "bulb's watt", "spare's watt", "spare's watt"};
};

TEST_F(StateMachines, reactorsStartWithNotificationsOn) {
  const auto sm = guard();
  EXPECT_TRUE(sm->lamp().hasNotificationActive());
  EXPECT_TRUE(sm->bulb()->hasNotificationActive());
  EXPECT_FALSE(sm->hasNotificationActive()) << "the state machine itself starts with them off";
  EXPECT_EQ(callsOfChange(), all);
}

TEST_F(StateMachines, isNotInitializedAtStart) {
  GuardSm sm(calls, lamp);
  EXPECT_FALSE(sm.initialized());
  lamp->litIs(true);
  lamp->bulbIs("left");
  EXPECT_EQ(calls, Calls{});
  sm.handleInitialized();
  EXPECT_TRUE(sm.initialized());
  lamp->litIs(false);
  lamp->bulbIs("right");
  EXPECT_EQ(calls, (Calls{"unlit", "bulb right"}));
}

TEST_F(StateMachines, switchIsPassedOnToAllReactorsAndChildren) {
  const auto sm = guard();
  sm->hasNotificationActiveIs(true);
  sm->hasNotificationActiveIs(false);
  EXPECT_FALSE(sm->hasNotificationActive());
  EXPECT_FALSE(sm->lamp().hasNotificationActive());
  EXPECT_FALSE(sm->bulb()->hasNotificationActive());
  EXPECT_FALSE(sm->spare("a")->hasNotificationActive());
  EXPECT_FALSE(sm->spare("b")->hasNotificationActive());
  EXPECT_FALSE(sm->child()->hasNotificationActive());
  EXPECT_EQ(callsOfChange(), Calls{});
  lamp->litIs(false);
  sm->hasNotificationActiveIs(true);
  EXPECT_TRUE(sm->child()->hasNotificationActive());
  EXPECT_EQ(callsOfChange(), all);
}

TEST_F(StateMachines, switchIsPassedOnOnlyWhenItChanges) {
  const auto sm = guard();
  sm->hasNotificationActiveIs(false);
  EXPECT_TRUE(sm->lamp().hasNotificationActive()) << "it was off already";
  sm->hasNotificationActiveIs(true);
  sm->lamp().hasNotificationActiveIs(false);
  sm->hasNotificationActiveIs(true);
  EXPECT_FALSE(sm->lamp().hasNotificationActive()) << "it was on already";
}

TEST_F(StateMachines, nullReactorsAndChildrenAreFine) {
  const auto sm = makePtr<GuardSm>(calls, lamp);
  sm->hasNotificationActiveIs(true);
  sm->hasNotificationActiveIs(false);
  sm->moxDoZombieReactors(true);
  EXPECT_EQ(sm->bulb(), nullptr);
  EXPECT_EQ(sm->lamp().notifier(), nullptr);
}

TEST_F(StateMachines, zombieReactorsAreUnbound) {
  const auto sm = guard();
  sm->moxDoZombieReactors(true);
  EXPECT_EQ(sm->lamp().notifier(), nullptr);
  EXPECT_EQ(sm->bulb()->notifier(), nullptr);
  EXPECT_EQ(sm->spare("a")->notifier(), nullptr);
  EXPECT_EQ(sm->spare("b")->notifier(), nullptr);
  EXPECT_FALSE(sm->child()->isBound()) << "a child, which others may hold, is retired as well";
  EXPECT_EQ(left->references(), 1U);
  EXPECT_EQ(callsOfChange(), Calls{});
  EXPECT_TRUE(sm->initialized()) << "nothing else changes";
}

TEST_F(StateMachines, zombieReactorsFalseDoesNothing) {
  const auto sm = guard();
  sm->moxDoZombieReactors(false);
  EXPECT_EQ(callsOfChange(), all);
}

TEST_F(StateMachines, isRetiredFromTheFirstZombieReactorsOn) {
  const auto sm = guard();
  const Ptr<ChildSm> child = sm->child();
  EXPECT_FALSE(sm->isRetired());
  sm->moxDoZombieReactors(false);
  EXPECT_FALSE(sm->isRetired());
  sm->moxDoZombieReactors(true);
  EXPECT_TRUE(sm->isRetired());
  EXPECT_TRUE(child->isRetired());
  sm->moxDoZombieReactors(false);
  sm->hasNotificationActiveIs(true);
  EXPECT_TRUE(sm->isRetired()) << "there is no way back";
}

TEST_F(StateMachines, reactorIsOnNothingUntilItIsBound) {
  GuardSm sm(calls, nullptr);
  EXPECT_EQ(sm.lamp().notifier(), nullptr);
  EXPECT_TRUE(sm.lamp().hasNotificationActive());
  EXPECT_EQ(lamp->notifieeList()->size(), 0U);
}

TEST_F(StateMachines, nothingIsDeliveredWhileStateMachineEnds) {
  auto sm = guard();
  sm->atEnd = [this] {
    lamp->litIs(true);
    left->wattIs(60);
    right->wattIs(60);
  };
  calls.clear();
  sm = nullptr;
  // The child still lives at that time, and is retired too.
  EXPECT_EQ(calls, (Calls{"~GuardSm"}));
  EXPECT_EQ(lamp->references(), 1U);
  EXPECT_TRUE(lamp->notifieeList()->empty());
}

TEST_F(StateMachines, endReleasesReactorsAndChildren) {
  auto sm = guard();
  const Ptr<ChildSm> child = sm->child();
  sm = nullptr;
  EXPECT_EQ(child->references(), 1U);
  EXPECT_FALSE(child->isBound()) << "it has outlived its owner, to which its reactor would go";
  EXPECT_EQ(left->references(), 1U);
  EXPECT_EQ(right->references(), 1U);
}

TEST_F(StateMachines, keyMayBeRemovedByItsHandler) {
  const auto sm = guard();
  sm->onBulb = [this](const String& socket) {
    if (lamp->bulb(socket) != nullptr) lamp->bulbDel(socket);
  };
  calls.clear();
  lamp->bulbIs("left");
  EXPECT_EQ(lamp->bulb("left"), nullptr);
  EXPECT_EQ(calls, (Calls{"bulb left", "bulb left", "child", "child"}));
}

TEST_F(StateMachines, reactorMayBeBoundToAnotherNotifier) {
  const auto sm = guard();
  const auto other = makePtr<Bulb>("other");
  const Ptr<const Bulb> readOnly = other;
  auto& reactor = *sm->bulb();
  reactor.notifierIs(readOnly);
  EXPECT_EQ(reactor.notifier(), other.get());
  EXPECT_EQ(left->references(), 1U);
  calls.clear();
  other->wattIs(60);
  EXPECT_EQ(calls, Calls{"bulb's watt"});
}

TEST_F(StateMachines, reactorThatIsMadeLaterFollowsNextSwitch) {
  const auto sm = guard();
  sm->hasNotificationActiveIs(true);
  sm->hasNotificationActiveIs(false);
  sm->spareIs("c", right);
  EXPECT_TRUE(sm->spare("c")->hasNotificationActive());
  sm->hasNotificationActiveIs(true);
  sm->hasNotificationActiveIs(false);
  EXPECT_FALSE(sm->spare("c")->hasNotificationActive());
}

TEST_F(StateMachines, derivedOneActsForReactorsOfItsBaseToo) {
  const auto sm = makePtr<DerivedSm>(calls, lamp, left);
  lamp->litIs(true);
  left->wattIs(60);
  EXPECT_EQ(calls, (Calls{"base", "derived"}));
  sm->hasNotificationActiveIs(true);
  sm->hasNotificationActiveIs(false);
  lamp->litIs(false);
  left->wattIs(40);
  EXPECT_EQ(calls.size(), 2U);
  sm->moxDoZombieReactors(true);
  EXPECT_EQ(lamp->references(), 1U);
  EXPECT_EQ(left->references(), 1U);
}

TEST_F(StateMachines, isNotifierItself) {
  const auto sm = guard();
  ASSERT_NE(sm->notifieeList(), nullptr);
  EXPECT_TRUE(sm->notifieeList()->empty());
}

}  // namespace Mox::StateMachineTest
