// The backlog processor: works off the VLANs that are marked in the DirtyVlanDir, in time slices.
//
// Overview
//   `doScheduleBacklogProcessing` asks for a run. With deferral it arms the clock, and the run comes with the next round
//   of the activity loop, outside of any notification; without, the run takes place at once. A run (`doProcessBacklog`)
//   walks the directory until it is empty or, with deferral, until its slice of `backlogQuantum` is used up; the time is
//   looked at after every single port. A VLAN marked as a whole that a slice interrupts is bookmarked: the next run
//   goes on at the very port. topolib/detail/BacklogRun.h says what a run does with a VLAN.
//
// Usage
//   libSm->topoLibCodef()->codefState()->idle()         // whether everything is worked off; watch it for the change
//   libSm->topoLibCodef()->updatesProcessed()           // how many ports were served
//
// Rules
//   - One run at a time: what is marked inside a run is served by it, or by the next one.
//   - Without deferral a run never yields.
//   - A run that yields adds nothing to `updatesProcessed`, `timeUsed` and `dispatchCount`; only
//     `yieldBeforeFinishingCount` records it.
//   - An interface that leaves a DirtyVlan during a run is an update seen and arms the clock, so an empty run follows.
//   - An exception from a reader of LibState ends the run and goes to whoever set it off. The VLAN that was being served
//     is marked again as a whole; it is served by the next round, or without deferral with the next mark.

#pragma once

#include <cstdint>

#include "mox/Clock.h"
#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/DirtyVlanDir.h"
#include "topolib/PortSet.h"
#include "topolib/TopoLibCodefState.h"
#include "topolib/detail/Busy.h"
#include "topolib/detail/Flag.h"

namespace Topology::Library {

class LibSm;

class MOX_PUBLIC TopoLibCodef : public Mox::StateMachine<TopoLibCodef> {
 public:
  class MoxDirtyVlan;
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> dirtyVlanAttr{0, "dirtyVlan"};
  static constexpr Mox::ScalarAttribute codefStateAttr{1, "codefState"};

  /// A null directory or clock is not watched.
  TopoLibCodef(LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir, const Mox::Ptr<const Mox::Clock>& clock);
  [[nodiscard]] static Mox::Ptr<TopoLibCodef> TopoLibCodefIs(LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                                                             const Mox::Ptr<const Mox::Clock>& clock);
  ~TopoLibCodef() override;

  [[nodiscard]] LibSm* libSm() const noexcept { return libSm_; }
  [[nodiscard]] const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir() const noexcept { return directory_; }
  [[nodiscard]] const Mox::Clock* clock() const noexcept { return clock_.notifier(); }
  [[nodiscard]] bool isBuiltFrom(const LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                                 const Mox::Ptr<const Mox::Clock>& clock) const noexcept;

  /// The length of a slice, in seconds.
  [[nodiscard]] double backlogQuantum() const noexcept { return backlogQuantum_; }
  /// NaN, which is no length of time, raises RangeException.
  void backlogQuantumIs(double seconds);
  /// With deferral: whether a run stops after one item whenever more remain.
  [[nodiscard]] bool yieldAfterOne() const noexcept { return yieldAfterOne_; }
  void yieldAfterOneIs(bool v) noexcept { yieldAfterOne_ = v; }

  // Counters. Each incrementer adds to the present value.
  /// Changes of the `intf` collections of dirty VLANs.
  [[nodiscard]] std::uint64_t updatesSeen() const noexcept { return updatesSeen_; }
  void updatesSeenIs(std::uint64_t v) noexcept { updatesSeen_ = v; }
  void updatesSeenInc(std::uint64_t delta) noexcept { updatesSeen_ += delta; }
  /// Ports served by runs that did not yield.
  [[nodiscard]] std::uint64_t updatesProcessed() const noexcept { return updatesProcessed_; }
  void updatesProcessedIs(std::uint64_t v) noexcept { updatesProcessed_ = v; }
  void updatesProcessedInc(std::uint64_t delta) noexcept { updatesProcessed_ += delta; }
  /// Seconds spent in runs that did not yield.
  [[nodiscard]] double timeUsed() const noexcept { return timeUsed_; }
  void timeUsedIs(double v) noexcept { timeUsed_ = v; }
  void timeUsedInc(double delta) noexcept { timeUsed_ += delta; }
  /// Runs that did not yield.
  [[nodiscard]] std::uint64_t dispatchCount() const noexcept { return dispatchCount_; }
  void dispatchCountIs(std::uint64_t v) noexcept { dispatchCount_ = v; }
  void dispatchCountInc(std::uint64_t delta) noexcept { dispatchCount_ += delta; }
  /// Runs that stopped with work left.
  [[nodiscard]] std::uint64_t yieldBeforeFinishingCount() const noexcept { return yieldBeforeFinishingCount_; }
  void yieldBeforeFinishingCountIs(std::uint64_t v) noexcept { yieldBeforeFinishingCount_ = v; }
  void yieldBeforeFinishingCountInc(std::uint64_t delta) noexcept { yieldBeforeFinishingCount_ += delta; }

