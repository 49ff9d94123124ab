// A hash map with a stable order: the container beneath collections that are keyed by interface or by name.
//
// Overview
//   Its main design aspects are:
//   - The slots stay sorted by hash. The upper bits of a hash choose its bucket, which is monotone, so a table of any
//     capacity holds its members in the same order, and growing is one sequential merge.
//   - Linear probing without tombstones: a find walks from its bucket while the slot's hash is smaller, an insertion
//     shifts the rest of the run to the right, a removal shifts it back. A free slot has the hash that no key has, which
//     is the greatest, so that it ends every walk.
//   - A bitmap of the occupied slots makes a pass cost what the map holds. A shifted run changes one bit of it.
//   - A position in a pass is a key. Each insertion and removal counts a version; an iterator that finds another version
//     than its own looks its place up again by (hash, key).
//   - The table grows with its members and is given back when the last one leaves, not before.
//   - A removal first closes the gap and then hands the value out, so that whatever its destruction sets off meets a map
//     in order.
//
// Guarantees
//   insertion, removal, growth during a pass    every member present throughout is visited exactly once, in (hash, key)
//                                               order; a member inserted ahead of the position is visited as well
//   references to values                        valid until the next insertion or removal
//   an exception while inserting                (no memory) leaves the map as it was
//
// Cost: find, insert and erase are constant on average; a step of a pass is constant, also after a change.

#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>

#include "mox/Hash.h"
#include "mox/Member.h"
#include "mox/detail/Relocate.h"
#include "mox/detail/Slot.h"

namespace Mox {

template <class K, class V, class Seed = ProcessSeed>
class HashMap {
  using Traits = KeyTraits<K>;
  using Slot = detail::Slot<K, V>;

 public:
  using Key = K;
  using Value = V;
  class Iterator;

  HashMap() noexcept = default;
  HashMap(const HashMap&) = delete;
  HashMap& operator=(const HashMap&) = delete;
  HashMap(HashMap&& other) noexcept
      : slots_(std::exchange(other.slots_, nullptr)),
        end_(std::exchange(other.end_, 0)),
        size_(std::exchange(other.size_, 0)),
        version_(other.version_++),
        shift_(other.shift_) {}
  HashMap& operator=(HashMap&&) = delete;
  ~HashMap() { clear(); }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }

  [[nodiscard]] V* find(const K& key) noexcept { return const_cast<V*>(std::as_const(*this).find(key)); }
  [[nodiscard]] const V* find(const K& key) const noexcept {
    if (size_ == 0) return nullptr;
    const std::uint64_t hash = hashOf(key);
    const Slot* slot = slots_ + bucketOf(hash);
    while (slot->hash() < hash) ++slot;
    for (; slot->hash() == hash; ++slot) {
      if (slot->holds(hash, key)) return slot->value();
    }
    return nullptr;
  }

  /// Inserts a member unless the key is there. Returns the member's value and whether it is new.
  std::pair<V*, bool> insert(const K& key, V value) {
    const std::uint64_t hash = hashOf(key);
    for (;;) {
      if (slots_ != nullptr) {
        const std::size_t place = lowerBound(hash, key);
        Slot& slot = slots_[place];
        if (slot.holds(hash, key)) return {slot.value(), false};
        if (size_ < limit() && makeRoom(place)) {
          new (&slot) Slot(hash, key, std::move(value));
          ++size_;
          ++version_;
          return {slot.value(), true};
        }
      }
      grow();
    }
  }

  /// Takes the member out and returns its value, or nothing when the key is absent.
  std::optional<V> take(const K& key) noexcept {
    if (size_ == 0) return std::nullopt;
    const std::uint64_t hash = hashOf(key);
    const std::size_t place = lowerBound(hash, key);
    Slot& slot = slots_[place];
    if (!slot.holds(hash, key)) return std::nullopt;
    std::optional<V> value(std::move(*slot.value()));
    slot.destroy();
    closeGap(place);
    --size_;
    ++version_;
    // The table stays until the last member leaves. A smaller one would be crowded where a pass that removes its members
    // one by one has yet to come, and the bitmap makes a pass over a sparse one cheap.
    if (size_ == 0) clear();
    return value;
  }

  /// Removes the member; returns whether there was one. Its value is destroyed last.
  bool erase(const K& key) noexcept { return take(key).has_value(); }

  /// Removes all members. Their destruction meets an empty map.
  void clear() noexcept {
    if (slots_ == nullptr) return;
    Slot* const slots = std::exchange(slots_, nullptr);
    const std::size_t end = std::exchange(end_, 0);
    size_ = 0;
    ++version_;
    for (std::size_t i = 0; i < end; ++i) {
      if (!slots[i].isFree()) slots[i].destroy();
    }
    ::operator delete(slots);
    Seed::tableGone();
  }

