#include "topolib/LibSmMode.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace Topology::Library {
namespace {

using Parser = Mox::EnumType<LibSmMode>;

/// The text of the RangeException that the function raises.
template <class Function>
std::string rangeError(Function function) {
  try {
    function();
  } catch (const Mox::RangeException& e) {
    return e.what();
  }
  return "no exception";
}

TEST(LibSmMode, hasTwoValues) {
  EXPECT_EQ(static_cast<std::uint32_t>(LibSmMode::createStatus), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(LibSmMode::notifyStatus), 1U);
  EXPECT_EQ(moxEnumValues(LibSmMode()).size(), 2U);
}

TEST(LibSmMode, isWrittenAsItsName) {
  EXPECT_EQ(stringValue(LibSmMode::createStatus), "createStatus");
  EXPECT_EQ(stringValue(LibSmMode::notifyStatus), "notifyStatus");
  EXPECT_EQ(valueToStrep(LibSmMode::createStatus), "createStatus");
  EXPECT_EQ(valueToStrep(LibSmMode::notifyStatus), "notifyStatus");
  std::ostringstream out;
  out << LibSmMode::createStatus << ' ' << LibSmMode::notifyStatus;
  EXPECT_EQ(out.str(), "createStatus notifyStatus");
}

TEST(LibSmMode, isParsedFromItsName) {
  EXPECT_EQ(Parser::sequenceToValue("createStatus"), LibSmMode::createStatus);
  EXPECT_EQ(Parser::sequenceToValue("notifyStatus"), LibSmMode::notifyStatus);
  EXPECT_EQ(LibSmModeInstance("createStatus").value(), LibSmMode::createStatus);
  EXPECT_EQ(LibSmModeInstance("notifyStatus").value(), LibSmMode::notifyStatus);
}

TEST(LibSmMode, isChosenByItsNumber) {
  EXPECT_EQ(LibSmModeInstance(0).value(), LibSmMode::createStatus);
  EXPECT_EQ(LibSmModeInstance(1).value(), LibSmMode::notifyStatus);
  const LibSmMode mode = LibSmModeInstance(1);
  EXPECT_EQ(mode, LibSmMode::notifyStatus);
}

TEST(LibSmMode, ofUnknownNameRaisesRangeException) {
  for (const std::string name : {"", "NotifyStatus", "notify", "notifyStatus ", "1"}) {
    EXPECT_EQ(rangeError([&] { return LibSmModeInstance(name); }), "LibSmMode::value " + name + " not allowed");
    EXPECT_EQ(rangeError([&] { return Parser::sequenceToValue(name); }), "LibSmMode::value " + name + " not allowed");
  }
}

TEST(LibSmMode, ofUnknownNumberRaisesRangeException) {
  EXPECT_EQ(rangeError([] { return LibSmModeInstance(2); }), "LibSmMode::value 2 not allowed");
  EXPECT_EQ(rangeError([] { return LibSmModeInstance(4294967295U); }), "LibSmMode::value 4294967295 not allowed");
}

TEST(LibSmMode, ofUnknownNumberIsWrittenAsTheNumber) { EXPECT_EQ(stringValue(static_cast<LibSmMode>(2)), "2"); }

}  // namespace
}  // namespace Topology::Library
