// A place of a hash map's table: the hash, the key where the hash does not tell it, and the value.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

#include "mox/Hash.h"
#include "mox/detail/Relocate.h"

namespace Mox::detail {

/// The hash of a free slot. No key has it, and it is the greatest.
inline constexpr std::uint64_t freeHash = std::numeric_limits<std::uint64_t>::max();

/// The key is stored where the hash cannot be turned back into it.
template <class K, bool isStored>
struct StoredKey {
  explicit StoredKey(const K& /*key*/) noexcept {}
};
template <class K>
struct StoredKey<K, true> {
  explicit StoredKey(K k) noexcept : key(std::move(k)) {}
  K key;
};

template <class K, class V>
struct SlotContent {
  SlotContent(const K& k, V v) noexcept : key(k), value(std::move(v)) {}

  [[no_unique_address]] StoredKey<K, !KeyTraits<K>::isBijective> key;
  V value;
};

template <class K, class V>
struct IsTriviallyRelocatable<SlotContent<K, V>> {
  static constexpr bool value =
      IsTriviallyRelocatable<V>::value && (KeyTraits<K>::isBijective || IsTriviallyRelocatable<K>::value);
};

/// Raw storage with a hash; the content lives only while the slot is not free.
template <class K, class V>
class Slot {
  using Content = SlotContent<K, V>;
  static_assert(alignof(Content) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

 public:
  /// A free slot.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the storage is raw.
  Slot() noexcept : hash_(freeHash) {}
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the storage is raw.
  Slot(std::uint64_t hash, const K& key, V value) noexcept : hash_(hash) {
    new (storage_.data()) Content(key, std::move(value));
  }
  /// A slot moves as relocate() does it: to raw storage, leaving raw storage behind.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the storage is raw.
  Slot(Slot&& other) noexcept : hash_(other.hash_) {
    relocate(reinterpret_cast<Content*>(storage_.data()), other.content(), 1);
  }
  Slot& operator=(Slot&&) = delete;

  [[nodiscard]] std::uint64_t hash() const noexcept { return hash_; }
  [[nodiscard]] bool isFree() const noexcept { return hash_ == freeHash; }
  /// Whether this is the slot of the key, which has this hash.
  [[nodiscard]] bool holds(std::uint64_t hash, const K& key) const noexcept {
    if constexpr (KeyTraits<K>::isBijective) {
      return hash_ == hash;
    } else {
      return hash_ == hash && this->key() == key;
    }
  }
  void setFree() noexcept { hash_ = freeHash; }
  void destroy() noexcept {
    content()->~Content();
    setFree();
  }

  [[nodiscard]] const K& key() const noexcept { return content()->key.key; }
  [[nodiscard]] V* value() noexcept { return &content()->value; }
  [[nodiscard]] const V* value() const noexcept { return &content()->value; }

 private:
  [[nodiscard]] Content* content() noexcept { return std::launder(reinterpret_cast<Content*>(storage_.data())); }
  [[nodiscard]] const Content* content() const noexcept {
    return std::launder(reinterpret_cast<const Content*>(storage_.data()));
  }

  std::uint64_t hash_;
  alignas(Content) std::array<std::byte, sizeof(Content)> storage_;
};

/// A slot is as relocatable as its content; moving one leaves the bytes of the old place without content.
template <class K, class V>
struct IsTriviallyRelocatable<Slot<K, V>> : IsTriviallyRelocatable<SlotContent<K, V>> {};

}  // namespace Mox::detail
