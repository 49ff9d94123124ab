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

#include <cstdint>

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

  /// Called for a change while the reactor is registered and its notifications are active. `key` points to the changed
  /// member's key for a collection attribute and is null for a scalar; it is gone when the handler returns.
  virtual void onAttribute(AttributeId id, const void* key);

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
  void visitBlock(AttributeId id, const void* key);
  void tidy() noexcept;

  std::uintptr_t word_ = 0;
};

}  // namespace Mox
