// Publisher and view against what they have to show: random sequences of changes, with both started before the library,
// after it, ended and started again.
//
// Each sequence has a seed of its own; a failure prints it, and TOPOLIB_TEST_SEED replays it as the first one.
// tests/support/Effort.h says how many there are.

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/Effort.h"
#include "tests/topolib/model/Chance.h"
#include "tests/topolib/model/Shrink.h"
#include "tests/topolib/vlan/ViewModel.h"

namespace Topology::Library::Vlan::ViewModelTest {

using Test::Chance;
using Test::makeStatus;
using Test::makeTopo;
using Test::outcomeInChild;
using Test::portStatus;
using Test::Random;
using Test::randomSeed;
using Test::remakeStatus;
using Test::Sequence;
using Test::Start;
using Test::textOf;
using Test::ViewPlay;
using Status = Test::Start::Status;
using Step = ViewPlay::Step;
using Steps = std::vector<Step>;

struct Case {
  const char* name;
  Start start;
  bool isShared = false;
  bool hasReaders = false;
};

std::ostream& operator<<(std::ostream& out, const Case& c) { return out << c.name; }

/// What concerns publisher and view.
Step stepOf(Random& random) {
  static constexpr std::array intfs{"Ethernet1", "Ethernet2", "PortChannel1", "Ethernet1.5", "Cpu", "Vlan7"};
  static constexpr std::array topos{"A", "B", "C"};
  const std::string intf = intfs[random.below(intfs.size())];
  const std::string topo = topos[random.below(topos.size())];
  const std::size_t number = random.below(4);
  switch (random.below(9)) {
    case 0:
    case 1:
      return {"startPublisher()", [](ViewPlay& p) { p.startPublisher(); }};
    case 2:
      return number == 0 ? Step{"stopPublisher()", [](ViewPlay& p) { p.stopPublisher(); }}
                         : Step{textOf("leaveStatus(", topo, ", ", 1 + number % 2, ", ", intf, ")"),
                                [=](ViewPlay& p) { p.leaveStatus(topo, 1 + number % 2, intf); }};
    case 3:
    case 4:
      return {"startView()", [](ViewPlay& p) { p.startView(); }};
    case 5:
      return number == 0 ? Step{"stopView()", [](ViewPlay& p) { p.stopView(); }}
                         : Step{"restartView()", [](ViewPlay& p) { p.restartView(); }};
    case 6:
    case 7:
      if (number == 0) return {"force(" + intf + ", {})", [=](ViewPlay& p) { p.force(intf, std::nullopt); }};
      return {textOf("force(", intf, ", ", number != 1, ")"), [=](ViewPlay& p) { p.force(intf, number != 1); }};
    default:
      return {textOf("publishPortConfigIs(", topo, ", ", number % 2, ") in state ", random.below(4)),
              [=, state = random.below(4)](ViewPlay& p) {
                auto* const config = p.agent().config->topoConfig(topo);
                if (config == nullptr) return;
                config->publishPortConfigIs(number % 2 != 0);
                config->publishedPortStateIs(Bridging::Topology::PortState(state));
              }};
  }
}

/// A change of the library's inputs.
Step stepOf(const Sequence::Item& item) {
  const std::string line = Sequence::line(item);
  if (item.step == Sequence::Step::start) return {line, [](ViewPlay& p) { p.startLibrary(); }};
  if (item.step == Sequence::Step::drain) return {line, [](ViewPlay& p) { p.drainAndCompare(); }};
  const bool isOnStatus = line.find("tatus(\"") != std::string::npos || line.find("opoStatus") != std::string::npos;
  const auto apply = [action = item.action, isOnStatus](ViewPlay& p) {
    if (!isOnStatus || p.mayWriteStatus()) action.apply(p.agent());
  };
  return {line, apply, item.step == Sequence::Step::inside};
}

Steps stepsOf(const Case& c, std::uint64_t seed) {
  Random random(seed * 31 + 7);
  Steps steps;
  Sequence sequence = Chance(seed).sequence({.start = c.start, .hasReaders = c.hasReaders});
  for (const Sequence::Item& item : sequence.items) {
    if (random.percent(15)) {
      Step step = stepOf(random);
      step.isInside = c.hasReaders && random.percent(20);
      if (step.isInside) step.line = "inside: " + step.line;
      steps.push_back(step);
    }
    steps.push_back(stepOf(item));
  }
  return steps;
}

std::string failureOf(const Case& c, const Steps& steps) {
  return outcomeInChild([&] { return ViewPlay(c.start, c.isShared).run(steps); });
}

/// Leaves out what it fails without.
Steps shrunk(const Case& c, Steps steps) {
  for (std::size_t chunk = steps.size() / 2; chunk != 0; chunk /= 2) {
    for (std::size_t from = 0; from < steps.size();) {
      Steps part = steps;
      const auto first = part.begin() + static_cast<std::ptrdiff_t>(from);
      part.erase(first, first + static_cast<std::ptrdiff_t>(std::min(chunk, part.size() - from)));
      if (failureOf(c, part).empty()) {
        from += chunk;
      } else {
        steps = std::move(part);
      }
    }
  }
  return steps;
}

std::string report(const Case& c, const Steps& steps) {
  const Steps shortest = shrunk(c, shrunk(c, steps));
  std::string text;
  for (const Step& step : shortest) text += "  " + step.line + '\n';
  return text + failureOf(c, shortest);
}

class ViewModel : public testing::TestWithParam<Case> {
 protected:
  static constexpr std::size_t sequencesPerCase = 300;
};

TEST_P(ViewModel, tellsWhatIsShown) {
  const Case& c = GetParam();
  const std::uint64_t first = randomSeed();
  const std::size_t count = ::Test::sequences(sequencesPerCase);
  const std::string outcome = outcomeInChild([&] {
    std::string played;
    for (std::size_t n = 0; n < count; ++n) {
      if (!ViewPlay(c.start, c.isShared).run(stepsOf(c, first + n)).empty()) break;
      played += '.';
    }
    return played;
  });
  if (outcome != std::string(count, '.')) {
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
      const Steps steps = stepsOf(c, seed);
      if (!failureOf(c, steps).empty()) FAIL() << "TOPOLIB_TEST_SEED=" << seed << '\n' << report(c, steps);
    }
    FAIL() << "sequences that succeed one by one fail together: " << outcome;
  }
  // And some in this process, where leaks show.
  for (std::uint64_t seed = first; seed < first + 20; ++seed) {
    EXPECT_EQ(ViewPlay(c.start, c.isShared).run(stepsOf(c, seed)), "") << "TOPOLIB_TEST_SEED=" << seed;
  }
}

