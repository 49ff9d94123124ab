// The shell: commands of the scenario language, read one by one from standard input.
//
// From a terminal, with line editing:
//   - Tab completes (topo/Completion.h): what is certain at once; where several go on, a second Tab lists them.
//   - The arrow keys go through the history, Ctrl-R searches it. It is kept from one session to the next in the file that the
//     environment variable TOPO_HISTORY names, else in .topo_history in the home directory; an empty name keeps none. The
//     file holds plain lines, so that it can be made a scenario. One that cannot be read or written is no error.
//   - Ctrl-C discards the line that is being typed. While a command runs, it ends the program, as it does in a run.
//   - `exit`, `quit`, and Ctrl-D on an empty line end the shell. The user's own ~/.editrc is heeded.
//
// From anything else, or when what is printed does not go to a terminal, lines are read without prompt and editing, and
// reports name them as a scenario's: `-:LINE: error: TEXT`.
//
// Rules
//   - A bad line is reported, changes nothing, and the shell goes on. So it does after a failed expectation.
//   - The status in the end is that of a run: 1 when an expectation failed. Where nobody could mend a bad line, as in lines
//     that do not come from a terminal, it is 2 after a bad line.

#pragma once

#include "topo/Runner.h"

namespace Topo {

class Shell {
 public:
  explicit Shell(Session& session) : session_(session), runner_(session) {}

  /// Reads and runs commands up to the end. Returns the exit status.
  [[nodiscard]] int run();

 private:
  [[nodiscard]] int runTerminal();
  [[nodiscard]] int runLines();

  Session& session_;
  Runner runner_;
};

}  // namespace Topo
