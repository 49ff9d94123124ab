// Reading the texts of the Linux bridge tools.

#include "topo/LinuxBridge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/Random.h"
#include "tests/topo/LinuxTexts.h"

namespace Topo::LinuxBridgeTest {

using Test::bridgeLink;
using Test::capture;
using Test::errorOf;
using Test::jsonList;
using Test::mstOf;
using Test::portLink;
using Test::Random;
using Test::seedTrace;
using Test::vlansOf;
using PortState = LinuxBridge::PortState;

constexpr auto carried = LinuxPortVlans::carried;
constexpr auto pvid = LinuxPortVlans::pvid;
constexpr auto untagged = LinuxPortVlans::untagged;

/// The bridge br0 with these ports and nothing else.
[[nodiscard]] LinuxBridge bridgeWith(std::initializer_list<std::string> ports) {
  std::string links = "[" + bridgeLink("br0");
  for (const auto& port : ports) links += ',' + port;
  return readLinuxBridge(capture(links + ']', "[]"), std::nullopt);
}

/// Port swp1 of br0 with these elements of "vlans".
[[nodiscard]] LinuxPortVlans vlansOfPort(const std::string& vlans) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1")});
  return readLinuxBridge(capture(links, jsonList({vlansOf("swp1", vlans)})), std::nullopt).ports.at(0).vlans;
}

/// Port swp1 of br0, which blocks, with these elements of "mst".
[[nodiscard]] LinuxBridge::Port portWithMst(const std::string& states) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1", "blocking")});
  return readLinuxBridge(capture(links, "[]", jsonList({mstOf("swp1", states)}), "[]"), std::nullopt).ports.at(0);
}

/// br0 with these elements of the global "vlans".
[[nodiscard]] LinuxBridge bridgeWithGlobal(const std::string& vlans) {
  return readLinuxBridge(capture(jsonList({bridgeLink("br0")}), "[]", "[]", jsonList({vlansOf("br0", vlans)})),
                         std::nullopt);
}

TEST(LinuxBridge, portsAreTheLinksWhoseMasterItIs) {
  const auto bridge = bridgeWith({portLink("swp1"), R"({"ifname":"eth0","flags":["UP"],"operstate":"UP"})",
                                  portLink("swp2", "ACTIVE", "UP", "[]", "bond0"), portLink("swp3")});
  ASSERT_EQ(bridge.ports.size(), 2U);
  EXPECT_EQ(bridge.ports[0].name, "swp1");
  EXPECT_EQ(bridge.ports[1].name, "swp3");
}

TEST(LinuxBridge, isNotItsOwnPort) { EXPECT_EQ(bridgeWith({}).ports.size(), 0U); }

TEST(LinuxBridge, isNotItsOwnPortEvenIfTheKernelSaysSo) {
  auto own = bridgeLink("br0");
  own.insert(1, R"("master":"br0",)");
  EXPECT_EQ(readLinuxBridge(capture(jsonList({own}), "[]"), std::nullopt).ports.size(), 0U);
}

TEST(LinuxBridge, portsAreInNaturalOrder) {
  std::vector<std::string> names{"bond0", "swp1", "swp2", "swp2.5", "swp10", "swp10s1", "veth-a", "vx9", "vx100"};
  const auto expected = names;
  Random random;
  SCOPED_TRACE(seedTrace());
  random.shuffle(names);
  std::string links = "[" + bridgeLink("br0");
  for (const auto& name : names) links += ',' + portLink(name);
  std::vector<std::string> found;
  for (const auto& port : readLinuxBridge(capture(links + ']', "[]"), std::nullopt).ports) found.push_back(port.name);
  EXPECT_EQ(found, expected);
}

TEST(LinuxBridge, linkIsUpInOperstateUp) {
  EXPECT_TRUE(bridgeWith({portLink("swp1", "forwarding", "UP", "[]")}).ports.at(0).linkUp);
}

