#include "topo/Ranges.h"

#include <cstdint>
#include <optional>
#include <string_view>

#include "topo/Words.h"

namespace Topo {

namespace {

/// A name that ends in a number by which it can be counted on.
struct Counted {
  std::string prefix;
  std::uint64_t number;

  [[nodiscard]] static std::optional<Counted> parse(std::string_view name) {
    const std::size_t prefixEnd = name.find_last_not_of("0123456789") + 1;
    const std::string_view digits = name.substr(prefixEnd);
    const bool isCanonical = !digits.empty() && digits.size() <= 9 && (digits.size() == 1 || digits.front() != '0');
    const std::string_view prefix = name.substr(0, prefixEnd);
    if (prefix.empty() || !isCanonical || written(prefix) != prefix) return std::nullopt;
    return Counted{std::string(prefix), std::stoull(std::string(digits))};
  }
};

}  // namespace

std::string vlanText(const std::vector<Bridging::VlanId>& vlans) {
  std::string text;
  for (std::size_t i = 0; i < vlans.size();) {
    std::size_t end = i + 1;
    while (end < vlans.size() && vlans[end].value() == vlans[end - 1].value() + 1) ++end;
    if (!text.empty()) text += ',';
    text += std::to_string(vlans[i].value());
    if (end - i > 1) text += (end - i == 2 ? ',' : '-') + std::to_string(vlans[end - 1].value());
    i = end;
  }
  return text;
}

std::vector<std::string> intfWords(const std::vector<Quill::IntfId>& intfs) {
  std::vector<std::string> words;
  for (std::size_t i = 0; i < intfs.size();) {
    const Mox::String name = intfs[i].stringValue();
    const std::optional<Counted> first = Counted::parse(name.view());
    std::size_t end = i + 1;
    for (; first && end < intfs.size(); ++end) {
      const std::optional<Counted> next = Counted::parse(intfs[end].stringValue().view());
      if (!next || next->prefix != first->prefix || next->number != first->number + (end - i)) break;
    }
    const bool isRange = end - i > 1;
    words.push_back(isRange ? std::string(name.view()) + '-' + std::to_string(first->number + (end - i) - 1)
                            : written(name.view()));
    i = end;
  }
  return words;
}

std::string intfText(const std::vector<Quill::IntfId>& intfs) {
  std::string text;
  for (const std::string& word : intfWords(intfs)) {
    if (!text.empty()) text += ' ';
    text += word;
  }
  return text;
}

}  // namespace Topo
