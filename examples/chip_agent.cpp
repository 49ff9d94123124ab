// An agent that programs a switch chip with the ports that forward each VLAN: a filter of its own, parts started in any
// order, readers of the published view, a loop of its own, and the log of what happened. docs/agents.md explains it.

#include <cmath>
#include <cstdint>
#include <iostream>
#include <map>
#include <set>

#include "kestrel/Kestrel.h"
#include "mox/ActivityManager.h"
#include "mox/StateMachine.h"
#include "mox/System.h"
#include "topolib/TopoLib.h"
#include "topolib/vlan/TopoLibVlan.h"

using namespace Topology::Library;
using Bridging::VlanId;
using Bridging::Topology::PortState;
using Quill::IntfId;

namespace {

/// The chip: by VLAN, the ports that forward it.
class Chip {
 public:
  void write(VlanId vid, const std::set<IntfId>& ports) {
    std::set<IntfId>& present = forwarding_[vid];
    if (present == ports) return;
    present = ports;
    std::cout << "  chip: VLAN " << vid << " forwards on";
    for (const IntfId intf : ports) std::cout << ' ' << intf;
    std::cout << (ports.empty() ? " no port\n" : "\n");
  }

 private:
  std::map<VlanId, std::set<IntfId>> forwarding_;
};

/// Everything but the management port.
class FrontPanelFilter : public FilterIntf {
 public:
  bool isValidIntf(IntfId intf) override { return intf != IntfId("Management1"); }
};

/// Keeps the chip true to the view. The reactors only note which VLANs to look at; the chip is written once a round, with
/// what the view says then.
class ChipSm : public Mox::StateMachine<ChipSm> {
 public:
  ChipSm(const Mox::Ptr<const Vlan::LibVlanState>& view, Chip& chip)
      : chip_(chip), view_(this, view), clock_(this, Mox::activityManager()->clock()) {
    for (const auto& [vid, vlan] : view->topoVlan()) handleTopoVlan(vid);
  }
  ~ChipSm() override { moxDoZombieReactors(true); }

  /// A VLAN has come, gone, or been replaced.
  void handleTopoVlan(VlanId vid) {
    const Vlan::TopoVlan* const vlan = view_.notifier()->topoVlan(vid);
    if (vlan == nullptr) {
      vlans_.erase(vid);
    } else {
      vlans_.insert_or_assign(vid, Mox::makePtr<MoxTopoVlan>(this, *vlan));
    }
    doMark(vid);
  }

  void doMark(VlanId vid) {
    marked_.insert(vid);
    clock_.timeMinIs(0.0);  // with the next round, whatever the time
  }

  void doWriteChip() {
    const std::set<VlanId> marked = std::exchange(marked_, {});
    for (const VlanId vid : marked) {
      std::set<IntfId> forwarding;
      if (const Vlan::TopoVlan* const vlan = view_.notifier()->topoVlan(vid)) {
        for (const auto& [intf, port] : vlan->topoPort()) {
          if (!port.blocked()) forwarding.insert(intf);
        }
      }
      chip_.write(vid, forwarding);
    }
  }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) {
    act(view_);
    act(clock_);
    for (const auto& [vid, vlan] : vlans_) {
      act(vlan);
      for (const auto& [intf, port] : vlan->ports) act(port);
    }
  }

  class MoxView : public Mox::Reactor<MoxView, ChipSm, Vlan::LibVlanState> {
   public:
    using Reactor::Reactor;
    void onAttribute(Mox::AttributeId id, const void* key) override {
      if (const auto* vid = Vlan::LibVlanState::topoVlanAttr.keyOf(id, key)) sm().handleTopoVlan(*vid);
    }
  };
  class MoxPort : public Mox::Reactor<MoxPort, ChipSm, Vlan::Port> {
   public:
    MoxPort(ChipSm* sm, const Vlan::Port& port, VlanId vid)
        : Reactor(sm, Mox::Ptr<const Vlan::Port>(&port)), vid_(vid) {}
    void onAttribute(Mox::AttributeId id, const void* /*key*/) override {
      if (Vlan::Port::blockedAttr.is(id)) sm().doMark(vid_);
    }

