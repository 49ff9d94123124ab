// Immutable text, as names and messages are passed around.
//
// Overview
//   One word that shares its characters: copying raises a count, comparing two copies of one text compares pointers, and
//   the hash is computed once, when the text is made. The empty text holds no memory.
//
// Usage
//   Mox::String name = "state";
//   if (name == "state") std::cout << name;           // compares with String, const char*, std::string, string_view
//
// Order is that of the bytes. Thread-safety is that of `Ptr`: copies may be dropped in other threads once
// `threadSafePointers` is set.

#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "mox/Ptr.h"
#include "mox/Public.h"

namespace Mox {

class String;

/// Text that is not a `String` but reads as one.
template <class T>
concept TextLike = std::convertible_to<const T&, std::string_view> && !std::same_as<std::remove_cvref_t<T>, String>;

class MOX_PUBLIC String {
 public:
  constexpr String() noexcept = default;
  template <TextLike T>
  String(const T& text) : String(Copy{}, text) {}
  String(const String& other) noexcept : text_(other.text_) {
    if (text_ != nullptr) text_->references.increment();
  }
  String(String&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
  ~String() {
    if (text_ != nullptr && text_->references.decrement()) free();
  }
  String& operator=(const String& other) noexcept {
    String(other).swap(*this);
    return *this;
  }
  String& operator=(String&& other) noexcept {
    String(std::move(other)).swap(*this);
    return *this;
  }

  [[nodiscard]] std::string_view view() const noexcept {
    return text_ == nullptr ? std::string_view() : std::string_view(text_->characters(), text_->size);
  }
  operator std::string_view() const noexcept { return view(); }
  /// The text with a terminating zero; valid as long as this or another copy lives.
  [[nodiscard]] const char* c_str() const noexcept { return text_ == nullptr ? "" : text_->characters(); }
  [[nodiscard]] std::size_t size() const noexcept { return text_ == nullptr ? 0 : text_->size; }
  [[nodiscard]] bool empty() const noexcept { return text_ == nullptr; }
  /// A hash of the characters, the same in every process.
  [[nodiscard]] std::uint64_t hash() const noexcept { return text_ == nullptr ? 0 : text_->hash; }

  void swap(String& other) noexcept { std::swap(text_, other.text_); }

  [[nodiscard]] friend bool operator==(const String& a, const String& b) noexcept {
    return a.text_ == b.text_ || (a.hash() == b.hash() && a.view() == b.view());
  }
  template <TextLike T>
  [[nodiscard]] friend bool operator==(const String& a, const T& b) noexcept {
    return a.view() == std::string_view(b);
  }
  [[nodiscard]] friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    return a.view() <=> b.view();
  }
  template <TextLike T>
  [[nodiscard]] friend std::strong_ordering operator<=>(const String& a, const T& b) noexcept {
    return a.view() <=> std::string_view(b);
  }
  friend std::ostream& operator<<(std::ostream& out, const String& s) { return out << s.view(); }

 private:
  struct Copy {};

  /// The shared characters; they follow the header in the same allocation, with a terminating zero.
  struct Text {
    ReferenceCount references;
    std::uint32_t size = 0;
    std::uint64_t hash = 0;

    [[nodiscard]] char* characters() noexcept { return reinterpret_cast<char*>(this + 1); }
  };

  String(Copy, std::string_view text);
  void free() noexcept;

  Text* text_ = nullptr;
};

}  // namespace Mox

template <>
struct std::hash<Mox::String> {
  std::size_t operator()(const Mox::String& s) const noexcept { return s.hash(); }
};
