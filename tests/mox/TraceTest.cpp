#include "mox/Trace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iomanip>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bridging/PortState.h"
#include "bridging/VlanId.h"
#include "mox/Entity.h"
#include "mox/String.h"
#include "quill/IntfId.h"
#include "tests/support/Allocations.h"
#include "tests/support/VirtualTime.h"

namespace Mox::TraceTest {

using Test::FailingAllocations;
using Test::VirtualTimeInUse;

/// Facilities live as long as the process, so each test takes one of its own.
std::string newFacility() {
  static int number = 0;
  return "TraceTest" + std::to_string(++number);
}

/// A trace line that outlives its statement.
struct Line {
  double time;
  std::string facility;
  unsigned level;
  std::string file;
  unsigned line;
  std::string function;
  std::string text;
};

/// Keeps the lines, and then does what the test asks for.
class Lines : public TraceSink {
 public:
  void write(const TraceRecord& r) override {
    lines.push_back({r.time, std::string(r.facility), r.level, r.file, r.line, r.function, std::string(r.text)});
    if (action) action();
  }

  [[nodiscard]] std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const Line& line : lines) result.push_back(line.text);
    return result;
  }

  std::vector<Line> lines;
  std::function<void()> action;
};

class Trace : public testing::Test {
 public:
  Trace() { traceSinkIs(&sink); }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;
  ~Trace() override { traceSinkIs(nullptr); }

 protected:
  using Texts = std::vector<std::string>;

  Lines sink;
  TraceHandle handle{newFacility(), true};
};

// ---- facilities and levels

TEST_F(Trace, firstHandleDecidesWhetherAllLevelsAreOn) {
  const TraceHandle on(newFacility(), true);
  const TraceHandle off(newFacility(), false);
  EXPECT_EQ(traceLevels(on.facility()), traceAll);
  EXPECT_EQ(traceLevels(off.facility()), traceNone);
  for (unsigned level = 0; level < 32; ++level) {
    EXPECT_TRUE(on.isEnabled(level));
    EXPECT_FALSE(off.isEnabled(level));
  }
}

TEST_F(Trace, laterHandleTakesTheLevelsOfItsFacility) {
  const std::string name = newFacility();
  const TraceHandle first(name, false);
  const TraceHandle second(name, true);
  EXPECT_FALSE(second.isEnabled(3));
  EXPECT_FALSE(first.isEnabled(3));
  EXPECT_EQ(traceLevels(name), traceNone);
}

TEST_F(Trace, levelIsABitOfTheMask) {
  for (unsigned bit = 0; bit < 32; ++bit) {
    EXPECT_EQ(traceLevel(bit), 1ULL << bit);
    traceLevelsIs(handle.facility(), traceLevel(bit));
    EXPECT_EQ(traceLevels(handle.facility()), traceLevel(bit));
    sink.lines.clear();
    for (unsigned level = 0; level < 32; ++level) MOX_TRACE("/src/Lights", handle, level) << level;
    ASSERT_EQ(sink.lines.size(), 1U);
    EXPECT_EQ(sink.lines[0].level, bit);
    EXPECT_EQ(sink.lines[0].text, std::to_string(bit));
  }
}

TEST_F(Trace, levelsCombine) {
  traceLevelsIs(handle.facility(), traceLevel(2) | traceLevel(8));
  EXPECT_TRUE(handle.isEnabled(2));
  EXPECT_TRUE(handle.isEnabled(8));
  EXPECT_FALSE(handle.isEnabled(3));
  traceLevelsIs(handle.facility(), traceNone);
  EXPECT_FALSE(handle.isEnabled(2));
}

TEST_F(Trace, levelsMayBeSetBeforeTheFirstHandle) {
  const std::string name = newFacility();
  traceLevelsIs(name, traceLevel(8));
  for (const bool isOn : {true, false}) {
    const TraceHandle later(name, isOn);
    EXPECT_TRUE(later.isEnabled(8));
    EXPECT_FALSE(later.isEnabled(7));
  }
}

