// The documents as JSON, to the letter: what they hold, under which keys, in which order, and what of it a filter shows.

#include "tests/topo/Run.h"

namespace Topo::DocumentsTest {

using Test::document;
using Test::errorOf;
using Test::Json;
using Test::keys;
using Test::Outcome;
using Test::runScenario;

/// What `show` prints as JSON after a scenario.
std::string shown(const std::string& scenario, const std::string& what) {
  const Outcome outcome = runScenario(scenario + "\nshow " + what + " json\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const std::vector<std::string> lines = outcome.lines();
  return lines.empty() ? std::string() : lines.back();
}

/// Names and numbers are given in no order; VLAN 100 reaches the ports of VLAN 10, in another topology.
const std::string configured =
    "interface Ethernet10 link up model bridged\n"
    "interface Ethernet9 link up model bridged\n"
    "interface Ethernet2 link down\n"
    "vlan 10,9,100\n"
    "vlan 10,9 port Ethernet10\n"
    "vlan 10 port Ethernet9 untagged pvid direction ingress\n"
    "vlan 100 port Ethernet2\n"
    "vlan 100 expand 10\n"
    "topology B number 2\n"
    "topology A number 1 publish-ports on publish-state learning\n"
    "topology A port Ethernet10 state forwarding flush 3\n"
    "topology A port Ethernet9 state blocking\n"
    "map 10,9 A\n"
    "map 100 B\n"
    "instance A number 1\n"
    "instance A port Ethernet10\n"
    "instance A port Ethernet9\n"
    "status B\n"
    "status B port Ethernet10\n"
    "status B port Ethernet9\n"
    "force Ethernet11 off\n"
    "force Ethernet3 on\n";
const std::string started = configured + "start library\nstart view\nsettle\n";

TEST(Documents, areEmptyBeforeAnythingIsConfiguredOrStarted) {
  EXPECT_EQ(shown("", "state"), R"({"name":"state","initDone":false,"topo":{}})");
  EXPECT_EQ(shown("", "view"), R"({"name":"view","initDone":false,"topoVlan":{},"forceEnabledPorts":{}})");
  EXPECT_EQ(shown("", "instance"), R"({"name":"instance","topoStatus":{}})");
  EXPECT_EQ(shown("", "status"), R"({"name":"status","topoStatus":{}})");
  EXPECT_EQ(shown("", "config"), R"({"name":"config","vidToTopoMap":{},"topoConfig":{}})");
  EXPECT_EQ(shown("", "bridging"), R"({"name":"bridging","vlanConfig":{}})");
  EXPECT_EQ(shown("", "interfaces"), R"({"name":"interfaces","intfStatus":{}})");
  EXPECT_EQ(shown("", "backlog"), "{}");
  EXPECT_EQ(shown("", "mapping"), "{}");
}

TEST(Documents, stateHoldsWhatTheLibraryPublishes) {
  EXPECT_EQ(shown(started, "state"),
            R"({"name":"state","initDone":true,"topo":{)"
            R"("A":{"port":{)"
            R"("Ethernet9":{"active":true,"state":"blocking","fdbFlush":0,"vlanPortConfig":{)"
            R"("10":{"allowedTrafficDirection":"ingress","untagged":true,"pvid":true}}},)"
            R"("Ethernet10":{"active":true,"state":"forwarding","fdbFlush":3,"vlanPortConfig":{)"
            R"("9":{"allowedTrafficDirection":"both","untagged":false,"pvid":false},)"
            R"("10":{"allowedTrafficDirection":"both","untagged":false,"pvid":false}}}}},)"
            R"("B":{"port":{)"
            R"("Ethernet2":{"active":false,"state":"disabled","fdbFlush":0,"vlanPortConfig":{)"
            R"("100":{"allowedTrafficDirection":"both","untagged":false,"pvid":false}}},)"
            R"("Ethernet9":{"active":false,"state":"disabled","fdbFlush":0,"vlanPortConfig":{)"
            R"("100":{"allowedTrafficDirection":"ingress","untagged":true,"pvid":true}}},)"
            R"("Ethernet10":{"active":false,"state":"disabled","fdbFlush":0,"vlanPortConfig":{)"
            R"("100":{"allowedTrafficDirection":"both","untagged":false,"pvid":false}}}}}}})");
}

TEST(Documents, viewHoldsThePortsByVlan) {
  EXPECT_EQ(shown(started, "view"),
            R"({"name":"view","initDone":true,"topoVlan":{)"
            R"("9":{"topoPort":{)"
            R"("Ethernet10":{"topo":["A"],"blocked":false,"allowedTrafficDirection":"both"}}},)"
            R"("10":{"topoPort":{)"
            R"("Ethernet9":{"topo":["A"],"blocked":true,"allowedTrafficDirection":"ingress"},)"
            R"("Ethernet10":{"topo":["A"],"blocked":false,"allowedTrafficDirection":"both"}}}},)"
            R"("forceEnabledPorts":{"Ethernet3":true,"Ethernet11":false}})");
}

TEST(Documents, instanceAndStatusHoldTheStatuses) {
  EXPECT_EQ(shown(configured, "instance"),
            R"({"name":"instance","topoStatus":{"A":{"topoNumber":1,"topoPortStatus":["Ethernet9","Ethernet10"]}}})");
  EXPECT_EQ(shown(configured, "status"),
            R"({"name":"status","topoStatus":{"B":{"topoPortStatus":["Ethernet9","Ethernet10"]}}})");
}

TEST(Documents, configHoldsTheTopologies) {
  EXPECT_EQ(
      shown(configured, "config"),
      R"({"name":"config","vidToTopoMap":{"9":"A","10":"A","100":"B"},"topoConfig":{)"
      R"("A":{"topoNumber":1,"publishPortConfig":true,"publishedPortState":"learning","topoPortConfig":{)"
      R"("Ethernet9":{"portState":"blocking","fdbFlush":0},)"
      R"("Ethernet10":{"portState":"forwarding","fdbFlush":3}}},)"
      R"("B":{"topoNumber":2,"publishPortConfig":false,"publishedPortState":"forwarding","topoPortConfig":{}}}})");
}

TEST(Documents, bridgingHoldsTheVlans) {
  EXPECT_EQ(shown(configured + "vlan 8 internal\n", "bridging"),
            R"({"name":"bridging","vlanConfig":{)"
            R"("8":{"internal":true,"floodsetExpandedVlan":0,"vlanPortConfig":{}},)"
            R"("9":{"internal":false,"floodsetExpandedVlan":0,"vlanPortConfig":{)"
            R"("Ethernet10":{"allowedTrafficDirection":"both","untagged":false,"pvid":false}}},)"
            R"("10":{"internal":false,"floodsetExpandedVlan":0,"vlanPortConfig":{)"
            R"("Ethernet9":{"allowedTrafficDirection":"ingress","untagged":true,"pvid":true},)"
            R"("Ethernet10":{"allowedTrafficDirection":"both","untagged":false,"pvid":false}}},)"
            R"("100":{"internal":false,"floodsetExpandedVlan":10,"vlanPortConfig":{)"
            R"("Ethernet2":{"allowedTrafficDirection":"both","untagged":false,"pvid":false}}}}})");
}

TEST(Documents, interfacesHoldTheirStatus) {
  EXPECT_EQ(shown(configured, "interfaces"), R"({"name":"interfaces","intfStatus":{)"
                                             R"("Ethernet2":{"linkStatus":"down","forwardingModel":"unspecified"},)"
                                             R"("Ethernet9":{"linkStatus":"up","forwardingModel":"bridged"},)"
                                             R"("Ethernet10":{"linkStatus":"up","forwardingModel":"bridged"}}})");
}

TEST(Documents, backlogHoldsTheProcessorAndWhatIsMarked) {
  EXPECT_EQ(shown(configured + "start library\n", "backlog"),
            R"({"idle":false,"timeMin":0.0,"bookmark":0,"oldTopoName":"","updatesSeen":0,"updatesProcessed":0,)"
            R"("timeUsed":0.0,"dispatchCount":0,"yieldBeforeFinishingCount":0,"delPendingPortSet":[],)"
            R"("deletedPortSet":[],"dirtyVlan":{"9":{"dirty":true,"intf":[]},"10":{"dirty":true,"intf":[]},)"
            R"("100":{"dirty":true,"intf":[]}}})");
  EXPECT_EQ(shown("start library\nset tick 0.25\nsettle\n", "backlog"),
            R"({"idle":true,"timeMin":null,"bookmark":0,"oldTopoName":"","updatesSeen":0,"updatesProcessed":0,)"
            R"("timeUsed":0.25,"dispatchCount":1,"yieldBeforeFinishingCount":0,"delPendingPortSet":[],)"
            R"("deletedPortSet":[],"dirtyVlan":{}})");
  EXPECT_EQ(shown("vlan 10\ntopology A\nmap 10 A\nstart library\nsettle\nvlan 10 port Ethernet10\nvlan 10 port "
                  "Ethernet9\n",
                  "backlog"),
            R"({"idle":false,"timeMin":0.0,"bookmark":0,"oldTopoName":"","updatesSeen":2,"updatesProcessed":0,)"
            R"("timeUsed":0.0,"dispatchCount":2,"yieldBeforeFinishingCount":0,"delPendingPortSet":[],)"
            R"("deletedPortSet":[],"dirtyVlan":{"10":{"dirty":false,"intf":["Ethernet9","Ethernet10"]}}})");
}

TEST(Documents, backlogTellsWhereAVisitStands) {
  const std::string scenario =
      "vlan 10\nvlan 10 port Ethernet1-3\ntopology A\ntopology B\nmap 10 A\nstart library\nsettle\n"
      "set yield-after-one on\nmap 10 B\n";
  const Json leaving = document(scenario + "dispatch\n", "backlog");
  EXPECT_EQ(leaving.at("bookmark"), 10);
  EXPECT_EQ(leaving.at("oldTopoName"), "A");
  EXPECT_EQ(leaving.at("delPendingPortSet").size(), 2U);
  EXPECT_EQ(leaving.at("deletedPortSet").size(), 1U);
  EXPECT_EQ(leaving.at("yieldBeforeFinishingCount"), 1);
  const Json entering = document(scenario + "dispatch 4\n", "backlog");
  EXPECT_EQ(entering.at("bookmark"), 10);
  EXPECT_EQ(entering.at("oldTopoName"), "");
  EXPECT_EQ(entering.at("delPendingPortSet"), Json::array());
  EXPECT_EQ(entering.at("deletedPortSet").size(), 2U);
}

TEST(Documents, mappingHoldsWhatTheLibraryKeepsOfItsVlans) {
  EXPECT_EQ(shown(started, "mapping"),
            R"({"mappedVlan":{"A":[9,10],"B":[100]},"vlanConfigSm":[9,10,100],"topoConfigSm":["A","B"],)"
            R"("vlanToExpVlanSetMap":{"100":[10]},"expVlanToVlanSetMap":{"10":[100]},)"
            R"("vidToExpandedTopoMap":{"100":"B"}})");
}

TEST(Documents, theOptionOfTheRunIsAsGoodAsTheWord) {
  for (const std::string name : {"state", "view", "instance", "status", "config", "bridging", "interfaces", "backlog",
                                 "mapping", "state topology A", "view vlan 10", "log"}) {
    // Without the addresses, which differ from one process to the next.
    const std::string scenario = name == "log" ? "start library\nsettle\n" : started;
    EXPECT_EQ(runScenario(scenario + "show " + name + "\n", {"--json"}).out, shown(scenario, name) + "\n");
    EXPECT_NE(runScenario(scenario + "show " + name + "\n").out, shown(scenario, name) + "\n");
  }
}

// Keys.

using Names = std::vector<std::string>;

TEST(Documents, interfacesStandInNaturalOrder) {
  std::string scenario;
  for (const char* const intf : {"eth10", "Ethernet10", "Vlan10", "Ethernet9.10", "Ethernet3/10/2", "PortChannel1",
                                 "Ethernet9", "eth9", "Ethernet3/9/2", "Ethernet9.9", "Cpu", "Ethernet3/1"}) {
    scenario += std::string("interface ") + intf + "\nvlan 10\nvlan 10 port " + intf + "\n";
  }
  const Names inOrder{"Cpu",          "Ethernet3/1", "Ethernet3/9/2", "Ethernet3/10/2", "Ethernet9", "Ethernet9.9",
                      "Ethernet9.10", "Ethernet10",  "PortChannel1",  "Vlan10",         "eth9",      "eth10"};
  EXPECT_EQ(keys(document(scenario, "interfaces")["intfStatus"]), inOrder);
  EXPECT_EQ(keys(document(scenario, "bridging")["vlanConfig"]["10"]["vlanPortConfig"]), inOrder);
}

TEST(Documents, namesStandAsText) {
  EXPECT_EQ(keys(document("topology b10\ntopology é\ntopology b9\ntopology Z\ntopology a\ntopology 1",
                          "config")["topoConfig"]),
            (Names{"1", "Z", "a", "b10", "b9", "é"}));
}

TEST(Documents, vlansStandByNumber) {
  EXPECT_EQ(keys(document("map 1000,9,10,4094,1,100 A", "config")["vidToTopoMap"]),
            (Names{"1", "9", "10", "100", "1000", "4094"}));
}

TEST(Documents, oddNamesAreEscapedAsJson) {
  EXPECT_EQ(shown(R"(status "my \"one\" \\ é/~")", "status"),
            R"({"name":"status","topoStatus":{"my \"one\" \\ é/~":{"topoPortStatus":[]}}})");
  EXPECT_EQ(shown("status \"a\tb\x01\"\nstatus \"a\tb\x01\" port \"c\td\"\n", "status"),
            "{\"name\":\"status\",\"topoStatus\":{\"a\\tb\\u0001\":{\"topoPortStatus\":[\"c\\td\"]}}}");
}

