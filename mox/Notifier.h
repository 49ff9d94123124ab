// Objects whose attributes notify when they change: the common part of entities and state machines.
//
// The operations below are for the class that owns the attribute; mox/Entity.h shows how it uses them, and states the
// rules. Each stores the change first and then notifies, once, and only when something changed.

#pragma once

#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "mox/Attribute.h"
#include "mox/Collection.h"
#include "mox/Exception.h"
#include "mox/Notifiee.h"
#include "mox/Ptr.h"
#include "mox/Public.h"
#include "mox/String.h"
#include "mox/detail/Opaque.h"

namespace Mox {

class MOX_PUBLIC Notifier : public PtrInterface {
 public:
  ~Notifier() override;

  [[nodiscard]] NotifieeList* notifieeList() const noexcept override;

 protected:
  Notifier() noexcept = default;

  /// Writes a scalar attribute; silent when the value is the present one.
  template <class T>
  void scalarIs(T& stored, const std::type_identity_t<T>& value, const ScalarAttribute& attribute) {
    if (stored == value) return;
    // The old value ends last: it may be a pointer whose release sets something off.
    [[maybe_unused]] const T old = std::exchange(stored, value);
    notify(attribute);
  }

  /// Inserts a value, or overwrites one that differs.
  template <class K, class V, class Seed>
  void valueIs(ValueCollection<K, V, Seed>& collection, const CollectionAttribute<K>& attribute, K key,
               std::type_identity_t<V> value) {
    if (collection.exchange(key, value)) notify(attribute, key);
  }
  template <class K, class V, class Seed>
  void valueDel(ValueCollection<K, V, Seed>& collection, const CollectionAttribute<K>& attribute, K key) {
    const std::optional<V> gone = collection.take(key);
    if (gone) notify(attribute, key);
  }
  template <class K, class V, class Seed>
  void valueDelAll(ValueCollection<K, V, Seed>& collection, const CollectionAttribute<K>& attribute) {
    const Ptr<Notifier> self(this);
    for (auto i = collection.begin(); i; i.advance()) valueDel(collection, attribute, i.key());
  }

  /// Returns the member, made and inserted if it is absent.
  template <class K, class T, class Seed, class... Args>
  Ptr<T> memberIs(EntityCollection<K, T, Seed>& collection, const CollectionAttribute<K>& attribute, K key,
                  const Args&... args) {
    if (T* const existing = collection.find(key)) {
      if constexpr (sizeof...(Args) != 0) {
        if (!existing->isBuiltFrom(args...)) throwMutatorReinstantiating(std::string(attribute.name()) + "Is");
      }
      return Ptr<T>(existing);
    }
    Ptr<T> member = makePtr<T>(key, args...);
    if (memberInsert(collection, attribute, key, member)) return member;
    // The constructor, or what it set off, has made one.
    return memberIs(collection, attribute, key, args...);
  }
  /// Inserts a member that is made already; returns false, and changes nothing, when the key is there.
  template <class K, class T, class Seed>
  bool memberInsert(EntityCollection<K, T, Seed>& collection, const CollectionAttribute<K>& attribute, K key,
                    Ptr<T> member) {
    if (!collection.insert(key, member)) return false;
    if constexpr (requires { member->parentIs(this); }) member->parentIs(this);
    notify(attribute, key);
    return true;
  }
  template <class K, class T, class Seed>
  void memberDel(EntityCollection<K, T, Seed>& collection, const CollectionAttribute<K>& attribute, K key) {
    const Ptr<T> gone = collection.take(key);
    if (gone) notify(attribute, key);
  }
  template <class K, class T, class Seed>
  void memberDelAll(EntityCollection<K, T, Seed>& collection, const CollectionAttribute<K>& attribute) {
    const Ptr<Notifier> self(this);
    for (auto i = collection.begin(); i; i.advance()) memberDel(collection, attribute, i.key());
  }

  /// Keeps a single entity that is known by its name: the present one if it bears the name, otherwise a new one, which
  /// takes its place. Returns it. The old one is released after the notification. A single entity has no parent.
  template <class T>
  Ptr<T> singleIs(Ptr<T>& stored, const ScalarAttribute& attribute, const String& name) {
    if (stored && stored->name() == name) return stored;
    Ptr<T> made = makePtr<T>(name);
    const Ptr<T> old = std::exchange(stored, made);
    notify(attribute);
    return made;
  }
  template <class T>
  void singleDel(Ptr<T>& stored, const ScalarAttribute& attribute) {
    const Ptr<T> old = std::exchange(stored, nullptr);
    if (old) notify(attribute);
  }

  /// Tells the reactors of a change that the class has stored by other means.
  void notify(const ScalarAttribute& attribute) { notifiees_.visit(attribute.id()); }
  template <class K>
  void notify(const CollectionAttribute<K>& attribute, const K& key) {
    notifiees_.visit(attribute.id(), detail::opaque(&key));
  }

 private:
  mutable NotifieeList notifiees_;
};

}  // namespace Mox
