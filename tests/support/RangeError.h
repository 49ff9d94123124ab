// What an action raises for a value out of range.

#pragma once

#include <string>

#include "mox/Exception.h"

namespace Test {

/// The text of the RangeException that the action raises.
[[nodiscard]] std::string rangeErrorOf(const auto& action) {
  try {
    static_cast<void>(action());
  } catch (const Mox::RangeException& e) {
    return e.what();
  }
  return "no exception";
}

}  // namespace Test