  /// A pass over all members. End it by comparing with `end()` or by testing the iterator itself.
  [[nodiscard]] Iterator begin() const noexcept { return Iterator(*this, 0); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

  /// A pass from the position of `key` on, whether or not the key is there.
  [[nodiscard]] Iterator startAtHash(const K& key) const noexcept {
    return Iterator(*this, slots_ == nullptr ? 0 : lowerBound(hashOf(key), key));
  }

  /// The bytes of memory held, without the map object itself.
  [[nodiscard]] std::size_t memory() const noexcept { return slots_ == nullptr ? 0 : bytes(end_); }

 private:
  // The places are [0, end_); the slot at end_ is always free and stops the walks. There are more places than buckets,
  // so that the last runs have somewhere to go.
  static constexpr std::uint32_t minBucketBits = 3;

  [[nodiscard]] static std::uint64_t hashOf(const K& key) noexcept {
    const std::uint64_t hash = Seed::value().hash(Traits::toBits(key));
    if constexpr (Traits::isBijective) return hash;
    return hash == detail::freeHash ? detail::freeHash - 1 : hash;
  }
  [[nodiscard]] std::size_t bucketOf(std::uint64_t hash) const noexcept { return hash >> shift_; }
  [[nodiscard]] std::uint32_t bucketBits() const noexcept { return 64 - shift_; }
  [[nodiscard]] std::size_t limit() const noexcept { return limit(bucketBits()); }
  /// How many members that many buckets take: three quarters; a small table is filled, since its runs stay short.
  [[nodiscard]] static std::size_t limit(std::uint32_t bits) noexcept {
    return bits <= minBucketBits ? std::size_t{1} << bits : (std::size_t{3} << bits) / 4;
  }

  [[nodiscard]] static std::size_t words(std::size_t end) noexcept { return end / 64 + 1; }
  [[nodiscard]] static std::size_t bytes(std::size_t end) noexcept {
    return (end + 1) * sizeof(Slot) + words(end) * sizeof(std::uint64_t);
  }
  [[nodiscard]] std::uint64_t* bitmap() const noexcept { return reinterpret_cast<std::uint64_t*>(slots_ + end_ + 1); }

  /// The first place whose (hash, key) is not less, or the free one where it would be.
  [[nodiscard]] std::size_t lowerBound(std::uint64_t hash, const K& key) const noexcept {
    std::size_t place = bucketOf(hash);
    while (slots_[place].hash() < hash) ++place;
    if constexpr (!Traits::isBijective) {
      while (slots_[place].hash() == hash && keyLessThan(slots_[place].key(), key)) ++place;
    }
    return place;
  }

  /// Where a pass goes on behind this key, which may be gone.
  [[nodiscard]] std::size_t placeAfter(const K& key) const noexcept {
    if (slots_ == nullptr) return 0;
    const std::uint64_t hash = hashOf(key);
    const std::size_t place = lowerBound(hash, key);
    const Slot& slot = slots_[place];
    return slot.holds(hash, key) ? place + 1 : place;
  }

  /// The next occupied place at or after this one, or `end_`.
  [[nodiscard]] std::size_t occupiedFrom(std::size_t place) const noexcept {
    if (slots_ == nullptr) return end_;
    std::size_t word = place / 64;
    std::uint64_t bits = bitmap()[word] & (~std::uint64_t{0} << (place % 64));
    const std::size_t last = words(end_);
    while (bits == 0) {
      if (++word >= last) return end_;
      bits = bitmap()[word];
    }
    return word * 64 + static_cast<std::size_t>(std::countr_zero(bits));
  }

  /// Makes the place free by shifting the rest of its run to the right. False when the run would leave the table.
  [[nodiscard]] bool makeRoom(std::size_t place) noexcept {
    std::size_t gap = place;
    while (!slots_[gap].isFree()) ++gap;
    if (gap == end_) return false;
    detail::relocate(slots_ + place + 1, slots_ + place, gap - place);
    bitmap()[gap / 64] |= std::uint64_t{1} << (gap % 64);
    return true;
  }

  /// Closes the gap at this place by shifting back the members behind it that are not in their bucket.
  void closeGap(std::size_t place) noexcept {
    std::size_t last = place + 1;
    while (!slots_[last].isFree() && bucketOf(slots_[last].hash()) < last) ++last;
    detail::relocate(slots_ + place, slots_ + place + 1, last - place - 1);
    slots_[last - 1].setFree();
    bitmap()[(last - 1) / 64] &= ~(std::uint64_t{1} << ((last - 1) % 64));
  }

  void grow() {
    if (slots_ == nullptr) {
      rebuild(minBucketBits, 0);
    } else if (size_ >= limit()) {
      // With more buckets the members reach no further behind the last one than they do now.
      rebuild(bucketBits() + 1, room());
    } else {
      // A run has reached the end before the table is full: the last buckets are crowded and get more room.
      rebuild(bucketBits(), 2 * room());
    }
  }

  /// The places behind the last bucket.
  [[nodiscard]] std::size_t room() const noexcept { return end_ - (std::size_t{1} << bucketBits()); }

  /// Moves all members into a table of this many buckets, with at least `room` places behind the last one.
  void rebuild(std::uint32_t bits, std::size_t room) {
    const std::size_t buckets = std::size_t{1} << bits;
    const std::size_t newEnd = buckets + std::max({room, std::size_t{3}, buckets / 16});
    auto* const newSlots = static_cast<Slot*>(::operator new(bytes(newEnd)));
    auto* const newBitmap = reinterpret_cast<std::uint64_t*>(newSlots + newEnd + 1);
    std::fill_n(newBitmap, words(newEnd), 0);
    std::uninitialized_default_construct_n(newSlots, newEnd + 1);
    if (slots_ == nullptr) Seed::tableMade();
    std::size_t next = 0;
    for (std::size_t word = 0; word * 64 < end_; ++word) {
      for (std::uint64_t rest = bitmap()[word]; rest != 0; rest &= rest - 1) {
        Slot* const slot = slots_ + word * 64 + std::countr_zero(rest);
        next = std::max<std::size_t>(next, slot->hash() >> (64 - bits));
        detail::relocate(newSlots + next, slot, 1);
        newBitmap[next / 64] |= std::uint64_t{1} << (next % 64);
        ++next;
      }
    }
    ::operator delete(std::exchange(slots_, newSlots));
    end_ = static_cast<std::uint32_t>(newEnd);
    shift_ = 64 - bits;
    ++version_;
  }

  Slot* slots_ = nullptr;
  std::uint32_t end_ = 0;
  std::uint32_t size_ = 0;
  std::uint32_t version_ = 0;
  std::uint32_t shift_ = 64 - minBucketBits;
};

/// A position in a pass: a key, with the place where it was last found.
template <class K, class V, class Seed>
class HashMap<K, V, Seed>::Iterator {
 public:
  using value_type = Member<K, const V>;
  using difference_type = std::ptrdiff_t;