TEST(Documents, holdTextThatIsUtf8) {
  EXPECT_EQ(shown("status Z\xC3\xBCrich\n", "status"),
            "{\"name\":\"status\",\"topoStatus\":{\"Z\xC3\xBCrich\":{\"topoPortStatus\":[]}}}");
}

// Filters.

TEST(DocumentFilter, aTopologyNarrowsDownWhatIsByTopology) {
  EXPECT_EQ(keys(document(started, "state topology A")["topo"]), Names{"A"});
  EXPECT_EQ(keys(document(started, "state topology C")["topo"]), Names{});
  EXPECT_EQ(keys(document(started, "instance topology A")["topoStatus"]), Names{"A"});
  EXPECT_EQ(keys(document(started, "instance topology B")["topoStatus"]), Names{});
  EXPECT_EQ(keys(document(started, "status topology B")["topoStatus"]), Names{"B"});
  EXPECT_EQ(keys(document(started, "config topology B")["topoConfig"]), Names{"B"});
  EXPECT_EQ(keys(document(started, "config topology B")["vidToTopoMap"]), Names{"100"});
  EXPECT_EQ(shown(started, "mapping topology B"),
            R"({"mappedVlan":{"B":[100]},"vlanConfigSm":[9,10,100],"topoConfigSm":["B"],)"
            R"("vlanToExpVlanSetMap":{"100":[10]},"expVlanToVlanSetMap":{"10":[100]},)"
            R"("vidToExpandedTopoMap":{"100":"B"}})");
}