   private:
    VlanId vid_;
  };
  class MoxTopoVlan : public Mox::Reactor<MoxTopoVlan, ChipSm, Vlan::TopoVlan> {
   public:
    MoxTopoVlan(ChipSm* sm, const Vlan::TopoVlan& vlan) : Reactor(sm, Mox::Ptr<const Vlan::TopoVlan>(&vlan)) {
      for (const auto& [intf, port] : vlan.topoPort()) handleTopoPort(intf);
    }
    void onAttribute(Mox::AttributeId id, const void* key) override {
      const auto* intf = Vlan::TopoVlan::topoPortAttr.keyOf(id, key);
      if (intf == nullptr) return;
      handleTopoPort(*intf);
      sm().doMark(notifier()->vid());
    }
    void handleTopoPort(IntfId intf) {
      const Vlan::Port* const port = notifier()->topoPort(intf);
      if (port == nullptr) {
        ports.erase(intf);
      } else {
        ports.insert_or_assign(intf, Mox::makePtr<MoxPort>(&sm(), *port, notifier()->vid()));
      }
    }

    std::map<IntfId, Mox::Ptr<MoxPort>> ports;
  };
  class MoxClock : public Mox::Reactor<MoxClock, ChipSm, Mox::Clock, Mox::Clock::NotifieeConst> {
   public:
    using Reactor::Reactor;
    void onTimeMin() override { sm().doWriteChip(); }
  };

  Chip& chip_;
  MoxView view_;
  MoxClock clock_;
  std::map<VlanId, Mox::Ptr<MoxTopoVlan>> vlans_;
  std::set<VlanId> marked_;
};

/// The agent's own loop, here until nothing is due; a real one never ends.
void loopUntilQuiet() {
  Mox::ActivityManager& manager = *Mox::activityManager();
  while (std::isfinite(manager.nextDue())) {
    Mox::System::timeSource().waitUntil(manager.nextDue());  // a real one: poll() its sockets until then
    manager.dispatch();
  }
}

}  // namespace

int main() {
  Kestrel::traceFileIs(1 << 20);

  auto config = Bridging::Topology::configFactory("config");
  auto instance = Bridging::Topology::Inst::statusFactory("instance");
  auto bridging = Bridging::configFactory("bridging");
  auto interfaces = Interface::ethIntfStatusDirFactory("interfaces");
  auto state = libStateFactory("state");
  auto view = Vlan::libVlanStateFactory("view");

  // In any order: each part waits for what it needs. A filter must outlive the library that uses it.
  Chip chip;
  FrontPanelFilter filter;
  auto root = rootFactory("root");
  auto chipSm = Mox::makePtr<ChipSm>(view, chip);
  auto viewSm = Vlan::vlanLibSmFactory(state, view);
  root->topologyStatusLibSmIs(instance, state, config, interfaces);
  root->libSmIs("topoLib", config, nullptr, instance, bridging, state, LibSmMode::createStatus,
                /*ignoreInternalVlan=*/true, /*deferProcessing=*/true,
                reinterpret_cast<std::uintptr_t>(static_cast<FilterIntf*>(&filter)));

  auto red = config->topoConfigIs("red", 1);
  auto blue = config->topoConfigIs("blue", 2);
  config->vidToTopoMapIs(10, "red");
  auto vlan = bridging->vlanConfigIs(10);
  for (const char* const intf : {"Ethernet1", "Ethernet2", "Ethernet3", "Management1"}) {
    auto status = interfaces->intfStatusIs(intf);
    status->linkStatusIs(Interface::LinkStatus::up);
    status->forwardingModelIs(Interface::ForwardingModel::bridged);
    vlan->vlanPortConfigIs(intf, Bridging::VlanPortConfig());
    red->topoPortConfigIs(intf, 0, PortState::forwarding);
    blue->topoPortConfigIs(intf, 0, PortState::forwarding);
  }
  std::cout << "Started:\n";
  loopUntilQuiet();
  std::cout << "Idle: " << std::boolalpha << root->libSm()->topoLibCodef()->codefState()->idle() << '\n';

  std::cout << "Ethernet2 loses its link:\n";
  interfaces->intfStatus("Ethernet2")->linkStatusIs(Interface::LinkStatus::down);
  loopUntilQuiet();

  std::cout << "VLAN 10 moves to a topology in which Ethernet1 is blocking:\n";
  blue->topoPortConfig("Ethernet1")->portStateIs(PortState::blocking);
  config->vidToTopoMapIs(10, "blue");
  loopUntilQuiet();

  // Readers first, then the library; what was published stays.
  chipSm = nullptr;
  viewSm = nullptr;
  root = nullptr;
  std::cout << "Stopped; the view still has " << view->topoVlan().size()
            << " VLAN.\nWhat the log says of topologies:\n";
  for (const Kestrel::Message& m : Kestrel::traceFile()->messages()) {
    if (m.text.find("TopoConfigSm") != std::string::npos) std::cout << "  " << m.text << '\n';
  }
}
