#include "quill/detail/IntfName.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <compare>

namespace Quill::detail {

namespace {

/// A form: a prefix, then `numbers` numbers with `separator` between them.
struct Form {
  std::string_view prefix;
  unsigned numbers;
  char separator;
  IntfKind kind;
};

constexpr std::array forms{
    Form{"", 0, '\0', IntfKind::none},  // form 0: interned
    Form{"Ethernet", 1, '\0', IntfKind::ethernet},
    Form{"Ethernet", 2, '/', IntfKind::ethernet},
    Form{"Ethernet", 3, '/', IntfKind::ethernet},
    Form{"eth", 1, '\0', IntfKind::ethernet},
    Form{"swp", 1, '\0', IntfKind::ethernet},
    Form{"swp", 2, 's', IntfKind::ethernet},
    Form{"PortChannel", 1, '\0', IntfKind::portChannel},
    Form{"bond", 1, '\0', IntfKind::portChannel},
    Form{"team", 1, '\0', IntfKind::portChannel},
    Form{"Cpu", 0, '\0', IntfKind::cpu},
    Form{"VxlanTunnel", 1, '\0', IntfKind::vxlanTunnel},
    Form{"vxlan", 1, '\0', IntfKind::vxlanTunnel},
    Form{"MplsTrunk", 1, '\0', IntfKind::mplsTrunk},
    Form{"mpls", 1, '\0', IntfKind::mplsTrunk},
    Form{"Vlan", 1, '\0', IntfKind::other},
    Form{"Loopback", 1, '\0', IntfKind::other},
};

/// Any name that begins so is that of an Ethernet port, by the operating system's naming of devices.
constexpr std::string_view systemEthernet = "en";

/// How the numbers of a form share its 32 bits, by how many there are.
constexpr std::array<std::array<unsigned, 3>, 4> widths{{{0, 0, 0}, {32, 0, 0}, {16, 16, 0}, {12, 10, 10}}};

[[nodiscard]] bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Takes a run of digits off the front of the text.
[[nodiscard]] std::string_view takeDigits(std::string_view& text) noexcept {
  const auto* const end = std::find_if_not(text.begin(), text.end(), isDigit);
  const auto digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  return digits;
}

/// The number that is written exactly so and fits into `bits`, if there is one.
[[nodiscard]] std::optional<std::uint32_t> exactNumber(std::string_view digits, unsigned bits) noexcept {
  if (digits.size() > 1 && digits.front() == '0') return std::nullopt;
  std::uint64_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec != std::errc() || number >> bits != 0) return std::nullopt;
  return static_cast<std::uint32_t>(number);
}

/// Whether the name has this form; then also its numbers, if they can be encoded.
[[nodiscard]] bool readForm(std::string_view name, const Form& form, std::optional<std::uint32_t>& numbers) noexcept {
  if (!name.starts_with(form.prefix)) return false;
  name.remove_prefix(form.prefix.size());
  std::uint64_t packed = 0;
  bool isExact = true;
  for (unsigned i = 0; i < form.numbers; ++i) {
    if (i != 0) {
      if (!name.starts_with(form.separator)) return false;
      name.remove_prefix(1);
    }
    const std::string_view digits = takeDigits(name);
    if (digits.empty()) return false;
    const unsigned width = widths[form.numbers][i];
    const auto number = exactNumber(digits, width);
    isExact = isExact && number.has_value();
    packed = packed << width | number.value_or(0);
  }
  if (!name.empty()) return false;
  if (isExact) numbers = static_cast<std::uint32_t>(packed);
  return true;
}

[[nodiscard]] ParsedName parseBase(std::string_view name) {
  for (std::size_t f = 1; f < forms.size(); ++f) {
    std::optional<std::uint32_t> numbers;
    if (!readForm(name, forms[f], numbers)) continue;
    if (!numbers) return {forms[f].kind, std::nullopt};
    return {forms[f].kind, Encoding{static_cast<std::uint8_t>(f), 0, *numbers}};
  }
  const bool isSystemEthernet = name.starts_with(systemEthernet) && name.size() > systemEthernet.size();
  return {isSystemEthernet ? IntfKind::ethernet : IntfKind::other, std::nullopt};
}

}  // namespace

ParsedName parseName(std::string_view name) {
  const auto dot = name.rfind('.');
  std::string_view suffix = dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
  const std::string_view digits = takeDigits(suffix);
  if (digits.empty() || !suffix.empty()) return parseBase(name);

  ParsedName parsed = parseBase(name.substr(0, dot));
  parsed.kind = IntfKind::subIntf;
  const auto number = exactNumber(digits, 32);
  if (!number || *number >= maxSubIntf) {
    parsed.encoding.reset();
  } else if (parsed.encoding) {
    parsed.encoding->subIntf = *number + 1;
  }
  return parsed;
}

bool hasForm(std::uint32_t form) noexcept { return form != 0 && form < forms.size(); }

std::string nameOf(const Encoding& encoding) {
  const Form& form = forms[encoding.form];
  std::string name(form.prefix);
  std::uint64_t rest = std::uint64_t{encoding.numbers} << 32;
  unsigned left = 32;
  for (unsigned width : widths[form.numbers]) left -= width;
  rest <<= left;
  for (unsigned i = 0; i < form.numbers; ++i) {
    const unsigned width = widths[form.numbers][i];
    if (i != 0) name += form.separator;
    name += std::to_string(rest >> (64 - width));
    rest <<= width;
  }
  if (encoding.subIntf != 0) name += '.' + std::to_string(encoding.subIntf - 1);
  return name;
}

std::strong_ordering compareNames(std::string_view a, std::string_view b) {
  const auto withoutZeros = [](std::string_view digits) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
  };
  const std::string_view wholeA = a;
  const std::string_view wholeB = b;
  while (!a.empty() && !b.empty()) {
    if (isDigit(a.front()) && isDigit(b.front())) {
      const std::string_view numberA = withoutZeros(takeDigits(a));
      const std::string_view numberB = withoutZeros(takeDigits(b));
      if (const auto order = numberA.size() <=> numberB.size(); std::is_neq(order)) return order;
      if (const auto order = numberA <=> numberB; std::is_neq(order)) return order;
    } else {
      if (const auto order = a.substr(0, 1) <=> b.substr(0, 1); std::is_neq(order)) return order;
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
  }
  if (const auto order = a.size() <=> b.size(); std::is_neq(order)) return order;
  return wholeA <=> wholeB;
}

}  // namespace Quill::detail
