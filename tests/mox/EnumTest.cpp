#include "mox/Enum.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>

#include "tests/support/RangeError.h"

namespace Mox {

// Outside of any class and of unnamed namespaces, as users declare theirs.
namespace Lights {

enum class Colour : std::uint32_t { red, green, blue = 7 };
[[maybe_unused]] constexpr auto moxEnumValues(Colour /*tag*/) {
  return std::array{Mox::enumValue(Colour::red, "red"), Mox::enumValue(Colour::green, "green"),
                    Mox::enumValue(Colour::blue, "blue")};
}
using Mox::stringValue, Mox::valueToStrep, Mox::operator<<;  // NOLINT(misc-unused-using-decls)
using ColourInstance = Mox::EnumInstance<Colour>;

enum class Small : std::uint8_t { none = 0, all = 255 };
[[maybe_unused]] constexpr auto moxEnumValues(Small /*tag*/) {
  return std::array{Mox::enumValue(Small::none, "none"), Mox::enumValue(Small::all, "all")};
}

}  // namespace Lights

namespace EnumTest {

using Lights::Colour;
using Lights::ColourInstance;
using Lights::Small;
using Test::rangeErrorOf;

[[nodiscard]] std::string printed(const auto& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(Enum, valueHasItsName) {
  EXPECT_EQ(valueToStrep(Colour::red), "red");
  EXPECT_EQ(valueToStrep(Colour::blue), "blue");
  EXPECT_EQ(EnumType<Colour>::valueToStrep(Colour::green), "green");
  EXPECT_EQ(stringValue(Colour::green), "green");
  EXPECT_EQ(EnumType<Colour>::stringValue(Colour::blue), "blue");
}

TEST(Enum, valuePrintsItsName) { EXPECT_EQ(printed(Colour::green), "green"); }

TEST(Enum, numberThatIsNoValuePrintsTheNumber) {
  const auto unknown = static_cast<Colour>(3);
  EXPECT_EQ(printed(unknown), "3");
  EXPECT_EQ(valueToStrep(unknown), "3");
  EXPECT_EQ(stringValue(unknown), "3");
  EXPECT_EQ(printed(static_cast<Colour>(4'294'967'295)), "4294967295");
  EXPECT_EQ(EnumType<Small>::valueToStrep(static_cast<Small>(65)), "65");
}

TEST(Enum, nameIsParsed) {
  EXPECT_EQ(EnumType<Colour>::sequenceToValue("red"), Colour::red);
  EXPECT_EQ(EnumType<Colour>::sequenceToValue("green"), Colour::green);
  EXPECT_EQ(EnumType<Colour>::sequenceToValue(std::string("blue")), Colour::blue);
  EXPECT_EQ(EnumType<Colour>::sequenceToValue(std::string_view("blueish").substr(0, 4)), Colour::blue);
}

TEST(Enum, printedNameIsParsedBack) {
  for (const auto& v : moxEnumValues(Colour())) {
    EXPECT_EQ(EnumType<Colour>::sequenceToValue(valueToStrep(v.value)), v.value);
  }
}

TEST(Enum, textThatIsNoNameRaises) {
  const auto parsing = [](std::string_view text) {
    return rangeErrorOf([text] { return EnumType<Colour>::sequenceToValue(text); });
  };
  EXPECT_EQ(parsing("yellow"), "Colour::value yellow not allowed");
  EXPECT_EQ(parsing(""), "Colour::value  not allowed");
  EXPECT_EQ(parsing("Red"), "Colour::value Red not allowed") << "letter case counts";
  EXPECT_EQ(parsing("red "), "Colour::value red  not allowed") << "every character counts";
  EXPECT_EQ(parsing("re"), "Colour::value re not allowed");
  EXPECT_EQ(parsing("redd"), "Colour::value redd not allowed");
  EXPECT_EQ(parsing("0"), "Colour::value 0 not allowed") << "a number is no name";
}

TEST(Enum, numberOfValueIsTaken) {
  EXPECT_EQ(EnumType<Colour>::numberToValue(0), Colour::red);
  EXPECT_EQ(EnumType<Colour>::numberToValue(7), Colour::blue);
  EXPECT_EQ(EnumType<Small>::numberToValue(255), Small::all);
}

TEST(Enum, numberThatIsNoValueRaises) {
  const auto taking = [](std::uint32_t number) {
    return rangeErrorOf([number] { return EnumType<Colour>::numberToValue(number); });
  };
  EXPECT_EQ(taking(2), "Colour::value 2 not allowed");
  EXPECT_EQ(taking(8), "Colour::value 8 not allowed");
  EXPECT_EQ(taking(4'294'967'295), "Colour::value 4294967295 not allowed");
}

TEST(Enum, numberBeyondSmallTypeIsNotCutOff) {
  EXPECT_EQ(rangeErrorOf([] { return EnumType<Small>::numberToValue(256); }), "Small::value 256 not allowed");
}

TEST(EnumInstance, isChosenByNumberOrName) {
  EXPECT_EQ(ColourInstance(7).value(), Colour::blue);
  EXPECT_EQ(ColourInstance("green").value(), Colour::green);
  const Colour colour = ColourInstance(1);
  EXPECT_EQ(colour, Colour::green);
}

TEST(EnumInstance, unknownNumberOrNameRaisesAndChangesNothing) {
  Colour colour = Colour::green;
  EXPECT_EQ(rangeErrorOf([&] { colour = ColourInstance(2); }), "Colour::value 2 not allowed");
  EXPECT_EQ(rangeErrorOf([&] { colour = ColourInstance("yellow"); }), "Colour::value yellow not allowed");
  EXPECT_EQ(colour, Colour::green);
}

TEST(EnumInstance, isNotMadeFromEnumerationOrByAccident) {
  static_assert(!std::is_convertible_v<std::uint32_t, ColourInstance>);
  static_assert(!std::is_convertible_v<std::string_view, ColourInstance>);
  static_assert(std::is_convertible_v<ColourInstance, Colour>);
}

TEST(Enum, onlyRegisteredEnumerationsTakePart) {
  enum class Plain { one };
  static_assert(RegisteredEnum<Colour>);
  static_assert(!RegisteredEnum<Plain>);
  static_assert(!RegisteredEnum<int>);
}

TEST(Enum, descriptionListsValuesInTheirOrder) {
  const TypeDesc desc = enumerationType<Colour>();
  EXPECT_EQ(desc.name(), "Mox::Lights::Colour");
  EXPECT_EQ(desc.type(), typeid(Colour));
  ASSERT_EQ(desc.value().size(), 3U);
  EXPECT_EQ(desc.value()[2].value, 7U);
  EXPECT_STREQ(desc.value()[2].name, "blue");
  EXPECT_STREQ(desc.value()[0].name, "red");
  EXPECT_TRUE(desc.attribute().empty());
}

}  // namespace EnumTest
}  // namespace Mox
