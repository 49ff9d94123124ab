// The topologies of the status publisher.

#include "topolib/TopoSm.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "mox/Exception.h"
#include "tests/topolib/Publisher.h"

namespace Topology::Library::TopoSmTest {

using Test::Publisher;
using Test::StatusLog;
using Contents = std::set<std::string>;
using Lines = std::vector<std::string>;
using LinkStatus = Interface::LinkStatus;

/// A topology A that is published and has no port.
class Running : public Publisher {
 public:
  Running() {
    topoIs("A");
    start();
  }
  [[nodiscard]] TopoSm& a() const { return *topoSm("A"); }
  [[nodiscard]] EthIntfSm* ethIntfSm(const std::string& intf = "Ethernet1") const { return a().ethIntfSm(intf); }
};

/// One that is made by hand and has not started to work.
class ByHand : public Publisher {
 public:
  ByHand() {
    portUp();
    topoStatus = status->topoStatusIs("A", 1);
    made = Mox::makePtr<TopoSm>(state->topo("A"), intfDir, config->topoConfig("A"), topoStatus);
  }
  Mox::Ptr<Bridging::Topology::Inst::TopoStatus> topoStatus;
  Mox::Ptr<TopoSm> made;
};

TEST(TopoSm, doesNothingBeforeItIsInitialised) {
  const ByHand agent;
  EXPECT_FALSE(agent.made->initialized());
  agent.made->handlePort();
  agent.made->handlePort("Ethernet1");
  agent.made->handleEthIntfStatus();
  agent.made->handleEthIntfStatus("Ethernet1");
  EXPECT_TRUE(agent.made->ethIntfSm().empty());
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
}

TEST(TopoSm, servesTheCurrentPortsWhenItIsInitialised) {
  ByHand agent;
  agent.made->handleInitialized();
  EXPECT_TRUE(agent.made->initialized());
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
}

TEST(TopoSm, servesThePortsThatComeAndGo) {
  Running agent;
  agent.linkIs("Ethernet1");
  agent.linkIs("Ethernet2");
  agent.portIs("A", "Ethernet1");
  ASSERT_NE(agent.ethIntfSm(), nullptr);
  EXPECT_EQ(agent.ethIntfSm()->intfId(), "Ethernet1");
  EXPECT_EQ(agent.ethIntfSm()->ethIntfStatus(), agent.intfDir->intfStatus("Ethernet1"));
  EXPECT_TRUE(agent.ethIntfSm()->initialized());
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
  agent.portIs("A", "Ethernet2");
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0", "A/Ethernet2 0"}));
  agent.state->topo("A")->portDel("Ethernet1");
  EXPECT_EQ(agent.ethIntfSm(), nullptr);
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet2 0"}));
}

TEST(TopoSm, waitsForTheInterfaceStatusOfAPort) {
  Running agent;
  agent.portIs("A", "Ethernet1");
  EXPECT_EQ(agent.ethIntfSm(), nullptr);
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_NE(agent.ethIntfSm(), nullptr);
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  agent.linkIs("Ethernet1");
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
  agent.intfDir->intfStatusDel("Ethernet1");
  EXPECT_EQ(agent.ethIntfSm(), nullptr);
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
}

TEST(TopoSm, waitsForThePortOfAnInterface) {
  Running agent;
  agent.linkIs("Ethernet1");
  EXPECT_EQ(agent.ethIntfSm(), nullptr);
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
}

TEST(TopoSm, needsNoInterfaceStatusForTheCpuPort) {
  Running agent;
  agent.portIs("A", "Cpu");
  ASSERT_NE(agent.ethIntfSm("Cpu"), nullptr);
  EXPECT_TRUE(agent.ethIntfSm("Cpu")->isCpuPort());
  EXPECT_EQ(agent.ethIntfSm("Cpu")->ethIntfStatus(), nullptr);
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Cpu 0"}));
  agent.state->topo("A")->portDel("Cpu");
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
}

TEST(TopoSm, goesOverToTheInterfaceStatusThatTheCpuPortGets) {
  Running agent;
  agent.portIs("A", "Cpu");
  const Mox::Ptr<EthIntfSm> before = agent.ethIntfSm("Cpu");
  agent.linkIs("Cpu", LinkStatus::down);
  EXPECT_NE(agent.ethIntfSm("Cpu"), before.get());
  EXPECT_EQ(agent.ethIntfSm("Cpu")->ethIntfStatus(), agent.intfDir->intfStatus("Cpu"));
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Cpu 0"})) << "it is up whatever its link says";
  agent.intfDir->intfStatusDel("Cpu");
  EXPECT_EQ(agent.ethIntfSm("Cpu")->ethIntfStatus(), nullptr);
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Cpu 0"}));
}

TEST(TopoSm, goesOverToAnInterfaceStatusThatWasReplaced) {
  Running agent;
  agent.linkIs("Ethernet1");
  agent.portIs("A", "Ethernet1");
  const StatusLog log(agent);
  const Mox::Ptr<EthIntfSm> before = agent.ethIntfSm();
  agent.sm->hasNotificationActiveIs(false);
  const Mox::Ptr<Interface::EthIntfStatus> old = agent.intfDir->intfStatus("Ethernet1");
  agent.intfDir->intfStatusDel("Ethernet1");
  agent.linkIs("Ethernet1");
  agent.sm->hasNotificationActiveIs(true);
  agent.a().handleEthIntfStatus("Ethernet1");
  EXPECT_NE(agent.ethIntfSm(), before.get());
  EXPECT_EQ(agent.ethIntfSm()->ethIntfStatus(), agent.intfDir->intfStatus("Ethernet1"));
  EXPECT_EQ(log.lines, (Lines{"A -Ethernet1", "A +Ethernet1"})) << "the old one is cleaned up first";
  EXPECT_TRUE(before->isRetired());
  old->linkStatusIs(LinkStatus::down);
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
}

TEST(TopoSm, followsTheDirectoryAsAWhole) {
  Running agent;
  agent.linkIs("Ethernet1");
  agent.linkIs("Ethernet2");
  agent.portIs("A", "Ethernet1");
  agent.portIs("A", "Ethernet2");
  agent.sm->hasNotificationActiveIs(false);
  agent.intfDir->intfStatusDel("Ethernet1");
  agent.sm->hasNotificationActiveIs(true);
  agent.a().handleEthIntfStatus();
  EXPECT_EQ(agent.ethIntfSm(), nullptr);
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet2 0"}));
}

TEST(TopoSm, keepsAPortThatIsServedAlready) {
  Running agent;
  agent.linkIs("Ethernet1");
  agent.portIs("A", "Ethernet1");
  const auto* const before = agent.ethIntfSm();
  const StatusLog log(agent);
  agent.a().handlePort();
  agent.a().handlePort("Ethernet1");
  agent.a().handleEthIntfStatus();
  agent.a().handlePort("unknown");
  EXPECT_EQ(agent.ethIntfSm(), before);
  EXPECT_EQ(log.lines, Lines());
}

TEST(TopoSm, cleansUpAllPorts) {
  Running agent;
  for (const char* const intf : {"Ethernet1", "Ethernet2"}) {
    agent.linkIs(intf);
    agent.portIs("A", intf);
  }
  agent.a().doCleanUp();
  EXPECT_TRUE(agent.a().ethIntfSm().empty());
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
  agent.linkIs("Ethernet1", LinkStatus::down);
  agent.linkIs("Ethernet1");
  agent.portIs("A", "Cpu");
  EXPECT_EQ(agent.contents(), Contents{"A 1"}) << "it is out of service";
}

TEST(TopoSm, keepsPortsOfItsOwn) {
  Running agent;
  const auto ethIntfStatus = agent.intfDir->intfStatusIs("Ethernet1");
  const auto topoConfig = agent.config->topoConfigIs("A", 1);
  const auto topoStatus = agent.status->topoStatusIs("A", 1);
  const auto made = agent.a().ethIntfSmIs("Ethernet1", topoConfig, topoStatus, ethIntfStatus);
  EXPECT_FALSE(made->initialized());
  EXPECT_TRUE(made->hasNotificationActive());
  EXPECT_EQ(agent.a().ethIntfSmIs("Ethernet1", topoConfig, topoStatus, ethIntfStatus), made);
  try {
    (void)agent.a().ethIntfSmIs("Ethernet1", topoConfig, topoStatus, nullptr);
    FAIL();
  } catch (const Mox::MutatorReinstantiatingException& e) {
    EXPECT_STREQ(e.what(), "ethIntfSmIs: a member of this key exists, made with other arguments");
  }
  agent.a().ethIntfSmDel("Ethernet2");
  EXPECT_EQ(agent.a().ethIntfSm().size(), 1U);
  agent.a().ethIntfSmDel("Ethernet1");
  EXPECT_TRUE(agent.a().ethIntfSm().empty());
  EXPECT_TRUE(made->isRetired());
  (void)agent.a().ethIntfSmIs("Ethernet1", topoConfig, topoStatus, ethIntfStatus);
  agent.a().ethIntfSmDelAll();
  EXPECT_TRUE(agent.a().ethIntfSm().empty());
}

// Readers of the status that change its inputs from inside its notifications.

TEST(TopoSm, servesAReaderThatTakesThePortBack) {
  Running agent;
  agent.linkIs("Ethernet1");
  StatusLog log(agent);
  log.onceAt("A +Ethernet1", [&] { agent.state->topo("A")->portDel("Ethernet1"); });
  agent.portIs("A", "Ethernet1");
  EXPECT_EQ(log.lines, (Lines{"A +Ethernet1", "A -Ethernet1"}));
  EXPECT_EQ(agent.ethIntfSm(), nullptr);
}

TEST(TopoSm, servesAReaderThatBringsThePortBack) {
  Running agent;
  agent.linkIs("Ethernet1");
  agent.portIs("A", "Ethernet1");
  StatusLog log(agent);
  log.onceAt("A -Ethernet1", [&] { agent.portIs("A", "Ethernet1"); });
  agent.state->topo("A")->portDel("Ethernet1");
  EXPECT_EQ(log.lines, (Lines{"A -Ethernet1", "A +Ethernet1"}));
  EXPECT_NE(agent.ethIntfSm(), nullptr);
}

TEST(TopoSm, servesAReaderThatReplacesTheInterfaceStatus) {
  Running agent;
  agent.linkIs("Ethernet1");
  StatusLog log(agent);
  log.onceAt("A +Ethernet1", [&] {
    agent.intfDir->intfStatusDel("Ethernet1");
    agent.linkIs("Ethernet1");
  });
  agent.portIs("A", "Ethernet1");
  ASSERT_NE(agent.ethIntfSm(), nullptr);
  EXPECT_EQ(agent.ethIntfSm()->ethIntfStatus(), agent.intfDir->intfStatus("Ethernet1"));
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
  agent.linkIs("Ethernet1", LinkStatus::down);
  EXPECT_EQ(agent.contents(), Contents{"A 1"});
}

TEST(TopoSm, servesAReaderThatWithdrawsTheTopologyWhileItIsPublished) {
  for (const char* const at : {"+A", "A +Ethernet1", "A +Ethernet2"}) {
    SCOPED_TRACE(at);
    Publisher agent;
    agent.linkIs("Ethernet1");
    agent.linkIs("Ethernet2");
    agent.topoIs("A");
    agent.portIs("A", "Ethernet1");
    agent.portIs("A", "Ethernet2");
    StatusLog log(agent);
    log.onceAt(at, [&] { agent.state->topoDel("A"); });
    agent.start();
    EXPECT_EQ(agent.contents(), Contents());
    EXPECT_EQ(agent.topoSm("A"), nullptr);
    agent.topoIs("A");
    EXPECT_EQ(agent.contents(), Contents{"A 1"});
  }
}

TEST(TopoSm, servesAReaderThatReplacesTheTopologyWhileItIsPublishedOrWithdrawn) {
  for (const char* const at : {"+A", "A +Ethernet1", "-A", "A -Ethernet1"}) {
    SCOPED_TRACE(at);
    Publisher agent;
    StatusLog log(agent);
    log.onceAt(at, [&] {
      agent.state->topoDel("A");
      agent.topoIs("A");
      agent.portIs("A", "Ethernet1");
    });
    agent.linkIs("Ethernet1");
    agent.start();
    agent.portUp();
    agent.state->topoDel("A");
    const bool isBack = at[0] == '-' || at[2] == '-';
    EXPECT_EQ(agent.contents(), isBack ? (Contents{"A 1", "A/Ethernet1 0"}) : Contents());
    agent.portUp();
    EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
    EXPECT_EQ(agent.topoSm("A")->topo(), agent.state->topo("A"));
  }
}

TEST(TopoSm, endsWellWhenAReaderReleasesThePublisher) {
  for (const char* const at : {"+A", "A +Ethernet1", "-A", "A -Ethernet1", "A config +Ethernet1"}) {
    SCOPED_TRACE(at);
    Publisher agent;
    agent.linkIs("Ethernet1");
    agent.start();
    StatusLog log(agent);
    log.onceAt(at, [&] { agent.stop(); });
    (void)agent.config->topoConfigIs("A", 1);
    agent.config->topoConfig("A")->publishPortConfigIs(true);
    agent.portUp();
    agent.state->topoDel("A");
    EXPECT_EQ(agent.sm, nullptr);
    log.clear();
    agent.portUp();
    agent.portUp("B", "Ethernet2");
    EXPECT_EQ(log.lines, Lines());
  }
}

}  // namespace Topology::Library::TopoSmTest
