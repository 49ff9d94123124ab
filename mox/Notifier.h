// Objects whose attributes notify when they change: the common part of entities and state machines.
//
// The operations below are for the class that owns the attribute; mox/Entity.h shows how it uses them, and states the
// rules. Each stores the change first and then notifies, once, and only when something changed.

#pragma once

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
    stored = value;
    notifiees_.visit(attribute.id());
  }

  /// Inserts a value, or overwrites one that differs.
  template <class K, class V, class Seed>
  void valueIs(ValueCollection<K, V, Seed>& collection, const CollectionAttribute<K>& attribute, K key,
               std::type_identity_t<V> value) {
    if (collection.insertOrAssign(key, std::move(value))) notifiees_.visit(attribute.id(), &key);
  }
  template <class K, class V, class Seed>
  void valueDel(ValueCollection<K, V, Seed>& collection, const CollectionAttribute<K>& attribute, K key) {
    if (collection.erase(key)) notifiees_.visit(attribute.id(), &key);
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
    collection.insert(key, member);
    if constexpr (requires { member->parentIs(this); }) member->parentIs(this);
    notifiees_.visit(attribute.id(), &key);
    return member;
  }
  template <class K, class T, class Seed>
  void memberDel(EntityCollection<K, T, Seed>& collection, const CollectionAttribute<K>& attribute, K key) {
    const Ptr<T> gone = collection.take(key);
    if (gone) notifiees_.visit(attribute.id(), &key);
  }
  template <class K, class T, class Seed>
  void memberDelAll(EntityCollection<K, T, Seed>& collection, const CollectionAttribute<K>& attribute) {
    const Ptr<Notifier> self(this);
    for (auto i = collection.begin(); i; i.advance()) memberDel(collection, attribute, i.key());
  }

  /// Keeps a single entity that is known by its name: the present one if it bears the name, else a new one, which takes
  /// its place. Returns it.
  template <class T>
  Ptr<T> singleIs(Ptr<T>& stored, const ScalarAttribute& attribute, const String& name) {
    if (stored && stored->name() == name) return stored;
    const Ptr<T> made = makePtr<T>(name);
    const Ptr<T> old = std::exchange(stored, made);
    notifiees_.visit(attribute.id());
    return made;
  }
  template <class T>
  void singleDel(Ptr<T>& stored, const ScalarAttribute& attribute) {
    const Ptr<T> old = std::exchange(stored, nullptr);
    if (old) notifiees_.visit(attribute.id());
  }

 private:
  mutable NotifieeList notifiees_;
};

}  // namespace Mox
