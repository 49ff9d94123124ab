// Runs scenario files in a session.
//
// The first bad line ends the run: a line `FILE:LINE: error: TEXT` on the error stream says what is wrong with it, and
// nothing after it is run. A scenario is read line by line, so that its length does not matter.

#pragma once

#include <cstddef>
#include <istream>
#include <string>

#include "topo/Session.h"

namespace Topo {

class Runner {
 public:
  explicit Runner(Session& session) : session_(session) {}

  /// Runs a file, or standard input for `-`. Returns false for bad input.
  [[nodiscard]] bool runFile(const std::string& file);
  /// Runs what a stream holds; `file` is its name in reports.
  [[nodiscard]] bool run(std::istream& lines, const std::string& file);
  /// Runs one line. Its report begins with the place, unless `file` is empty: `error: TEXT`.
  [[nodiscard]] bool runLine(const std::string& text, const std::string& file, std::size_t line);

 private:
  void report(const std::string& file, std::size_t line, const std::string& text);

  Session& session_;
};

/// The exit status of a session that has run: 0, or 1 if an expectation failed.
[[nodiscard]] int exitStatus(const Session& session) noexcept;
/// That of bad input.
inline constexpr int badInput = 2;

}  // namespace Topo
