// A model of notification: a few reactors and lamps in numbered places, and what must happen when they change.
//
// `World` is what can be done; `NotificationModel` does it in the simplest way, by lists that are searched. A test does
// the same in the real world and compares what both write down.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <map>
#include <optional>
#include <ostream>
#include <string_view>
#include <utility>
#include <vector>

namespace Test {

/// What happened, or how something stands.
struct Entry {
  std::string_view what;
  std::size_t subject = 0;
  std::size_t lamp = 0;
  std::size_t attribute = 0;
  std::size_t key = 0;
  std::size_t depth = 0;

  friend bool operator==(const Entry&, const Entry&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Entry& e) {
    return out << e.what << ' ' << e.subject << " lamp " << e.lamp << " attribute " << e.attribute << " key " << e.key
               << " depth " << e.depth;
  }
};
using Entries = std::vector<Entry>;

/// Reactors and lamps in numbered places. What cannot be done is left out.
class World {
 public:
  static constexpr std::size_t reactorPlaces = 6;
  static constexpr std::size_t lampPlaces = 3;
  /// The lamp of this place is destroyed outright, as a local variable is; the others end with their last reference.
  static constexpr std::size_t localPlace = lampPlaces - 1;
  /// Lamps are numbered from 1, as they are made.
  static constexpr std::size_t noLamp = 0;
  /// What a scalar's notification has for a key.
  static constexpr std::size_t noKey = 99;

  /// Is told of every delivery, and acts.
  class Handler {
   public:
    virtual ~Handler() = default;
    virtual void handle(std::size_t reactor, std::size_t lamp, std::size_t attribute, std::size_t key) = 0;
  };

  World() = default;
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  virtual ~World() = default;

  virtual void reactorIs(std::size_t reactor) = 0;
  virtual void reactorDel(std::size_t reactor) = 0;
  virtual void bind(std::size_t reactor, std::size_t place) = 0;
  virtual void unbind(std::size_t reactor) = 0;
  virtual void isRegisteredIs(std::size_t reactor, bool registered) = 0;
  virtual void activeIs(std::size_t reactor, bool active) = 0;

  virtual void lampIs(std::size_t place, std::size_t number) = 0;
  /// Leaves a local lamp alone while a reactor is bound to it that would not learn of its end: one not registered.
  virtual void lampDel(std::size_t place) = 0;
  virtual void deleteAllReactors(std::size_t place) = 0;
  /// Attribute 0, a scalar.
  virtual void wattIs(std::size_t place, std::size_t watt) = 0;
  /// Attribute 1, values by small numbers.
  virtual void sceneIs(std::size_t place, std::size_t scene, std::size_t value) = 0;
  virtual void sceneDel(std::size_t place, std::size_t scene) = 0;
  virtual void sceneDelAll(std::size_t place) = 0;

  /// How everything stands.
  [[nodiscard]] virtual Entries state() const = 0;

  Handler* handler = nullptr;
  Entries journal;
};

class NotificationModel final : public World {
 public:
  void reactorIs(std::size_t r) override {
    if (!reactors_[r]) reactors_[r] = Reactor();
  }
  void reactorDel(std::size_t r) override {
    unbind(r);
    reactors_[r].reset();
  }
  void bind(std::size_t r, std::size_t place) override {
    if (!reactors_[r] || places_[place] == noLamp || reactors_[r]->lamp == places_[place]) return;
    unregister(r);
    const std::size_t old = std::exchange(reactors_[r]->lamp, places_[place]);
    enroll(r);
    endIfUnused(old);
  }
  void unbind(std::size_t r) override {
    if (!reactors_[r]) return;
    unregister(r);
    endIfUnused(std::exchange(reactors_[r]->lamp, noLamp));
  }
  void isRegisteredIs(std::size_t r, bool registered) override {
    if (!reactors_[r] || reactors_[r]->lamp == noLamp || registered == isRegistered(r)) return;
    registered ? enroll(r) : unregister(r);
  }
  void activeIs(std::size_t r, bool active) override {
    if (reactors_[r]) reactors_[r]->isActive = active;
  }

  void lampIs(std::size_t place, std::size_t number) override {
    if (place == localPlace && places_[place] != noLamp) return;
    lamps_[number] = {};
    endIfUnused(std::exchange(places_[place], number));
  }
  void lampDel(std::size_t place) override {
    const std::size_t number = places_[place];
    if (number == noLamp) return;
    if (place == localPlace) {
      for (std::size_t r = 0; r < reactorPlaces; ++r) {
        if (isBound(r, number) && !isRegistered(r)) return;
      }
      unregisterAll(number);
      for (std::size_t r = 0; r < reactorPlaces; ++r) {
        if (isBound(r, number)) reactors_[r]->lamp = noLamp;
      }
    }
    places_[place] = noLamp;
    endIfUnused(number);
  }
  void deleteAllReactors(std::size_t place) override { unregisterAll(places_[place]); }

