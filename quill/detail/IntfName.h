// How interface names are read: their kinds, and the forms that fit into two words.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quill/IntfId.h"

namespace Quill::detail {

/// The two words of an encoded name, without the kind: a form, a sub-interface number and one word of numbers.
struct Encoding {
  std::uint8_t form;      // index into the forms, from 1 on
  std::uint32_t subIntf;  // 0: none; else the number after the dot, plus one
  std::uint32_t numbers;
};

struct ParsedName {
  IntfKind kind = IntfKind::none;
  std::optional<Encoding> encoding;  // empty when the name must be interned
};

/// Reads a name that is not empty.
[[nodiscard]] ParsedName parseName(std::string_view name);

/// Whether there is a form with this number.
[[nodiscard]] bool hasForm(std::uint32_t form) noexcept;

/// The name that an encoding stands for.
[[nodiscard]] std::string nameOf(const Encoding& encoding);

/// The natural order of names: runs of digits by their number, other characters by byte.
[[nodiscard]] std::strong_ordering compareNames(std::string_view a, std::string_view b);

/// The greatest sub-interface number that an encoding holds, plus one.
inline constexpr std::uint32_t maxSubIntf = (1U << 23) - 1;

}  // namespace Quill::detail
