// The natural order of interface ids.

#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <string>
#include <vector>

#include "mox/Hash.h"
#include "quill/IntfId.h"
#include "tests/support/Random.h"

namespace Quill::IntfIdOrderTest {

using Test::Random;
using Test::seedTrace;

/// Expects that these names are in ascending order, each before all those that follow it.
void expectAscending(const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t j = 0; j < names.size(); ++j) {
      EXPECT_EQ(IntfId(names[i]) <=> IntfId(names[j]), i <=> j) << names[i] << ' ' << names[j];
      EXPECT_EQ(IntfId(names[i]) < IntfId(names[j]), i < j) << names[i] << ' ' << names[j];
    }
  }
}

TEST(IntfIdOrder, theEmptyIdIsFirst) { expectAscending({"", "\n", ".1", "1", "Ethernet0", "x"}); }

TEST(IntfIdOrder, comparesRunsOfDigitsByTheirNumber) {
  expectAscending({"Ethernet0", "Ethernet1", "Ethernet2", "Ethernet9", "Ethernet10", "Ethernet11", "Ethernet100"});
  expectAscending({"PortChannel2", "PortChannel10"});
  expectAscending({"any2thing", "any10thing"});
}

TEST(IntfIdOrder, comparesEachNumberOfAName) {
  expectAscending({"Ethernet1/2", "Ethernet1/10", "Ethernet2/1", "Ethernet10/1"});
  expectAscending({"Ethernet1/1/2", "Ethernet1/1/10", "Ethernet1/2/1", "Ethernet1/10/1", "Ethernet2/1/1"});
  expectAscending({"swp1s2", "swp1s10", "swp2s0", "swp10s0"});
  expectAscending({"enp2s10", "enp10s1", "enp10s2"});
}

TEST(IntfIdOrder, comparesNumbersOfAnyLength) {
  expectAscending({"Ethernet4294967295", "Ethernet4294967296", "Ethernet18446744073709551615",
                   "Ethernet18446744073709551616", "Ethernet99999999999999999999"});
  expectAscending({"Ethernet1/65535", "Ethernet1/65536", "Ethernet2/1"});
  expectAscending({"Ethernet1/1/1023", "Ethernet1/1/1024", "Ethernet1/2/1"});
  expectAscending({"eth0.8388606", "eth0.8388607", "eth0.4294967295", "eth0.4294967296", "eth1"});
}

TEST(IntfIdOrder, subIntfsFollowTheirParent) {
  expectAscending({"Ethernet1", "Ethernet1.0", "Ethernet1.1", "Ethernet1.2", "Ethernet1.10", "Ethernet2"});
  expectAscending({"Ethernet1", "Ethernet1.5", "Ethernet1/1", "Ethernet1/1.5", "Ethernet1/1/1", "Ethernet1/1/1.5"});
  expectAscending({"Cpu", "Cpu.0", "Cpu.1", "Cpu1"});
  expectAscending({"any", "any.2", "any.10", "any.10.1", "anyx"});
}

TEST(IntfIdOrder, leadingZerosDecideLast) {
  expectAscending({"Ethernet0", "Ethernet00", "Ethernet01", "Ethernet1", "Ethernet02", "Ethernet2"});
  expectAscending({"Ethernet1/01", "Ethernet1/1", "Ethernet01/2", "Ethernet1/2"});
  expectAscending({"a01b1", "a1b01", "a1b1", "a01b2"});
  expectAscending({"a001", "a01", "a1", "a001x", "a01x", "a1x"});
}

TEST(IntfIdOrder, comparesOtherCharactersByByte) {
  expectAscending({"A", "B", "Z", "_", "a", "b", "z", "\x7F", "\x80", "\xFF"});
  expectAscending({"a ", "a-", "a.", "a/", "a0", "a9", "a:", "aa"});
  expectAscending({"Cpu", "Ethernet1", "Loopback1", "MplsTrunk1", "PortChannel1", "Vlan1", "VxlanTunnel1", "bond1",
                   "eth1", "mpls1", "swp1", "team1", "vxlan1"});
}

TEST(IntfIdOrder, aPrefixIsFirst) { expectAscending({"a", "a1", "a1b", "a1b2", "ab"}); }

