// Random sequences of changes, with handlers that act at random themselves, against a simple model.
//
// A player makes its choices by its own chance, in the order of what it is told. Two players with one seed, one in the
// real world and one in the model, act alike as long as both are told the same, so their journals must be equal.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "mox/Entity.h"
#include "mox/Notifiee.h"
#include "tests/support/MapKeys.h"
#include "tests/support/NotificationModel.h"
#include "tests/support/Random.h"

namespace Mox::NotifieeRandomTest {

using Test::Entries;
using Test::Entry;
using Test::NotificationModel;
using Test::Random;
using Test::randomSeed;
using Test::World;

/// What handlers throw.
struct Thrown {
  std::size_t number;
};

/// Adds one to a count while it lives.
class Inside {
 public:
  explicit Inside(std::size_t& count) : count_(count) { ++count_; }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
  ~Inside() { --count_; }

 private:
  std::size_t& count_;
};

/// Acts by chance, from outside and as every handler.
class Player final : public World::Handler {
 public:
  Player(World& world, std::uint64_t seed) : world_(world), random_(seed) {
    world_.handler = this;
    for (std::size_t r = 0; r < World::reactorPlaces; ++r) world_.reactorIs(r);
    for (std::size_t place = 0; place < World::lampPlaces; ++place) world_.lampIs(place, ++lamps_);
  }

  /// One action from outside; returns what happened and how everything stands then.
  [[nodiscard]] Entries step() {
    deliveries_ = 0;
    actAndCatch();
    Entries result = std::exchange(world_.journal, {});
    const Entries state = world_.state();
    result.insert(result.end(), state.begin(), state.end());
    return result;
  }

  void handle(std::size_t reactor, std::size_t lamp, std::size_t attribute, std::size_t key) override {
    world_.journal.push_back({"called", reactor, lamp, attribute, key, depth_});
    ++deliveries_;
    const Inside inside(depth_);
    for (int i = 0; i < 3 && random_.percent(eagerness_); ++i) {
      if (random_.percent(20)) {
        actAndCatch();
      } else {
        act();
      }
    }
    if (random_.percent(anger_)) throw Thrown{++thrown_};
  }

 private:
  void actAndCatch() {
    try {
      act();
    } catch (const Thrown& thrown) {
      world_.journal.push_back({.what = "caught", .subject = thrown.number, .depth = depth_});
    }
  }

  void act() {
    const std::size_t reactor = random_.below(World::reactorPlaces);
    const std::size_t place = random_.below(World::lampPlaces);
    const bool value = random_.percent(80);
    const std::size_t choice = random_.below(200);
    if (choice < 10) return world_.reactorIs(reactor);
    if (choice < 13) return world_.reactorDel(reactor);
    if (choice < 55) return world_.bind(reactor, place);
    if (choice < 58) return world_.unbind(reactor);
    if (choice < 70) return world_.isRegisteredIs(reactor, value);
    if (choice < 82) return world_.activeIs(reactor, value);
    if (choice < 86) return world_.lampIs(place, ++lamps_);
    if (choice < 88) return deleteLamp(place);
    if (choice < 89) return world_.deleteAllReactors(place);
    // Without a bound, some players would never come to an end.
    if (depth_ < 6 && deliveries_ < 300) change(choice, place);
  }
  void deleteLamp(std::size_t place) {
    // Nobody destroys a local lamp in the middle of a pass over its members.
    if (place != World::localPlace || passes_ == 0) world_.lampDel(place);
  }
  void change(std::size_t choice, std::size_t place) {
    const std::size_t scene = random_.below(5);
    const std::size_t value = random_.below(5);
    if (choice < 150) return world_.wattIs(place, value);
    if (choice < 180) return world_.sceneIs(place, scene, value);
    if (choice < 190) return world_.sceneDel(place, scene);
    const Inside inside(passes_);
    world_.sceneDelAll(place);
  }

  World& world_;
  Random random_;
  unsigned eagerness_ = static_cast<unsigned>(20 + random_.below(60));
  unsigned anger_ = random_.percent(50) ? 0 : 8;
  std::size_t depth_ = 0;
  std::size_t passes_ = 0;
  std::size_t deliveries_ = 0;
  std::size_t thrown_ = 0;
  std::size_t lamps_ = World::noLamp;
};

class Lamp : public Entity {
 public:
  using SceneKey = Test::SmallId;
  static constexpr ScalarAttribute wattAttr{0, "watt"};
  static constexpr CollectionAttribute<SceneKey> sceneAttr{1, "scene"};

  Lamp(World& world, std::size_t number) : world_(world), number_(number) {}
  ~Lamp() override { world_.journal.push_back({.what = "ended", .subject = number_}); }

  [[nodiscard]] std::size_t number() const { return number_; }
  [[nodiscard]] std::size_t watt() const { return watt_; }
  void wattIs(std::size_t v) { scalarIs(watt_, v, wattAttr); }
  [[nodiscard]] const auto& scene() const { return scene_; }
  void sceneIs(SceneKey scene, std::size_t v) { valueIs(scene_, sceneAttr, scene, v); }
  void sceneDel(SceneKey scene) { valueDel(scene_, sceneAttr, scene); }
  void sceneDelAll() { valueDelAll(scene_, sceneAttr); }