TEST(DocumentFilter, aTopologyNarrowsTheViewDownToThePortsInIt) {
  // VLAN 100 inherits the new port, and has it in its own topology.
  const std::string scenario = started + "vlan 10 port Ethernet3\nsettle\n";
  const Json ofA = document(scenario, "view topology A")["topoVlan"];
  EXPECT_EQ(keys(ofA), (Names{"9", "10"}));
  EXPECT_EQ(keys(ofA.at("10").at("topoPort")), (Names{"Ethernet3", "Ethernet9", "Ethernet10"}));
  const Json ofB = document(scenario, "view topology B")["topoVlan"];
  EXPECT_EQ(keys(ofB), Names{"100"});
  EXPECT_EQ(keys(ofB.at("100").at("topoPort")), Names{"Ethernet3"});
  EXPECT_EQ(
      shown(scenario, "view topology C"),
      R"({"name":"view","initDone":true,"topoVlan":{},"forceEnabledPorts":{"Ethernet3":true,"Ethernet11":false}})");
}

TEST(DocumentFilter, aVlanNarrowsDownWhatIsByVlan) {
  const Json topologies = document(started, "state vlan 9")["topo"];
  EXPECT_EQ(keys(topologies), Names{"A"});
  EXPECT_EQ(keys(topologies.at("A").at("port")), Names{"Ethernet10"});
  EXPECT_EQ(keys(topologies.at("A").at("port").at("Ethernet10").at("vlanPortConfig")), Names{"9"});
  EXPECT_EQ(keys(document(started, "view vlan 9")["topoVlan"]), Names{"9"});
  EXPECT_EQ(keys(document(started, "bridging vlan 9")["vlanConfig"]), Names{"9"});
  EXPECT_EQ(keys(document(started, "bridging vlan 8")["vlanConfig"]), Names{});
  EXPECT_EQ(keys(document(configured + "start library\n", "backlog vlan 9")["dirtyVlan"]), Names{"9"});
  EXPECT_EQ(shown(started, "mapping vlan 100"),
            R"({"mappedVlan":{"A":[],"B":[100]},"vlanConfigSm":[100],"topoConfigSm":["A","B"],)"
            R"("vlanToExpVlanSetMap":{"100":[10]},"expVlanToVlanSetMap":{},"vidToExpandedTopoMap":{"100":"B"}})");
}

