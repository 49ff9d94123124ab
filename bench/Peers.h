// The maps of others, as contenders of MapJobs.h.

#pragma once

#include <absl/container/flat_hash_map.h>

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace Bench {

inline constexpr const char* boostFlat = "boost::unordered_flat_map";
inline constexpr const char* abslFlat = "absl::flat_hash_map";
inline constexpr const char* stdUnordered = "std::unordered_map";

/// What a walk adds up for a member.
template <class V>
[[nodiscard]] std::uint64_t visit(std::uint64_t key, const V& value) noexcept {
  return key + reinterpret_cast<std::uintptr_t>(&value);
}

/// A map whose interface is that of std::unordered_map, with integers for keys. The hash is its own.
template <class M>
class Peer {
 public:
  using Key = typename M::key_type;
  using Value = typename M::mapped_type;

  template <class K>
  [[nodiscard]] static Key keyOf(const K& key) {
    if constexpr (requires { key.bits(); }) {
      return key.bits();
    } else {
      return key.value();
    }
  }

  [[nodiscard]] const Value* find(Key key) const {
    const auto found = map_.find(key);
    return found == map_.end() ? nullptr : &found->second;
  }
  void insert(Key key, Value&& value) { map_.emplace(key, std::move(value)); }
  void erase(Key key) { map_.erase(key); }
  [[nodiscard]] std::uint64_t walk() const {
    std::uint64_t sum = 0;
    for (const auto& member : map_) {
      if constexpr (requires { *member.second; }) {
        sum += visit(member.first, *member.second);
      } else {
        sum += visit(member.first, member.second);
      }
    }
    return sum;
  }

 private:
  M map_;
};

template <class K, class V>
using BoostFlat = Peer<boost::unordered_flat_map<K, V>>;
template <class K, class V>
using AbslFlat = Peer<absl::flat_hash_map<K, V>>;
template <class K, class V>
using StdUnordered = Peer<std::unordered_map<K, V>>;

}  // namespace Bench
