// `show backlog` for a person: what is pending, where the work stands, and what it has taken.

#include <gmock/gmock.h>

#include "tests/topo/Run.h"

namespace Topo::BacklogViewTest {

using Test::errorOf;
using Test::Outcome;
using Test::runScenario;
using testing::HasSubstr;
using testing::MatchesRegex;

/// The lines of the backlog after a scenario, without the longest run, which is real time.
std::string backlogAfter(const std::string& scenario, const std::string& what = "") {
  const Outcome outcome = runScenario(scenario + "\nshow backlog" + what + '\n');
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.out.substr(0, outcome.out.find("Longest run:"));
}

/// The line of the longest run after a scenario.
std::string longestRunAfter(const std::string& scenario) {
  const std::vector<std::string> lines = runScenario(scenario + "\nshow backlog\n").lines();
  return lines.empty() ? "" : lines.back();
}

/// Four VLANs on three ports in one topology, settled.
const std::string settled =
    "vlan 10-13\n"
    "vlan 10-13 port Ethernet1-3\n"
    "topology A\n"
    "map 10-13 A\n"
    "start library\n"
    "settle\n";

TEST(BacklogView, ofALibraryThatDoesNotRun) {
  EXPECT_EQ(backlogAfter(""), "The library is not running.\n");
  EXPECT_EQ(backlogAfter("start library\nstop library"), "The library is not running.\n");
}

TEST(BacklogView, ofALibraryThatWaitsForItsInterfaces) {
  EXPECT_EQ(backlogAfter("start library watch status interfaces later"), "The library waits for its interfaces.\n");
}

TEST(BacklogView, ofAnIdleLibrary) {
  EXPECT_EQ(runScenario("start library\nsettle\nshow backlog\n").out,
            "Processor:    idle, no run is due\n"
            "Pending:      nothing\n"
            "Bookmark:     none\n"
            "Updates:      0 seen, 0 processed\n"
            "Runs:         1 finished in 0.000 ms, 0 yielded\n"
            "Slice:        10.000 ms, never used up: virtual time has no tick\n"
            "Longest run:  none yet\n");
}

TEST(BacklogView, ofVlansThatAreMarkedAsAWhole) {
  EXPECT_THAT(backlogAfter(settled + "map 10-12 B"), HasSubstr("Processor:    at work, the next run is due now\n"
                                                               "Pending:      3 VLANs\n"
                                                               "  as a whole: 10-12\n"
                                                               "Bookmark:     none\n"));
}

TEST(BacklogView, ofOneVlan) {
  EXPECT_THAT(backlogAfter(settled + "map 12 B"), HasSubstr("Pending:      1 VLAN\n  as a whole: 12\n"));
}

TEST(BacklogView, ofPortsThatAreMarkedByThemselves) {
  EXPECT_THAT(backlogAfter(settled + "vlan 10 port Ethernet1-3 untagged\nvlan 12 port Ethernet2 untagged\n"
                                     "vlan 12 port \"my port\"\nmap 13 B"),
              HasSubstr("Pending:      3 VLANs\n"
                        "  as a whole: 13\n"
                        "  VLAN  PORTS TO SERVE\n"
                        "  10    Ethernet1-3\n"
                        "  12    Ethernet2 \"my port\"\n"));
}

TEST(BacklogView, ofMorePortsThanTheThreshold) {
  const std::string ports = "vlan 10 port Ethernet4-7\n";
  EXPECT_THAT(backlogAfter(settled + "set threshold 2\n" + ports), HasSubstr("  as a whole: 10\n"));
  EXPECT_THAT(backlogAfter(settled + "set threshold 3\n" + ports), HasSubstr("  10    Ethernet4-7\n"));
}

TEST(BacklogView, ofTheVlanThatIsAskedFor) {
  const std::string marked = settled + "vlan 10 port Ethernet1 untagged\nmap 13 B\n";
  EXPECT_EQ(backlogAfter(marked, " vlan 10"),
            "Pending:      2 VLANs\n"
            "  VLAN  PORTS TO SERVE\n"
            "  10    Ethernet1\n");
  EXPECT_EQ(backlogAfter(marked, " vlan 13"), "Pending:      2 VLANs\n  as a whole: 13\n");
}

TEST(BacklogView, takesNoTopology) {
  EXPECT_EQ(errorOf("show backlog topology A"), "-:1: error: expected vlan or json, found 'topology'\n");
}

TEST(BacklogView, ofAVisitThatServesPorts) {
  // One item a run: the first run serves Ethernet1, and the next two are to come.
  EXPECT_EQ(backlogAfter("vlan 10\nvlan 10 port Ethernet1-3\ntopology A\nmap 10 A\nset yield-after-one on\n"
                         "start library\ndispatch"),
            "Processor:    at work, the next run is due now\n"
            "Pending:      1 VLAN\n"
            "Bookmark:     VLAN 10, 1 port served, 2 ports to serve\n"
            "Updates:      0 seen, 0 processed\n"
            "Runs:         0 finished in 0.000 ms, 1 yielded\n"
            "Slice:        10.000 ms, one item a run, never used up: virtual time has no tick\n");
}

TEST(BacklogView, ofAVisitThatLeavesATopology) {
  const std::string moved = settled + "set yield-after-one on\ntopology B\nmap 12 B\n";
  EXPECT_THAT(backlogAfter(moved + "dispatch"),
              HasSubstr("Bookmark:     VLAN 12, leaving topology A: 1 port done, 2 ports to leave, then 3 ports to "
                        "serve\n"));
  EXPECT_THAT(backlogAfter(moved + "dispatch 2"),
              HasSubstr("Bookmark:     VLAN 12, leaving topology A: 2 ports done, 1 port to leave, then 3 ports to "
                        "serve\n"));
}

TEST(BacklogView, ofSlicesThatTakeTime) {
  // Two readings of the clock, and the slice is used up.
  const std::string sliced =
      "vlan 10-11\nvlan 10-11 port Ethernet1-3\ntopology A\nmap 10-11 A\nset tick 0.25\nset quantum 0.5\n"
      "start library\n";
  EXPECT_THAT(backlogAfter(sliced + "dispatch"), HasSubstr("Pending:      2 VLANs\n"
                                                           "  as a whole: 11\n"
                                                           "Bookmark:     VLAN 10, 1 port served, 2 ports to serve\n"));
  EXPECT_THAT(backlogAfter(sliced + "dispatch"), HasSubstr("Slice:        500.000 ms\n"));
  EXPECT_THAT(backlogAfter(sliced + "settle"), HasSubstr("Processor:    idle, no run is due\n"
                                                         "Pending:      nothing\n"
                                                         "Bookmark:     none\n"));
}

TEST(BacklogView, countsUpdatesAndRuns) {
  const std::string served = settled + "vlan 10 port Ethernet1-2 untagged\n";
  EXPECT_THAT(backlogAfter(served), HasSubstr("Updates:      2 seen, "));
  const Outcome before = runScenario(settled + "show backlog json\n");
  EXPECT_THAT(backlogAfter(settled),
              HasSubstr("Updates:      " + before.json().back()["updatesSeen"].dump() + " seen, " +
                        before.json().back()["updatesProcessed"].dump() + " processed\n"));
  EXPECT_THAT(backlogAfter(settled), HasSubstr("Updates:      0 seen, 36 processed\nRuns:         2 finished in "));
}

TEST(BacklogView, tellsTheTimeThatRunsTook) {
  EXPECT_THAT(backlogAfter("vlan 10\nvlan 10 port Ethernet1\ntopology A\nmap 10 A\nset tick 0.001\nset quantum 10\n"
                           "start library\nsettle"),
              HasSubstr("Runs:         2 finished in 7.000 ms, 0 yielded\n"
                        "Slice:        10000.000 ms\n"));
}

TEST(BacklogView, knowsNoLongestRunBeforeTheFirst) {
  EXPECT_EQ(longestRunAfter("start library"), "Longest run:  none yet");
  // A round that finds nothing to do does not count.
  EXPECT_EQ(longestRunAfter("start library\ndispatch 100"), "Longest run:  none yet");
}

TEST(BacklogView, measuresNoRunOfALibraryThatDefersNothing) {
  EXPECT_EQ(longestRunAfter("vlan 12\nvlan 12 port Ethernet1-3\ntopology A\nmap 12 A\nstart library immediate\n"),
            "Longest run:  not measured: the commands do the work themselves");
}

TEST(BacklogView, aSliceOfNoLengthIsUsedUpAtOnce) {
  EXPECT_THAT(backlogAfter("set quantum 0\nstart library\n"), HasSubstr("Slice:        0.000 ms\n"));
}

TEST(BacklogView, tellsTheLongestRunAndItsVlan) {
  EXPECT_THAT(longestRunAfter("vlan 12\nvlan 12 port Ethernet1-3\ntopology A\nmap 12 A\nstart library\nsettle"),
              MatchesRegex("Longest run:  [0-9]+\\.[0-9][0-9][0-9] ms of real time, from VLAN 12 on"));
}

}  // namespace Topo::BacklogViewTest