TEST(DocumentFilter, aVlanNarrowsTheConfigurationDownToItsTopology) {
  EXPECT_EQ(document(configured, "config vlan 100"), document(configured + "no map 9-10\nno topology A", "config"));
  EXPECT_EQ(shown(configured, "config vlan 101"), R"({"name":"config","vidToTopoMap":{},"topoConfig":{}})");
}

TEST(DocumentFilter, bothTogetherNarrowDownToBoth) {
  EXPECT_EQ(shown(started, "state topology A vlan 9"), shown(started, "state vlan 9"));
  EXPECT_EQ(shown(started, "state vlan 100 topology A"), R"({"name":"state","initDone":true,"topo":{}})");
}

TEST(DocumentFilter, whatADocumentDoesNotHaveIsAnError) {
  for (const std::string name : {"bridging", "backlog"}) {
    EXPECT_EQ(errorOf("show " + name + " topology A"), "-:1: error: expected vlan or json, found 'topology'\n");
  }
  for (const std::string name : {"instance", "status"}) {
    EXPECT_EQ(errorOf("show " + name + " vlan 10"), "-:1: error: expected topology or json, found 'vlan'\n");
  }
  EXPECT_EQ(errorOf("show interfaces vlan 10"), "-:1: error: expected json, found 'vlan'\n");
  EXPECT_EQ(errorOf("show interfaces topology A"), "-:1: error: expected json, found 'topology'\n");
  EXPECT_EQ(errorOf("show state all"), "-:1: error: expected topology, vlan or json, found 'all'\n");
}

