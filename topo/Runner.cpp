#include "topo/Runner.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "mox/Exception.h"
#include "topo/ScenarioError.h"

namespace Topo {

bool Runner::runFile(const std::string& file) {
  if (file == "-") return run(std::cin, file);
  std::error_code ignored;
  if (std::filesystem::is_directory(file, ignored)) {
    report(file, 0, "it is a directory, not a scenario");
    return false;
  }
  errno = 0;
  std::ifstream lines(file);
  if (!lines) {
    report(file, 0, std::string("cannot read it: ") + std::strerror(errno));
    return false;
  }
  return run(lines, file);
}

bool Runner::run(std::istream& lines, const std::string& file) {
  std::string line;
  std::size_t number = 0;
  while (std::getline(lines, line)) {
    session_.placeIs(file, ++number);
    try {
      session_.execute(line);
      // Somebody looks on.
      if (session_.options().isColoured) session_.out().flush();
    } catch (const ScenarioError& error) {
      report(file, number, error.what());
      return false;
    } catch (const Mox::Exception& error) {
      report(file, number, error.what());
      return false;
    }
  }
  if (lines.bad()) {
    report(file, number, "cannot read on");
    return false;
  }
  return true;
}

void Runner::report(const std::string& file, std::size_t line, const std::string& text) {
  session_.out().flush();
  *session_.options().err << file << ':' << line << ": error: " << text << '\n';
}

int exitStatus(const Session& session) noexcept { return session.failedExpectations() == 0 ? 0 : 1; }

}  // namespace Topo
