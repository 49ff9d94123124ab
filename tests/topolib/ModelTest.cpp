// The library against the model: random sequences of changes, in every arrangement, must end in the state that the inputs
// alone tell.
//
// Each sequence has a seed of its own; a failure prints it, and TOPOLIB_TEST_SEED replays it as the first one.
// tests/support/Effort.h says how many there are.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/support/Effort.h"
#include "tests/topolib/Switch.h"
#include "tests/topolib/model/Chance.h"
#include "tests/topolib/model/Shrink.h"

namespace Topology::Library::ModelTest {

using Test::action;
using Test::Agent;
using Test::Chance;
using Test::Check;
using Test::firstFailing;
using Test::mapVlan;
using Test::Play;
using Test::randomSeed;
using Test::Running;
using Test::Sequence;
using Test::sequences;
using Test::shrunk;
using Test::shrunkReport;
using Test::Start;
using Status = Start::Status;

/// How a test is arranged; what it leaves open is up to chance.
struct Case {
  const char* name;
  Status status;
  LibSmMode mode;
  bool deferProcessing;
  double tick = 0.0;
  bool yieldAfterOne = false;
  bool hasReaders = false;
};

std::ostream& operator<<(std::ostream& out, const Case& c) { return out << c.name; }

class Model : public testing::TestWithParam<Case> {
 protected:
  static constexpr std::size_t sequencesPerCase = 500;

