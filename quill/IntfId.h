// Interface identifiers.
//
// Overview
//   An `IntfId` is two 32-bit words that stand for an interface name. It is built from any name and printed as that name.
//   A name of a known form is encoded in the words; any other name is interned, process-wide and for good. So equality
//   and hashing never look at text.
//
// Usage
//   Quill::IntfId intf("Ethernet1/2");
//   if (Quill::EthIntfId::isEthIntfId(intf)) std::cout << intf;          // Ethernet1/2
//   std::map<Quill::IntfId, ...>                                         // Ethernet2 before Ethernet10
//
// Kinds, by name; a name has exactly one
//   sub-interface      any name with a suffix .<n>, whatever its parent
//   Ethernet           Ethernet<n>, Ethernet<n>/<n>, Ethernet<n>/<n>/<n>, eth<n>, swp<n>, swp<n>s<n>, en...
//   port channel       PortChannel<n>, bond<n>, team<n>
//   CPU                Cpu
//   VXLAN tunnel       VxlanTunnel<n>, vxlan<n>
//   MPLS trunk         MplsTrunk<n>, mpls<n>
//   none of these      everything else, such as Vlan<n> and Loopback<n>
//   The empty id, built from "", is of no kind. Where a VLAN and an interface are passed together it means the whole VLAN.
//
// Order is natural: runs of digits compare by their number, everything else by byte; names that differ only in leading
// zeros compare by byte.
//
// Cost: copying, comparing for equality and hashing are those of a 64-bit number; building parses the name; ordering two
// ids of different forms compares their names. Build ids on the activity thread.

#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string_view>

#include "mox/Hash.h"
#include "mox/Public.h"
#include "mox/String.h"

namespace Quill {

/// What an interface is, by its name.
enum class IntfKind : std::uint8_t { none, other, ethernet, portChannel, subIntf, cpu, vxlanTunnel, mplsTrunk };

class MOX_PUBLIC IntfId {
 public:
  /// The empty id.
  constexpr IntfId() noexcept = default;
  /// The id of this name.
  template <Mox::TextLike T>
  IntfId(const T& name) : IntfId(parse(name)) {}
  IntfId(const Mox::String& name) : IntfId(parse(name.view())) {}

  /// The two words: the first tells kind and form, the second the numbers or the place among the interned names.
  [[nodiscard]] constexpr std::uint32_t word0() const noexcept { return word0_; }
  [[nodiscard]] constexpr std::uint32_t word1() const noexcept { return word1_; }
  [[nodiscard]] constexpr std::uint64_t bits() const noexcept { return std::uint64_t{word0_} << 32 | word1_; }
  /// The id with these bits; those that no name has given raise RangeException.
  [[nodiscard]] static IntfId fromBits(std::uint64_t bits);

  [[nodiscard]] constexpr bool empty() const noexcept { return bits() == 0; }
  [[nodiscard]] constexpr IntfKind kind() const noexcept { return static_cast<IntfKind>(word0_ >> kindShift); }
  /// A hash under the process-wide seed.
  [[nodiscard]] std::uint64_t hash() const noexcept { return Mox::ProcessSeed::value().hash(bits()); }
  /// The interface name.
  [[nodiscard]] Mox::String stringValue() const;

  [[nodiscard]] friend constexpr bool operator==(IntfId, IntfId) noexcept = default;
  [[nodiscard]] friend std::strong_ordering operator<=>(IntfId a, IntfId b) { return a.compare(b); }
  friend MOX_PUBLIC std::ostream& operator<<(std::ostream& out, IntfId intf);

 private:
  friend Mox::KeyTraits<IntfId>;
  static constexpr unsigned kindShift = 28;

  constexpr IntfId(std::uint32_t word0, std::uint32_t word1) noexcept : word1_(word1), word0_(word0) {}
  [[nodiscard]] static IntfId parse(std::string_view name);
  [[nodiscard]] std::strong_ordering compare(IntfId other) const;

  // In this order the bits are the two words as they stand in the memory of a little-endian machine.
  std::uint32_t word1_ = 0;
  std::uint32_t word0_ = 0;
};

struct EthIntfId {
  [[nodiscard]] static constexpr bool isEthIntfId(IntfId i) noexcept { return i.kind() == IntfKind::ethernet; }
};
struct PortChannelIntfId {
  [[nodiscard]] static constexpr bool isPortChannelIntfId(IntfId i) noexcept {
    return i.kind() == IntfKind::portChannel;
  }
};
struct SubIntfId {
  [[nodiscard]] static constexpr bool isSubIntfId(IntfId i) noexcept { return i.kind() == IntfKind::subIntf; }
};
struct CpuIntfId {
  [[nodiscard]] static constexpr bool isCpuIntfId(IntfId i) noexcept { return i.kind() == IntfKind::cpu; }
};
struct VxlanTunnelIntfId {
  [[nodiscard]] static constexpr bool isVxlanTunnelIntfId(IntfId i) noexcept {
    return i.kind() == IntfKind::vxlanTunnel;
  }
};
struct MplsTrunkIntfId {
  [[nodiscard]] static constexpr bool isMplsTrunkIntfId(IntfId i) noexcept { return i.kind() == IntfKind::mplsTrunk; }
};

}  // namespace Quill

template <>
struct Mox::KeyTraits<Quill::IntfId> {
  static constexpr bool isBijective = true;
  [[nodiscard]] static std::uint64_t toBits(Quill::IntfId intf) noexcept { return intf.bits(); }
  /// Of bits that were an id's.
  [[nodiscard]] static Quill::IntfId fromBits(std::uint64_t bits) noexcept {
    return {static_cast<std::uint32_t>(bits >> 32), static_cast<std::uint32_t>(bits)};
  }
};

template <>
struct std::hash<Quill::IntfId> {
  std::size_t operator()(Quill::IntfId intf) const noexcept { return intf.hash(); }
};
