// What becomes of the expansion of a VLAN that goes out of service.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/topolib/Observed.h"
#include "tests/topolib/StateLog.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::LibSmVlanExpansionTest {

using Test::inst;
using Test::StateLog;
using Test::Switch;
using Texts = std::vector<std::string>;

/// VLAN 20, in topology B, expands into VLAN 10, in A, and so reaches Ethernet1; it has a port of its own as well.
class Expanding : public testing::Test {
 protected:
  Expanding() {
    for (const char* const name : {"B", "C"}) agent.topoIs(name, 2);
    agent.vlanIs(20, "B");
    agent.memberIs(20, "Ethernet2");
    agent.brConfig->vlanConfig(20)->floodsetExpandedVlanIs(10);
    agent.startLibrary();
    agent.drain();
    EXPECT_TRUE(agent.carries("B", "Ethernet1", 20)) << "inherited";
    EXPECT_TRUE(agent.carries("B", "Ethernet2", 20)) << "its own";
    EXPECT_TRUE(agent.libSm->vlanToExpVlanSetMapHas(20));
    EXPECT_TRUE(agent.libSm->expVlanToVlanSetMapHas(10));
    EXPECT_NE(agent.libSm->vidToExpandedTopoMap(20), nullptr);
  }

  void expectNoExpansion() {
    EXPECT_TRUE(agent.libSm->vlanToExpVlanSetMap().empty());
    EXPECT_TRUE(agent.libSm->expVlanToVlanSetMap().empty());
    EXPECT_TRUE(agent.libSm->vidToExpandedTopoMap().empty());
  }

  Switch agent{inst};
};

TEST_F(Expanding, outOfServiceExpandsIntoNothing) {
  agent.libSm->doVlanUnmapped(20);
  expectNoExpansion();
}

TEST_F(Expanding, entriesWhereItIsRegisteredAreLeftToTheVisit) {
  const StateLog log(agent.state);
  agent.libSm->doVlanUnmapped(20);
  EXPECT_TRUE(log.lines.empty());
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 20));
}

TEST_F(Expanding, visitThatTakesItOutOfServiceRemovesThem) {
  agent.brConfig->vlanConfigDel(20);
  agent.drain();
  expectNoExpansion();
  EXPECT_EQ(agent.libSm->vlanConfigSm(20), nullptr);
  ASSERT_NE(agent.state->topo("B"), nullptr);
  EXPECT_TRUE(agent.state->topo("B")->port().empty());
  EXPECT_TRUE(agent.carries("A", "Ethernet1", 10));
}

TEST_F(Expanding, entriesElsewhereAreWithdrawn) {
  agent.vlanIs(20, "C");
  ASSERT_TRUE(agent.carries("C", "Ethernet1", 20)) << "an expansion moves at once";
  ASSERT_TRUE(vlanMappedToTopo(agent.libSm, "B", 20)) << "the VLAN itself has not moved yet";
  agent.libSm->doVlanUnmapped(20);
  expectNoExpansion();
  EXPECT_FALSE(agent.carries("C", "Ethernet1", 20));
  EXPECT_TRUE(agent.carries("B", "Ethernet2", 20)) << "left to the visit";
}

TEST_F(Expanding, recordThatIsNotTheConfiguredTopologyIsNoError) {
  agent.libSm->vidToExpandedTopoMapIs(20, "C");
  agent.libSm->doVlanUnmapped(20);
  expectNoExpansion();
}

TEST_F(Expanding, expandedVlanOutOfServiceLeavesTheExpansionAlone) {
  agent.libSm->doVlanUnmapped(10);
  EXPECT_TRUE(agent.libSm->vlanToExpVlanSetMapHas(20));
  EXPECT_TRUE(agent.libSm->expVlanToVlanSetMapHas(10));
}

TEST_F(Expanding, oneOfTwoThatGoesLeavesTheOther) {
  agent.vlanIs(30, "B");
  agent.brConfig->vlanConfigIs(30)->floodsetExpandedVlanIs(10);
  agent.drain();
  ASSERT_TRUE(agent.carries("B", "Ethernet1", 30));
  agent.brConfig->vlanConfigDel(20);
  agent.drain();
  EXPECT_FALSE(agent.libSm->vlanToExpVlanSetMapHas(20));
  EXPECT_TRUE(agent.libSm->vlanToExpVlanSetMapHas(30));
  ASSERT_TRUE(agent.libSm->expVlanToVlanSetMapHas(10));
  EXPECT_FALSE(agent.carries("B", "Ethernet1", 20));
  EXPECT_TRUE(agent.carries("B", "Ethernet1", 30));
}

TEST_F(Expanding, mayBecomeExpandedItselfOnceItsConfigurationWasReplaced) {
  agent.brConfig->vlanConfigDel(20);
  agent.memberIs(20, "Ethernet2");
  agent.vlanIs(30, "C");
  agent.brConfig->vlanConfigIs(30)->floodsetExpandedVlanIs(20);
  agent.drain();
  EXPECT_FALSE(agent.libSm->vlanToExpVlanSetMapHas(20));
  EXPECT_TRUE(agent.libSm->expVlanToVlanSetMapHas(20));
  EXPECT_TRUE(agent.carries("C", "Ethernet2", 30));
  agent.vlanIs(20, "A");
  agent.drain();
  EXPECT_TRUE(agent.carries("A", "Ethernet2", 20));
}

}  // namespace Topology::Library::LibSmVlanExpansionTest
