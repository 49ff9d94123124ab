// One run of the backlog processor.
//
// A run walks the directory of dirty VLANs from the bookmark on, in a circle, until it is empty or the slice is used up.
//
//   a partly dirty VLAN   each marked interface is added to, or removed from, the VLAN's topology
//   a wholly dirty VLAN   a visit, over as many runs as it takes:
//                           begin      find the topology that it is registered with, and its ports there
//                                      take it into service, or out of it; set the bookmark
//                           leave      remove it from those ports, one by one; then from the old topology, which may go
//                           enter      register it with the topology that the configuration gives it to
//                                      add the configured ports, one by one
//   a bookmarked VLAN     the visit goes on; it begins again where the VLAN was given to another topology meanwhile
//
// A visit that goes on after a slice finds its place in the processor: `oldTopoName` is set until the VLAN has left;
// `delPendingPortSet` are the ports to leave yet, `deletedPortSet` those served in the present half.
//
// An interface is taken out of its DirtyVlan before it is served, and a VLAN that is marked again while it is served stays
// in the directory: whatever readers of LibState change meanwhile is served later.

#pragma once

#include <cstdint>

#include "topolib/LibSm.h"
#include "topolib/TopoLibCodef.h"

namespace Topology::Library::detail {

class BacklogRun {
 public:
  explicit BacklogRun(TopoLibCodef& codef);

  void run();

 private:
  /// What became of a piece of work.
  enum class Outcome : std::uint8_t {
    done,
    skipped,
    runOver,  // it has yielded, or the processor is retired
  };

  /// The VLAN under way, as it is configured when the run comes to it.
  struct Vlan {
    Bridging::VlanId vid;
    Mox::Ptr<DirtyVlan> dv;
    Mox::Ptr<const Bridging::VlanConfig> config;
    Mox::String topoName;
    bool isTopoOrphan;
  };

  [[nodiscard]] bool walk();
  [[nodiscard]] Vlan readVlan(Bridging::VlanId vid);
  [[nodiscard]] Outcome process(const Vlan& vlan);

  [[nodiscard]] Outcome servePartlyDirty(const Vlan& vlan);
  [[nodiscard]] Outcome visit(const Vlan& vlan);
  [[nodiscard]] Outcome resume(const Vlan& vlan);
  void begin(const Vlan& vlan);
  void bookmark(const Vlan& vlan);
  [[nodiscard]] Outcome leave(const Vlan& vlan);
  void finishLeaving(const Vlan& vlan);
  [[nodiscard]] Outcome enter(const Vlan& vlan);
  [[nodiscard]] Outcome servePorts(const Vlan& vlan);

  [[nodiscard]] bool isInService(const Vlan& vlan) const;
  [[nodiscard]] bool isNewToOrphan(const Vlan& vlan) const;
  [[nodiscard]] bool takesVlanIn(const Mox::String& topoName) const;
  [[nodiscard]] Outcome finish(const Vlan& vlan);
  void leaveDirectory(Bridging::VlanId vid);
  void forgetPlace();

  [[nodiscard]] Outcome itemDone(bool hasMore);
  [[nodiscard]] bool isTimeUp() const noexcept { return isDeferred_ && now_ >= deadline_; }
  void yield(const char* text);
  void close();
  void topoPortMapChanged(const Mox::String& oldTopoName, Bridging::VlanId vid) const;

  TopoLibCodef& codef_;
  LibSm& libSm_;
  const Mox::Ptr<DirtyVlanDir> directory_;
  const bool isDeferred_;
  double start_ = 0;
  double deadline_ = 0;
  double now_ = 0;  // the last reading
  std::uint64_t processed_ = 0;
};

}  // namespace Topology::Library::detail
