// Interface ids of thousands of names: of the known forms, near misses of them, and any text.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "mox/Collection.h"
#include "quill/IntfId.h"
#include "tests/support/Random.h"

namespace Quill::IntfIdRandomTest {

using Test::Random;
using Test::seedTrace;

const std::vector<std::string> prefixes{"Ethernet",  "eth",  "swp",  "en",          "PortChannel",
                                        "bond",      "team", "Cpu",  "VxlanTunnel", "vxlan",
                                        "MplsTrunk", "mpls", "Vlan", "Loopback"};

/// A number, about the limits of what an id can encode as often as not.
std::string randomNumber(Random& random) {
  static const std::vector<std::uint64_t> limits{1U << 10, 1U << 12, 1U << 16, 1U << 23, std::uint64_t{1} << 32};
  std::string number = random.percent(50) ? std::to_string(random.below(5'000))
                                          : std::to_string(limits[random.below(limits.size())] - 3 + random.below(5));
  if (random.percent(5)) number.insert(0, 1 + random.below(3), '0');
  return number;
}

std::string knownForm(Random& random) {
  std::string name = prefixes[random.below(prefixes.size())];
  if (name != "Cpu") name += randomNumber(random);
  if (name[0] == 'E' && random.percent(60)) name += '/' + randomNumber(random);
  if (name[0] == 'E' && random.percent(40)) name += '/' + randomNumber(random);
  if (name[0] == 's' && random.percent(50)) name += 's' + randomNumber(random);
  if (random.percent(25)) name += '.' + randomNumber(random);
  return name;
}

std::string anyText(Random& random) {
  std::string text(random.below(24), '\0');
  for (char& c : text) c = static_cast<char>(random.percent(90) ? 32 + random.below(95) : random.below(256));
  return text;
}

/// A known form with one byte removed, added, doubled or replaced.
std::string nearMiss(Random& random) {
  static const std::string likely = "0123456789./.sE x";
  std::string name = knownForm(random);
  const std::size_t at = random.below(name.size());
  const char byte = likely[random.below(likely.size())];
  switch (random.below(4)) {
    case 0:
      return name.erase(at, 1);
    case 1:
      return name.insert(at, 1, byte);
    case 2:
      return name.insert(at, 1, name[at]);
    default:
      return name.replace(at, 1, 1, byte);
  }
}

std::string randomName(Random& random) {
  switch (random.below(3)) {
    case 0:
      return knownForm(random);
    case 1:
      return nearMiss(random);
    default:
      return anyText(random);
  }
}

/// Whether the text is of the pattern, in which # is a number, ? any byte, * any bytes, and everything else itself.
bool matches(std::string_view text, std::string_view pattern) {
  if (pattern.empty()) return text.empty();
  const char first = pattern.front();
  pattern.remove_prefix(1);
  if (first == '*') {
    for (std::size_t n = 0; n <= text.size(); ++n) {
      if (matches(text.substr(n), pattern)) return true;
    }
    return false;
  }
  if (first == '#') {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    return digits != 0 && matches(text.substr(digits), pattern);
  }
  return !text.empty() && (first == '?' || first == text.front()) && matches(text.substr(1), pattern);
}

/// The kind of a name: that of the first line with a pattern for it.
IntfKind plainKind(std::string_view name) {
  static const std::vector<std::pair<IntfKind, std::vector<const char*>>> table{
      {IntfKind::none, {""}},
      {IntfKind::subIntf, {"*.#"}},
      {IntfKind::ethernet, {"Ethernet#", "Ethernet#/#", "Ethernet#/#/#", "eth#", "swp#", "swp#s#", "en?*"}},
      {IntfKind::portChannel, {"PortChannel#", "bond#", "team#"}},
      {IntfKind::cpu, {"Cpu"}},
      {IntfKind::vxlanTunnel, {"VxlanTunnel#", "vxlan#"}},
      {IntfKind::mplsTrunk, {"MplsTrunk#", "mpls#"}},
      {IntfKind::other, {"*"}}};
  const auto line = std::find_if(table.begin(), table.end(), [name](const auto& candidate) {
    const auto& patterns = candidate.second;
    return std::any_of(patterns.begin(), patterns.end(), [name](const char* p) { return matches(name, p); });
  });
  return line->first;
}

constexpr int rounds = 30'000;

TEST(IntfIdRandom, nameComesBackExactly) {
  SCOPED_TRACE(seedTrace());
  Random random;
  for (int i = 0; i < rounds; ++i) {
    const std::string name = randomName(random);
    const IntfId intf(name);
    std::ostringstream out;
    out << intf;
    ASSERT_EQ(intf.stringValue(), name);
    ASSERT_EQ(out.str(), name);
    ASSERT_EQ(IntfId(intf.stringValue()), intf) << name;
    ASSERT_EQ(IntfId::fromBits(intf.bits()), intf) << name;
    ASSERT_EQ(intf.empty(), name.empty());
    ASSERT_NE(intf.bits(), ~std::uint64_t{0}) << name;
  }
}

TEST(IntfIdRandom, kindIsThatOfTheTable) {
  SCOPED_TRACE(seedTrace());
  Random random;
  std::map<IntfKind, int> seen;
  for (int i = 0; i < rounds; ++i) {
    const std::string name = randomName(random);
    ASSERT_EQ(IntfId(name).kind(), plainKind(name)) << '"' << name << '"';
    ++seen[plainKind(name)];
  }
  EXPECT_EQ(seen.size(), 8U);
}

TEST(IntfIdRandom, idsAndHashesAreEqualExactlyWhenNamesAre) {
  SCOPED_TRACE(seedTrace());
  Random random;
  std::set<std::string> names;
  std::unordered_set<IntfId> ids;
  std::set<std::uint64_t> hashes;
  for (int i = 0; i < rounds; ++i) {
    const std::string name = randomName(random);
    const bool isNew = names.insert(name).second;
    ASSERT_EQ(ids.insert(name).second, isNew) << name;
    ASSERT_EQ(hashes.insert(IntfId(name).hash()).second, isNew) << name;
  }
  EXPECT_LT(names.size(), std::size_t{rounds});
}

TEST(IntfIdRandom, collectionFindsEveryId) {
  SCOPED_TRACE(seedTrace());
  Random random;
  Mox::ValueCollection<IntfId, std::string> collection;
  std::map<std::string, std::string> model;
  for (int i = 0; i < rounds; ++i) {
    const std::string name = randomName(random);
    collection.insertOrAssign(name, name);
    model[name] = name;
  }
  EXPECT_EQ(collection.size(), model.size());
  std::map<std::string, std::string> read;
  for (const auto& [intf, name] : collection) read.emplace(std::string(intf.stringValue().view()), name);
  EXPECT_EQ(read, model);
}

}  // namespace Quill::IntfIdRandomTest