  void wattIs(std::size_t place, std::size_t watt) override {
    const std::size_t number = places_[place];
    if (number != noLamp && std::exchange(lamps_[number].watt, watt) != watt) visit(number, 0, noKey);
  }
  void sceneIs(std::size_t place, std::size_t scene, std::size_t value) override {
    const std::size_t number = places_[place];
    if (number == noLamp) return;
    const auto [member, isNew] = lamps_[number].scene.try_emplace(scene, value);
    if (isNew || std::exchange(member->second, value) != value) visit(number, 1, scene);
  }
  void sceneDel(std::size_t place, std::size_t scene) override {
    const std::size_t number = places_[place];
    if (number != noLamp && lamps_[number].scene.erase(scene) != 0) visit(number, 1, scene);
  }
  void sceneDelAll(std::size_t place) override {
    const std::size_t number = places_[place];
    if (number == noLamp) return;
    Lamp& lamp = lamps_[number];
    ++lamp.passes;
    std::exception_ptr thrown;
    for (auto at = lamp.scene.begin(); at != lamp.scene.end() && !thrown;) {
      const std::size_t key = at->first;
      lamp.scene.erase(at);
      try {
        visit(number, 1, key);
      } catch (...) {
        thrown = std::current_exception();
      }
      at = lamp.scene.upper_bound(key);
    }
    --lamp.passes;
    endIfUnused(number);
    if (thrown) std::rethrow_exception(thrown);
  }

  [[nodiscard]] Entries state() const override {
    Entries state;
    for (std::size_t r = 0; r < reactorPlaces; ++r) {
      if (const auto& reactor = reactors_[r]) {
        state.push_back({"reactor", r, reactor->lamp, isRegistered(r) ? 1U : 0U, reactor->isActive ? 1U : 0U});
      }
    }
    for (std::size_t place = 0; place < lampPlaces; ++place) {
      const std::size_t number = places_[place];
      if (number == noLamp) continue;
      const Lamp& lamp = lamps_.at(number);
      const auto size = std::count_if(registrations_.begin(), registrations_.end(),
                                      [number](const Registration& r) { return r.lamp == number; });
      state.push_back({"place", place, number, static_cast<std::size_t>(size), lamp.watt, lamp.scene.size()});
    }
    return state;
  }

 private:
  struct Reactor {
    bool isActive = true;
    std::size_t lamp = noLamp;
  };
  struct Lamp {
    std::size_t watt = 0;
    std::map<std::size_t, std::size_t> scene;
    int passes = 0;
  };
  struct Registration {
    std::size_t serial;
    std::size_t reactor;
    std::size_t lamp;
  };

  [[nodiscard]] bool isBound(std::size_t r, std::size_t lamp) const {
    return reactors_[r] && reactors_[r]->lamp == lamp;
  }
  [[nodiscard]] bool isRegistered(std::size_t r) const {
    return std::any_of(registrations_.begin(), registrations_.end(), [r](const auto& at) { return at.reactor == r; });
  }
  void enroll(std::size_t r) { registrations_.push_back({++enrolled_, r, reactors_[r]->lamp}); }
  void unregister(std::size_t r) {
    std::erase_if(registrations_, [r](const Registration& at) { return at.reactor == r; });
  }
  void unregisterAll(std::size_t lamp) {
    std::erase_if(registrations_, [lamp](const Registration& at) { return at.lamp == lamp; });
  }

  /// The rule: those registered now are called in order, if they are still registered and active when their turn comes.
  void visit(std::size_t lamp, std::size_t attribute, std::size_t key) {
    std::exception_ptr first;
    for (const Registration& turn : std::vector<Registration>(registrations_)) {
      const bool isThere = std::any_of(registrations_.begin(), registrations_.end(),
                                       [&turn](const auto& at) { return at.serial == turn.serial; });
      if (turn.lamp != lamp || !isThere || !reactors_[turn.reactor]->isActive) continue;
      try {
        handler->handle(turn.reactor, lamp, attribute, key);
      } catch (...) {
        if (!first) first = std::current_exception();
      }
    }
    if (first) std::rethrow_exception(first);
  }
  void endIfUnused(std::size_t number) {
    if (number == noLamp || lamps_.at(number).passes != 0) return;
    if (std::find(places_.begin(), places_.end(), number) != places_.end()) return;
    for (std::size_t r = 0; r < reactorPlaces; ++r) {
      if (isBound(r, number)) return;
    }
    lamps_.erase(number);
    journal.push_back({.what = "ended", .subject = number});
  }

  std::array<std::optional<Reactor>, reactorPlaces> reactors_;
  std::array<std::size_t, lampPlaces> places_{};
  std::map<std::size_t, Lamp> lamps_;
  std::vector<Registration> registrations_;
  std::size_t enrolled_ = 0;
};

}  // namespace Test
