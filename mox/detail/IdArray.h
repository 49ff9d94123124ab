// The small or sparse form of an id map: one block with the sorted ids first and the values behind them.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "mox/detail/Relocate.h"

namespace Mox::detail {

template <class V>
class IdArray {
  static_assert(alignof(V) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

 public:
  IdArray() noexcept = default;
  IdArray(const IdArray&) = delete;
  IdArray& operator=(const IdArray&) = delete;
  ~IdArray() { clear(); }

  void swap(IdArray& other) noexcept {
    std::swap(ids_, other.ids_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool isFull() const noexcept { return size_ == capacity_; }
  [[nodiscard]] std::uint16_t id(std::size_t place) const noexcept { return ids_[place]; }
  [[nodiscard]] V* value(std::size_t place) const noexcept { return values(ids_, capacity_) + place; }

  /// The place of the first id that is not less.
  [[nodiscard]] std::size_t lowerBound(std::uint16_t id) const noexcept {
    // Ids mostly arrive in ascending order.
    if (size_ == 0 || ids_[size_ - 1] < id) return size_;
    const std::uint16_t* first = ids_;
    for (std::size_t n = size_; n > 1;) {
      const std::size_t half = n / 2;
      first += first[half - 1] < id ? half : 0;
      n -= half;
    }
    return static_cast<std::size_t>(first - ids_);
  }

  /// Inserts at the place that lowerBound told. The array must not be full.
  V* insert(std::size_t place, std::uint16_t id, V value) noexcept {
    V* const at = this->value(place);
    std::copy_backward(ids_ + place, ids_ + size_, ids_ + size_ + 1);
    relocate(at + 1, at, size_ - place);
    ids_[place] = id;
    ++size_;
    return new (at) V(std::move(value));
  }

  /// Takes the value out and closes the gap.
  [[nodiscard]] V take(std::size_t place) noexcept {
    V* const at = value(place);
    V taken = takeOut(at);
    relocate(at, at + 1, size_ - place - 1);
    std::copy(ids_ + place + 1, ids_ + size_, ids_ + place);
    --size_;
    return taken;
  }

  /// Moves the members into a block for that many, no fewer than there are.
  void capacityIs(std::size_t capacity) {
    auto* const ids = static_cast<std::uint16_t*>(::operator new(bytes(capacity)));
    std::copy_n(ids_, size_, ids);
    if (size_ != 0) relocate(values(ids, capacity), value(0), size_);
    ::operator delete(std::exchange(ids_, ids));
    capacity_ = static_cast<std::uint16_t>(capacity);
  }

  /// Makes room for the next members: double while small, then by an eighth, so that memory stays close to what is used.
  void grow() {
    capacityIs(size_ < 8 ? std::max<std::size_t>(1, size() * 2) : size_ + std::max<std::size_t>(4, size_ / 8));
  }

  /// Gives memory back when most of it is unused. Keeps the block when there is no memory for a smaller one.
  void shrinkIfSparse() noexcept {
    if (size_ == 0) {
      clear();
    } else if (capacity_ >= 16 && size_ < capacity_ / 4) {
      try {
        capacityIs(std::size_t{size_} * 2);
      } catch (const std::bad_alloc&) {
        return;
      }
    }
  }

  void clear() noexcept {
    std::uint16_t* const ids = std::exchange(ids_, nullptr);
    const std::size_t size = std::exchange(size_, 0);
    const std::size_t capacity = std::exchange(capacity_, 0);
    for (std::size_t i = 0; i < size; ++i) values(ids, capacity)[i].~V();
    ::operator delete(ids);
  }

  /// How many pages of 64 ids the members fall into.
  [[nodiscard]] std::size_t pages() const noexcept {
    std::size_t count = 0;
    for (std::size_t i = 0; i < size_; ++i) count += i == 0 || ids_[i] / 64 != ids_[i - 1] / 64 ? 1 : 0;
    return count;
  }

  [[nodiscard]] std::size_t memory() const noexcept { return capacity_ == 0 ? 0 : bytes(capacity_); }

 private:
  [[nodiscard]] static std::size_t valuesOffset(std::size_t capacity) noexcept {
    return (capacity * sizeof(std::uint16_t) + alignof(V) - 1) / alignof(V) * alignof(V);
  }
  [[nodiscard]] static std::size_t bytes(std::size_t capacity) noexcept {
    return valuesOffset(capacity) + capacity * sizeof(V);
  }
  [[nodiscard]] static V* values(std::uint16_t* ids, std::size_t capacity) noexcept {
    return reinterpret_cast<V*>(reinterpret_cast<std::byte*>(ids) + valuesOffset(capacity));
  }

  std::uint16_t* ids_ = nullptr;
  std::uint16_t size_ = 0;
  std::uint16_t capacity_ = 0;
};

}  // namespace Mox::detail
