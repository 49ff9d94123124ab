#include "bridging/PortState.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace Bridging::Topology {
namespace {

struct Row {
  std::uint32_t number;
  PortState state;
  std::string name;
};
const std::vector<Row> rows{{0, PortState::disabled, "disabled"},
                            {1, PortState::blocking, "blocking"},
                            {2, PortState::learning, "learning"},
                            {3, PortState::forwarding, "forwarding"}};

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

TEST(PortState, hasItsNumbersAndNoOthers) {
  for (const auto& [number, state, name] : rows) EXPECT_EQ(static_cast<std::uint32_t>(state), number);
  EXPECT_EQ(moxEnumValues(PortState()).size(), rows.size());
}

TEST(PortState, zeroValueIsDisabled) { EXPECT_EQ(PortState(), PortState::disabled); }

TEST(PortState, isWrittenAsItsName) {
  for (const auto& [number, state, name] : rows) {
    std::ostringstream out;
    out << state;
    EXPECT_EQ(out.str(), name);
    EXPECT_EQ(stringValue(state), name);
    EXPECT_EQ(valueToStrep(state), name);
  }
}

TEST(PortState, isParsedFromItsName) {
  for (const auto& [number, state, name] : rows) {
    EXPECT_EQ(Mox::EnumType<PortState>::sequenceToValue(name), state);
    EXPECT_EQ(PortStateInstance(name).value(), state);
  }
}

TEST(PortState, isChosenByItsNumber) {
  for (const auto& [number, state, name] : rows) {
    const PortState chosen = PortStateInstance(number);
    EXPECT_EQ(chosen, state);
  }
}

TEST(PortState, ofUnknownNameRaisesRangeException) {
  EXPECT_EQ(rangeError([] { return PortStateInstance("listening"); }), "PortState::value listening not allowed");
  for (const std::string name : {"", "Forwarding", "forwarding ", " forwarding", "forward", "3"}) {
    EXPECT_EQ(rangeError([&] { return PortStateInstance(name); }), "PortState::value " + name + " not allowed");
    EXPECT_EQ(rangeError([&] { return Mox::EnumType<PortState>::sequenceToValue(name); }),
              "PortState::value " + name + " not allowed");
  }
}

TEST(PortState, ofUnknownNumberRaisesRangeException) {
  EXPECT_EQ(rangeError([] { return PortStateInstance(4); }), "PortState::value 4 not allowed");
  EXPECT_EQ(rangeError([] { return PortStateInstance(4294967295U); }), "PortState::value 4294967295 not allowed");
}

TEST(PortState, ofUnknownNumberIsWrittenAsTheNumber) { EXPECT_EQ(stringValue(static_cast<PortState>(7)), "7"); }

}  // namespace
}  // namespace Bridging::Topology
