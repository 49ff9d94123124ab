// The large and dense form of an id map: pages of 64 ids, each with a bitmap of its members and their values packed.

#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "mox/detail/IdArray.h"
#include "mox/detail/Relocate.h"

namespace Mox::detail {

// Without padding at its end, where the values of a page begin.
#pragma pack(push, 2)
/// Up to 64 values at packed places: the place of id i is the number of members below it.
template <class V>
class IdPage {
  static_assert(alignof(V) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

 public:
  using Bits = std::uint64_t;

  [[nodiscard]] static IdPage* make(std::size_t capacity) {
    auto* const page = new (::operator new(bytes(capacity))) IdPage;
    page->capacity_ = static_cast<std::uint16_t>(capacity);
    return page;
  }
  /// Moves the members into a page of this capacity, and ends the old one.
  [[nodiscard]] static IdPage* resized(IdPage* old, std::size_t capacity) {
    IdPage* const page = make(capacity);
    page->members_ = old->members_;
    relocate(page->value(0), old->value(0), old->size());
    old->members_ = 0;
    destroy(old);
    return page;
  }
  static void destroy(IdPage* page) noexcept {
    for (std::size_t i = 0, n = page->size(); i < n; ++i) page->value(i)->~V();
    ::operator delete(page);
  }

  [[nodiscard]] Bits members() const noexcept { return members_; }
  [[nodiscard]] std::size_t size() const noexcept { return static_cast<std::size_t>(std::popcount(members_)); }
  [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }
  [[nodiscard]] bool has(unsigned bit) const noexcept { return (members_ >> bit & 1) != 0; }
  [[nodiscard]] std::size_t place(unsigned bit) const noexcept {
    return static_cast<std::size_t>(std::popcount(members_ & ((Bits{1} << bit) - 1)));
  }
  [[nodiscard]] V* value(std::size_t place) noexcept {
    return reinterpret_cast<V*>(reinterpret_cast<std::byte*>(this) + header()) + place;
  }

  V* insert(unsigned bit, V v) noexcept {
    const std::size_t at = place(bit);
    relocate(value(at + 1), value(at), size() - at);
    members_ |= Bits{1} << bit;
    return new (value(at)) V(std::move(v));
  }
  [[nodiscard]] V take(unsigned bit) noexcept {
    const std::size_t at = place(bit);
    V taken = takeOut(value(at));
    relocate(value(at), value(at + 1), size() - at - 1);
    members_ &= ~(Bits{1} << bit);
    return taken;
  }

  [[nodiscard]] std::size_t memory() const noexcept { return bytes(capacity_); }

 private:
  [[nodiscard]] static constexpr std::size_t header() noexcept {
    static_assert(sizeof(IdPage) == sizeof(Bits) + sizeof(std::uint16_t));
    return (sizeof(IdPage) + alignof(V) - 1) / alignof(V) * alignof(V);
  }
  [[nodiscard]] static constexpr std::size_t bytes(std::size_t capacity) noexcept {
    return header() + capacity * sizeof(V);
  }

  Bits members_ = 0;
  std::uint16_t capacity_ = 0;
};
#pragma pack(pop)

/// A directory of 64 pages, for ids below 4096.
template <class V>
class IdPages {
 public:
  using Page = IdPage<V>;

  IdPages() noexcept = default;
  /// Takes over the values of an array. It makes all pages before it moves the first value, so that a lack of memory
  /// leaves the array as it was.
  explicit IdPages(IdArray<V>& array) : IdPages() {
    std::array<std::size_t, 64> sizes{};
    for (std::size_t i = 0; i < array.size(); ++i) ++sizes[array.id(i) / 64];
    for (std::size_t p = 0; p < 64; ++p) {
      if (sizes[p] != 0) makePage(p, grown(sizes[p]));
    }
    for (std::size_t i = 0; i < array.size(); ++i) insert(array.id(i), std::move(*array.value(i)));
  }
  IdPages(const IdPages&) = delete;
  IdPages& operator=(const IdPages&) = delete;
  ~IdPages() {
    for (Page* page : pages_) {
      if (page != nullptr) Page::destroy(page);
    }
  }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }

  [[nodiscard]] V* find(std::uint16_t id) const noexcept {
    Page* const page = pages_[id / 64];
    if (page == nullptr || !page->has(id % 64)) return nullptr;
    return page->value(page->place(id % 64));
  }

  /// Inserts an id that is absent.
  V* insert(std::uint16_t id, V value) {
    Page*& page = pages_[id / 64];
    if (page == nullptr) {
      makePage(id / 64, grown(0));
    } else if (const std::size_t n = page->size(); n == page->capacity()) {
      page = Page::resized(page, grown(n));
    }
    ++size_;
    return page->insert(id % 64, std::move(value));
  }

  /// Takes out an id that is present.
  [[nodiscard]] V take(std::uint16_t id) noexcept {
    Page*& page = pages_[id / 64];
    V taken = page->take(id % 64);
    --size_;
    if (const std::size_t n = page->size(); n == 0) {
      Page::destroy(std::exchange(page, nullptr));
      used_ &= ~(std::uint64_t{1} << (id / 64));
    } else if (page->capacity() >= 16 && n < page->capacity() / 4) {
      try {
        page = Page::resized(page, n * 2);
      } catch (const std::bad_alloc&) {
        return taken;  // The large page serves as well.
      }
    }
    return taken;
  }

  /// The first member whose id is not less, or `noId`.
  [[nodiscard]] std::uint32_t lowerBound(std::uint32_t id) const noexcept {
    if (id >= noId) return noId;
    const std::uint32_t first = id / 64;
    if (const Page* page = pages_[first]; page != nullptr) {
      const std::uint64_t rest = page->members() & (~std::uint64_t{0} << (id % 64));
      if (rest != 0) return first * 64 + static_cast<std::uint32_t>(std::countr_zero(rest));
    }
    const std::uint64_t later = first == 63 ? 0 : used_ & (~std::uint64_t{0} << (first + 1));
    if (later == 0) return noId;
    const auto next = static_cast<std::uint32_t>(std::countr_zero(later));
    return next * 64 + static_cast<std::uint32_t>(std::countr_zero(pages_[next]->members()));
  }

  [[nodiscard]] std::size_t memory() const noexcept {
    std::size_t sum = sizeof(IdPages);
    for (const Page* page : pages_) sum += page == nullptr ? 0 : page->memory();
    return sum;
  }

  static constexpr std::uint32_t noId = 4096;

 private:
  /// The capacity for the next members of a page with `size`.
  [[nodiscard]] static std::size_t grown(std::size_t size) noexcept {
    return std::min<std::size_t>(64, size + std::max<std::size_t>(2, size / 8));
  }
  void makePage(std::size_t index, std::size_t capacity) {
    pages_[index] = Page::make(capacity);
    used_ |= std::uint64_t{1} << index;
  }

  std::array<Page*, 64> pages_{};
  std::uint64_t used_ = 0;
  std::size_t size_ = 0;
};

}  // namespace Mox::detail
