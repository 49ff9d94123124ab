// The commands that start and stop the library, the publisher and the view: every option and default, what restarts and
// what does not, and what is an error.

#include <csignal>

#include "tests/topo/Scenarios.h"

namespace Topo::RunCommandsTest {

using Test::bridge;
using Test::document;
using Test::errorOf;
using Test::holds;
using Test::Json;
using Test::Outcome;
using Test::runScenario;

/// A topology that comes later: with a plain status it needs the interfaces.
const std::string newTopology = "topology B\nstatus B\nexpect state /topo/B == {\"port\":{}}\n";

/// Whether the topology is there after a start with these options, and whether its first port is active.
struct Presence {
  bool isThere;
  bool isActive;
};
Presence presenceAfter(const std::string& before, const std::string& options) {
  const Json topo = document(before + "start library " + options + "\nsettle", "state")["topo"];
  return {topo.contains("A"), topo.contains("A") && topo.at("A").at("port").at("Ethernet1").at("active") == true};
}

// start library

TEST(StartLibrary, createStatusNeedsNoStatusOfATopologyAndNotifyStatusDoes) {
  const std::string withoutStatus = bridge + "no instance A\n";
  EXPECT_TRUE(presenceAfter(withoutStatus, "").isThere);  // by default
  EXPECT_TRUE(presenceAfter(withoutStatus, "mode createStatus").isThere);
  EXPECT_FALSE(presenceAfter(withoutStatus, "mode notifyStatus").isThere);
  EXPECT_TRUE(presenceAfter(bridge, "mode notifyStatus").isActive);
}

TEST(StartLibrary, watchesTheStatusThatItIsToldTo) {
  for (const char* const options : {"", "watch instance"}) {
    EXPECT_TRUE(presenceAfter(bridge + "no status A\n", options).isActive);
    EXPECT_FALSE(presenceAfter(bridge + "no instance A\n", options).isActive);
  }
  EXPECT_TRUE(presenceAfter(bridge + "no instance A\n", "watch status").isActive);
  EXPECT_FALSE(presenceAfter(bridge + "no status A\n", "watch status").isThere);
  EXPECT_FALSE(presenceAfter(bridge, "watch none").isThere);
}

TEST(StartLibrary, ignoresInternalVlansIfToldTo) {
  const std::string scenario = bridge + "vlan 20 internal\nmap 20 A\n";
  EXPECT_EQ(document(scenario + "start library ignore-internal\nsettle", "mapping")["mappedVlan"]["A"],
            Json::array({10}));
  EXPECT_EQ(document(scenario + "start library\nsettle", "mapping")["mappedVlan"]["A"], Json::array({10, 20}));
}

TEST(StartLibrary, isDeferredByDefault) {
  for (const char* const options : {"", "deferred"}) {
    holds(bridge + "start library " + options +
          "\nexpect state /initDone == false\nexpect state /topo/A/port == {}\nexpect backlog /dirtyVlan/10/dirty == "
          "true\ndispatch\nexpect state /initDone == true\n");
  }
}

TEST(StartLibrary, withoutDeferralNothingWaitsForARound) {
  holds(bridge +
        "start library immediate\n"
        "expect state /topo/A/port/Ethernet2/state == \"forwarding\"\n"
        "expect backlog /idle == true\n"
        "vlan 10 port Ethernet3\n"
        "expect state /topo/A/port/Ethernet3/active == false\n"
        "expect backlog /dirtyVlan == {}\n");
}

TEST(StartLibrary, filtersInterfacesIfToldTo) {
  const std::string scenario = bridge + "vlan 10 port Ethernet1.5\n";
  holds(scenario + "start library filter LocalInterface\nsettle\nexpect state /topo/A/port/Ethernet1.5 absent\n");
  for (const char* const options : {"", "filter none"}) {
    holds(scenario + "start library " + options + "\nsettle\nexpect state /topo/A/port/Ethernet1.5/active == false\n");
  }
}

TEST(StartLibrary, aPlainStatusWaitsForTheInterfaces) {
  const std::string scenario = bridge + "start library watch status interfaces later\nsettle\n";
  holds(scenario + "expect state /initDone == false\nexpect state /topo == {}\nexpect backlog \"\" == {}\n" +
        "attach interfaces\nsettle\nexpect state /topo/A/port/Ethernet1/active == true\n");
  holds(bridge + "start library watch status interfaces now\nsettle\nexpect state /initDone == true\n");
}

/// What the feed of the backlog, which begins anew with every library, tells of a second start with these options.
std::string feedOfSecondStart(const std::string& options) {
  return runScenario(bridge + "start library\nsettle\nwatch backlog on\nstart library " + options + "\n").out;
}

TEST(StartLibrary, onTheSameTermsChangesNothing) {
  for (const char* const options :
       {"", "mode createStatus watch instance deferred filter none interfaces now name topoLib", "name topoLib",
        "interfaces later", "filter LocalInterface"}) {
    EXPECT_EQ(feedOfSecondStart(options), "") << options;
  }
}

TEST(StartLibrary, onOtherTermsReplacesIt) {
  const std::string anew = R"({"time":0.0,"document":"backlog","op":"replace","path":"","value":{"idle":)";
  for (const char* const options :
       {"mode notifyStatus", "watch status", "watch none", "ignore-internal", "immediate", "name other"}) {
    EXPECT_EQ(feedOfSecondStart(options).rfind(anew, 0), 0U) << options;
  }
}

TEST(StartLibrary, againAttachesInterfacesThatWereDetached) {
  const std::string detached = "start library watch status\ndetach interfaces\n";
  holds(detached + "start library watch status\n" + newTopology);
  EXPECT_EQ(runScenario(detached + "start library watch status interfaces later\n" + newTopology).status, -SIGABRT);
}

TEST(StartLibrary, aFilterThatChangesReachesTheVlansThatComeLater) {
  holds(bridge +
        "start library\nsettle\n"
        "start library filter LocalInterface\n"
        "vlan 10 port Ethernet1.5\nvlan 20\nvlan 20 port Ethernet1.6\nmap 20 A\nsettle\n"
        "expect state /topo/A/port/Ethernet1.5/active == false\n"
        "expect state /topo/A/port/Ethernet1.6 absent\n");
}

TEST(StartLibrary, badOptionsAreErrors) {
  const auto startError = [](const std::string& options) {
    const std::string text = errorOf("start library " + options);
    EXPECT_EQ(text.rfind("-:1: error: ", 0), 0U) << text;
    return text.substr(text.find("error: ") + 7);
  };
  EXPECT_EQ(startError("mode fast"), "expected createStatus or notifyStatus, found 'fast'\n");
  EXPECT_EQ(startError("watch both"), "expected status, instance or none, found 'both'\n");
  EXPECT_EQ(startError("watch"), "expected status, instance or none, found the end of the line\n");
  EXPECT_EQ(startError("filter CpuInterface"), "expected LocalInterface or none, found 'CpuInterface'\n");
  EXPECT_EQ(startError("interfaces never"), "expected now or later, found 'never'\n");
  EXPECT_EQ(startError("name"), "expected the name of a library, found the end of the line\n");
  EXPECT_EQ(startError("name \"\""), "the name of a library must not be empty\n");
  EXPECT_EQ(startError("fast"),
            "expected mode, watch, ignore-internal, deferred, immediate, filter, interfaces or name, found 'fast'\n");
  EXPECT_EQ(startError("deferred immediate"), "deferred or immediate is given twice\n");
  EXPECT_EQ(startError("watch status mode createStatus watch none"), "watch is given twice\n");
}

TEST(StartLibrary, aBadLineStartsNothing) {
  const Outcome outcome = runScenario("watch state on\nwatch backlog on\nstart library immediate filter any\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
}

// start publisher, start view, stop

TEST(StartPublisher, reportsThePortsWhoseLinkIsUpUntilItIsStopped) {
  holds(bridge +
        "no instance A\nstart library\nstart publisher\nsettle\n"
        "expect instance /topoStatus/A/topoPortStatus == [\"Ethernet1\",\"Ethernet2\"]\n"
        "start publisher\ninterface Ethernet2 link down\n"
        "expect instance /topoStatus/A/topoPortStatus == [\"Ethernet1\"]\n"
        "stop publisher\ninterface Ethernet1 link down\n"
        "expect instance /topoStatus/A/topoPortStatus == [\"Ethernet1\"]\n"
        "start publisher\n"
        "expect instance /topoStatus/A/topoPortStatus == []\n");
}

TEST(StartView, showsThePortsByVlanUntilItIsStopped) {
  holds(bridge +
        "start library\nstart view\nsettle\n"
        "expect view /topoVlan/10/topoPort/Ethernet1/blocked == false\n"
        "start view\ntopology A port Ethernet1 state blocking\n"
        "expect view /topoVlan/10/topoPort/Ethernet1/blocked == true\n"
        "stop view\ntopology A port Ethernet2 state blocking\n"
        "expect view /topoVlan/10/topoPort/Ethernet2/blocked == false\n"
        "start view\n"
        "expect view /topoVlan/10/topoPort/Ethernet2/blocked == true\n");
}

TEST(StartCommand, needsToKnowWhat) {
  const std::string expected = "-:1: error: expected library, publisher or view, found ";
  EXPECT_EQ(errorOf("start"), expected + "the end of the line\n");
  EXPECT_EQ(errorOf("start all"), expected + "'all'\n");
  EXPECT_EQ(errorOf("start publisher now"), "-:1: error: expected the end of the line, found 'now'\n");
  EXPECT_EQ(errorOf("start view now"), "-:1: error: expected the end of the line, found 'now'\n");
}

TEST(StopCommand, leavesWhatThePartHasPublished) {
  const std::string scenario = bridge + "start library\nstart publisher\nstart view\nsettle\n";
  const std::string stop = "stop library\nstop publisher\nstop view\nsettle\n";
  for (const char* const name : {"state", "instance", "view"}) {
    EXPECT_EQ(document(scenario + stop, name), document(scenario, name));
  }
  EXPECT_EQ(document(scenario + stop, "backlog"), Json::object());
  EXPECT_EQ(document(scenario + stop, "mapping"), Json::object());
}

TEST(StopCommand, needsAPartThatRuns) {
  EXPECT_EQ(errorOf("stop"), "-:1: error: expected library, publisher or view, found the end of the line\n");
  EXPECT_EQ(errorOf("stop all"), "-:1: error: expected library, publisher or view, found 'all'\n");
  EXPECT_EQ(errorOf("start library\nstop library now"), "-:2: error: expected the end of the line, found 'now'\n");
  for (const std::string part : {"library", "publisher", "view"}) {
    EXPECT_EQ(errorOf("stop " + part), "-:1: error: the " + part + " is not running\n");
    EXPECT_EQ(errorOf("start " + part + "\nstop " + part + "\nstop " + part),
              "-:3: error: the " + part + " is not running\n");
  }
}

// attach, detach

TEST(AttachCommand, givesTheLibraryItsInterfaces) {
  holds(bridge +
        "interface Ethernet1 link down\nstart library watch status interfaces later\nsettle\n"
        "attach interfaces\nattach interfaces\nsettle\n"
        "expect state /topo/A/port/Ethernet1/active == false\n"
        "expect state /topo/A/port/Ethernet2/active == true\n"
        "interface Ethernet1 link up\n"
        "expect state /topo/A/port/Ethernet1/active == true\n");
}

TEST(DetachCommand, takesThemFromTheTopologiesThatComeLater) {
  const std::string detached = bridge + "start library watch status\nsettle\ndetach interfaces\ndetach interfaces\n";
  const Outcome outcome = runScenario(detached + newTopology);
  EXPECT_EQ(outcome.status, -SIGABRT);
  EXPECT_NE(outcome.err.find("Assertion 'ethIntfStatusDir()' failed"), std::string::npos) << outcome.err;
  holds(detached + "attach interfaces\n" + newTopology);
  holds(detached + "interface Ethernet1 link down\nexpect state /topo/A/port/Ethernet1/active == false\n");
}

TEST(AttachCommand, needsTheLibraryAndTheRightWord) {
  for (const std::string command : {"attach", "detach"}) {
    EXPECT_EQ(errorOf(command), "-:1: error: expected interfaces, found the end of the line\n");
    EXPECT_EQ(errorOf(command + " library"), "-:1: error: expected interfaces, found 'library'\n");
    EXPECT_EQ(errorOf(command + " interfaces now"), "-:1: error: expected the end of the line, found 'now'\n");
    EXPECT_EQ(errorOf(command + " interfaces"),
              "-:1: error: the library is not running; start it first: start library\n");
  }
}

}  // namespace Topo::RunCommandsTest
