// Which ports of a topology are admitted, and when.

#include "topolib/TopoConfigSm.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/TraceLines.h"
#include "tests/topolib/Agent.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"

namespace Topology::Library::TopoConfigSmTest {

using Bridging::Topology::PortState;
using Interface::ForwardingModel;
using Interface::LinkStatus;
using Test::Agent;
using Test::assertionReport;
using Test::Messages;
using Test::Start;
using Test::StateLog;
using Test::TraceLines;

using Lines = std::vector<std::string>;
using Traces = std::vector<std::pair<unsigned, std::string>>;

/// Topology A with VLAN 10, which has the members Ethernet1, Cpu and Ethernet1.7; none is configured in the topology yet.
class TopoConfigSmBase : public testing::Test {
 protected:
  explicit TopoConfigSmBase(Start::Status status) : agent(Start{.status = status}) {
    agent.topoIs("A");
    agent.vlanIs(10, "A");
    for (const char* const intf : {"Ethernet1", "Cpu", "Ethernet1.7"}) agent.memberIs(10, intf);
    agent.startLibrary();
    agent.drain();
  }

  TopoConfigSm& sm() { return *agent.libSm->topoConfigSm("A"); }
  [[nodiscard]] bool isAdmitted(const std::string& intf) {
    const bool isActive = agent.port("A", intf)->active();
    EXPECT_EQ(sm().topoPortConfigSm(intf) != nullptr, isActive);
    return isActive;
  }
  Bridging::Topology::TopoConfig& config() { return *agent.config->topoConfig("A"); }
  void modelIs(const std::string& intf, ForwardingModel model) {
    agent.intfDir->intfStatusIs(intf)->forwardingModelIs(model);
  }

