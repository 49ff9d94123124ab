#include "topo/Arguments.h"

#include <charconv>
#include <cmath>

namespace Topo {

namespace {

constexpr std::string_view digits = "0123456789";
constexpr std::string_view vlansExpected = "a VLAN number or a list such as 10,20,100-199";
constexpr std::string_view intfExpected = "an interface, or a range such as Ethernet1-48";

[[nodiscard]] bool isNumeral(std::string_view text) noexcept {
  return !text.empty() && text.find_first_not_of(digits) == std::string_view::npos;
}

/// The number that the whole text is, if it is one that fits.
template <class T>
[[nodiscard]] std::optional<T> numberOf(std::string_view text) noexcept {
  T number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

[[nodiscard]] unsigned vlanOf(std::string_view text, const Word& word) {
  if (!isNumeral(text)) throwUnexpected(vlansExpected, word);
  return Bridging::VlanId::sequenceToValue(text).value();
}

/// A numeral of a range: without leading zeros, so that counting gives names that are written alike.
[[nodiscard]] std::optional<std::uint64_t> rangeEnd(std::string_view text) noexcept {
  if (!isNumeral(text) || text.size() > 18 || (text.size() > 1 && text.front() == '0')) return std::nullopt;
  return numberOf<std::uint64_t>(text);
}

}  // namespace

VlanList VlanList::parse(const Word& word) {
  VlanList list;
  std::string_view left = word.text;
  for (bool isLast = false; !isLast;) {
    const std::size_t comma = left.find(',');
    isLast = comma == std::string_view::npos;
    const std::string_view item = left.substr(0, comma);
    if (!isLast) left.remove_prefix(comma + 1);
    const std::size_t dash = item.find('-');
    const unsigned first = vlanOf(item.substr(0, dash), word);
    const unsigned last = dash == std::string_view::npos ? first : vlanOf(item.substr(dash + 1), word);
    if (last < first) throw ScenarioError("the range " + std::string(item) + " runs backwards");
    list.ranges_.push_back({first, last});
  }
  return list;
}

IntfRange IntfRange::parse(const Word& word) {
  if (word.text.empty()) throw ScenarioError("an interface name must not be empty");
  IntfRange range;
  range.name_ = word.text;
  const std::string_view text = word.text;
  const std::size_t dash = text.rfind('-');
  if (word.isQuoted || dash == std::string_view::npos) return range;
  const std::string_view front = text.substr(0, dash);
  const std::size_t prefixEnd = front.find_last_not_of(digits) + 1;
  const auto first = rangeEnd(front.substr(prefixEnd));
  const auto last = rangeEnd(text.substr(dash + 1));
  if (prefixEnd == 0 || !first || !last) return range;
  if (*last < *first) throw ScenarioError("the range " + word.text + " runs backwards");
  if (*last - *first >= maxSize) {
    throw ScenarioError("the range " + word.text + " has more than " + std::to_string(maxSize) + " interfaces");
  }
  range.name_ = front.substr(0, prefixEnd);
  range.isRange_ = true;
  range.first_ = *first;
  range.last_ = *last;
  return range;
}

VlanList takeVlans(Words& words) { return VlanList::parse(words.take(vlansExpected)); }

Bridging::VlanId takeVlan(Words& words) {
  const Word word = words.take("a VLAN number");
  if (!isNumeral(word.text)) throwUnexpected("a VLAN number", word);
  return Bridging::VlanId::sequenceToValue(word.text);
}

Bridging::VlanIdOrNone takeVlanOrNone(Words& words) {
  const Word word = words.take("a VLAN number or none");
  if (word == "none") return {};
  if (!isNumeral(word.text)) throwUnexpected("a VLAN number or none", word);
  return Bridging::VlanIdOrNone::sequenceToValue(word.text);
}

IntfRange takeIntfs(Words& words) { return IntfRange::parse(words.take(intfExpected)); }

Quill::IntfId takeIntf(Words& words) {
  const Word word = words.take("an interface");
  if (IntfRange::parse(word).isRange()) throw ScenarioError("expected one interface, found the range " + word.text);
  return word.text;
}

Mox::String takeName(Words& words, std::string_view what) {
  const Word word = words.take(std::string("the name of a ") += what);
  if (word.text.empty()) throw ScenarioError("the name of a " + std::string(what) + " must not be empty");
  return word.text;
}

std::uint32_t takeNumber(Words& words, std::string_view what, std::uint32_t max) {
  const std::string expected = std::string(what) + ", a number from 0 to " + std::to_string(max);
  const Word word = words.take(expected);
  const auto number = isNumeral(word.text) ? numberOf<std::uint32_t>(word.text) : std::nullopt;
  if (!number || *number > max) throwUnexpected(expected, word);
  return *number;
}

double takeSeconds(Words& words, std::string_view what) {
  const std::string expected = std::string(what) + ", a number of seconds such as 0.5";
  const Word word = words.take(expected);
  const auto seconds = numberOf<double>(word.text);
  if (!seconds || !std::isfinite(*seconds) || std::signbit(*seconds)) throwUnexpected(expected, word);
  return *seconds;
}

bool takeOnOff(Words& words, std::string_view what) {
  const std::string expected = "on or off for " + std::string(what);
  const Word word = words.take(expected);
  if (word != "on" && word != "off") throwUnexpected(expected, word);
  return word == "on";
}

std::string alternatives(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i != 0) text += i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text;
}

}  // namespace Topo
