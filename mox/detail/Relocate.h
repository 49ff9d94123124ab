// Moving values to another place in raw storage, as containers do when they grow or close a gap.

#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "mox/Ptr.h"
#include "mox/String.h"

namespace Mox::detail {

/// Whether copying a value's bytes and forgetting the original is as good as moving it.
template <class T>
struct IsTriviallyRelocatable : std::is_trivially_copyable<T> {};
template <class T>
struct IsTriviallyRelocatable<Ptr<T>> : std::true_type {};
template <>
struct IsTriviallyRelocatable<String> : std::true_type {};

/// Moves `n` values from `from` to `to`, which may overlap. Afterwards the places of `from` outside `to` are raw.
template <class T>
void relocate(T* to, T* from, std::size_t n) noexcept {
  static_assert(std::is_nothrow_move_constructible_v<T>, "a failed move would lose members");
  if (n == 0 || to == from) return;
  if constexpr (IsTriviallyRelocatable<T>::value) {
    std::memmove(static_cast<void*>(to), static_cast<const void*>(from), n * sizeof(T));
  } else if (to < from) {
    for (std::size_t i = 0; i < n; ++i) {
      new (to + i) T(std::move(from[i]));
      from[i].~T();
    }
  } else {
    for (std::size_t i = n; i-- > 0;) {
      new (to + i) T(std::move(from[i]));
      from[i].~T();
    }
  }
}

/// Takes a value out of its place, which is raw afterwards.
template <class T>
[[nodiscard]] T takeOut(T* place) noexcept {
  T value(std::move(*place));
  place->~T();
  return value;
}

}  // namespace Mox::detail
