// A map keyed by small numbers, such as VLAN ids: the container beneath collections keyed by VLAN.
//
// Overview
//   One order in every form: ascending id. Its main design aspects are:
//   - Small or sparse, it is one block with the sorted ids and the values behind them; ids that arrive in order are
//     appended.
//   - Large and dense, it is a directory of pages of 64 ids with a bitmap and packed values each: no stored ids, and no
//     long shifts. It takes this form once that needs less memory than the block would, and returns to the block when
//     few members are left.
//   - Both forms grow by an eighth, so that memory stays close to what the values need: at 4094 members of 12 bytes,
//     fewer than 13 bytes a member.
//   - A position in a pass is an id. Each insertion and removal counts a version; an iterator that finds another version
//     than its own looks its place up again.
//
// The guarantees are those of HashMap: a pass visits every member present throughout exactly once, whatever changes
// meanwhile; references to values are valid until the next insertion or removal; values are destroyed last.
//
// A key type takes part by specialising `KeyTraits` with `toId` (below 4096) and `fromId` (mox/Hash.h).

#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "mox/Hash.h"
#include "mox/Member.h"
#include "mox/detail/IdArray.h"
#include "mox/detail/IdPages.h"

namespace Mox {

/// Keys that are numbers below 4096.
template <class K>
concept SmallId = requires(const K& key, std::uint16_t id) {
  { KeyTraits<K>::toId(key) } -> std::same_as<std::uint16_t>;
  { KeyTraits<K>::fromId(id) } -> std::same_as<K>;
};

template <SmallId K, class V>
class IdMap {
  using Traits = KeyTraits<K>;
  using Array = detail::IdArray<V>;
  using Pages = detail::IdPages<V>;

 public:
  using Key = K;
  using Value = V;
  class Iterator;

  IdMap() noexcept = default;
  IdMap(const IdMap&) = delete;
  IdMap& operator=(const IdMap&) = delete;
  IdMap(IdMap&& other) noexcept : pages_(std::move(other.pages_)), version_(other.version_++) {
    array_.swap(other.array_);
  }
  IdMap& operator=(IdMap&&) = delete;
  ~IdMap() { clear(); }

  [[nodiscard]] std::size_t size() const noexcept { return pages_ ? pages_->size() : array_.size(); }
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }

  [[nodiscard]] V* find(const K& key) noexcept { return const_cast<V*>(std::as_const(*this).find(key)); }
  [[nodiscard]] const V* find(const K& key) const noexcept {
    const std::uint16_t id = Traits::toId(key);
    if (pages_) return pages_->find(id);
    const std::size_t place = array_.lowerBound(id);
    return arrayHas(place, id) ? array_.value(place) : nullptr;
  }

  /// Inserts a member unless the key is there. Returns the member's value and whether it is new.
  std::pair<V*, bool> insert(const K& key, V value) {
    const std::uint16_t id = Traits::toId(key);
    if (!pages_) {
      const std::size_t place = array_.lowerBound(id);
      if (arrayHas(place, id)) return {array_.value(place), false};
      if (array_.isFull()) grow();
      if (!pages_) {
        ++version_;
        return {array_.insert(place, id, std::move(value)), true};
      }
    } else if (V* const found = pages_->find(id)) {
      return {found, false};
    }
    V* const inserted = pages_->insert(id, std::move(value));
    ++version_;
    return {inserted, true};
  }

  /// Takes the member out and returns its value, or nothing when the key is absent.
  std::optional<V> take(const K& key) noexcept {
    const std::uint16_t id = Traits::toId(key);
    if (pages_) {
      if (pages_->find(id) == nullptr) return std::nullopt;
      ++version_;
      std::optional<V> value(pages_->take(id));
      if (pages_->size() < fewMembers) pagesToArray();
      return value;
    }
    const std::size_t place = array_.lowerBound(id);
    if (!arrayHas(place, id)) return std::nullopt;
    ++version_;
    std::optional<V> value(array_.take(place));
    array_.shrinkIfSparse();
    return value;
  }

  /// Removes the member; returns whether there was one. Its value is destroyed last.
  bool erase(const K& key) noexcept { return take(key).has_value(); }

  /// Removes all members. Their destruction meets an empty map.
  void clear() noexcept {
    ++version_;
    const std::unique_ptr<Pages> pages = std::move(pages_);
    array_.clear();
  }

