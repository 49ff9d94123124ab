// What LibSm does when topologies come and go: which there are, and in which order they change.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/Recorder.h"
#include "tests/support/TraceLines.h"
#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmTopoTest {

using Bridging::VlanId;
using Test::Agent;
using Test::inst;
using Test::instAtOnce;
using Test::instNotified;
using Test::Recorder;
using Test::Start;
using Test::StateLog;
using Test::Switch;
using Texts = std::vector<std::string>;

const Start plain;
const Start none{.status = Start::Status::none};

/// Started without topologies.
class Empty : public Agent {
 public:
  explicit Empty(const Start& how) : Agent(how) { startLibrary(); }

  [[nodiscard]] bool isPublished(const std::string& name) const {
    const bool hasSm = libSm->topoConfigSm(name) != nullptr;
    EXPECT_EQ(state->topo(name) != nullptr, hasSm) << "the two exist together";
    return hasSm;
  }
};

/// Started with topology A, to which VLANs 10 and 20 are mapped, and everything processed.
class TwoVlans : public Switch {
 public:
  explicit TwoVlans(const Start& how = inst) : Switch(how) {
    vlanIs(20, "A");
    memberIs(20, "Ethernet2");
    startLibrary();
    drain();
    EXPECT_TRUE(vlanMappedToTopo(libSm, "A", 10) && vlanMappedToTopo(libSm, "A", 20));
  }

  /// Deletes the configuration and the statuses of A.
  void withdraw() {
    config->topoConfigDel("A");
    status->topoStatusDel("A");
    statusInst->topoStatusDel("A");
  }
  void restore() {
    topoIs("A");
    topoPortIs("A", "Ethernet1");
  }
  [[nodiscard]] Mox::Ptr<const Bridging::Topology::TopoConfig> topoConfig() const { return config->topoConfig("A"); }
};

// Which topologies are wanted.

TEST(LibSmTopo, withPlainStatusNeedsConfigurationAndStatus) {
  Empty agent(plain);
  agent.config->topoConfigIs("A", 1);
  EXPECT_FALSE(agent.isPublished("A"));
  agent.status->topoStatusIs("A");
  EXPECT_TRUE(agent.isPublished("A"));
  agent.status->topoStatusDel("A");
  EXPECT_FALSE(agent.isPublished("A"));
  agent.status->topoStatusIs("A");
  EXPECT_TRUE(agent.isPublished("A"));
  agent.config->topoConfigDel("A");
  EXPECT_FALSE(agent.isPublished("A"));
  agent.status->topoStatusIs("B");
  EXPECT_FALSE(agent.isPublished("B"));
  agent.config->topoConfigIs("B", 2);
  EXPECT_TRUE(agent.isPublished("B"));
}

TEST(LibSmTopo, withoutAnyStatusThereIsNone) {
  Empty agent(none);
  agent.config->topoConfigIs("A", 1);
  EXPECT_FALSE(agent.isPublished("A"));
  EXPECT_FALSE(agent.libSm->wantsTopo("A"));
}

TEST(LibSmTopo, inModeCreateStatusNeedsTheConfigurationAlone) {
  Empty agent(inst);
  agent.config->topoConfigIs("A", 1);
  EXPECT_TRUE(agent.isPublished("A"));
  agent.statusInst->topoStatusIs("A", 1);
  agent.statusInst->topoStatusDel("A");
  EXPECT_TRUE(agent.isPublished("A"));
  agent.statusInst->topoStatusIs("B", 2);
  EXPECT_FALSE(agent.isPublished("B"));
  agent.config->topoConfigDel("A");
  EXPECT_FALSE(agent.isPublished("A"));
}

TEST(LibSmTopo, inModeNotifyStatusNeedsTheInstanceStatusToo) {
  Empty agent(instNotified);
  agent.config->topoConfigIs("A", 1);
  EXPECT_FALSE(agent.isPublished("A"));
  agent.statusInst->topoStatusIs("A", 1);
  EXPECT_TRUE(agent.isPublished("A"));
  agent.statusInst->topoStatusDel("A");
  EXPECT_FALSE(agent.isPublished("A"));
}

TEST(LibSmTopo, inAnyOtherModeNeedsTheInstanceStatusToo) {
  Empty agent({.status = Start::Status::instance, .mode = static_cast<LibSmMode>(2)});
  agent.config->topoConfigIs("A", 1);
  EXPECT_FALSE(agent.isPublished("A"));
  agent.statusInst->topoStatusIs("A", 1);
  EXPECT_TRUE(agent.isPublished("A"));
}