 private:
  World& world_;
  std::size_t number_;
  std::size_t watt_ = 0;
  ValueCollection<SceneKey, std::size_t> scene_;
};

class Watcher : public PtrInterface::NotifieeConst {
 public:
  Watcher(World& world, std::size_t place) : world_(world), place_(place) { hasNotificationActiveIs(true); }

  [[nodiscard]] std::size_t lamp() const {
    return notifier() == nullptr ? World::noLamp : static_cast<const Lamp*>(notifier())->number();
  }
  void onAttribute(AttributeId id, const void* key) override {
    const auto* const scene = Lamp::sceneAttr.keyOf(id, key);
    world_.handler->handle(place_, lamp(), id, scene == nullptr ? World::noKey : scene->value);
  }

 private:
  World& world_;
  std::size_t place_;
};

class RealWorld final : public World {
 public:
  ~RealWorld() override { reactors_ = {}; }

  void reactorIs(std::size_t r) override {
    if (!reactors_[r]) reactors_[r] = std::make_unique<Watcher>(*this, r);
  }
  void reactorDel(std::size_t r) override { reactors_[r].reset(); }
  void bind(std::size_t r, std::size_t place) override {
    if (reactors_[r] && lamp(place) != nullptr) reactors_[r]->notifierIs(lamp(place));
  }
  void unbind(std::size_t r) override {
    if (reactors_[r]) reactors_[r]->notifierIs(nullptr);
  }
  void isRegisteredIs(std::size_t r, bool registered) override {
    if (reactors_[r]) reactors_[r]->isRegisteredNotifieeIs(registered);
  }
  void activeIs(std::size_t r, bool active) override {
    if (reactors_[r]) reactors_[r]->hasNotificationActiveIs(active);
  }

  void lampIs(std::size_t place, std::size_t number) override {
    if (place != localPlace) {
      lamps_[place] = makePtr<Lamp>(*this, number);
    } else if (!local_) {
      local_ = std::make_unique<Lamp>(*this, number);
    }
  }
  void lampDel(std::size_t place) override {
    if (place != localPlace) {
      lamps_[place] = nullptr;
      return;
    }
    const bool isWatched = std::any_of(reactors_.begin(), reactors_.end(), [this](const auto& reactor) {
      return reactor && reactor->notifier() == local_.get() && !reactor->isRegisteredNotifiee();
    });
    if (!isWatched) local_.reset();
  }
  void deleteAllReactors(std::size_t place) override {
    if (lamp(place) != nullptr) lamp(place)->notifieeList()->deleteAll();
  }
  void wattIs(std::size_t place, std::size_t watt) override {
    if (lamp(place) != nullptr) lamp(place)->wattIs(watt);
  }
  void sceneIs(std::size_t place, std::size_t scene, std::size_t value) override {
    if (lamp(place) != nullptr) lamp(place)->sceneIs({static_cast<std::uint16_t>(scene)}, value);
  }
  void sceneDel(std::size_t place, std::size_t scene) override {
    if (lamp(place) != nullptr) lamp(place)->sceneDel({static_cast<std::uint16_t>(scene)});
  }
  void sceneDelAll(std::size_t place) override {
    if (lamp(place) != nullptr) lamp(place)->sceneDelAll();
  }

  [[nodiscard]] Entries state() const override {
    Entries state;
    for (std::size_t r = 0; r < reactorPlaces; ++r) {
      const Watcher* const w = reactors_[r].get();
      if (w == nullptr) continue;
      state.push_back(
          {"reactor", r, w->lamp(), w->isRegisteredNotifiee() ? 1U : 0U, w->hasNotificationActive() ? 1U : 0U});
    }
    for (std::size_t place = 0; place < lampPlaces; ++place) {
      const Lamp* const l = lamp(place);
      if (l == nullptr) continue;
      state.push_back({"place", place, l->number(), l->notifieeList()->size(), l->watt(), l->scene().size()});
    }
    return state;
  }

 private:
  [[nodiscard]] Lamp* lamp(std::size_t place) const { return place == localPlace ? local_.get() : lamps_[place].get(); }

  std::unique_ptr<Lamp> local_;
  std::array<Ptr<Lamp>, localPlace> lamps_;
  std::array<std::unique_ptr<Watcher>, reactorPlaces> reactors_;
};

TEST(NotifieeRandom, deliveriesAreThoseOfModel) {
  std::map<std::string_view, std::size_t> happened;
  std::size_t deepest = 0;
  for (std::uint64_t seed = randomSeed(); seed < randomSeed() + 300; ++seed) {
    RealWorld real;
    NotificationModel model;
    Player inReality(real, seed);
    Player inModel(model, seed);
    for (int step = 0; step < 400; ++step) {
      const Entries happenedNow = inReality.step();
      ASSERT_EQ(happenedNow, inModel.step()) << "TOPOLIB_TEST_SEED=" << seed << " step " << step;
      for (const Entry& entry : happenedNow) {
        ++happened[entry.what];
        deepest = std::max(deepest, entry.depth);
      }
    }
  }
  for (const auto& [what, count] : happened) RecordProperty(std::string(what), std::to_string(count));
  EXPECT_GT(happened["called"], 50'000U);
  EXPECT_GT(happened["caught"], 1000U);
  EXPECT_GT(happened["ended"], 1000U);
  EXPECT_GE(deepest, 5U);
}

}  // namespace Mox::NotifieeRandomTest
