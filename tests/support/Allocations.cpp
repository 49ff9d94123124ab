#include "tests/support/Allocations.h"

#include <dlfcn.h>

#include <new>
#include <unordered_map>
#include <utility>

namespace Test {

struct AllocationBooks {
  std::unordered_map<void*, std::size_t> sizes;
  std::size_t made = 0;
  std::size_t bytes = 0;
};

namespace {

AllocationBooks* openBooks = nullptr;
bool isFailing = false;
std::size_t sparedAllocations = 0;

/// Keeps what the books themselves allocate from being booked, and from failing.
class BooksAside {
 public:
  BooksAside() : books(std::exchange(openBooks, nullptr)), wasFailing_(std::exchange(isFailing, false)) {}
  BooksAside(const BooksAside&) = delete;
  BooksAside& operator=(const BooksAside&) = delete;
  ~BooksAside() {
    openBooks = books;
    isFailing = wasFailing_;
  }

  AllocationBooks* const books;

 private:
  bool wasFailing_;
};

void allocated(void* block, std::size_t size) {
  const BooksAside aside;
  aside.books->sizes[block] = size;
  aside.books->bytes += size;
  ++aside.books->made;
}

void freed(void* block) noexcept {
  const BooksAside aside;
  const auto found = aside.books->sizes.find(block);
  if (found == aside.books->sizes.end()) return;
  aside.books->bytes -= found->second;
  aside.books->sizes.erase(found);
}

/// The operator that is replaced: that of a sanitizer, which checks more, or that of the standard library.
template <class Operator>
Operator* replaced(const char* name) {
  return reinterpret_cast<Operator*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

AllocationCount::AllocationCount() : books_(std::make_unique<AllocationBooks>()) { openBooks = books_.get(); }
AllocationCount::~AllocationCount() { openBooks = nullptr; }
std::size_t AllocationCount::made() const { return books_->made; }
std::size_t AllocationCount::bytes() const { return books_->bytes; }

FailingAllocations::FailingAllocations(std::size_t spared) {
  sparedAllocations = spared;
  isFailing = true;
}
FailingAllocations::~FailingAllocations() { isFailing = false; }

}  // namespace Test

void* operator new(std::size_t size) {
  if (Test::isFailing) {
    if (Test::sparedAllocations == 0) throw std::bad_alloc();
    --Test::sparedAllocations;
  }
  static auto* const next = Test::replaced<void*(std::size_t)>("_Znwm");
  void* const block = next(size);
  if (Test::openBooks != nullptr) Test::allocated(block, size);
  return block;
}

void operator delete(void* block) noexcept {
  static auto* const next = Test::replaced<void(void*)>("_ZdlPv");
  if (Test::openBooks != nullptr) Test::freed(block);
  next(block);
}

void operator delete(void* block, std::size_t size) noexcept {
  static auto* const next = Test::replaced<void(void*, std::size_t)>("_ZdlPvm");
  if (Test::openBooks != nullptr) Test::freed(block);
  next(block, size);
}
