#include "bench/Allocations.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace {

struct Counter {
  bool isOn = false;
  std::uint64_t allocations = 0;
  std::int64_t bytes = 0;
};

constinit Counter counter;

std::int64_t bytesOf(void* block) noexcept {
  return static_cast<std::int64_t>(malloc_usable_size(block) + sizeof(std::size_t));
}

void* counted(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  if (counter.isOn) [[unlikely]] {
    ++counter.allocations;
    counter.bytes += bytesOf(block);
  }
  return block;
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc): this is what everybody else has instead.
void release(void* block) noexcept {
  if (counter.isOn && block != nullptr) [[unlikely]]
    counter.bytes -= bytesOf(block);
  std::free(block);
}

}  // namespace

// The forms for arrays end up here as well.
void* operator new(std::size_t size) { return counted(std::malloc(size != 0 ? size : 1)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto boundary = static_cast<std::size_t>(alignment);
  return counted(std::aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary));
}
void operator delete(void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { release(block); }
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept { release(block); }
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept { release(block); }
// NOLINTEND(cppcoreguidelines-no-malloc)

namespace Bench {

Allocations::Allocations() noexcept { counter = {true, 0, 0}; }
Allocations::~Allocations() { counter.isOn = false; }

// NOLINTBEGIN(readability-convert-member-functions-to-static): the counter is on while there is an object.
std::uint64_t Allocations::count() const noexcept { return counter.allocations; }
std::int64_t Allocations::bytes() const noexcept { return counter.bytes; }
// NOLINTEND(readability-convert-member-functions-to-static)

}  // namespace Bench
