// The reactors of the library are counted by their class, so that one that outlives its work can be named.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>

#include "mox/AllocationTrack.h"
#include "tests/topolib/Switch.h"

namespace Topology::Library::ReactorCountTest {

using Test::inst;
using Test::Switch;
using Counts = std::map<std::string, std::uint64_t>;

/// How many reactors of each class of the library live.
Counts living() {
  const std::string library = "Topology::Library::";
  Counts counts;
  for (const Mox::AllocationCount& count : Mox::allocationCounts()) {
    if (count.living != 0 && count.type.starts_with(library)) counts[count.type.substr(library.size())] = count.living;
  }
  return counts;
}

TEST(ReactorCount, hasAReactorForEachEntityThatIsWatched) {
  ASSERT_EQ(living(), Counts{});
  {
    Switch agent{inst};
    agent.intfDir->intfStatusIs("Ethernet1")->forwardingModelIs(Interface::ForwardingModel::bridged);
    agent.startLibrary();
    agent.drain();
    const auto publisher =
        agent.root->topologyStatusLibSmIs(agent.statusInst, agent.state, agent.config, agent.intfDir);
    EXPECT_EQ(living(), (Counts{{"EthIntfSm::MoxEthIntfStatus", 1},
                                {"LibSm::MoxBrConfig", 1},
                                {"LibSm::MoxConfig", 1},
                                {"LibSm::MoxEthIntfStatusDir", 1},
                                {"LibSm::MoxStatus", 1},
                                {"LibSm::MoxStatusInst", 1},
                                {"TopoConfigSm::MoxEthIntfStatusDir", 1},
                                {"TopoConfigSm::MoxTopoConfig", 1},
                                {"TopoConfigSm::MoxTopoInstStatus", 1},
                                {"TopoConfigSm::MoxTopoStatus", 1},
                                {"TopoLibCodef::MoxClock", 1},
                                {"TopoLibCodef::MoxDirtyVlanDir", 1},
                                {"TopoPortConfigSm::MoxTopoPortConfig", 1},
                                {"TopoSm::MoxEthIntfStatus", 1},
                                {"TopoSm::MoxTopo", 1},
                                {"TopologyStatusLibSm::MoxLibState", 1},
                                {"VlanConfigSm::MoxVlanConfig", 1}}));
    agent.libSm->doOnVlanPortUpdate(10, {});
    EXPECT_EQ(living()["TopoLibCodef::MoxDirtyVlan"], 1U);
    agent.drain();
    EXPECT_EQ(living()["TopoLibCodef::MoxDirtyVlan"], 0U);
  }
  EXPECT_EQ(living(), Counts{});
}

}  // namespace Topology::Library::ReactorCountTest
