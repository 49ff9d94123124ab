// The commands that configure: defaults, every option, repetition, removal, and what is an error.

#include "tests/topo/Run.h"

namespace Topo::ConfigCommandsTest {

using Test::document;
using Test::errorOf;
using Test::Json;

Json interfaces(const std::string& scenario) { return document(scenario, "interfaces")["intfStatus"]; }
Json vlans(const std::string& scenario) { return document(scenario, "bridging")["vlanConfig"]; }
Json topologies(const std::string& scenario) { return document(scenario, "config")["topoConfig"]; }

Json parsed(const char* text) { return Json::parse(text); }

// interface

TEST(InterfaceCommand, hasItsDefaults) {
  EXPECT_EQ(interfaces("interface Ethernet1"),
            parsed(R"({"Ethernet1":{"linkStatus":"unknown","forwardingModel":"unspecified"}})"));
}

TEST(InterfaceCommand, takesEveryValue) {
  for (const char* const link : {"unknown", "down", "up"}) {
    EXPECT_EQ(interfaces("interface Ethernet1 link " + std::string(link))["Ethernet1"]["linkStatus"], link);
  }
  for (const char* const model : {"unspecified", "dropped", "routed", "mirrored", "bridged", "tunneled"}) {
    EXPECT_EQ(interfaces("interface Ethernet1 model " + std::string(model))["Ethernet1"]["forwardingModel"], model);
  }
}

TEST(InterfaceCommand, aRepeatedLineChangesOnlyWhatItNames) {
  const std::string first = "interface Ethernet1 link up model bridged\n";
  const auto status = [](const char* link, const char* model) {
    return Json{{"Ethernet1", {{"linkStatus", link}, {"forwardingModel", model}}}};
  };
  EXPECT_EQ(interfaces(first + "interface Ethernet1"), status("up", "bridged"));
  EXPECT_EQ(interfaces(first + "interface Ethernet1 link down"), status("down", "bridged"));
  EXPECT_EQ(interfaces(first + "interface Ethernet1 model routed"), status("up", "routed"));
}

TEST(InterfaceCommand, noRemovesItAndWhatIsNotThereIsNoError) {
  EXPECT_EQ(interfaces("interface Ethernet1-3\nno interface Ethernet2-9").size(), 1U);
  EXPECT_EQ(interfaces("no interface Ethernet1"), Json::object());
}

// vlan

TEST(VlanCommand, hasItsDefaults) {
  EXPECT_EQ(vlans("vlan 10"), parsed(R"({"10":{"internal":false,"floodsetExpandedVlan":0,"vlanPortConfig":{}}})"));
}

TEST(VlanCommand, takesItsOptions) {
  EXPECT_EQ(vlans("vlan 10 internal")["10"]["internal"], true);
  EXPECT_EQ(vlans("vlan 10 external")["10"]["internal"], false);
  EXPECT_EQ(vlans("vlan 10 expand 20")["10"]["floodsetExpandedVlan"], 20);
  EXPECT_EQ(vlans("vlan 10 expand 20 internal")["10"]["floodsetExpandedVlan"], 20);
  EXPECT_EQ(vlans("vlan 10 expand none")["10"]["floodsetExpandedVlan"], 0);
}

TEST(VlanCommand, aRepeatedLineChangesOnlyWhatItNames) {
  const std::string first = "vlan 10 internal expand 20\nvlan 10 port Ethernet1\n";
  EXPECT_EQ(vlans(first + "vlan 10"), vlans(first));
  EXPECT_EQ(vlans(first + "vlan 10 internal"), vlans(first));
  EXPECT_EQ(vlans(first + "vlan 10 expand none")["10"]["internal"], true);
  EXPECT_EQ(vlans(first + "vlan 10 expand none")["10"]["floodsetExpandedVlan"], 0);
  EXPECT_EQ(vlans(first + "vlan 10 expand none")["10"]["vlanPortConfig"].size(), 1U);
}

TEST(VlanCommand, whetherItIsInternalIsFixed) {
  EXPECT_EQ(errorOf("vlan 10\nvlan 10 internal"),
            "-:2: error: vlan 10 is external, which is fixed when it is made; remove it first: no vlan 10\n");
  EXPECT_EQ(errorOf("vlan 10 internal\nvlan 9-11 external"),
            "-:2: error: vlan 10 is internal, which is fixed when it is made; remove it first: no vlan 10\n");
  EXPECT_EQ(vlans("vlan 10\nno vlan 10\nvlan 10 internal")["10"]["internal"], true);
}

TEST(VlanCommand, aPortHasItsDefaults) {
  EXPECT_EQ(vlans("vlan 10\nvlan 10 port Ethernet1")["10"]["vlanPortConfig"],
            parsed(R"({"Ethernet1":{"allowedTrafficDirection":"both","untagged":false,"pvid":false}})"));
}

TEST(VlanCommand, aPortTakesItsOptions) {
  const auto port = [](const std::string& options) {
    return vlans("vlan 10\nvlan 10 port Ethernet1 " + options)["10"]["vlanPortConfig"]["Ethernet1"];
  };
  EXPECT_EQ(port("untagged")["untagged"], true);
  EXPECT_EQ(port("tagged")["untagged"], false);
  EXPECT_EQ(port("pvid")["pvid"], true);
  EXPECT_EQ(port("no-pvid")["pvid"], false);
  for (const char* const direction : {"both", "ingress", "egress", "none"}) {
    EXPECT_EQ(port(std::string("direction ") + direction)["allowedTrafficDirection"], direction);
  }
}

TEST(VlanCommand, aRepeatedPortLineChangesOnlyWhatItNames) {
  const std::string first = "vlan 10\nvlan 10 port Ethernet1 untagged pvid direction egress\nvlan 10 port Ethernet1 ";
  const auto port = [&](const std::string& options) {
    return vlans(first + options)["10"]["vlanPortConfig"]["Ethernet1"];
  };
  EXPECT_EQ(port(""), parsed(R"({"allowedTrafficDirection":"egress","untagged":true,"pvid":true})"));
  EXPECT_EQ(port("tagged"), parsed(R"({"allowedTrafficDirection":"egress","untagged":false,"pvid":true})"));
  EXPECT_EQ(port("no-pvid"), parsed(R"({"allowedTrafficDirection":"egress","untagged":true,"pvid":false})"));
  EXPECT_EQ(port("direction both"), parsed(R"({"allowedTrafficDirection":"both","untagged":true,"pvid":true})"));
}

TEST(VlanCommand, aPortNeedsItsVlan) {
  EXPECT_EQ(errorOf("vlan 10\nvlan 10-11 port Ethernet1"),
            "-:2: error: vlan 11 does not exist; make it first: vlan 11\n");
  EXPECT_EQ(errorOf("no vlan 10 port Ethernet1"), "-:1: error: vlan 10 does not exist; make it first: vlan 10\n");
}

TEST(VlanCommand, noRemovesTheVlanOrThePort) {
  EXPECT_EQ(vlans("vlan 10-12\nno vlan 11-20").size(), 1U);
  EXPECT_EQ(vlans("vlan 10\nvlan 10 port Ethernet1-3\nno vlan 10 port Ethernet2-9")["10"]["vlanPortConfig"].size(), 1U);
}

// map

TEST(MapCommand, givesVlansToATopologyThatNeedNotExist) {
  EXPECT_EQ(document("map 10-11 A\nmap 11 \"my topology\"", "config")["vidToTopoMap"],
            parsed(R"({"10":"A","11":"my topology"})"));
}

TEST(MapCommand, noRemovesTheMapping) {
  EXPECT_EQ(document("map 10-12 A\nno map 11-12,20", "config")["vidToTopoMap"], parsed(R"({"10":"A"})"));
}

TEST(MapCommand, needsAName) {
  EXPECT_EQ(errorOf("map 10"), "-:1: error: expected the name of a topology, found the end of the line\n");
  EXPECT_EQ(errorOf("map 10 \"\""), "-:1: error: the name of a topology must not be empty\n");
}

// topology

TEST(TopologyCommand, hasItsDefaults) {
  EXPECT_EQ(topologies("topology A"), parsed(R"({"A":{"topoNumber":0,"publishPortConfig":false,
            "publishedPortState":"forwarding","topoPortConfig":{}}})"));
}

