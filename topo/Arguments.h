// The arguments of commands: what stands in the words of a line, checked. Everything here raises ScenarioError, or the
// framework's RangeException for a VLAN number out of range.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bridging/VlanId.h"
#include "mox/Enum.h"
#include "quill/IntfId.h"
#include "topo/ScenarioError.h"
#include "topo/Words.h"

namespace Topo {

/// VLANs as a list of numbers and ranges, 10,20,100-199. Kept as written: the members are made one by one.
class VlanList {
 public:
  [[nodiscard]] static VlanList parse(const Word& word);

  void forEach(const auto& act) const {
    for (const Range& range : ranges_) {
      for (unsigned vid = range.first; vid <= range.last; ++vid) act(Bridging::VlanId(vid));
    }
  }

 private:
  struct Range {
    unsigned first;
    unsigned last;
  };

  std::vector<Range> ranges_;
};

/// An interface, or a range of them such as Ethernet1-48. A quoted word is never a range.
class IntfRange {
 public:
  /// The largest number of interfaces in a range.
  static constexpr std::uint64_t maxSize = 65'536;

  [[nodiscard]] static IntfRange parse(const Word& word);

  [[nodiscard]] bool isRange() const noexcept { return isRange_; }

  void forEach(const auto& act) const {
    if (!isRange_) {
      act(Quill::IntfId(name_));
      return;
    }
    for (std::uint64_t n = first_; n <= last_; ++n) act(Quill::IntfId(name_ + std::to_string(n)));
  }

 private:
  std::string name_;  // of a range without its numbers
  bool isRange_ = false;
  std::uint64_t first_ = 0;
  std::uint64_t last_ = 0;
};

// Each takes the next word of the line, which must be there.
[[nodiscard]] VlanList takeVlans(Words& words);
[[nodiscard]] Bridging::VlanId takeVlan(Words& words);
/// A VLAN number, or `none`.
[[nodiscard]] Bridging::VlanIdOrNone takeVlanOrNone(Words& words);
[[nodiscard]] IntfRange takeIntfs(Words& words);
/// One interface; a range is taken for a name.
[[nodiscard]] Quill::IntfId takeIntf(Words& words);
/// A name, which is not empty; `what` is a topology, say.
[[nodiscard]] Mox::String takeName(Words& words, std::string_view what);
/// A whole number from 0 to `max`.
[[nodiscard]] std::uint32_t takeNumber(Words& words, std::string_view what, std::uint32_t max = UINT32_MAX);
/// A number of seconds: finite, and not negative.
[[nodiscard]] double takeSeconds(Words& words, std::string_view what);
[[nodiscard]] bool takeOnOff(Words& words, std::string_view what);

/// A, b or c.
[[nodiscard]] std::string alternatives(const std::vector<std::string>& names);

/// A value of a registered enumeration, by its name.
template <Mox::RegisteredEnum E>
[[nodiscard]] E takeEnum(Words& words) {
  std::optional<Word> word = words.next();
  std::vector<std::string> names;
  for (const auto& v : moxEnumValues(E{})) {
    if (word && *word == v.name) return v.value;
    names.emplace_back(v.name);
  }
  throwUnexpected(alternatives(names), word);
}

/// Stores an option that may be given once in a line.
template <class T>
void setOnce(std::optional<T>& option, std::string_view name, const T& value) {
  if (option) throw ScenarioError(std::string(name) + " is given twice");
  option = value;
}

}  // namespace Topo
