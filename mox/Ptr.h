// Counted objects and the pointer that owns them.
//
// Overview
//   `PtrInterface` is the base of every entity, reactor and state machine. It carries a reference count inside the
//   object; `Ptr<T>` raises and lowers it. When the count reaches zero the object destroys itself.
//
// Usage
//   auto lamp = Mox::makePtr<Lamp>("hall");      // the only reference
//   Mox::Ptr<const Lamp> reader = lamp;          // read-only access
//   Lamp* borrowed = lamp.get();                 // valid while somebody holds a Ptr
//   Mox::Ptr<Lamp> again(borrowed);              // a further reference, from anywhere
//
// Rules
//   - An object starts with one reference, the maker's; `makePtr` hands it to the pointer that it returns. So a
//     constructor may make and drop pointers to `this`, and an object that is a local variable or a member is never
//     destroyed by a Ptr to it. The result of a plain `new` belongs into `Ptr<T>::adopt`.
//   - A destructor may make and drop pointers to `this` too; they do not destroy it twice.
//   - Assigning to a Ptr stores the new pointer first and releases the old object last: what the release sets off
//     already sees the new value.
//
// Thread-safety
//   Everything runs on the one activity thread, but counts may be touched from others once `threadSafePointersIs(true)`
//   was called. Set the switch before the second thread starts; each count update reads it.

#pragma once

#include <atomic>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "mox/Public.h"

namespace Mox {

class NotifieeList;
class TypeDesc;

namespace detail {
MOX_PUBLIC extern std::atomic<bool> threadSafePointersFlag;
}

/// Whether reference counts are updated atomically, process-wide. False at start.
[[nodiscard]] inline bool threadSafePointers() noexcept {
  return detail::threadSafePointersFlag.load(std::memory_order_relaxed);
}

/// Selects atomic (true) or plain (false) count updates. Call it while a single thread is running.
MOX_PUBLIC void threadSafePointersIs(bool value) noexcept;

/// A 32-bit reference count that obeys `threadSafePointers`. It starts at one.
class ReferenceCount {
 public:
  void increment() noexcept {
    if (threadSafePointers()) [[unlikely]] {
      std::atomic_ref(count_).fetch_add(1, std::memory_order_relaxed);
    } else {
      ++count_;
    }
  }

  /// Returns true when the last reference is gone.
  [[nodiscard]] bool decrement() noexcept {
    if (threadSafePointers()) [[unlikely]] {
      return std::atomic_ref(count_).fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
    return --count_ == 0;
  }

  /// To be called when the last reference is gone: from then on the count is far from zero, so that references taken and
  /// dropped while the object is destroyed do not end it a second time. Not for inlining behind `decrement`: GCC 12 takes
  /// the decrement for a dead store then, where a reference ends because of an exception.
  void underDestructionIs() noexcept { count_ = underDestruction; }

  [[nodiscard]] std::uint32_t value() const noexcept { return std::atomic_ref(count_).load(std::memory_order_relaxed); }

 private:
  static constexpr std::uint32_t underDestruction = 0x8000'0000;

  mutable std::uint32_t count_ = 1;
};

/// Base of all counted objects. The virtual operations stand in the order of their slots.
class MOX_PUBLIC PtrInterface {
 public:
  class NotifieeConst;

  PtrInterface(const PtrInterface&) = delete;
  PtrInterface& operator=(const PtrInterface&) = delete;

  /// The reactors registered with this object, or null for an object that notifies nobody.
  [[nodiscard]] virtual NotifieeList* notifieeList() const noexcept;

  /// Switches notifications on or off: a reactor's own, a state machine's for all its reactors. Off at construction.
  virtual void hasNotificationActiveIs(bool active);
  [[nodiscard]] bool hasNotificationActive() const noexcept { return hasNotificationActive_; }

  /// Called with true when the last reference is gone; destroys the object.
  virtual void zeroReferencesIs(bool zero);

  /// What is known of the object's dynamic type: its name, and its attributes where a module registered them.
  [[nodiscard]] virtual const TypeDesc& fwkType() const;

  virtual ~PtrInterface();

  /// With true, retires the reactors of a state machine: each is unbound from its notifier, so that no notification
  /// reaches an object under destruction. Nothing to do for other objects.
  virtual void moxDoZombieReactors(bool zombie);

  void referencesInc() const noexcept { references_.increment(); }
  void referencesDec() const noexcept {
    if (references_.decrement()) handleZeroRef();
  }
  [[nodiscard]] std::uint32_t references() const noexcept { return references_.value(); }

 protected:
  PtrInterface() noexcept = default;

 private:
  void handleZeroRef() const noexcept;

  mutable ReferenceCount references_;
  bool hasNotificationActive_ = false;
};

/// The owning pointer to a counted object: one word, cheap to move, a count update to copy.
template <class T>
class Ptr {
 public:
  using element_type = T;

  constexpr Ptr() noexcept = default;
  constexpr Ptr(std::nullptr_t) noexcept {}
  Ptr(T* object) noexcept : object_(object) { acquire(); }
  Ptr(const Ptr& other) noexcept : object_(other.object_) { acquire(); }
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U>
  requires std::convertible_to<U*, T*> Ptr(const Ptr<U>& other)
  noexcept : object_(other.get()) { acquire(); }
  template <class U>
  requires std::convertible_to<U*, T*> Ptr(Ptr<U>&& other)
  noexcept : object_(other.release()) {}
  ~Ptr() {
    if (object_ != nullptr) object_->referencesDec();
  }

  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): it copies first.
  Ptr& operator=(const Ptr& other) noexcept {
    Ptr(other).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    Ptr(std::move(other)).swap(*this);
    return *this;
  }

  /// Takes over a reference that already counts, such as that of a fresh object.
  [[nodiscard]] static Ptr adopt(T* object) noexcept {
    Ptr result;
    result.object_ = object;
    return result;
  }
  /// Gives the reference up without lowering the count; the reverse of `adopt`.
  [[nodiscard]] T* release() noexcept { return std::exchange(object_, nullptr); }

  [[nodiscard]] T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }

 private:
  void acquire() const noexcept {
    if (object_ != nullptr) object_->referencesInc();
  }

  T* object_ = nullptr;
};

/// Pointers are equal when they point to the same object.
template <class T, class U>
[[nodiscard]] bool operator==(const Ptr<T>& a, const Ptr<U>& b) noexcept {
  return a.get() == b.get();
}
template <class T, class U>
[[nodiscard]] bool operator==(const Ptr<T>& a, U* b) noexcept {
  return a.get() == b;
}
template <class T>
[[nodiscard]] bool operator==(const Ptr<T>& a, std::nullptr_t) noexcept {
  return a.get() == nullptr;
}
template <class T>
[[nodiscard]] std::strong_ordering operator<=>(const Ptr<T>& a, const Ptr<T>& b) noexcept {
  return std::compare_three_way{}(a.get(), b.get());
}

/// Makes an object and returns the only reference to it.
template <class T, class... Args>
[[nodiscard]] Ptr<T> makePtr(Args&&... args) {
  return Ptr<T>::adopt(new T(std::forward<Args>(args)...));
}

}  // namespace Mox

template <class T>
struct std::hash<Mox::Ptr<T>> {
  std::size_t operator()(const Mox::Ptr<T>& p) const noexcept { return std::hash<T*>{}(p.get()); }
};
