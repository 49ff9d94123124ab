#include "mox/Exception.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>

namespace Mox::ExceptionTest {

/// The text of the exception that the action raises, which must be an `E`.
template <class E>
[[nodiscard]] std::string textOf(const auto& action) {
  try {
    action();
  } catch (const E& e) {
    return e.what();
  }
  return "nothing was raised";
}

TEST(Exception, rangeExceptionHasExactlyTheText) {
  EXPECT_EQ(textOf<RangeException>([] { throwRangeException("VlanId::value < 1 or > 4094 not allowed"); }),
            "VlanId::value < 1 or > 4094 not allowed");
}

TEST(Exception, reinstantiationNamesMutator) {
  EXPECT_EQ(textOf<MutatorReinstantiatingException>([] { throwMutatorReinstantiating("topoConfigIs"); }),
            "topoConfigIs: a member of this key exists, made with other arguments");
}

TEST(Exception, nullArgumentNamesMutatorAndArgument) {
  EXPECT_EQ(textOf<MutatorArgNullPointerException>(
                [] { throwMutatorArgNullPointerException("topoConfigSmIs", "topoConfig"); }),
            "topoConfigSmIs: argument topoConfig must not be null");
}

TEST(Exception, unusableArgumentsNameFactoryAndReason) {
  EXPECT_EQ(textOf<NewEntityArgsException>([] { throwNewEntityArgsException("topoLibCodefFactory", "libSm is null"); }),
            "topoLibCodefFactory: unusable arguments: libSm is null");
}

TEST(Exception, textMayBePartOfLongerOne) {
  const std::string_view whole = "topoConfigIs and more";
  EXPECT_EQ(textOf<MutatorReinstantiatingException>([&] { throwMutatorReinstantiating(whole.substr(0, 12)); }),
            "topoConfigIs: a member of this key exists, made with other arguments");
  EXPECT_EQ(textOf<RangeException>([&] { throwRangeException(whole.substr(0, 12)); }), "topoConfigIs");
}

TEST(Exception, allAreCaughtByTheirBase) {
  EXPECT_EQ(textOf<Exception>([] { throwRangeException("out"); }), "out");
  EXPECT_EQ(textOf<std::runtime_error>([] { throwRangeException("out"); }), "out");
  static_assert(std::is_base_of_v<Exception, RangeException>);
  static_assert(std::is_base_of_v<Exception, MutatorReinstantiatingException>);
  static_assert(std::is_base_of_v<Exception, MutatorArgNullPointerException>);
  static_assert(std::is_base_of_v<Exception, NewEntityArgsException>);
  static_assert(std::is_base_of_v<std::runtime_error, Exception>);
}

TEST(Exception, oneKindIsNotCaughtAsAnother) {
  try {
    throwRangeException("out");
  } catch (const MutatorReinstantiatingException&) {
    FAIL();
  } catch (const NewEntityArgsException&) {
    FAIL();
  } catch (const MutatorArgNullPointerException&) {
    FAIL();
  } catch (const Exception& e) {
    EXPECT_STREQ(e.what(), "out");
  }
}

}  // namespace Mox::ExceptionTest
