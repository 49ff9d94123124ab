// VLAN identifiers.
//
// IEEE 802.1Q-2018, 9.6: a VLAN identifier (VID) is 12 bits wide; 0 is the null VID, which names no VLAN, and 4095 is
// reserved. TopoLib uses 1 to 4094 (Table 9-2 reserves 4095 for implementation use).
//
//   Bridging::VlanId vid = 10;                          // 0 and 4095 raise RangeException
//   Bridging::VlanIdOrNone expanded = 0;                // none; 4095 raises RangeException
//   if (!expanded.isNone()) use(Bridging::VlanId(expanded));

#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string_view>
#include <utility>

#include "mox/Exception.h"
#include "mox/Hash.h"
#include "mox/Public.h"

namespace Bridging {

/// Whole numbers, as opposed to truth values and characters.
template <class T>
concept Number = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char>;

class VlanIdOrNone;

/// A VLAN: a number from 1 to 4094.
class VlanId {
 public:
  static constexpr std::uint16_t min = 1;
  static constexpr std::uint16_t max = 4094;

  /// Any other number raises RangeException, "VlanId::value < 1 or > 4094 not allowed".
  template <Number T>
  constexpr VlanId(T value) : value_(checked(value)) {}
  /// The VLAN that is named; none raises RangeException.
  constexpr explicit VlanId(VlanIdOrNone vid);

  [[nodiscard]] constexpr std::uint16_t value() const noexcept { return value_; }

  /// Parses a decimal number; a text that is not a number, or one out of range, raises RangeException.
  [[nodiscard]] MOX_PUBLIC static VlanId sequenceToValue(std::string_view text);

  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the zero that a comparison compares with for a pointer.
  [[nodiscard]] friend constexpr auto operator<=>(VlanId, VlanId) noexcept = default;
  friend std::ostream& operator<<(std::ostream& out, VlanId vid) { return out << vid.value_; }

 private:
  template <Number T>
  [[nodiscard]] static constexpr std::uint16_t checked(T value) {
    if (std::cmp_less(value, min) || std::cmp_greater(value, max)) {
      Mox::throwRangeException("VlanId::value < 1 or > 4094 not allowed");
    }
    return static_cast<std::uint16_t>(value);
  }

  std::uint16_t value_;
};

/// A VLAN, or none: a number from 0 to 4094.
class VlanIdOrNone {
 public:
  /// None.
  constexpr VlanIdOrNone() noexcept = default;
  /// Any other number raises RangeException, "VlanIdOrNone::value > 4094 not allowed".
  template <Number T>
  constexpr VlanIdOrNone(T value) : value_(checked(value)) {}
  constexpr VlanIdOrNone(VlanId vid) noexcept : value_(vid.value()) {}

  [[nodiscard]] constexpr std::uint16_t value() const noexcept { return value_; }
  [[nodiscard]] constexpr bool isNone() const noexcept { return value_ == 0; }

  /// Parses a decimal number; a text that is not a number, or one out of range, raises RangeException.
  [[nodiscard]] MOX_PUBLIC static VlanIdOrNone sequenceToValue(std::string_view text);

  // NOLINTNEXTLINE(modernize-use-nullptr): the 0 with which a rewritten comparison compares
  [[nodiscard]] friend constexpr auto operator<=>(VlanIdOrNone, VlanIdOrNone) noexcept = default;
  friend std::ostream& operator<<(std::ostream& out, VlanIdOrNone vid) { return out << vid.value_; }

 private:
  template <Number T>
  [[nodiscard]] static constexpr std::uint16_t checked(T value) {
    if (std::cmp_less(value, 0) || std::cmp_greater(value, VlanId::max)) {
      Mox::throwRangeException("VlanIdOrNone::value > 4094 not allowed");
    }
    return static_cast<std::uint16_t>(value);
  }

  std::uint16_t value_ = 0;
};

constexpr VlanId::VlanId(VlanIdOrNone vid) : VlanId(vid.value()) {}

}  // namespace Bridging

template <>
struct Mox::KeyTraits<Bridging::VlanId> {
  static constexpr bool isBijective = true;
  [[nodiscard]] static std::uint64_t toBits(Bridging::VlanId vid) noexcept { return vid.value(); }
  [[nodiscard]] static Bridging::VlanId fromBits(std::uint64_t bits) { return static_cast<std::uint16_t>(bits); }
  [[nodiscard]] static std::uint16_t toId(Bridging::VlanId vid) noexcept { return vid.value(); }
  [[nodiscard]] static Bridging::VlanId fromId(std::uint16_t id) { return id; }
};

template <>
struct std::hash<Bridging::VlanId> {
  std::size_t operator()(Bridging::VlanId vid) const noexcept { return vid.value(); }
};
