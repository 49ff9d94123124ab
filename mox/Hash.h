// How keys are hashed, and in which order collections therefore iterate.
//
// A collection iterates in ascending order of (hash, key), whatever its size and history. A hash is made from the key's
// bits and a seed: the process-wide `hashSeed32` as a rule, or a seed of the collection type's own (`FixedSeed`). Seeds
// only change the order. Where the bits are the whole key (VLAN ids, interface ids), hashing is a bijection: equal
// hashes mean equal keys, and the key can be computed from the hash.
//
// A key type says how it is hashed by specialising `KeyTraits`:
//
//   template <> struct Mox::KeyTraits<RoomNumber> {
//     static constexpr bool isBijective = true;
//     static std::uint64_t toBits(RoomNumber n) { return n.value(); }          // never all ones
//     static RoomNumber fromBits(std::uint64_t bits) { return RoomNumber(bits); }
//   };
//
// A type whose bits do not determine it has `isBijective = false`, no `fromBits`, and needs == and <.

#pragma once

#include <cstddef>
#include <cstdint>

#include "mox/Public.h"
#include "mox/String.h"

namespace Mox {

namespace detail {

inline constexpr std::uint64_t mixFactor1 = 0x9E37'79B9'7F4A'7C15;
inline constexpr std::uint64_t mixFactor2 = 0xD6E8'FEB8'6659'FD93;

/// The multiplicative inverse of an odd number modulo 2^64, by Newton's iteration.
[[nodiscard]] constexpr std::uint64_t inverse(std::uint64_t odd) noexcept {
  std::uint64_t x = odd;
  for (int i = 0; i < 5; ++i) x *= 2 - odd * x;
  return x;
}

/// Spreads all bits into the upper ones, which choose the place in a table. A bijection; `unmix` is its inverse.
[[nodiscard]] constexpr std::uint64_t mix(std::uint64_t x) noexcept {
  x *= mixFactor1;
  x ^= x >> 32;
  return x * mixFactor2;
}
[[nodiscard]] constexpr std::uint64_t unmix(std::uint64_t x) noexcept {
  x *= inverse(mixFactor2);
  x ^= x >> 32;
  return x * inverse(mixFactor1);
}

}  // namespace detail

/// A seed, prepared: `salt` enters before mixing, `mask` after it, so that all ones always hash to all ones. Since no
/// key has these bits, no member has that hash, and tables mark their free places with it.
struct HashSeed {
  constexpr explicit HashSeed(std::uint32_t seed) noexcept
      : salt(seed * detail::mixFactor1), mask(~detail::mix(~salt)) {}

  [[nodiscard]] constexpr std::uint64_t hash(std::uint64_t bits) const noexcept {
    return detail::mix(bits ^ salt) ^ mask;
  }
  [[nodiscard]] constexpr std::uint64_t bits(std::uint64_t hash) const noexcept {
    return detail::unmix(hash ^ mask) ^ salt;
  }

  std::uint64_t salt;
  std::uint64_t mask;
};

namespace detail {
MOX_PUBLIC extern HashSeed processSeed;
/// How many tables hold hashes that were made with it.
MOX_PUBLIC extern std::size_t processSeedTables;
}  // namespace detail

/// The process-wide seed, and its setting: only while no collection that is hashed with it has a member, since tables
/// keep the hashes that they were filled with; else another one raises RangeException.
[[nodiscard]] MOX_PUBLIC std::uint32_t hashSeed32() noexcept;
MOX_PUBLIC void hashSeed32Is(std::uint32_t seed);

/// Seeds of collection types. Each is told of the tables that are made with it and given back.
struct ProcessSeed {
  [[nodiscard]] static const HashSeed& value() noexcept { return detail::processSeed; }
  static void tableMade() noexcept { ++detail::processSeedTables; }
  static void tableGone() noexcept { --detail::processSeedTables; }
};

template <std::uint32_t seed>
struct FixedSeed {
  [[nodiscard]] static constexpr HashSeed value() noexcept { return HashSeed(seed); }
  static constexpr void tableMade() noexcept {}
  static constexpr void tableGone() noexcept {}
};

template <class Key>
struct KeyTraits;

template <>
struct KeyTraits<String> {
  static constexpr bool isBijective = false;
  [[nodiscard]] static std::uint64_t toBits(const String& key) noexcept { return key.hash(); }
};

/// The order of keys: that of the bytes for strings, numeric for VLAN ids, natural for interface ids.
template <class Key>
[[nodiscard]] bool keyLessThan(const Key& a, const Key& b) {
  return a < b;
}

}  // namespace Mox
