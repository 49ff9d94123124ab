// The enumerations of interface status: their numbers and names, both ways.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "interface/EthIntfStatus.h"

namespace Interface {
namespace {

/// The names of an enumeration, in the order of its numbers from 0 on, and its own name.
template <class Enum>
struct Expected;
template <>
struct Expected<LinkStatus> {
  static inline const std::string type = "LinkStatus";
  static inline const std::vector<std::string> names{"unknown", "down", "up"};
};
template <>
struct Expected<ForwardingModel> {
  static inline const std::string type = "ForwardingModel";
  static inline const std::vector<std::string> names{"unspecified", "dropped", "routed",
                                                     "mirrored",    "bridged", "tunneled"};
};

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

TEST(LinkStatus, hasItsNumbers) {
  EXPECT_EQ(static_cast<std::uint32_t>(LinkStatus::unknown), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(LinkStatus::down), 1U);
  EXPECT_EQ(static_cast<std::uint32_t>(LinkStatus::up), 2U);
}

TEST(ForwardingModel, hasItsNumbers) {
  EXPECT_EQ(static_cast<std::uint32_t>(ForwardingModel::unspecified), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(ForwardingModel::dropped), 1U);
  EXPECT_EQ(static_cast<std::uint32_t>(ForwardingModel::routed), 2U);
  EXPECT_EQ(static_cast<std::uint32_t>(ForwardingModel::mirrored), 3U);
  EXPECT_EQ(static_cast<std::uint32_t>(ForwardingModel::bridged), 4U);
  EXPECT_EQ(static_cast<std::uint32_t>(ForwardingModel::tunneled), 5U);
}

template <class Enum>
class InterfaceEnumeration : public testing::Test {
 protected:
  using Instance = Mox::EnumInstance<Enum>;

  static const std::vector<std::string>& names() { return Expected<Enum>::names; }
  static std::string notAllowed(const std::string& text) {
    return Expected<Enum>::type + "::value " + text + " not allowed";
  }
};

using Enumerations = testing::Types<LinkStatus, ForwardingModel>;
TYPED_TEST_SUITE(InterfaceEnumeration, Enumerations);

TYPED_TEST(InterfaceEnumeration, hasNoOtherValues) {
  EXPECT_EQ(moxEnumValues(TypeParam()).size(), this->names().size());
}

TYPED_TEST(InterfaceEnumeration, isWrittenAsItsName) {
  for (std::uint32_t number = 0; number < this->names().size(); ++number) {
    const auto value = static_cast<TypeParam>(number);
    std::ostringstream out;
    out << value;
    EXPECT_EQ(out.str(), this->names()[number]);
    EXPECT_EQ(stringValue(value), this->names()[number]);
    EXPECT_EQ(valueToStrep(value), this->names()[number]);
  }
}

TYPED_TEST(InterfaceEnumeration, isParsedFromItsName) {
  for (std::uint32_t number = 0; number < this->names().size(); ++number) {
    const auto value = static_cast<TypeParam>(number);
    EXPECT_EQ(Mox::EnumType<TypeParam>::sequenceToValue(this->names()[number]), value);
    EXPECT_EQ(typename TestFixture::Instance(this->names()[number]).value(), value);
  }
}

TYPED_TEST(InterfaceEnumeration, isChosenByItsNumber) {
  for (std::uint32_t number = 0; number < this->names().size(); ++number) {
    const TypeParam chosen = typename TestFixture::Instance(number);
    EXPECT_EQ(chosen, static_cast<TypeParam>(number));
  }
}

TYPED_TEST(InterfaceEnumeration, ofUnknownNameRaisesRangeException) {
  for (const std::string name : {"", "Up", "up ", " up", "Routed", "bridge", "0", "x"}) {
    EXPECT_EQ(rangeError([&] { return typename TestFixture::Instance(name); }), this->notAllowed(name));
    EXPECT_EQ(rangeError([&] { return Mox::EnumType<TypeParam>::sequenceToValue(name); }), this->notAllowed(name));
  }
}

TYPED_TEST(InterfaceEnumeration, ofUnknownNumberRaisesRangeException) {
  const auto next = static_cast<std::uint32_t>(this->names().size());
  for (const std::uint32_t number : {next, next + 1, 4294967295U}) {
    EXPECT_EQ(rangeError([&] { return typename TestFixture::Instance(number); }),
              this->notAllowed(std::to_string(number)));
  }
}

TYPED_TEST(InterfaceEnumeration, ofUnknownNumberIsWrittenAsTheNumber) {
  EXPECT_EQ(stringValue(static_cast<TypeParam>(6)), "6");
}

}  // namespace
}  // namespace Interface