  [[nodiscard]] Iterator begin() const noexcept { return Iterator(*this, 0); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

  /// A pass from `key` on, whether or not the key is there.
  [[nodiscard]] Iterator startAtHash(const K& key) const noexcept { return Iterator(*this, Traits::toId(key)); }

  /// The bytes of memory held, without the map object itself.
  [[nodiscard]] std::size_t memory() const noexcept { return pages_ ? pages_->memory() : array_.memory(); }

 private:
  static constexpr std::uint32_t noId = Pages::noId;
  /// Below this size pages become a block again. Far below the size at which a block becomes pages.
  static constexpr std::size_t fewMembers = 64;

  [[nodiscard]] bool arrayHas(std::size_t place, std::uint16_t id) const noexcept {
    return place < array_.size() && array_.id(place) == id;
  }

  /// Grows the full block, or replaces it by pages where these need hardly more memory: their directory and what each
  /// page costs against the two bytes a member for the ids. A quarter of a byte a member more is well spent: a change
  /// in the middle of a large block moves half of it.
  void grow() {
    constexpr std::size_t pageCost = 24;
    const std::size_t size = array_.size();
    if (size * sizeof(std::uint16_t) + size / 4 < sizeof(Pages) + array_.pages() * pageCost) {
      array_.grow();
      return;
    }
    pages_ = std::make_unique<Pages>(array_);
    ++version_;
    array_.clear();
  }

  void pagesToArray() noexcept {
    Array array;
    try {
      array.capacityIs(fewMembers);
    } catch (const std::bad_alloc&) {
      return;  // The pages serve as well.
    }
    for (std::uint32_t id = pages_->lowerBound(0); id != noId; id = pages_->lowerBound(id + 1)) {
      const auto small = static_cast<std::uint16_t>(id);
      array.insert(array.size(), small, std::move(*pages_->find(small)));
    }
    pages_.reset();
    array_.swap(array);
  }

  Array array_;
  std::unique_ptr<Pages> pages_;
  std::uint32_t version_ = 0;
};

/// A position in a pass: an id, with the place where it was last found.
template <SmallId K, class V>
class IdMap<K, V>::Iterator {
 public:
  using value_type = Member<K, const V>;
  using difference_type = std::ptrdiff_t;

  [[nodiscard]] explicit operator bool() const noexcept { return key_.has_value(); }
  [[nodiscard]] friend bool operator==(const Iterator& i, std::default_sentinel_t) noexcept { return !i; }

  [[nodiscard]] KeyView<K> key() const noexcept { return *key_; }
  /// The member's value; only while `currNodeMaybeStale()` is false.
  [[nodiscard]] const V& value() const noexcept { return *value_; }
  [[nodiscard]] Member<K, const V> operator*() const noexcept { return {*key_, *value_}; }

  /// True when the map has changed since the iterator came here, so that the member may be gone.
  [[nodiscard]] bool currNodeMaybeStale() const noexcept { return version_ != map_->version_; }

  /// Goes on to the next member in the order of the pass, as the map is now.
  void advance() noexcept { settle(std::uint32_t{Traits::toId(*key_)} + 1); }
  Iterator& operator++() noexcept {
    advance();
    return *this;
  }
  void operator++(int) noexcept { advance(); }

 private:
  friend IdMap;

  Iterator(const IdMap& map, std::uint32_t id) noexcept : map_(&map), version_(map.version_ - 1) { settle(id); }

  /// Comes to the first member from `id` on. As long as the map has not changed, its place is the one behind the last.
  void settle(std::uint32_t id) noexcept {
    const bool isFresh = !currNodeMaybeStale();
    version_ = map_->version_;
    if (const Pages* pages = map_->pages_.get()) {
      const std::uint32_t next = pages->lowerBound(id);
      if (next == noId) return key_.reset();
      const bool isSamePage = isFresh && next / 64 == (id - 1) / 64;
      value_ = isSamePage ? value_ + 1 : pages->find(static_cast<std::uint16_t>(next));
      key_ = Traits::fromId(static_cast<std::uint16_t>(next));
      return;
    }
    const Array& array = map_->array_;
    place_ = isFresh ? place_ + 1 : id == noId ? array.size() : array.lowerBound(static_cast<std::uint16_t>(id));
    if (place_ >= array.size()) return key_.reset();
    key_ = Traits::fromId(array.id(place_));
    value_ = array.value(place_);
  }

  const IdMap* map_;
  const V* value_ = nullptr;
  std::size_t place_ = 0;
  std::optional<K> key_;
  std::uint32_t version_;
};

}  // namespace Mox