TEST(IntfIdOrder, isThatOfKeys) {
  EXPECT_TRUE(Mox::keyLessThan(IntfId("Ethernet2"), IntfId("Ethernet10")));
  EXPECT_FALSE(Mox::keyLessThan(IntfId("Ethernet10"), IntfId("Ethernet2")));
  EXPECT_FALSE(Mox::keyLessThan(IntfId("Ethernet2"), IntfId("Ethernet2")));
}

/// Natural order, plainly: a name is a sequence of numbers and bytes; the bytes of the whole decide last.
class Reference {
 public:
  explicit Reference(std::string name) : name_(std::move(name)) {
    for (std::size_t i = 0; i < name_.size();) {
      const std::size_t end = std::min(name_.find_first_not_of("0123456789", i), name_.size());
      if (end == i) {
        parts_.emplace_back(static_cast<unsigned char>(name_[i++]), std::string());
        continue;
      }
      std::string number = name_.substr(i, end - i);
      number.erase(0, number.find_first_not_of('0'));
      // Numbers as texts of one length compare as numbers; where one meets another byte, digits are '0' to '9'.
      parts_.emplace_back('0', std::string(100 - number.size(), '0') + number);
      i = end;
    }
  }

  friend std::strong_ordering operator<=>(const Reference& a, const Reference& b) {
    if (const auto order = a.parts_ <=> b.parts_; std::is_neq(order)) return order;
    return a.name_ <=> b.name_;
  }

 private:
  std::string name_;
  std::vector<std::pair<unsigned char, std::string>> parts_;
};

/// A short name of pieces that are likely to meet.
std::string randomName(Random& random) {
  static const std::vector<std::string> pieces{"Ethernet", "eth",  "swp", "s", "/",  "/",   ".",          ".",
                                               "a",        "en",   "Cpu", "-", "01", "00",  "4294967296", "65536",
                                               "1024",     "\xC3", ":",   "0", "9",  "999", "PortChannel"};
  std::string name = random.percent(60) ? pieces[random.below(3)] : std::string();
  for (std::size_t n = random.below(6); n > 0; --n) {
    name += random.percent(50) ? std::to_string(random.below(random.percent(50) ? 4 : 200))
                               : pieces[random.below(pieces.size())];
  }
  return name;
}

TEST(IntfIdOrder, agreesWithPlainReferenceOnRandomNames) {
  SCOPED_TRACE(seedTrace());
  Random random;
  for (int i = 0; i < 100'000; ++i) {
    const std::string a = randomName(random);
    const std::string b = random.percent(20) ? a + randomName(random) : randomName(random);
    ASSERT_EQ(IntfId(a) <=> IntfId(b), Reference(a) <=> Reference(b)) << '"' << a << "\" \"" << b << '"';
  }
}

TEST(IntfIdOrder, isStrictAndTotalOnRandomNames) {
  SCOPED_TRACE(seedTrace());
  Random random;
  std::vector<IntfId> ids;
  ids.reserve(60);
  for (int i = 0; i < 60; ++i) ids.emplace_back(randomName(random));
  for (const IntfId a : ids) {
    for (const IntfId b : ids) {
      ASSERT_EQ(std::is_eq(a <=> b), a == b) << a << ' ' << b;
      ASSERT_EQ(std::is_lt(a <=> b), std::is_gt(b <=> a)) << a << ' ' << b;
      for (const IntfId c : ids) {
        ASSERT_TRUE(!(a < b && b < c) || a < c) << a << ' ' << b << ' ' << c;
      }
    }
  }
}

TEST(IntfIdOrder, sortsAsThePlainReference) {
  SCOPED_TRACE(seedTrace());
  Random random;
  std::vector<std::string> names;
  names.reserve(2'000);
  for (int i = 0; i < 2'000; ++i) names.push_back(randomName(random));
  std::vector<IntfId> ids(names.begin(), names.end());
  std::sort(ids.begin(), ids.end());
  std::sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return Reference(a) < Reference(b); });
  for (std::size_t i = 0; i < names.size(); ++i) ASSERT_EQ(ids[i].stringValue(), names[i]) << i;
}

}  // namespace Quill::IntfIdOrderTest