  [[nodiscard]] explicit operator bool() const noexcept { return slot_ != nullptr; }
  [[nodiscard]] friend bool operator==(const Iterator& i, std::default_sentinel_t) noexcept { return !i; }

  [[nodiscard]] KeyView<K> key() const noexcept { return key_.key(); }
  /// The member's value; only while `currNodeMaybeStale()` is false.
  [[nodiscard]] const V& value() const noexcept { return *slot_->value(); }
  [[nodiscard]] Member<K, const V> operator*() const noexcept { return {key(), value()}; }

  /// True when the map has changed since the iterator came here, so that the member may be gone.
  [[nodiscard]] bool currNodeMaybeStale() const noexcept { return version_ != map_->version_; }

  /// Goes on to the next member in the order of the pass, as the map is now.
  void advance() noexcept {
    if (currNodeMaybeStale()) [[unlikely]] {
      start(map_->placeAfter(key_.key()));
    } else {
      next();
    }
  }
  Iterator& operator++() noexcept {
    advance();
    return *this;
  }
  void operator++(int) noexcept { advance(); }

 private:
  friend HashMap;

  Iterator(const HashMap& map, std::size_t place) noexcept : map_(&map) { start(place); }

  /// Comes to the first member at or after this place.
  void start(std::size_t place) noexcept {
    version_ = map_->version_;
    word_ = place / 64;
    rest_ = 0;
    if (map_->slots_ != nullptr && place < map_->end_) {
      rest_ = map_->bitmap()[word_] & (~std::uint64_t{0} << (place % 64));
    }
    next();
  }

  /// Comes to the next member that `rest_` or a later word of the bitmap tells.
  void next() noexcept {
    if (rest_ == 0) {
      const std::size_t words = map_->slots_ == nullptr ? 0 : HashMap::words(map_->end_);
      do {
        if (++word_ >= words) {
          slot_ = nullptr;
          return;
        }
        rest_ = map_->bitmap()[word_];
      } while (rest_ == 0);
    }
    slot_ = map_->slots_ + word_ * 64 + static_cast<std::size_t>(std::countr_zero(rest_));
    rest_ &= rest_ - 1;
    key_.keyIs(*slot_);
  }

  /// The key, as a hash where that tells it, so that a pass that does not ask for keys does not compute them.
  class BijectiveKey {
   public:
    [[nodiscard]] K key() const noexcept { return Traits::fromBits(Seed::value().bits(hash_)); }
    void keyIs(const Slot& slot) noexcept { hash_ = slot.hash(); }

   private:
    std::uint64_t hash_ = 0;
  };
  class CopiedKey {
   public:
    [[nodiscard]] const K& key() const noexcept { return *key_; }
    void keyIs(const Slot& slot) noexcept { key_ = slot.key(); }

   private:
    std::optional<K> key_;
  };

  const HashMap* map_;
  const Slot* slot_ = nullptr;
  std::size_t word_ = 0;    // of the bitmap, with
  std::uint64_t rest_ = 0;  // its bits behind the position
  std::conditional_t<Traits::isBijective, BijectiveKey, CopiedKey> key_;
  std::uint32_t version_ = 0;
};

}  // namespace Mox
