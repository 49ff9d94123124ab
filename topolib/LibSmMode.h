// What makes a topology present while an instance status is watched.

#pragma once

#include <array>
#include <cstdint>

#include "mox/Enum.h"

namespace Topology::Library {

enum class LibSmMode : std::uint32_t {
  createStatus = 0,  // the configuration alone
  notifyStatus = 1   // the configuration together with the topology's status
};

constexpr auto moxEnumValues(LibSmMode) {
  return std::array{Mox::enumValue(LibSmMode::createStatus, "createStatus"),
                    Mox::enumValue(LibSmMode::notifyStatus, "notifyStatus")};
}

/// A mode by number or by name, as configuration gives it.
using LibSmModeInstance = Mox::EnumInstance<LibSmMode>;

using Mox::operator<<;
using Mox::stringValue;
using Mox::valueToStrep;

}  // namespace Topology::Library
