// How a port takes part in a VLAN.

#pragma once

#include <array>
#include <cstdint>

#include "mox/Enum.h"

namespace Bridging {

/// In which direction a port may carry frames of a VLAN.
enum class AllowedTrafficDirection : std::uint32_t { both = 0, ingress = 1, egress = 2, none = 3 };

constexpr auto moxEnumValues(AllowedTrafficDirection) {
  return std::array{Mox::enumValue(AllowedTrafficDirection::both, "both"),
                    Mox::enumValue(AllowedTrafficDirection::ingress, "ingress"),
                    Mox::enumValue(AllowedTrafficDirection::egress, "egress"),
                    Mox::enumValue(AllowedTrafficDirection::none, "none")};
}
using AllowedTrafficDirectionInstance = Mox::EnumInstance<AllowedTrafficDirection>;

/// The configuration of a member port of a VLAN. A value: copied and compared.
///
/// IEEE 802.1Q-2018, 8.8.2: a static VLAN registration entry makes a port a member of a VLAN and says whether frames of
/// the VLAN leave it untagged. 6.9: the PVID is the VLAN of frames that arrive untagged.
class VlanPortConfig {
 public:
  /// Both directions, tagged, not the PVID.
  constexpr VlanPortConfig() noexcept = default;
  constexpr explicit VlanPortConfig(AllowedTrafficDirection direction, bool untagged = false,
                                    bool pvid = false) noexcept
      : allowedTrafficDirection_(direction), untagged_(untagged), pvid_(pvid) {}

  [[nodiscard]] constexpr AllowedTrafficDirection allowedTrafficDirection() const noexcept {
    return allowedTrafficDirection_;
  }
  constexpr void allowedTrafficDirectionIs(AllowedTrafficDirection v) noexcept { allowedTrafficDirection_ = v; }
  [[nodiscard]] constexpr bool untagged() const noexcept { return untagged_; }
  constexpr void untaggedIs(bool v) noexcept { untagged_ = v; }
  [[nodiscard]] constexpr bool pvid() const noexcept { return pvid_; }
  constexpr void pvidIs(bool v) noexcept { pvid_ = v; }

  [[nodiscard]] friend constexpr bool operator==(const VlanPortConfig&, const VlanPortConfig&) noexcept = default;

 private:
  AllowedTrafficDirection allowedTrafficDirection_ = AllowedTrafficDirection::both;
  bool untagged_ = false;
  bool pvid_ = false;
};

using Mox::operator<<;
using Mox::stringValue;
using Mox::valueToStrep;

}  // namespace Bridging
