#include "mox/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "mox/Hash.h"
#include "tests/support/Allocations.h"
#include "tests/support/Random.h"
#include "tests/support/RangeError.h"
#include "tests/support/ScopedHashSeed.h"

namespace Mox::StringTest {

using Test::AllocationCount;
using Test::FailingAllocations;
using Test::Random;
using Test::rangeErrorOf;
using Test::ScopedHashSeed;
using Test::seedTrace;

TEST(String, isEmptyAtFirst) {
  const String s;
  EXPECT_TRUE(s.empty());
  EXPECT_EQ(s.size(), 0U);
  EXPECT_EQ(s.view(), "");
  EXPECT_STREQ(s.c_str(), "");
  EXPECT_EQ(s.hash(), 0U);
}

TEST(String, emptyTextHoldsNoMemory) {
  const AllocationCount allocations;
  const String fromLiteral = "";
  const String fromText = std::string();
  const String fromView = std::string_view();
  EXPECT_EQ(fromLiteral, String());
  EXPECT_EQ(fromText, String());
  EXPECT_EQ(fromView, String());
  EXPECT_EQ(allocations.made(), 0U);
}

TEST(String, isMadeFromAnythingThatReadsAsText) {
  const std::string text = "state";
  const std::array characters = {'s', 't', 'a', 't', 'e', '!'};
  EXPECT_EQ(String("state").view(), "state");
  EXPECT_EQ(String(text).view(), "state");
  EXPECT_EQ(String(text.c_str()).view(), "state");
  EXPECT_EQ(String(std::string_view(characters.data(), 5)).view(), "state");
  static_assert(!std::is_constructible_v<String, int>);
}

TEST(String, keepsItsCharactersForItself) {
  std::string text = "state";
  const String s = text;
  text[0] = 'S';
  EXPECT_EQ(s, "state");
}

TEST(String, endsWithZero) {
  const std::array characters = {'a', 'b', 'c', 'd'};
  const String s = std::string_view(characters.data(), 3);
  EXPECT_STREQ(s.c_str(), "abc");
  EXPECT_EQ(s.c_str()[s.size()], '\0');
}

TEST(String, holdsZeros) {
  using namespace std::string_view_literals;
  const String s = "a\0b"sv;
  EXPECT_EQ(s.size(), 3U);
  EXPECT_EQ(s.view(), "a\0b"sv);
  EXPECT_NE(s, String("a"));
  EXPECT_NE(s, "a\0c"sv);
  EXPECT_NE(String("a\0"sv), String("a"));
  EXPECT_NE(String("\0"sv), String());
  EXPECT_FALSE(String("\0"sv).empty());
  EXPECT_LT(String("a"), s);
}

TEST(String, holdsLongText) {
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += std::to_string(i);
  const String s = text;
  EXPECT_EQ(s.size(), text.size());
  EXPECT_EQ(s, text);
  text.back() = 'x';
  EXPECT_NE(s, text);
}

TEST(String, tooLongTextIsRangeException) {
  String s = "before";
  // The characters are not looked at: only the length is told to be out of range.
  const std::string_view tooLong("x", std::size_t{1} << 32);
  EXPECT_EQ(rangeErrorOf([&] { s = tooLong; }), "String::size > 4294967295 not allowed");
  EXPECT_EQ(s, "before");
}

TEST(String, copiesShareTheirCharacters) {
  const String a = "state";
  const AllocationCount allocations;
  const String b = a;  // NOLINT(performance-unnecessary-copy-initialization): the copy is the subject
  String c;
  c = a;
  EXPECT_EQ(a.c_str(), b.c_str());
  EXPECT_EQ(a.c_str(), c.c_str());
  EXPECT_EQ(allocations.made(), 0U);
}

TEST(String, charactersLiveAsLongAsACopy) {
  String copy;
  const AllocationCount allocations;
  {
    const String s = "state";
    copy = s;
  }
  EXPECT_EQ(copy, "state");
  EXPECT_GT(allocations.bytes(), 0U);
  copy = String();
  EXPECT_EQ(allocations.bytes(), 0U);
}

TEST(String, moveLeavesEmptyText) {
  String a = "state";
  const char* const characters = a.c_str();
  const String b = std::move(a);
  EXPECT_EQ(b.c_str(), characters);
  EXPECT_TRUE(a.empty());
  a = "again";
  EXPECT_EQ(a, "again");
  EXPECT_EQ(b, "state");
}

TEST(String, moveAssignmentTakesTextOver) {
  String a = "state";
  String b = "old";
  const AllocationCount allocations;
  b = std::move(a);
  EXPECT_EQ(b, "state");
  EXPECT_TRUE(a.empty());
  EXPECT_EQ(allocations.made(), 0U);
}

TEST(String, selfAssignmentChangesNothing) {
  String s = "state";
  const String& same = s;
  s = same;
  EXPECT_EQ(s, "state");
  String& self = s;
  s = std::move(self);
  EXPECT_EQ(s, "state");
  s = s.view();
  EXPECT_EQ(s, "state");
  s = s.view().substr(1);
  EXPECT_EQ(s, "tate");
}

TEST(String, swapExchangesTexts) {
  String a = "a";
  String b;
  a.swap(b);
  EXPECT_EQ(a, "");
  EXPECT_EQ(b, "a");
  b.swap(b);
  EXPECT_EQ(b, "a");
}

TEST(String, equalsAllKindsOfText) {
  const String s = "state";
  EXPECT_TRUE(s == "state");
  EXPECT_TRUE("state" == s);
  EXPECT_TRUE(s == std::string("state"));
  EXPECT_TRUE(std::string("state") == s);
  EXPECT_TRUE(s == std::string_view("state"));
  EXPECT_TRUE(std::string_view("state") == s);
  EXPECT_TRUE(s == String("state"));
  EXPECT_TRUE(s == String(s));
}

TEST(String, differsFromAllKindsOfText) {
  const String s = "state";
  EXPECT_TRUE(s != "State");
  EXPECT_TRUE("stat" != s);
  EXPECT_TRUE(s != std::string("states"));
  EXPECT_TRUE(s != std::string_view());
  EXPECT_TRUE(s != String("stats"));
  EXPECT_TRUE(s != String());
  EXPECT_TRUE(String() != s);
  EXPECT_FALSE(s != "state");
}

TEST(String, orderIsThatOfBytes) {
  using namespace std::string_literals;
  SCOPED_TRACE(seedTrace());
  Random random;
  std::vector<std::string> texts{"",           "a",         "b",    "aa",   "ab",   "B",
                                 "Ethernet10", "Ethernet2", "\x7F", "\x80", "\xFF", "a\0"s};
  for (int i = 0; i < 30; ++i) {
    std::string text;
    for (std::size_t n = random.below(20); n > 0; --n) text += static_cast<char>(random.below(256));
    texts.push_back(text);
  }
  for (const std::string& a : texts) {
    for (const std::string& b : texts) {
      const auto expected = a <=> b;
      EXPECT_EQ(String(a) <=> String(b), expected) << a << ", " << b;
      EXPECT_EQ(String(a) <=> b, expected);
      EXPECT_EQ(a <=> String(b), expected);
      EXPECT_EQ(String(a) <=> std::string_view(b), expected);
      EXPECT_EQ(String(a) == String(b), a == b);
      EXPECT_EQ(String(a) == b, a == b);
    }
  }
  EXPECT_TRUE(String("a") < "b");
  EXPECT_TRUE("a" < String("b"));
  EXPECT_TRUE(String("b") >= std::string("b"));
}

TEST(String, equalTextsHaveEqualHashes) {
  const std::string text = "a text that is longer than a few words";
  for (std::size_t n = 0; n <= text.size(); ++n) {
    const String s = std::string_view(text).substr(0, n);
    EXPECT_EQ(s.hash(), String(std::string(text, 0, n)).hash());
    EXPECT_EQ(std::hash<String>{}(s), s.hash());
  }
}

TEST(String, differentTextsHaveDifferentHashes) {
  using namespace std::string_literals;
  std::set<std::uint64_t> hashes;
  std::size_t texts = 0;
  const auto add = [&](const std::string& text) {
    ++texts;
    hashes.insert(String(text).hash());
  };
  for (int i = 0; i < 10'000; ++i) add("Ethernet" + std::to_string(i));
  for (std::size_t n = 0; n < 100; ++n) add(std::string(n, '\0'));
  for (std::size_t n = 1; n < 100; ++n) add(std::string(n, 'x'));
  for (std::size_t place = 0; place < 40; ++place) {
    std::string text(40, 'y');
    text[place] = 'z';
    add(text);
  }
  add("abcdefgh12345678"s);
  add("12345678abcdefgh"s);
  EXPECT_EQ(hashes.size(), texts);
}

TEST(String, hashDoesNotDependOnHashSeed) {
  const std::uint64_t before = String("state").hash();
  const ScopedHashSeed seed(hashSeed32() + 1);
  EXPECT_EQ(String("state").hash(), before);
}

TEST(StringDeathTest, hashIsTheSameInEveryProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string expected = "hash " + std::to_string(String("a text of some length").hash()) + "\n";
  EXPECT_EXIT(
      {
        std::cerr << "hash " << String("a text of some length").hash() << '\n';
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), expected);
}

TEST(String, isAKeyOfStandardContainers) {
  const std::unordered_set<String> hashed{"a", "b", "a"};
  EXPECT_EQ(hashed.size(), 2U);
  EXPECT_TRUE(hashed.contains("b"));
  const std::set<String> sorted{"b", "a"};
  EXPECT_EQ(*sorted.begin(), "a");
}

TEST(String, printsItsCharacters) {
  std::ostringstream out;
  out << String("state") << '/' << String();
  EXPECT_EQ(out.str(), "state/");
  std::ostringstream zeros;
  zeros << String(std::string_view("a\0b", 3));
  EXPECT_EQ(zeros.str(), std::string("a\0b", 3));
}

TEST(String, readsAsStringView) {
  const String s = "state";
  const std::string_view view = s;
  EXPECT_EQ(view, "state");
  EXPECT_EQ(view.data(), s.c_str());
}

TEST(String, isOneWord) { static_assert(sizeof(String) == sizeof(void*)); }

TEST(String, lackOfMemoryLeavesTextAsItWas) {
  String s = "before";
  const std::string text(100, 'x');
  bool isThrown = false;
  try {
    const FailingAllocations failing;
    s = text;
  } catch (const std::bad_alloc&) {
    isThrown = true;
  }
  EXPECT_TRUE(isThrown);
  EXPECT_EQ(s, "before");
}

TEST(String, usesAtMostOneAllocation) {
  const AllocationCount allocations;
  const String s = "a text that is longer than a few words";
  EXPECT_EQ(allocations.made(), 1U);
  EXPECT_LE(allocations.bytes(), s.size() + 1 + 16);
}

}  // namespace Mox::StringTest
