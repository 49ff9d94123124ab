// Registered enumerations: values with names, both ways.
//
// Usage, beside the enumeration and in its namespace:
//
//   enum class Colour : std::uint32_t { red, green };
//   constexpr auto moxEnumValues(Colour) {
//     return std::array{Mox::enumValue(Colour::red, "red"), Mox::enumValue(Colour::green, "green")};
//   }
//   using Mox::stringValue, Mox::valueToStrep, Mox::operator<<;
//   using ColourInstance = Mox::EnumInstance<Colour>;
//
// and in the module's static initialiser `Mox::enumerationType<Colour>()` (mox/Type.h). Then
//
//   std::cout << Colour::red;                                        // red
//   Mox::EnumType<Colour>::sequenceToValue("green")                  // Colour::green
//   Colour c = ColourInstance(1);                                    // by number; ColourInstance("green") by name
//
// A text or a number that names no value raises RangeException, "Colour::value blue not allowed". Names are compared
// exactly, letter case included. Printing a number that is no value prints the number.

#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "mox/Exception.h"
#include "mox/String.h"
#include "mox/Type.h"

namespace Mox {

template <class E>
struct EnumValue {
  E value;
  const char* name;
};

template <class E>
[[nodiscard]] constexpr EnumValue<E> enumValue(E value, const char* name) noexcept {
  return {value, name};
}

template <class E>
concept RegisteredEnum = std::is_enum_v<E> && requires(E e) {
  moxEnumValues(e);
};

template <RegisteredEnum E>
class EnumType {
 public:
  [[nodiscard]] static String stringValue(E value) { return valueToStrep(value); }

  /// The string representation of a value: its name.
  [[nodiscard]] static std::string valueToStrep(E value) {
    for (const auto& v : moxEnumValues(E{})) {
      if (v.value == value) return v.name;
    }
    return std::to_string(static_cast<std::uint32_t>(value));
  }

  /// Parses a name.
  [[nodiscard]] static E sequenceToValue(std::string_view name) {
    for (const auto& v : moxEnumValues(E{})) {
      if (name == v.name) return v.value;
    }
    throwNotAllowed(name);
  }

  /// The value with this number, of whatever type the number is.
  template <std::integral Number>
  [[nodiscard]] static E numberToValue(Number number) {
    for (const auto& v : moxEnumValues(E{})) {
      if (std::cmp_equal(number, static_cast<std::uint32_t>(v.value))) return v.value;
    }
    throwNotAllowed(std::to_string(number));
  }

 private:
  [[noreturn]] static void throwNotAllowed(std::string_view what) {
    const std::string type = typeName(typeid(E));
    const auto colon = type.rfind(':');
    const std::string name = colon == std::string::npos ? type : type.substr(colon + 1);
    throwRangeException(name + "::value " + std::string(what) + " not allowed");
  }
};

/// A value chosen by number or by name, as configuration gives it.
template <RegisteredEnum E>
class EnumInstance {
 public:
  template <std::integral Number>
  explicit EnumInstance(Number number) : value_(EnumType<E>::numberToValue(number)) {}
  explicit EnumInstance(std::string_view name) : value_(EnumType<E>::sequenceToValue(name)) {}

  [[nodiscard]] E value() const noexcept { return value_; }
  operator E() const noexcept { return value_; }

 private:
  E value_;
};

template <RegisteredEnum E>
[[nodiscard]] String stringValue(E value) {
  return EnumType<E>::stringValue(value);
}

template <RegisteredEnum E>
[[nodiscard]] std::string valueToStrep(E value) {
  return EnumType<E>::valueToStrep(value);
}

template <RegisteredEnum E>
std::ostream& operator<<(std::ostream& out, E value) {
  return out << valueToStrep(value);
}

/// Describes an enumeration, for `moxModuleIs`.
template <RegisteredEnum E>
[[nodiscard]] TypeDesc enumerationType() {
  TypeDesc desc(typeid(E), typeName(typeid(E)));
  std::vector<EnumValueDesc> values;
  for (const auto& v : moxEnumValues(E{})) values.push_back({static_cast<std::uint32_t>(v.value), v.name});
  desc.valueIs(std::move(values));
  return desc;
}

}  // namespace Mox