TEST(TopologyCommand, takesItsOptions) {
  EXPECT_EQ(topologies("topology A number 4294967295")["A"]["topoNumber"], 4294967295U);
  EXPECT_EQ(topologies("topology A publish-ports on")["A"]["publishPortConfig"], true);
  EXPECT_EQ(topologies("topology A publish-ports on\ntopology A publish-ports off")["A"]["publishPortConfig"], false);
  for (const char* const state : {"disabled", "blocking", "learning", "forwarding"}) {
    EXPECT_EQ(topologies(std::string("topology A publish-state ") + state)["A"]["publishedPortState"], state);
  }
  EXPECT_EQ(errorOf("topology A publish-ports maybe"),
            "-:1: error: expected on or off for publish-ports, found 'maybe'\n");
}

TEST(TopologyCommand, aRepeatedLineChangesOnlyWhatItNames) {
  const std::string first = "topology A number 1 publish-ports on publish-state learning\ntopology A port Ethernet1\n";
  Json expected = topologies(first);
  EXPECT_EQ(topologies(first + "topology A"), expected);
  EXPECT_EQ(topologies(first + "topology A number 1"), expected);
  expected["A"]["publishPortConfig"] = false;
  EXPECT_EQ(topologies(first + "topology A publish-ports off"), expected);
}

