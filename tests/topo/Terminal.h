// Runs the `topo` program in a pseudo-terminal, as a person would.
//
//   const Test::Directory home;
//   Test::Terminal terminal({"shell"}, home.path());
//   terminal.until("topo> ");
//   terminal.type("echo on\r");
//   EXPECT_EQ(terminal.until("topo> "), "echo on\r\non\r\ntopo> ");
//   terminal.type("exit\r");
//   EXPECT_EQ(terminal.status(), 0);
//
// What was typed is echoed by the program's line editor; both outputs of the program go to the terminal.

#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Test {

/// A directory that is gone in the end, with all that is in it.
class Directory {
 public:
  Directory() : path_(testing::TempDir() + "topo.XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary directory");
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;
  ~Directory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string file(const std::string& name) const { return path_ + '/' + name; }
  /// Writes a file, and returns its path.
  [[nodiscard]] std::string write(const std::string& name, const std::string& text) const {
    std::ofstream(file(name)) << text;
    return file(name);
  }
  [[nodiscard]] std::string read(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(file(name)).rdbuf();
    return text.str();
  }

 private:
  std::string path_;
};

class Terminal {
 public:
  using Environment = std::map<std::string, std::string>;

  /// Starts the program; its home directory is that one, and what else it can know of its user is in the environment.
  Terminal(const std::vector<std::string>& arguments, const std::string& home, Environment environment = {}) {
    const char* const program = std::getenv("TOPO_PROGRAM");
    if (program == nullptr) throw std::runtime_error("TOPO_PROGRAM does not say which program to test");
    environment.merge(Environment{{"HOME", home}, {"TERM", "xterm"}, {"LC_ALL", "C.UTF-8"}});
    // What the sanitizers are told reaches the program as well.
    for (const char* const name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "GCOV_PREFIX"}) {
      if (const char* const value = std::getenv(name)) environment.emplace(name, value);
    }
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables;
    for (const auto& [name, value] : environment) variables.push_back(name + '=' + value);
    std::vector<char*> argv = pointers(words);
    std::vector<char*> envp = pointers(variables);
    winsize size{};
    size.ws_row = 24;
    size.ws_col = 80;
    child_ = forkpty(&master_, nullptr, nullptr, &size);
    if (child_ < 0) throw std::runtime_error("no pseudo-terminal");
    if (child_ == 0) {
      execve(program, argv.data(), envp.data());
      _exit(127);
    }
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() {
    if (child_ > 0) {
      kill(child_, SIGKILL);
      waitpid(child_, nullptr, 0);
    }
    close(master_);
  }

  void type(const std::string& keys) const {
    for (std::size_t done = 0; done < keys.size();) {
      const ssize_t count = write(master_, keys.data() + done, keys.size() - done);
      if (count < 0) throw std::runtime_error("the terminal is gone");
      done += static_cast<std::size_t>(count);
    }
  }

  /// Reads up to the next place where the text stands, and returns what came up to there. A failure if it never does.
  std::string until(const std::string& text) {
    std::size_t at = read_.find(text);
    while (at == std::string::npos && readMore()) at = read_.find(text);
    if (at == std::string::npos) {
      ADD_FAILURE() << "no '" << text << "' in '" << read_ << "'";
      return std::exchange(read_, {});
    }
    std::string front = read_.substr(0, at + text.size());
    read_.erase(0, front.size());
    return front;
  }

  /// Waits until the program waits itself, as for a key.
  void untilItWaits() const {
    std::string state;
    while (state != "S") {
      std::ifstream stat("/proc/" + std::to_string(child_) + "/stat");
      std::string field;
      stat >> field >> field >> state;  // number, name, state
      if (!stat || state == "Z") throw std::runtime_error("the program is gone");
    }
  }

  /// Reads up to the end of the program, and returns what came.
  std::string rest() {
    while (readMore()) {
    }
    return std::exchange(read_, {});
  }

  /// The exit status, or minus the number of the signal that ended the program; it must be about to end.
  int status() {
    read_ = rest();
    int status = 0;
    if (!isAtEnd_) kill(child_, SIGKILL);
    waitpid(child_, &status, 0);
    child_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  /// Longer than anything takes, on a machine under load and with sanitizers.
  static constexpr int patienceMilliseconds = 60'000;

  [[nodiscard]] static std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    all.reserve(texts.size() + 1);
    for (std::string& text : texts) all.push_back(text.data());
    all.push_back(nullptr);
    return all;
  }

  /// Waits for more output. False at the end of the program.
  bool readMore() {
    if (isAtEnd_) return false;
    pollfd wait{master_, POLLIN, 0};
    if (poll(&wait, 1, patienceMilliseconds) <= 0) {
      ADD_FAILURE() << "nothing comes after '" << read_ << "'";
      return false;
    }
    std::array<char, 4096> buffer{};
    const ssize_t count = read(master_, buffer.data(), buffer.size());
    isAtEnd_ = count <= 0;  // Reading from a terminal whose program has ended is an error.
    if (!isAtEnd_) read_.append(buffer.data(), static_cast<std::size_t>(count));
    return !isAtEnd_;
  }

  pid_t child_ = 0;
  int master_ = -1;
  bool isAtEnd_ = false;
  std::string read_;  // and not returned yet
};

}  // namespace Test