TEST(LibSmTopo, withoutStatusTheModeIsOfNoAccount) {
  for (const LibSmMode mode : {LibSmMode::createStatus, LibSmMode::notifyStatus}) {
    Empty agent({.mode = mode});
    agent.config->topoConfigIs("A", 1);
    EXPECT_FALSE(agent.isPublished("A"));
    agent.status->topoStatusIs("A");
    EXPECT_TRUE(agent.isPublished("A"));
  }
}

// Absent and present.

TEST(LibSmTopo, comesBeforeItsStateMachineAndGoesAfterIt) {
  Empty agent(inst);
  std::vector<std::pair<std::string, bool>> seen;
  const StateLog log(agent.state, [&](const std::string& line) {
    seen.emplace_back(line, agent.libSm->topoConfigSm("A") != nullptr);
  });
  const Recorder machines(agent.libSm.get(), [&](auto id, const void*) {
    if (id == LibSm::topoConfigSmAttr.id()) seen.emplace_back("machine", agent.state->topo("A") != nullptr);
  });
  agent.config->topoConfigIs("A", 1);
  agent.config->topoConfigDel("A");
  EXPECT_EQ(seen, (std::vector<std::pair<std::string, bool>>{
                      {"+A", false}, {"machine", true}, {"machine", true}, {"-A", false}}));
}

TEST(LibSmTopo, standsOnTheInputsThatItWasMadeOf) {
  {
    Switch agent(plain);
    agent.startLibrary();
    const TopoConfigSm& sm = *agent.libSm->topoConfigSm("A");
    EXPECT_EQ(sm.topoConfig(), agent.config->topoConfig("A"));
    EXPECT_EQ(sm.topoStatus(), agent.status->topoStatus("A"));
    EXPECT_EQ(sm.topoInstStatus(), nullptr);
    EXPECT_EQ(sm.ethIntfStatusDir(), agent.intfDir.get());
  }
  Switch agent(inst);
  agent.startLibrary();
  const TopoConfigSm& sm = *agent.libSm->topoConfigSm("A");
  EXPECT_EQ(sm.topoStatus(), nullptr);
  EXPECT_EQ(sm.topoInstStatus(), agent.statusInst->topoStatus("A"));
  EXPECT_EQ(sm.ethIntfStatusDir(), nullptr);
}

TEST(LibSmTopo, marksExactlyItsConfiguredVlansWhenItComes) {
  Empty agent(inst);
  agent.vlanIs(30, "B");
  agent.vlanIs(20, "A");
  agent.vlanIs(10, "A");
  agent.memberIs(40, "Ethernet1");
  agent.drain();
  const ::Test::TraceLines trace("TopoLib", Mox::traceLevel(4));
  agent.config->topoConfigIs("A", 1);
  std::vector<VlanId> marked;
  for (const auto& [vid, dv] : agent.libSm->dirtyVlanDir()->dirtyVlan()) {
    EXPECT_TRUE(dv.dirty());
    EXPECT_TRUE(dv.intf().empty());
    marked.push_back(vid);
  }
  EXPECT_EQ(marked, (std::vector<VlanId>{10, 20}));
  EXPECT_EQ(trace.lines(),
            (std::vector<std::pair<unsigned, std::string>>{{4, "doOnVlanPortUpdate: setting dirty to true 10"},
                                                           {4, "doOnVlanPortUpdate: setting dirty to true 20"}}));
}

TEST(LibSmTopo, thatComesLateTakesItsVlansIn) {
  for (const Start& how : {inst, instAtOnce, plain}) {
    Agent agent(how);
    agent.linkIs("Ethernet1");
    agent.vlanIs(10, "A");
    agent.memberIs(10, "Ethernet1");
    agent.startLibrary();
    agent.drain();
    const StateLog log(agent.state);
    agent.topoIs("A");
    agent.topoPortIs("A", "Ethernet1");
    agent.drain();
    ASSERT_GE(log.lines.size(), 3U);
    EXPECT_EQ(Texts(log.lines.begin(), log.lines.begin() + 3), (Texts{"+A", "+A/Ethernet1", "A/Ethernet1 10"}));
    EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  }
}

TEST(LibSmTopo, withoutVlansGoesAtOnce) {
  Empty agent(inst);
  agent.config->topoConfigIs("A", 1);
  const Mox::Ptr<TopoConfigSm> sm = agent.libSm->topoConfigSm("A");
  agent.config->topoConfigDel("A");
  EXPECT_FALSE(agent.isPublished("A"));
  EXPECT_TRUE(sm->isRetired());
  EXPECT_EQ(sm->references(), 1U);
}

