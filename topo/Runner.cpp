#include "topo/Runner.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "mox/Exception.h"
#include "topo/ScenarioError.h"
#include "topo/Text.h"

namespace Topo {

namespace {

/// What some editors put in front of UTF-8 text.
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

}  // namespace

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
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    if (number == 0 && line.starts_with(byteOrderMark)) line.erase(0, byteOrderMark.size());
    if (!runLine(line, file, ++number)) return false;
  }
  if (lines.bad()) {
    report(file, number, "cannot read on");
    return false;
  }
  return true;
}

bool Runner::runLine(const std::string& text, const std::string& file, std::size_t line) {
  session_.placeIs(file, line);
  try {
    session_.execute(text);
    // Somebody looks on.
    if (session_.options().isColoured) session_.out().flush();
    return true;
  } catch (const ScenarioError& error) {
    report(file, line, error.what());
  } catch (const Mox::Exception& error) {
    report(file, line, error.what());
  }
  return false;
}

void Runner::report(const std::string& file, std::size_t line, const std::string& text) {
  session_.out().flush();
  if (!file.empty()) *session_.options().err << file << ':' << line << ": ";
  *session_.options().err << "error: " << onOneLine(text) << '\n';
}

int exitStatus(const Session& session) noexcept { return session.failedExpectations() == 0 ? 0 : 1; }

}  // namespace Topo