  // Where the work stands.
  /// The VLAN at which the next run goes on, or none.
  [[nodiscard]] Bridging::VlanIdOrNone bookmark() const noexcept { return bookmark_; }
  void bookmarkIs(Bridging::VlanIdOrNone vid) noexcept { bookmark_ = vid; }
  /// The topology that the bookmarked VLAN is leaving, or the empty name.
  [[nodiscard]] const Mox::String& oldTopoName() const noexcept { return oldTopoName_; }
  void oldTopoNameIs(const Mox::String& name) { oldTopoName_ = name; }
  /// The ports of that topology that carry the VLAN still.
  [[nodiscard]] const Mox::Ptr<PortSet>& delPendingPortSet() const noexcept { return delPendingPortSet_; }
  /// The ports that the visit has served: first those removed from the old topology, then those added to the present one.
  [[nodiscard]] const Mox::Ptr<PortSet>& deletedPortSet() const noexcept { return deletedPortSet_; }

  /// dirtyVlan[vid]: a reactor on each member of the directory. A null argument raises MutatorArgNullPointerException.
  [[nodiscard]] const auto& dirtyVlan() const noexcept { return dirtyVlan_; }
  [[nodiscard]] MoxDirtyVlan* dirtyVlan(Bridging::VlanId vid) noexcept { return dirtyVlan_.find(vid); }
  void dirtyVlanIs(const Mox::Ptr<const DirtyVlan>& dirtyVlan);
  void dirtyVlanDel(Bridging::VlanId vid);
  void dirtyVlanDelAll();

  /// Named "codefState"; for other components to watch.
  [[nodiscard]] const Mox::Ptr<TopoLibCodefState>& codefState() const noexcept { return codefState_; }
  Mox::Ptr<TopoLibCodefState> codefStateIs(const Mox::String& name);
  void codefStateDel();

  void handleInitialized();
  /// Asks for a run. Repeated requests before the run are harmless.
  void doScheduleBacklogProcessing();
  /// One run.
  void doProcessBacklog();

  /// Records marks: without deferral, a run that is asked for meanwhile starts when the marks are complete, so that it
  /// never sees half of one. Marks nest.
  void doMark(auto&& record) {
    {
      const Marking marking(marks_);
      record();
    }
    doRunRemembered();
  }

  /// Has a run that ended early followed by another one: by the clock, or without deferral with the next mark.
  void doRememberRun();
  /// The run that was asked for while none could start.
  void doRunRemembered();

  /// Whether a run is under way.
  [[nodiscard]] bool isRunning() const noexcept { return isRunning_; }
  /// What the clock is to do next: the time set last.
  [[nodiscard]] double timeMin() const noexcept { return clock_.timeMin(); }
  void timeMinIs(double seconds) { clock_.timeMinIs(seconds); }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(dirtyVlanDir_);
    act(clock_);
    for (const auto& [vid, reactor] : dirtyVlan_) act(reactor);
  }

  class Marking {
   public:
    explicit Marking(unsigned& marks) noexcept : marks_(marks) { ++marks_; }
    Marking(const Marking&) = delete;
    Marking& operator=(const Marking&) = delete;
    ~Marking() { --marks_; }

   private:
    unsigned& marks_;
  };

  class MoxDirtyVlanDir : public detail::LibReactor<MoxDirtyVlanDir, TopoLibCodef, DirtyVlanDir> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxClock : public Mox::Reactor<MoxClock, TopoLibCodef, Mox::Clock, Mox::Clock::NotifieeConst> {
   public:
    using Reactor::Reactor;
    void onTimeMin() override;
  };

  LibSm* libSm_;
  Mox::Ptr<DirtyVlanDir> directory_;
  MoxDirtyVlanDir dirtyVlanDir_;
  MoxClock clock_;
  double backlogQuantum_ = 0.01;
  std::uint64_t updatesSeen_ = 0;
  std::uint64_t updatesProcessed_ = 0;
  double timeUsed_ = 0.0;
  std::uint64_t dispatchCount_ = 0;
  std::uint64_t yieldBeforeFinishingCount_ = 0;
  bool yieldAfterOne_ = false;
  Bridging::VlanIdOrNone bookmark_;
  Mox::Ptr<PortSet> delPendingPortSet_;
  Mox::Ptr<PortSet> deletedPortSet_;
  Mox::String oldTopoName_;
  Mox::EntityCollection<Bridging::VlanId, MoxDirtyVlan> dirtyVlan_;
  Mox::Ptr<TopoLibCodefState> codefState_;
  unsigned marks_ = 0;
  bool isRunRemembered_ = false;
  bool isRunning_ = false;
};

/// Watches one dirty VLAN: each change of its `intf` counts as an update seen and asks for a run.
class MOX_PUBLIC TopoLibCodef::MoxDirtyVlan : public detail::LibReactor<MoxDirtyVlan, TopoLibCodef, DirtyVlan> {
 public:
  using LibReactor::LibReactor;

  [[nodiscard]] bool initialized() const noexcept { return initialized_; }
  /// Takes part once the processor does.
  void handleInitialized() noexcept;
  /// A VLAN that has become dirty.
  void handleVlanPortUpdate();
  /// An interface of it; aborts before it is initialised.
  void handleVlanPortUpdate(Quill::IntfId intf);

  void onChange(Mox::AttributeId id, const void* key);

 private:
  bool initialized_ = false;
};

/// A null `libSm` raises NewEntityArgsException.
[[nodiscard]] MOX_PUBLIC Mox::Ptr<TopoLibCodef> topoLibCodefFactory(LibSm* libSm,
                                                                    const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                                                                    const Mox::Ptr<const Mox::Clock>& clock);

}  // namespace Topology::Library
