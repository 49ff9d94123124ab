// The command line of `topo`.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "topo/Command.h"
#include "topo/Import.h"
#include "topo/LookCommands.h"
#include "topo/Runner.h"
#include "topo/ScenarioError.h"
#include "topo/Shell.h"

namespace {

constexpr const char* version = "topo " TOPO_VERSION;

constexpr const char* shellNotes =
    "On a terminal Tab completes, the arrow keys go through the history and Ctrl-R searches it. Ctrl-C discards the\n"
    "line; while a command runs, it ends the program. exit, quit, and Ctrl-D on an empty line end the shell.\n"
    "TOPO_HISTORY names the file of the history, else it is ~/.topo_history; an empty name keeps none.\n"
    "A bad line is reported, and the shell goes on. Where lines do not come from a terminal, the status is 2 after "
    "one.";

/// What a session is made of.
struct Play {
  std::vector<std::string> files;
  std::vector<std::string> traces;
  bool isJson = false;
  bool isRealTime = false;
};

/// An assertion aborts the process: what was printed before it must not be lost.
void flushAndAbort(int /*signal*/) {
  std::cout.flush();
  std::signal(SIGABRT, SIG_DFL);
}

/// Switches levels on as `TopoLib=2,3,8;TopoLibVlan=all` says.
void traceAsSaid(const std::string& text) {
  std::string_view left = text;
  for (bool isLast = false; !isLast;) {
    const std::size_t end = left.find(';');
    isLast = end == std::string_view::npos;
    const std::string_view item = left.substr(0, end);
    if (!isLast) left.remove_prefix(end + 1);
    if (item.empty()) continue;
    const std::size_t equals = item.find('=');
    if (equals == std::string_view::npos) {
      throw Topo::ScenarioError("expected FACILITY=LEVELS, found '" + std::string(item) + "'");
    }
    const std::uint32_t mask = Topo::traceMask({std::string(item.substr(equals + 1))});
    Topo::traceLevelsIs(std::string(item.substr(0, equals)), mask);
  }
}

/// Runs the files; then, if wanted, what is typed.
int play(const Play& how, bool isShell) {
  try {
    for (const std::string& trace : how.traces) traceAsSaid(trace);
  } catch (const Topo::ScenarioError& error) {
    std::cerr << "--trace: error: " << error.what() << '\n';
    return Topo::badInput;
  }
  std::signal(SIGABRT, flushAndAbort);
  Topo::Session session({.isJson = how.isJson, .isRealTime = how.isRealTime, .isColoured = isatty(STDOUT_FILENO) != 0});
  Topo::Runner runner(session);
  for (const std::string& file : how.files) {
    if (!runner.runFile(file)) return Topo::badInput;
  }
  return isShell ? Topo::Shell(session).run() : exitStatus(session);
}

void addOptions(CLI::App& app, Play& how) {
  app.add_flag("--json", how.isJson, "show documents as JSON");
  app.add_option("--trace", how.traces, "trace levels from the start: TopoLib=2,3,8;TopoLibVlan=all")
      ->type_name("SPEC")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.add_flag("--real-time", how.isRealTime, "use the real clock instead of virtual time");
}

int help(const std::string& command) {
  const Topo::Command* const found = Topo::findCommand(command);
  if (!command.empty() && found == nullptr) {
    std::cerr << "error: unknown command '" << command << "'; topo help lists the commands\n";
    return Topo::badInput;
  }
  if (command.empty()) {
    Topo::printHelp(std::cout);
  } else {
    Topo::printHelp(std::cout, *found);
  }
  return 0;
}

/// Does what the command line says; returns the exit status.
int runProgram(int argc, char** argv) {
  CLI::App app("Plays an agent of the topology library: runs scenarios, and shows what the library publishes.", "topo");
  app.set_version_flag("--version", version);
  app.require_subcommand(1);

  Play how;
  CLI::App* const runApp = app.add_subcommand("run", "run scenario files in order, in one process");
  runApp->add_option("FILE", how.files, "scenario files; - is standard input")->required();
  addOptions(*runApp, how);

  CLI::App* const shellApp = app.add_subcommand("shell", "run scenario files, then read commands from the terminal");
  shellApp->add_option("FILE", how.files, "scenario files to begin with");
  addOptions(*shellApp, how);
  shellApp->footer(shellNotes);

  std::string directory;
  std::optional<std::string> bridge;
  CLI::App* const importApp = app.add_subcommand("import", "turn captures of other systems into scenarios");
  importApp->require_subcommand(1);
  CLI::App* const linuxApp = importApp->add_subcommand("linux", "captures of the Linux bridge tools");
  linuxApp->add_option("DIR", directory, "directory with link.json, vlan.json and what else there is")->required();
  linuxApp->add_option("--bridge", bridge, "the bridge to import")->type_name("NAME");

  std::string command;
  CLI::App* const helpApp = app.add_subcommand("help", "explain the commands of the scenario language");
  helpApp->add_option("COMMAND", command, "a command; without one they are listed");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : Topo::badInput;
  }
  const int status = *runApp || *shellApp ? play(how, shellApp->parsed())
                     : *linuxApp          ? Topo::importLinux(directory, bridge, std::cout, std::cerr)
                                          : help(command);
  if (std::cout.flush()) return status;
  std::cerr << "error: standard output cannot be written\n";
  return Topo::badInput;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  try {
    return runProgram(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "error: " << error.what() << '\n';
    return Topo::badInput;
  }
}
