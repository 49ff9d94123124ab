// Text as it comes from files: whether it is UTF-8, and how it is shown in a report.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Topo {

/// Whether the bytes are UTF-8, in the shortest form and without surrogates.
[[nodiscard]] bool isUtf8(std::string_view text) noexcept;

/// Whether the byte goes on with a character that began before it.
[[nodiscard]] constexpr bool isContinuation(char c) noexcept { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }
/// How many characters the UTF-8 text has.
[[nodiscard]] std::size_t charactersOf(std::string_view text) noexcept;

[[nodiscard]] bool isControl(char c) noexcept;

/// The text on one line of bounded length: control characters as \xNN, a long rest as dots.
[[nodiscard]] std::string onOneLine(std::string_view text);

}  // namespace Topo
