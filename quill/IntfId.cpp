#include "quill/IntfId.h"

#include <string>
#include <unordered_map>
#include <vector>

#include "mox/Exception.h"
#include "quill/detail/IntfName.h"

namespace Quill {

namespace {

// Word 0 is kind, form and sub-interface number, from the upper bits down. Form 0 is an interned name. No kind has all
// its bits set, so no id consists of ones only.
constexpr unsigned formShift = 23;
static_assert(detail::maxSubIntf < (1U << formShift));

/// The names that have no encoding, by the order of their first appearance.
struct Interned {
  std::vector<Mox::String> names;
  std::unordered_map<Mox::String, std::uint32_t> places;
};

Interned& interned() {
  // Never destroyed: ids may be printed by the destructors of static objects.
  static auto& instance = *new Interned;
  return instance;
}

[[nodiscard]] std::uint32_t intern(std::string_view name) {
  const Mox::String text(name);
  auto& [names, places] = interned();
  const auto found = places.find(text);
  if (found != places.end()) return found->second;
  const auto place = static_cast<std::uint32_t>(names.size());
  names.push_back(text);
  places.emplace(text, place);
  return place;
}

[[nodiscard]] std::uint32_t formOf(IntfId intf) noexcept { return intf.word0() >> formShift & 0x1F; }
[[nodiscard]] std::uint32_t subIntfOf(IntfId intf) noexcept { return intf.word0() & ((1U << formShift) - 1); }

}  // namespace

IntfId IntfId::parse(std::string_view name) {
  if (name.empty()) return {};
  const auto [kind, encoding] = detail::parseName(name);
  const std::uint32_t kindBits = static_cast<std::uint32_t>(kind) << kindShift;
  if (!encoding) return {kindBits, intern(name)};
  return {kindBits | std::uint32_t{encoding->form} << formShift | encoding->subIntf, encoding->numbers};
}

IntfId IntfId::fromBits(std::uint64_t bits) {
  const IntfId intf = Mox::KeyTraits<IntfId>::fromBits(bits);
  const bool isInterned = formOf(intf) == 0;
  const bool isName = isInterned ? intf.word1_ < interned().names.size() : detail::hasForm(formOf(intf));
  if (!intf.empty() && (!isName || parse(intf.stringValue().view()) != intf)) {
    Mox::throwRangeException("no interface id has the bits " + std::to_string(bits));
  }
  return intf;
}

Mox::String IntfId::stringValue() const {
  if (empty()) return {};
  if (formOf(*this) == 0) return interned().names[word1_];
  return detail::nameOf({static_cast<std::uint8_t>(formOf(*this)), subIntfOf(*this), word1_});
}

std::strong_ordering IntfId::compare(IntfId other) const {
  if (*this == other) return std::strong_ordering::equal;
  if (formOf(*this) != 0 && formOf(*this) == formOf(other)) {
    // Numbers are packed in the order of the name.
    if (const auto order = word1_ <=> other.word1_; std::is_neq(order)) return order;
    return subIntfOf(*this) <=> subIntfOf(other);
  }
  return detail::compareNames(stringValue(), other.stringValue());
}

std::ostream& operator<<(std::ostream& out, IntfId intf) { return out << intf.stringValue(); }

}  // namespace Quill
