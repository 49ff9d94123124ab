// How LibSm starts on inputs that are absent or that exclude each other, and on a state that was used before.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmInputsTest {

using Test::Agent;
using Test::assertionReport;
using Test::inst;
using Test::instAtOnce;
using Test::StateLog;
using Test::Switch;
using Texts = std::vector<std::string>;

TEST(LibSmInputs, nullConfigurationHoldsNothing) {
  Agent agent(inst);
  agent.config = nullptr;
  const StateLog log(agent.state);
  agent.startLibrary();
  EXPECT_EQ(agent.libSm->config(), nullptr);
  EXPECT_EQ(log.lines, (Texts{"initDone"}));
  agent.memberIs(10, "Ethernet1");
  agent.statusInst->topoStatusIs("A", 1);
  agent.drain();
  EXPECT_NE(agent.libSm->vlanConfigSm(10), nullptr);
  EXPECT_EQ(log.lines, (Texts{"initDone"}));
  EXPECT_FALSE(isTopoPresent(agent.libSm, "A"));
  agent.libSm->doOnInitDone();
  maybeDeleteTopo(agent.libSm, "A");
}

TEST(LibSmInputs, nullBridgingConfigurationIsAllowedWhileNoVlanIsProcessed) {
  Agent agent(instAtOnce);
  agent.brConfig = nullptr;
  agent.topoIs("A");
  agent.startLibrary();
  EXPECT_EQ(agent.libSm->brConfig(), nullptr);
  EXPECT_TRUE(agent.state->initDone());
  EXPECT_NE(agent.state->topo("A"), nullptr);
}

TEST(LibSmInputs, topologyLeftByAnEarlierOneIsNobodysUntilItIsConfigured) {
  Agent agent(inst);
  agent.state->topoIs("A")->portIs("Ethernet1")->vlanPortConfigIs(99, {});
  agent.vlanIs(10, "A");
  agent.memberIs(10, "Ethernet2");
  agent.startLibrary();
  agent.drain();
  EXPECT_EQ(agent.libSm->topoConfigSm("A"), nullptr);
  EXPECT_FALSE(agent.carries("A", "Ethernet2", 10));
  agent.libSm->doOnVlanPortConfigAdd(10, "Ethernet3", "A");
  EXPECT_TRUE(agent.carries("A", "Ethernet3", 10)) << "there is nobody to tell of the new port";
  agent.libSm->doOnVlanPortConfigDelete(10, "Ethernet3", "A");
  EXPECT_EQ(agent.port("A", "Ethernet3"), nullptr);
  const Topo* const left = agent.state->topo("A");
  agent.topoIs("A");
  agent.topoPortIs("A", "Ethernet1");
  agent.drain();
  EXPECT_EQ(agent.state->topo("A"), left);
  EXPECT_NE(agent.libSm->topoConfigSm("A"), nullptr);
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 10));
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active()) << "what the earlier one left is taken over";
}

TEST(LibSmInputsDeathTest, nullStateAborts) {
  Switch agent(inst);
  agent.state = nullptr;
  EXPECT_DEATH(agent.startLibrary(), assertionReport("libState()", "LibSm::handleInitialized"));
}

TEST(LibSmInputsDeathTest, nullStateAbortsNotBeforeTheStartUp) {
  Switch agent;
  agent.state = nullptr;
  agent.startWaiting();
  EXPECT_DEATH(agent.libSm->ethIntfStatusDirIs(agent.intfDir),
               assertionReport("libState()", "LibSm::handleInitialized"));
}

TEST(LibSmInputsDeathTest, bothKindsOfStatusAbort) {
  Switch agent;
  const auto libSm = agent.root->doStartLibSm("libSm", agent.config, agent.status, agent.statusInst, agent.brConfig,
                                              agent.state, LibSmMode::createStatus, true, true, "");
  EXPECT_FALSE(libSm->initialized());
  EXPECT_DEATH(libSm->ethIntfStatusDirIs(agent.intfDir),
               assertionReport("!status() || !statusInst()", "LibSm::handleInitialized"));
}

TEST(LibSmInputsDeathTest, nullBridgingConfigurationAbortsWhenAVlanIsProcessed) {
  Switch agent(inst);
  agent.brConfig = nullptr;
  agent.startLibrary();
  EXPECT_DEATH(agent.drain(), assertionReport("brConfig()", "LibSm::bridging"));
  agent.config->vidToTopoMapDel(10);
}

}  // namespace Topology::Library::LibSmInputsTest