TEST_F(Trace, handlesOfOneNameShareTheirLevels) {
  const std::string name = newFacility();
  const TraceHandle first(name, false);
  const TraceHandle second(name, false);
  const TraceHandle other(newFacility(), false);
  traceLevelsIs(name, traceLevel(5));
  EXPECT_TRUE(first.isEnabled(5));
  EXPECT_TRUE(second.isEnabled(5));
  EXPECT_FALSE(other.isEnabled(5));
}

TEST_F(Trace, facilityOutlivesItsHandles) {
  const std::string name = newFacility();
  auto first = std::make_unique<TraceHandle>(name, false);
  auto second = std::make_unique<TraceHandle>(name, false);
  first.reset();
  traceLevelsIs(name, traceLevel(5));
  EXPECT_TRUE(second->isEnabled(5));
  second.reset();
  EXPECT_EQ(traceLevels(name), traceLevel(5));
  traceLevelsIs(name, traceLevel(6));
  const TraceHandle third(name, true);
  EXPECT_TRUE(third.isEnabled(6));
  EXPECT_FALSE(third.isEnabled(5));
}

TEST_F(Trace, unknownFacilityHasNoLevels) {
  const std::string name = newFacility();
  EXPECT_EQ(traceLevels(name), traceNone);
  const auto known = traceFacilities();
  EXPECT_EQ(std::count(known.begin(), known.end(), name), 0) << "asking must not make it";
}

TEST_F(Trace, facilitiesAreListedInAlphabeticalOrder) {
  const TraceHandle z("TraceTestZ", false);
  const TraceHandle a("TraceTestA", false);
  traceLevelsIs("TraceTestM", traceAll);
  const auto known = traceFacilities();
  EXPECT_TRUE(std::is_sorted(known.begin(), known.end()));
  for (const char* const name : {"TraceTestA", "TraceTestM", "TraceTestZ"}) {
    EXPECT_EQ(std::count(known.begin(), known.end(), name), 1) << name;
  }
}

// ---- the statement

TEST_F(Trace, nothingIsEvaluatedAtALevelThatIsOff) {
  traceLevelsIs(handle.facility(), traceLevel(2));
  int evaluated = 0;
  const auto value = [&] { return ++evaluated; };
  MOX_TRACE("/src/Lights", handle, 3) << value() << value();
  EXPECT_EQ(evaluated, 0);
  MOX_TRACE("/src/Lights", handle, 2) << value() << value();
  EXPECT_EQ(evaluated, 2);
  EXPECT_EQ(sink.texts(), (Texts{"12"}));
}

TEST_F(Trace, recordTellsWhenAndWhere) {
  const VirtualTimeInUse time;
  time->advance(12.5);
  time->tickIs(1.0);
  const unsigned line = __LINE__ + 1;
  MOX_TRACE("/src/Lights", handle, 8) << "handleLit " << 3U;
  ASSERT_EQ(sink.lines.size(), 1U);
  const Line& record = sink.lines[0];
  EXPECT_EQ(record.time, 12.5);
  EXPECT_EQ(time->presentTime(), 12.5) << "a trace must not move virtual time";
  EXPECT_EQ(record.facility, handle.facility());
  EXPECT_EQ(record.level, 8U);
  EXPECT_EQ(record.file, "/src/Lights");
  EXPECT_EQ(record.line, line);
  EXPECT_EQ(record.function, "TestBody");
  EXPECT_EQ(record.text, "handleLit 3");
}

// NOLINTBEGIN(readability-braces-around-statements): without braces is what these are about.
TEST_F(Trace, statementBindsLikeOneInAnIfWithoutBraces) {
  int skipped = 0;
  for (const bool isLit : {true, false}) {
    if (isLit)
      MOX_TRACE("/src/Lights", handle, 1) << "lit";
    else
      ++skipped;
  }
  EXPECT_EQ(skipped, 1);
  traceLevelsIs(handle.facility(), traceNone);
  for (const bool isLit : {true, false}) {
    if (isLit)
      MOX_TRACE("/src/Lights", handle, 1) << "lit";
    else
      ++skipped;
  }
  EXPECT_EQ(skipped, 2) << "the else belongs to our if, also when the level is off";
  EXPECT_EQ(sink.texts(), (Texts{"lit"}));
}

