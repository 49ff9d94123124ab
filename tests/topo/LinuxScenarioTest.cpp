// The commands that configure a Linux bridge.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "tests/topo/LinuxTexts.h"
#include "topo/Import.h"
#include "topo/LinuxBridge.h"

namespace Topo::LinuxScenarioTest {

using Test::bridgeLink;
using Test::capture;
using Test::jsonList;
using Test::mstOf;
using Test::portLink;
using Test::vlansOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

[[nodiscard]] std::string scenarioOf(const LinuxCapture& texts) {
  std::ostringstream out;
  writeScenario(readLinuxBridge(texts, std::nullopt), out);
  return out.str();
}

TEST(LinuxScenario, bridgeWithoutPortsHasItsInstanceOnly) {
  EXPECT_EQ(scenarioOf(capture(jsonList({bridgeLink("br0")}), "[]")),
            "topology msti0 number 0\ninstance msti0 number 0\n");
}

TEST(LinuxScenario, vlansOfTheBridgeItselfAreLeftOut) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1")});
  const auto text = scenarioOf(capture(links, jsonList({vlansOf("br0", R"({"vlan":7})")})));
  EXPECT_THAT(text, Not(HasSubstr("vlan")));
  EXPECT_THAT(text, Not(HasSubstr("map")));
}

TEST(LinuxScenario, portWithoutVlansIsInNoTopology) {
  EXPECT_EQ(scenarioOf(capture(jsonList({bridgeLink("br0"), portLink("swp1")}), "[]")),
            "interface swp1 link up model bridged\ntopology msti0 number 0\ninstance msti0 number 0\n");
}

TEST(LinuxScenario, vlansInTheSameWayShareALine) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1")});
  const auto vlans = jsonList({vlansOf("swp1", R"({"vlan":30,"vlanEnd":31},{"vlan":5,"flags":["PVID"]},{"vlan":20},
      {"vlan":4094},{"vlan":21,"vlanEnd":22},{"vlan":6,"flags":["Egress Untagged"]},
      {"vlan":2,"flags":["Egress Untagged","PVID"]})")});
  EXPECT_THAT(scenarioOf(capture(links, vlans)), HasSubstr("\nvlan 2,5-6,20-22,30-31,4094\n"
                                                           "vlan 2 port swp1 untagged pvid\n"
                                                           "vlan 5 port swp1 pvid\n"
                                                           "vlan 6 port swp1 untagged\n"
                                                           "vlan 20-22,30-31,4094 port swp1\n"
                                                           "topology "));
}

TEST(LinuxScenario, portIsInTheInstancesOfItsVlansOnly) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1"), portLink("swp2"), portLink("swp3", "blocking")});
  const auto vlans = jsonList({vlansOf("swp1", R"({"vlan":10})"), vlansOf("swp2", R"({"vlan":10},{"vlan":20})"),
                               vlansOf("swp3", R"({"vlan":1})")});
  const auto mst = jsonList({mstOf("swp1", R"({"msti":1,"state":"learning"},{"msti":2,"state":"learning"})"),
                             mstOf("swp2", R"({"msti":2,"state":"listening"},{"msti":1,"state":"disabled"})")});
  const auto global = jsonList({vlansOf("br0", R"({"vlan":20,"msti":2},{"vlan":10,"msti":1},{"vlan":30,"msti":10})")});
  EXPECT_THAT(scenarioOf(capture(links, vlans, mst, global)), EndsWith("topology msti0 number 0\n"
                                                                       "topology msti0 port swp3 state blocking\n"
                                                                       "topology msti1 number 1\n"
                                                                       "topology msti1 port swp1 state learning\n"
                                                                       "topology msti1 port swp2 state disabled\n"
                                                                       "topology msti2 number 2\n"
                                                                       "topology msti2 port swp2 state blocking\n"
                                                                       "topology msti10 number 10\n"
                                                                       "map 1 msti0\n"
                                                                       "map 10 msti1\n"
                                                                       "map 20 msti2\n"
                                                                       "instance msti0 number 0\n"
                                                                       "instance msti0 port swp3\n"
                                                                       "instance msti1 number 1\n"
                                                                       "instance msti1 port swp1\n"
                                                                       "instance msti1 port swp2\n"
                                                                       "instance msti2 number 2\n"
                                                                       "instance msti2 port swp2\n"
                                                                       "instance msti10 number 10\n"));
}

TEST(LinuxScenario, instanceWithoutVlansIsATopologyWithoutPorts) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1")});
  const auto mst = jsonList({mstOf("swp1", R"({"msti":5,"state":"forwarding"})")});
  EXPECT_THAT(scenarioOf(capture(links, "[]", mst, "[]")), EndsWith("\ntopology msti0 number 0\n"
                                                                    "topology msti5 number 5\n"
                                                                    "instance msti0 number 0\n"
                                                                    "instance msti5 number 5\n"));
}

TEST(LinuxScenario, stateThatIsNotKnownIsLeftOut) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1")});
  const auto vlans = jsonList({vlansOf("swp1", R"({"vlan":10})")});
  const auto global = jsonList({vlansOf("br0", R"({"vlan":10,"msti":1})")});
  EXPECT_THAT(scenarioOf(capture(links, vlans, "[]", global)),
              HasSubstr("\ntopology msti1 port swp1  # The capture does not tell the state.\n"));
}

TEST(LinuxScenario, namesThatAreNotPlainWordsStandInQuotes) {
  const auto nameIn = [](const std::string& name) {
    const auto text = scenarioOf(capture(jsonList({bridgeLink("br0"), portLink(name)}), "[]"));
    const auto begin = std::string_view("interface ").size();
    return text.substr(begin, text.find(" link up model bridged\n") - begin);
  };
  for (const std::string name : {"swp1", "br0.10", "Ethernet1/2", "a_b", "10", "veth:1", "A"}) {
    EXPECT_EQ(nameIn(name), name);
  }
  for (const std::string name :
       {"Ethernet1-48", "br-lan", "-", "a b", "#1", "a#b", "a,b", "'", "a'b", "\u00e4", "@", "[x]", "$HOME", "*"}) {
    EXPECT_EQ(nameIn(name), '"' + name + '"');
  }
}

TEST(LinuxScenario, quotesAndBackslashesOfANameAreEscaped) {
  const auto texts = capture(jsonList({bridgeLink("br0"), portLink(R"(a\"b\\)")}), "[]");
  EXPECT_THAT(scenarioOf(texts), HasSubstr(R"(interface "a\"b\\" link up)"));
}

TEST(LinuxScenario, namesStandInQuotesInEveryLine) {
  const auto links = jsonList({bridgeLink("br0"), portLink("eth1-2")});
  const auto vlans = jsonList({vlansOf("eth1-2", R"({"vlan":10})")});
  EXPECT_EQ(scenarioOf(capture(links, vlans)),
            "interface \"eth1-2\" link up model bridged\n"
            "vlan 10\n"
            "vlan 10 port \"eth1-2\"\n"
            "topology msti0 number 0\n"
            "topology msti0 port \"eth1-2\" state forwarding\n"
            "map 10 msti0\n"
            "instance msti0 number 0\n"
            "instance msti0 port \"eth1-2\"\n");
}

}  // namespace Topo::LinuxScenarioTest
