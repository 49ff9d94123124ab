// Readers of the VLAN view that change what it reads from inside its notifications: the view must be true in the end.

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/topolib/vlan/View.h"

namespace Topology::Library::Vlan::ViewReadersTest {

using Test::View;
using Test::ViewLog;
using Contents = std::set<std::string>;
using PortState = Bridging::Topology::PortState;

/// What the view should contain, told from the published state and the forced ports.
Contents expectedOf(const View& agent) {
  Contents expected;
  for (const auto& [name, topo] : agent.state->topo()) {
    for (const auto& [intf, port] : topo.port()) {
      const bool* const forced = agent.view->forceEnabledPorts(intf);
      const bool isForced = forced != nullptr && *forced;
      if (!port.active() && !isForced) continue;
      for (const auto& [vid, config] : port.vlanPortConfig()) {
        const bool isOpen = port.state() == PortState::forwarding || isForced;
        const std::string at = ::Test::textOf(vid, '/', intf, ' ');
        expected.insert(::Test::textOf(vid));
        expected.insert(::Test::textOf(at, isOpen ? "open " : "blocked ", config.allowedTrafficDirection()));
        expected.insert(::Test::textOf(at, "in ", name));
      }
    }
  }
  return expected;
}

struct Change {
  const char* name;
  std::function<void(View&)> apply;
};

/// Two ports of topology A in VLAN 10; the second is inactive.
class TwoPorts : public View {
 public:
  TwoPorts() {
    portUp("A", "Ethernet1", {10}, PortState::blocking)
        ->vlanPortConfigIs(10, Bridging::VlanPortConfig(Direction::egress));
    portIs("A", "Ethernet2")->vlanPortConfigIs(10, {});
    port("A", "Ethernet2").stateIs(PortState::forwarding);
  }
};

/// The published port if it is there, or one that nobody knows.
Library::Port& portOf(const View& view, const std::string& intf = "Ethernet1") {
  static const Mox::Ptr<LibState> elsewhere = libStateFactory("elsewhere");
  auto* const topo = view.state->topo("A");
  auto* const port = topo == nullptr ? nullptr : topo->port(intf);
  return port == nullptr ? *elsewhere->topoIs("A")->portIs(intf) : *port;
}

void flap(const Mox::Ptr<Library::Port>& port) {
  port->activeIs(!port->active());
  port->activeIs(!port->active());
}

const std::vector<Change> changes{
    {"the port becomes inactive", [](View& v) { portOf(v).activeIs(false); }},
    {"the port becomes active", [](View& v) { portOf(v).activeIs(true); }},
    {"the port flaps", [](View& v) { flap(&portOf(v)); }},
    {"the port leaves the VLAN", [](View& v) { portOf(v).vlanPortConfigDel(10); }},
    {"the port comes to the VLAN", [](View& v) { portOf(v).vlanPortConfigIs(10, {}); }},
    {"the port leaves the VLAN and comes back",
     [](View& v) {
       portOf(v).vlanPortConfigDel(10);
       portOf(v).vlanPortConfigIs(10, {});
     }},
    {"the port opens", [](View& v) { portOf(v).stateIs(PortState::forwarding); }},
    {"the port is forced", [](View& v) { v.view->forceEnabledPortsIs("Ethernet1", true); }},
    {"the port is not forced", [](View& v) { v.view->forceEnabledPortsDel("Ethernet1"); }},
    {"the port is forced for a moment",
     [](View& v) {
       v.view->forceEnabledPortsIs("Ethernet1", true);
       v.view->forceEnabledPortsDel("Ethernet1");
     }},
    {"the other port becomes active", [](View& v) { portOf(v, "Ethernet2").activeIs(true); }},
    {"the other port becomes inactive", [](View& v) { portOf(v, "Ethernet2").activeIs(false); }},
    {"the other port flaps", [](View& v) { flap(&portOf(v, "Ethernet2")); }},
    {"both ports flap",
     [](View& v) {
       flap(&portOf(v, "Ethernet2"));
       flap(&portOf(v));
       flap(&portOf(v, "Ethernet2"));
     }},
    {"the other port flaps twice",
     [](View& v) {
       flap(&portOf(v, "Ethernet2"));
       flap(&portOf(v, "Ethernet2"));
     }},
    {"the port goes",
     [](View& v) {
       if (auto* const topo = v.state->topo("A")) topo->portDel("Ethernet1");
     }},
    {"the topology goes", [](View& v) { v.state->topoDel("A"); }},
};

const std::vector<std::string> moments{"+10",
                                       "10 +Ethernet1",
                                       "10/Ethernet1 blocked",
                                       "10/Ethernet1 open",
                                       "10/Ethernet1 +A",
                                       "10/Ethernet1 egress",
                                       "10/Ethernet1 -A",
                                       "10 -Ethernet1",
                                       "-10"};

/// Makes the port come to the view, change and leave it, while the reader makes its change at the moment.
void expectTrue(const Change& change, const std::string& moment, bool isOtherActive) {
  SCOPED_TRACE(moment + ": " + change.name + (isOtherActive ? ", the other port is active" : ""));
  TwoPorts agent;
  agent.port("A").activeIs(false);
  agent.port("A", "Ethernet2").activeIs(isOtherActive);
  agent.start();
  ViewLog log(agent);
  log.onceAt(moment, [&] { change.apply(agent); });
  const auto port = [&]() -> Library::Port* {
    auto* const topo = agent.state->topo("A");
    return topo == nullptr ? nullptr : topo->port("Ethernet1");
  };
  const std::vector<std::function<void(Library::Port&)>> steps{
      [](Library::Port& p) { p.activeIs(true); },
      [](Library::Port& p) { p.stateIs(PortState::forwarding); },
      [](Library::Port& p) { p.activeIs(false); },
  };
  for (const auto& step : steps) {
    if (const Mox::Ptr<Library::Port> p = port()) step(*p);
    EXPECT_EQ(agent.contents(), expectedOf(agent));
  }
}

TEST(ViewReaders, mayChangeThePortAtEveryMoment) {
  for (const Change& change : changes) {
    for (const std::string& moment : moments) expectTrue(change, moment, false);
  }
}

TEST(ViewReaders, mayChangeThePortAtEveryMomentBesideAnother) {
  for (const Change& change : changes) {
    for (const std::string& moment : moments) expectTrue(change, moment, true);
  }
}

TEST(ViewReaders, mayMoveTheVlanToAnotherTopologyAtEveryMoment) {
  for (const char* const moment :
       {"+10", "10 +Ethernet1", "10/Ethernet1 blocked", "10/Ethernet1 +A", "10/Ethernet1 ingress"}) {
    SCOPED_TRACE(moment);
    View agent;
    agent.portUp("A", "Ethernet1", {}, PortState::blocking);
    agent.portUp("B", "Ethernet1", {}, PortState::forwarding);
    agent.start();
    ViewLog log(agent);
    bool isMoved = false;
    log.onceAt(moment, [&] {
      agent.port("A").vlanPortConfigDel(10);
      agent.port("B").vlanPortConfigIs(10, Bridging::VlanPortConfig(View::Direction::egress));
      isMoved = true;
    });
    agent.port("A").vlanPortConfigIs(10, Bridging::VlanPortConfig(View::Direction::ingress));
    EXPECT_TRUE(isMoved);
    EXPECT_EQ(agent.contents(), (Contents{"10", "10/Ethernet1 in B", "10/Ethernet1 open egress"}));
  }
}

TEST(ViewReaders, mayChangeAnythingWhileTheViewIsBuilt) {
  for (const Change& change : changes) {
    for (const std::string& moment : moments) {
      SCOPED_TRACE(moment + ": " + change.name);
      TwoPorts agent;
      ViewLog log(agent);
      log.onceAt(moment, [&] { change.apply(agent); });
      agent.start();
      EXPECT_EQ(agent.contents(), expectedOf(agent));
      EXPECT_TRUE(agent.view->initDone());
      agent.state->topoDelAll();
      EXPECT_EQ(agent.contents(), Contents());
    }
  }
}

TEST(ViewReaders, maySwitchTheForceAtEveryMoment) {
  for (const Change& change : changes) {
    for (const std::string& moment : moments) {
      SCOPED_TRACE(moment + ": " + change.name);
      TwoPorts agent;
      agent.port("A").activeIs(false);
      agent.start();
      ViewLog log(agent);
      log.onceAt(moment, [&] { change.apply(agent); });
      agent.view->forceEnabledPortsIs("Ethernet1", true);
      EXPECT_EQ(agent.contents(), expectedOf(agent));
      agent.view->forceEnabledPortsIs("Ethernet1", false);
      EXPECT_EQ(agent.contents(), expectedOf(agent));
    }
  }
}

TEST(ViewReaders, mayReleaseTheViewAtEveryMoment) {
  for (const std::string& moment : moments) {
    SCOPED_TRACE(moment);
    TwoPorts agent;
    agent.port("A").activeIs(false);
    agent.start();
    ViewLog log(agent);
    log.onceAt(moment, [&] { agent.sm = nullptr; });
    agent.port("A").activeIs(true);
    agent.port("A").stateIs(PortState::forwarding);
    agent.port("A").activeIs(false);
    EXPECT_EQ(agent.sm, nullptr);
    log.clear();
    agent.port("A").activeIs(true);
    agent.port("A", "Ethernet2").activeIs(true);
    agent.state->topoDelAll();
    agent.view->forceEnabledPortsIs("Ethernet1", true);
    EXPECT_EQ(log.lines, std::vector<std::string>());
    EXPECT_TRUE(agent.state->notifieeList()->empty());
  }
}

}  // namespace Topology::Library::Vlan::ViewReadersTest
