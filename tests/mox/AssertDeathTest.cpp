#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <type_traits>

#include "mox/Assert.h"
#include "mox/Entity.h"

// A name that a report must not resolve.
#define GREATEST_WATT 100

namespace Mox {

// Not in an unnamed namespace, which each compiler spells in its own way.
namespace AssertTestLights {

class Lamp {
 public:
  static constexpr unsigned lineOfCheckWatt = __LINE__ + 1;
  void checkWatt(int watt, bool /*isLit*/) const { MOX_ASSERT("/src/Lights", watt > least_ && watt < 100); }

  static constexpr unsigned lineOfCheckText = __LINE__ + 1;
  void checkText(int watt) const { MOX_ASSERT_TEXT("/src/Lights", watt > least_, "( watt > 0 ) && 100% lit"); }

 private:
  int least_ = 0;
};

constexpr unsigned lineOfCheckLimit = __LINE__ + 1;
void checkLimit(int watt) { MOX_ASSERT("/src/Limits", watt < GREATEST_WATT); }

/// Tells that it is evaluated.
bool evaluated(bool result) {
  std::fputs("evaluated. ", stderr);
  return result;
}
void checkEvaluation(bool result) { MOX_ASSERT("/src/Lights", evaluated(result)); }

}  // namespace AssertTestLights

namespace AssertDeathTest {

using AssertTestLights::checkEvaluation;
using AssertTestLights::checkLimit;
using AssertTestLights::Lamp;

/// The whole report of a failed assertion.
[[nodiscard]] std::string report(const std::string& file, unsigned line, const std::string& rest) {
  return file + ":" + std::to_string(line) + ": " + rest;
}

TEST(AssertDeathTest, reportsExpressionFileLineAndSignatureAndAborts) {
  EXPECT_EXIT(Lamp().checkWatt(0, true), testing::KilledBySignal(SIGABRT),
              testing::Eq(report("/src/Lights", Lamp::lineOfCheckWatt,
                                 "void Mox::AssertTestLights::Lamp::checkWatt(int, bool) const: "
                                 "Assertion 'watt > least_ && watt < 100' failed.\n")));
}

TEST(AssertDeathTest, reportsTextAsItIsGiven) {
  EXPECT_EXIT(Lamp().checkText(0), testing::KilledBySignal(SIGABRT),
              testing::Eq(report("/src/Lights", Lamp::lineOfCheckText,
                                 "void Mox::AssertTestLights::Lamp::checkText(int) const: "
                                 "Assertion '( watt > 0 ) && 100% lit' failed.\n")));
}

TEST(AssertDeathTest, reportsNamesOfMacrosAsWritten) {
  EXPECT_EXIT(checkLimit(100), testing::KilledBySignal(SIGABRT),
              testing::Eq(report("/src/Limits", AssertTestLights::lineOfCheckLimit,
                                 "void Mox::AssertTestLights::checkLimit(int): "
                                 "Assertion 'watt < GREATEST_WATT' failed.\n")));
}

TEST(AssertDeathTest, failingExpressionIsEvaluatedOnce) {
  EXPECT_EXIT(
      checkEvaluation(false), testing::KilledBySignal(SIGABRT),
      testing::MatchesRegex("evaluated\\. /src/Lights:[0-9]+: .*: Assertion 'evaluated\\(result\\)' failed\\.\n"));
}

TEST(AssertDeathTest, nullPointersFail) {
  const Ptr<Entity> entity;
  EXPECT_EXIT(MOX_ASSERT("/src/Lights", entity), testing::KilledBySignal(SIGABRT), "Assertion 'entity' failed\\.");
}

TEST(AssertDeathTest, reportMayBeMadeWithoutMacro) {
  EXPECT_EXIT(
      assertionFailed("libState() %s", "/src/Sylk/TopoLib", 57, "void Topology::Library::LibSm::handleInitialized()"),
      testing::KilledBySignal(SIGABRT),
      testing::Eq("/src/Sylk/TopoLib:57: void Topology::Library::LibSm::handleInitialized(): "
                  "Assertion 'libState() %s' failed.\n"));
}

TEST(Assert, expressionThatHoldsIsEvaluatedOnceAndTellsNothing) {
  testing::internal::CaptureStderr();
  checkEvaluation(true);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "evaluated. ");
  int count = 0;
  MOX_ASSERT("/src/Lights", ++count == 1);
  MOX_ASSERT_TEXT("/src/Lights", ++count == 2, "count");
  EXPECT_EQ(count, 2);
}

TEST(Assert, isOneStatement) {
  int branch = 0;
  // NOLINTBEGIN(readability-braces-around-statements): without braces is what the test is about.
  if (branch == 0)
    MOX_ASSERT("/src/Lights", branch == 0);
  else
    branch = 1;
  // NOLINTEND(readability-braces-around-statements)
  EXPECT_EQ(branch, 0);
}

TEST(AssertDeathTest, expressionMayHaveCommas) {
  MOX_ASSERT("/src/Lights", std::is_same_v<int, int>);
  EXPECT_EXIT(MOX_ASSERT("/src/Lights", std::is_same_v<int, bool>), testing::KilledBySignal(SIGABRT),
              "Assertion 'std::is_same_v<int, bool>' failed\\.");
}

TEST(Assert, takesWhatConvertsToBool) {
  const auto entity = makePtr<NamedEntity>("lamp");
  MOX_ASSERT("/src/Lights", entity);
  MOX_ASSERT("/src/Lights", entity.get());
  EXPECT_EQ(entity->references(), 1U);
}

}  // namespace AssertDeathTest
}  // namespace Mox
