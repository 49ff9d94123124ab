// A shell on a terminal of its own, and the keys that are typed into it.

#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/topo/Terminal.h"

namespace Test {

inline const std::string prompt = "topo> ";
inline const std::string up = "\033[A";
inline const std::string ctrlC = "\003";
inline const std::string ctrlD = "\004";
inline const std::string ctrlR = "\022";
inline const std::string ctrlZ = "\032";

/// A shell at its first prompt.
class TerminalShell {
 public:
  explicit TerminalShell(const std::vector<std::string>& arguments = {}, const Terminal::Environment& environment = {})
      : TerminalShell(std::make_shared<Directory>(), arguments, environment) {}
  TerminalShell(std::shared_ptr<Directory> home, const std::vector<std::string>& arguments,
                const Terminal::Environment& environment)
      : home_(std::move(home)), terminal_(withShell(arguments), home_->path(), environment) {
    greeting_ = terminal_.until(prompt);
  }

  /// What came before the first command was typed.
  [[nodiscard]] const std::string& greeting() const { return greeting_; }
  [[nodiscard]] const std::shared_ptr<Directory>& home() const { return home_; }
  [[nodiscard]] Terminal& terminal() { return terminal_; }

  /// Types a line, which may hold other keys, and returns what the command printed.
  std::string answer(const std::string& keys) {
    terminal_.type(keys + '\r');
    terminal_.until("\r\n");
    const std::string text = terminal_.until(prompt);
    return text.substr(0, text.size() - prompt.size());
  }
  /// Ends the shell, and returns its status.
  int end() {
    terminal_.type("exit\r");
    return terminal_.status();
  }

 private:
  static std::vector<std::string> withShell(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "shell");
    return arguments;
  }

  std::shared_ptr<Directory> home_;
  Terminal terminal_;
  std::string greeting_;
};

}  // namespace Test
