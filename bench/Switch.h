// A switch for benchmarks: the inputs of the topology library in a regular shape, and the library over them.
//
//   Switch sw({.topologies = 4, .vlans = 4094, .ports = 512});
//   sw.startLibrary();
//   drain();
//
// Every VLAN is in the topology with the number `vid % topologies`, every port is in every VLAN, has its link up and
// forwards in every topology. The clock is the real one.

#pragma once

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "mox/ActivityManager.h"
#include "mox/System.h"
#include "topolib/TopoLib.h"
#include "topolib/vlan/TopoLibVlan.h"

namespace Bench {

struct Shape {
  unsigned topologies = 1;
  unsigned vlans = 4094;
  unsigned ports = 256;
};

/// Rounds of the activity loop until nothing is pending. Returns the longest, in seconds.
inline double drain() {
  using Clock = std::chrono::steady_clock;
  double longest = 0;
  while (Mox::activityManager()->nextDue() <= Mox::System::currentTime()) {
    const auto start = Clock::now();
    Mox::activityManager()->dispatch();
    longest = std::max(longest, std::chrono::duration<double>(Clock::now() - start).count());
  }
  return longest;
}

class Switch {
 public:
  using PortState = Bridging::Topology::PortState;

  explicit Switch(const Shape& s) : shape(s) {
    for (unsigned p = 1; p <= shape.ports; ++p) {
      intfs.emplace_back("Ethernet" + std::to_string(p));
      const auto intf = interfaces->intfStatusIs(intfs.back());
      intf->linkStatusIs(Interface::LinkStatus::up);
      intf->forwardingModelIs(Interface::ForwardingModel::bridged);
    }
    for (unsigned t = 0; t < shape.topologies; ++t) {
      const auto topo = config->topoConfigIs(topoName(t), t);
      const auto topoStatus = instance->topoStatusIs(topoName(t), t);
      for (const Quill::IntfId intf : intfs) {
        topo->topoPortConfigIs(intf, 0, PortState::forwarding);
        topoStatus->topoPortStatusIs(intf, 0);
      }
    }
    for (unsigned vid = 1; vid <= shape.vlans; ++vid) {
      config->vidToTopoMapIs(vid, topoName(vid % shape.topologies));
      const auto vlan = bridging->vlanConfigIs(vid);
      for (const Quill::IntfId intf : intfs) vlan->vlanPortConfigIs(intf, {});
    }
  }

  [[nodiscard]] static Mox::String topoName(unsigned number) { return ("msti" + std::to_string(number)).c_str(); }
  [[nodiscard]] std::size_t members() const noexcept { return std::size_t{shape.vlans} * shape.ports; }

  void startLibrary() {
    libSm = root->doStartLibSm("topoLib", config, nullptr, instance, bridging, state,
                               Topology::Library::LibSmMode::createStatus, true, true, "");
  }
  void startPublisher() const { root->topologyStatusLibSmIs(instance, state, config, interfaces); }
  void startView() { viewSm = Topology::Library::Vlan::vlanLibSmFactory(state, view); }

  /// A port leaves a VLAN and comes back, each of which is worked off.
  void changeOnePort() {
    const auto vlan = bridging->vlanConfigIs(shape.vlans / 2);
    const Quill::IntfId intf = intfs[shape.ports / 2];
    vlan->vlanPortConfigDel(intf);
    drain();
    vlan->vlanPortConfigIs(intf, {});
    drain();
  }
  /// Everything ends.
  void clear() { *this = Switch({.vlans = 0, .ports = 0}); }

  Shape shape;
  std::vector<Quill::IntfId> intfs;
  Mox::Ptr<Bridging::Topology::Config> config = Bridging::Topology::configFactory("config");
  Mox::Ptr<Bridging::Topology::Inst::Status> instance = Bridging::Topology::Inst::statusFactory("instance");
  Mox::Ptr<Bridging::Config> bridging = Bridging::configFactory("bridging");
  Mox::Ptr<Interface::EthIntfStatusDir> interfaces = Interface::ethIntfStatusDirFactory("interfaces");
  Mox::Ptr<Topology::Library::LibState> state = Topology::Library::libStateFactory("state");
  Mox::Ptr<Topology::Library::Vlan::LibVlanState> view = Topology::Library::Vlan::libVlanStateFactory("view");
  Mox::Ptr<Topology::Library::Root> root = Topology::Library::rootFactory("root");
  Mox::Ptr<Topology::Library::LibSm> libSm;
  Mox::Ptr<Topology::Library::Vlan::VlanLibSm> viewSm;
};

}  // namespace Bench
