// The ports of the status publisher: which are up, and what is written for them.

#include "topolib/EthIntfSm.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/topolib/Publisher.h"

namespace Topology::Library::EthIntfSmTest {

using Bridging::Topology::PortState;
using Interface::ForwardingModel;
using Interface::LinkStatus;
using Test::Publisher;
using Test::StatusLog;
using Contents = std::set<std::string>;
using Lines = std::vector<std::string>;

constexpr unsigned linkStatuses = 3;
constexpr unsigned forwardingModels = 6;

/// A port of topology A, published and up, whose configuration may be asked for.
class PortUp : public Publisher {
 public:
  explicit PortUp(bool publishPortConfig = false, const std::string& intf = "Ethernet1") {
    portUp("A", intf);
    topoConfig = config->topoConfig("A");
    topoConfig->publishPortConfigIs(publishPortConfig);
    start();
  }
  [[nodiscard]] Mox::Ptr<EthIntfSm> port() const { return topoSm("A")->ethIntfSm("Ethernet1"); }
  [[nodiscard]] bool isUp(const std::string& intf = "Ethernet1") const {
    return status->topoStatus("A")->topoPortStatus(intf) != nullptr;
  }
  Mox::Ptr<Bridging::Topology::TopoConfig> topoConfig;
};

/// Compares, for every link status and forwarding model, and in every order of changes between two of them.
void expectUp(const std::string& intf, const std::function<bool(unsigned link, unsigned model)>& expected) {
  PortUp agent(false, intf);
  const auto intfStatus = agent.intfDir->intfStatusIs(intf);
  for (unsigned from = 0; from < linkStatuses * forwardingModels; ++from) {
    for (unsigned to = 0; to < linkStatuses * forwardingModels; ++to) {
      for (const unsigned at : {from, to}) {
        intfStatus->linkStatusIs(LinkStatus(at % linkStatuses));
        EXPECT_EQ(agent.isUp(intf), expected(at % linkStatuses, unsigned(intfStatus->forwardingModel()))) << intf;
        intfStatus->forwardingModelIs(ForwardingModel(at / linkStatuses));
        EXPECT_EQ(agent.isUp(intf), expected(at % linkStatuses, at / linkStatuses)) << intf << ' ' << at;
      }
    }
  }
}

TEST(EthIntfSm, isUpWithItsLinkWhileBridgedOrTunneled) {
  for (const char* const intf : {"Ethernet1", "PortChannel1", "VxlanTunnel1", "Vlan7"}) {
    expectUp(intf, [](unsigned link, unsigned model) { return link == 2 && (model == 4 || model == 5); });
  }
}

TEST(EthIntfSm, ofASubInterfaceFollowsItsLinkOnlyWhileBridged) {
  for (const char* const intf : {"Ethernet1.5", "PortChannel1.7"}) {
    expectUp(intf, [](unsigned link, unsigned model) { return model != 4 || link == 2; });
  }
}

TEST(EthIntfSm, ofTheCpuIsAlwaysUp) {
  expectUp("Cpu", [](unsigned, unsigned) { return true; });
}

TEST(EthIntfSm, knowsWhatItWasMadeOf) {
  const PortUp agent;
  const auto port = agent.port();
  EXPECT_EQ(port->intfId(), "Ethernet1");
  EXPECT_EQ(port->topoConfig(), agent.topoConfig);
  EXPECT_EQ(port->topoStatus(), agent.status->topoStatus("A"));
  EXPECT_EQ(port->ethIntfStatus(), agent.intfDir->intfStatus("Ethernet1"));
  EXPECT_FALSE(port->isCpuPort());
  EXPECT_TRUE(port->isBuiltFrom(port->topoConfig(), port->topoStatus(), agent.intfDir->intfStatus("Ethernet1")));
  EXPECT_FALSE(port->isBuiltFrom(port->topoConfig(), port->topoStatus(), nullptr));
  EXPECT_FALSE(port->isBuiltFrom(nullptr, port->topoStatus(), agent.intfDir->intfStatus("Ethernet1")));
}

TEST(EthIntfSm, doesNothingBeforeItIsInitialised) {
  Publisher agent;
  agent.linkIs("Ethernet1");
  const auto topoStatus = agent.status->topoStatusIs("A", 1);
  const auto made = Mox::makePtr<EthIntfSm>("Ethernet1", agent.config->topoConfigIs("A", 1), topoStatus,
                                            agent.intfDir->intfStatus("Ethernet1"));
  made->handleForwardingModel();
  made->handleLinkStatus();
  made->maybeUpdateTopo(true);
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  made->handleInitialized();
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
}

TEST(EthIntfSm, decidesThatItIsTheCpuPortWhenItIsInitialised) {
  Publisher agent;
  const auto topoStatus = agent.status->topoStatusIs("A", 1);
  const auto topoConfig = agent.config->topoConfigIs("A", 1);
  const auto cpu = Mox::makePtr<EthIntfSm>("Cpu", topoConfig, topoStatus, nullptr);
  EXPECT_FALSE(cpu->isCpuPort());
  cpu->handleInitialized();
  EXPECT_TRUE(cpu->isCpuPort());
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Cpu 0"}));
  cpu->isCpuPortIs(false);
  cpu->handleLinkStatus();
  EXPECT_EQ(agent.contents(), Contents{"A 1"}) << "without a link it is down";
}

TEST(EthIntfSm, removesThePortWithItsLinkAndAddsItAgainWithNumberZero) {
  PortUp agent;
  agent.status->topoStatus("A")->topoPortStatusIs("Ethernet1", 9);
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  agent.linkIs("Ethernet1", LinkStatus::unknown);
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  agent.linkIs("Ethernet1");
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
  EXPECT_TRUE(agent.topoConfig->topoPortConfig().empty()) << "a port configuration was not asked for";
}

TEST(EthIntfSm, doesNothingWhereTheEntryIsAsItShouldBe) {
  PortUp agent;
  agent.status->topoStatus("A")->topoPortStatusIs("Ethernet1", 9);
  const StatusLog log(agent);
  agent.port()->maybeUpdateTopo(true);
  agent.port()->handleLinkStatus();
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 9"}));
}

// The port configuration, where it is asked for.

TEST(EthIntfSm, configuresThePortWithTheStateThatTheTopologyNames) {
  for (const auto state : {PortState::disabled, PortState::blocking, PortState::learning, PortState::forwarding}) {
    PortUp agent(true);
    agent.topoConfig->publishedPortStateIs(state);
    agent.linkIs("Ethernet1", LinkStatus::down);
    agent.linkIs("Ethernet1");
    ASSERT_NE(agent.topoConfig->topoPortConfig("Ethernet1"), nullptr);
    EXPECT_EQ(agent.topoConfig->topoPortConfig("Ethernet1")->portState(), state);
    EXPECT_EQ(agent.topoConfig->topoPortConfig("Ethernet1")->number(), 0U);
  }
  EXPECT_EQ(PortUp(true).topoConfig->topoPortConfig("Ethernet1")->portState(), PortState::forwarding) << "the default";
}

TEST(EthIntfSm, addsTheStatusBeforeTheConfigurationAndRemovesItAfterIt) {
  PortUp agent(true);
  const StatusLog log(agent);
  agent.linkIs("Ethernet1", LinkStatus::down);
  agent.linkIs("Ethernet1");
  EXPECT_EQ(log.lines, (Lines{"A config -Ethernet1", "A -Ethernet1", "A +Ethernet1", "A config +Ethernet1"}));
}

TEST(EthIntfSm, cleansUpTheStatusBeforeTheConfiguration) {
  PortUp agent(true);
  const StatusLog log(agent);
  agent.state->topo("A")->portDel("Ethernet1");
  EXPECT_EQ(log.lines, (Lines{"A -Ethernet1", "A config -Ethernet1"}));
}

TEST(EthIntfSm, leavesAConfigurationAloneThatItWasNotAskedFor) {
  PortUp agent;
  (void)agent.topoConfig->topoPortConfigIs("Ethernet1", 0, PortState::learning);
  const StatusLog log(agent);
  agent.linkIs("Ethernet1", LinkStatus::down);
  agent.linkIs("Ethernet1");
  agent.state->topo("A")->portDel("Ethernet1");
  EXPECT_EQ(log.lines, (Lines{"A -Ethernet1", "A +Ethernet1", "A -Ethernet1"}));
  EXPECT_NE(agent.topoConfig->topoPortConfig("Ethernet1"), nullptr);
}

TEST(EthIntfSm, doesNotConfigureAPortWhoseStatusIsThere) {
  Publisher agent;
  agent.portUp();
  agent.config->topoConfig("A")->publishPortConfigIs(true);
  agent.status->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet1", 0);
  agent.start();
  EXPECT_TRUE(agent.config->topoConfig("A")->topoPortConfig().empty());
}

TEST(EthIntfSm, obeysTheConfigurationAsItIsWhenTheLinkChanges) {
  PortUp agent;
  agent.topoConfig->publishPortConfigIs(true);
  EXPECT_TRUE(agent.topoConfig->topoPortConfig().empty());
  agent.linkIs("Ethernet1", LinkStatus::down);
  agent.linkIs("Ethernet1");
  EXPECT_NE(agent.topoConfig->topoPortConfig("Ethernet1"), nullptr);
  agent.topoConfig->publishPortConfigIs(false);
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_NE(agent.topoConfig->topoPortConfig("Ethernet1"), nullptr);
}

TEST(EthIntfSm, cleansUpWhateverItsEntryIs) {
  PortUp agent(true);
  const auto port = agent.port();
  port->doCleanUp();
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  EXPECT_TRUE(agent.topoConfig->topoPortConfig().empty());
  port->doCleanUp();
  agent.linkIs("Ethernet1", LinkStatus::down);
  agent.linkIs("Ethernet1");
  EXPECT_EQ(agent.contents(), Contents{"A 1"}) << "it writes nothing more";
  EXPECT_TRUE(agent.topoConfig->topoPortConfig().empty());
}

TEST(EthIntfSm, reactsToNothingElse) {
  PortUp agent;
  const StatusLog log(agent);
  agent.state->topo("A")->port("Ethernet1")->activeIs(true);
  agent.state->topo("A")->port("Ethernet1")->stateIs(PortState::forwarding);
  agent.linkIs("Ethernet2");
  agent.intfDir->intfStatusDel("Ethernet2");
  EXPECT_EQ(log.lines, Lines());
}

// Readers that change the link from inside the notification of its last change.

TEST(EthIntfSm, reportsALinkThatChangesWhileItIsReported) {
  PortUp agent(true);
  StatusLog log(agent);
  log.onceAt("A -Ethernet1", [&] { agent.linkIs("Ethernet1"); });
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_EQ(log.lines, (Lines{"A config -Ethernet1", "A -Ethernet1", "A +Ethernet1", "A config +Ethernet1"}));
}

TEST(EthIntfSm, reportsALinkThatGoesWhileItIsReportedUp) {
  for (const char* const at : {"A +Ethernet1", "A config +Ethernet1"}) {
    SCOPED_TRACE(at);
    PortUp agent(true);
    agent.linkIs("Ethernet1", LinkStatus::down);
    StatusLog log(agent);
    log.onceAt(at, [&] { agent.linkIs("Ethernet1", LinkStatus::down); });
    agent.linkIs("Ethernet1");
    EXPECT_EQ(log.lines, (Lines{"A +Ethernet1", "A config +Ethernet1", "A config -Ethernet1", "A -Ethernet1"}));
  }
}

TEST(EthIntfSm, writesNoConfigurationForAPortThatAReaderRemoves) {
  PortUp agent(true);
  agent.linkIs("Ethernet1", LinkStatus::down);
  StatusLog log(agent);
  log.onceAt("A +Ethernet1", [&] { agent.state->topo("A")->portDel("Ethernet1"); });
  agent.linkIs("Ethernet1");
  EXPECT_EQ(log.lines, (Lines{"A +Ethernet1", "A -Ethernet1"}));
  EXPECT_TRUE(agent.topoConfig->topoPortConfig().empty());
}

TEST(EthIntfSm, leavesNothingBehindWhenAReaderRemovesThePortWhileItGoesDown) {
  PortUp agent(true);
  StatusLog log(agent);
  log.onceAt("A config -Ethernet1", [&] { agent.state->topo("A")->portDel("Ethernet1"); });
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_EQ(log.lines, (Lines{"A config -Ethernet1", "A -Ethernet1"}));
}

TEST(EthIntfSm, leavesNothingBehindWhenAReaderRemovesThePortWhileItsConfigurationComes) {
  PortUp agent(true);
  agent.linkIs("Ethernet1", LinkStatus::down);
  StatusLog log(agent);
  log.onceAt("A config +Ethernet1", [&] { agent.state->topo("A")->portDel("Ethernet1"); });
  agent.linkIs("Ethernet1");
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  EXPECT_TRUE(agent.topoConfig->topoPortConfig().empty());
}

}  // namespace Topology::Library::EthIntfSmTest