TEST_F(Trace, statementMayBeGuardedWithoutBraces) {
  for (const bool isLit : {true, false}) {
    if (isLit) MOX_TRACE("/src/Lights", handle, 1) << "lit";
  }
  EXPECT_EQ(sink.texts(), (Texts{"lit"}));
}

TEST_F(Trace, statementMayBeTheElseOrTheBodyOfALoop) {
  bool isLit = true;
  if (isLit)
    isLit = false;
  else
    MOX_TRACE("/src/Lights", handle, 1) << "dark";
  for (int i = 0; i < 2; ++i) MOX_TRACE("/src/Lights", handle, 1) << i;
  EXPECT_EQ(sink.texts(), (Texts{"0", "1"}));
}
// NOLINTEND(readability-braces-around-statements)

TEST_F(Trace, emptyTextIsALineToo) {
  MOX_TRACE("/src/Lights", handle, 1) << "";
  EXPECT_EQ(sink.texts(), (Texts{""}));
}

TEST_F(Trace, statementsDoNotShareTheirFormats) {
  MOX_TRACE("/src/Lights", handle, 1) << std::hex << std::setfill('0') << std::noboolalpha << std::setw(4) << 255;
  MOX_TRACE("/src/Lights", handle, 1) << std::setw(4) << 255 << true;
  EXPECT_EQ(sink.texts(), (Texts{"00ff", " 255true"}));
}

TEST_F(Trace, statementInAStreamedExpressionIsWrittenFirst) {
  const auto inner = [&] {
    MOX_TRACE("/src/Lights", handle, 1) << "inner";  // NOLINT(bugprone-lambda-function-name)
    return 1;
  };
  MOX_TRACE("/src/Lights", handle, 1) << "outer " << inner();
  EXPECT_EQ(sink.texts(), (Texts{"inner", "outer 1"}));
}

// ---- what can be streamed

TEST_F(Trace, streamsTextsAndNumbers) {
  const String name = "hall";
  const char* const chars = "chars";
  MOX_TRACE("/src/Lights", handle, 1) << name << ' ' << chars << ' ' << std::string("string") << ' ' << String();
  MOX_TRACE("/src/Lights", handle, 1) << 4294967295U << ' ' << -1 << ' ' << 1.5;
  MOX_TRACE("/src/Lights", handle, 1) << true << ' ' << false;
  EXPECT_EQ(sink.texts(), (Texts{"hall chars string ", "4294967295 -1 1.5", "true false"}));
}

TEST_F(Trace, streamsKeysAndEnumerations) {
  using Bridging::Topology::PortState;
  MOX_TRACE("/src/Lights", handle, 1) << Quill::IntfId("Ethernet1/2") << ' ' << Quill::IntfId("odd name") << ' '
                                      << Bridging::VlanId(4094) << ' ' << Bridging::VlanIdOrNone();
  MOX_TRACE("/src/Lights", handle, 1) << PortState::disabled << ' ' << PortState::blocking << ' ' << PortState::learning
                                      << ' ' << PortState::forwarding;
  EXPECT_EQ(sink.texts(), (Texts{"Ethernet1/2 odd name 4094 0", "disabled blocking learning forwarding"}));
}

TEST_F(Trace, streamsEntities) {
  const auto lamp = makePtr<NamedEntity>("hall");
  const Ptr<const NamedEntity> reader = lamp;
  const NamedEntity* const none = nullptr;
  MOX_TRACE("/src/Lights", handle, 1) << lamp << ' ' << lamp.get() << ' ' << reader;
  MOX_TRACE("/src/Lights", handle, 1) << none << ' ' << Ptr<NamedEntity>();
  EXPECT_EQ(sink.texts(), (Texts{"Mox::NamedEntity(hall) Mox::NamedEntity(hall) Mox::NamedEntity(hall)", "null null"}));
}

/// Cannot be printed.
struct Broken {
  friend std::ostream& operator<<(std::ostream& /*out*/, const Broken& /*value*/) { throw std::logic_error("broken"); }
};