  Agent agent;
};

class TopoConfigSmTest : public TopoConfigSmBase {
 protected:
  TopoConfigSmTest() : TopoConfigSmBase(Start::Status::plain) {}
};
/// With an instance status instead of the plain one.
class TopoConfigSmInst : public TopoConfigSmBase {
 protected:
  TopoConfigSmInst() : TopoConfigSmBase(Start::Status::instance) {}
};

TEST_F(TopoConfigSmTest, standsOnTheInputsOfItsTopology) {
  EXPECT_EQ(sm().name(), "A");
  EXPECT_EQ(sm().topoConfig(), agent.config->topoConfig("A"));
  EXPECT_EQ(sm().topoStatus(), agent.status->topoStatus("A"));
  EXPECT_EQ(sm().topoInstStatus(), nullptr);
  EXPECT_EQ(sm().ethIntfStatusDir(), agent.intfDir.get());
  EXPECT_EQ(sm().libSm(), agent.libSm.get());
  EXPECT_TRUE(sm().initialized());
}

TEST_F(TopoConfigSmTest, portWithoutAPublishedPortGetsNoStateMachineUntilThereIsOne) {
  agent.linkIs("Ethernet2");
  agent.topoPortIs("A", "Ethernet2", PortState::blocking);
  EXPECT_EQ(sm().topoPortConfigSm("Ethernet2"), nullptr);
  agent.config->topoConfig("A")->topoPortConfig("Ethernet2")->fdbFlushIs(5);
  agent.memberIs(10, "Ethernet2");
  agent.drain();
  ASSERT_NE(sm().topoPortConfigSm("Ethernet2"), nullptr);
  const Port& port = *agent.port("A", "Ethernet2");
  EXPECT_TRUE(port.active());
  EXPECT_EQ(port.state(), PortState::blocking);
  EXPECT_EQ(port.fdbFlush(), 5U);
}

TEST_F(TopoConfigSmTest, portNeedsConfigurationStatusAndLink) {
  agent.linkIs("Ethernet1");
  EXPECT_FALSE(isAdmitted("Ethernet1"));
  config().topoPortConfigIs("Ethernet1", 0, PortState::forwarding);
  EXPECT_FALSE(isAdmitted("Ethernet1"));
  agent.status->topoStatus("A")->topoPortStatusIs("Ethernet1");
  EXPECT_TRUE(isAdmitted("Ethernet1"));
}

TEST_F(TopoConfigSmTest, statusMayComeFirst) {
  agent.linkIs("Ethernet1");
  agent.status->topoStatus("A")->topoPortStatusIs("Ethernet1");
  EXPECT_FALSE(isAdmitted("Ethernet1"));
  config().topoPortConfigIs("Ethernet1", 0, PortState::forwarding);
  EXPECT_TRUE(isAdmitted("Ethernet1"));
}

TEST_F(TopoConfigSmTest, ethernetPortFollowsItsLink) {
  agent.topoPortIs("A", "Ethernet1");
  config().topoPortConfig("Ethernet1")->fdbFlushIs(4);
  EXPECT_FALSE(isAdmitted("Ethernet1"));
  for (const LinkStatus link : {LinkStatus::unknown, LinkStatus::down}) {
    agent.linkIs("Ethernet1", link);
    EXPECT_FALSE(isAdmitted("Ethernet1")) << link;
  }
  agent.linkIs("Ethernet1", LinkStatus::up);
  EXPECT_TRUE(isAdmitted("Ethernet1"));
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_EQ(log.lines, (Lines{"A/Ethernet1 inactive", "A/Ethernet1 state disabled", "A/Ethernet1 flush 0"}));
  EXPECT_EQ(trace.lines(), (Traces{{8, "handleLinkStatusEthernet1"},
                                   {8, "handleTopoPortConfigOrStatus"},
                                   {3, "A: TopoPortConfig event for Ethernet1"},
                                   {3, "Deleting TopoPortConfigSm for Ethernet1"},
                                   {8, "A: Cleanup Ethernet1"}}));
  EXPECT_FALSE(isAdmitted("Ethernet1"));
}

TEST_F(TopoConfigSmTest, ethernetPortIsNotAskedForItsForwardingModel) {
  agent.topoPortIs("A", "Ethernet1");
  agent.linkIs("Ethernet1");
  modelIs("Ethernet1", ForwardingModel::routed);
  EXPECT_TRUE(isAdmitted("Ethernet1"));
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_FALSE(isAdmitted("Ethernet1"));
}

TEST_F(TopoConfigSmTest, cpuPortNeedsNoLink) {
  agent.topoPortIs("A", "Cpu");
  EXPECT_TRUE(isAdmitted("Cpu"));
  agent.linkIs("Cpu", LinkStatus::down);
  EXPECT_TRUE(isAdmitted("Cpu"));
}

TEST_F(TopoConfigSmTest, subInterfaceWithoutStatusIsAdmitted) {
  agent.topoPortIs("A", "Ethernet1.7");
  EXPECT_TRUE(isAdmitted("Ethernet1.7"));
}

TEST_F(TopoConfigSmTest, subInterfaceNeedsItsLinkOnlyWhenItIsBridged) {
  agent.topoPortIs("A", "Ethernet1.7");
  agent.linkIs("Ethernet1.7", LinkStatus::down);
  for (const ForwardingModel model : {ForwardingModel::unspecified, ForwardingModel::dropped, ForwardingModel::routed,
                                      ForwardingModel::mirrored, ForwardingModel::tunneled}) {
    modelIs("Ethernet1.7", model);
    EXPECT_TRUE(isAdmitted("Ethernet1.7")) << model;
  }
  modelIs("Ethernet1.7", ForwardingModel::bridged);
  EXPECT_FALSE(isAdmitted("Ethernet1.7"));
  agent.linkIs("Ethernet1.7", LinkStatus::up);
  EXPECT_TRUE(isAdmitted("Ethernet1.7"));
  agent.linkIs("Ethernet1.7", LinkStatus::unknown);
  EXPECT_FALSE(isAdmitted("Ethernet1.7"));
  modelIs("Ethernet1.7", ForwardingModel::routed);
  EXPECT_TRUE(isAdmitted("Ethernet1.7"));
}

TEST_F(TopoConfigSmTest, interfaceStatusThatComesOrGoesReevaluatesThePort) {
  agent.topoPortIs("A", "Ethernet1");
  agent.topoPortIs("A", "Ethernet1.7");
  agent.linkIs("Ethernet1");
  modelIs("Ethernet1.7", ForwardingModel::bridged);
  EXPECT_TRUE(isAdmitted("Ethernet1"));
  EXPECT_FALSE(isAdmitted("Ethernet1.7"));
  agent.intfDir->intfStatusDel("Ethernet1");
  agent.intfDir->intfStatusDel("Ethernet1.7");
  EXPECT_FALSE(isAdmitted("Ethernet1"));
  EXPECT_TRUE(isAdmitted("Ethernet1.7"));
}

TEST_F(TopoConfigSmTest, interfaceStatusThatWasReplacedIsFollowed) {
  agent.topoPortIs("A", "Ethernet1");
  agent.linkIs("Ethernet1");
  const Mox::Ptr<Interface::EthIntfStatus> old = agent.intfDir->intfStatus("Ethernet1");
  agent.intfDir->intfStatusDel("Ethernet1");
  agent.linkIs("Ethernet1");
  EXPECT_TRUE(isAdmitted("Ethernet1"));
  old->linkStatusIs(LinkStatus::down);
  EXPECT_TRUE(isAdmitted("Ethernet1"));
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_FALSE(isAdmitted("Ethernet1"));
}

TEST_F(TopoConfigSmTest, hasAReactorPerInterfaceStatus) {
  EXPECT_TRUE(sm().ethIntfStatus().empty());
  agent.linkIs("Ethernet1");
  agent.linkIs("Ethernet2");
  EXPECT_EQ(sm().ethIntfStatus().size(), 2U);
  sm().ethIntfStatusIs(agent.intfDir->intfStatus("Ethernet1"));
  EXPECT_EQ(sm().ethIntfStatus().size(), 2U);
  agent.intfDir->intfStatusDel("Ethernet1");
  EXPECT_EQ(sm().ethIntfStatus().size(), 1U);
  sm().ethIntfStatusDelAll();
  EXPECT_TRUE(sm().ethIntfStatus().empty());
}

TEST_F(TopoConfigSmTest, interfaceStatusesThatAreThereAtTheStartAreFollowed) {
  Agent other;
  other.topoIs("A");
  other.topoPortIs("A", "Ethernet1");
  other.linkIs("Ethernet1");
  other.vlanIs(10, "A");
  other.memberIs(10, "Ethernet1");
  other.startLibrary();
  other.drain();
  EXPECT_EQ(other.libSm->topoConfigSm("A")->ethIntfStatus().size(), 1U);
  EXPECT_TRUE(other.port("A", "Ethernet1")->active());
  other.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_FALSE(other.port("A", "Ethernet1")->active());
}

TEST_F(TopoConfigSmTest, configurationThatGoesResetsThePortAndLeavesIt) {
  agent.topoPortIs("A", "Cpu");
  config().topoPortConfig("Cpu")->fdbFlushIs(9);
  const StateLog log(agent.state);
  config().topoPortConfigDel("Cpu");
  EXPECT_EQ(log.lines, (Lines{"A/Cpu inactive", "A/Cpu state disabled", "A/Cpu flush 0"}));
  EXPECT_EQ(sm().topoPortConfigSm("Cpu"), nullptr);
  EXPECT_TRUE(agent.carries("A", "Cpu", 10));
}

TEST_F(TopoConfigSmTest, statusThatGoesResetsThePort) {
  agent.topoPortIs("A", "Cpu");
  agent.status->topoStatus("A")->topoPortStatusDel("Cpu");
  EXPECT_FALSE(isAdmitted("Cpu"));
}

TEST_F(TopoConfigSmTest, replacedConfigurationIsFollowed) {
  agent.topoPortIs("A", "Cpu", PortState::blocking);
  config().topoPortConfigDel("Cpu");
  config().topoPortConfigIs("Cpu", 1, PortState::learning);
  EXPECT_TRUE(isAdmitted("Cpu"));
  EXPECT_EQ(agent.port("A", "Cpu")->state(), PortState::learning);
}

TEST_F(TopoConfigSmTest, admissionIsTracedAndLogged) {
  config().topoPortConfigIs("Cpu", 0, PortState::forwarding);
  TraceLines trace("TopoLib");
  Messages messages;
  agent.status->topoStatus("A")->topoPortStatusIs("Cpu");
  EXPECT_EQ(trace.lines(), (Traces{{8, "handleTopoPortConfigOrStatus"},
                                   {3, "A: TopoPortConfig event for Cpu"},
                                   {3, "Creating TopoPortConfigSm for Cpu"},
                                   {8, "A: Initialize Cpu"}}));
  EXPECT_EQ(messages.texts(), Lines{"Creating TopoPortConfigSm for Cpu"});
  trace.clear();
  messages.clear();
  sm().handleTopoPortConfigOrStatus("Cpu");
  EXPECT_EQ(trace.lines(), (Traces{{8, "handleTopoPortConfigOrStatus"},
                                   {3, "A: TopoPortConfig event for Cpu"},
                                   {3, "TopoPortConfigSm already present Cpu"}}));
  EXPECT_EQ(messages.texts(), Lines{});
  config().topoPortConfigDel("Cpu");
  EXPECT_EQ(messages.texts(), Lines{"Deleting TopoPortConfigSm for Cpu"});
  trace.clear();
  sm().handleTopoPortConfigOrStatus("Cpu");
  EXPECT_EQ(trace.lines(), (Traces{{8, "handleTopoPortConfigOrStatus"}, {3, "A: TopoPortConfig event for Cpu"}}));
}

TEST_F(TopoConfigSmTest, allPortsAreEvaluatedOneByOne) {
  agent.topoPortIs("A", "Cpu");
  agent.topoPortIs("A", "Ethernet1");
  const TraceLines trace("TopoLib");
  sm().handleTopoPortConfigOrStatus();
  EXPECT_EQ(trace.count(8, "handleTopoPortConfigOrStatus"), 3U);
  EXPECT_EQ(trace.count(3, "A: TopoPortConfig event for Cpu"), 1U);
  EXPECT_EQ(trace.count(3, "A: TopoPortConfig event for Ethernet1"), 1U);
  EXPECT_EQ(trace.lines().size(), 6U);
}

TEST_F(TopoConfigSmTest, startIsTraced) {
  const TraceLines trace("TopoLib");
  agent.topoIs("C");
  EXPECT_TRUE(trace.has(8, "C: TopoConfigSm initializing"));
}

TEST_F(TopoConfigSmTest, doesNothingBeforeItIsInitialised) {
  config().topoPortConfigIs("Cpu", 0, PortState::forwarding);
  sm().initializedIs(false);
  const TraceLines trace("TopoLib");
  agent.status->topoStatus("A")->topoPortStatusIs("Cpu");
  EXPECT_EQ(trace.lines(), (Traces{{8, "handleTopoPortConfigOrStatus"}}));
  EXPECT_FALSE(isAdmitted("Cpu"));
}

TEST_F(TopoConfigSmTest, reactorWithoutAnInterfaceStatusAsksForTheEmptyInterface) {
  const auto reactor = Mox::makePtr<TopoConfigSm::MoxEthIntfStatus>(&sm());
  const TraceLines trace("TopoLib");
  reactor->handleLinkStatus();
  EXPECT_EQ(
      trace.lines(),
      (Traces{{8, "handleLinkStatus"}, {8, "handleTopoPortConfigOrStatus"}, {3, "A: TopoPortConfig event for "}}));
}

/// The text of the exception of this type that the function raises.
template <class Exception>
std::string errorOf(auto function) {
  try {
    function();
  } catch (const Exception& e) {
    return e.what();
  }
  return "no exception";
}

TEST_F(TopoConfigSmTest, nullArgumentsRaiseTheirExceptions) {
  using Null = Mox::MutatorArgNullPointerException;
  EXPECT_EQ(errorOf<Null>([&] { sm().topoPortConfigSmIs("A", nullptr); }),
            "topoPortConfigSmIs: argument topoPortConfig must not be null");
  EXPECT_EQ(errorOf<Null>([&] { sm().ethIntfStatusIs(nullptr); }),
            "ethIntfStatusIs: argument ethIntfStatus must not be null");
}

TEST_F(TopoConfigSmTest, portStateMachineOfAnotherConfigurationRaisesReinstantiation) {
  agent.topoPortIs("A", "Cpu");
  const Mox::Ptr<TopoPortConfigSm> first = sm().topoPortConfigSm("Cpu");
  EXPECT_EQ(sm().topoPortConfigSmIs("A", config().topoPortConfig("Cpu")), first);
  const auto other = Bridging::Topology::configFactory("other");
  const auto otherPort = other->topoConfigIs("A", 1)->topoPortConfigIs("Cpu", 0, PortState::forwarding);
  EXPECT_THROW(sm().topoPortConfigSmIs("A", otherPort), Mox::MutatorReinstantiatingException);
  EXPECT_EQ(sm().topoPortConfigSm("Cpu"), first.get());
}

TEST_F(TopoConfigSmTest, deletedPortStateMachineLeavesThePortAsItIs) {
  agent.topoPortIs("A", "Cpu");
  const StateLog log(agent.state);
  sm().topoPortConfigSmDelAll();
  EXPECT_TRUE(sm().topoPortConfigSm().empty());
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_TRUE(agent.port("A", "Cpu")->active());
}

TEST_F(TopoConfigSmInst, linkPlaysNoPart) {
  agent.libSm->ethIntfStatusDirIs(agent.intfDir);
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_FALSE(isAdmitted("Ethernet1"));
  agent.topoPortIs("A", "Ethernet1");
  EXPECT_TRUE(isAdmitted("Ethernet1"));
}

TEST_F(TopoConfigSmInst, portStatusOfTheInstanceIsFollowed) {
  agent.topoPortIs("A", "Ethernet1");
  EXPECT_TRUE(isAdmitted("Ethernet1"));
  const TraceLines trace("TopoLib");
  agent.statusInst->topoStatus("A")->topoPortStatusDel("Ethernet1");
  EXPECT_FALSE(isAdmitted("Ethernet1"));
  EXPECT_TRUE(trace.has(3, "Deleting TopoPortConfigSm for Ethernet1"));
  agent.statusInst->topoStatus("A")->topoPortStatusIs("Ethernet1", 0);
  EXPECT_TRUE(isAdmitted("Ethernet1"));
}

TEST_F(TopoConfigSmInst, bindingAnotherStatusReevaluatesNothing) {
  agent.topoPortIs("A", "Ethernet1");
  const StateLog log(agent.state);
  const TraceLines trace("TopoLib");
  sm().topoInstStatusIs(nullptr);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_TRUE(trace.lines().empty());
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  sm().handleTopoPortConfigOrStatus("Ethernet1");
  EXPECT_FALSE(agent.port("A", "Ethernet1")->active());
}

using TopoConfigSmDeathTest = TopoConfigSmTest;

TEST_F(TopoConfigSmDeathTest, bothStatusesAbort) {
  const auto instStatus = agent.statusInst->topoStatusIs("A", 1);
  EXPECT_DEATH(std::ignore = Mox::makePtr<TopoConfigSm>(agent.config->topoConfig("A"), agent.status->topoStatus("A"),
                                                        instStatus, agent.intfDir, agent.libSm.get()),
               assertionReport("!topoInstStatus() || !topoStatus()", "handleInitialized"));
}

TEST_F(TopoConfigSmDeathTest, plainStatusWithoutInterfaceStatusesAborts) {
  EXPECT_DEATH(std::ignore = Mox::makePtr<TopoConfigSm>(agent.config->topoConfig("A"), agent.status->topoStatus("A"),
                                                        nullptr, nullptr, agent.libSm.get()),
               assertionReport("ethIntfStatusDir()", "handleInitialized"));
}

TEST_F(TopoConfigSmDeathTest, stateMachineOnAReplacedConfigurationAborts) {
  agent.topoPortIs("A", "Cpu");
  sm().hasNotificationActiveIs(false);
  config().topoPortConfigDel("Cpu");
  config().topoPortConfigIs("Cpu", 0, PortState::forwarding);
  EXPECT_DEATH(sm().handleTopoPortConfigOrStatus("Cpu"),
               assertionReport("topoPortSm->topoPortConfig() == topoPortConfig", "reconcilePort"));
}

}  // namespace Topology::Library::TopoConfigSmTest
