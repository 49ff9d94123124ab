// The agent's activity loop, round by round, and the time it runs in.
//
// Time is virtual, unless real time is asked for: it starts at 0 and stands still until it is moved. How long the rounds
// take is measured in real time all the same, since that is what an agent's other work would have to wait.

#pragma once

#include <cstddef>

#include "bridging/VlanId.h"
#include "mox/System.h"

namespace Topo {

class Agent;

class Loop {
 public:
  /// The longest round so far.
  struct LongestRun {
    double seconds = 0.0;
    /// The VLAN with which it began, or none before the first one that had anything to do.
    Bridging::VlanIdOrNone vlan;
  };
  static constexpr std::size_t maxSettleRounds = 1'000'000;
  /// Some thirty years: however often it is added, virtual time stays finite.
  static constexpr double maxTick = 1e9;

  Loop(const Agent& agent, bool isRealTime);
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;
  ~Loop();

  [[nodiscard]] static double now() { return Mox::System::presentTime(); }
  /// When something is due next; +infinity when nothing is armed.
  [[nodiscard]] static double nextDue();

  /// One round at the present time.
  void dispatch();
  /// Moves the clock on, and dispatches what falls due on the way.
  void advance(double seconds);
  /// Dispatches until nothing is armed. An error after `maxSettleRounds`.
  void settle();
  /// How far each reading of the clock by the library moves it on. At most `maxTick`. An error in real time.
  void tickIs(double seconds);

  /// Whether time passes while the library works: otherwise no slice of its backlog is ever used up.
  [[nodiscard]] bool passesDuringWork() const noexcept { return !time_ || time_->tick() > 0; }

  [[nodiscard]] const LongestRun& longestRun() const noexcept { return longestRun_; }

 private:
  const Agent& agent_;
  Mox::Ptr<Mox::VirtualTime> time_;  // null in real time
  LongestRun longestRun_;
};

}  // namespace Topo
