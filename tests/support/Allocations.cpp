#include "tests/support/Allocations.h"

#include <dlfcn.h>

#include <cstdlib>
#include <new>
#include <optional>
#include <unordered_map>

namespace Test {
namespace {

/// Memory for the books, which must not be booked itself.
template <class T>
struct UncountedAllocator {
  using value_type = T;

  UncountedAllocator() noexcept = default;
  template <class U>
  explicit UncountedAllocator(const UncountedAllocator<U>& /*other*/) noexcept {}
  [[nodiscard]] T* allocate(std::size_t n) { return static_cast<T*>(std::malloc(n * sizeof(T))); }
  void deallocate(T* p, std::size_t /*n*/) noexcept { std::free(p); }
  friend bool operator==(const UncountedAllocator&, const UncountedAllocator&) noexcept { return true; }
};

struct Books {
  std::unordered_map<void*, std::size_t, std::hash<void*>, std::equal_to<>,
                     UncountedAllocator<std::pair<void* const, std::size_t>>>
      sizes;
  std::size_t made = 0;
  std::size_t bytes = 0;
};

std::optional<Books> books;
bool isFailing = false;
std::size_t sparedAllocations = 0;

void allocated(void* block, std::size_t size) {
  if (!books) return;
  books->sizes[block] = size;
  books->bytes += size;
  ++books->made;
}

void freed(void* block) noexcept {
  if (!books) return;
  const auto found = books->sizes.find(block);
  if (found == books->sizes.end()) return;
  books->bytes -= found->second;
  books->sizes.erase(found);
}

/// The operator that is replaced: that of a sanitizer, which checks more, or that of the standard library.
template <class Operator>
Operator* replaced(const char* name) {
  return reinterpret_cast<Operator*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

AllocationCount::AllocationCount() { books.emplace(); }
AllocationCount::~AllocationCount() { books.reset(); }
std::size_t AllocationCount::made() const { return books->made; }
std::size_t AllocationCount::bytes() const { return books->bytes; }

FailingAllocations::FailingAllocations(std::size_t spared) {
  sparedAllocations = spared;
  isFailing = true;
}
FailingAllocations::~FailingAllocations() { isFailing = false; }

}  // namespace Test

void* operator new(std::size_t size) {
  if (Test::isFailing && Test::sparedAllocations-- == 0) {
    Test::sparedAllocations = 0;
    throw std::bad_alloc();
  }
  static auto* const next = Test::replaced<void*(std::size_t)>("_Znwm");
  void* const block = next(size);
  Test::allocated(block, size);
  return block;
}

void operator delete(void* block) noexcept {
  static auto* const next = Test::replaced<void(void*)>("_ZdlPv");
  Test::freed(block);
  next(block);
}

void operator delete(void* block, std::size_t size) noexcept {
  static auto* const next = Test::replaced<void(void*, std::size_t)>("_ZdlPvm");
  Test::freed(block);
  next(block, size);
}
