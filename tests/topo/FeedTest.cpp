// The change feed: its exact lines, document by document, in the order in which the notifications are delivered.

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/topo/Run.h"

namespace Topo::FeedTest {

using Test::errorOf;
using Test::Outcome;
using Test::runScenario;
using testing::ElementsAre;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

/// What a scenario prints.
Lines linesOf(const std::string& scenario) {
  const Outcome outcome = runScenario(scenario);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.lines();
}

/// What is printed while a document is watched, from the end of `before` on.
Lines feedOf(const std::string& document, const std::string& before, const std::string& scenario) {
  return linesOf(before + "watch " + document + " on\n" + scenario);
}

// Lines of a feed at time 0, the value as its text.
std::string add(const std::string& document, const std::string& path, const std::string& value = "") {
  return R"({"time":0.0,"document":")" + document + R"(","op":"add","path":")" + path + "\"" +
         (value.empty() ? "" : ",\"value\":" + value) + "}";
}
std::string replace(const std::string& document, const std::string& path, const std::string& value) {
  return R"({"time":0.0,"document":")" + document + R"(","op":"replace","path":")" + path + R"(","value":)" + value +
         "}";
}
std::string remove(const std::string& document, const std::string& path) {
  return R"({"time":0.0,"document":")" + document + R"(","op":"remove","path":")" + path + "\"}";
}

/// A topology with a port that is active, settled.
const std::string settled =
    "vlan 10\nvlan 10 port Ethernet1-2\ntopology A\ntopology A port Ethernet1 state forwarding\nmap 10 A\n"
    "instance A\ninstance A port Ethernet1\nstart library\nstart view\nsettle\n";

TEST(Feed, aLineIsAnObjectOfTimeDocumentOperationPathAndValue) {
  EXPECT_EQ(runScenario("watch interfaces on\ninterface Ethernet1\nadvance 1.5\n"
                        "interface Ethernet1 link up\nno interface Ethernet1\n")
                .out,
            R"({"time":0.0,"document":"interfaces","op":"add","path":"/intfStatus/Ethernet1",)"
            R"("value":{"linkStatus":"unknown","forwardingModel":"unspecified"}})"
            "\n"
            R"({"time":1.5,"document":"interfaces","op":"replace","path":"/intfStatus/Ethernet1/linkStatus",)"
            R"("value":"up"})"
            "\n"
            R"({"time":1.5,"document":"interfaces","op":"remove","path":"/intfStatus/Ethernet1"})"
            "\n");
}

TEST(Feed, nothingChangedIsNothingTold) {
  const std::string scenario = "interface Ethernet1 link up model bridged\n";
  EXPECT_THAT(feedOf("interfaces", scenario, scenario + "interface Ethernet1\nno interface Ethernet2\n"), IsEmpty());
}

// The inputs. What was there before the watch is watched as well as what comes.

TEST(Feed, tellsOfInterfaces) {
  const std::string d = "interfaces";
  EXPECT_THAT(
      feedOf(d, "interface Ethernet1\n",
             "interface Ethernet1 link down model routed\ninterface Ethernet2 model bridged\n"),
      ElementsAre(replace(d, "/intfStatus/Ethernet1/linkStatus", R"("down")"),
                  replace(d, "/intfStatus/Ethernet1/forwardingModel", R"("routed")"),
                  add(d, "/intfStatus/Ethernet2", R"({"linkStatus":"unknown","forwardingModel":"unspecified"})"),
                  replace(d, "/intfStatus/Ethernet2/forwardingModel", R"("bridged")")));
}

TEST(Feed, tellsOfVlans) {
  const std::string d = "bridging";
  EXPECT_THAT(feedOf(d, "vlan 9 internal\n",
                     "vlan 9 expand 20\nvlan 10 internal\nvlan 10 port Ethernet1 untagged\n"
                     "vlan 10 port Ethernet1 pvid direction egress\nvlan 10 port Ethernet1 pvid\n"
                     "vlan 9 expand none\nno vlan 10 port Ethernet1\nno vlan 10\n"),
              ElementsAre(replace(d, "/vlanConfig/9/floodsetExpandedVlan", "20"),
                          add(d, "/vlanConfig/10", R"({"internal":true,"floodsetExpandedVlan":0,"vlanPortConfig":{}})"),
                          add(d, "/vlanConfig/10/vlanPortConfig/Ethernet1",
                              R"({"allowedTrafficDirection":"both","untagged":true,"pvid":false})"),
                          replace(d, "/vlanConfig/10/vlanPortConfig/Ethernet1",
                                  R"({"allowedTrafficDirection":"egress","untagged":true,"pvid":true})"),
                          replace(d, "/vlanConfig/9/floodsetExpandedVlan", "0"),
                          remove(d, "/vlanConfig/10/vlanPortConfig/Ethernet1"), remove(d, "/vlanConfig/10")));
}

