// A program of actions on an agent whose library is started somewhere in between, and what becomes of it.

#pragma once

#include <deque>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/Random.h"
#include "tests/topolib/model/Actions.h"
#include "tests/topolib/model/Check.h"
#include "tests/topolib/model/StateWatch.h"

namespace Test {

/// How the library is started, and how long its slices are.
struct Arrangement {
  Start start;
  /// How far each reading of the time moves it on: with the slice of 0.01 seconds, where slices end.
  double tick = 0.0;
  bool yieldAfterOne = false;
  std::uint16_t dirtyVlanPortThreshold = 20;
  /// Whether readers of the published state change the inputs from inside its notifications.
  bool hasReaders = false;

  friend std::ostream& operator<<(std::ostream& out, const Arrangement& a) {
    if (!a.start.deferProcessing) return out << "immediate";
    return out << (a.yieldAfterOne ? "itemByItem" : a.tick != 0.0 ? "inSlices" : "atOnce");
  }
};

struct Sequence {
  enum class Step {
    action,
    inside,  // the action takes place inside the next notification of the published state
    start,
    drain
  };

  struct Item {
    Step step = Step::action;
    Action action = {};
  };

  Arrangement arrangement;
  std::vector<Item> items;

  /// The program as text.
  [[nodiscard]] std::string text() const {
    const Start& start = arrangement.start;
    std::ostringstream out;
    out << "  Agent agent({.status = Start::Status::"
        << (start.status == Start::Status::plain      ? "plain"
            : start.status == Start::Status::instance ? "instance"
                                                      : "none")
        << ", .mode = LibSmMode::" << start.mode << ", .ignoreInternalVlan = " << std::boolalpha
        << start.ignoreInternalVlan << ", .deferProcessing = " << start.deferProcessing << ", .intfFilterType = \""
        << start.intfFilterType << "\"});  // tick " << arrangement.tick << ", yieldAfterOne "
        << arrangement.yieldAfterOne << ", threshold " << arrangement.dirtyVlanPortThreshold << '\n';
    for (const Item& item : items) out << "  " << line(item) << '\n';
    out << "  drain and compare\n";
    return out.str();
  }

  [[nodiscard]] static std::string line(const Item& item) {
    if (item.step == Step::start) return "startLibrary()";
    if (item.step == Step::drain) return "drain and compare";
    return (item.step == Step::inside ? "inside the next notification of state: " : "") + item.action.line;
  }
};

/// Plays a sequence. The published state is compared with the model whenever the backlog is worked off: after each drain,
/// and without deferral after each action.
class Play {
 public:
  explicit Play(const Sequence& sequence)
      : sequence_(sequence),
        agent_(sequence.arrangement.start),
        watch_(agent_.state, [this](const StateWatch::Change& /*change*/) { actInside(); }) {}

  /// What went wrong first; nothing if all went well.
  [[nodiscard]] std::optional<std::string> run() {
    agent_.time->tickIs(sequence_.arrangement.tick);
    for (std::size_t n = 0; n < sequence_.items.size(); ++n) {
      const Sequence::Item& item = sequence_.items[n];
      if (item.step == Sequence::Step::action) item.action.apply(agent_);
      if (item.step == Sequence::Step::inside) waiting_.push_back(item.action);
      if (item.step == Sequence::Step::start) startLibrary();
      if (item.step == Sequence::Step::drain) drain();
      if (item.step == Sequence::Step::drain || !agent_.start.deferProcessing) compare("after line " + atLine(n));
      if (!failure_.empty()) return failure_;
    }
    startLibrary();
    drain();
    compare("at the end");
    return failure_.empty() ? std::nullopt : std::optional(failure_);
  }

  [[nodiscard]] Agent& agent() noexcept { return agent_; }
  /// How many rounds of the activity loop the last drain took.
  [[nodiscard]] std::size_t rounds() const noexcept { return rounds_; }

 private:
  [[nodiscard]] std::string atLine(std::size_t n) const {
    return std::to_string(n + 1) + ", " + Sequence::line(sequence_.items[n]);
  }

  /// A reader of the published state that changes the inputs when it is told of something.
  void actInside() {
    if (waiting_.empty()) return;
    const Action action = std::move(waiting_.front());
    waiting_.pop_front();
    action.apply(agent_);
  }

  void startLibrary() {
    if (agent_.libSm) return;
    agent_.startLibrary();
    agent_.libSm->topoLibCodef()->yieldAfterOneIs(sequence_.arrangement.yieldAfterOne);
    agent_.libSm->dirtyVlanPortThresholdIs(sequence_.arrangement.dirtyVlanPortThreshold);
  }

  void drain() {
    for (rounds_ = 0; rounds_ < 20'000; ++rounds_) {
      if (Mox::activityManager()->nextDue() > Mox::System::presentTime()) return;
      Mox::activityManager()->dispatch();
    }
    failure_ = "the backlog is never worked off\n";
  }

  void compare(const std::string& where) {
    if (!agent_.libSm || !failure_.empty()) return;
    const std::vector<std::string> differences = Check(agent_).differences();
    if (differences.empty()) return;
    failure_ = where + ":\n";
    for (const std::string& difference : differences) failure_ += "  " + difference + '\n';
  }

  const Sequence& sequence_;
  Agent agent_;
  std::deque<Action> waiting_;
  StateWatch watch_;
  std::size_t rounds_ = 0;
  std::string failure_;
};

}  // namespace Test