  [[nodiscard]] static Sequence sequence(std::uint64_t seed) {
    const Case& c = GetParam();
    return Chance(seed).sequence({.start = {.status = c.status, .mode = c.mode, .deferProcessing = c.deferProcessing},
                                  .tick = c.tick,
                                  .yieldAfterOne = c.yieldAfterOne,
                                  .hasReaders = c.hasReaders});
  }
};

TEST_P(Model, tellsWhatIsPublished) {
  const std::uint64_t first = randomSeed();
  const std::size_t count = sequences(sequencesPerCase);
  const std::size_t failing = firstFailing(count, [first](std::size_t n) { return sequence(first + n); });
  ASSERT_EQ(failing, count) << "TOPOLIB_TEST_SEED=" << first + failing << '\n'
                            << shrunkReport(sequence(first + failing));
  // And some in this process, where leaks show.
  for (std::uint64_t seed = first; seed < first + 20; ++seed) {
    EXPECT_EQ(Play(sequence(seed)).run(), std::nullopt) << "TOPOLIB_TEST_SEED=" << seed;
  }
}

constexpr auto createStatus = LibSmMode::createStatus;
constexpr auto notifyStatus = LibSmMode::notifyStatus;
constexpr double slice = 0.0031;  // some three readings of the time make a slice

INSTANTIATE_TEST_SUITE_P(Immediate, Model,
                         testing::Values(Case{"plain", Status::plain, createStatus, false},
                                         Case{"instance", Status::instance, createStatus, false},
                                         Case{"instanceThatNotifies", Status::instance, notifyStatus, false},
                                         Case{"none", Status::none, createStatus, false}),
                         testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(InSlices, Model,
                         testing::Values(Case{"plain", Status::plain, createStatus, true, slice},
                                         Case{"instance", Status::instance, createStatus, true, slice},
                                         Case{"instanceThatNotifies", Status::instance, notifyStatus, true, slice},
                                         Case{"none", Status::none, createStatus, true, slice}),
                         testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(ItemByItem, Model,
                         testing::Values(Case{"plain", Status::plain, createStatus, true, 0.0, true},
                                         Case{"instance", Status::instance, createStatus, true, 0.0, true},
                                         Case{"instanceThatNotifies", Status::instance, notifyStatus, true, 0.0, true}),
                         testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(AtOnce, Model,
                         testing::Values(Case{"plain", Status::plain, createStatus, true},
                                         Case{"instance", Status::instance, createStatus, true},
                                         Case{"instanceThatNotifies", Status::instance, notifyStatus, true}),
                         testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(
    WithReaders, Model,
    testing::Values(Case{"immediatePlain", Status::plain, createStatus, false, 0.0, false, true},
                    Case{"immediateInstance", Status::instance, createStatus, false, 0.0, false, true},
                    Case{"immediateInstanceThatNotifies", Status::instance, notifyStatus, false, 0.0, false, true},
                    Case{"atOncePlain", Status::plain, createStatus, true, 0.0, false, true},
                    Case{"itemByItemPlain", Status::plain, createStatus, true, 0.0, true, true},
                    Case{"itemByItemInstance", Status::instance, createStatus, true, 0.0, true, true},
                    Case{"inSlicesInstanceThatNotifies", Status::instance, notifyStatus, true, slice, false, true}),
    testing::PrintToStringParamName());

/// An agent whose library has published a port.
struct ModelCheck : testing::Test {
  [[nodiscard]] std::vector<std::string> differences() const { return Check(agent).differences(); }
  [[nodiscard]] bool hasDifference(const std::string& text) const {
    const std::vector<std::string> all = differences();
    return std::find(all.begin(), all.end(), text) != all.end();
  }
  [[nodiscard]] Port& port() const { return *agent.state->topo("A")->port("Ethernet1"); }

  Running agent{Start{}};
};

TEST_F(ModelCheck, isContentWithWhatIsRight) { EXPECT_EQ(differences(), std::vector<std::string>()); }

TEST_F(ModelCheck, noticesATopologyTooMany) {
  (void)agent.state->topoIs("B");
  EXPECT_EQ(differences(), (std::vector<std::string>{"B: is not wanted", "B: has no TopoConfigSm"}));
}

TEST_F(ModelCheck, noticesAMissingTopology) {
  agent.state->topoDel("A");
  EXPECT_EQ(differences().front(), "A: is missing");
}

TEST_F(ModelCheck, noticesAPortTooMany) {
  agent.state->topo("A")->portIs("Ethernet2")->vlanPortConfigIs(10, {});
  EXPECT_EQ(differences(), std::vector<std::string>{"A/Ethernet2: should not be there"});
}

TEST_F(ModelCheck, noticesAMissingPort) {
  agent.state->topo("A")->portDel("Ethernet1");
  EXPECT_EQ(differences().front(), "A/Ethernet1: is missing");
}

TEST_F(ModelCheck, noticesEntriesThatDiffer) {
  port().vlanPortConfigIs(10, Bridging::VlanPortConfig(Bridging::AllowedTrafficDirection::egress));
  port().vlanPortConfigIs(20, {});
  EXPECT_EQ(differences(), (std::vector<std::string>{"A/Ethernet1: VLAN 10 has another value",
                                                     "A/Ethernet1: VLAN 20 should not be there"}));
}

TEST_F(ModelCheck, noticesAnotherActivity) {
  port().activeIs(false);
  EXPECT_EQ(differences()[1], "A/Ethernet1: is not active");
  port().activeIs(true);
  port().stateIs(Bridging::Topology::PortState::learning);
  port().fdbFlushIs(3);
  EXPECT_EQ(differences(), (std::vector<std::string>{"A/Ethernet1: state learning, should be forwarding",
                                                     "A/Ethernet1: fdbFlush 3, should be 0"}));
}

TEST_F(ModelCheck, noticesAVlanRegisteredTwice) {
  agent.libSm->topoToVlanMap()->mappedVlanIs("B")->vlanIs(10);
  EXPECT_TRUE(hasDifference("VLAN 10 is registered with more than one topology"));
}

TEST_F(ModelCheck, noticesWorkLeft) {
  agent.memberIs(10, "Ethernet2");
  EXPECT_TRUE(hasDifference("the directory of dirty VLANs is not empty"));
}

TEST(ModelShrink, leavesOnlyWhatItFailsWith) {
  Sequence sequence = Chance(1).sequence({}, 60);
  const auto abortIfMapped = [](Agent& agent) {
    if (agent.config->vidToTopoMapHas(4000)) std::abort();
  };
  sequence.items.insert(sequence.items.begin() + 7, {.action = mapVlan(4000, "A")});
  sequence.items.insert(sequence.items.begin() + 33, {.action = action(abortIfMapped, "abortIfMapped()")});
  const Sequence shortest = shrunk(sequence);
  ASSERT_EQ(shortest.items.size(), 2U);
  EXPECT_EQ(Sequence::line(shortest.items[0]), "config->vidToTopoMapIs(4000, \"A\")");
  EXPECT_EQ(Sequence::line(shortest.items[1]), "abortIfMapped()");
}

}  // namespace Topology::Library::ModelTest