TEST(Feed, tellsOfTheConfiguration) {
  const std::string d = "config";
  EXPECT_THAT(
      feedOf(d, "topology A\nmap 9 A\n",
             "topology A publish-ports on publish-state learning\ntopology B number 2\n"
             "topology B port Ethernet1 state blocking flush 3\ntopology B port Ethernet1 flush 4\nmap 10 A\nmap 9 B\n"
             "no topology B port Ethernet1\nno topology A\nno map 10\n"),
      ElementsAre(replace(d, "/topoConfig/A/publishPortConfig", "true"),
                  replace(d, "/topoConfig/A/publishedPortState", R"("learning")"),
                  add(d, "/topoConfig/B",
                      R"({"topoNumber":2,"publishPortConfig":false,"publishedPortState":"forwarding",)"
                      R"("topoPortConfig":{}})"),
                  add(d, "/topoConfig/B/topoPortConfig/Ethernet1", R"({"portState":"blocking","fdbFlush":0})"),
                  replace(d, "/topoConfig/B/topoPortConfig/Ethernet1/fdbFlush", "3"),
                  replace(d, "/topoConfig/B/topoPortConfig/Ethernet1/fdbFlush", "4"),
                  add(d, "/vidToTopoMap/10", R"("A")"), replace(d, "/vidToTopoMap/9", R"("B")"),
                  remove(d, "/topoConfig/B/topoPortConfig/Ethernet1"), remove(d, "/topoConfig/A"),
                  remove(d, "/vidToTopoMap/10")));
}

TEST(Feed, tellsOfStatusesWhosePortsHaveNoValue) {
  const std::string scenario =
      " A port Ethernet2\nno status A port Ethernet1\nstatus B\nstatus B port Ethernet3\nno status A\n";
  EXPECT_THAT(feedOf("status", "status A\nstatus A port Ethernet1\n", "status" + scenario),
              ElementsAre(add("status", "/topoStatus/A/topoPortStatus/Ethernet2"),
                          remove("status", "/topoStatus/A/topoPortStatus/Ethernet1"),
                          add("status", "/topoStatus/B", R"({"topoPortStatus":[]})"),
                          add("status", "/topoStatus/B/topoPortStatus/Ethernet3"), remove("status", "/topoStatus/A")));
}

TEST(Feed, tellsOfInstanceStatuses) {
  const std::string d = "instance";
  EXPECT_THAT(feedOf(d, "instance A\ninstance A port Ethernet1\n",
                     "no instance A port Ethernet1\ninstance B number 2\ninstance B port Ethernet3\nno instance A\n"),
              ElementsAre(remove(d, "/topoStatus/A/topoPortStatus/Ethernet1"),
                          add(d, "/topoStatus/B", R"({"topoNumber":2,"topoPortStatus":[]})"),
                          add(d, "/topoStatus/B/topoPortStatus/Ethernet3"), remove(d, "/topoStatus/A")));
}

// What is published.

TEST(Feed, tellsOfTheState) {
  const std::string d = "state";
  const std::string port = "/topo/A/port/Ethernet1";
  EXPECT_THAT(
      feedOf(d, "",
             "topology A\ntopology A port Ethernet1 state forwarding\ninstance A\ninstance A port Ethernet1\n"
             "start library\nvlan 10\nvlan 10 port Ethernet1\nmap 10 A\nsettle\n"
             "topology A port Ethernet1 state blocking flush 1\nvlan 10 port Ethernet1 untagged\nsettle\n"
             "no map 10\nsettle\nno topology A\n"),
      ElementsAre(
          add(d, "/topo/A", R"({"port":{}})"), replace(d, "/initDone", "true"),
          add(d, port, R"({"active":false,"state":"disabled","fdbFlush":0,"vlanPortConfig":{}})"),
          add(d, port + "/vlanPortConfig/10", R"({"allowedTrafficDirection":"both","untagged":false,"pvid":false})"),
          replace(d, port + "/active", "true"), replace(d, port + "/state", R"("forwarding")"),
          replace(d, port + "/state", R"("blocking")"), replace(d, port + "/fdbFlush", "1"),
          replace(d, port + "/vlanPortConfig/10", R"({"allowedTrafficDirection":"both","untagged":true,"pvid":false})"),
          remove(d, port + "/vlanPortConfig/10"), remove(d, port), remove(d, "/topo/A")));
}