TEST(LibSmTopo, whoseLastVlanHasLeftIsKeptWhileItIsWanted) {
  TwoVlans agent;
  const Mox::Ptr<TopoConfigSm> sm = agent.libSm->topoConfigSm("A");
  agent.config->vidToTopoMapDelAll();
  agent.drain();
  EXPECT_EQ(agent.libSm->topoConfigSm("A"), sm.get());
  ASSERT_NE(agent.state->topo("A"), nullptr);
  EXPECT_TRUE(agent.state->topo("A")->port().empty());
  ASSERT_NE(agent.libSm->topoToVlanMap()->mappedVlan("A"), nullptr);
  agent.config->topoConfigDel("A");
  EXPECT_EQ(agent.state->topo("A"), nullptr) << "its set is there, and empty";
}

// Lingering, and orphaned.

TEST(LibSmTopo, withVlansLingersUntilTheLastHasLeft) {
  TwoVlans agent;
  const Mox::Ptr<TopoConfigSm> sm = agent.libSm->topoConfigSm("A");
  agent.config->topoConfigDel("A");
  EXPECT_EQ(agent.libSm->topoConfigSm("A"), sm.get());
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  for (const int vid : {10, 20}) {
    ASSERT_NE(agent.libSm->dirtyVlanDir()->dirtyVlan(vid), nullptr);
    EXPECT_TRUE(agent.libSm->dirtyVlanDir()->dirtyVlan(vid)->dirty());
  }
  StateLog log(agent.state);
  agent.drain();
  EXPECT_EQ(log.lines, (Texts{"A/Ethernet1 no 10", "-A/Ethernet1", "A/Ethernet2 no 20", "-A/Ethernet2", "-A"}));
  EXPECT_EQ(agent.libSm->topoConfigSm("A"), nullptr);
  EXPECT_EQ(agent.libSm->topoToVlanMap()->mappedVlan("A"), nullptr);
}

TEST(LibSmTopo, lingersAsWellWhenOnlyItsStatusHasGone) {
  for (const Start& how : {plain, instNotified}) {
    TwoVlans agent(how);
    agent.status->topoStatusDel("A");
    agent.statusInst->topoStatusDel("A");
    EXPECT_NE(agent.libSm->topoConfigSm("A"), nullptr);
    agent.drain();
    EXPECT_EQ(agent.libSm->topoConfigSm("A"), nullptr);
    EXPECT_EQ(agent.state->topo("A"), nullptr);
    EXPECT_EQ(agent.libSm->topoToVlanMap()->mappedVlan("A"), nullptr);
  }
}

TEST(LibSmTopo, withoutDeferralIsGoneWhenItsConfigurationIs) {
  TwoVlans agent(instAtOnce);
  const StateLog log(agent.state);
  agent.config->topoConfigDel("A");
  EXPECT_EQ(log.lines, (Texts{"A/Ethernet1 no 10", "-A/Ethernet1", "A/Ethernet2 no 20", "-A/Ethernet2", "-A"}));
  EXPECT_EQ(agent.libSm->topoConfigSm("A"), nullptr);
}

TEST(LibSmTopo, configuredAgainWhileItLingersIsAnOrphanAndRebuilt) {
  TwoVlans agent;
  const Mox::Ptr<TopoConfigSm> old = agent.libSm->topoConfigSm("A");
  const Mox::Ptr<const Bridging::Topology::TopoConfig> oldConfig = agent.topoConfig();
  EXPECT_FALSE(topoIsOrphan(agent.libSm, agent.topoConfig()));
  agent.config->topoConfigDel("A");
  agent.restore();
  EXPECT_EQ(agent.libSm->topoConfigSm("A"), old.get());
  EXPECT_TRUE(topoIsOrphan(agent.libSm, agent.topoConfig()));
  EXPECT_FALSE(topoIsOrphan(agent.libSm, oldConfig)) << "on that it stands";
  StateLog log(agent.state);
  agent.drain();
  EXPECT_NE(agent.libSm->topoConfigSm("A"), old.get());
  EXPECT_FALSE(topoIsOrphan(agent.libSm, agent.topoConfig()));
  EXPECT_EQ(agent.libSm->topoConfigSm("A")->topoConfig(), agent.topoConfig().get());
  EXPECT_TRUE(log.has("-A") && log.has("+A"));
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 20));
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
}

