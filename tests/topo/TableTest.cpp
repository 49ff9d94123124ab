// `show DOCUMENT` as a table for a person.

#include "tests/topo/Run.h"
#include "topo/Table.h"

namespace Topo::TableTest {

using Test::Outcome;
using Test::runScenario;

/// What `show` prints after a scenario.
std::string shown(const std::string& scenario, const std::string& what) {
  const Outcome outcome = runScenario(scenario + "\nshow " + what + '\n');
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.out;
}

/// Two topologies on three ports: Ethernet3 is blocked in A and learns in B, and VLAN 20 reaches the ports of VLAN 10.
const std::string configuration =
    "interface Ethernet1-3 link up model bridged\n"
    "vlan 10-11,20\n"
    "vlan 30 internal\n"
    "vlan 10-11 port Ethernet1-2\n"
    "vlan 10-11 port Ethernet3 untagged pvid direction ingress\n"
    "vlan 20 port Ethernet3\n"
    "vlan 20 expand 10\n"
    "topology A number 1\n"
    "topology A port Ethernet1-2 state forwarding\n"
    "topology A port Ethernet3 state blocking flush 2\n"
    "topology B number 2\n"
    "topology B port Ethernet1-3 state learning\n"
    "map 10-11 A\n"
    "map 20 B\n";
const std::string running = configuration + "start library\nstart publisher\nstart view\nsettle\n";

TEST(StateTable, putsPortsThatAreAlikeIntoOneRow) {
  EXPECT_EQ(shown(running, "state"),
            "TOPOLOGY  PORT         ACTIVE  STATE       FLUSH  VLANS\n"
            "A         Ethernet1-2  yes     forwarding  0      10,11\n"
            "A         Ethernet3    yes     blocking    2      10,11\n"
            "B         Ethernet1-3  yes     learning    0      20\n");
}

TEST(StateTable, tellsThatTheFirstSynchronisationIsNotOver) {
  EXPECT_EQ(shown(configuration, "state"),
            "The first synchronisation is not over: the contents are not complete.\n"
            "Nothing.\n");
  EXPECT_EQ(shown(configuration + "start library", "state"),
            "The first synchronisation is not over: the contents are not complete.\n"
            "TOPOLOGY  PORT  ACTIVE  STATE  FLUSH  VLANS\n"
            "A\n"
            "B\n");
}

TEST(StateTable, isOfOneTopologyOrOneVlan) {
  const std::string ofB =
      "TOPOLOGY  PORT         ACTIVE  STATE     FLUSH  VLANS\n"
      "B         Ethernet1-3  yes     learning  0      20\n";
  EXPECT_EQ(shown(running, "state topology B"), ofB);
  EXPECT_EQ(shown(running, "state vlan 20"), ofB);
  EXPECT_EQ(shown(running, "state topology B vlan 20"), ofB);
  EXPECT_EQ(shown(running, "state topology A vlan 20"), "Nothing.\n");
  EXPECT_EQ(shown(running, "state topology C"), "Nothing.\n");
  EXPECT_EQ(shown(running, "state vlan 10"),
            "TOPOLOGY  PORT         ACTIVE  STATE       FLUSH  VLANS\n"
            "A         Ethernet1-2  yes     forwarding  0      10\n"
            "A         Ethernet3    yes     blocking    2      10\n");
}

TEST(ViewTable, putsVlansThatAreAlikeIntoOneRow) {
  EXPECT_EQ(shown(running, "view"),
            "VLAN   PORT         TOPOLOGY  BLOCKED  DIRECTION\n"
            "10,11  Ethernet1-2  A         no       both\n"
            "       Ethernet3    A         yes      ingress\n"
            "20     Ethernet1-3  B         yes      both\n");
}

TEST(ViewTable, listsForcedPorts) {
  EXPECT_EQ(shown("start library\nstart view\nsettle\nforce Ethernet1-2 on\nforce Ethernet7 off\n", "view"),
            "Nothing.\n"
            "forced on: Ethernet1-2\n"
            "forced off: Ethernet7\n");
}

TEST(ViewTable, tellsThatTheFirstSynchronisationIsNotOver) {
  EXPECT_EQ(shown("", "view"),
            "The first synchronisation is not over: the contents are not complete.\n"
            "Nothing.\n");
}

TEST(ViewTable, isOfOneTopologyOrOneVlan) {
  const std::string of20 =
      "VLAN  PORT         TOPOLOGY  BLOCKED  DIRECTION\n"
      "20    Ethernet1-3  B         yes      both\n";
  EXPECT_EQ(shown(running, "view vlan 20"), of20);
  EXPECT_EQ(shown(running, "view topology B"), of20);
  EXPECT_EQ(shown(running, "view vlan 30"), "Nothing.\n");
  EXPECT_EQ(shown(running, "view topology C"), "Nothing.\n");
}

TEST(InstanceTable, listsTopologiesWithTheirPorts) {
  EXPECT_EQ(shown(running, "instance"),
            "TOPOLOGY  NUMBER  PORTS\n"
            "A         1       Ethernet1-3\n"
            "B         2       Ethernet1-3\n");
  EXPECT_EQ(shown(running, "instance topology B"),
            "TOPOLOGY  NUMBER  PORTS\n"
            "B         2       Ethernet1-3\n");
  EXPECT_EQ(shown(running, "instance topology C"), "Nothing.\n");
  EXPECT_EQ(shown("", "instance"), "Nothing.\n");
}

TEST(StatusTable, listsTopologiesWithTheirPorts) {
  const std::string statuses = "status A\nstatus A port Ethernet1-3\nstatus A port \"my port\"\nstatus B\n";
  EXPECT_EQ(shown(statuses, "status"),
            "TOPOLOGY  PORTS\n"
            "A         Ethernet1-3 \"my port\"\n"
            "B\n");
  EXPECT_EQ(shown(statuses, "status topology B"), "TOPOLOGY  PORTS\nB\n");
  EXPECT_EQ(shown("", "status"), "Nothing.\n");
}

TEST(ConfigTable, listsATopologyAndItsPorts) {
  EXPECT_EQ(shown(configuration, "config topology A"),
            "TOPOLOGY  NUMBER  VLANS  PUBLISHES PORTS\n"
            "A         1       10,11  no\n"
            "\n"
            "TOPOLOGY  PORT         STATE       FLUSH\n"
            "A         Ethernet1-2  forwarding  0\n"
            "A         Ethernet3    blocking    2\n");
  EXPECT_EQ(shown(configuration, "config topology C"), "Nothing.\n");
}

TEST(ConfigTable, tellsWhetherPortsArePublished) {
  EXPECT_EQ(shown("topology A publish-ports on publish-state learning", "config topology A"),
            "TOPOLOGY  NUMBER  VLANS  PUBLISHES PORTS\n"
            "A         0              learning\n");
}

TEST(ConfigTable, isOfTheTopologyOfAVlan) {
  EXPECT_EQ(shown(configuration, "config vlan 11"),
            "TOPOLOGY  NUMBER  VLANS  PUBLISHES PORTS\n"
            "A         1       11     no\n"
            "\n"
            "TOPOLOGY  PORT         STATE       FLUSH\n"
            "A         Ethernet1-2  forwarding  0\n"
            "A         Ethernet3    blocking    2\n");
  EXPECT_EQ(shown(configuration, "config vlan 30"), "Nothing.\n");
}

TEST(ConfigTable, listsTopologiesThatAreNotConfigured) {
  const std::string gone =
      "TOPOLOGY  NUMBER  VLANS  PUBLISHES PORTS\n"
      "gone              40,41  not configured\n";
  EXPECT_EQ(shown("map 40-41 gone", "config topology gone"), gone);
  EXPECT_EQ(shown("map 40-41 gone\nmap 42 other", "config topology gone"), gone);
}

TEST(BridgingTable, listsVlansAndTheirPorts) {
  EXPECT_EQ(shown(configuration, "bridging"),
            "VLAN   KIND      EXPANDS INTO  PORT         TAGGED    PVID  DIRECTION\n"
            "10,11  external                Ethernet1-2  tagged    no\n"
            "                               Ethernet3    untagged  yes   ingress\n"
            "20     external  10            Ethernet3    tagged    no\n"
            "30     internal\n");
}

TEST(BridgingTable, isOfOneVlan) {
  EXPECT_EQ(shown(configuration, "bridging vlan 11"),
            "VLAN  KIND      EXPANDS INTO  PORT         TAGGED    PVID  DIRECTION\n"
            "11    external                Ethernet1-2  tagged    no\n"
            "                              Ethernet3    untagged  yes   ingress\n");
  EXPECT_EQ(shown(configuration, "bridging vlan 12"), "Nothing.\n");
  EXPECT_EQ(shown("", "bridging"), "Nothing.\n");
}

TEST(InterfacesTable, listsInterfacesInNaturalOrder) {
  EXPECT_EQ(shown("interface Ethernet9-11 link up model bridged\ninterface Ethernet2 link down model routed\n"
                  "interface \"my port\"\n",
                  "interfaces"),
            "INTERFACE     LINK     MODEL\n"
            "Ethernet2     down     routed\n"
            "Ethernet9-11  up       bridged\n"
            "\"my port\"     unknown  unspecified\n");
  EXPECT_EQ(shown("", "interfaces"), "Nothing.\n");
}

TEST(MappingTable, listsTopologiesAndVlansInService) {
  EXPECT_EQ(shown(running, "mapping"),
            "TOPOLOGY  IN SERVICE  VLANS\n"
            "A         yes         10,11\n"
            "B         yes         20\n"
            "VLANs in service: 10,11,20\n"
            "VLAN 20 expands into 10, in B\n");
}

TEST(MappingTable, listsATopologyWithoutVlans) {
  EXPECT_EQ(shown("topology A\nstart library\nsettle", "mapping"), "TOPOLOGY  IN SERVICE  VLANS\nA         yes\n");
}

TEST(MappingTable, isOfOneTopologyOrOneVlan) {
  EXPECT_EQ(shown(configuration + "vlan 20 expand none\nstart library\nsettle", "mapping topology A"),
            "TOPOLOGY  IN SERVICE  VLANS\n"
            "A         yes         10,11\n"
            "VLANs in service: 10,11,20\n");
  EXPECT_EQ(shown(running, "mapping vlan 20"),
            "TOPOLOGY  IN SERVICE  VLANS\n"
            "A         yes\n"
            "B         yes         20\n"
            "VLANs in service: 20\n"
            "VLAN 20 expands into 10, in B\n");
}

TEST(MappingTable, ofALibraryThatDoesNotRun) {
  EXPECT_EQ(shown(configuration, "mapping"), "The library is not running.\n");
  EXPECT_EQ(shown("start library\nsettle", "mapping"), "Nothing.\n");
}

/// A table as it is printed.
std::string printed(const Table& table, bool isColoured) {
  std::ostringstream out;
  table.print(out, isColoured);
  return out.str();
}

TEST(Table, alignsItsColumnsAndLeavesNoBlanksBehind) {
  Table table({"A", "B", "C"});
  table.row({"long", "", "x"});
  table.row({"s", "y"});
  table.row({});
  EXPECT_EQ(printed(table, false),
            "A     B  C\n"
            "long     x\n"
            "s     y\n"
            "\n");
}

TEST(Table, countsCharactersAndNotBytes) {
  Table table({"NAME", "B"});
  table.row({"\u00e9t\u00e9-1", "x"});
  EXPECT_EQ(printed(table, false), "NAME   B\n\u00e9t\u00e9-1  x\n");
}

TEST(Table, isNothingWithoutARow) { EXPECT_EQ(printed(Table({"A"}), false), ""); }

TEST(Table, colourDoesNotMoveTheColumns) {
  Table table({"A", "B"});
  table.row({{"up", Colour::green}, "x"});
  table.row({{"down", Colour::red}, "y"});
  EXPECT_EQ(printed(table, true),
            "\033[1mA\033[0m     \033[1mB\033[0m\n"
            "\033[32mup\033[0m    x\n"
            "\033[31mdown\033[0m  y\n");
}

}  // namespace Topo::TableTest
