// What may stand at the end of a line.

#include "topo/Completion.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "topo/Command.h"
#include "topo/Session.h"

namespace Topo::CompletionTest {

/// A session whose lines are completed.
class Typing {
 public:
  explicit Typing(const std::string& scenario = {}) : session_({.out = &out_, .err = &out_}) {
    std::istringstream lines(scenario);
    for (std::string line; std::getline(lines, line);) session_.execute(line);
  }

  /// The candidates, each followed by a semicolon.
  [[nodiscard]] std::string candidates(const std::string& line) const {
    std::string text;
    for (const std::string& candidate : complete(session_, line).candidates) text += candidate + ';';
    return text;
  }
  /// The line after completion.
  [[nodiscard]] std::string line(const std::string& typed) const {
    const Completion completion = complete(session_, typed);
    return typed.substr(0, completion.begin) + completion.text;
  }

 private:
  std::ostringstream out_;
  Session session_;
};

TEST(Completion, anEmptyLineMayBecomeAnyCommandOfTheLanguageAndTheShell) {
  std::string all = Typing().candidates("");
  for (const Command& command : commands()) {
    const std::size_t at = (";" + all).find(";" + std::string(command.name) + ";");
    ASSERT_NE(at, std::string::npos) << command.name;
    all.erase(at, command.name.size() + 1);
  }
  EXPECT_EQ(all, "exit;quit;");
}

TEST(Completion, theOnlyCandidateIsCompletedWithABlank) {
  const Typing typing;
  EXPECT_EQ(typing.line("sho"), "show ");
  EXPECT_EQ(typing.line("show"), "show ");
  EXPECT_EQ(typing.line("  sho"), "  show ");
  EXPECT_EQ(typing.line("\tsho"), "\tshow ");
}

TEST(Completion, severalAreCompletedAsFarAsTheyAgree) {
  const Typing typing;
  EXPECT_EQ(typing.candidates("in"), "interface;instance;");
  EXPECT_EQ(typing.line("i"), "in");
  EXPECT_EQ(typing.line("in"), "in");
  EXPECT_EQ(typing.line("topology A pub"), "topology A publish-");
}

TEST(Completion, withoutACandidateTheWordStays) {
  const Typing typing;
  EXPECT_EQ(typing.candidates("frob"), "");
  EXPECT_EQ(typing.line("frob"), "frob");
  EXPECT_EQ(typing.candidates("frobnicate "), "");
  EXPECT_EQ(typing.candidates("echo "), "");
  EXPECT_EQ(typing.candidates("settle "), "");
}

TEST(Completion, noGoesOnWithWhatItCanRemove) {
  EXPECT_EQ(Typing().candidates("no "), "interface;vlan;topology;map;status;instance;force;");
  const Typing typing("interface Ethernet1\n");
  EXPECT_EQ(typing.line("no interface E"), "no interface Ethernet1 ");
  EXPECT_EQ(typing.candidates("no interface Ethernet1 "), "");
}

TEST(Completion, optionsComeInAnyOrderAndEachOnce) {
  const Typing typing;
  EXPECT_EQ(typing.candidates("interface Ethernet1 "), "link;model;");
  EXPECT_EQ(typing.candidates("interface Ethernet1 link "), "unknown;down;up;");
  EXPECT_EQ(typing.candidates("interface Ethernet1 model bridged "), "link;");
  EXPECT_EQ(typing.candidates("interface Ethernet1 model bridged link up "), "");
  EXPECT_EQ(typing.candidates("vlan 10 port Ethernet1 "), "tagged;untagged;pvid;no-pvid;direction;");
  EXPECT_EQ(typing.candidates("vlan 10 port Ethernet1 untagged "), "pvid;no-pvid;direction;");
}

TEST(Completion, usagesOfOneCommandAreProposedTogether) {
  EXPECT_EQ(Typing().candidates("vlan 10 "), "internal;external;expand;port;");
  EXPECT_EQ(Typing().candidates("topology A "), "number;publish-ports;publish-state;port;");
  EXPECT_EQ(Typing().candidates("instance A "), "number;port;");
  EXPECT_EQ(Typing().candidates("set "), "threshold;quantum;yield-after-one;tick;");
}

TEST(Completion, aUsageOfSeveralLinesIsOne) {
  const Typing typing;
  EXPECT_EQ(typing.candidates("start "), "library;publisher;view;");
  EXPECT_EQ(typing.candidates("start library "),
            "mode;watch;ignore-internal;deferred;immediate;filter;interfaces;name;");
  EXPECT_EQ(typing.candidates("start library immediate name x filter "), "LocalInterface;none;");
}

TEST(Completion, documentsAndTheirOptions) {
  const Typing typing;
  const std::string documents = "state;view;instance;status;config;bridging;interfaces;backlog;mapping;";
  EXPECT_EQ(typing.candidates("show "), documents + "log;");
  EXPECT_EQ(typing.candidates("watch "), documents);
  EXPECT_EQ(typing.candidates("expect "), documents);
  EXPECT_EQ(typing.candidates("watch state "), "on;off;");
  EXPECT_EQ(typing.candidates("expect state /topo "), "==;!=;absent;");
  EXPECT_EQ(typing.candidates("explain vlan 10 port Ethernet1 "), "json;");
  EXPECT_EQ(typing.candidates("show log "), "json;");
}

TEST(Completion, showProposesNothingThatItWouldRefuse) {
  const Typing typing;
  EXPECT_EQ(typing.candidates("show view "), "topology;vlan;json;");
  EXPECT_EQ(typing.candidates("show instance "), "topology;json;");
  EXPECT_EQ(typing.candidates("show backlog "), "vlan;json;");
  EXPECT_EQ(typing.candidates("show interfaces "), "json;");
  EXPECT_EQ(typing.candidates("show view json "), "");
}

TEST(Completion, interfacesAreThoseOfEveryInputInNaturalOrder) {
  const Typing typing(
      "interface Ethernet10\n"
      "vlan 10\nvlan 10 port Ethernet9\n"
      "topology A\ntopology A port Ethernet2\n"
      "status A\nstatus A port Ethernet3\n"
      "instance A\ninstance A port Ethernet4\n"
      "force Ethernet5 on\n");
  const std::string all = "Ethernet2;Ethernet3;Ethernet4;Ethernet5;Ethernet9;Ethernet10;";
  EXPECT_EQ(typing.candidates("interface "), all);
  EXPECT_EQ(typing.candidates("no topology A port "), all);
  EXPECT_EQ(typing.candidates("explain vlan 10 port Ethernet1"), "Ethernet10;");
  EXPECT_EQ(typing.line("force Eth"), "force Ethernet");
}

TEST(Completion, topologiesAreThoseOfEveryInputAndTheLibrary) {
  Typing typing("topology A\nmap 10 B\nstatus C\ninstance D\n");
  EXPECT_EQ(typing.candidates("topology "), "A;B;C;D;");
  EXPECT_EQ(typing.candidates("map 10 "), "A;B;C;D;");
  EXPECT_EQ(typing.candidates("show state topology "), "A;B;C;D;");
}

TEST(Completion, vlansAreTheConfiguredAndTheMappedOnes) {
  const Typing typing("vlan 9-11\nmap 100 A\n");
  EXPECT_EQ(typing.candidates("vlan "), "9;10;11;100;");
  EXPECT_EQ(typing.candidates("no map 1"), "10;11;100;");
  EXPECT_EQ(typing.candidates("vlan 9 expand "), "9;10;11;100;none;");
  EXPECT_EQ(typing.candidates("show view vlan 11"), "11;");
}

TEST(Completion, statesFacilitiesAndCommandsAreProposed) {
  const Typing typing;
  EXPECT_EQ(typing.candidates("topology A port Ethernet1 state "), "disabled;blocking;learning;forwarding;");
  EXPECT_EQ(typing.candidates("topology A publish-state f"), "forwarding;");
  EXPECT_EQ(typing.candidates("trace "), "TopoLib;TopoLibVlan;");
  EXPECT_EQ(typing.candidates("trace TopoLib "), "all;none;");
  EXPECT_EQ(typing.candidates("help ex"), "explain;expect;");
}

TEST(Completion, namesThatNeedQuotesAreCompletedInQuotes) {
  const Typing typing("interface \"my port\"\ninterface \"say \\\"hi\\\"\"\ninterface \"veth1-2\"\n");
  EXPECT_EQ(typing.line("interface my"), "interface \"my port\" ");
  EXPECT_EQ(typing.line("interface \"my"), "interface \"my port\" ");
  EXPECT_EQ(typing.line("interface \"my p"), "interface \"my port\" ");
  EXPECT_EQ(typing.line("interface s"), "interface \"say \\\"hi\\\"\" ");
  EXPECT_EQ(typing.line("interface \"say \\\"h"), "interface \"say \\\"hi\\\"\" ");
  EXPECT_EQ(typing.line("interface v"), "interface \"veth1-2\" ");
}

TEST(Completion, theQuoteOfSeveralNamesStaysOpen) {
  const Typing typing("interface \"my port 1\"\ninterface \"my port 2\"\n");
  EXPECT_EQ(typing.line("interface m"), "interface \"my port ");
  EXPECT_EQ(typing.line("interface \"my port "), "interface \"my port ");
  EXPECT_EQ(typing.candidates("interface \"my port "), "\"my port 1\";\"my port 2\";");
  EXPECT_EQ(typing.line("interface \"my port 2"), "interface \"my port 2\" ");
}

TEST(Completion, namesWithAndWithoutQuotesAreOnlyListed) {
  const Typing typing("interface \"my port\"\ninterface myport\n");
  EXPECT_EQ(typing.candidates("interface m"), "\"my port\";myport;");
  EXPECT_EQ(typing.line("interface m"), "interface m");
}

TEST(Completion, aQuotedWordBeforeCountsAsOne) {
  EXPECT_EQ(Typing().candidates("interface \"my port\" link u"), "unknown;up;");
}

TEST(Completion, neverCompletesHalfACharacter) {
  // Both characters begin with the same byte.
  const Typing typing("interface x\303\244\ninterface x\303\266\n");
  EXPECT_EQ(typing.line("interface "), "interface x");
}

TEST(Completion, commentsAndBadLinesHaveNoCandidates) {
  const Typing typing;
  EXPECT_EQ(typing.candidates("show # st"), "");
  EXPECT_EQ(typing.line("show # st"), "show # st");
  EXPECT_EQ(typing.candidates("sh\"ow st"), "");
  EXPECT_EQ(typing.candidates("interface a\"b \""), "");
  EXPECT_EQ(typing.candidates("interface \"a\\"), "");
  EXPECT_EQ(typing.line("interface \"a\"b"), "interface \"a\"b");
}

}  // namespace Topo::CompletionTest
