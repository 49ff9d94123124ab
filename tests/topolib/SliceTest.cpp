// Every slice boundary: a reconfiguration is interrupted after each of its work items, the inputs change there, and the
// library must end in the state that the inputs tell.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "tests/support/Effort.h"
#include "tests/topolib/model/Chance.h"
#include "tests/topolib/model/EntryJournal.h"
#include "tests/topolib/model/Scenes.h"
#include "tests/topolib/model/Shrink.h"

namespace Topology::Library::SliceTest {

using Test::Action;
using Test::Actions;
using Test::addPort;
using Test::Agent;
using Test::Arrangement;
using Test::deleteStatus;
using Test::dispatchOnce;
using Test::disturbances;
using Test::EntryJournal;
using Test::firstFailing;
using Test::furniture;
using Test::fuzzFactor;
using Test::makeStatus;
using Test::mapVlan;
using Test::Play;
using Test::Random;
using Test::randomSeed;
using Test::remakeVlan;
using Test::removePort;
using Test::Scene;
using Test::scenes;
using Test::seedTrace;
using Test::Sequence;
using Test::sequences;
using Test::shrunkReport;
using Test::strideOver;
using Status = Test::Start::Status;

void append(Sequence& sequence, const Actions& actions) {
  for (const Action& action : actions) sequence.items.push_back({.action = action});
}

class Slice : public testing::TestWithParam<Scene> {
 protected:
  /// Where slices end: after one work item, because of the switch or because the time is up.
  static std::vector<Arrangement> arrangements() {
    return {
        {.start = {}, .tick = 0.0, .yieldAfterOne = true},
        {.start = {}, .tick = 0.02, .yieldAfterOne = false},
        {.start = {.status = Status::instance}, .tick = 0.0, .yieldAfterOne = true},
        {.start = {.status = Status::instance, .mode = LibSmMode::notifyStatus}, .tick = 0.0, .yieldAfterOne = true}};
  }

  /// The reconfiguration, up to its first slice.
  [[nodiscard]] static Sequence reconfiguration(const Arrangement& arrangement) {
    const Scene& scene = GetParam();
    Sequence result{.arrangement = arrangement, .items = {}};
    append(result, furniture());
    append(result, scene.before);
    result.items.push_back({.step = Sequence::Step::start});
    if (!scene.isFirstSync) result.items.push_back({.step = Sequence::Step::drain});
    append(result, scene.change);
    return result;
  }

  /// How many slices it takes when nothing interrupts it.
  [[nodiscard]] static std::size_t slices(const Arrangement& arrangement) {
    const Sequence sequence = reconfiguration(arrangement);
    Play play(sequence);
    EXPECT_EQ(play.run(), std::nullopt);
    return play.rounds();
  }
};

TEST_P(Slice, canEndAfterAnyItemAndFindOtherInputs) {
  const std::vector<Actions> changes = disturbances();
  for (const Arrangement& arrangement : arrangements()) {
    const std::size_t stride = strideOver(changes.size());
    const std::size_t count = (slices(arrangement) + 1) * changes.size() / stride;
    const auto sequence = [&](std::size_t nth) {
      const std::size_t n = nth * stride;
      Sequence result = reconfiguration(arrangement);
      append(result, Actions(n / changes.size(), dispatchOnce()));
      append(result, changes[n % changes.size()]);
      return result;
    };
    const std::size_t failing = firstFailing(count, sequence);
    ASSERT_EQ(failing, count) << shrunkReport(sequence(failing));
  }
}

TEST_P(Slice, canEndTwiceAndFindOtherInputsEachTime) {
  const std::vector<Actions> changes = disturbances();
  const Arrangement arrangement = arrangements().front();
  const std::size_t pairs = changes.size() * changes.size();
  // One in seven or so, which meet all places and changes alike; all of them when there is time.
  const std::size_t stride = strideOver(changes.size(), fuzzFactor() > 1 ? 1 : 7);
  const std::size_t count = std::min(slices(arrangement), std::size_t{12}) * pairs / stride;
  const auto sequence = [&](std::size_t nth) {
    const std::size_t n = nth * stride;
    Sequence result = reconfiguration(arrangement);
    append(result, Actions(n / pairs, dispatchOnce()));
    append(result, changes[n % pairs / changes.size()]);
    append(result, Actions{dispatchOnce()});
    append(result, changes[n % changes.size()]);
    return result;
  };
  const std::size_t failing = firstFailing(count, sequence);
  ASSERT_EQ(failing, count) << shrunkReport(sequence(failing));
}

TEST_P(Slice, canEndAfterEachItemAndFindOtherInputsEachTime) {
  constexpr std::size_t items = 20;
  const std::vector<Actions> changes = disturbances();
  for (const Arrangement& arrangement : arrangements()) {
    const auto sequence = [&](std::size_t n) {
      Random random(randomSeed() + n);
      Sequence result = reconfiguration(arrangement);
      for (std::size_t item = 0; item < items; ++item) {
        if (random.percent(40)) append(result, changes[random.below(changes.size())]);
        append(result, Actions{dispatchOnce()});
      }
      return result;
    };
    const std::size_t count = sequences(300);
    const std::size_t failing = firstFailing(count, sequence);
    ASSERT_EQ(failing, count) << seedTrace() << '\n' << shrunkReport(sequence(failing));
  }
}

INSTANTIATE_TEST_SUITE_P(Of, Slice, testing::ValuesIn(scenes()), testing::PrintToStringParamName());

TEST(SliceOfATopologyThatReturns, findsVlansThatHaveLeftAndMovedOn) {
  constexpr std::size_t places = 8;
  const auto sequence = [](std::size_t n) {
    Sequence result{
        .arrangement = {.start = {.status = Status::instance, .mode = LibSmMode::notifyStatus}, .yieldAfterOne = true},
        .items = {}};
    append(result, furniture());
    append(result, {mapVlan(10, "A"), mapVlan(20, "A")});
    result.items.insert(result.items.end(), {{.step = Sequence::Step::start}, {.step = Sequence::Step::drain}});
    append(result, {deleteStatus("A")});
    append(result, Actions(n / places / places, dispatchOnce()));
    append(result, {addPort(10, "Ethernet1"), removePort(10, "Ethernet2")});
    append(result, Actions(n / places % places, dispatchOnce()));
    append(result, {mapVlan(10, "B")});
    append(result, Actions(n % places, dispatchOnce()));
    append(result, {makeStatus("A")});
    return result;
  };
  const std::size_t count = places * places * places;
  const std::size_t failing = firstFailing(count, sequence);
  ASSERT_EQ(failing, count) << shrunkReport(sequence(failing));
}

/// A library at rest whose next visits are watched.
struct Visit : testing::TestWithParam<Arrangement> {
  using Count = EntryJournal::Count;

