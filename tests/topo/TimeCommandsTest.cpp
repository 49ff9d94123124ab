// The commands that set how the library works, and that let time pass.

#include "tests/topo/Scenarios.h"

namespace Topo::TimeCommandsTest {

using Test::bridge;
using Test::document;
using Test::errorOf;
using Test::holds;
using Test::Json;
using Test::Outcome;
using Test::runScenario;

// set

/// VLAN 10 with no port yet, settled.
const std::string emptyVlan = "vlan 10\ntopology A\nmap 10 A\nstart library\nsettle\n";
/// VLAN 10 with ten ports, all to be processed yet.
const std::string tenPorts = "vlan 10\nvlan 10 port Ethernet1-10\ntopology A\nmap 10 A\nstatus A\nstart library\n";

/// How many of the ten ports the first round serves.
std::size_t servedInOneRound(const std::string& settings) {
  return document(settings + tenPorts + "dispatch", "backlog")["deletedPortSet"].size();
}

TEST(SetCommand, thresholdIsHowManyPortsMayWait) {
  const auto isMarkedWhole = [](const std::string& before, const std::string& ports) {
    return document(before + "vlan 10 port " + ports, "backlog")["dirtyVlan"]["10"]["dirty"] == true;
  };
  EXPECT_FALSE(isMarkedWhole(emptyVlan, "Ethernet1-21"));
  EXPECT_TRUE(isMarkedWhole(emptyVlan, "Ethernet1-22"));
  EXPECT_FALSE(isMarkedWhole(emptyVlan + "set threshold 2\n", "Ethernet1-3"));
  EXPECT_TRUE(isMarkedWhole(emptyVlan + "set threshold 2\n", "Ethernet1-4"));
  EXPECT_FALSE(isMarkedWhole(emptyVlan + "set threshold 65535\n", "Ethernet1-1000"));
}

TEST(SetCommand, quantumAndTickMakeSlices) {
  EXPECT_EQ(servedInOneRound(""), 10U);
  EXPECT_EQ(servedInOneRound("set tick 0.25\nset quantum 1\n"), 3U);
  EXPECT_EQ(servedInOneRound("set tick 0.25\nset quantum 2\n"), 7U);
  // A slice is 10 ms long unless it is set.
  EXPECT_EQ(servedInOneRound("set tick 0.006\n"), 1U);
  EXPECT_EQ(servedInOneRound("set tick 0.004\n"), 2U);
  EXPECT_EQ(servedInOneRound("set tick 0.25\nset tick 0\n"), 10U);
}

TEST(SetCommand, yieldAfterOneServesOneItemARound) {
  EXPECT_EQ(servedInOneRound("set yield-after-one on\n"), 1U);
  EXPECT_EQ(servedInOneRound("set yield-after-one on\nset yield-after-one off\n"), 10U);
}

TEST(SetCommand, reachesTheLibraryThatRuns) {
  holds(tenPorts + "set yield-after-one on\ndispatch\nexpect backlog /bookmark == 10\n");
  holds(tenPorts + "set quantum 0\ndispatch\nexpect backlog /bookmark == 10\n");
  holds(emptyVlan + "set threshold 0\nvlan 10 port Ethernet1-2\nexpect backlog /dirtyVlan/10/dirty == true\n");
}

TEST(SetCommand, settingsSurviveARestart) {
  for (const std::string restart : {"stop library\nstart library\n", "start library interfaces later name other\n",
                                    "start library watch status interfaces later\nattach interfaces\n"}) {
    const std::string scenario = tenPorts + "settle\n" + restart;
    holds(scenario + "dispatch\nexpect backlog /bookmark == 0\n");
    holds("set quantum 0\n" + scenario + "dispatch\nexpect backlog /bookmark == 10\n");
    holds("set yield-after-one on\n" + scenario + "dispatch\nexpect backlog /bookmark == 10\n");
    holds("set threshold 0\n" + scenario +
          "settle\nvlan 10 port Ethernet11-12\nexpect backlog /dirtyVlan/10/dirty == true\n");
  }
}

TEST(SetCommand, badSettingsAreErrors) {
  EXPECT_EQ(errorOf("set"),
            "-:1: error: expected threshold, quantum, yield-after-one or tick, found the end of the line\n");
  EXPECT_EQ(errorOf("set speed 3"),
            "-:1: error: expected threshold, quantum, yield-after-one or tick, found 'speed'\n");
  EXPECT_EQ(errorOf("set threshold"),
            "-:1: error: expected threshold, a number from 0 to 65535, found the end of the line\n");
  for (const std::string name : {"quantum", "tick"}) {
    const std::string expected = "-:1: error: expected " + name + ", a number of seconds such as 0.5, found ";
    EXPECT_EQ(errorOf("set " + name), expected + "the end of the line\n");
    EXPECT_EQ(errorOf("set " + name + " -1"), expected + "'-1'\n");
    EXPECT_EQ(errorOf("set " + name + " 1 2"), "-:1: error: expected the end of the line, found '2'\n");
  }
  EXPECT_EQ(errorOf("set tick 1.1e9"), "-:1: error: a tick is at most 1e9 seconds\n");
  EXPECT_EQ(errorOf("set yield-after-one 1"), "-:1: error: expected on or off for yield-after-one, found '1'\n");
}

// dispatch, advance, settle

TEST(DispatchCommand, runsSoManyRounds) {
  const std::string scenario = "set yield-after-one on\n" + tenPorts;
  const auto served = [&](const std::string& command) {
    return document(scenario + command, "backlog")["yieldBeforeFinishingCount"];
  };
  EXPECT_EQ(served("dispatch 0"), 0);
  EXPECT_EQ(served("dispatch"), 1);
  EXPECT_EQ(served("dispatch 3"), 3);
  EXPECT_EQ(served("dispatch 1000"), served("settle"));
}

TEST(DispatchCommand, takesAWholeNumber) {
  const std::string expected = "-:1: error: expected the number of rounds, a number from 0 to 4294967295, found ";
  for (const std::string number : {"x", "-1", "1.5", "4294967296"}) {
    EXPECT_EQ(errorOf("dispatch " + number), expected + "'" + number + "'\n");
  }
  EXPECT_EQ(errorOf("dispatch 1 2"), "-:1: error: expected the end of the line, found '2'\n");
}

TEST(DispatchCommand, aQuotedWordIsTheWholeNumber) {
  const std::string expected = "-:1: error: expected the number of rounds, a number from 0 to 4294967295, found ";
  EXPECT_EQ(errorOf("dispatch \"1 2\""), expected + "'1 2'\n");
  EXPECT_EQ(errorOf("dispatch \"\""), expected + "''\n");
}

/// The present time, as a line of a feed tells it.
double timeAfter(const std::string& scenario) {
  const Outcome outcome = runScenario(scenario + "watch interfaces on\ninterface Cpu\n");
  return Json::parse(outcome.lines().back())["time"];
}

TEST(AdvanceCommand, movesTheClockOn) {
  EXPECT_EQ(timeAfter(""), 0.0);
  EXPECT_EQ(timeAfter("advance 1.5\nadvance 0\nadvance 2e3\n"), 2001.5);
  EXPECT_EQ(errorOf("advance 1e308\nadvance 1e308"), "-:2: error: that is too far in the future\n");
  EXPECT_EQ(
      errorOf("advance"),
      "-:1: error: expected the time to advance by, a number of seconds such as 0.5, found the end of the line\n");
  EXPECT_EQ(errorOf("advance 1 2"), "-:1: error: expected the end of the line, found '2'\n");
}

TEST(AdvanceCommand, dispatchesWhatFallsDueOnTheWayAsSettleDoes) {
  for (const std::string command : {"advance 0\n", "settle\nsettle\n"}) {
    holds("set yield-after-one on\n" + tenPorts + command +
          "expect backlog /idle == true\nexpect backlog /timeMin == null\nexpect state /initDone == true\n");
  }
}

TEST(VirtualTime, standsStillWhileTheLibraryWorksUnlessItTicks) {
  EXPECT_EQ(timeAfter(tenPorts + "settle\n"), 0.0);
  // One reading begins a run, one follows each of the thirty ports that it serves or takes away, and one ends it.
  const std::string ticking = "set tick 0.5\nset quantum 1000\n" + tenPorts + "dispatch\n";
  EXPECT_EQ(timeAfter(ticking), 17.0);
  EXPECT_EQ(timeAfter(ticking + "watch state on\nshow backlog\nshow log\nexpect backlog \"\" != 1\n"), 17.0);
}

TEST(SettleCommand, givesUpAfterAMillionRounds) {
  const Outcome outcome = runScenario(
      "vlan 1-4094\nvlan 1-4094 port Ethernet1-84\ntopology A\nmap 1-4094 A\nset yield-after-one on\nstart library\n"
      "settle\necho never\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "-:7: error: not settled after 1000000 rounds: something is pending still\n");
}

TEST(RealTime, hasNoTickAndTheLibraryRunsInIt) {
  holds(bridge +
            "start library\nstart publisher\nstart view\nadvance 0.001\nsettle\n"
            "expect view /topoVlan/10/topoPort/Ethernet1/blocked == false\n"
            "expect backlog /idle == true\nexpect backlog /timeMin == null\n",
        {"--real-time"});
  const Outcome outcome = runScenario("set tick 0\n", {"--real-time"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "-:1: error: real time has no tick; leave out --real-time\n");
}

}  // namespace Topo::TimeCommandsTest
