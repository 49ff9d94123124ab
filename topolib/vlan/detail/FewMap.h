// A map for very few members: a sorted array of exactly their number; a sole member stands in the map itself.
//
// A view has millions of them with one member each, where the least table of a HashMap would cost several times as much.
// A pass goes in the order of the keys; its position is a key, so that it goes on whatever changes under it.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "mox/Member.h"

namespace Topology::Library::Vlan::detail {

template <class K, class V>
class FewMap {
  struct Entry {
    K key{};
    V value{};
  };
  using Array = std::unique_ptr<Entry[]>;  // NOLINT(modernize-avoid-c-arrays): of exactly the number

 public:
  using Key = K;
  using Value = V;

  class Iterator {
   public:
    using value_type = Mox::Member<K, const V>;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(const FewMap& map) : map_(&map) {
      if (!map.empty()) key_ = map.entries()->key;
    }

    [[nodiscard]] explicit operator bool() const noexcept { return key_.has_value(); }
    [[nodiscard]] friend bool operator==(const Iterator& i, std::default_sentinel_t) noexcept { return !i; }
    [[nodiscard]] const K& key() const noexcept { return *key_; }
    [[nodiscard]] Mox::Member<K, const V> operator*() const noexcept { return {*key_, *map_->find(*key_)}; }
    void advance() {
      const std::size_t next = map_->lowerBound(*key_) + (map_->find(*key_) != nullptr ? 1 : 0);
      key_ = next < map_->size() ? std::optional(map_->entries()[next].key) : std::nullopt;
    }
    Iterator& operator++() {
      advance();
      return *this;
    }
    void operator++(int) { advance(); }

   private:
    const FewMap* map_;
    std::optional<K> key_;
  };

  FewMap() noexcept : several(nullptr) {}
  FewMap(const FewMap&) = delete;
  FewMap& operator=(const FewMap&) = delete;
  ~FewMap() { release(); }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
  [[nodiscard]] bool has(const K& key) const noexcept { return find(key) != nullptr; }
  /// The value, or null. Valid until the next change.
  [[nodiscard]] const V* find(const K& key) const noexcept {
    const std::size_t place = lowerBound(key);
    return holds(place, key) ? &entries()[place].value : nullptr;
  }
  [[nodiscard]] Iterator begin() const { return Iterator(*this); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

  /// Inserts or overwrites; false when an equal value was there already. An overwritten one is handed out in `value`.
  bool exchange(const K& key, V& value) {
    const std::size_t place = lowerBound(key);
    if (holds(place, key)) {
      Entry& entry = entries()[place];
      if (entry.value == value) return false;
      std::swap(entry.value, value);
      return true;
    }
    if (empty()) {
      std::construct_at(&sole, Entry{key, std::move(value)});
      size_ = 1;
      return true;
    }
    Array grown(new Entry[size_ + std::size_t{1}]);
    std::move(entries(), entries() + place, grown.get());
    grown[place] = {key, std::move(value)};
    std::move(entries() + place, entries() + size_, grown.get() + place + 1);
    release();
    several = grown.release();
    ++size_;
    return true;
  }

  /// Takes a value out, or nothing when the key is absent.
  std::optional<V> take(const K& key) {
    const std::size_t place = lowerBound(key);
    if (!holds(place, key)) return std::nullopt;
    const std::size_t left = size_ - std::size_t{1};
    Array shrunk(left > 1 ? new Entry[left] : nullptr);
    std::optional<V> taken(std::move(entries()[place].value));
    if (left == 1) {
      Entry rest = std::move(entries()[1 - place]);
      release();
      std::construct_at(&sole, std::move(rest));
    } else {
      std::move(entries(), entries() + place, shrunk.get());
      std::move(entries() + place + 1, entries() + size_, shrunk.get() + place);
      release();
      several = shrunk.release();
    }
    size_ = static_cast<std::uint32_t>(left);
    return taken;
  }

 private:
  [[nodiscard]] const Entry* entries() const noexcept { return size_ == 1 ? &sole : several; }
  [[nodiscard]] Entry* entries() noexcept { return const_cast<Entry*>(std::as_const(*this).entries()); }

  [[nodiscard]] std::size_t lowerBound(const K& key) const noexcept {
    const Entry* const begin = entries();
    const Entry* const at =
        std::lower_bound(begin, begin + size_, key, [](const Entry& entry, const K& k) { return entry.key < k; });
    return static_cast<std::size_t>(at - begin);
  }
  [[nodiscard]] bool holds(std::size_t place, const K& key) const noexcept {
    return place < size_ && entries()[place].key == key;
  }

  /// Ends the members, and leaves the fields to be written.
  void release() noexcept {
    if (size_ == 1) {
      std::destroy_at(&sole);
    } else {
      delete[] several;
    }
  }

  union {
    Entry sole;      // the member of a map with one
    Entry* several;  // the members of a map with more; null for an empty one
  };
  std::uint32_t size_ = 0;
};

}  // namespace Topology::Library::Vlan::detail
