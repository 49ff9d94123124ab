// State machines and their reactors.
//
// Overview
//   A state machine watches entities and acts when they change. It owns one nested reactor class per watched entity,
//   named `Mox` plus what it watches. `Reactor<Sm, Notifier>` gives a reactor its types; `StateMachine<Sm>` gives a
//   state machine its `initialized` flag and the operations that go to all its reactors.
//
// Usage: a guard on the lamp of mox/Entity.h (examples/lamp.cpp is the whole program)
//
//   /// Counts how often the lamp is lit, and tells which bulbs come and go.
//   class GuardSm : public Mox::StateMachine<GuardSm> {
//    public:
//     explicit GuardSm(const Mox::Ptr<const Lamp>& lamp) : lamp_(this, lamp) { handleInitialized(); }
//     ~GuardSm() override { moxDoZombieReactors(true); }
//
//     unsigned count() const { return count_; }
//
//     void handleInitialized() { initializedIs(true); }
//     void handleLit() {
//       if (initialized() && lamp_.notifier()->lit()) ++count_;
//     }
//     void handleBulb(Mox::String socket) {
//       std::cout << "bulb " << socket << (lamp_.notifier()->bulb(socket) != nullptr ? " is in\n" : " is out\n");
//     }
//
//    private:
//     friend StateMachine;
//     void forEachReactor(const auto& act) { act(lamp_); }
//
//     class MoxLamp : public Mox::Reactor<MoxLamp, GuardSm, Lamp> {
//      public:
//       using Reactor::Reactor;
//       void onAttribute(Mox::AttributeId id, const void* key) override {
//         if (Lamp::litAttr.is(id)) sm().handleLit();
//         if (const auto* socket = Lamp::bulbAttr.keyOf(id, key)) sm().handleBulb(*socket);
//       }
//     };
//
//     MoxLamp lamp_;
//     unsigned count_ = 0;
//   };
//
//   auto guard = Mox::makePtr<GuardSm>(lamp);
//
// Rules
//   - A reactor is a member of its state machine, or held by a Ptr, or in a collection; it has a plain pointer to the
//     state machine, which outlives it.
//   - A reactor starts with its notifications on, keeps its notifier alive while it is bound, and is not told of what was
//     there before. It passes the key on by value; the pointer to it ends with `onAttribute`.
//     Where the state machine has something to do whenever the reactor is bound, it does it after `notifierIs`.
//   - The destructor of a state machine calls `moxDoZombieReactors(true)` first, so that nothing is delivered to a
//     half-destroyed object; it does not change what the state machine published.
//   - A handler may drop the last reference to its own state machine, as the last thing that it does. A change that
//     others watch may make them drop it too: an action that goes on after such a change begins with
//     `const Mox::Ptr<Sm> self(this);`, and stops where `isRetired()` says that the state machine is out of service.
//   - A state machine from which another one derives makes `forEachReactor` virtual, for an action of one type; the
//     derived one calls it for its own reactors and then for those of its base, and tears down in its own destructor.
//
// Thread-safety: none; all handlers run on the activity thread, one at a time.

#pragma once

#include <utility>

#include "mox/AllocationTrack.h"
#include "mox/Notifiee.h"
#include "mox/Notifier.h"
#include "mox/Ptr.h"

namespace Mox {

/// A reactor of state machine `Sm` on a notifier of type `Notifier`. `Self` is the class that derives from it. `Base` is
/// the reactor class that the notifier asks for: `Clock::NotifieeConst` for a clock.
template <class Self, class Sm, class Notifier, class Base = PtrInterface::NotifieeConst>
class Reactor : public Base, private AllocationTrack<Self> {
 public:
  /// A reactor on nothing yet.
  explicit Reactor(Sm* sm) : sm_(sm) { this->hasNotificationActiveIs(true); }
  Reactor(Sm* sm, const Ptr<const Notifier>& notifier) : Reactor(sm) { notifierIs(notifier); }

  [[nodiscard]] const Notifier* notifier() const noexcept { return static_cast<const Notifier*>(Base::notifier()); }
  void notifierIs(const Ptr<const Notifier>& notifier) { Base::notifierIs(notifier.get()); }

 protected:
  [[nodiscard]] Sm& sm() const noexcept { return *sm_; }

 private:
  Sm* sm_;
};

/// Base of a state machine. `Self` provides `forEachReactor(act)`, which calls `act` with each reactor, and with each
/// child state machine, whose reactors are switched and retired with it; null pointers are fine.
template <class Self>
class StateMachine : public Notifier {
 public:
  /// False until `handleInitialized` has run; a handler that relies on it returns at once before.
  [[nodiscard]] bool initialized() const noexcept { return initialized_; }
  void initializedIs(bool value) noexcept { initialized_ = value; }

  /// Passed on to all reactors when it changes.
  void hasNotificationActiveIs(bool active) override {
    if (active == hasNotificationActive()) return;
    PtrInterface::hasNotificationActiveIs(active);
    forEach([active](PtrInterface& r) { r.hasNotificationActiveIs(active); });
  }

  /// True from the first `moxDoZombieReactors(true)` on: nothing is delivered any more.
  [[nodiscard]] bool isRetired() const noexcept { return isRetired_; }

  void moxDoZombieReactors(bool zombie) override {
    if (!zombie) return;
    isRetired_ = true;
    forEach([](PtrInterface& r) {
      if (auto* reactor = dynamic_cast<NotifieeConst*>(&r)) {
        reactor->notifierIs(nullptr);
      } else {
        r.moxDoZombieReactors(true);
      }
    });
  }

 private:
  void forEach(const auto& act) {
    static_cast<Self*>(this)->forEachReactor([&act](auto& r) {
      if constexpr (requires { r.get(); }) {
        if (r) act(*r);
      } else {
        act(r);
      }
    });
  }

  bool initialized_ = false;
  bool isRetired_ = false;
};

}  // namespace Mox
