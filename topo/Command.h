// The commands of the scenario language. The table is what runs them and what `help` prints.
//
// A handler gets the words behind its own name. It reads them to the end and checks everything before it changes anything,
// so that a bad line changes nothing; what is wrong it raises as ScenarioError.

#pragma once

#include <iosfwd>
#include <string_view>
#include <vector>

#include "topo/Words.h"

namespace Topo {

class Session;

using Handler = void (*)(Session&, Words&);

struct Command {
  std::string_view name;
  std::string_view summary;
  std::vector<std::string_view> usage;
  /// Further lines of its help: defaults and rules.
  std::vector<std::string_view> notes;
  Handler run;
  Handler runNo = nullptr;  // of `no NAME`
};

/// All commands, in the order of the help text.
[[nodiscard]] const std::vector<Command>& commands();
/// The command of this name, or null.
[[nodiscard]] const Command* findCommand(std::string_view name);

/// Prints the list of commands.
void printHelp(std::ostream& out);
/// Prints the help of one command.
void printHelp(std::ostream& out, const Command& command);

}  // namespace Topo