  Visit() {
    agent.time->tickIs(GetParam().tick);
    apply(furniture());
    apply({mapVlan(10, "A"), mapVlan(20, "B")});
  }

  void apply(const Actions& actions) {
    for (const Action& action : actions) action.apply(agent);
  }
  void start() {
    agent.startLibrary();
    agent.libSm->topoLibCodef()->yieldAfterOneIs(GetParam().yieldAfterOne);
  }
  /// Settles, and counts from then on.
  void startAndSettle() {
    start();
    agent.drain();
    journal.emplace(agent.state);
  }
  /// Settles again, which takes several slices where they end early.
  void settle() {
    auto& codef = *agent.libSm->topoLibCodef();
    codef.yieldBeforeFinishingCountIs(0);
    agent.drain();
    const bool hasSlices = GetParam().yieldAfterOne || GetParam().tick != 0.0;
    EXPECT_EQ(codef.yieldBeforeFinishingCount() != 0, hasSlices);
  }

  Agent agent{GetParam().start};
  std::optional<EntryJournal> journal;
};

TEST_P(Visit, servesEachPortOnceInEachTopologyWhenAVlanMoves) {
  startAndSettle();
  apply({mapVlan(10, "C")});
  settle();
  for (const char* const intf : {"Ethernet2", "Ethernet3", "Ethernet4"}) {
    EXPECT_EQ(journal->count("A", intf, 10), (Count{.written = 0, .removed = 1})) << intf;
    EXPECT_EQ(journal->count("C", intf, 10), (Count{.written = 1, .removed = 0})) << intf;
  }
  EXPECT_EQ(journal->counts().size(), 6U);
}

TEST_P(Visit, removesAndWritesEachPortOnceWhenAVlanStaysInItsTopology) {
  startAndSettle();
  apply({remakeVlan(10)});
  settle();
  for (const char* const intf : {"Ethernet2", "Ethernet3", "Ethernet4"}) {
    EXPECT_EQ(journal->count("A", intf, 10), (Count{.written = 1, .removed = 1})) << intf;
  }
  EXPECT_EQ(journal->counts().size(), 3U);
}

TEST_P(Visit, servesEachPortOfABurstOnce) {
  startAndSettle();
  Actions burst;
  for (unsigned n = 5; n < 30; ++n) burst.push_back(addPort(10, "Ethernet" + std::to_string(n)));
  apply(burst);
  settle();
  for (unsigned n = 5; n < 30; ++n) {
    EXPECT_EQ(journal->count("A", "Ethernet" + std::to_string(n), 10), (Count{.written = 1, .removed = 0})) << n;
  }
  for (const char* const intf : {"Ethernet2", "Ethernet3", "Ethernet4"}) {
    EXPECT_EQ(journal->count("A", intf, 10), (Count{.written = 1, .removed = 1})) << intf;
  }
  EXPECT_EQ(journal->counts().size(), 28U);
}

TEST_P(Visit, servesOnlyTheMarkedPortsOfAPartlyDirtyVlan) {
  startAndSettle();
  apply({addPort(10, "Ethernet1"), removePort(10, "Ethernet3"), addPort(10, "Ethernet4", 2)});
  settle();
  EXPECT_EQ(journal->count("A", "Ethernet1", 10), (Count{.written = 1, .removed = 0}));
  EXPECT_EQ(journal->count("A", "Ethernet3", 10), (Count{.written = 0, .removed = 1}));
  EXPECT_EQ(journal->count("A", "Ethernet4", 10), (Count{.written = 1, .removed = 0}));
  EXPECT_EQ(journal->counts().size(), 3U);
}

TEST_P(Visit, comesTwiceToEachVlanInTheInitialPass) {
  journal.emplace(agent.state);
  start();
  settle();
  for (const char* const intf : {"Ethernet2", "Ethernet3", "Ethernet4"}) {
    EXPECT_EQ(journal->count("A", intf, 10), (Count{.written = 2, .removed = 1})) << intf;
  }
  for (const char* const intf : {"Ethernet3", "Ethernet4", "Ethernet1"}) {
    EXPECT_EQ(journal->count("B", intf, 20), (Count{.written = 2, .removed = 1})) << intf;
  }
  EXPECT_EQ(journal->counts().size(), 6U);
}

INSTANTIATE_TEST_SUITE_P(Of, Visit,
                         testing::Values(Arrangement{.start = {}}, Arrangement{.start = {}, .yieldAfterOne = true},
                                         Arrangement{.start = {}, .tick = 0.006}),
                         testing::PrintToStringParamName());

}  // namespace Topology::Library::SliceTest
