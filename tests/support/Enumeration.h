// What holds of every registered enumeration whose numbers run from 0 on.
//
//   struct Colours {
//     using Instance = ColourInstance;
//     static inline const std::string type = "Colour";
//     static inline const std::vector<std::pair<Colour, std::string>> values{{Colour::red, "red"}, ...};
//     static inline const std::vector<std::string> unknown{"Red", ...};             // what is no name but looks like one
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Colour, Enumeration, Colours);                   // in namespace Test

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "mox/Enum.h"
#include "tests/support/RangeError.h"

namespace Test {

template <class Expected>
class Enumeration : public testing::Test {
 protected:
  using Enum = decltype(Expected::values.front().first);
  using Instance = typename Expected::Instance;
  using Type = Mox::EnumType<Enum>;

  static constexpr auto max = std::numeric_limits<std::uint32_t>::max();

  [[nodiscard]] static auto count() { return static_cast<std::uint32_t>(Expected::values.size()); }
  [[nodiscard]] static std::string notAllowed(const std::string& text) {
    return Expected::type + "::value " + text + " not allowed";
  }
};
TYPED_TEST_SUITE_P(Enumeration);

TYPED_TEST_P(Enumeration, hasItsNumbersAndNoOthers) {
  for (std::uint32_t i = 0; i < this->count(); ++i) {
    EXPECT_EQ(static_cast<std::uint32_t>(TypeParam::values[i].first), i);
  }
  EXPECT_EQ(moxEnumValues(typename TestFixture::Enum()).size(), this->count());
}

TYPED_TEST_P(Enumeration, isWrittenAsItsName) {
  for (const auto& [value, name] : TypeParam::values) {
    std::ostringstream out;
    out << value;
    EXPECT_EQ(out.str(), name);
    EXPECT_EQ(stringValue(value), name);
    EXPECT_EQ(valueToStrep(value), name);
  }
}

TYPED_TEST_P(Enumeration, isParsedFromItsName) {
  for (const auto& [value, name] : TypeParam::values) {
    EXPECT_EQ(TestFixture::Type::sequenceToValue(name), value);
    EXPECT_EQ(typename TestFixture::Instance(name).value(), value);
  }
}

TYPED_TEST_P(Enumeration, isChosenByItsNumber) {
  for (std::uint32_t i = 0; i < this->count(); ++i) {
    const typename TestFixture::Enum chosen = typename TestFixture::Instance(i);
    EXPECT_EQ(chosen, TypeParam::values[i].first);
  }
}

TYPED_TEST_P(Enumeration, ofUnknownNameRaisesRangeException) {
  std::vector<std::string> unknown = TypeParam::unknown;
  for (const auto& [value, name] : TypeParam::values) {
    unknown.insert(unknown.end(), {name + ' ', ' ' + name, name + ',' + name, name.substr(1), "X" + name.substr(1)});
  }
  for (const std::string& name : unknown) {
    EXPECT_EQ(rangeErrorOf([&] { return typename TestFixture::Instance(name); }), this->notAllowed(name));
    EXPECT_EQ(rangeErrorOf([&] { return TestFixture::Type::sequenceToValue(name); }), this->notAllowed(name));
  }
}

TYPED_TEST_P(Enumeration, ofUnknownNumberRaisesRangeException) {
  for (const std::int64_t number : {std::int64_t{this->count()}, std::int64_t{this->count()} + 1,
                                    std::int64_t{this->max}, std::int64_t{1} << 32, std::int64_t{-1}}) {
    EXPECT_EQ(rangeErrorOf([&] { return typename TestFixture::Instance(number); }),
              this->notAllowed(std::to_string(number)));
  }
}

TYPED_TEST_P(Enumeration, ofUnknownNumberIsWrittenAsTheNumber) {
  for (std::uint32_t number = this->count(); number < this->count() + 5; ++number) {
    EXPECT_EQ(stringValue(static_cast<typename TestFixture::Enum>(number)), std::to_string(number));
  }
}

REGISTER_TYPED_TEST_SUITE_P(Enumeration, hasItsNumbersAndNoOthers, isWrittenAsItsName, isParsedFromItsName,
                            isChosenByItsNumber, ofUnknownNameRaisesRangeException, ofUnknownNumberRaisesRangeException,
                            ofUnknownNumberIsWrittenAsTheNumber);

}  // namespace Test