TEST_F(Trace, whatAStreamOperatorThrowsEndsThere) {
  EXPECT_NO_THROW(MOX_TRACE("/src/Lights", handle, 1) << "before " << Broken{} << " after");
  EXPECT_EQ(sink.texts(), (Texts{"before (unprintable) after"}));
  sink.action = [] { throw std::runtime_error("full"); };
  EXPECT_NO_THROW(MOX_TRACE("/src/Lights", handle, 1) << Broken{}) << "also while the sink throws";
}

TEST_F(Trace, wantOfMemoryEndsThere) {
  const std::string name(1000, 'x');
  const Quill::IntfId intf("Ethernet1/2");
  for (std::size_t spared = 0; spared < 8; ++spared) {
    const FailingAllocations failing(spared);
    MOX_TRACE("/src/Lights", handle, 1) << name << intf << Bridging::Topology::PortState::forwarding << name;
  }
}

// ---- sinks

TEST_F(Trace, whatTheSinkThrowsEndsWithTheStatement) {
  sink.action = [] { throw std::runtime_error("full"); };
  EXPECT_NO_THROW(MOX_TRACE("/src/Lights", handle, 1) << "first");
  sink.action = [] { throw 1; };
  EXPECT_NO_THROW(MOX_TRACE("/src/Lights", handle, 1) << "second");
  EXPECT_EQ(sink.texts(), (Texts{"first", "second"}));
}

TEST_F(Trace, sinkThatTracesIsNotCalledForThat) {
  // NOLINTNEXTLINE(bugprone-lambda-function-name)
  sink.action = [&] { MOX_TRACE("/src/Lights", handle, 1) << "from the sink"; };
  MOX_TRACE("/src/Lights", handle, 1) << "first";
  MOX_TRACE("/src/Lights", handle, 1) << "second";
  EXPECT_EQ(sink.texts(), (Texts{"first", "second"}));
}

TEST_F(Trace, sinkMayChangeTheLevels) {
  sink.action = [&] { traceLevelsIs(handle.facility(), traceNone); };
  MOX_TRACE("/src/Lights", handle, 1) << "first";
  MOX_TRACE("/src/Lights", handle, 1) << "second";
  EXPECT_EQ(sink.texts(), (Texts{"first"}));
}

TEST_F(Trace, linesGoToTheLatestSink) {
  Lines other;
  traceSinkIs(&other);
  MOX_TRACE("/src/Lights", handle, 1) << "text";
  traceSinkIs(&sink);
  EXPECT_TRUE(sink.lines.empty());
  EXPECT_EQ(other.texts(), (Texts{"text"}));
}

TEST_F(Trace, withoutASinkLinesGoToStandardError) {
  const VirtualTimeInUse time;
  time->advance(12.5);
  traceSinkIs(nullptr);
  testing::internal::CaptureStderr();
  const unsigned line = __LINE__ + 1;
  MOX_TRACE("/src/Lights", handle, 8) << "handleLit " << true << " 100%s";
  MOX_TRACE("/src/Lights", handle, 0) << "";
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ(written, "12.500000\t" + handle.facility() + "\t8\t/src/Lights:" + std::to_string(line) +
                         "\tTestBody\thandleLit true 100%s\n" + "12.500000\t" + handle.facility() +
                         "\t0\t/src/Lights:" + std::to_string(line + 1) + "\tTestBody\t\n");
  EXPECT_TRUE(sink.lines.empty());
}

TEST_F(Trace, standardErrorGetsLongLinesWhole) {
  traceSinkIs(nullptr);
  const std::string text(100'000, 'x');
  testing::internal::CaptureStderr();
  MOX_TRACE("/src/Lights", handle, 1) << text;
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_NE(written.find('\t' + text + '\n'), std::string::npos);
}

TEST_F(Trace, standardErrorGetsNothingAtALevelThatIsOff) {
  traceSinkIs(nullptr);
  traceLevelsIs(handle.facility(), traceNone);
  testing::internal::CaptureStderr();
  MOX_TRACE("/src/Lights", handle, 1) << "text";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace Mox::TraceTest
