// A session with an agent: takes the scenario one line at a time.
//
//   Topo::Session session({});
//   session.execute("vlan 10-20");
//   session.execute("show bridging");
//
// A bad line raises ScenarioError, or an exception of the framework, and changes nothing. An expectation that fails is
// reported on the error stream, and counted; the session goes on.

#pragma once

#include <cstddef>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "topo/Agent.h"
#include "topo/Documents.h"
#include "topo/Feed.h"
#include "topo/Loop.h"

namespace Topo {

class Session {
 public:
  struct Options {
    bool isJson = false;  // `show` and `explain` give JSON
    bool isRealTime = false;
    bool isColoured = false;
    std::ostream* out = &std::cout;
    std::ostream* err = &std::cerr;
  };

  explicit Session(const Options& options);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  void execute(std::string_view line);
  /// The place of the lines to come, for reports: a file and a line, or empty.
  void placeIs(std::string_view file, std::size_t line);

  void expectationFailed(const std::string& text);
  [[nodiscard]] std::size_t failedExpectations() const noexcept { return failedExpectations_; }

  void watchIs(Document document, bool isOn);
  /// To be called when the library may have been started, stopped or replaced.
  void libraryMayHaveChanged();

  [[nodiscard]] std::ostream& out() const noexcept { return *options_.out; }
  [[nodiscard]] const Options& options() const noexcept { return options_; }
  [[nodiscard]] Agent& agent() noexcept { return agent_; }
  [[nodiscard]] const Agent& agent() const noexcept { return agent_; }
  [[nodiscard]] Loop& loop() noexcept { return loop_; }

 private:
  Options options_;
  Agent agent_;
  Loop loop_;
  std::map<Document, std::unique_ptr<Feed>> feeds_;
  std::string_view file_;
  std::size_t line_ = 0;
  std::size_t failedExpectations_ = 0;
};

}  // namespace Topo
