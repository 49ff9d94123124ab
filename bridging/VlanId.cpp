#include "bridging/VlanId.h"

#include <charconv>

namespace Bridging {

namespace {

/// The decimal number that the text is, or one that is out of every range.
[[nodiscard]] std::int64_t numberOf(std::string_view text) noexcept {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : -1;
}

}  // namespace

VlanId VlanId::sequenceToValue(std::string_view text) { return numberOf(text); }

VlanIdOrNone VlanIdOrNone::sequenceToValue(std::string_view text) { return numberOf(text); }

}  // namespace Bridging
