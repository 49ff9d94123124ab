// The history of the shell.

#include <fstream>
#include <memory>

#include "tests/topo/Run.h"
#include "tests/topo/TerminalShell.h"

namespace Topo::ShellHistoryTest {

using Test::ctrlD;
using Test::ctrlR;
using Test::Directory;
using Test::prompt;
using Test::Terminal;
using Test::up;
using Shell = Test::TerminalShell;

TEST(Shell, upRepeatsTheLastLineAndTheOneBeforeIt) {
  Shell shell;
  shell.answer("echo one");
  shell.answer("echo two");
  EXPECT_EQ(shell.answer(up), "two\r\n");
  EXPECT_EQ(shell.answer(up + up), "one\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, ctrlRSearchesTheHistory) {
  Shell shell;
  shell.answer("echo one");
  shell.answer("vlan 10");
  const std::string end = "\005";  // to the end of the line, which ends the search
  shell.terminal().type(ctrlR + "on" + end + '\r');
  shell.terminal().until("\r\none\r\n" + prompt);
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, aBadLineCanBeCalledBackAndMended) {
  Shell shell;
  shell.answer("echos on");
  EXPECT_EQ(shell.answer(up + "\001\033[C\033[C\033[C\033[C" + ctrlD), "on\r\n");
  EXPECT_EQ(shell.end(), 0);
}

TEST(Shell, theHistoryIsKeptInTheHomeDirectory) {
  const auto home = std::make_shared<Directory>();
  Shell first(home, {}, {});
  first.answer("echo kept");
  first.answer("echo kept");
  first.answer("  ");
  EXPECT_EQ(first.end(), 0);
  EXPECT_EQ(home->read(".topo_history"), "echo kept\nexit\n");
  Shell second(home, {}, {});
  EXPECT_EQ(second.answer(up + up), "kept\r\n");
  EXPECT_EQ(second.end(), 0);
}

TEST(Shell, theHistoryIsKeptWhereTheEnvironmentSays) {
  const auto home = std::make_shared<Directory>();
  const Terminal::Environment environment{{"TOPO_HISTORY", home->write("past", "echo past\n")}};
  Shell shell(home, {}, environment);
  EXPECT_EQ(shell.answer(up), "past\r\n");
  EXPECT_EQ(shell.end(), 0);
  EXPECT_EQ(home->read("past"), "echo past\nexit\n");
  EXPECT_FALSE(std::filesystem::exists(home->file(".topo_history")));
}

TEST(Shell, aHistoryThatCannotBeKeptIsNoError) {
  for (const char* const file : {"/no/such/directory/history", "/", ""}) {
    Shell shell({}, {{"TOPO_HISTORY", file}});
    shell.answer("echo one");
    EXPECT_EQ(shell.answer(up), "one\r\n") << file;
    EXPECT_EQ(shell.end(), 0) << file;
    EXPECT_TRUE(std::filesystem::is_empty(shell.home()->path())) << file;
  }
}

TEST(Shell, aLongHistoryIsCutBack) {
  const auto home = std::make_shared<Directory>();
  std::string lines;
  for (int i = 1; i <= 2000; ++i) lines += "echo " + std::to_string(i) + '\n';
  std::ofstream(home->file(".topo_history")) << lines;
  Shell shell(home, {}, {});
  EXPECT_EQ(shell.answer(up), "2000\r\n");
  EXPECT_EQ(shell.end(), 0);
  EXPECT_EQ(home->read(".topo_history"), lines.substr(lines.find("echo 1001\n")) + "exit\n");
}

}  // namespace Topo::ShellHistoryTest
