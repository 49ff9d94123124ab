// `explain`: the facts about the port, from its membership of the VLAN to the view.

#include "tests/topo/Explained.h"

namespace Topo::ExplainPortTest {

using Test::configuration;
using Test::Explained;
using Test::hindering;
using Test::running;
using Test::runningOnStatus;

/// VLAN 20 is in a topology of its own, and reaches the ports of VLAN 10.
const std::string expansion =
    "vlan 20 expand 10\n"
    "topology B\n"
    "topology B port Ethernet1-3 state forwarding\n"
    "map 20 B\n"
    "start library\n"
    "start publisher\n"
    "settle\n";

TEST(ExplainPort, isNoMember) {
  EXPECT_EQ(hindering("membership", Explained(running + "no vlan 10 port Ethernet1\nsettle\n")), "none");
  EXPECT_EQ(hindering("membership", Explained(running, "vlan 10 port Ethernet4")), "none");
}

TEST(ExplainPort, isAMemberOfItsOwn) {
  const auto membership = [](const std::string& options) {
    return Explained(running + "vlan 10 port Ethernet1 " + options + "\nsettle\n")["membership"];
  };
  EXPECT_EQ(membership(""), "own, tagged");
  EXPECT_EQ(membership("untagged"), "own, untagged");
  EXPECT_EQ(membership("pvid"), "own, tagged, pvid");
  EXPECT_EQ(membership("untagged pvid"), "own, untagged, pvid");
}

TEST(ExplainPort, inheritsItsMembership) {
  const Explained inherited(configuration + expansion, "vlan 20 port Ethernet1");
  EXPECT_EQ(inherited["membership"], "inherited from VLAN 10");
  EXPECT_EQ(inherited["filter"], "") << "that was asked when VLAN 10 took the port in";
  EXPECT_TRUE(inherited.forwards());
}

TEST(ExplainPort, hasNothingToInherit) {
  EXPECT_EQ(hindering("membership", Explained(configuration + expansion, "vlan 20 port Ethernet4")),
            "none, nor one to inherit from VLAN 10");
}

TEST(ExplainPort, isNotAcceptedByTheFilter) {
  const std::string filtered = configuration + "vlan 10 port Vlan7\nstart library filter LocalInterface\nsettle\n";
  EXPECT_EQ(hindering("filter", Explained(filtered, "vlan 10 port Vlan7")), "does not accept the port");
  EXPECT_EQ(Explained(filtered)["filter"], "accepts the port");
  EXPECT_EQ(Explained(running)["filter"], "none");
}

TEST(ExplainPort, isNotPublishedYet) {
  const Explained explained(running + "vlan 10 port Ethernet4\n", "vlan 10 port Ethernet4");
  EXPECT_EQ(hindering("published", explained), "the VLAN is on the port in no topology");
  EXPECT_EQ(explained["membership"], "own, tagged");
  EXPECT_EQ(explained["pending"], "this port of the VLAN");
}

TEST(ExplainPort, isPublishedInTheTopologyThatTheVlanIsLeaving) {
  const Explained explained(running + "topology B\nmap 10 B\n");
  EXPECT_EQ(explained["mapping"], "to topology B");
  EXPECT_EQ(explained["published"], "in topology A");
  EXPECT_TRUE(explained.forwards());
}

TEST(ExplainPort, isNotConfiguredInTheTopology) {
  EXPECT_EQ(hindering("topology port", Explained(running + "no topology A port Ethernet1\nsettle\n")),
            "not configured");
}

TEST(ExplainPort, hasAConfigurationInTheTopology) {
  EXPECT_EQ(Explained(running + "topology A port Ethernet1 flush 7\n")["topology port"],
            "configured, forwarding, flush 7");
}

TEST(ExplainPort, hasNoStatus) {
  EXPECT_EQ(hindering("port status", Explained(running + "no instance A port Ethernet1\nsettle\n")),
            "not in the instance status");
  EXPECT_EQ(hindering("port status", Explained(runningOnStatus + "no status A port Ethernet1\nsettle\n")),
            "not in the plain status");
  EXPECT_EQ(hindering("port status", Explained(running + "no instance A\nsettle\n")), "the topology has no status");
}

TEST(ExplainPort, isNotReportedByThePublisherForAReason) {
  const auto after = [](const std::string& line) {
    return hindering("port status", Explained(running + "start publisher\n" + line + "\nsettle\n"));
  };
  EXPECT_EQ(after("interface Ethernet1 link down"), "not in the instance status: the link is down");
  EXPECT_EQ(after("interface Ethernet1 link unknown"), "not in the instance status: the link is unknown");
  EXPECT_EQ(after("interface Ethernet1 model routed"), "not in the instance status: the interface is routed");
  EXPECT_EQ(after("no interface Ethernet1"), "not in the instance status: the interface has no status");
  EXPECT_EQ(Explained(running + "start publisher\nno vlan 10 port Ethernet1\nsettle\n")["port status"],
            "not in the instance status: the library does not publish the port");
}

TEST(ExplainPort, isReportedByThePublisherAsTheKindOfItsInterfaceDemands) {
  const auto portStatusOf = [](const std::string& intf, const std::string& lines) {
    return Explained(
        running + "vlan 10 port " + intf + "\ntopology A port " + intf + '\n' + lines + "\nstart publisher\nsettle\n",
        "vlan 10 port " + intf)["port status"];
  };
  EXPECT_EQ(portStatusOf("Cpu", ""), "in the instance status");
  EXPECT_EQ(portStatusOf("Ethernet1.5", ""), "not in the instance status: the interface has no status");
  const std::string subIntf = "interface Ethernet1.5 link down model ";
  EXPECT_EQ(portStatusOf("Ethernet1.5", subIntf + "routed"), "in the instance status");
  EXPECT_EQ(portStatusOf("Ethernet1.5", subIntf + "bridged"), "not in the instance status: the link is down");
}

TEST(ExplainPort, hasAStatus) {
  EXPECT_EQ(Explained(running)["port status"], "in the instance status");
  EXPECT_EQ(Explained(runningOnStatus)["port status"], "in the plain status");
}

TEST(ExplainPort, linkGateIsOpenWithoutAPlainStatus) {
  EXPECT_EQ(Explained(running + "interface Ethernet1 link down\n")["link gate"], "open: no plain status is watched");
}

TEST(ExplainPort, linkGateFollowsTheLink) {
  const auto after = [](const std::string& line) { return Explained(runningOnStatus + line + "\nsettle\n"); };
  EXPECT_EQ(after("interface Ethernet1 link up")["link gate"], "open: the link is up");
  EXPECT_EQ(hindering("link gate", after("interface Ethernet1 link down")), "closed: the link is down");
  EXPECT_EQ(hindering("link gate", after("interface Ethernet1 link unknown")), "closed: the link is unknown");
  EXPECT_EQ(hindering("link gate", after("no interface Ethernet1")), "closed: the interface has no status");
}

/// The link gate of one more member, whose interface these lines configure.
Explained gateOf(const std::string& intf, const std::string& lines) {
  return Explained(configuration + "vlan 10 port " + intf + "\ntopology A port " + intf +
                       " state forwarding\nstatus A port " + intf + '\n' + lines +
                       "\nstart library watch status\nsettle\n",
                   "vlan 10 port " + intf);
}

TEST(ExplainPort, linkGateOfTheCpuPortIsOpen) { EXPECT_EQ(gateOf("Cpu", "")["link gate"], "open: the CPU port"); }

TEST(ExplainPort, linkGateOfASubInterfaceClosesOnlyWhereItIsBridged) {
  const std::string subIntf = "interface Ethernet1.5 link down model ";
  const Explained without = gateOf("Ethernet1.5", "");
  EXPECT_EQ(without["link gate"], "open: a sub-interface without an interface status");
  EXPECT_TRUE(without.forwards());
  const Explained routed = gateOf("Ethernet1.5", subIntf + "routed");
  EXPECT_EQ(routed["link gate"], "open: a sub-interface, routed");
  EXPECT_TRUE(routed.forwards());
  EXPECT_EQ(hindering("link gate", gateOf("Ethernet1.5", subIntf + "bridged")), "closed: the link is down");
}

TEST(ExplainPort, isActiveOrNot) {
  EXPECT_EQ(Explained(running)["active"], "yes");
  EXPECT_EQ(Explained(running + "no topology A port Ethernet1\nsettle\n")["active"], "no");
  EXPECT_EQ(Explained(configuration)["active"], "") << "it is not published";
}

TEST(ExplainPort, hasAStateThatDoesNotForward) {
  for (const char* const state : {"disabled", "blocking", "learning"}) {
    EXPECT_EQ(hindering("state", Explained(running + "topology A port Ethernet1 state " + state + "\n")), state);
  }
}

TEST(ExplainPort, isForced) {
  const std::string blocked = running + "start view\ntopology A port Ethernet1 state blocking\n";
  EXPECT_EQ(hindering("state", Explained(blocked + "force Ethernet1 off\n")), "blocking");
  const Explained forced(blocked + "force Ethernet1 on\n");
  EXPECT_TRUE(forced.forwards());
  EXPECT_EQ(forced["forced"], "on: taken for active, and never for blocked");
  EXPECT_EQ(forced["state"], "blocking");
  EXPECT_EQ(forced["view"], "in the VLAN through topology A, not blocked");
}

TEST(ExplainPort, isForcedThoughItIsNotActive) {
  const Explained forced(runningOnStatus + "start view\nno interface Ethernet1\nforce Ethernet1 on\n");
  EXPECT_TRUE(forced.forwards());
  EXPECT_EQ(forced["active"], "no");
  EXPECT_EQ(forced["link gate"], "closed: the interface has no status");
}

TEST(ExplainPort, hasADirection) {
  const auto after = [](const std::string& direction) {
    return Explained(running + "vlan 10 port Ethernet1 direction " + direction + "\nsettle\n");
  };
  EXPECT_EQ(after("ingress")["direction"], "ingress");
  EXPECT_TRUE(after("ingress").forwards());
  EXPECT_EQ(hindering("direction", after("none")), "none");
}

TEST(ExplainPort, viewHasTheLastWord) {
  EXPECT_EQ(Explained(running)["view"], "not running");
  EXPECT_EQ(Explained(configuration + "start library\nstart view\n")["view"], "first pass not over");
  EXPECT_EQ(Explained(running + "start view\n", "vlan 10 port Ethernet4")["view"], "the port is not in the VLAN");
  EXPECT_EQ(Explained(running + "start view\ntopology A port Ethernet1 state learning\n")["view"],
            "in the VLAN through topology A, blocked");
}

TEST(ExplainPort, somethingIsPending) {
  const auto pending = [](const std::string& lines) { return Explained(running + lines)["pending"]; };
  EXPECT_EQ(pending(""), "nothing");
  EXPECT_EQ(pending("map 10 B\n"), "the whole VLAN");
  EXPECT_EQ(pending("vlan 10 port Ethernet1 untagged\n"), "this port of the VLAN");
  EXPECT_EQ(pending("vlan 10 port Ethernet2 untagged\n"), "other ports of the VLAN");
  EXPECT_EQ(pending("set yield-after-one on\nmap 10 B\ndispatch\n"), "the VLAN is under way, leaving topology A");
}

TEST(ExplainPort, whatIsPendingOfOtherPortsDoesNotCount) {
  EXPECT_TRUE(Explained(running + "vlan 10 port Ethernet1 untagged\n").isPending());
  EXPECT_FALSE(Explained(running + "vlan 10 port Ethernet2 untagged\n").isPending());
}

}  // namespace Topo::ExplainPortTest