TEST(LibSmTopo, whosePlainStatusWasReplacedIsAnOrphanAndRebuilt) {
  TwoVlans agent(plain);
  const Mox::Ptr<TopoConfigSm> old = agent.libSm->topoConfigSm("A");
  agent.status->topoStatusDel("A");
  EXPECT_TRUE(topoIsOrphan(agent.libSm, agent.topoConfig())) << "its status is gone";
  agent.status->topoStatusIs("A")->topoPortStatusIs("Ethernet1");
  EXPECT_TRUE(topoIsOrphan(agent.libSm, agent.topoConfig()));
  agent.drain();
  EXPECT_NE(agent.libSm->topoConfigSm("A"), old.get());
  EXPECT_EQ(agent.libSm->topoConfigSm("A")->topoStatus(), agent.status->topoStatus("A"));
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
}

TEST(LibSmTopo, whoseInstanceStatusWasReplacedIsNoOrphan) {
  TwoVlans agent;
  agent.statusInst->topoStatusDel("A");
  EXPECT_FALSE(topoIsOrphan(agent.libSm, agent.topoConfig()));
  agent.statusInst->topoStatusIs("A", 1);
  EXPECT_FALSE(topoIsOrphan(agent.libSm, agent.topoConfig()));
}

TEST(LibSmTopo, isNoOrphanWithoutConfigurationOrStateMachine) {
  Empty agent(plain);
  EXPECT_FALSE(topoIsOrphan(agent.libSm, nullptr));
  agent.config->topoConfigIs("A", 1);
  EXPECT_FALSE(topoIsOrphan(agent.libSm, agent.config->topoConfig("A")));
}

// Asked for from outside.

TEST(LibSmTopo, isPresentWhileConfiguredAndInService) {
  Empty agent(plain);
  EXPECT_FALSE(isTopoPresent(agent.libSm, ""));
  EXPECT_FALSE(isTopoPresent(agent.libSm, "A"));
  agent.config->topoConfigIs("A", 1);
  EXPECT_FALSE(isTopoPresent(agent.libSm, "A")) << "it has no state machine";
  agent.status->topoStatusIs("A");
  EXPECT_TRUE(isTopoPresent(agent.libSm, "A"));
  agent.config->topoConfigIs("", 2);
  agent.status->topoStatusIs("");
  EXPECT_NE(agent.libSm->topoConfigSm(""), nullptr);
  EXPECT_FALSE(isTopoPresent(agent.libSm, "")) << "the empty name stands for no topology";
}

TEST(LibSmTopo, isNotPresentWhileItLingers) {
  TwoVlans agent;
  EXPECT_TRUE(isTopoPresent(agent.libSm, "A"));
  agent.config->topoConfigDel("A");
  EXPECT_FALSE(isTopoPresent(agent.libSm, "A"));
}

TEST(LibSmTopo, isNotDeletedWhileVlansAreMapped) {
  TwoVlans agent;
  agent.libSm->hasNotificationActiveIs(false);
  agent.config->topoConfigDel("A");
  maybeDeleteTopo(agent.libSm, "A");
  EXPECT_NE(agent.libSm->topoConfigSm("A"), nullptr);
  agent.libSm->topoToVlanMap()->mappedVlan("A")->vlanDelAll();
  maybeDeleteTopo(agent.libSm, "A");
  EXPECT_EQ(agent.libSm->topoConfigSm("A"), nullptr);
  EXPECT_EQ(agent.state->topo("A"), nullptr);
  EXPECT_EQ(agent.libSm->topoToVlanMap()->mappedVlan("A"), nullptr);
}

TEST(LibSmTopo, withoutSetOfVlansIsNotDeletedEvenIfItsConfigurationIsGone) {
  Switch agent(inst);
  agent.startLibrary();
  agent.libSm->hasNotificationActiveIs(false);
  agent.config->topoConfigDel("A");
  ASSERT_EQ(agent.libSm->topoToVlanMap()->mappedVlan("A"), nullptr);
  maybeDeleteTopo(agent.libSm, "A");
  EXPECT_NE(agent.libSm->topoConfigSm("A"), nullptr);
  EXPECT_NE(agent.state->topo("A"), nullptr);
  agent.libSm->topoToVlanMapDel();
  maybeDeleteTopo(agent.libSm, "A");
  EXPECT_NE(agent.state->topo("A"), nullptr);
}

}  // namespace Topology::Library::LibSmTopoTest
