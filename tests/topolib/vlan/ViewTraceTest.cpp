// What the VLAN view traces.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/vlan/View.h"

namespace Topology::Library::Vlan::ViewTraceTest {

using Test::TraceLines;
using Test::View;
using Line = std::pair<unsigned, std::string>;
using Lines = std::vector<Line>;
using PortState = Bridging::Topology::PortState;

// The signatures of the functions, as they are traced.
const std::string libSm = "void Topology::Library::Vlan::VlanLibSm::";
const std::string topoSm = "void Topology::Library::Vlan::TopoSm::";
const std::string mapping = "void Topology::Library::Vlan::VlanPortMapping::";

const Line startOfPass{8, libSm + "handleTopoLibTopo()"};
Line ofTopo(const std::string& name) { return {8, libSm + "handleTopoLibTopo(Mox::String) for topo " + name}; }
Line ofPort(const std::string& intf) {
  return {8, topoSm + "handleTopoPort(Quill::IntfId) for port " + intf + " in topo A"};
}
Line ofVlan(const std::string& vid) {
  return {8, mapping + "handleTopoVlanPort(Bridging::VlanId) in topoPort AEthernet1for vlan " + vid};
}
Line ofState(const std::string& vid, const std::string& state) {
  return {8, mapping + "handleTopoPortState(Bridging::VlanId)" + vid + ":Ethernet1 port::state = " + state};
}
Line ofViewPort(const std::string& state) { return {9, " port: Topology::Library::Port, state: " + state}; }
const Line isPut{8, mapping + "doTopoVlanPortIs(Bridging::VlanId) in topo A port Ethernet1"};
const Line isTaken{8, mapping + "doTopoVlanPortDel(Bridging::VlanId) in topo A port Ethernet1"};
const Line ofAllVlans{8, mapping + "handleTopoVlanPort() in topo A port Ethernet1"};
const Line ofAllStates{8, mapping + "handleTopoPortStates()"};
const Line ofActivity{8, mapping + "handleTopoPortActive()"};

Lines joined(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// A view over topology A with Ethernet1 in VLAN 10.
class PortOfA : public View {
 public:
  explicit PortOfA(PortState portState = PortState::forwarding, bool isActive = true) {
    portUp("A", "Ethernet1", {10}, portState)->activeIs(isActive);
    start();
  }
};

TEST(ViewTrace, ofAStartBeforeTheFirstPassIsOver) {
  View agent;
  const TraceLines trace("TopoLibVlan");
  agent.start(false);
  EXPECT_EQ(trace.lines(), (Lines{startOfPass, {8, libSm + "handleInitDone() for initDone false"}}));
}

TEST(ViewTrace, ofTheEndOfTheFirstPass) {
  View agent;
  agent.start(false);
  const TraceLines trace("TopoLibVlan");
  (void)agent.state->topoIs("A");
  agent.state->initDoneIs(true);
  EXPECT_EQ(trace.lines(), (Lines{ofTopo("A"),
                                  {8, libSm + "handleInitDone() for initDone true"},
                                  startOfPass,
                                  ofTopo("A"),
                                  {9, " topo A exists"},
                                  {8, topoSm + "handleInitialized()"},
                                  {8, topoSm + "handleTopoPort() in topo A"},
                                  ofTopo("A"),
                                  {9, " topo A exists"}}));
}

/// What a mapping of a port that is open traces when it is made.
const Lines ofNewMapping = joined({{ofActivity,
                                    {8, mapping + "handleInitialized()"},
                                    ofAllVlans,
                                    ofVlan("10"),
                                    isPut,
                                    {2, "New topo vlan 10"},
                                    {2, "New topo intf Ethernet1 on vlan 10"},
                                    ofState("10", "forwarding"),
                                    ofViewPort("forwarding"),
                                    {9, "Mark port::blocked as false"},
                                    ofAllStates,
                                    ofState("10", "forwarding"),
                                    ofViewPort("forwarding"),
                                    {9, "Mark port::blocked as false"}}});

TEST(ViewTrace, ofATopologyWithAPort) {
  View agent;
  agent.start(false);
  agent.state->initDoneIs(true);
  agent.sm->hasNotificationActiveIs(false);
  agent.portUp("A");
  agent.sm->hasNotificationActiveIs(true);
  const TraceLines trace("TopoLibVlan");
  agent.sm->handleTopoLibTopo("A");
  EXPECT_EQ(trace.lines(), joined({{ofTopo("A"),
                                    {9, " topo A exists"},
                                    {8, topoSm + "handleInitialized()"},
                                    {8, topoSm + "handleTopoPort() in topo A"},
                                    ofPort("Ethernet1"),
                                    {9, " topo port A:Ethernet1 exists"}},
                                   ofNewMapping,
                                   {ofPort("Ethernet1"), {9, " topo port A:Ethernet1 exists"}}}));
}

TEST(ViewTrace, ofATopologyThatGoes) {
  PortOfA agent;
  const TraceLines trace("TopoLibVlan");
  agent.state->topoDel("A");
  EXPECT_EQ(trace.lines(), (Lines{ofTopo("A"),
                                  {9, " topo A doesn't exist"},
                                  {8, mapping + "handleCleanup() in topo A port Ethernet1"},
                                  isTaken,
                                  {9, "Deleting topo A from Vlan 10, Ethernet1"},
                                  {2, " All topo ports deleted, removing topo vlan 10"}}));
}

TEST(ViewTrace, ofATopologyThatIsUnknown) {
  PortOfA agent;
  const TraceLines trace("TopoLibVlan");
  agent.sm->handleTopoLibTopo("B");
  EXPECT_EQ(trace.lines(), (Lines{ofTopo("B"), {9, " topo B doesn't exist"}}));
}

TEST(ViewTrace, ofAPortThatGoes) {
  PortOfA agent;
  const TraceLines trace("TopoLibVlan");
  agent.state->topo("A")->portDel("Ethernet1");
  EXPECT_EQ(trace.lines(), (Lines{ofPort("Ethernet1"),
                                  {9, " topo port A:Ethernet1 doesn't exist"},
                                  {8, mapping + "handleCleanup() in topo A port Ethernet1"},
                                  isTaken,
                                  {9, "Deleting topo A from Vlan 10, Ethernet1"},
                                  {2, " All topo ports deleted, removing topo vlan 10"}}));
}

TEST(ViewTrace, ofAPortThatComesEmpty) {
  PortOfA agent;
  const TraceLines trace("TopoLibVlan");
  agent.portIs("A", "Ethernet2");
  EXPECT_EQ(trace.lines(), (Lines{ofPort("Ethernet2"),
                                  {9, " topo port A:Ethernet2 exists"},
                                  ofActivity,
                                  {8, mapping + "handleInitialized()"},
                                  {8, mapping + "handleTopoVlanPort() in topo A port Ethernet2"},
                                  ofAllStates}));
}

TEST(ViewTrace, ofAnActivityThatComesAndGoes) {
  PortOfA agent(PortState::learning, false);
  const TraceLines trace("TopoLibVlan");
  agent.port("A").activeIs(true);
  EXPECT_EQ(trace.lines(), (Lines{ofActivity,
                                  ofAllVlans,
                                  ofVlan("10"),
                                  isPut,
                                  {2, "New topo vlan 10"},
                                  {2, "New topo intf Ethernet1 on vlan 10"},
                                  ofState("10", "learning"),
                                  ofViewPort("learning"),
                                  {9, "Mark port::blocked as true"}}));
  const TraceLines after("TopoLibVlan");
  agent.port("A").activeIs(false);
  EXPECT_EQ(after.lines(), (Lines{ofActivity,
                                  ofAllVlans,
                                  ofVlan("10"),
                                  isTaken,
                                  {9, "Deleting topo A from Vlan 10, Ethernet1"},
                                  {2, " All topo ports deleted, removing topo vlan 10"}}));
}

TEST(ViewTrace, ofAStateOfAPortThatIsNotInTheView) {
  PortOfA agent(PortState::learning, false);
  const TraceLines trace("TopoLibVlan");
  agent.port("A").stateIs(PortState::blocking);
  EXPECT_EQ(trace.lines(),
            (Lines{ofAllStates, ofState("10", "blocking"), ofViewPort("blocking"), {9, "tv == NULL. Return early"}}));
  agent.portUp("B", "Ethernet2");
  const TraceLines besideAnother("TopoLibVlan");
  agent.port("A").stateIs(PortState::learning);
  EXPECT_EQ(besideAnother.lines(),
            (Lines{ofAllStates, ofState("10", "learning"), ofViewPort("learning"), {9, "port == NULL. Return early"}}));
}

TEST(ViewTrace, ofADeletionOfWhatIsNotThere) {
  PortOfA agent(PortState::forwarding, false);
  const TraceLines trace("TopoLibVlan");
  agent.port("A").vlanPortConfigDel(10);
  EXPECT_EQ(trace.lines(), (Lines{ofVlan("10"), isTaken}));
  agent.portUp("B", "Ethernet2");
  const TraceLines besideAnother("TopoLibVlan");
  agent.mapping("A")->doTopoVlanPortDel(10);
  EXPECT_EQ(besideAnother.lines(), Lines{isTaken});
}

TEST(ViewTrace, ofAConfigurationOfAVlan) {
  PortOfA agent;
  const TraceLines trace("TopoLibVlan");
  agent.port("A").vlanPortConfigIs(10, Bridging::VlanPortConfig(Bridging::AllowedTrafficDirection::egress));
  EXPECT_EQ(trace.lines(), (Lines{ofVlan("10"),
                                  isPut,
                                  ofState("10", "forwarding"),
                                  ofViewPort("forwarding"),
                                  {9, "Mark port::blocked as false"}}));
}

TEST(ViewTrace, ofASecondPortInAVlan) {
  PortOfA agent;
  const TraceLines trace("TopoLibVlan", Mox::traceLevel(2));
  agent.portUp("A", "Ethernet2");
  agent.port("A", "Ethernet2").activeIs(false);
  EXPECT_EQ(trace.lines(), (Lines{{2, "New topo intf Ethernet2 on vlan 10"}}));
}

TEST(ViewTrace, ofAForcedPort) {
  PortOfA agent(PortState::blocking);
  const TraceLines trace("TopoLibVlan");
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  EXPECT_EQ(trace.lines(), (Lines{{8, libSm + "handleForceEnabledPorts(Quill::IntfId) for port Ethernet1"},
                                  ofAllVlans,
                                  ofVlan("10"),
                                  isPut,
                                  ofState("10", "blocking"),
                                  ofViewPort("blocking"),
                                  {9, "Mark port::blocked as false"}}));
  const TraceLines ofAnother("TopoLibVlan");
  agent.view->forceEnabledPortsIs("Ethernet2", true);
  EXPECT_EQ(ofAnother.lines(), (Lines{{8, libSm + "handleForceEnabledPorts(Quill::IntfId) for port Ethernet2"}}));
}

TEST(ViewTrace, isWrittenOnlyAtTheLevelsThatAreOn) {
  for (unsigned level = 0; level < 32; ++level) {
    const TraceLines trace("TopoLibVlan", Mox::traceLevel(level));
    PortOfA agent;
    agent.state->topoDel("A");
    for (const auto& [at, text] : trace.lines()) EXPECT_EQ(at, level) << text;
    EXPECT_EQ(trace.lines().empty(), level != 2 && level != 8 && level != 9) << level;
  }
}

TEST(ViewTrace, hasAFacilityOfItsOwn) {
  const TraceLines trace("TopoLib");
  PortOfA agent;
  agent.state->topoDel("A");
  EXPECT_TRUE(trace.lines().empty());
}

}  // namespace Topology::Library::Vlan::ViewTraceTest