TEST(Feed, tellsOfTheViewWhoseTopologiesHaveNoValue) {
  const std::string d = "view";
  const std::string port = "/topoVlan/10/topoPort/Ethernet1";
  EXPECT_THAT(
      feedOf(d, settled,
             "topology A port Ethernet1 state blocking\nvlan 10 port Ethernet1 direction ingress\nsettle\n"
             "no instance A port Ethernet1\nforce Ethernet9 on\nforce Ethernet9 off\nno force Ethernet9\n"
             "instance A port Ethernet1\n"),
      ElementsAre(replace(d, port + "/blocked", "true"), replace(d, port + "/allowedTrafficDirection", R"("ingress")"),
                  remove(d, port + "/topo/A"), remove(d, port), remove(d, "/topoVlan/10"),
                  add(d, "/forceEnabledPorts/Ethernet9", "true"), replace(d, "/forceEnabledPorts/Ethernet9", "false"),
                  remove(d, "/forceEnabledPorts/Ethernet9"), add(d, "/topoVlan/10", R"({"topoPort":{}})"),
                  add(d, port, R"({"topo":[],"blocked":false,"allowedTrafficDirection":"both"})"),
                  replace(d, port + "/blocked", "true"), add(d, port + "/topo/A"),
                  replace(d, port + "/allowedTrafficDirection", R"("ingress")")));
}

// The inside of the library.

TEST(Feed, tellsOfTheBacklog) {
  const std::string d = "backlog";
  EXPECT_THAT(feedOf(d, settled + "set threshold 0\n", "vlan 10 port Ethernet3\nvlan 10 port Ethernet4\nsettle\n"),
              ElementsAre(replace(d, "/idle", "false"), add(d, "/dirtyVlan/10", R"({"dirty":false,"intf":[]})"),
                          add(d, "/dirtyVlan/10/intf/Ethernet3"), replace(d, "/dirtyVlan/10/dirty", "true"),
                          remove(d, "/dirtyVlan/10/intf/Ethernet3"), replace(d, "/dirtyVlan/10/dirty", "false"),
                          remove(d, "/dirtyVlan/10"), replace(d, "/idle", "true")));
}

TEST(Feed, tellsOfTheMapping) {
  const std::string d = "mapping";
  EXPECT_THAT(feedOf(d, "topology B\n" + settled,
                     "vlan 20\nvlan 20 expand 10\nmap 20 B\nsettle\nvlan 20 expand none\nno vlan 20\nsettle\n"
                     "no topology B\n"),
              ElementsAre(add(d, "/vlanToExpVlanSetMap/20", "[]"), add(d, "/vlanToExpVlanSetMap/20/10"),
                          add(d, "/expVlanToVlanSetMap/10", "[]"), add(d, "/expVlanToVlanSetMap/10/20"),
                          add(d, "/vidToExpandedTopoMap/20", R"("B")"), add(d, "/vlanConfigSm/20"),
                          add(d, "/mappedVlan/B", "[]"), add(d, "/mappedVlan/B/20"),
                          remove(d, "/expVlanToVlanSetMap/10/20"), remove(d, "/expVlanToVlanSetMap/10"),
                          remove(d, "/vlanToExpVlanSetMap/20/10"), remove(d, "/vlanToExpVlanSetMap/20"),
                          remove(d, "/vidToExpandedTopoMap/20"), remove(d, "/vlanConfigSm/20"),
                          remove(d, "/mappedVlan/B/20"), remove(d, "/topoConfigSm/B"), remove(d, "/mappedVlan/B")));
}

TEST(Feed, theInsideIsToldAnewWhereTheLibraryIsStartedReplacedOrStopped) {
  const std::string fresh =
      R"({"idle":false,"timeMin":0.0,"bookmark":0,"oldTopoName":"","updatesSeen":0,"updatesProcessed":0,)"
      R"("timeUsed":0.0,"dispatchCount":0,"yieldBeforeFinishingCount":0,"delPendingPortSet":[],"deletedPortSet":[],)"
      R"("dirtyVlan":{}})";
  const std::string empty =
      R"({"mappedVlan":{},"vlanConfigSm":[],"topoConfigSm":[],"vlanToExpVlanSetMap":{},"expVlanToVlanSetMap":{},)"
      R"("vidToExpandedTopoMap":{}})";
  EXPECT_THAT(
      linesOf("watch backlog on\nwatch mapping on\n"
              "echo start\nstart library\necho again\nstart library\n"
              "echo replace\nstart library watch status interfaces later\n"
              "echo attach\nattach interfaces\nattach interfaces\necho stop\nstop library\n"),
      ElementsAre("start", replace("backlog", "", fresh), replace("mapping", "", empty), "again", "replace",
                  replace("backlog", "", "{}"), replace("mapping", "", "{}"), "attach", replace("backlog", "", fresh),
                  replace("mapping", "", empty), "stop", replace("backlog", "", "{}"), replace("mapping", "", "{}")));
}

