// Traces of the libraries: which lines are written, what their fields are, and what is left when an assertion aborts.

#include <gmock/gmock.h>

#include <csignal>

#include "tests/topo/Run.h"

namespace Topo::TraceTest {

using Test::errorOf;
using Test::Outcome;
using Test::runScenario;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

/// The lines on standard error, each in its fields.
std::vector<std::vector<std::string>> tracesOf(const Outcome& outcome) {
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  std::vector<std::vector<std::string>> traces;
  std::istringstream text(outcome.err);
  for (std::string line; std::getline(text, line);) {
    std::vector<std::string> fields;
    std::size_t begin = 0;
    // The sixth field is the text, whatever it holds.
    for (std::size_t tab = line.find('\t'); tab != std::string::npos && fields.size() < 5;
         tab = line.find('\t', begin)) {
      fields.push_back(line.substr(begin, tab - begin));
      begin = tab + 1;
    }
    fields.push_back(line.substr(begin));
    EXPECT_EQ(fields.size(), 6U) << line;
    fields.resize(6);
    traces.push_back(fields);
  }
  return traces;
}

/// One field of every line.
std::vector<std::string> fieldOf(const Outcome& outcome, std::size_t field) {
  std::vector<std::string> values;
  for (const auto& trace : tracesOf(outcome)) values.push_back(trace[field]);
  return values;
}
std::vector<std::string> textsOf(const std::string& scenario, const std::vector<std::string>& options = {}) {
  return fieldOf(runScenario(scenario, options), 5);
}

// What a start says at level 8 and at level 9.
const std::string initialized = "LibSm::handleInitialized";
const std::string initDone = "LibSm::doOnInitDone";
const std::string interfaces = "handleEthIntfStatusDir";
const std::string codefCreated = "LibSm::handleInitialized create Codef";
const std::string codefBusy = "TopoLibCodef::handleInitialized idleIs false";

TEST(Trace, aLineHasSixFields) {
  const auto traces = tracesOf(runScenario("trace TopoLib 8\nadvance 1.5\nstart library\n"));
  ASSERT_EQ(traces.size(), 3U);
  const auto isFrom = [](const char* function, const std::string& text) {
    return ElementsAre("1.500000", "TopoLib", "8", MatchesRegex("/src/Sylk/TopoLib:[0-9]+"), function, text);
  };
  EXPECT_THAT(traces[0], isFrom("handleInitialized", initialized));
  EXPECT_THAT(traces[1], isFrom("doOnInitDone", initDone));
  EXPECT_THAT(traces[2], isFrom("handleEthIntfStatusDir", interfaces));
}

TEST(Trace, theViewHasAFacilityOfItsOwn) {
  const auto traces = tracesOf(runScenario("trace TopoLibVlan 8\nstart library\nstart view\n"));
  ASSERT_FALSE(traces.empty());
  for (const auto& trace : traces) {
    EXPECT_THAT(trace, ElementsAre("0.000000", "TopoLibVlan", "8", MatchesRegex("/src/Sylk/TopoLibVlan:[0-9]+"),
                                   testing::_, testing::_));
  }
}

TEST(Trace, theTextIsTheTracesOwnAndNothingElse) {
  // A name may hold what separates the fields: the text comes last.
  EXPECT_THAT(textsOf("trace TopoLib 3\nstart library\ntopology \"my \ttopology\\\"\"\n"),
              ElementsAre("LibSm::handleTopoConfigOrStatus for TopoConfig my \ttopology\"",
                          "LibSm::handleTopoConfigOrStatus creating TopoConfigSm my \ttopology\""));
}

TEST(Trace, isOffAtFirst) { EXPECT_THAT(textsOf("start library\nstart view\nsettle\n"), IsEmpty()); }

TEST(Trace, levelsAreSwitchedOnOneByOne) {
  EXPECT_THAT(textsOf("trace TopoLib 8\nstart library\n"), ElementsAre(initialized, initDone, interfaces));
  EXPECT_THAT(textsOf("trace TopoLib 9\nstart library\n"), ElementsAre(codefCreated, codefBusy));
  EXPECT_THAT(textsOf("trace TopoLib 8,9\nstart library\n"),
              ElementsAre(initialized, codefCreated, codefBusy, initDone, interfaces));
  EXPECT_THAT(textsOf("trace TopoLib 0,1,7,10,31\nstart library\n"), IsEmpty());
}

TEST(Trace, allAndNoneAreEveryLevelAndNoLevel) {
  EXPECT_THAT(textsOf("trace TopoLib all\nstart library\n"),
              ElementsAre(initialized, codefCreated, codefBusy, initDone, interfaces));
  EXPECT_THAT(textsOf("trace TopoLib all\ntrace TopoLib none\nstart library\n"), IsEmpty());
}

TEST(Trace, aLaterCommandReplacesTheLevels) {
  EXPECT_THAT(textsOf("trace TopoLib 8\ntrace TopoLib 9\nstart library\n"), ElementsAre(codefCreated, codefBusy));
  EXPECT_THAT(textsOf("trace TopoLib 9\nstart library\ntrace TopoLib none\nstop library\nstart library\n"),
              ElementsAre(codefCreated, codefBusy));
}

TEST(Trace, facilitiesAreSwitchedSeparately) {
  const std::string scenario = "start library\nstart view\nsettle\n";
  for (const std::string facility : {"TopoLib", "TopoLibVlan"}) {
    const auto facilities = fieldOf(runScenario("trace " + facility + " all\n" + scenario), 1);
    EXPECT_FALSE(facilities.empty());
    EXPECT_THAT(facilities, testing::Each(facility));
  }
}

TEST(Trace, doesNotChangeWhatIsPrinted) {
  const std::string scenario =
      "vlan 10\nvlan 10 port Ethernet1\ntopology A\nmap 10 A\nwatch state on\nset tick 0.25\nstart library\nstart "
      "view\n"
      "settle\nshow backlog json\n";
  const Outcome quiet = runScenario(scenario);
  const Outcome traced = runScenario("trace TopoLib all\ntrace TopoLibVlan all\n" + scenario);
  EXPECT_EQ(traced.out, quiet.out);
  EXPECT_EQ(quiet.err, "");
  EXPECT_FALSE(traced.err.empty());
}

// The option.

TEST(TraceOption, switchesLevelsOnFromTheStart) {
  EXPECT_THAT(textsOf("start library\n", {"--trace", "TopoLib=9"}), ElementsAre(codefCreated, codefBusy));
  EXPECT_THAT(textsOf("start library\n", {"--trace", "TopoLib=all"}),
              ElementsAre(initialized, codefCreated, codefBusy, initDone, interfaces));
  EXPECT_THAT(textsOf("trace TopoLib none\nstart library\n", {"--trace", "TopoLib=8,9"}), IsEmpty());
}

TEST(TraceOption, takesSeveralFacilities) {
  const std::string scenario = "start library\nstart view\n";
  const auto both = fieldOf(runScenario(scenario, {"--trace", "TopoLib=8;TopoLibVlan=8"}), 1);
  EXPECT_THAT(both, testing::IsSupersetOf({"TopoLib", "TopoLibVlan"}));
  EXPECT_EQ(fieldOf(runScenario(scenario, {"--trace", "TopoLib=8", "--trace", "TopoLibVlan=8"}), 1), both);
  EXPECT_EQ(fieldOf(runScenario(scenario, {"--trace=;TopoLib=9;TopoLibVlan=8;TopoLib=8;"}), 1), both);
}

TEST(TraceOption, aBadOneRunsNothing) {
  for (const char* const spec : {"TopoLib=8;Nothing=8", "TopoLib=", "TopoLib=8,", "=8", "TopoLib=8 9"}) {
    const Outcome outcome = runScenario("start library\necho never\n", {"--trace", spec});
    EXPECT_EQ(outcome.status, 2) << spec;
    EXPECT_EQ(outcome.out, "") << spec;
    EXPECT_EQ(outcome.err.rfind("--trace: error: expected ", 0), 0U) << outcome.err;
  }
}

// Errors of the command.

TEST(TraceCommand, needsAFacilityThatThereIs) {
  const std::string expected = "-:1: error: expected a trace facility, TopoLib or TopoLibVlan, found ";
  EXPECT_EQ(errorOf("trace"), expected + "the end of the line\n");
  EXPECT_EQ(errorOf("trace Nothing all"), expected + "'Nothing'\n");
  EXPECT_EQ(errorOf("trace topolib all"), expected + "'topolib'\n");
}

TEST(TraceCommand, needsLevels) {
  EXPECT_EQ(errorOf("trace TopoLib"),
            "-:1: error: expected trace levels such as 2,3,8, or all or none, found the end of the line\n");
  const std::string expected = "-:1: error: expected trace levels from 0 to 31 such as 2,3,8, or all or none, found ";
  EXPECT_EQ(errorOf("trace TopoLib some"), expected + "'some'\n");
  EXPECT_EQ(errorOf("trace TopoLib 32"), expected + "'32'\n");
  EXPECT_EQ(errorOf("trace TopoLib -1"), expected + "'-1'\n");
  EXPECT_EQ(errorOf("trace TopoLib 2,,3"), expected + "''\n");
  EXPECT_EQ(errorOf("trace TopoLib 2-3"), expected + "'2-3'\n");
  EXPECT_EQ(errorOf("trace TopoLib 2,all"), expected + "'all'\n");
  EXPECT_EQ(errorOf("trace TopoLib 2 3"), "-:1: error: expected the end of the line, found '3'\n");
}

// Assertions.

TEST(Assertion, reportsItsPlaceItsFunctionAndItsText) {
  const Outcome outcome = runScenario(
      "watch config on\necho before\nstart library watch status interfaces later\ntopology A\necho never\n");
  EXPECT_EQ(outcome.status, -SIGABRT);
  EXPECT_THAT(outcome.err,
              MatchesRegex("/src/Sylk/TopoLib:[0-9]+: void Topology::Library::LibSm::handleTopoConfigOrStatus.const "
                           "Mox::String&.: Assertion 'initialized.. && \"Did you forget to set ethIntfStatusDir.\"' "
                           "failed\\.\n"));
  // The watch reads the configuration before the library does, and its line is not lost.
  EXPECT_THAT(outcome.lines(), ElementsAre("before", R"({"time":0.0,"document":"config","op":"add",)"
                                                     R"("path":"/topoConfig/A","value":{"topoNumber":0,)"
                                                     R"("publishPortConfig":false,"publishedPortState":"forwarding",)"
                                                     R"("topoPortConfig":{}}})"));
}

}  // namespace Topo::TraceTest