TEST(LinuxBridge, linkIsDownInAnyOtherOperstate) {
  for (const std::string operstate : {"DOWN", "LOWERLAYERDOWN", "DORMANT", "TESTING", "NOTPRESENT", "up", ""}) {
    EXPECT_FALSE(bridgeWith({portLink("swp1", "forwarding", operstate)}).ports.at(0).linkUp) << operstate;
  }
}

TEST(LinuxBridge, linkInOperstateUnknownIsUpWithUpAndCarrierOnly) {
  const auto isUp = [](const std::string& flags) {
    return bridgeWith({portLink("dum0", "forwarding", "UNKNOWN", flags)}).ports.at(0).linkUp;
  };
  EXPECT_TRUE(isUp(R"(["BROADCAST","NOARP","UP","LOWER_UP"])"));
  EXPECT_TRUE(isUp(R"(["LOWER_UP","UP"])"));
  EXPECT_FALSE(isUp(R"(["BROADCAST","UP"])"));
  EXPECT_FALSE(isUp(R"(["LOWER_UP"])"));
  EXPECT_FALSE(isUp("[]"));
}

TEST(LinuxBridge, linkInOperstateUnknownWithoutFlagsIsDown) {
  auto link = portLink("dum0", "forwarding", "UNKNOWN");
  const std::string flags = R"("flags":["UP","LOWER_UP"],)";
  link.erase(link.find(flags), flags.size());
  EXPECT_FALSE(bridgeWith({link}).ports.at(0).linkUp);
}

TEST(LinuxBridge, everyPortStateIsKnown) {
  const auto stateOf = [](const std::string& state) { return bridgeWith({portLink("swp1", state)}).ports.at(0).state; };
  EXPECT_EQ(stateOf("disabled"), PortState::disabled);
  EXPECT_EQ(stateOf("listening"), PortState::blocking);
  EXPECT_EQ(stateOf("learning"), PortState::learning);
  EXPECT_EQ(stateOf("forwarding"), PortState::forwarding);
  EXPECT_EQ(stateOf("blocking"), PortState::blocking);
}

TEST(LinuxBridge, portWithoutVlansCarriesNone) {
  const auto vlans = vlansOfPort("");
  EXPECT_EQ(vlans[1], 0);
  EXPECT_EQ(vlans[4094], 0);
}

TEST(LinuxBridge, vlanFlagsAreThoseOfEachVlan) {
  const auto vlans =
      vlansOfPort(R"({"vlan":1,"flags":["PVID","Egress Untagged"]},{"vlan":2,"flags":["Egress Untagged"]},
                                    {"vlan":3,"flags":["PVID"]},{"vlan":4,"flags":[]},{"vlan":5,"flags":["Master"]},{"vlan":6})");
  EXPECT_EQ(vlans[1], carried | pvid | untagged);
  EXPECT_EQ(vlans[2], carried | untagged);
  EXPECT_EQ(vlans[3], carried | pvid);
  for (const std::size_t vid : {4U, 5U, 6U}) EXPECT_EQ(vlans[vid], carried) << vid;
  EXPECT_EQ(vlans[7], 0);
}

TEST(LinuxBridge, vlanEndEndsARange) {
  const auto vlans =
      vlansOfPort(R"({"vlan":10,"vlanEnd":12,"flags":["Egress Untagged"]},{"vlan":4094,"vlanEnd":4094})");
  EXPECT_EQ(vlans[9], 0);
  for (const std::size_t vid : {10U, 11U, 12U}) EXPECT_EQ(vlans[vid], carried | untagged) << vid;
  EXPECT_EQ(vlans[13], 0);
  EXPECT_EQ(vlans[4093], 0);
  EXPECT_EQ(vlans[4094], carried);
}

