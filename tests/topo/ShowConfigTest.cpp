// `show config`: the configuration as the commands that make it.

#include "tests/topo/Run.h"

namespace Topo::ShowConfigTest {

using Test::Outcome;
using Test::runScenario;

/// What `show config` prints after a scenario.
std::string configAfter(const std::string& scenario) {
  const Outcome outcome = runScenario(scenario + "\nshow config\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.out;
}

TEST(ShowConfig, ofNothingIsNothing) { EXPECT_EQ(configAfter(""), ""); }

TEST(ShowConfig, writesEveryCommand) {
  const std::string config =
      "interface Ethernet1-2 link up model bridged\n"
      "interface Ethernet3 link down\n"
      "interface Ethernet4 model tunneled\n"
      "interface Ethernet10\n"
      "vlan 10-12\n"
      "vlan 20 internal\n"
      "vlan 30 expand 10\n"
      "vlan 40 internal expand 11\n"
      "vlan 10 port Ethernet3 untagged pvid direction ingress\n"
      "vlan 10-12 port Ethernet1-2\n"
      "topology A number 1\n"
      "topology A port Ethernet1 state forwarding\n"
      "topology A port Ethernet2 state learning flush 3\n"
      "topology A port Ethernet3-4\n"
      "topology B number 2 publish-ports on publish-state blocking\n"
      "topology C\n"
      "map 10-12 A\n"
      "map 30 B\n"
      "map 50 missing\n"
      "status A\n"
      "status A port Ethernet1-2\n"
      "status B\n"
      "instance A number 1\n"
      "instance A port Ethernet1\n"
      "instance A port Ethernet3\n"
      "instance C\n"
      "force Ethernet1-2 on\n"
      "force Ethernet3 off\n";
  EXPECT_EQ(configAfter(config), config);
}

TEST(ShowConfig, leavesOutDefaults) {
  EXPECT_EQ(configAfter("interface Ethernet1 link unknown model unspecified\n"
                        "vlan 10 external expand none\n"
                        "vlan 10 port Ethernet1 tagged no-pvid direction both\n"
                        "topology A number 0 publish-ports off publish-state forwarding\n"
                        "topology A port Ethernet1 state disabled flush 0\n"
                        "instance A number 0\n"),
            "interface Ethernet1\n"
            "vlan 10\n"
            "vlan 10 port Ethernet1\n"
            "topology A\n"
            "topology A port Ethernet1\n"
            "instance A\n");
}

TEST(ShowConfig, joinsInterfacesWithADashInTheirName) {
  const std::string config = "interface Port-Channel1-3 link up\n";
  EXPECT_EQ(configAfter(config), config);
}

TEST(ShowConfig, namesWhatIsGoneNoMore) {
  EXPECT_EQ(configAfter("vlan 10-11\nvlan 10 port Ethernet1-2\ntopology A\ntopology A port Ethernet1\nmap 10 A\n"
                        "status A\ninstance A\nforce Ethernet1 on\ninterface Ethernet1\n"
                        "no vlan 11\nno vlan 10 port Ethernet1\nno topology A port Ethernet1\nno map 10\nno status A\n"
                        "no instance A\nno force Ethernet1\nno interface Ethernet1\n"),
            "vlan 10\n"
            "vlan 10 port Ethernet2\n"
            "topology A\n");
}

TEST(ShowConfig, joinsWhatIsAlike) {
  EXPECT_EQ(configAfter("vlan 1\nvlan 2\nvlan 3\nvlan 5\nvlan 6\nvlan 1-3 port Ethernet9\nvlan 1-3 port Ethernet10\n"
                        "vlan 5 port Ethernet9\nvlan 6 port Ethernet9 untagged\n"),
            "vlan 1-3,5,6\n"
            "vlan 1-3 port Ethernet10\n"
            "vlan 1-3,5 port Ethernet9\n"
            "vlan 6 port Ethernet9 untagged\n");
}

TEST(ShowConfig, quotesNamesThatWouldBeReadAsSomethingElse) {
  const std::string config =
      "interface \"#1\"\n"
      "interface \"a \\\"b\\\" \\\\ c\"\n"
      "interface \"my port\"\n"
      "interface \"veth1-2\"\n"
      "topology \"1-2\"\n"
      "topology \"my topo\"\n"
      "topology \"my topo\" port \"my port\"\n"
      "map 10 \"my topo\"\n"
      "status \"my topo\"\n"
      "status \"my topo\" port \"my port\"\n"
      "instance \"my topo\"\n"
      "instance \"my topo\" port \"my port\"\n"
      "force \"my port\" on\n";
  EXPECT_EQ(configAfter(config), config);
}

TEST(ShowConfig, leavesNamesPlainThatAreReadAsThemselves) {
  const std::string config =
      "interface a\\b\n"
      "interface link link up\n"
      "topology port\n"
      "topology port port port\n"
      "topology x/y~z\n";
  EXPECT_EQ(configAfter(config), config);
}

TEST(ShowConfig, doesNotCountOnFromNamesThatDoNotCountOn) {
  EXPECT_EQ(configAfter("interface 1\ninterface 2\ninterface eth01\ninterface eth02\n"),
            "interface 1\n"
            "interface 2\n"
            "interface eth01\n"
            "interface eth02\n");
}

TEST(ShowConfig, isADocumentUnderJson) {
  const Outcome outcome = runScenario("map 10 A\nshow config\n", {"--json"});
  EXPECT_EQ(outcome.out, R"({"name":"config","vidToTopoMap":{"10":"A"},"topoConfig":{}})"
                         "\n");
}

TEST(ShowConfig, isTheInputsAloneAndNotWhatTheLibraryPublishes) {
  const std::string config =
      "vlan 10\n"
      "vlan 10 port Ethernet1\n"
      "topology A\n"
      "topology A port Ethernet1 state forwarding\n"
      "map 10 A\n";
  EXPECT_EQ(configAfter(config + "start library\nstart view\nsettle"), config);
}

}  // namespace Topo::ShowConfigTest
