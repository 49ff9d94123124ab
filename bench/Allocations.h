// Counts what is allocated while a benchmark asks for it.
//
//   const Bench::Allocations allocations;
//   ...
//   allocations.count();      // calls of operator new since then
//   allocations.bytes();      // bytes in use more than then
//
// The bytes are those that the C library set aside: the usable size of each block and the eight bytes in front of it.
// One counter at a time; while there is none, an allocation costs a test more than usual.

#pragma once

#include <cstddef>
#include <cstdint>

namespace Bench {

class Allocations {
 public:
  Allocations() noexcept;
  Allocations(const Allocations&) = delete;
  Allocations& operator=(const Allocations&) = delete;
  ~Allocations();

  [[nodiscard]] std::uint64_t count() const noexcept;
  [[nodiscard]] std::int64_t bytes() const noexcept;
};

}  // namespace Bench
