// `explain`: the facts that decide whether a port forwards a VLAN, and the first one that prevents it.

#include "tests/topo/Explained.h"

namespace Topo::ExplainTest {

using Test::configuration;
using Test::errorOf;
using Test::Explained;
using Test::hindering;
using Test::running;
using Test::runningOnStatus;
using Test::runScenario;

TEST(Explain, asTextForAPortThatForwards) {
  EXPECT_EQ(runScenario(running + "start view\nexplain vlan 10 port Ethernet1\n").out,
            "VLAN 10, port Ethernet1\n"
            "  library        createStatus, watches the instance status\n"
            "  vlan           configured, external\n"
            "  mapping        to topology A\n"
            "  topology       configured, number 1\n"
            "  presence rule  wanted: the configuration is enough\n"
            "  presence       present\n"
            "  registration   the library has put the VLAN into it\n"
            "  membership     own, tagged\n"
            "  filter         none\n"
            "  published      in topology A\n"
            "  topology port  configured, forwarding, flush 0\n"
            "  port status    in the instance status\n"
            "  link gate      open: no plain status is watched\n"
            "  active         yes\n"
            "  state          forwarding\n"
            "  forced         off\n"
            "  direction      both\n"
            "  view           in the VLAN through topology A, not blocked\n"
            "  pending        nothing\n"
            "Ethernet1 forwards VLAN 10.\n");
}

TEST(Explain, asTextMarksTheFirstHindranceOnly) {
  EXPECT_EQ(
      runScenario(running + "start view\ntopology A port Ethernet1 state blocking flush 3\nvlan 10 port Ethernet1 "
                            "untagged pvid direction none\nsettle\nexplain vlan 10 port Ethernet1\n")
          .out,
      "VLAN 10, port Ethernet1\n"
      "  library        createStatus, watches the instance status\n"
      "  vlan           configured, external\n"
      "  mapping        to topology A\n"
      "  topology       configured, number 1\n"
      "  presence rule  wanted: the configuration is enough\n"
      "  presence       present\n"
      "  registration   the library has put the VLAN into it\n"
      "  membership     own, untagged, pvid\n"
      "  filter         none\n"
      "  published      in topology A\n"
      "  topology port  configured, blocking, flush 3\n"
      "  port status    in the instance status\n"
      "  link gate      open: no plain status is watched\n"
      "  active         yes\n"
      "> state          blocking\n"
      "  forced         off\n"
      "  direction      none\n"
      "  view           in the VLAN through topology A, blocked\n"
      "  pending        nothing\n"
      "Ethernet1 does not forward VLAN 10: state blocking.\n");
}

TEST(Explain, asJson) {
  const std::string json = R"({"vlan":20,"port":"Ethernet1","forwards":false,"pending":false,)"
                           R"("verdict":"Ethernet1 does not forward VLAN 20: library not running",)"
                           R"("facts":[{"fact":"library","value":"not running","hinders":true,"first":true},)"
                           R"({"fact":"vlan","value":"not configured","hinders":true,"first":false},)"
                           R"({"fact":"mapping","value":"to no topology","hinders":true,"first":false},)"
                           R"({"fact":"forced","value":"off","hinders":false,"first":false},)"
                           R"({"fact":"view","value":"not running","hinders":false,"first":false}]})"
                           "\n";
  EXPECT_EQ(runScenario("explain vlan 20 port Ethernet1 json\n").out, json);
  EXPECT_EQ(runScenario("explain vlan 20 port Ethernet1\n", {"--json"}).out, json);
}

TEST(Explain, isAskedForAVlanAndAPort) {
  EXPECT_EQ(errorOf("explain"), "-:1: error: expected vlan, found the end of the line\n");
  EXPECT_EQ(errorOf("explain vlan 10"), "-:1: error: expected port, found the end of the line\n");
  EXPECT_EQ(errorOf("explain vlan 10 port"), "-:1: error: expected an interface, found the end of the line\n");
  EXPECT_EQ(errorOf("explain vlan 10-11 port Ethernet1"), "-:1: error: expected a VLAN number, found '10-11'\n");
  EXPECT_EQ(errorOf("explain vlan 10 port Ethernet1 now"), "-:1: error: expected the end of the line, found 'now'\n");
}

TEST(Explain, libraryDoesNotRun) {
  EXPECT_EQ(hindering("library", Explained(configuration)), "not running");
  EXPECT_EQ(hindering("library", Explained(running + "stop library\nno vlan 10\n")), "the hindrance is ''")
      << "what is published stays";
}

TEST(Explain, libraryWaitsForItsInterfaces) {
  EXPECT_EQ(hindering("library", Explained(configuration + "start library watch status interfaces later\n")),
            "waits for its interfaces");
}

TEST(Explain, libraryTellsHowItWasStarted) {
  EXPECT_EQ(Explained(configuration + "start library\n")["library"],
            "createStatus, watches the instance status, first synchronisation not over");
  EXPECT_EQ(Explained(runningOnStatus)["library"], "createStatus, watches the plain status");
  EXPECT_EQ(Explained("start library mode notifyStatus watch none\nsettle\n")["library"],
            "notifyStatus, watches no status");
}

TEST(Explain, vlanIsNotConfigured) {
  const Explained explained(running + "no vlan 10\nsettle\n");
  EXPECT_EQ(hindering("vlan", explained), "not configured");
  EXPECT_EQ(explained["membership"], "") << "nobody asks for a member of it";
}

TEST(Explain, vlanIsInternal) {
  const std::string vlan = "vlan 20 internal\nvlan 20 port Ethernet1\nmap 20 A\n";
  const std::string what = "vlan 20 port Ethernet1";
  EXPECT_EQ(hindering("vlan", Explained(configuration + vlan + "start library ignore-internal\nsettle\n", what)),
            "configured, internal and ignored");
  const Explained taken(configuration + vlan + "start library\nsettle\n", what);
  EXPECT_TRUE(taken.forwards());
  EXPECT_EQ(taken["vlan"], "configured, internal but not ignored");
}

TEST(Explain, vlanIsNotMapped) {
  const Explained explained(running + "no map 10\nsettle\n");
  EXPECT_EQ(hindering("mapping", explained), "to no topology");
  EXPECT_EQ(explained["topology"], "") << "there is none to ask for";
}

TEST(Explain, topologyIsNotConfigured) {
  EXPECT_EQ(hindering("topology", Explained(running + "no topology A\nsettle\n")), "not configured");
  EXPECT_EQ(hindering("topology", Explained(running + "map 10 \"no such\"\nsettle\n")), "not configured");
}

TEST(Explain, topologyIsPresentByTheRuleOfTheModeAndTheStatus) {
  const auto rule = [](const std::string& start) {
    return Explained(configuration + start + "\nsettle\n")["presence rule"];
  };
  EXPECT_EQ(rule("start library"), "wanted: the configuration is enough");
  EXPECT_EQ(rule("start library mode notifyStatus"), "wanted: configured, and in the instance status");
  EXPECT_EQ(rule("start library watch status"), "wanted: configured, and in the plain status");
}

TEST(Explain, topologyIsNotWanted) {
  const auto rule = [](const std::string& start) {
    return hindering("presence rule", Explained(configuration + start + "\nsettle\n"));
  };
  EXPECT_EQ(rule("no instance A\nstart library mode notifyStatus"), "not wanted: not in the instance status");
  EXPECT_EQ(rule("no status A\nstart library watch status"), "not wanted: not in the plain status");
  EXPECT_EQ(rule("start library watch none"), "not wanted: no status is watched");
  EXPECT_EQ(Explained(configuration + "start library watch none\nsettle\n")["presence"], "absent");
}

TEST(Explain, topologyLingers) {
  const Explained explained(running + "no topology A\n");
  EXPECT_EQ(explained["presence"], "lingering until its last VLAN has left");
  EXPECT_TRUE(explained.forwards());
  EXPECT_EQ(explained.verdict(), "Ethernet1 forwards VLAN 10; a change is pending");
}

TEST(Explain, topologyIsOrphaned) {
  const std::string orphaned =
      "orphaned: its configuration or status was replaced, and it waits for its last VLAN to leave";
  const std::string again = "no topology A\ntopology A\ntopology A port Ethernet1 state forwarding\n";
  EXPECT_EQ(Explained(running + again)["presence"], orphaned);
  EXPECT_EQ(Explained(running + again + "settle\n")["presence"], "present");
  EXPECT_EQ(Explained(runningOnStatus + "no status A\nstatus A\n")["presence"], orphaned);
}

TEST(Explain, topologyDoesNotHaveTheVlanYet) {
  const Explained explained(configuration + "start library\n");
  EXPECT_EQ(hindering("registration", explained), "the library has not put the VLAN into it");
  EXPECT_EQ(explained["presence"], "present");
  EXPECT_EQ(explained.verdict(),
            "Ethernet1 does not forward VLAN 10: registration the library has not put the VLAN into it; a change is "
            "pending");
}

}  // namespace Topo::ExplainTest