/// A status is remade while nobody else writes it; then somebody who is told of a step starts the publisher, which writes
/// it from then on. Here at each of the steps: the status goes, it comes, its ports come.
TEST(ViewModelPlay, statusIsRemadeByOneWriter) {
  const Step startPublisher{"inside: startPublisher()", [](ViewPlay& p) { p.startPublisher(); }, true};
  const Step nothing{"inside: nothing", [](ViewPlay& /*p*/) {}, true};
  for (std::size_t notification = 0; notification < 4; ++notification) {
    Steps steps{stepOf(Sequence::Item{.step = Sequence::Step::start})};
    for (const auto& action :
         {makeTopo("A"), makeStatus("A"), portStatus("A", "Ethernet1"), portStatus("A", "PortChannel1")}) {
      steps.push_back(stepOf(Sequence::Item{.action = action}));
    }
    steps.insert(steps.end(), notification, nothing);
    steps.push_back(startPublisher);
    steps.push_back(stepOf(Sequence::Item{.action = remakeStatus("A")}));
    const Case shared{"shared", {.status = Status::instance, .deferProcessing = false}, true, true};
    EXPECT_EQ(ViewPlay(shared.start, shared.isShared).run(steps), "") << "at notification " << notification;
  }
}

constexpr auto notifyStatus = LibSmMode::notifyStatus;

INSTANTIATE_TEST_SUITE_P(
    Plain, ViewModel,
    testing::Values(Case{"immediate", {.status = Status::plain, .deferProcessing = false}},
                    Case{"deferred", {.status = Status::plain}},
                    Case{"immediateWithReaders", {.status = Status::plain, .deferProcessing = false}, false, true},
                    Case{"deferredWithReaders", {.status = Status::plain}, false, true}),
    testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(
    Instance, ViewModel,
    testing::Values(Case{"immediate", {.status = Status::instance, .deferProcessing = false}},
                    Case{"deferred", {.status = Status::instance}},
                    Case{"notifying", {.status = Status::instance, .mode = notifyStatus}},
                    Case{"immediateWithReaders", {.status = Status::instance, .deferProcessing = false}, false, true},
                    Case{"deferredWithReaders", {.status = Status::instance}, false, true}),
    testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(
    Shared, ViewModel,
    testing::Values(
        Case{"immediate", {.status = Status::instance, .deferProcessing = false}, true},
        Case{"deferred", {.status = Status::instance}, true},
        Case{"notifying", {.status = Status::instance, .mode = notifyStatus}, true},
        Case{"immediateNotifying", {.status = Status::instance, .mode = notifyStatus, .deferProcessing = false}, true},
        Case{"immediateWithReaders", {.status = Status::instance, .deferProcessing = false}, true, true},
        Case{"deferredWithReaders", {.status = Status::instance}, true, true}),
    testing::PrintToStringParamName());

}  // namespace Topology::Library::Vlan::ViewModelTest