TEST(LinuxBridge, rangeMaySpanAllVlans) {
  const auto vlans = vlansOfPort(R"({"vlan":1,"vlanEnd":4094})");
  for (std::uint16_t vid = 1; vid <= 4094; ++vid) ASSERT_EQ(vlans[vid], carried) << vid;
}

TEST(LinuxBridge, vlansOfAPortMayBeInSeveralElements) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1")});
  const auto vlans = jsonList({vlansOf("swp1", R"({"vlan":1})"), vlansOf("swp2", R"({"vlan":2})"),
                               vlansOf("swp1", R"({"vlan":3,"flags":["PVID"]})")});
  const auto port = readLinuxBridge(capture(links, vlans), std::nullopt).ports.at(0);
  EXPECT_EQ(port.vlans[1], carried);
  EXPECT_EQ(port.vlans[2], 0);
  EXPECT_EQ(port.vlans[3], carried | pvid);
}

TEST(LinuxBridge, mstStatesAreThoseOfEachInstance) {
  const auto port = portWithMst(R"({"msti":64,"state":"disabled"},{"msti":2,"state":"listening"},
      {"msti":3,"state":"learning"},{"msti":1,"state":"forwarding"},{"msti":63,"state":"blocking"},
      {"msti":0,"state":"forwarding"})");
  EXPECT_EQ(port.stateIn(0), PortState::forwarding);
  EXPECT_EQ(port.stateIn(1), PortState::forwarding);
  EXPECT_EQ(port.stateIn(2), PortState::blocking);
  EXPECT_EQ(port.stateIn(3), PortState::learning);
  EXPECT_EQ(port.stateIn(63), PortState::blocking);
  EXPECT_EQ(port.stateIn(64), PortState::disabled);
}

TEST(LinuxBridge, stateInInstanceZeroIsElseThatOfThePort) {
  EXPECT_EQ(portWithMst(R"({"msti":1,"state":"forwarding"})").stateIn(0), PortState::blocking);
  EXPECT_EQ(portWithMst("").stateIn(0), PortState::blocking);
}

TEST(LinuxBridge, stateInAnyOtherInstanceIsElseUnknown) {
  EXPECT_EQ(portWithMst(R"({"msti":1,"state":"forwarding"})").stateIn(2), std::nullopt);
}

TEST(LinuxBridge, mstStatesOfOtherPortsAreNotItsOwn) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1")});
  const auto mst = jsonList({mstOf("swp2", R"({"msti":7,"state":"forwarding"})")});
  const auto bridge = readLinuxBridge(capture(links, "[]", mst, "[]"), std::nullopt);
  EXPECT_EQ(bridge.ports.at(0).stateIn(7), std::nullopt);
  EXPECT_EQ(bridge.instances, (std::set<LinuxBridge::Msti>{0}));
}

TEST(LinuxBridge, vlansBelongToTheInstanceThatTheBridgeNames) {
  const auto bridge = bridgeWithGlobal(R"({"vlan":1,"vlanEnd":9,"msti":0},{"vlan":10,"vlanEnd":12,"msti":4094},
                                          {"vlan":500,"msti":64})");
  EXPECT_EQ(bridge.instanceOfVlan.at(9), 0);
  EXPECT_EQ(bridge.instanceOfVlan.at(10), 4094);
  EXPECT_EQ(bridge.instanceOfVlan.at(12), 4094);
  EXPECT_EQ(bridge.instanceOfVlan.at(13), 0);
  EXPECT_EQ(bridge.instanceOfVlan.at(500), 64);
  EXPECT_EQ(bridge.instances, (std::set<LinuxBridge::Msti>{0, 64, 4094}));
}

TEST(LinuxBridge, vlansWithoutInstanceBelongToInstanceZero) {
  const auto bridge = bridgeWithGlobal(R"({"vlan":1,"vlanEnd":4094,"mcast_snooping":1})");
  EXPECT_TRUE(std::ranges::all_of(bridge.instanceOfVlan, [](auto msti) { return msti == 0; }));
  EXPECT_EQ(bridge.instances, (std::set<LinuxBridge::Msti>{0}));
}

