#include "topo/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Topo {

namespace {

constexpr std::size_t maxLength = 1000;

/// How many bytes follow a first byte, and the code points that are written with so many.
struct Form {
  std::size_t following;
  std::uint32_t bits;
  std::uint32_t min;
};

[[nodiscard]] Form formOf(unsigned char first) noexcept {
  if (first < 0x80) return {0, first, 0};
  if (first >> 5 == 0x6) return {1, first & 0x1FU, 0x80};
  if (first >> 4 == 0xE) return {2, first & 0xFU, 0x800};
  if (first >> 3 == 0x1E) return {3, first & 0x7U, 0x10000};
  return {0, 0, 1};  // no first byte: less than the least
}

}  // namespace

bool isUtf8(std::string_view text) noexcept {
  for (std::size_t i = 0; i < text.size();) {
    const Form form = formOf(static_cast<unsigned char>(text[i++]));
    std::uint32_t code = form.bits;
    for (std::size_t n = 0; n < form.following; ++n, ++i) {
      if (i == text.size() || !isContinuation(text[i])) return false;
      code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < form.min || code > 0x10FFFF || isSurrogate) return false;
  }
  return true;
}

std::size_t charactersOf(std::string_view text) noexcept {
  return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuation));
}

bool isControl(char c) noexcept { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

std::string onOneLine(std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::size_t length = text.size();
  if (length > maxLength) {
    length = maxLength;
    while (length > 0 && isContinuation(text[length])) --length;  // half a character is none
  }
  std::string line;
  for (const char c : text.substr(0, length)) {
    if (isControl(c)) {
      const auto code = static_cast<unsigned char>(c);
      line.append("\\x").append(1, digits[code >> 4]).append(1, digits[code & 0xF]);
    } else {
      line += c;
    }
  }
  if (length < text.size()) line += "...";
  return line;
}

}  // namespace Topo
