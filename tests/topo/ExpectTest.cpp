// Expectations: places in documents, comparisons, and what a failure looks like.

#include "tests/topo/Run.h"

namespace Topo::ExpectTest {

using Test::errorOf;
using Test::Outcome;
using Test::runScenario;

/// One VLAN with a port, and an instance status with three.
const std::string configured =
    "vlan 10\n"
    "vlan 10 port Ethernet1\n"
    "instance A number 7\n"
    "instance A port Ethernet1-3\n";

/// The report of an expectation that fails after the configuration, without its place; empty if the expectation holds.
std::string failureOf(const std::string& expectation) {
  const Outcome outcome = runScenario(configured + "expect " + expectation + "\necho on\n");
  EXPECT_EQ(outcome.status, outcome.err.empty() ? 0 : 1) << outcome.err;
  EXPECT_EQ(outcome.out, "on\n") << outcome.err;
  const std::string place = "-:5: expectation failed: ";
  EXPECT_TRUE(outcome.err.empty() || outcome.err.rfind(place, 0) == 0) << outcome.err;
  return outcome.err.empty() ? "" : outcome.err.substr(place.size());
}

bool holds(const std::string& expectation) { return failureOf(expectation).empty(); }

/// The text of the error that a bad expectation is.
std::string badExpectation(const std::string& expectation) {
  const std::string text = errorOf("expect " + expectation);
  const std::string place = "-:1: error: ";
  EXPECT_EQ(text.rfind(place, 0), 0U) << text;
  return text.substr(place.size());
}

// Comparisons.

TEST(ExpectCommand, comparesForEquality) {
  EXPECT_EQ(failureOf("instance /topoStatus/A/topoNumber == 7"), "");
  EXPECT_EQ(failureOf("instance /topoStatus/A/topoNumber == 8"),
            "instance /topoStatus/A/topoNumber is 7, expected == 8\n");
  EXPECT_EQ(failureOf("bridging /name == \"bridges\""), "bridging /name is \"bridging\", expected == \"bridges\"\n");
  EXPECT_EQ(failureOf("bridging /vlanConfig/11 == null"), "bridging /vlanConfig/11 is absent, expected == null\n");
}

TEST(ExpectCommand, comparesForInequality) {
  EXPECT_EQ(failureOf("instance /topoStatus/A/topoNumber != 8"), "");
  EXPECT_EQ(failureOf("instance /topoStatus/A/topoNumber != 7"),
            "instance /topoStatus/A/topoNumber is 7, expected != 7\n");
  // What is not there is equal to nothing.
  EXPECT_TRUE(holds("bridging /vlanConfig/11 != null"));
}

TEST(ExpectCommand, expectsAbsence) {
  EXPECT_EQ(failureOf("bridging /vlanConfig/11 absent"), "");
  EXPECT_EQ(failureOf("bridging /vlanConfig/10/internal absent"),
            "bridging /vlanConfig/10/internal is false, expected absent\n");
}

TEST(ExpectCommand, numbersAreEqualByValue) {
  for (const char* const number : {"7", "7.0", "0.7e1", "70e-1"}) {
    EXPECT_TRUE(holds(std::string("instance /topoStatus/A/topoNumber == ") + number)) << number;
  }
  EXPECT_TRUE(holds("bridging /vlanConfig/10/floodsetExpandedVlan == -0"));
  EXPECT_FALSE(holds("instance /topoStatus/A/topoNumber == 7.5"));
  EXPECT_FALSE(holds("instance /topoStatus/A/topoNumber == \"7\""));
  EXPECT_FALSE(holds("bridging /vlanConfig/10/internal == 0"));
}

TEST(ExpectCommand, objectsAreEqualWhateverTheirOrderAndArraysAreNot) {
  const std::string port = "bridging /vlanConfig/10/vlanPortConfig/Ethernet1 == ";
  EXPECT_TRUE(holds(port + R"({"pvid":false, "untagged" : false,"allowedTrafficDirection":"both"})"));
  EXPECT_FALSE(holds(port + R"({"pvid":false,"untagged":false})"));
  EXPECT_FALSE(holds(port + R"({"pvid":true,"untagged":false,"allowedTrafficDirection":"both"})"));
  const std::string ports = "instance /topoStatus/A/topoPortStatus == ";
  EXPECT_TRUE(holds(ports + R"(["Ethernet1", "Ethernet2", "Ethernet3"])"));
  EXPECT_FALSE(holds(ports + R"(["Ethernet2","Ethernet1","Ethernet3"])"));
}

TEST(ExpectCommand, nullIsAValue) {
  const std::string idle = "start library\nsettle\nexpect backlog /timeMin ";
  EXPECT_EQ(runScenario(idle + "== null\n").status, 0);
  EXPECT_EQ(runScenario(idle + "absent\n").err, "-:3: expectation failed: backlog /timeMin is null, expected absent\n");
}

TEST(ExpectCommand, seesTheDocumentOfThatMoment) {
  const Outcome outcome = runScenario(
      "vlan 10\nmap 10 A\ntopology A\nstart library\nexpect state /initDone == false\nsettle\n"
      "expect state /initDone == true\nexpect backlog /dispatchCount == 2\nexpect mapping /mappedVlan/A == [10]\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
}

// Places.

TEST(ExpectCommand, theEmptyPointerIsTheWholeDocument) {
  EXPECT_EQ(runScenario("expect interfaces \"\" == {\"name\":\"interfaces\",\"intfStatus\":{}}\n").status, 0);
  EXPECT_EQ(
      runScenario("expect interfaces \"\" absent\n").err,
      "-:1: expectation failed: interfaces \"\" is {\"name\":\"interfaces\",\"intfStatus\":{}}, expected absent\n");
}

TEST(ExpectCommand, aPointerReachesEveryDepth) {
  EXPECT_TRUE(holds("bridging /vlanConfig/10/vlanPortConfig/Ethernet1/allowedTrafficDirection == \"both\""));
  EXPECT_TRUE(holds("bridging /vlanConfig/10/vlanPortConfig/Ethernet1/allowedTrafficDirection/x absent"));
  EXPECT_TRUE(holds("bridging / absent"));
  EXPECT_TRUE(holds("bridging /vlanConfig/ absent"));
  EXPECT_TRUE(holds("bridging /vlanConfig/10/ absent"));
}

TEST(ExpectCommand, aVlanIsNamedAsItStandsInTheDocument) {
  for (const char* const key : {"010", "+10", "10.0", "ten", "0", "4095", "99999999999999999999"}) {
    EXPECT_TRUE(holds(std::string("bridging /vlanConfig/") + key + " absent")) << key;
  }
}

TEST(ExpectCommand, anElementOfAnArrayIsNamedByItsIndex) {
  const std::string ports = "instance /topoStatus/A/topoPortStatus/";
  EXPECT_TRUE(holds(ports + "0 == \"Ethernet1\""));
  EXPECT_TRUE(holds(ports + "2 == \"Ethernet3\""));
  for (const char* const index : {"3", "-", "-1", "00", "01", "+1", "1.0", "", "Ethernet1", "0/x"}) {
    EXPECT_TRUE(holds(ports + index + " absent")) << index;
  }
}

TEST(ExpectCommand, aSlashInAKeyIsWrittenAsTildeOneAndATildeAsTildeZero) {
  const std::string odd = "topology \"a/b~c\" number 1\ntopology ~1 number 2\n";
  const Outcome outcome = runScenario(odd +
                                      "expect config /topoConfig/a~1b~0c/topoNumber == 1\n"
                                      "expect config /topoConfig/~01/topoNumber == 2\n"
                                      "expect config /topoConfig/~1 absent\n"
                                      "expect config /topoConfig/a/b~0c absent\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST(ExpectCommand, aPointerWithBlanksIsQuoted) {
  const std::string odd = R"(topology "my \"one\"" number 1)";
  EXPECT_EQ(runScenario(odd + "\n" + R"(expect config "/topoConfig/my \"one\"/topoNumber" == 1)" + "\n").status, 0);
}

// Failures.

TEST(ExpectCommand, everyFailureIsOneLineAndTheRunGoesOn) {
  const Outcome outcome = runScenario(
      "expect state /initDone == true\necho one\n\nexpect view /topoVlan != {}\necho two\nexpect status \"\" != 1\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "one\ntwo\n");
  EXPECT_EQ(outcome.err,
            "-:1: expectation failed: state /initDone is false, expected == true\n"
            "-:4: expectation failed: view /topoVlan is {}, expected != {}\n");
}

// Bad expectations.

TEST(ExpectCommand, needsADocumentAndAPointer) {
  const std::string documents =
      "expected a document, state, view, instance, status, config, bridging, interfaces, backlog or mapping, found ";
  EXPECT_EQ(badExpectation(""), documents + "the end of the line\n");
  EXPECT_EQ(badExpectation("log \"\" == []"), documents + "'log'\n");
  EXPECT_EQ(badExpectation("state"),
            "expected a JSON Pointer such as /topo/A, or \"\" for the whole document, found the end of the line\n");
}

TEST(ExpectCommand, aBadPointerIsAnError) {
  EXPECT_EQ(badExpectation("state initDone == true"), "a JSON Pointer begins with /, not as initDone\n");
  const std::string tilde = "in a JSON Pointer ~ stands as ~0, and / in a key as ~1: ";
  EXPECT_EQ(badExpectation("state /a~ == 1"), tilde + "/a~\n");
  EXPECT_EQ(badExpectation("state /a~2 == 1"), tilde + "/a~2\n");
  EXPECT_EQ(badExpectation("state /~/b absent"), tilde + "/~/b\n");
}

TEST(ExpectCommand, needsAComparison) {
  EXPECT_EQ(badExpectation("state /initDone"), "expected ==, != or absent, found the end of the line\n");
  EXPECT_EQ(badExpectation("state /initDone = true"), "expected ==, != or absent, found '='\n");
  EXPECT_EQ(badExpectation("state /initDone true"), "expected ==, != or absent, found 'true'\n");
  EXPECT_EQ(badExpectation("state /initDone absent now"), "expected the end of the line, found 'now'\n");
}

TEST(ExpectCommand, badJsonIsAnError) {
  EXPECT_EQ(badExpectation("state /initDone =="), "expected a JSON value, found the end of the line\n");
  EXPECT_EQ(badExpectation("state /initDone == # true"), "expected a JSON value, found the end of the line\n");
  for (const std::string text : {"tru", "true false", "forwarding", "'a'", "[1,]", "{\"a\":1", "\"open", "01", "nan"}) {
    EXPECT_EQ(badExpectation("state /initDone == " + text),
              "expected a JSON value, such as 10, true, \"forwarding\" or [\"A\"], found " + text + "\n");
  }
}

TEST(ExpectCommand, jsonMayHoldBlanksAndHashesAndBeFollowedByAComment) {
  EXPECT_TRUE(holds("bridging /name != \"a # b\""));
  EXPECT_TRUE(holds("bridging /name == \"bridging\"   # its name"));
  EXPECT_EQ(failureOf(R"(bridging /name == "\"#\\" # a quote)"),
            "bridging /name is \"bridging\", expected == \"\\\"#\\\\\"\n");
}

TEST(ExpectCommand, jsonThatIsNestedBeyondReasonIsAnError) {
  const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_TRUE(holds("bridging /name != " + nested(100)));
  EXPECT_EQ(badExpectation("bridging /name != " + nested(101)), "the JSON value is nested too deeply\n");
  EXPECT_EQ(badExpectation("bridging /name != " + nested(1'000'000)), "the JSON value is nested too deeply\n");
}

TEST(ExpectCommand, bracketsInAStringNestNothing) {
  EXPECT_TRUE(holds("bridging /name != \"" + std::string(200, '[') + "\""));
}

TEST(ExpectCommand, aBadExpectationStopsTheRun) {
  const Outcome outcome = runScenario("expect state /initDone == true\nexpect state /initDone\necho never\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err,
            "-:1: expectation failed: state /initDone is false, expected == true\n"
            "-:2: error: expected ==, != or absent, found the end of the line\n");
}

}  // namespace Topo::ExpectTest
