// Runs the `topo` program, which the environment variable TOPO_PROGRAM names, as a process of its own.
//
//   const Test::Outcome outcome = Test::runScenario("vlan 10\nshow bridging json\n");
//   EXPECT_EQ(outcome.status, 0) << outcome.err;
//
// The input and both outputs go through files, so that no amount of text can block the two processes.

#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Test {

using Json = nlohmann::ordered_json;

struct Outcome {
  int status = -1;  // the exit status, or minus the number of the signal that ended the process
  std::string out;
  std::string err;

  [[nodiscard]] std::vector<std::string> lines() const {
    std::vector<std::string> all;
    std::istringstream text(out);
    for (std::string line; std::getline(text, line);) all.push_back(line);
    return all;
  }
  /// Each line of the output as JSON.
  [[nodiscard]] std::vector<Json> json() const {
    std::vector<Json> all;
    for (const std::string& line : lines()) all.push_back(Json::parse(line));
    return all;
  }
};

/// A file without a name that is gone when it is closed.
class TemporaryFile {
 public:
  TemporaryFile() : file_(std::tmpfile(), std::fclose) {
    if (!file_) throw std::runtime_error("no temporary file");
  }

  [[nodiscard]] int descriptor() const { return fileno(file_.get()); }
  void write(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), file_.get());
    std::fflush(file_.get());
    std::rewind(file_.get());
  }
  [[nodiscard]] std::string read() {
    std::rewind(file_.get());
    std::string text;
    for (int c = std::fgetc(file_.get()); c != EOF; c = std::fgetc(file_.get())) text += static_cast<char>(c);
    return text;
  }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

/// Runs the program with these arguments and this standard input.
inline Outcome run(const std::vector<std::string>& arguments, const std::string& input = {}) {
  const char* const program = std::getenv("TOPO_PROGRAM");
  if (program == nullptr) throw std::runtime_error("TOPO_PROGRAM does not say which program to test");
  TemporaryFile in;
  TemporaryFile out;
  TemporaryFile err;
  in.write(input);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.descriptor(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.descriptor(), STDERR_FILENO);
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  pid_t child = 0;
  const int error = posix_spawn(&child, program, &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error(std::string("cannot start ") + program);

  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), out.read(), err.read()};
}

/// Runs a scenario from standard input.
inline Outcome runScenario(const std::string& scenario, const std::vector<std::string>& options = {}) {
  std::vector<std::string> arguments{"run", "-"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return run(arguments, scenario);
}

/// The document after a scenario, which must succeed.
inline Json document(const std::string& scenario, const std::string& name) {
  const Outcome outcome = runScenario(scenario + "\nshow " + name + " json\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const std::vector<std::string> lines = outcome.lines();
  return lines.empty() ? Json() : Json::parse(lines.back());
}

/// The report of the only bad line of a scenario, the last one; the lines before it must be good.
inline std::string errorOf(const std::string& scenario) {
  const Outcome outcome = runScenario(scenario);
  EXPECT_EQ(outcome.status, 2) << outcome.out;
  return outcome.err;
}

/// The keys of an object, in their order.
inline std::vector<std::string> keys(const Json& object) {
  std::vector<std::string> all;
  all.reserve(object.size());
  for (const auto& [key, value] : object.items()) all.push_back(key);
  return all;
}

}  // namespace Test
