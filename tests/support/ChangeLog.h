// Writes down changes as lines of text, in the order in which a reader is told, and does what the test asks for at them.

#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Recorder.h"

namespace Test {

/// The common part of the logs of published states. A log watches entities with `watch`, and writes a line per change.
class ChangeLog {
 public:
  using Action = std::function<void(const std::string& line)>;

  ChangeLog(const ChangeLog&) = delete;
  ChangeLog& operator=(const ChangeLog&) = delete;

  void actionIs(Action action) { action_ = std::move(action); }
  /// Does something once, at the first line of this text.
  void onceAt(const std::string& text, std::function<void()> act) {
    actionIs([this, text, act = std::move(act)](const std::string& line) {
      if (line != text) return;
      const std::function<void()> once = act;
      actionIs({});
      once();
    });
  }
  void clear() { lines.clear(); }
  [[nodiscard]] bool has(const std::string& line) const {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }

  std::vector<std::string> lines;

 protected:
  explicit ChangeLog(Action action = {}) : action_(std::move(action)) {}
  ~ChangeLog() = default;

  void write(const std::string& line) {
    lines.push_back(line);
    const Action act = action_;
    if (act) act(line);
  }
  void watch(const Mox::PtrInterface& notifier, Recorder::Action action) {
    recorders_.push_back(std::make_unique<Recorder>(&notifier, std::move(action)));
  }

 private:
  Action action_;
  std::vector<std::unique_ptr<Recorder>> recorders_;
};

}  // namespace Test