TEST(Feed, theNewInsideIsWatched) {
  EXPECT_THAT(
      feedOf("backlog", settled + "start library name other\nsettle\n", "vlan 10 port Ethernet3\n"),
      ElementsAre(replace("backlog", "/idle", "false"), add("backlog", "/dirtyVlan/10", R"({"dirty":false,"intf":[]})"),
                  add("backlog", "/dirtyVlan/10/intf/Ethernet3")));
}

// Several documents.

TEST(Feed, linesComeInTheOrderOfDelivery) {
  const std::string change = "topology A port Ethernet1 state blocking\n";
  const std::string config = replace("config", "/topoConfig/A/topoPortConfig/Ethernet1/portState", R"("blocking")");
  const std::string state = replace("state", "/topo/A/port/Ethernet1/state", R"("blocking")");
  const std::string view = replace("view", "/topoVlan/10/topoPort/Ethernet1/blocked", "true");
  const std::string watches = "watch config on\nwatch state on\nwatch view on\n";
  // The library reads the configuration before a watch that comes later does, and the view the state.
  EXPECT_THAT(linesOf(settled + watches + change), ElementsAre(view, state, config));
  // A watch that was there before the library reads the configuration first, and so on.
  const Lines lines = linesOf("watch config on\n" + settled + "watch state on\nstop view\nstart view\n" +
                              "watch view on\necho now\n" + change);
  EXPECT_THAT(Lines(std::find(lines.begin(), lines.end(), "now"), lines.end()),
              ElementsAre("now", config, state, view));
}

TEST(Feed, aWatchThatIsOffTellsNothing) {
  EXPECT_THAT(linesOf("watch interfaces on\nwatch bridging on\nwatch interfaces off\ninterface Ethernet1\nvlan 10\n"
                      "watch bridging off\nwatch bridging off\nno vlan 10\nwatch state off\n"),
              ElementsAre(add("bridging", "/vlanConfig/10",
                              R"({"internal":false,"floodsetExpandedVlan":0,"vlanPortConfig":{}})")));
}

TEST(Feed, aWatchThatIsOnTwiceTellsOnce) {
  EXPECT_THAT(feedOf("status", "watch status on\n", "status A\n"),
              ElementsAre(add("status", "/topoStatus/A", R"({"topoPortStatus":[]})")));
  EXPECT_THAT(feedOf("status", "watch status on\nwatch status off\n", "status A\n"),
              ElementsAre(add("status", "/topoStatus/A", R"({"topoPortStatus":[]})")));
}

TEST(Feed, namesAreEscapedForThePathAndForJson) {
  EXPECT_THAT(feedOf("status", "",
                     R"(status "a/b~c \"d\"")"
                     "\n"
                     R"(status "a/b~c \"d\"" port ~1)"
                     "\n"),
              ElementsAre(add("status", R"(/topoStatus/a~1b~0c \"d\")", R"({"topoPortStatus":[]})"),
                          add("status", R"(/topoStatus/a~1b~0c \"d\"/topoPortStatus/~01)")));
}

TEST(WatchCommand, badWatchesAreErrors) {
  const std::string documents =
      "-:1: error: expected a document, state, view, instance, status, config, bridging, interfaces, backlog or "
      "mapping, found ";
  EXPECT_EQ(errorOf("watch"), documents + "the end of the line\n");
  EXPECT_EQ(errorOf("watch log on"), documents + "'log'\n");
  EXPECT_EQ(errorOf("watch state"), "-:1: error: expected on or off for watch, found the end of the line\n");
  EXPECT_EQ(errorOf("watch state maybe"), "-:1: error: expected on or off for watch, found 'maybe'\n");
  EXPECT_EQ(errorOf("watch state on now"), "-:1: error: expected the end of the line, found 'now'\n");
}

}  // namespace Topo::FeedTest
