// Keys for the tests of the maps.

#pragma once

#include <cstdint>
#include <limits>
#include <ostream>

#include "mox/Hash.h"

namespace Test {

/// A key that is its 64 bits, so that the hash tells it.
struct Number {
  std::uint64_t value = 0;

  friend bool operator==(Number, Number) = default;
  friend bool operator<(Number a, Number b) { return a.value < b.value; }
  friend std::ostream& operator<<(std::ostream& out, Number n) { return out << n.value; }
};

/// A key whose hash does not tell it: `Bits` says what is hashed of its number.
template <class Bits>
struct Loose {
  std::uint32_t value = 0;

  friend bool operator==(Loose, Loose) = default;
  friend bool operator<(Loose a, Loose b) { return a.value < b.value; }
  friend std::ostream& operator<<(std::ostream& out, Loose n) { return out << n.value; }
};

struct SameBits {
  static std::uint64_t of(std::uint32_t /*value*/) { return 4711; }
};
/// Those bits that hash to the hash of a free place.
struct GreatestBits {
  static std::uint64_t of(std::uint32_t /*value*/) { return std::numeric_limits<std::uint64_t>::max(); }
};
struct FewBits {
  static std::uint64_t of(std::uint32_t value) { return value % 13; }
};

/// All hashes are equal.
using Tied = Loose<SameBits>;
/// All hashes are equal, and the greatest.
using TiedLast = Loose<GreatestBits>;
/// The keys share a few hashes.
using Grouped = Loose<FewBits>;

/// A number below 4096.
struct SmallId {
  std::uint16_t value = 0;

  friend bool operator==(SmallId, SmallId) = default;
  friend bool operator<(SmallId a, SmallId b) { return a.value < b.value; }
  friend std::ostream& operator<<(std::ostream& out, SmallId id) { return out << id.value; }
};

}  // namespace Test

template <>
struct Mox::KeyTraits<Test::Number> {
  static constexpr bool isBijective = true;
  static std::uint64_t toBits(Test::Number key) noexcept { return key.value; }
  static Test::Number fromBits(std::uint64_t bits) noexcept { return {bits}; }
};

template <class Bits>
struct Mox::KeyTraits<Test::Loose<Bits>> {
  static constexpr bool isBijective = false;
  static std::uint64_t toBits(Test::Loose<Bits> key) noexcept { return Bits::of(key.value); }
};

template <>
struct Mox::KeyTraits<Test::SmallId> {
  static constexpr bool isBijective = true;
  static std::uint64_t toBits(Test::SmallId key) noexcept { return key.value; }
  static Test::SmallId fromBits(std::uint64_t bits) noexcept { return {static_cast<std::uint16_t>(bits)}; }
  static std::uint16_t toId(Test::SmallId key) noexcept { return key.value; }
  static Test::SmallId fromId(std::uint16_t id) noexcept { return {id}; }
};
