// Texts that are not what the Linux bridge tools print: the error names the file and the place.

#include <gtest/gtest.h>

#include <string>

#include "tests/topo/LinuxTexts.h"
#include "topo/LinuxBridge.h"

namespace Topo::LinuxCaptureErrorTest {

using Test::bridgeLink;
using Test::capture;
using Test::errorOf;
using Test::jsonList;
using Test::mstOf;
using Test::portLink;
using Test::vlansOf;

[[nodiscard]] std::string goodLinks() { return jsonList({bridgeLink("br0"), portLink("swp1")}); }

[[nodiscard]] std::string errorOfLink(const std::string& text) { return errorOf(capture(text, "[]")); }
[[nodiscard]] std::string errorOfVlan(const std::string& text) { return errorOf(capture(goodLinks(), text)); }
[[nodiscard]] std::string errorOfMst(const std::string& text) {
  return errorOf(capture(goodLinks(), "[]", text, "[]"));
}
[[nodiscard]] std::string errorOfGlobal(const std::string& text) {
  return errorOf(capture(goodLinks(), "[]", "[]", text));
}

/// The links with `from`, which must be in them, replaced.
[[nodiscard]] std::string errorOfLinkWith(const std::string& from, const std::string& to) {
  auto links = goodLinks();
  const auto port = links.find("swp1");
  const auto place = links.find(from, port - 11);
  if (place == std::string::npos) return "the links have no " + from;
  return errorOfLink(links.replace(place, from.size(), to));
}

TEST(LinuxCaptureError, emptyListsAreNone) {
  EXPECT_EQ(errorOfVlan("[]"), "");
  EXPECT_EQ(errorOfMst("[]"), "");
  EXPECT_EQ(errorOfGlobal("[]"), "");
}

TEST(LinuxCaptureError, emptyTextIsNotJson) {
  EXPECT_EQ(
      errorOfLink(""),
      "link.json:1: error: byte 1: syntax error while parsing value - unexpected end of input; expected '[', '{', "
      "or a literal");
}

TEST(LinuxCaptureError, namesEachFile) {
  EXPECT_TRUE(errorOfVlan("").starts_with("vlan.json:1: error: byte 1: "));
  EXPECT_TRUE(errorOfMst("").starts_with("mst.json:1: error: byte 1: "));
  EXPECT_TRUE(errorOfGlobal("").starts_with("vlan-global.json:1: error: byte 1: "));
}

TEST(LinuxCaptureError, namesLineAndByteOfTheText) {
  EXPECT_EQ(errorOfVlan("[\n  {},\n  oops]"),
            "vlan.json:3: error: byte 11: syntax error while parsing value - invalid literal");
}

TEST(LinuxCaptureError, doesNotRepeatTheText) {
  EXPECT_EQ(errorOfVlan(std::string(1000, '[') + 'x'),
            "vlan.json:1: error: byte 1001: syntax error while parsing value - invalid literal");
  EXPECT_EQ(errorOfVlan("[\"a; expected b\" 1]"),
            "vlan.json:1: error: byte 18: syntax error while parsing array - unexpected number literal; expected ']'");
}

TEST(LinuxCaptureError, textThatIsCutShortIsNotJson) {
  const auto links = goodLinks();
  for (std::size_t size = 0; size < links.size(); ++size) {
    const auto error = errorOfLink(links.substr(0, size));
    const auto place = size + 1;
    EXPECT_TRUE(error.starts_with("link.json:1: error: byte " + std::to_string(place) + ": ")) << size << ' ' << error;
  }
  EXPECT_EQ(errorOfLink(links), "");
}

TEST(LinuxCaptureError, textAfterTheValueIsNotJson) {
  EXPECT_TRUE(errorOfVlan("[]\nDump terminated").starts_with("vlan.json:2: error: byte 4: ")) << errorOfVlan("[]\nx");
}

TEST(LinuxCaptureError, badEncodingIsNotJson) {
  EXPECT_TRUE(errorOfVlan("[\"\xFF\"]").starts_with("vlan.json:1: error: byte 3: ")) << errorOfVlan("[\"\xFF\"]");
}

TEST(LinuxCaptureError, numberThatIsTooLargeHasAPlace) {
  EXPECT_EQ(errorOfVlan("[\n1e999]"), "vlan.json:2: error: byte 7: number overflow parsing '1e999'");
}

TEST(LinuxCaptureError, deepNestingIsNoHarm) {
  const std::size_t depth = 200'000;
  EXPECT_EQ(errorOfVlan(std::string(depth, '[') + std::string(depth, ']')),
            "vlan.json: error: /0: expected an object, found an array");
}

TEST(LinuxCaptureError, isOneLine) {
  EXPECT_EQ(errorOfLinkWith("swp1", "a\\u0000\\n\\u007fb"),
            "link.json: error: /1/ifname: a scenario cannot hold the name a\\x00\\x0a\\x7fb");
}

TEST(LinuxCaptureError, everyTextIsAnArray) {
  EXPECT_EQ(errorOfLink("{}"), "link.json: error: expected an array, found an object");
  EXPECT_EQ(errorOfVlan("1"), "vlan.json: error: expected an array, found a number");
  EXPECT_EQ(errorOfMst("\"\""), "mst.json: error: expected an array, found text");
  EXPECT_EQ(errorOfGlobal("null"), "vlan-global.json: error: expected an array, found null");
  EXPECT_EQ(errorOfGlobal("true"), "vlan-global.json: error: expected an array, found a truth value");
}

TEST(LinuxCaptureError, everyElementIsAnObjectWithAName) {
  EXPECT_EQ(errorOfLink("[1]"), "link.json: error: /0: expected an object, found a number");
  EXPECT_EQ(errorOfLink("[{}]"), "link.json: error: /0: \"ifname\" is missing");
  EXPECT_EQ(errorOfVlan("[[]]"), "vlan.json: error: /0: expected an object, found an array");
  EXPECT_EQ(errorOfVlan(R"([{"vlans":[]}])"), "vlan.json: error: /0: \"ifname\" is missing");
  EXPECT_EQ(errorOfVlan(R"([{"ifname":7,"vlans":[]}])"), "vlan.json: error: /0/ifname: expected text, found a number");
  EXPECT_EQ(errorOfMst(R"([{"mst":[]}])"), "mst.json: error: /0: \"ifname\" is missing");
  EXPECT_EQ(errorOfGlobal(R"([{"vlans":[]}])"), "vlan-global.json: error: /0: \"ifname\" is missing");
}

TEST(LinuxCaptureError, membersOfALinkHaveTheirTypes) {
  EXPECT_EQ(errorOfLinkWith("\"br0\"", "0"), "link.json: error: /1/master: expected text, found a number");
  EXPECT_EQ(errorOfLinkWith("\"UP\",\"linkinfo\"", "[],\"linkinfo\""),
            "link.json: error: /1/operstate: expected text, found an array");
  EXPECT_EQ(errorOfLinkWith("\"operstate\"", "\"other\""), "link.json: error: /1: \"operstate\" is missing");
  EXPECT_EQ(errorOfLinkWith("[\"UP\"", "[{}"), "link.json: error: /1/flags/0: expected text, found an object");
  EXPECT_EQ(errorOfLinkWith("[\"UP\",\"LOWER_UP\"]", "3"),
            "link.json: error: /1/flags: expected an array, found a number");
  EXPECT_EQ(errorOfLinkWith("\"veth\"", "{}"),
            "link.json: error: /1/linkinfo/info_kind: expected text, found an object");
}

TEST(LinuxCaptureError, portHasAState) {
  EXPECT_EQ(errorOfLinkWith("\"linkinfo\"", "\"other\""), "link.json: error: /1: \"linkinfo\" is missing");
  EXPECT_EQ(errorOfLinkWith("\"info_slave_data\"", "\"other\""),
            "link.json: error: /1/linkinfo: \"info_slave_data\" is missing");
  EXPECT_EQ(errorOfLinkWith("\"state\"", "\"other\""),
            "link.json: error: /1/linkinfo/info_slave_data: \"state\" is missing");
  EXPECT_EQ(errorOfLinkWith("\"forwarding\"", "3"),
            "link.json: error: /1/linkinfo/info_slave_data/state: expected text, found a number");
  EXPECT_EQ(errorOfLinkWith("\"forwarding\"", "\"ACTIVE\""),
            "link.json: error: /1/linkinfo/info_slave_data/state: expected a port state, found \"ACTIVE\"");
}

TEST(LinuxCaptureError, bridgeTellsWhetherItFilters) {
  EXPECT_EQ(errorOfLink(R"([{"ifname":"br0","linkinfo":{"info_kind":"bridge"}}])"),
            "link.json: error: /0/linkinfo: \"info_data\" is missing");
  EXPECT_EQ(errorOfLink(R"([{"ifname":"br0","linkinfo":{"info_kind":"bridge","info_data":{"vlan_filtering":2}}}])"),
            "link.json: error: /0/linkinfo/info_data/vlan_filtering: expected a number from 0 to 1, found 2");
  EXPECT_EQ(errorOfLink(R"([{"ifname":"br0","linkinfo":{"info_kind":"bridge","info_data":{"vlan_filtering":"on"}}}])"),
            "link.json: error: /0/linkinfo/info_data/vlan_filtering: expected a number, found text");
}

TEST(LinuxCaptureError, namesOfPortsAreDistinct) {
  EXPECT_EQ(errorOfLink(jsonList({bridgeLink("br0"), portLink("swp1"), portLink("swp2"), portLink("swp1")})),
            "link.json: error: /3/ifname: a second port swp1");
}

TEST(LinuxCaptureError, namesOfPortsFitAScenario) {
  EXPECT_EQ(errorOfLinkWith("swp1", ""), "link.json: error: /1/ifname: a port without a name");
  EXPECT_EQ(errorOfLinkWith("swp1", R"(a\"b)"), "");
}

TEST(LinuxCaptureError, namesOfOtherLinksMayBeAnything) {
  const auto other = portLink(R"(a\"\nb)", "forwarding", "UP", "[]", "br1");
  EXPECT_EQ(errorOfLink(jsonList({bridgeLink("br0"), other, other})), "");
}

TEST(LinuxCaptureError, vlansAreAnArrayOfObjects) {
  EXPECT_EQ(errorOfVlan(R"([{"ifname":"swp1"}])"), "vlan.json: error: /0: \"vlans\" is missing");
  EXPECT_EQ(errorOfVlan(R"([{"ifname":"swp1","vlans":{}}])"),
            "vlan.json: error: /0/vlans: expected an array, found an object");
  EXPECT_EQ(errorOfVlan(jsonList({vlansOf("swp1", "10")})),
            "vlan.json: error: /0/vlans/0: expected an object, found a number");
  EXPECT_EQ(errorOfVlan(jsonList({vlansOf("swp2", ""), vlansOf("swp1", R"({"vlan":1},{"vid":2})")})),
            "vlan.json: error: /1/vlans/1: \"vlan\" is missing");
}

TEST(LinuxCaptureError, vlanIdsAreInRange) {
  const auto errorOfVid = [](const std::string& vid) {
    return errorOfVlan(jsonList({vlansOf("swp1", R"({"vlan":)" + vid + '}')}));
  };
  const std::string place = "vlan.json: error: /0/vlans/0/vlan: expected a number";
  EXPECT_EQ(errorOfVid("1"), "");
  EXPECT_EQ(errorOfVid("4094"), "");
  EXPECT_EQ(errorOfVid("0"), place + " from 1 to 4094, found 0");
  EXPECT_EQ(errorOfVid("4095"), place + " from 1 to 4094, found 4095");
  EXPECT_EQ(errorOfVid("-1"), place + " from 1 to 4094, found -1");
  EXPECT_EQ(errorOfVid("65537"), place + " from 1 to 4094, found 65537");
  EXPECT_EQ(errorOfVid("18446744073709551615"), place + " from 1 to 4094, found 18446744073709551615");
  EXPECT_EQ(errorOfVid("1.5"), place + " from 1 to 4094, found 1.5");
  EXPECT_EQ(errorOfVid("\"1\""), place + ", found text");
}

TEST(LinuxCaptureError, rangesAscend) {
  const auto errorOfEnd = [](const std::string& end) {
    return errorOfVlan(jsonList({vlansOf("swp1", R"({"vlan":10,"vlanEnd":)" + end + '}')}));
  };
  const std::string place = "vlan.json: error: /0/vlans/0/vlanEnd: expected a number";
  EXPECT_EQ(errorOfEnd("10"), "");
  EXPECT_EQ(errorOfEnd("9"), place + " from 10 to 4094, found 9");
  EXPECT_EQ(errorOfEnd("4095"), place + " from 10 to 4094, found 4095");
  EXPECT_EQ(errorOfEnd("null"), place + ", found null");
}

TEST(LinuxCaptureError, flagsOfAVlanAreTexts) {
  EXPECT_EQ(errorOfVlan(jsonList({vlansOf("swp1", R"({"vlan":1,"flags":["PVID",2]})")})),
            "vlan.json: error: /0/vlans/0/flags/1: expected text, found a number");
  EXPECT_EQ(errorOfVlan(jsonList({vlansOf("swp1", R"({"vlan":1,"flags":"PVID"})")})),
            "vlan.json: error: /0/vlans/0/flags: expected an array, found text");
}

TEST(LinuxCaptureError, vlansOfOtherPortsAreChecked) {
  EXPECT_EQ(errorOfVlan(jsonList({vlansOf("other", R"({"vlan":0})")})),
            "vlan.json: error: /0/vlans/0/vlan: expected a number from 1 to 4094, found 0");
}

TEST(LinuxCaptureError, mstStatesHaveInstanceAndState) {
  EXPECT_EQ(errorOfMst(R"([{"ifname":"swp1"}])"), "mst.json: error: /0: \"mst\" is missing");
  EXPECT_EQ(errorOfMst(jsonList({mstOf("swp1", R"({"state":"learning"})")})),
            "mst.json: error: /0/mst/0: \"msti\" is missing");
  EXPECT_EQ(errorOfMst(jsonList({mstOf("swp1", R"({"msti":1})")})), "mst.json: error: /0/mst/0: \"state\" is missing");
  EXPECT_EQ(errorOfMst(jsonList({mstOf("swp1", R"({"msti":4095,"state":"learning"})")})),
            "mst.json: error: /0/mst/0/msti: expected a number from 0 to 4094, found 4095");
  EXPECT_EQ(errorOfMst(jsonList({mstOf("swp1", R"({"msti":1,"state":"learning"},{"msti":2,"state":"none"})")})),
            "mst.json: error: /0/mst/1/state: expected a port state, found \"none\"");
  EXPECT_EQ(errorOfMst(jsonList({mstOf("other", R"({"msti":1,"state":1})")})),
            "mst.json: error: /0/mst/0/state: expected text, found a number");
}

TEST(LinuxCaptureError, instancesOfVlansAreNumbers) {
  EXPECT_EQ(errorOfGlobal(jsonList({vlansOf("br0", R"({"vlan":1,"msti":"1"})")})),
            "vlan-global.json: error: /0/vlans/0/msti: expected a number, found text");
  EXPECT_EQ(errorOfGlobal(jsonList({vlansOf("br9", R"({"vlan":1,"msti":4095})")})),
            "vlan-global.json: error: /0/vlans/0/msti: expected a number from 0 to 4094, found 4095");
  EXPECT_EQ(errorOfGlobal(jsonList({vlansOf("br0", R"({"vlan":1,"vlanEnd":0})")})),
            "vlan-global.json: error: /0/vlans/0/vlanEnd: expected a number from 1 to 4094, found 0");
}

}  // namespace Topo::LinuxCaptureErrorTest
