// Hides from the compiler what a pointer points to.

#pragma once

namespace Mox::detail {

/// Returns the pointer. GCC else looks through a notification into a reactor on some other class, whose attribute has the
/// same id, and warns (-Warray-bounds) of a key of the wrong type in a branch that never runs.
[[nodiscard]] inline const void* opaque(const void* pointer) noexcept {
  __asm__("" : "+r"(pointer));
  return pointer;
}

}  // namespace Mox::detail
