#include "topo/Loop.h"

#include <chrono>
#include <cmath>

#include "mox/ActivityManager.h"
#include "topo/Agent.h"
#include "topo/ScenarioError.h"

namespace Topo {

namespace {

/// The VLAN that the next run comes to first.
[[nodiscard]] Bridging::VlanIdOrNone nextVlan(const Agent& agent) {
  const Topology::Library::TopoLibCodef* const codef = agent.codef();
  if (codef == nullptr) return {};
  if (!codef->bookmark().isNone()) return codef->bookmark();
  const auto first = codef->dirtyVlanDir()->dirtyVlan().begin();
  return first ? Bridging::VlanIdOrNone(first.key()) : Bridging::VlanIdOrNone();
}

}  // namespace

Loop::Loop(const Agent& agent, bool isRealTime)
    : agent_(agent), time_(isRealTime ? nullptr : Mox::makePtr<Mox::VirtualTime>()) {
  Mox::System::timeSourceIs(time_);
}

Loop::~Loop() { Mox::System::timeSourceIs(nullptr); }

double Loop::nextDue() { return Mox::activityManager()->nextDue(); }

void Loop::dispatch() {
  const Bridging::VlanIdOrNone vlan = nextVlan(agent_);
  const auto start = std::chrono::steady_clock::now();
  Mox::activityManager()->dispatch();
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  if (!vlan.isNone() && taken.count() > longestRun_.seconds) longestRun_ = {taken.count(), vlan};
}

void Loop::advance(double seconds) {
  const double end = now() + seconds;
  if (!std::isfinite(end)) throw ScenarioError("that is too far in the future");
  while (nextDue() <= end) {
    Mox::System::timeSource().waitUntil(nextDue());
    dispatch();
  }
  Mox::System::timeSource().waitUntil(end);
}

void Loop::settle() {
  for (std::size_t round = 0; round < maxSettleRounds; ++round) {
    if (std::isinf(nextDue())) return;
    Mox::System::timeSource().waitUntil(nextDue());
    dispatch();
  }
  if (!std::isinf(nextDue())) {
    throw ScenarioError("not settled after " + std::to_string(maxSettleRounds) + " rounds: something is pending still");
  }
}

void Loop::tickIs(double seconds) {
  if (!time_) throw ScenarioError("real time has no tick; leave out --real-time");
  if (seconds > maxTick) throw ScenarioError("a tick is at most 1e9 seconds");
  time_->tickIs(seconds);
}

}  // namespace Topo