TEST(TopologyCommand, theNumberIsFixed) {
  EXPECT_EQ(
      errorOf("topology A number 1\ntopology A number 2"),
      "-:2: error: topology A has the number 1, which is fixed when it is made; remove it first: no topology A\n");
  EXPECT_EQ(errorOf("topology \"my one\"\ntopology \"my one\" number 2"),
            "-:2: error: topology \"my one\" has the number 0, which is fixed when it is made; remove it first: "
            "no topology \"my one\"\n");
}

TEST(TopologyCommand, aPortHasItsDefaultsAndTakesItsOptions) {
  const auto port = [](const std::string& options) {
    return topologies("topology A\ntopology A port Ethernet1 " + options)["A"]["topoPortConfig"]["Ethernet1"];
  };
  EXPECT_EQ(port(""), parsed(R"({"portState":"disabled","fdbFlush":0})"));
  EXPECT_EQ(port("flush 4294967295"), parsed(R"({"portState":"disabled","fdbFlush":4294967295})"));
  for (const char* const state : {"disabled", "blocking", "learning", "forwarding"}) {
    EXPECT_EQ(port(std::string("state ") + state)["portState"], state);
  }
}

TEST(TopologyCommand, aRepeatedPortLineChangesOnlyWhatItNames) {
  const std::string first = "topology A\ntopology A port Ethernet1 state learning flush 3\ntopology A port Ethernet1 ";
  const auto port = [&](const std::string& options) {
    return topologies(first + options)["A"]["topoPortConfig"]["Ethernet1"];
  };
  EXPECT_EQ(port(""), parsed(R"({"portState":"learning","fdbFlush":3})"));
  EXPECT_EQ(port("state blocking"), parsed(R"({"portState":"blocking","fdbFlush":3})"));
  EXPECT_EQ(port("flush 4"), parsed(R"({"portState":"learning","fdbFlush":4})"));
}

