// The collections that entities are made of: members by key, in a stable order.
//
// Overview
//   EntityCollection<K, T>     members that are entities, owned by the collection
//   ValueCollection<K, V>      plain values
//   SetCollection<K>           just keys
//   An entity holds a collection as a private member and shows it as a const reference; changes go through the entity,
//   which notifies (mox/Entity.h). Keyed by VLAN id or another small number, a collection is an IdMap; keyed by anything
//   else, a HashMap. The table below holds for both.
//
// Usage
//   const Topo* topo = state->topo().find("A");            // null when absent
//   for (const auto& [intf, port] : topo->port()) ...      // port is a const Port&
//   auto i = dir.dirtyVlan().startAtHash(bookmark);        // a pass from a key on
//   while (i) { ...; i.advance(); }
//
// What a loop body may do                      and what the pass does
//   remove the current member                  goes on with the next one
//   remove or insert any others                visits each member present throughout exactly once; one inserted ahead
//                                              of the position is visited, one behind it is not
//   destroy the collection                     not allowed: hold a Ptr to its owner during the pass
//   have the current member destroyed while one of its own operations runs
//                                              not allowed: hold a Ptr to the member around the call
//
// The order is that of (hash, key), or of the number for an IdMap: the same in every pass, whatever the size.

#pragma once

#include <cstddef>
#include <iterator>
#include <optional>
#include <type_traits>
#include <utility>

#include "mox/HashMap.h"
#include "mox/IdMap.h"
#include "mox/Ptr.h"

namespace Mox {

namespace detail {

template <class K, class V, class Seed>
struct ChooseMap {
  using Type = HashMap<K, V, Seed>;
};
template <SmallId K, class V>
struct ChooseMap<K, V, ProcessSeed> {
  using Type = IdMap<K, V>;
};

}  // namespace detail

/// The map beneath a collection. A seed of the collection's own asks for a HashMap, whatever the key.
template <class K, class V, class Seed = ProcessSeed>
using Map = typename detail::ChooseMap<K, V, Seed>::Type;

/// Plain values by key. The public operations read; an entity changes its collections with `Entity::valueIs` and the
/// others.
template <class K, class V, class Seed = ProcessSeed>
class ValueCollection {
 public:
  using Key = K;
  using Value = V;
  using Iterator = typename Map<K, V, Seed>::Iterator;

  [[nodiscard]] std::size_t size() const noexcept { return map_.size(); }
  [[nodiscard]] bool empty() const noexcept { return map_.empty(); }
  [[nodiscard]] bool has(const K& key) const noexcept { return map_.find(key) != nullptr; }
  /// The value, or null. Valid until the next insertion or removal.
  [[nodiscard]] const V* find(const K& key) const noexcept { return map_.find(key); }
  [[nodiscard]] Iterator begin() const noexcept { return map_.begin(); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }
  [[nodiscard]] Iterator startAtHash(const K& key) const noexcept { return map_.startAtHash(key); }
  [[nodiscard]] std::size_t memory() const noexcept { return map_.memory(); }

  /// Inserts or overwrites; false when an equal value was there already.
  bool insertOrAssign(const K& key, V value) { return exchange(key, value); }
  /// The same; an overwritten value is handed out in `value`, so that the caller decides when it ends.
  bool exchange(const K& key, V& value) {
    const auto [place, isNew] = map_.insert(key, value);
    if (isNew) return true;
    if (*place == value) return false;
    std::swap(*place, value);
    return true;
  }
  /// Takes a value out, or nothing when the key is absent.
  std::optional<V> take(const K& key) noexcept { return map_.take(key); }
  bool erase(const K& key) noexcept { return map_.erase(key); }
  void clear() noexcept { map_.clear(); }

 private:
  Map<K, V, Seed> map_;
};

/// What a set holds for each of its keys.
struct Present {
  [[nodiscard]] friend constexpr bool operator==(Present, Present) noexcept = default;
};

/// A set of keys.
template <class K, class Seed = ProcessSeed>
using SetCollection = ValueCollection<K, Present, Seed>;

/// Entities by key. A const collection gives const members.
template <class K, class T, class Seed = ProcessSeed>
class EntityCollection {
  using Entities = Map<K, Ptr<T>, Seed>;

 public:
  using Key = K;
  using Value = T;

  /// A position in a pass, as that of the map beneath, which shows the members as `Shown`.
  template <class Shown>
  class BasicIterator {
   public:
    using value_type = Member<K, Shown>;
    using difference_type = std::ptrdiff_t;

    explicit BasicIterator(typename Entities::Iterator at) noexcept : at_(std::move(at)) {}

    [[nodiscard]] explicit operator bool() const noexcept { return static_cast<bool>(at_); }
    [[nodiscard]] friend bool operator==(const BasicIterator& i, std::default_sentinel_t) noexcept { return !i; }
    [[nodiscard]] KeyView<K> key() const noexcept { return at_.key(); }
    [[nodiscard]] Shown& value() const noexcept { return *at_.value(); }
    [[nodiscard]] Member<K, Shown> operator*() const noexcept { return {key(), value()}; }
    [[nodiscard]] bool currNodeMaybeStale() const noexcept { return at_.currNodeMaybeStale(); }
    void advance() noexcept { at_.advance(); }
    BasicIterator& operator++() noexcept {
      advance();
      return *this;
    }
    void operator++(int) noexcept { advance(); }

   private:
    typename Entities::Iterator at_;
  };
  using Iterator = BasicIterator<const T>;
  using MutableIterator = BasicIterator<T>;

  EntityCollection() noexcept = default;
  EntityCollection(const EntityCollection&) = delete;
  EntityCollection& operator=(const EntityCollection&) = delete;
  ~EntityCollection() { clear(); }

  [[nodiscard]] std::size_t size() const noexcept { return map_.size(); }
  [[nodiscard]] bool empty() const noexcept { return map_.empty(); }
  [[nodiscard]] bool has(const K& key) const noexcept { return map_.find(key) != nullptr; }
  /// The member, or null. Borrowed: make a Ptr of it to keep it.
  [[nodiscard]] const T* find(const K& key) const noexcept {
    const Ptr<T>* const found = map_.find(key);
    return found == nullptr ? nullptr : found->get();
  }
  [[nodiscard]] T* find(const K& key) noexcept { return const_cast<T*>(std::as_const(*this).find(key)); }
  [[nodiscard]] Iterator begin() const noexcept { return Iterator(map_.begin()); }
  [[nodiscard]] MutableIterator begin() noexcept { return MutableIterator(map_.begin()); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }
  [[nodiscard]] Iterator startAtHash(const K& key) const noexcept { return Iterator(map_.startAtHash(key)); }

  /// Inserts a member unless the key is there; returns whether it was inserted.
  bool insert(const K& key, Ptr<T> member) { return map_.insert(key, std::move(member)).second; }
  /// Takes a member out; null when the key is absent.
  Ptr<T> take(const K& key) noexcept {
    std::optional<Ptr<T>> taken = map_.take(key);
    return taken ? disowned(std::move(*taken)) : Ptr<T>();
  }
  /// Removes all members. Their destruction meets an empty collection.
  void clear() noexcept {
    Entities gone(std::move(map_));
    for (const auto& [key, member] : gone) disowned(member);
  }

 private:
  /// A member that is no longer owned has no parent: the parent may end before it.
  static Ptr<T> disowned(Ptr<T> member) noexcept {
    if constexpr (requires { member->parentIs(nullptr); }) member->parentIs(nullptr);
    return member;
  }

  Entities map_;
};

}  // namespace Mox
