#include "topolib/vlan/LibVlanState.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/topolib/vlan/View.h"

namespace Topology::Library::Vlan::LibVlanStateTest {

using Bridging::AllowedTrafficDirection;
using Test::KeyRecorder;
using Test::Recorder;
using Test::View;
using Contents = std::set<std::string>;
using Events = std::vector<Recorder::Event>;
using Lines = std::vector<std::string>;

/// Two mappings of ports of a view of their own.
class Mappings : public View {
 public:
  Mappings() {
    portUp("A");
    portUp("B");
    start();
  }
  Mox::Ptr<VlanPortMapping> a() { return mapping("A"); }
  Mox::Ptr<VlanPortMapping> b() { return mapping("B"); }
};

TEST(LibVlanState, isMadeEmpty) {
  const auto view = libVlanStateFactory("view");
  EXPECT_EQ(view->name(), "view");
  EXPECT_TRUE(view->topoVlan().empty());
  EXPECT_TRUE(view->forceEnabledPorts().empty());
  EXPECT_FALSE(view->initDone());
  EXPECT_EQ(view->references(), 1U);
  EXPECT_NE(libVlanStateFactory("view"), view);
}

TEST(LibVlanState, makesAVlanOnce) {
  const auto view = libVlanStateFactory("view");
  const KeyRecorder recorder(view.get(), LibVlanState::topoVlanAttr);
  const auto made = view->topoVlanIs(10);
  EXPECT_EQ(view->topoVlanIs(10), made);
  EXPECT_EQ(view->topoVlan(10), made.get());
  EXPECT_EQ(view->topoVlan(20), nullptr);
  EXPECT_EQ(made->vid(), 10U);
  EXPECT_TRUE(made->name().empty());
  EXPECT_TRUE(made->topoPort().empty());
  EXPECT_EQ(made->parent(), view.get());
  EXPECT_EQ(recorder.keys, std::vector<Bridging::VlanId>{10});
}

TEST(LibVlanState, deletesAVlanOnce) {
  const auto view = libVlanStateFactory("view");
  const auto made = view->topoVlanIs(10);
  const KeyRecorder recorder(view.get(), LibVlanState::topoVlanAttr);
  view->topoVlanDel(20);
  view->topoVlanDel(10);
  view->topoVlanDel(10);
  EXPECT_EQ(recorder.keys, std::vector<Bridging::VlanId>{10});
  EXPECT_TRUE(view->topoVlan().empty());
  EXPECT_EQ(made->references(), 1U);
}

TEST(LibVlanState, deletesAllVlansOneByOne) {
  const auto view = libVlanStateFactory("view");
  for (const unsigned vid : {10U, 20U, 4094U}) (void)view->topoVlanIs(vid);
  const KeyRecorder recorder(view.get(), LibVlanState::topoVlanAttr);
  view->topoVlanDelAll();
  EXPECT_EQ(std::set<Bridging::VlanId>(recorder.keys.begin(), recorder.keys.end()),
            (std::set<Bridging::VlanId>{10, 20, 4094}));
  EXPECT_EQ(recorder.keys.size(), 3U);
  EXPECT_TRUE(view->topoVlan().empty());
}

TEST(LibVlanState, tellsOfAForcedPortOnlyWhatChanges) {
  const auto view = libVlanStateFactory("view");
  const KeyRecorder recorder(view.get(), LibVlanState::forceEnabledPortsAttr);
  EXPECT_EQ(view->forceEnabledPorts("Ethernet1"), nullptr);
  view->forceEnabledPortsIs("Ethernet1", false);
  EXPECT_EQ(recorder.keys.size(), 1U) << "false is an entry too";
  ASSERT_NE(view->forceEnabledPorts("Ethernet1"), nullptr);
  EXPECT_FALSE(*view->forceEnabledPorts("Ethernet1"));
  view->forceEnabledPortsIs("Ethernet1", false);
  EXPECT_EQ(recorder.keys.size(), 1U);
  view->forceEnabledPortsIs("Ethernet1", true);
  EXPECT_EQ(recorder.keys.size(), 2U);
  EXPECT_TRUE(*view->forceEnabledPorts("Ethernet1"));
  view->forceEnabledPortsDel("Ethernet2");
  view->forceEnabledPortsDel("Ethernet1");
  view->forceEnabledPortsDel("Ethernet1");
  EXPECT_EQ(recorder.keys, std::vector<Quill::IntfId>(3, "Ethernet1"));
}

TEST(LibVlanState, deletesAllForcedPortsOneByOne) {
  const auto view = libVlanStateFactory("view");
  for (const char* const intf : {"Ethernet1", "Ethernet2", "Cpu"}) view->forceEnabledPortsIs(intf, true);
  const KeyRecorder recorder(view.get(), LibVlanState::forceEnabledPortsAttr);
  view->forceEnabledPortsDelAll();
  EXPECT_EQ(recorder.keys.size(), 3U);
  EXPECT_TRUE(view->forceEnabledPorts().empty());
}

TEST(LibVlanState, tellsOnceThatItIsDone) {
  const auto view = libVlanStateFactory("view");
  const Recorder recorder(view.get());
  view->initDoneIs(false);
  view->initDoneIs(true);
  view->initDoneIs(true);
  EXPECT_TRUE(view->initDone());
  EXPECT_EQ(recorder.events, (Events{{LibVlanState::initDoneAttr.id(), false}}));
}

TEST(LibVlanState, deletesVlanByVlanAndPortByPortWhenItIsDestroyed) {
  auto view = libVlanStateFactory("view");
  const Mox::Ptr<TopoVlan> held = view->topoVlanIs(10);
  for (const char* const intf : {"Ethernet1", "Ethernet2"}) (void)held->topoPortIs(intf);
  view->forceEnabledPortsIs("Ethernet1", true);
  view = nullptr;
  EXPECT_EQ(held->topoPort().size(), 2U) << "a VLAN that is held keeps its ports";
  EXPECT_EQ(held->parent(), nullptr);
}

TEST(TopoVlan, makesAPortOnceUnblockedAndInBothDirections) {
  const auto vlan = libVlanStateFactory("view")->topoVlanIs(10);
  const KeyRecorder recorder(vlan.get(), TopoVlan::topoPortAttr);
  const auto made = vlan->topoPortIs("Ethernet1");
  EXPECT_EQ(vlan->topoPortIs("Ethernet1"), made);
  EXPECT_EQ(vlan->topoPort("Ethernet1"), made.get());
  EXPECT_EQ(vlan->topoPort("Ethernet2"), nullptr);
  EXPECT_EQ(made->intf(), "Ethernet1");
  EXPECT_TRUE(made->name().empty());
  EXPECT_FALSE(made->blocked());
  EXPECT_EQ(made->allowedTrafficDirection(), AllowedTrafficDirection{});
  EXPECT_TRUE(made->topo().empty());
  EXPECT_EQ(made->parent(), vlan.get());
  EXPECT_EQ(recorder.keys, std::vector<Quill::IntfId>{"Ethernet1"});
}

TEST(TopoVlan, deletesPortsWithANotificationEach) {
  const auto vlan = libVlanStateFactory("view")->topoVlanIs(10);
  for (const char* const intf : {"Ethernet1", "Ethernet2", "Ethernet3"}) (void)vlan->topoPortIs(intf);
  const KeyRecorder recorder(vlan.get(), TopoVlan::topoPortAttr);
  vlan->topoPortDel("Ethernet2");
  vlan->topoPortDel("Ethernet2");
  EXPECT_EQ(recorder.keys, std::vector<Quill::IntfId>{"Ethernet2"});
  vlan->topoPortDelAll();
  EXPECT_EQ(recorder.keys.size(), 3U);
  EXPECT_TRUE(vlan->topoPort().empty());
}

TEST(ViewPort, recordsTopologies) {
  Mappings other;
  const auto port = libVlanStateFactory("view")->topoVlanIs(10)->topoPortIs("Ethernet1");
  const KeyRecorder recorder(port.get(), Port::topoAttr);
  port->topoIs("A", other.a());
  port->topoIs("A", other.a());
  EXPECT_EQ(recorder.keys, std::vector<Mox::String>{"A"});
  ASSERT_NE(port->topo("A"), nullptr);
  EXPECT_EQ(*port->topo("A"), other.a());
  EXPECT_EQ(port->topo("B"), nullptr);
  port->topoIs("A", other.b());
  EXPECT_EQ(recorder.keys, (std::vector<Mox::String>{"A", "A"})) << "another mapping is a change";
  EXPECT_EQ(*port->topo("A"), other.b());
  EXPECT_EQ(port->topo().size(), 1U);
  port->topoDel("B");
  port->topoDel("A");
  port->topoDel("A");
  EXPECT_EQ(recorder.keys.size(), 3U);
  EXPECT_TRUE(port->topo().empty());
}

TEST(ViewPort, holdsItsMappingsCounted) {
  Mappings other;
  const auto port = libVlanStateFactory("view")->topoVlanIs(10)->topoPortIs("Ethernet1");
  const auto before = other.a()->references();
  port->topoIs("C", other.a());
  EXPECT_EQ(other.a()->references(), before + 1);
  port->topoIs("C", other.b());
  EXPECT_EQ(other.a()->references(), before);
  port->topoIs("D", other.a());
  port->topoDelAll();
  EXPECT_EQ(other.a()->references(), before);
}

TEST(ViewPort, deletesAllTopologiesOneByOne) {
  Mappings other;
  const auto port = libVlanStateFactory("view")->topoVlanIs(10)->topoPortIs("Ethernet1");
  for (const char* const name : {"A", "B", "C"}) port->topoIs(name, other.a());
  const KeyRecorder recorder(port.get(), Port::topoAttr);
  port->topoDelAll();
  EXPECT_EQ(std::set<Mox::String>(recorder.keys.begin(), recorder.keys.end()), (std::set<Mox::String>{"A", "B", "C"}));
  EXPECT_EQ(recorder.keys.size(), 3U);
  EXPECT_TRUE(port->topo().empty());
}

TEST(ViewPort, tellsOfBlockingAndDirectionOnlyWhatChanges) {
  const auto port = libVlanStateFactory("view")->topoVlanIs(10)->topoPortIs("Ethernet1");
  const Recorder recorder(port.get());
  port->blockedIs(false);
  port->allowedTrafficDirectionIs(AllowedTrafficDirection::both);
  EXPECT_EQ(recorder.events, Events());
  port->blockedIs(true);
  port->blockedIs(true);
  port->allowedTrafficDirectionIs(AllowedTrafficDirection::none);
  port->allowedTrafficDirectionIs(AllowedTrafficDirection::none);
  EXPECT_TRUE(port->blocked());
  EXPECT_EQ(port->allowedTrafficDirection(), AllowedTrafficDirection::none);
  EXPECT_EQ(recorder.events,
            (Events{{Port::blockedAttr.id(), false}, {Port::allowedTrafficDirectionAttr.id(), false}}));
}

TEST(ViewPort, isToldAbsentWhileItsTopologyGoes) {
  Mappings other;
  const auto port = libVlanStateFactory("view")->topoVlanIs(10)->topoPortIs("Ethernet1");
  port->topoIs("A", other.a());
  bool isThere = true;
  const Recorder recorder(port.get(), [&](auto, const void*) { isThere = port->topo("A") != nullptr; });
  port->topoDel("A");
  EXPECT_FALSE(isThere);
}

}  // namespace Topology::Library::Vlan::LibVlanStateTest
