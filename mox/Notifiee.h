// Notification: who is told of a change, and in which order.
//
// Overview
//   A notifier (an entity, as a rule) has a `NotifieeList`. A reactor derives from `PtrInterface::NotifieeConst`, is
//   bound to one notifier and registered in its list. When an attribute changes, the notifier stores the change and then
//   visits its list: each reactor's `onAttribute` is called with the attribute and, for a collection, the key.
//   Reactors of state machines are declared with `Mox::Reactor` (mox/StateMachine.h), which adds the types.
//
// What a handler may do during a notification
//   remove itself, another reactor      a reactor that is removed before its turn is not called
//   add a reactor                       it is not called for this change, but for every later one, nested ones included
//   change anything, the same attribute again
//                                       the nested change is delivered at once, to the end, before the outer visit goes
//                                       on (depth-first); reactors read the present value, not the one of the visit
//   delete the member that it is told of, its own state machine, the notifier
//                                       nothing is delivered to the dead, and the visit ends well
//   throw                               the remaining reactors are called, then the first exception goes to whoever
//                                       caused the change, which stays stored
//
// A reactor holds a counted pointer to its notifier. One that is destroyed is removed from the list first.
//
// Cost: a visit is a test when nobody is registered, a virtual call when one reactor is; no memory is allocated. Adding
// and removing is constant. Everything runs on the activity thread.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "mox/Attribute.h"
#include "mox/Ptr.h"
#include "mox/Public.h"

namespace Mox {

class MOX_PUBLIC PtrInterface::NotifieeConst : public PtrInterface {
 public:
  ~NotifieeConst() override;

  /// The object that is watched, or null.
  [[nodiscard]] const PtrInterface* notifier() const noexcept { return notifier_.get(); }

  /// Binds the reactor to an object that has a notifiee list and registers it there, behind those registered already;
  /// null unbinds. Binding to the present notifier again changes nothing.
  void notifierIs(const PtrInterface* notifier);
  void notifierIs(const Ptr<const PtrInterface>& notifier) { notifierIs(notifier.get()); }

  /// Takes a bound reactor out of its notifier's list, or puts it back, behind the others. An unbound one stays out.
  virtual void isRegisteredNotifieeIs(bool registered);
  [[nodiscard]] bool isRegisteredNotifiee() const noexcept { return isRegistered_; }

  void hasNotificationActiveIs(bool active) override;

  /// Called for a change while the reactor is registered and its notifications are active. `key` points to the changed
  /// member's key for a collection attribute and is null for a scalar; it is gone when the handler returns.
  virtual void onAttribute(AttributeId id, const void* key) = 0;

 protected:
  NotifieeConst() noexcept = default;

 private:
  friend NotifieeList;

  Ptr<const PtrInterface> notifier_;
  std::uint32_t position_ = 0;  // in the list's block
  bool isRegistered_ = false;
};

/// The reactors registered with one notifier, in one word: none, the only one, or a block of several.
class MOX_PUBLIC NotifieeList {
 public:
  using Notifiee = PtrInterface::NotifieeConst;

  NotifieeList() noexcept = default;
  NotifieeList(const NotifieeList&) = delete;
  NotifieeList& operator=(const NotifieeList&) = delete;
  /// Removes and unbinds all reactors; their notifier is gone.
  ~NotifieeList();

  /// Delivers a change of a scalar attribute.
  void visit(AttributeId id) { visit(id, nullptr); }

  /// Delivers a change of a collection attribute. After the last handler nothing of the notifier is touched.
  void visit(AttributeId id, const void* key) {
    if (word_ == 0) return;
    if ((word_ & isBlock) == 0) {
      Notifiee* const sole = asSole();
      if (sole->hasNotificationActive()) sole->onAttribute(id, key);
    } else {
      visitBlock(id, key);
    }
  }

  /// Removes all reactors, also from a visit that is under way. They stay bound and may register again.
  void deleteAll() noexcept;

  [[nodiscard]] bool empty() const noexcept { return size() == 0; }
  [[nodiscard]] std::size_t size() const noexcept;

 private:
  friend Notifiee;
  struct Block;
  class Visit;
  static constexpr std::uintptr_t isBlock = 1;

  [[nodiscard]] Notifiee* asSole() const noexcept { return reinterpret_cast<Notifiee*>(word_); }
  [[nodiscard]] Block* asBlock() const noexcept { return reinterpret_cast<Block*>(word_ & ~isBlock); }

  void insert(Notifiee& notifiee);
  void remove(Notifiee& notifiee) noexcept;
  void update(Notifiee& notifiee) noexcept;
  void visitBlock(AttributeId id, const void* key);
  void tidy() noexcept;

  std::uintptr_t word_ = 0;
};

// The loop over several reactors stands in the header so that it is compiled into the module that changes the attribute,
// close to the handlers: a call across shared libraries costs as much again as the handler's own (docs/performance.md).

/// Several reactors, by order of registration. Leavers become gaps and joiners are appended, so that a visit can go by
/// position; gaps are closed while no visit is under way. The block outlives its list until the last visit is over.
struct NotifieeList::Block {
  /// A reactor, marked in the lowest bit when it is not to be called, so that a visit makes one test. A gap is the mark
  /// alone.
  using Place = std::uintptr_t;
  static constexpr Place isSkipped = 1;

  std::vector<Place> places;
  std::size_t present = 0;
  std::uint32_t visits = 0;
  bool isOrphan = false;  // its list is gone

  [[nodiscard]] static Place placeOf(Notifiee& notifiee) noexcept {
    return reinterpret_cast<Place>(&notifiee) | (notifiee.hasNotificationActive() ? 0 : isSkipped);
  }
  [[nodiscard]] static Notifiee* reactorAt(Place place) noexcept {
    return reinterpret_cast<Notifiee*>(place & ~isSkipped);
  }

  [[nodiscard]] bool hasGaps() const noexcept { return present != places.size(); }

  void append(Notifiee& notifiee) {
    places.push_back(placeOf(notifiee));
    notifiee.position_ = static_cast<std::uint32_t>(places.size() - 1);
    ++present;
  }
  void call(std::size_t position, AttributeId id, const void* key) {
    const Place place = places[position];
    if ((place & isSkipped) == 0) reinterpret_cast<Notifiee*>(place)->onAttribute(id, key);
  }
  /// Makes all places gaps; `leave` is called with each reactor.
  void empty(const auto& leave) noexcept {
    for (Place& place : places) {
      if (Notifiee* const reactor = reactorAt(place)) leave(*reactor);
      place = isSkipped;
    }
    present = 0;
  }
};

/// A visit under way.
class NotifieeList::Visit {
 public:
  Visit(NotifieeList& list, Block& block) noexcept : list_(list), block_(block) { ++block_.visits; }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;
  ~Visit() {
    if (--block_.visits == 0 && block_.hasGaps()) end();
  }

 private:
  void end() noexcept {
    if (block_.isOrphan) {
      delete &block_;
    } else {
      list_.tidy();
    }
  }

  NotifieeList& list_;
  Block& block_;
};

inline void NotifieeList::visitBlock(AttributeId id, const void* key) {
  Block& block = *asBlock();
  const Visit visit(*this, block);
  const std::size_t end = block.places.size();
  std::size_t position = 0;
  try {
    for (; position < end; ++position) block.call(position, id, key);
  } catch (...) {
    while (++position < end) {
      try {
        block.call(position, id, key);
      } catch (...) {
        continue;  // The first exception is the one to report.
      }
    }
    throw;
  }
}

}  // namespace Mox