TEST(DocumentFilter, badFiltersAreErrors) {
  EXPECT_EQ(errorOf("show state topology"), "-:1: error: expected the name of a topology, found the end of the line\n");
  EXPECT_EQ(errorOf("show state topology \"\""), "-:1: error: the name of a topology must not be empty\n");
  EXPECT_EQ(errorOf("show state topology A topology B"), "-:1: error: topology is given twice\n");
  EXPECT_EQ(errorOf("show state vlan"), "-:1: error: expected a VLAN number, found the end of the line\n");
  EXPECT_EQ(errorOf("show state vlan 10,20"), "-:1: error: expected a VLAN number, found '10,20'\n");
  EXPECT_EQ(errorOf("show state vlan 10 vlan 20"), "-:1: error: vlan is given twice\n");
  EXPECT_EQ(errorOf("show state json vlan 10"), "-:1: error: expected the end of the line, found 'vlan'\n");
}

// The log.

TEST(ShowLog, givesTheMessagesOldestFirst) {
  const std::string scenario = "advance 1.5\nstart library\nadvance 1\nvlan 10\ntopology A\n";
  const Json log = document(scenario, "log");
  ASSERT_EQ(log.size(), 3U) << log;
  EXPECT_EQ(keys(log.at(0)), (Names{"number", "time", "file", "line", "text"}));
  const std::vector<std::pair<double, std::string>> messages{
      {1.5, "LibSm::doOnInitDone"},
      {1.5, "TopoLibCodef::doProcessBacklog()"},
      {2.5, "LibSm::handleTopoConfigOrStatus creating TopoConfigSm A"}};
  std::string text;
  for (std::size_t i = 0; i < messages.size(); ++i) {
    EXPECT_EQ(log.at(i).at("number"), i);
    EXPECT_EQ(log.at(i).at("time"), messages[i].first);
    EXPECT_EQ(log.at(i).at("file"), "/src/Sylk/TopoLib");
    EXPECT_EQ(log.at(i).at("text"), messages[i].second);
    text += (messages[i].first == 1.5 ? "1.500000" : "2.500000") +
            ("\t/src/Sylk/TopoLib:" + log.at(i).at("line").dump()) + "\t" + messages[i].second + "\n";
  }
  EXPECT_EQ(runScenario(scenario + "show log\n").out, text);
}

TEST(ShowLog, isEmptyAtFirstAndTakesNoFilter) {
  EXPECT_EQ(runScenario("show log\n").out, "");
  EXPECT_EQ(shown("", "log"), "[]");
  EXPECT_EQ(errorOf("show log vlan 10"), "-:1: error: expected the end of the line, found 'vlan'\n");
  EXPECT_EQ(errorOf("show log json now"), "-:1: error: expected the end of the line, found 'now'\n");
}

TEST(ShowCommand, needsADocument) {
  const std::string expected =
      "-:1: error: expected a document, state, view, instance, status, config, bridging, interfaces, backlog or "
      "mapping, found ";
  EXPECT_EQ(errorOf("show"), expected + "the end of the line\n");
  EXPECT_EQ(errorOf("show all"), expected + "'all'\n");
}

}  // namespace Topo::DocumentsTest
