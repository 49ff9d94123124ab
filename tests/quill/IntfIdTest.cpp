#include "quill/IntfId.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "mox/Collection.h"
#include "mox/Exception.h"

namespace Quill::IntfIdTest {

static_assert(sizeof(IntfId) == 2 * sizeof(std::uint32_t));
static_assert(std::is_trivially_copyable_v<IntfId>);
static_assert(IntfId().empty() && IntfId().kind() == IntfKind::none);

std::string printed(IntfId intf) {
  std::ostringstream out;
  out << intf;
  return out.str();
}

TEST(IntfId, isEmptyByDefault) {
  const IntfId intf;
  EXPECT_TRUE(intf.empty());
  EXPECT_EQ(intf.word0(), 0U);
  EXPECT_EQ(intf.word1(), 0U);
  EXPECT_EQ(intf.bits(), 0U);
  EXPECT_EQ(intf.stringValue(), "");
  EXPECT_EQ(printed(intf), "");
}

TEST(IntfId, ofEmptyTextIsTheEmptyId) {
  EXPECT_EQ(IntfId(""), IntfId());
  EXPECT_EQ(IntfId(std::string()), IntfId());
  EXPECT_EQ(IntfId(Mox::String()), IntfId());
}

TEST(IntfId, ofAnyNameIsNotEmpty) {
  for (const char* name : {"Ethernet1", "eth0", "Cpu", "Vlan0", "x", ".", " ", ".0"}) {
    EXPECT_FALSE(IntfId(name).empty()) << name;
  }
}

TEST(IntfId, isTheSameFromEveryKindOfText) {
  for (const std::string name : {"Ethernet3/1", "some name"}) {
    const IntfId intf(name.c_str());
    EXPECT_EQ(IntfId(name), intf);
    EXPECT_EQ(IntfId(std::string_view(name)), intf);
    EXPECT_EQ(IntfId(Mox::String(name)), intf);
  }
}

TEST(IntfId, convertsFromText) {
  const auto identity = [](IntfId intf) { return intf; };
  EXPECT_EQ(identity("Ethernet1"), IntfId("Ethernet1"));
  EXPECT_EQ(identity(Mox::String("Ethernet1")), IntfId("Ethernet1"));
}

TEST(IntfId, printsAsItsName) {
  EXPECT_EQ(printed("Ethernet1/2/3.100"), "Ethernet1/2/3.100");
  EXPECT_EQ(printed("no known form"), "no known form");
}

TEST(IntfId, keepsEveryByteOfItsName) {
  const std::string zero("a\0b", 3);
  EXPECT_EQ(IntfId(zero).stringValue(), zero);
  EXPECT_NE(IntfId(zero), IntfId("a"));
  EXPECT_EQ(IntfId(zero + ".1").stringValue(), zero + ".1");
  const std::string high = "\xC3\xA9th\xFF";
  EXPECT_EQ(IntfId(high).stringValue(), high);
}

TEST(IntfId, ofLongNameKeepsIt) {
  const std::string name(100'000, 'x');
  EXPECT_EQ(IntfId(name).stringValue(), name);
  EXPECT_EQ(IntfId(name), IntfId(name));
  EXPECT_NE(IntfId(name), IntfId(name + 'x'));
}

TEST(IntfId, namesThatDifferInAnythingDiffer) {
  std::istringstream names(
      ",Ethernet1,Ethernet2,Ethernet01,Ethernet1/1,Ethernet1/1/1,Ethernet1.1,ethernet1,Ethernet1 ,"
      " Ethernet1,Ethernet1/01,Ethernet1.01,eth1,swp1,swp1s1,swp1s1.1,en1,PortChannel1,bond1,team1,Cpu,"
      "Cpu.1,VxlanTunnel1,vxlan1,MplsTrunk1,mpls1,Vlan1,Loopback1,Ethernet0,Ethernet0/0,Ethernet0/0/0,eth0,"
      "swp0,swp0s0,PortChannel0,bond0,team0,Cpu.0,VxlanTunnel0,vxlan0,MplsTrunk0,mpls0,Vlan0,Loopback0,"
      "Loopback0.0,Ethernet0.0,Ethernet0/0.0,0,00,Ethernet65,Ethernet65536,Ethernet1/0/0,Ethernet0/1/0,"
      "Ethernet0/0/1,Ethernet1/0,Ethernet0/1,Ethernet-1,Ethernet+1,Ethernet0x1,Ethernet1/1.1,Ethernet1.1.1,"
      "Ethernet,.1");
  std::set<std::uint64_t> bits;
  for (std::string name; std::getline(names, name, ',');) {
    EXPECT_TRUE(bits.insert(IntfId(name).bits()).second) << name;
  }
  EXPECT_EQ(bits.size(), 63U);
}

TEST(IntfId, isBuiltAgainFromItsBits) {
  for (const char* name : {"", "Ethernet1", "Ethernet1/2/3.4", "Cpu", "anything", "anything.5"}) {
    const IntfId intf(name);
    EXPECT_EQ(IntfId::fromBits(intf.bits()), intf);
    EXPECT_EQ(IntfId::fromBits(intf.bits()).stringValue(), name);
  }
}

TEST(IntfId, bitsThatNoNameHasGivenAreRefused) {
  const std::uint64_t interned = IntfId("a name of no known form").bits();
  for (const std::uint64_t bits :
       {interned + 1'000'000, interned | std::uint64_t{1} << 33, ~std::uint64_t{0}, std::uint64_t{0x1F} << 55,
        IntfId("Cpu").bits() + 1, IntfId("Ethernet1").bits() ^ std::uint64_t{3} << 60}) {
    EXPECT_THROW(static_cast<void>(IntfId::fromBits(bits)), Mox::RangeException) << std::hex << bits;
  }
}

TEST(IntfId, bitsAreTheTwoWords) {
  for (const char* name : {"Ethernet1/2/3.4", "Vlan4294967295", "anything"}) {
    const IntfId intf(name);
    EXPECT_EQ(intf.bits(), std::uint64_t{intf.word0()} << 32 | intf.word1());
  }
}

TEST(IntfId, bitsAreNeverAllOnes) {
  // The greatest numbers that each form can hold, and sub-interfaces about the limit.
  for (const std::string parent :
       {"Ethernet4294967295", "Ethernet65535/65535", "Ethernet4095/1023/1023", "eth4294967295", "swp4294967295",
        "swp65535s65535", "PortChannel4294967295", "bond4294967295", "team4294967295", "Cpu", "VxlanTunnel4294967295",
        "vxlan4294967295", "MplsTrunk4294967295", "mpls4294967295", "Vlan4294967295", "Loopback4294967295", "x"}) {
    for (const char* sub : {"", ".8388606", ".8388607", ".4294967295"}) {
      EXPECT_NE(IntfId(parent + sub).word0(), std::numeric_limits<std::uint32_t>::max()) << parent << sub;
    }
  }
}

TEST(IntfId, hashesUnderTheProcessSeed) {
  const Mox::HashSeed seed(Mox::hashSeed32());
  for (const char* name : {"", "Ethernet1", "Ethernet2", "anything"}) {
    const IntfId intf(name);
    EXPECT_EQ(intf.hash(), seed.hash(intf.bits()));
    EXPECT_EQ(std::hash<IntfId>()(intf), intf.hash());
  }
}

TEST(IntfId, namesStayInternedForGood) {
  std::vector<IntfId> ids;
  const auto name = [](std::size_t i) { return "interned for good " + std::to_string(i); };
  for (std::size_t i = 0; i < 10'000; ++i) ids.emplace_back(name(i));
  for (std::size_t i = 0; i < ids.size(); ++i) {
    EXPECT_EQ(ids[i].stringValue(), name(i));
    EXPECT_EQ(IntfId(name(i)), ids[i]);
  }
}

TEST(IntfId, isKeyOfCollections) {
  Mox::ValueCollection<IntfId, std::string> names;
  const std::vector<const char*> all{"", "Ethernet1", "Ethernet1/2", "eth0.5", "Cpu", "anything", "PortChannel7"};
  for (const char* name : all) EXPECT_TRUE(names.insertOrAssign(name, name));
  EXPECT_EQ(names.size(), all.size());
  for (const char* name : all) {
    ASSERT_NE(names.find(name), nullptr) << name;
    EXPECT_EQ(*names.find(name), name);
  }
  EXPECT_EQ(names.find("Ethernet2"), nullptr);
  EXPECT_TRUE(names.erase(""));
  EXPECT_FALSE(names.has(""));
  EXPECT_TRUE(names.has("Ethernet1"));
}

TEST(IntfId, collectionsIterateInOrderOfItsHash) {
  Mox::SetCollection<IntfId> set;
  for (int i = 0; i < 100; ++i) {
    set.insertOrAssign("Ethernet" + std::to_string(i), {});
    set.insertOrAssign("any" + std::to_string(i), {});
  }
  std::vector<std::uint64_t> hashes;
  for (const auto& [intf, present] : set) hashes.push_back(intf.hash());
  EXPECT_EQ(hashes.size(), 200U);
  EXPECT_TRUE(std::is_sorted(hashes.begin(), hashes.end()));
}

TEST(IntfId, isKeyOfStandardContainers) {
  std::unordered_map<IntfId, int> hashed{{"Ethernet1", 1}, {"anything", 2}, {"", 3}};
  EXPECT_EQ(hashed.at("anything"), 2);
  EXPECT_EQ(hashed.at(""), 3);
  EXPECT_FALSE(hashed.contains("Ethernet2"));

  const std::map<IntfId, int> ordered{{"Ethernet10", 3}, {"Ethernet9", 2}, {"", 1}};
  int last = 0;
  for (const auto& [intf, place] : ordered) EXPECT_EQ(place, ++last) << intf;
}

}  // namespace Quill::IntfIdTest