TEST(LinuxBridge, instancesOfOtherBridgesAreNotItsOwn) {
  const auto links = jsonList({bridgeLink("br0"), bridgeLink("br1", false)});
  const auto global = jsonList({vlansOf("br1", R"({"vlan":1,"msti":5})")});
  const auto bridge = readLinuxBridge(capture(links, "[]", "[]", global), std::nullopt);
  EXPECT_EQ(bridge.instanceOfVlan.at(1), 0);
  EXPECT_EQ(bridge.instances, (std::set<LinuxBridge::Msti>{0}));
}

TEST(LinuxBridge, theOnlyVlanAwareBridgeIsTaken) {
  const auto links = jsonList({bridgeLink("br1", false), bridgeLink("br5"), bridgeLink("br9", false)});
  EXPECT_EQ(readLinuxBridge(capture(links, "[]"), std::nullopt).name, "br5");
}

TEST(LinuxBridge, theNamedBridgeIsTaken) {
  const auto links = jsonList(
      {bridgeLink("br0"), bridgeLink("br3"), portLink("d1", "forwarding", "UP", "[]", "br3"), portLink("swp1")});
  const auto bridge = readLinuxBridge(capture(links, "[]"), "br3");
  EXPECT_EQ(bridge.name, "br3");
  ASSERT_EQ(bridge.ports.size(), 1U);
  EXPECT_EQ(bridge.ports[0].name, "d1");
}

TEST(LinuxBridge, bridgeWithoutVlanFilteringIsNotVlanAware) {
  const std::string links = R"([{"ifname":"br0","linkinfo":{"info_kind":"bridge","info_data":{}}}])";
  EXPECT_EQ(errorOf(capture(links, "[]")), "link.json: error: no VLAN-aware bridge");
}

TEST(LinuxBridge, noVlanAwareBridgeIsAnError) {
  EXPECT_EQ(errorOf(capture("[]", "[]")), "link.json: error: no VLAN-aware bridge");
  EXPECT_EQ(errorOf(capture(jsonList({bridgeLink("br1", false)}), "[]")), "link.json: error: no VLAN-aware bridge");
  EXPECT_EQ(errorOf(capture("[]", "[]"), "br0"), "link.json: error: no bridge br0; there is no VLAN-aware bridge");
}

TEST(LinuxBridge, severalVlanAwareBridgesAreAnErrorThatListsThem) {
  const auto links = jsonList({bridgeLink("br10"), bridgeLink("br9"), bridgeLink("br1", false), bridgeLink("br0")});
  EXPECT_EQ(errorOf(capture(links, "[]")),
            "link.json: error: several VLAN-aware bridges, choose one with --bridge: br0, br9, br10");
}

TEST(LinuxBridge, namedBridgeThatIsNotThereIsAnError) {
  const auto links = jsonList({bridgeLink("br0"), portLink("swp1")});
  EXPECT_EQ(errorOf(capture(links, "[]"), "br7"), "link.json: error: no bridge br7; VLAN-aware bridges are br0");
  EXPECT_EQ(errorOf(capture(links, "[]"), "swp1"), "link.json: error: no bridge swp1; VLAN-aware bridges are br0");
  EXPECT_EQ(errorOf(capture(links, "[]"), ""), "link.json: error: no bridge ; VLAN-aware bridges are br0");
}

TEST(LinuxBridge, namedBridgeThatIsNotVlanAwareIsAnError) {
  const auto links = jsonList({bridgeLink("br0"), bridgeLink("br1", false)});
  EXPECT_EQ(errorOf(capture(links, "[]"), "br1"),
            "link.json: error: the bridge br1 is not VLAN-aware; VLAN-aware bridges are br0");
}

}  // namespace Topo::LinuxBridgeTest
