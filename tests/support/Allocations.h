// What a test sees of the memory that is allocated with `operator new`, and how it lets allocations fail.
//
// The test programs replace `operator new` and `operator delete` by ones that pass everything on, as long as neither
// class below has an object. One thread only, and one object of a class at a time.

#pragma once

#include <cstddef>
#include <memory>

namespace Test {

struct AllocationBooks;

/// Counts what is allocated and freed while it lives.
class AllocationCount {
 public:
  AllocationCount();
  AllocationCount(const AllocationCount&) = delete;
  AllocationCount& operator=(const AllocationCount&) = delete;
  ~AllocationCount();

  /// How many allocations there were.
  [[nodiscard]] std::size_t made() const;
  /// The bytes that were asked for and are not freed yet.
  [[nodiscard]] std::size_t bytes() const;

 private:
  std::unique_ptr<AllocationBooks> books_;
};

/// Lets allocations throw std::bad_alloc while it lives: all after the first `spared` ones.
class FailingAllocations {
 public:
  explicit FailingAllocations(std::size_t spared = 0);
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
  ~FailingAllocations();
};

}  // namespace Test
