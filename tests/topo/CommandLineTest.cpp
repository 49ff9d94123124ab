// The command line: calls, options, exit statuses.

#include <csignal>
#include <cstdio>
#include <fstream>

#include "tests/topo/Run.h"

namespace Topo::CommandLineTest {

using Test::Outcome;
using Test::run;
using Test::runScenario;

/// A scenario in a file that is removed in the end.
class ScenarioFile {
 public:
  ScenarioFile(const std::string& name, const std::string& text) : path_(testing::TempDir() + name) {
    std::ofstream(path_) << text;
  }
  ScenarioFile(const ScenarioFile&) = delete;
  ScenarioFile& operator=(const ScenarioFile&) = delete;
  ~ScenarioFile() { std::remove(path_.c_str()); }

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

TEST(CommandLine, tellsItsVersion) {
  const Outcome outcome = run({"--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.rfind("topo ", 0), 0U) << outcome.out;
}

TEST(CommandLine, outputThatIsLostIsAnError) {
  const std::string command =
      std::string("echo 'echo one' | '") + std::getenv("TOPO_PROGRAM") + "' run - 2>&1 >/dev/full";
  const std::unique_ptr<std::FILE, decltype(&pclose)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text(200, ' ');
  text.resize(std::fread(text.data(), 1, text.size(), pipe.get()));
  EXPECT_EQ(text, "error: standard output cannot be written\n");
}

TEST(CommandLine, helpNamesTheSubcommands) {
  const Outcome outcome = run({"--help"});
  EXPECT_EQ(outcome.status, 0);
  for (const char* const name : {"run", "shell", "import", "help", "--version"}) {
    EXPECT_NE(outcome.out.find(name), std::string::npos) << name;
  }
}

TEST(CommandLine, helpListsEveryCommandAndExplainsEach) {
  const Outcome list = run({"help"});
  EXPECT_EQ(list.status, 0);
  for (const char* const name : {"interface", "vlan",  "topology", "map",     "status", "instance", "force",   "no",
                                 "start",     "stop",  "attach",   "detach",  "set",    "dispatch", "advance", "settle",
                                 "show",      "watch", "trace",    "explain", "expect", "echo",     "help"}) {
    EXPECT_NE(("\n" + list.out).find("\n" + std::string(name) + " "), std::string::npos) << name;
    const Outcome one = run({"help", name});
    EXPECT_EQ(one.status, 0) << name;
    EXPECT_EQ(one.out.rfind(std::string(name) + ": ", 0), 0U) << one.out;
  }
}

TEST(CommandLine, helpOfAnUnknownCommandIsBadInput) {
  const Outcome outcome = run({"help", "frobnicate"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: unknown command 'frobnicate'; topo help lists the commands\n");
}

TEST(CommandLine, whatItDoesNotKnowIsBadInput) {
  EXPECT_EQ(run({}).status, 2);
  EXPECT_EQ(run({"frobnicate"}).status, 2);
  EXPECT_EQ(run({"run"}).status, 2);
  EXPECT_EQ(run({"run", "-", "--frobnicate"}).status, 2);
  EXPECT_EQ(run({"import"}).status, 2);
}

TEST(CommandLine, anEmptyScenarioSucceeds) {
  const Outcome outcome = runScenario("");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "");
}

TEST(CommandLine, filesRunInOrderInOneProcess) {
  const ScenarioFile first("first.topo", "vlan 10\necho first\n");
  const ScenarioFile second("second.topo", "expect bridging /vlanConfig/10/internal == false\necho second\n");
  const Outcome outcome = run({"run", first.path(), "-", second.path()}, "echo between\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "first\nbetween\nsecond\n");
}

TEST(CommandLine, nothingRunsAfterABadLine) {
  const ScenarioFile first("bad.topo", "echo one\n\nfrobnicate\necho two\n");
  const ScenarioFile second("good.topo", "echo three\n");
  const Outcome outcome = run({"run", first.path(), second.path()});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "one\n");
  EXPECT_EQ(outcome.err, first.path() + ":3: error: unknown command 'frobnicate'; help lists the commands\n");
}

TEST(CommandLine, aFileThatCannotBeReadIsBadInput) {
  const Outcome outcome = run({"run", "no-such-file.topo"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "no-such-file.topo:0: error: cannot read it: No such file or directory\n");
  EXPECT_EQ(run({"run", "/"}).err, "/:0: error: it is a directory, not a scenario\n");
}

TEST(CommandLine, aFailedExpectationIsReportedAndTheRunGoesOn) {
  const Outcome outcome =
      runScenario("vlan 10\nexpect bridging /vlanConfig/10 absent\necho on\nexpect state /topo/A != 1\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "on\n");
  EXPECT_EQ(outcome.err,
            "-:2: expectation failed: bridging /vlanConfig/10 is "
            "{\"internal\":false,\"floodsetExpandedVlan\":0,\"vlanPortConfig\":{}}, expected absent\n");
}

TEST(CommandLine, badInputCountsForMoreThanAFailedExpectation) {
  EXPECT_EQ(runScenario("expect state /initDone == true\nfrobnicate\n").status, 2);
}

TEST(CommandLine, jsonMakesShowGiveDocuments) {
  EXPECT_EQ(runScenario("show interfaces\n", {"--json"}).out, "{\"name\":\"interfaces\",\"intfStatus\":{}}\n");
  EXPECT_EQ(runScenario("show config\n", {"--json"}).out,
            "{\"name\":\"config\",\"vidToTopoMap\":{},\"topoConfig\":{}}\n");
}

TEST(CommandLine, tracesGoToStandardErrorAsFields) {
  const std::string scenario = "vlan 10\ntopology A\nmap 10 A\nadvance 1.5\nstart library\nsettle\n";
  const Outcome outcome = runScenario(scenario, {"--trace", "TopoLib=3;TopoLibVlan=all"});
  EXPECT_EQ(outcome.status, 0);
  std::istringstream lines(outcome.err);
  std::size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    std::istringstream text(line);
    std::vector<std::string> fields;
    for (std::string field; std::getline(text, field, '\t');) fields.push_back(field);
    ASSERT_EQ(fields.size(), 6U) << line;
    EXPECT_EQ(fields[0], "1.500000");
    EXPECT_EQ(fields[1], "TopoLib");
    EXPECT_EQ(fields[2], "3");
    EXPECT_EQ(fields[3].rfind("/src/Sylk/TopoLib:", 0), 0U) << line;
  }
  EXPECT_GT(count, 0U);
  EXPECT_EQ(runScenario(scenario, {"--trace", "TopoLib=none"}).err, "");
}

TEST(CommandLine, aBadTraceSpecIsBadInput) {
  EXPECT_EQ(runScenario("", {"--trace", "Nothing=2"}).err,
            "--trace: error: expected a trace facility, TopoLib or TopoLibVlan, found 'Nothing'\n");
  EXPECT_EQ(runScenario("", {"--trace", "TopoLib"}).err, "--trace: error: expected FACILITY=LEVELS, found 'TopoLib'\n");
  EXPECT_EQ(runScenario("", {"--trace", "TopoLib=2,32"}).err,
            "--trace: error: expected trace levels from 0 to 31 such as 2,3,8, or all or none, found '32'\n");
  EXPECT_EQ(runScenario("", {"--trace", "TopoLib=x"}).status, 2);
}

TEST(CommandLine, timeIsVirtualUnlessRealTimeIsAskedFor) {
  const std::string scenario = "watch interfaces on\ninterface Ethernet1\n";
  EXPECT_EQ(runScenario(scenario).json().at(0)["time"], 0.0);
  EXPECT_GT(runScenario(scenario, {"--real-time"}).json().at(0)["time"].get<double>(), 0.0);
}

TEST(CommandLine, anAssertionAbortsWithItsReportAndLosesNoOutput) {
  // A VLAN that others expand into must not expand itself; the library finds out when the VLAN moves.
  const Outcome outcome = runScenario(
      "vlan 10,20,30\ntopology A\nmap 10,20,30 A\nvlan 20 expand 10\nvlan 10 expand 30\nstart library\nsettle\n"
      "echo before\nmap 10 B\necho after\n");
  EXPECT_EQ(outcome.status, -SIGABRT);
  EXPECT_EQ(outcome.out, "before\n");
  EXPECT_NE(outcome.err.find("Assertion"), std::string::npos) << outcome.err;
}

}  // namespace Topo::CommandLineTest
