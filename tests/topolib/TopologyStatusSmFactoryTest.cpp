// How the status publisher makes the state machines of its topologies, and what it asserts.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "mox/Exception.h"
#include "tests/topolib/Publisher.h"

namespace Topology::Library::TopologyStatusSmFactoryTest {

using Test::Publisher;
using Contents = std::set<std::string>;

/// A topology that names itself otherwise than its key.
class Misnamed : public TopoSm {
 public:
  using TopoSm::TopoSm;
  [[nodiscard]] Mox::String name() const override { return "other"; }
};

/// Counts, and makes state machines of its own.
class CountingFactory : public TopologyStatusSmFactory {
 public:
  using TopologyStatusSmFactory::TopologyStatusSmFactory;
  [[nodiscard]] Mox::Ptr<TopoSm> createTopoSm(
      const Mox::Ptr<const Topo>& topo, const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
      const Mox::Ptr<Bridging::Topology::Inst::TopoStatus>& topoStatus) const override {
    ++count;
    if (isMisnaming) return Mox::makePtr<Misnamed>(topo, ethIntfStatusDir(), topoConfig, topoStatus);
    return TopologyStatusSmFactory::createTopoSm(topo, topoConfig, topoStatus);
  }
  mutable unsigned count = 0;
  bool isMisnaming = false;
};

TEST(TopologyStatusSmFactory, makesTopologiesWithTheFactoryOfTheClient) {
  Publisher agent;
  agent.portUp("A");
  agent.state->initDoneIs(true);
  const auto factory = Mox::makePtr<CountingFactory>(agent.intfDir);
  agent.sm =
      TopologyStatusLibSm::TopologyStatusLibSmIs(agent.status, agent.state, agent.config, agent.intfDir, factory);
  EXPECT_EQ(agent.sm->smFactory(), factory);
  EXPECT_EQ(factory->count, 1U);
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "A/Ethernet1 0"}));
}

TEST(TopologyStatusSmFactory, takesAnotherFactoryOn) {
  Publisher agent;
  agent.start();
  const auto factory = Mox::makePtr<CountingFactory>(agent.intfDir);
  const ::Test::Recorder recorder(agent.sm.get());
  agent.sm->smFactoryIs(factory);
  agent.sm->smFactoryIs(factory);
  agent.topoIs("A");
  EXPECT_EQ(factory->count, 1U);
  EXPECT_EQ(recorder.events.front(), (::Test::Recorder::Event{TopologyStatusLibSm::smFactoryAttr.id(), false}));
  EXPECT_EQ(recorder.events.size(), 2U) << "the factory and then the topology";
}

TEST(TopologyStatusSmFactory, isToldToRemoveItsTopologies) {
  Publisher agent;
  agent.portUp("A");
  agent.portUp("B", "Ethernet2");
  agent.start();
  agent.sm->topoSmDel("A");
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "B 1", "B/Ethernet2 0"})) << "the ports are cleaned up";
  agent.sm->topoSmDel("A");
  agent.sm->topoSmDelAll();
  EXPECT_EQ(agent.contents(), (Contents{"A 1", "B 1"}));
  EXPECT_TRUE(agent.sm->topoSm().empty());
}

TEST(TopologyStatusSmFactory, takesNoNullTopology) {
  Publisher agent;
  agent.start();
  try {
    agent.sm->topoSmIs(nullptr);
    FAIL();
  } catch (const Mox::MutatorArgNullPointerException& e) {
    EXPECT_STREQ(e.what(), "topoSmIs: argument topoSm must not be null");
  }
}

TEST(TopologyStatusLibSmDeathTest, withoutAState) {
  const Publisher agent;
  EXPECT_EXIT((void)agent.root->topologyStatusLibSmIs(agent.status, nullptr, agent.config, agent.intfDir),
              testing::KilledBySignal(SIGABRT), ::Test::assertionReport("libState()", "handleInitialized"));
}

TEST(TopologyStatusLibSmDeathTest, withATopologyOnAnOlderEntity) {
  Publisher agent;
  agent.topoIs("A");
  agent.start();
  agent.sm->hasNotificationActiveIs(false);
  const Mox::Ptr<Topo> old = agent.state->topo("A");
  agent.state->topoDel("A");
  agent.topoIs("A");
  EXPECT_EXIT(agent.sm->handleTopo("A"), testing::KilledBySignal(SIGABRT),
              testing::AllOf(testing::StartsWith("/src/Sylk/TopoLib:"),
                             testing::EndsWith(": Assertion 'topoSm->topo() == topo' failed.\n")));
}

TEST(TopologyStatusLibSmDeathTest, withATopologyWithoutConfiguration) {
  Publisher agent;
  agent.start();
  EXPECT_EXIT((void)agent.state->topoIs("A"), testing::KilledBySignal(SIGABRT),
              testing::AllOf(testing::StartsWith("/src/Sylk/TopoLib:"),
                             testing::EndsWith(": Assertion 'topoConfig && topoStatus' failed.\n")));
}

TEST(TopologyStatusLibSmDeathTest, withATopologyUnderAnotherName) {
  Publisher agent;
  agent.start();
  const auto factory = Mox::makePtr<CountingFactory>(agent.intfDir);
  factory->isMisnaming = true;
  agent.sm->smFactoryIs(factory);
  EXPECT_EXIT(agent.topoIs("A"), testing::KilledBySignal(SIGABRT),
              ::Test::assertionReport("fwkKey() == KeyFunktor()( _value )", "topoSmIs"));
}

}  // namespace Topology::Library::TopologyStatusSmFactoryTest
