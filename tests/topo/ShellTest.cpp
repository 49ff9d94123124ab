// The shell, driven through a pseudo-terminal, and through a pipe.

#include <csignal>
#include <memory>

#include "tests/topo/Run.h"
#include "tests/topo/TerminalShell.h"

namespace Topo::ShellTest {

using Test::ctrlC;
using Test::ctrlD;
using Test::ctrlZ;
using Test::Directory;
using Test::Outcome;
using Test::prompt;
using Test::run;
using Test::Terminal;
using Shell = Test::TerminalShell;

// Commands

TEST(Shell, saysHowToGoOnAndPrompts) {
  Shell shell;
  EXPECT_EQ(shell.greeting(),
            "help lists the commands, Tab completes them; exit or Ctrl-D ends the shell.\r\n" + prompt);
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, runsCommandsInOneSession) {
  Shell shell;
  EXPECT_EQ(shell.answer("vlan 10"), "");
  EXPECT_EQ(shell.answer("show bridging json"),
            "{\"name\":\"bridging\",\"vlanConfig\":{\"10\":{\"internal\":false,\"floodsetExpandedVlan\":0,"
            "\"vlanPortConfig\":{}}}}\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, goesOnAfterABadLineWhichChangesNothing) {
  Shell shell;
  EXPECT_EQ(shell.answer("frobnicate"), "error: unknown command 'frobnicate'; help lists the commands\r\n");
  EXPECT_EQ(shell.answer("interface Ethernet1 link sideways"),
            "error: expected unknown, down or up, found 'sideways'\r\n");
  EXPECT_EQ(shell.answer("vlan 5000"), "error: VlanId::value < 1 or > 4094 not allowed\r\n");
  EXPECT_EQ(shell.answer("show interfaces json"), "{\"name\":\"interfaces\",\"intfStatus\":{}}\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, aFailedExpectationIsReportedAndMakesTheStatus) {
  Shell shell;
  EXPECT_EQ(shell.answer("expect state /initDone == true"),
            "expectation failed: state /initDone is false, expected == true\r\n");
  EXPECT_EQ(shell.answer("expect state /initDone == false"), "");
  EXPECT_EQ(shell.end(), 1);
}

TEST(Shell, helpListsTheCommandsAndExplainsOne) {
  Shell shell;
  const std::string list = shell.answer("help");
  EXPECT_NE(list.find("interface   the status of an interface\r\n"), std::string::npos) << list;
  EXPECT_EQ(shell.answer("help settle"),
            "settle: runs until nothing is pending\r\n\r\n  settle\r\n\r\nAn error after 1,000,000 rounds.\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, aPastedScriptRunsLineByLine) {
  Shell shell;
  shell.terminal().type("# a script\rvlan 10,20\r\rmap 10 A\rmap 20 B\rshow config json\r");
  // Of all that is printed, only this cannot be an echo of what was pasted.
  const std::string text = shell.terminal().until(
      "{\"name\":\"config\",\"vidToTopoMap\":{\"10\":\"A\",\"20\":\"B\"},\"topoConfig\":{}}\r\n" + prompt);
  EXPECT_EQ(text.find("error"), std::string::npos) << text;
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, changesOfAWatchedDocumentAreSeenAtOnce) {
  Shell shell;
  shell.answer("watch interfaces on");
  EXPECT_EQ(shell.answer("interface Ethernet1"),
            "{\"time\":0.0,\"document\":\"interfaces\",\"op\":\"add\",\"path\":\"/intfStatus/Ethernet1\",\"value\":"
            "{\"linkStatus\":\"unknown\",\"forwardingModel\":\"unspecified\"}}\r\n");
  EXPECT_EQ(shell.end(), 0);
}

// Files and options

TEST(Shell, runsFilesFirst) {
  const Directory directory;
  const std::string one = directory.write("one.topo", "vlan 10\necho from one\n");
  const std::string two = directory.write("two.topo", "map 10 A\necho from two\n");
  Shell shell({one, two});
  EXPECT_EQ(shell.greeting().rfind("from one\r\nfrom two\r\n", 0), 0U) << shell.greeting();
  EXPECT_EQ(shell.answer("expect config /vidToTopoMap/10 == \"A\""), "");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, anErrorInAFileEndsItBeforeThePrompt) {
  const Directory directory;
  const std::string file = directory.write("bad.topo", "echo on\nfrobnicate\n");
  Terminal terminal({"shell", file}, directory.path());
  EXPECT_EQ(terminal.rest(), "on\r\n" + file + ":2: error: unknown command 'frobnicate'; help lists the commands\r\n");
  EXPECT_EQ(terminal.status(), 2);
}

TEST(Shell, aFailedExpectationOfAFileCounts) {
  const Directory directory;
  const std::string file = directory.write("failing.topo", "expect state /initDone == true\n");
  Shell shell({file});
  EXPECT_EQ(shell.greeting().rfind(file + ":1: expectation failed: ", 0), 0U) << shell.greeting();
  EXPECT_EQ(shell.end(), 1);
}

TEST(Shell, takesTheOptionsOfARun) {
  Shell shell({"--json", "--trace", "TopoLib=all", "--real-time"});
  EXPECT_EQ(shell.answer("show interfaces"), "{\"name\":\"interfaces\",\"intfStatus\":{}}\r\n");
  EXPECT_EQ(shell.answer("set tick 1"), "error: real time has no tick; leave out --real-time\r\n");
  EXPECT_NE(shell.answer("start library").find("\tTopoLib\t"), std::string::npos);
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, itsOwnHelpNamesTheKeysAndTheHistory) {
  const Outcome outcome = run({"shell", "--help"});
  EXPECT_EQ(outcome.status, 0);
  for (const char* const text :
       {"FILE", "--json", "--trace", "--real-time", "Tab", "Ctrl-C", "Ctrl-D", "TOPO_HISTORY"}) {
    EXPECT_NE(outcome.out.find(text), std::string::npos) << text;
  }
}

// Keys

TEST(Shell, ctrlCDiscardsTheLineThatIsTyped) {
  Shell shell;
  shell.terminal().type("echo never" + ctrlC);
  EXPECT_EQ(shell.terminal().until(prompt), "echo never^C\r\n" + prompt);
  EXPECT_EQ(shell.answer("echo on"), "on\r\n");
  shell.terminal().type(ctrlC);
  EXPECT_EQ(shell.terminal().until(prompt), "^C\r\n" + prompt);
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, ctrlCEndsTheProgramWhileACommandRuns) {
  Shell shell({"--trace", "TopoLib=all"});
  shell.answer("start library");
  shell.answer("topology A");
  // More rounds than anybody waits for; the first of them leaves traces, by which they are known to run.
  shell.terminal().type("dispatch 4000000000\r");
  shell.terminal().until("\tTopoLib\t");
  shell.terminal().type(ctrlC);
  EXPECT_EQ(shell.terminal().status(), -SIGINT);
  EXPECT_EQ(shell.home()->read(".topo_history"), "start library\ntopology A\ndispatch 4000000000\n");
}

TEST(Shell, ctrlDOnAnEmptyLineEndsIt) {
  Shell shell;
  shell.terminal().type(ctrlD);
  EXPECT_EQ(shell.terminal().status(), 0);
}

TEST(Shell, ctrlDInALineDeletesAndEndsNothing) {
  Shell shell;
  const std::string home = "\001";  // to the beginning of the line
  EXPECT_EQ(shell.answer("xecho on" + home + ctrlD), "on\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, ctrlDAfterAFailedExpectationHasStatus1) {
  Shell shell;
  shell.answer("expect state /initDone == true");
  shell.terminal().type(ctrlD);
  EXPECT_EQ(shell.terminal().status(), 1);
}

TEST(Shell, ctrlZWithoutJobControlDoesNotEndIt) {
  Shell shell;
  shell.answer("vlan 10");
  shell.terminal().untilItWaits();
  shell.terminal().type(ctrlZ);
  shell.terminal().until(prompt);
  EXPECT_EQ(shell.answer("expect bridging /vlanConfig/10/internal == false"), "");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, exitAndQuitEndItAndNothingElseDoes) {
  for (const char* const last : {"exit\r", "quit\r", "  exit   # for today\r"}) {
    Shell shell;
    shell.terminal().type(last);
    EXPECT_EQ(shell.terminal().status(), 0) << last;
  }
  Shell shell;
  EXPECT_EQ(shell.answer("exit now"), "error: unknown command 'exit'; help lists the commands\r\n");
  EXPECT_EQ(shell.answer("\"exit\""), "error: unknown command 'exit'; help lists the commands\r\n");
  EXPECT_EQ(shell.answer("\"exit"), "error: the closing double quote is missing\r\n");
  EXPECT_EQ(shell.end(), 0);
}

// Completion

TEST(Shell, tabCompletesWhatIsCertainWithABlank) {
  Shell shell;
  EXPECT_EQ(shell.answer("ec\ton"), "on\r\n");
  EXPECT_EQ(shell.answer("sh\tinterf\tj\t"), "{\"name\":\"interfaces\",\"intfStatus\":{}}\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, tabCompletesTheNameOfAnInterface) {
  Shell shell;
  shell.answer("interface Ethernet17");
  EXPECT_EQ(shell.answer("inter\tEth\tli\tup"), "");
  EXPECT_EQ(shell.answer("show interfaces json"),
            "{\"name\":\"interfaces\",\"intfStatus\":{\"Ethernet17\":{\"linkStatus\":\"up\","
            "\"forwardingModel\":\"unspecified\"}}}\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, tabCompletesWhatSeveralHaveInCommonAndASecondOneLists) {
  Shell shell;
  shell.answer("interface Ethernet17-18");
  shell.terminal().type("no interface E\t");
  shell.terminal().until("thernet1");
  shell.terminal().type("\t");
  shell.terminal().until("\r\nEthernet17  Ethernet18\r\n");
  // The line stands there again, and is gone on with.
  shell.terminal().until(prompt + "no interface Ethernet1");
  EXPECT_EQ(shell.answer("8"), "");
  EXPECT_EQ(shell.answer("expect interfaces /intfStatus == {\"Ethernet17\":{\"linkStatus\":\"unknown\","
                         "\"forwardingModel\":\"unspecified\"}}"),
            "");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, theFirstTabListsNothing) {
  Shell shell;
  shell.terminal().type("in\t" + ctrlC);
  const std::string text = shell.terminal().until(prompt);
  EXPECT_EQ(text.find("interface"), std::string::npos) << text;
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, aListThatNoScreenHoldsIsCutShort) {
  Shell shell;
  shell.answer("vlan 1000-1999");
  shell.terminal().type("no vlan 1\t\t");
  // 13 columns of 6 characters in 80.
  shell.terminal().until("\r\n1000  1016  1032  1048  1064  1080  1096  1112  1128  1144  1160  1176  1192\r\n");
  shell.terminal().until("\r\nand 800 more\r\n");
  shell.terminal().until(prompt + "no vlan 1");
  EXPECT_EQ(shell.answer("000"), "");
  EXPECT_EQ(shell.answer("expect bridging /vlanConfig/1000 absent"), "");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, tabCompletesANameWithBlanksInQuotes) {
  Shell shell;
  shell.answer("interface \"caf\303\251 port\"");
  EXPECT_EQ(shell.answer("no interface caf\303\251\t"), "");
  EXPECT_EQ(shell.answer("show interfaces json"), "{\"name\":\"interfaces\",\"intfStatus\":{}}\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, tabWithoutACandidateLeavesTheLine) {
  Shell shell;
  EXPECT_EQ(shell.answer("echo on\t\t"), "on\r\n");
  EXPECT_EQ(shell.end(), 0);
}

// Lines that do not come from a terminal

TEST(Shell, aPipeIsReadWithoutPromptAndGoesOnAfterABadLine) {
  const Outcome outcome = run({"shell"}, "echo one\nfrobnicate\necho two");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "one\ntwo\n");
  EXPECT_EQ(outcome.err, "-:2: error: unknown command 'frobnicate'; help lists the commands\n");
}

TEST(Shell, aPipeEndsWithTheStatusOfARun) {
  EXPECT_EQ(run({"shell"}, "").status, 0);
  EXPECT_EQ(run({"shell"}, "echo one\n").status, 0);
  const Outcome outcome = run({"shell"}, "expect state /initDone == true\necho on\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "on\n");
  EXPECT_EQ(outcome.err, "-:1: expectation failed: state /initDone is false, expected == true\n");
  EXPECT_EQ(run({"shell"}, "frobnicate\nexpect state /initDone == true\n").status, 2);
}

TEST(Shell, exitEndsAPipeAsWell) {
  const Outcome outcome = run({"shell"}, "echo one\nexit\necho two\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "one\n");
}

TEST(Shell, filesRunBeforeAPipe) {
  const Directory directory;
  const std::string good = directory.write("good.topo", "echo file\n");
  EXPECT_EQ(run({"shell", good}, "echo pipe\n").out, "file\npipe\n");
  const std::string bad = directory.write("bad.topo", "frobnicate\n");
  const Outcome outcome = run({"shell", bad}, "echo pipe\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
}

// Colour

TEST(Shell, tablesAreColouredOnATerminalAndPlainElsewhere) {
  const std::string coloured =
      "\033[1mINTERFACE\033[0m  \033[1mLINK\033[0m  \033[1mMODEL\033[0m\r\nEthernet1  \033[32mup\033[0m    "
      "unspecified\r\n";
  const std::string plain = "INTERFACE  LINK  MODEL\nEthernet1  up    unspecified\n";
  const std::string scenario = "interface Ethernet1 link up\nshow interfaces\n";

  Shell shell;
  shell.answer("interface Ethernet1 link up");
  EXPECT_EQ(shell.answer("show interfaces"), coloured);
  EXPECT_EQ(shell.end(), 0);
  EXPECT_EQ(run({"shell"}, scenario).out, plain);

  const Directory directory;
  const std::string file = directory.write("table.topo", scenario);
  Terminal terminal({"run", file}, directory.path());
  EXPECT_EQ(terminal.rest(), coloured);
  EXPECT_EQ(terminal.status(), 0);
  EXPECT_EQ(run({"run", file}).out, plain);
}

}  // namespace Topo::ShellTest
