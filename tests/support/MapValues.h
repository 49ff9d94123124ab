// Values for the tests of the maps.

#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <utility>

#include "mox/Ptr.h"
#include "mox/String.h"

namespace Test {

/// Twelve plain bytes.
struct Triple {
  std::uint32_t a = 0;
  std::uint32_t b = 0;
  std::uint32_t c = 0;

  friend bool operator==(const Triple&, const Triple&) = default;
};

/// A value that knows where it is, so that its bytes alone cannot be moved. It counts what lives and what went wrong.
class SelfPointing {
 public:
  explicit SelfPointing(std::uint64_t number) noexcept : self_(this), number_(number) { ++living; }
  SelfPointing(SelfPointing&& other) noexcept : self_(this), number_(std::exchange(other.number_, moved)) {
    ++living;
    ++moves;
    other.check();
  }
  SelfPointing& operator=(SelfPointing&& other) noexcept {
    number_ = std::exchange(other.number_, moved);
    ++moves;
    check();
    other.check();
    return *this;
  }
  ~SelfPointing() {
    check();
    self_ = nullptr;
    --living;
  }

  [[nodiscard]] std::uint64_t number() const noexcept {
    check();
    return number_;
  }

  static constexpr std::uint64_t moved = ~std::uint64_t{0};
  static inline std::int64_t living = 0;
  static inline std::uint64_t moves = 0;
  static inline std::uint64_t misplaced = 0;

 private:
  void check() const noexcept { misplaced += self_ == this ? 0 : 1; }

  const SelfPointing* self_;
  std::uint64_t number_;
};

/// A counted object that holds a number.
class Numbered : public Mox::PtrInterface {
 public:
  explicit Numbered(std::uint64_t number) : number_(number) { ++living; }
  ~Numbered() override { --living; }

  [[nodiscard]] std::uint64_t number() const { return number_; }

  static inline std::int64_t living = 0;

 private:
  std::uint64_t number_;
};

/// Does something at its end. A value that was moved away has no end of its own.
class Farewell {
 public:
  explicit Farewell(std::function<void()> action = {}) noexcept : action_(std::move(action)) {}
  Farewell(Farewell&& other) noexcept : action_(std::exchange(other.action_, nullptr)) {}
  Farewell& operator=(Farewell&& other) noexcept {
    std::swap(action_, other.action_);
    return *this;
  }
  ~Farewell() {
    if (action_) action_();
  }

 private:
  std::function<void()> action_;
};

/// How a test makes a value from a number, and reads the number from it.
template <class V>
struct Values;
template <>
struct Values<std::uint64_t> {
  static std::uint64_t make(std::uint64_t n) { return n; }
  static std::uint64_t number(std::uint64_t v) { return v; }
};
template <>
struct Values<Triple> {
  static Triple make(std::uint64_t n) {
    return {static_cast<std::uint32_t>(n), static_cast<std::uint32_t>(n >> 32), 7};
  }
  static std::uint64_t number(const Triple& v) { return v.c == 7 ? v.a | std::uint64_t{v.b} << 32 : 0; }
};
template <>
struct Values<SelfPointing> {
  static SelfPointing make(std::uint64_t n) { return SelfPointing(n); }
  static std::uint64_t number(const SelfPointing& v) { return v.number(); }
};
template <>
struct Values<Mox::String> {
  static Mox::String make(std::uint64_t n) { return std::to_string(n); }
  static std::uint64_t number(const Mox::String& v) { return std::stoull(v.c_str()); }
};
template <>
struct Values<Mox::Ptr<Numbered>> {
  static Mox::Ptr<Numbered> make(std::uint64_t n) { return Mox::makePtr<Numbered>(n); }
  static std::uint64_t number(const Mox::Ptr<Numbered>& v) { return v->number(); }
};

}  // namespace Test