TEST(TopologyCommand, aPortNeedsItsTopology) {
  const std::string text = "-:1: error: topology A does not exist; make it first: topology A\n";
  EXPECT_EQ(errorOf("topology A port Ethernet1"), text);
  EXPECT_EQ(errorOf("no topology A port Ethernet1"), text);
}

TEST(TopologyCommand, noRemovesTheTopologyOrThePort) {
  EXPECT_EQ(topologies("topology A\ntopology B\nno topology A\nno topology C").size(), 1U);
  EXPECT_EQ(topologies("topology A\ntopology A port Ethernet1-3\nno topology A port Ethernet2-9")["A"]["topoPortConfig"]
                .size(),
            1U);
}

// status

TEST(StatusCommand, makesAndRemovesStatuses) {
  const auto status = [](const std::string& scenario) { return document(scenario, "status")["topoStatus"]; };
  EXPECT_EQ(status("status A"), parsed(R"({"A":{"topoPortStatus":[]}})"));
  EXPECT_EQ(status("status A\nstatus A port Ethernet9-10\nstatus A port Ethernet10"),
            parsed(R"({"A":{"topoPortStatus":["Ethernet9","Ethernet10"]}})"));
  EXPECT_EQ(status("status A\nstatus A port Ethernet1-3\nno status A port Ethernet2-9"),
            parsed(R"({"A":{"topoPortStatus":["Ethernet1"]}})"));
  EXPECT_EQ(status("status A\nno status A\nno status B"), Json::object());
}

TEST(StatusCommand, aPortNeedsItsStatus) {
  const std::string text = "-:2: error: status A does not exist; make it first: status A\n";
  EXPECT_EQ(errorOf("topology A\nstatus A port Ethernet1"), text);
  EXPECT_EQ(errorOf("topology A\nno status A port Ethernet1"), text);
}

// instance

TEST(InstanceCommand, makesAndRemovesStatuses) {
  const auto instance = [](const std::string& scenario) { return document(scenario, "instance")["topoStatus"]; };
  EXPECT_EQ(instance("instance A"), parsed(R"({"A":{"topoNumber":0,"topoPortStatus":[]}})"));
  EXPECT_EQ(instance("instance A number 7\ninstance A\ninstance A number 7\ninstance A port Ethernet2-3"),
            parsed(R"({"A":{"topoNumber":7,"topoPortStatus":["Ethernet2","Ethernet3"]}})"));
  EXPECT_EQ(instance("instance A\ninstance A port Ethernet1-3\nno instance A port Ethernet2-9"),
            parsed(R"({"A":{"topoNumber":0,"topoPortStatus":["Ethernet1"]}})"));
  EXPECT_EQ(instance("instance A\nno instance A\nno instance B"), Json::object());
}

TEST(InstanceCommand, theNumberIsFixed) {
  EXPECT_EQ(
      errorOf("instance A\ninstance A number 2"),
      "-:2: error: instance A has the number 0, which is fixed when it is made; remove it first: no instance A\n");
}

TEST(InstanceCommand, aPortNeedsItsStatus) {
  const std::string text = "-:2: error: instance A does not exist; make it first: instance A\n";
  EXPECT_EQ(errorOf("topology A\ninstance A port Ethernet1"), text);
  EXPECT_EQ(errorOf("topology A\nno instance A port Ethernet1"), text);
}

// force

TEST(ForceCommand, setsAndRemovesForcedPorts) {
  const auto forced = [](const std::string& scenario) { return document(scenario, "view")["forceEnabledPorts"]; };
  EXPECT_EQ(forced("force Ethernet1-2 on\nforce Ethernet2 off"), parsed(R"({"Ethernet1":true,"Ethernet2":false})"));
  EXPECT_EQ(forced("force Ethernet1-3 on\nno force Ethernet2-9"), parsed(R"({"Ethernet1":true})"));
  EXPECT_EQ(errorOf("force Ethernet1"), "-:1: error: expected on or off for force, found the end of the line\n");
}

}  // namespace Topo::ConfigCommandsTest
