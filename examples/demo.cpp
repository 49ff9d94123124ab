// What there is, on one screen: inputs, the published state and who watches it, work in slices, and the log.

#include <iomanip>
#include <iostream>
#include <limits>

#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "interface/EthIntfStatus.h"
#include "kestrel/Kestrel.h"
#include "mox/ActivityManager.h"
#include "mox/StateMachine.h"
#include "mox/System.h"
#include "topolib/DirtyVlanDir.h"
#include "topolib/LibState.h"

using namespace Topology::Library;
using Bridging::VlanId;
using Bridging::Topology::PortState;

namespace {

constexpr unsigned vlans = 4094;
constexpr unsigned ports = 8;
constexpr double slice = 0.010;

/// The configuration of a switch: odd VLANs in topology msti1, even ones in msti2, all on every port.
struct Inputs {
  Mox::Ptr<Bridging::Config> bridging = Bridging::configFactory("bridging");
  Mox::Ptr<Bridging::Topology::Config> config = Bridging::Topology::configFactory("config");
  Mox::Ptr<Interface::EthIntfStatusDir> interfaces = Interface::ethIntfStatusDirFactory("interfaces");

  Inputs() {
    for (unsigned topology = 1; topology <= 2; ++topology) {
      auto topo = config->topoConfigIs("msti" + std::to_string(topology), topology);
      for (unsigned p = 1; p <= ports; ++p) {
        topo->topoPortConfigIs(port(p), 0, p % 2 == topology % 2 ? PortState::forwarding : PortState::blocking);
      }
    }
    for (unsigned p = 1; p <= ports; ++p) interfaces->intfStatusIs(port(p))->linkStatusIs(Interface::LinkStatus::up);
    for (unsigned v = 1; v <= vlans; ++v) {
      auto vlan = bridging->vlanConfigIs(v);
      for (unsigned p = 1; p <= ports; ++p) vlan->vlanPortConfigIs(port(p), Bridging::VlanPortConfig());
      config->vidToTopoMapIs(v, v % 2 == 1 ? "msti1" : "msti2");
    }
  }

  static Quill::IntfId port(unsigned p) { return "Ethernet" + std::to_string(p); }
};

/// Copies the VLANs of the inputs into the published state, VLAN by VLAN, and hands the thread back after each slice.
class CopySm : public Mox::StateMachine<CopySm> {
 public:
  CopySm(const Inputs& inputs, Mox::Ptr<LibState> state)
      : inputs_(inputs), state_(std::move(state)), clock_(this, Mox::activityManager()->clock()) {
    for (const auto& [vid, topo] : inputs_.config->vidToTopoMap()) dirty_->dirtyVlanIs(vid)->dirtyIs(true);
  }
  ~CopySm() override { moxDoZombieReactors(true); }

  void doSlice() {
    const double deadline = Mox::System::currentTime() + slice;
    ++slices_;
    auto next = dirty_->dirtyVlan().begin();
    for (; next && Mox::System::currentTime() < deadline; next.advance()) {
      doVlan(next.key());
      dirty_->dirtyVlanDel(next.key());
    }
    KESTREL_MSG("examples/demo.cpp", "slice {}: {} VLANs left", slices_, dirty_->dirtyVlan().size());
    if (next) {
      clock_.timeMinIs(0.0);
    } else {
      state_->initDoneIs(true);
    }
  }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(clock_); }

  class MoxClock : public Mox::Reactor<MoxClock, CopySm, Mox::Clock, Mox::Clock::NotifieeConst> {
   public:
    using Reactor::Reactor;
    void onTimeMin() override { sm().doSlice(); }
  };

  void doVlan(VlanId vid) {
    const Mox::String& name = *inputs_.config->vidToTopoMap(vid);
    auto topo = state_->topoIs(name);
    for (const auto& [intf, config] : inputs_.bridging->vlanConfig(vid)->vlanPortConfig()) {
      auto port = topo->portIs(intf);
      port->vlanPortConfigIs(vid, config);
      port->activeIs(inputs_.interfaces->intfStatus(intf)->linkStatus() == Interface::LinkStatus::up);
      port->stateIs(inputs_.config->topoConfig(name)->topoPortConfig(intf)->portState());
    }
  }

  const Inputs& inputs_;
  Mox::Ptr<LibState> state_;
  Mox::Ptr<DirtyVlanDir> dirty_ = dirtyVlanDirFactory("dirtyVlanDir");
  MoxClock clock_;
  unsigned slices_ = 0;
};

/// A reader of the state: prints what it is told.
class ReaderSm : public Mox::StateMachine<ReaderSm> {
 public:
  explicit ReaderSm(const Mox::Ptr<const LibState>& state) : libState_(this, state) {}
  ~ReaderSm() override { moxDoZombieReactors(true); }

  void handleTopo(const Mox::String& name) {
    const bool isThere = libState_.notifier()->topo(name) != nullptr;
    std::cout << "  topology " << name << (isThere ? " appears\n" : " goes\n");
  }
  void handleInitDone() {
    if (libState_.notifier()->initDone()) std::cout << "  the state is complete\n";
  }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(libState_); }

  class MoxLibState : public Mox::Reactor<MoxLibState, ReaderSm, LibState> {
   public:
    using Reactor::Reactor;
    void onAttribute(Mox::AttributeId id, const void* key) override {
      if (const auto* name = LibState::topoAttr.keyOf(id, key)) sm().handleTopo(*name);
      if (LibState::initDoneAttr.is(id)) sm().handleInitDone();
    }
  };

  MoxLibState libState_;
};

void show(const LibState& state) {
  std::cout << std::left << std::setw(10) << "topology" << std::setw(12) << "port" << std::setw(8) << "active"
            << std::setw(12) << "state"
            << "VLANs\n";
  for (const auto& [name, topo] : state.topo()) {
    for (unsigned p = 1; p <= ports; ++p) {
      const Port& port = *topo.port(Inputs::port(p));
      std::cout << std::setw(10) << name.view() << std::setw(12) << port.intf().stringValue().view() << std::setw(8)
                << (port.active() ? "yes" : "no") << std::setw(12) << valueToStrep(port.state())
                << port.vlanPortConfig().size() << '\n';
    }
  }
}

}  // namespace

int main() {
  // Virtual time, in which each look at the clock takes 25 microseconds: the slices are the same everywhere.
  auto time = Mox::makePtr<Mox::VirtualTime>();
  time->tickIs(25e-6);
  Mox::System::timeSourceIs(time);
  Kestrel::traceFileIs(1 << 16);

  const Inputs inputs;
  std::cout << "Configured: " << inputs.bridging->vlanConfig().size() << " VLANs on " << ports << " ports, in "
            << inputs.config->topoConfig().size() << " topologies.\n\nWhat a reader of the state is told:\n";

  auto state = libStateFactory("state");
  auto reader = Mox::makePtr<ReaderSm>(state);
  auto copy = Mox::makePtr<CopySm>(inputs, state);
  Mox::activityManager()->run();

  std::cout << "\nThe published state:\n";
  show(*state);
  std::cout << "\nThe log of the slices of " << slice * 1000 << " ms, its last lines:\n";
  const auto messages = Kestrel::traceFile()->messages();
  for (std::size_t i = messages.size() - 3; i < messages.size(); ++i) {
    std::cout << "  " << std::fixed << std::setprecision(3) << messages[i].time << " s  " << messages[i].text << '\n';
  }
  Kestrel::traceFileDel();
  return 0;
}
