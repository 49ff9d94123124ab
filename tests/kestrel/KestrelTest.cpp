#include "kestrel/Kestrel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "mox/Exception.h"
#include "mox/String.h"
#include "mox/System.h"
#include "quill/IntfId.h"
#include "tests/support/Allocations.h"
#include "tests/support/VirtualTime.h"

namespace Kestrel::KestrelTest {

using Test::AllocationCount;
using Test::FailingAllocations;
using Test::VirtualTimeInUse;

constexpr std::size_t smallest = 8192;

class Log : public testing::Test {
 public:
  Log() { traceFileIs(smallest); }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;
  ~Log() override { traceFileDel(); }
};

std::vector<std::string> texts() {
  std::vector<std::string> result;
  for (const Message& message : traceFile()->messages()) result.push_back(message.text);
  return result;
}

using Texts = std::vector<std::string>;

// ---- with and without a log

TEST(LogAbsent, thereIsNoneAtFirstAndAfterItsEnd) {
  EXPECT_EQ(traceFile(), nullptr);
  traceFileIs(smallest);
  EXPECT_NE(traceFile(), nullptr);
  traceFileDel();
  EXPECT_EQ(traceFile(), nullptr);
  traceFileDel();
  EXPECT_EQ(traceFile(), nullptr);
}

TEST(LogAbsent, messageIsSkippedAndItsArgumentsAreNotEvaluated) {
  int evaluated = 0;
  const auto log = [&] { KESTREL_MSG("/src/Lights", "lamp {}", ++evaluated); };
  log();
  EXPECT_EQ(evaluated, 0);
  traceFileIs(smallest);
  log();
  EXPECT_EQ(evaluated, 1);
  EXPECT_EQ(texts(), (Texts{"lamp 1"}));
  traceFileDel();
  log();
  EXPECT_EQ(evaluated, 1);
}

TEST(LogAbsent, skippedMessageDoesNotRegisterItsSite) {
  static constinit MsgDesc before("/src/Lights", 1, "before");
  static constinit MsgDesc after("/src/Lights", 2, "after");
  const std::uint32_t first = before.id();
  KESTREL_MSG("/src/Lights", "skipped");
  EXPECT_EQ(after.id(), first + 1);
}

TEST_F(Log, freshOneIsEmpty) {
  EXPECT_EQ(traceFile()->appended(), 0U);
  EXPECT_TRUE(traceFile()->messages().empty());
}

TEST_F(Log, newOneReplacesTheOldAndCountsAnew) {
  KESTREL_MSG("/src/Lights", "old");
  traceFileIs(smallest);
  EXPECT_EQ(traceFile()->appended(), 0U);
  EXPECT_TRUE(traceFile()->messages().empty());
  KESTREL_MSG("/src/Lights", "new");
  const auto messages = traceFile()->messages();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].number, 0U);
  EXPECT_EQ(messages[0].text, "new");
}

TEST_F(Log, logsOfOnesOwnAreIndependent) {
  static constinit MsgDesc site("/src/Lights", 1, "lamp {}");
  TraceFile own(smallest);
  append(own, site, 7U);
  EXPECT_EQ(own.appended(), 1U);
  EXPECT_EQ(own.messages().at(0).text, "lamp 7");
  EXPECT_EQ(traceFile()->appended(), 0U);
}

// ---- a message

TEST_F(Log, messageTellsWhereAndWhen) {
  const VirtualTimeInUse time;
  time->advance(12.5);
  time->tickIs(1.0);
  const unsigned line = __LINE__ + 1;
  KESTREL_MSG("/src/Lights", "lamp {} now has {} watt", Mox::String("hall"), 40U);
  time->advance(1.0);
  KESTREL_MSG("/src/Other", "second");
  const auto messages = traceFile()->messages();
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(messages[0].number, 0U);
  EXPECT_EQ(messages[0].time, 12.5);
  EXPECT_STREQ(messages[0].file, "/src/Lights");
  EXPECT_EQ(messages[0].line, line);
  EXPECT_EQ(messages[0].text, "lamp hall now has 40 watt");
  EXPECT_EQ(messages[1].number, 1U);
  EXPECT_EQ(messages[1].time, 13.5) << "a message must not move virtual time";
  EXPECT_STREQ(messages[1].file, "/src/Other");
  EXPECT_EQ(messages[1].line, line + 2);
}

TEST_F(Log, messageIsOneStatement) {
  for (const bool isLit : {true, false}) {
    // NOLINTBEGIN(readability-braces-around-statements): without braces is what the test is about.
    if (isLit)
      KESTREL_MSG("/src/Lights", "lit");
    else
      KESTREL_MSG("/src/Lights", "dark {}", 1U);
    // NOLINTEND(readability-braces-around-statements)
  }
  EXPECT_EQ(texts(), (Texts{"lit", "dark 1"}));
}

TEST_F(Log, readingChangesNothing) {
  KESTREL_MSG("/src/Lights", "lamp {}", 1U);
  EXPECT_EQ(texts(), texts());
  EXPECT_EQ(traceFile()->appended(), 1U);
}

TEST_F(Log, messageInAnArgumentIsAppendedFirst) {
  const auto inner = [] {
    KESTREL_MSG("/src/Lights", "inner {}", 2U);
    return 1U;
  };
  KESTREL_MSG("/src/Lights", "outer {}", inner());
  EXPECT_EQ(texts(), (Texts{"inner 2", "outer 1"}));
}

TEST_F(Log, messageInStepsIsTheSame) {
  const VirtualTimeInUse time;
  time->advance(2.0);
  static constinit MsgDesc site("/src/Lights", 77, "lamp {} of {}");
  MsgWriter message = traceFile()->startMsg(site);
  message.arg("hall");
  message.arg(3U);
  time->advance(1.0);
  message.endMsg();
  const auto messages = traceFile()->messages();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_STREQ(messages[0].file, "/src/Lights");
  EXPECT_EQ(messages[0].line, 77U);
  EXPECT_EQ(messages[0].time, 3.0);
  EXPECT_EQ(messages[0].text, "lamp hall of 3");
}

TEST_F(Log, messageIsNoPartOfTheLogBeforeItsEnd) {
  static constinit MsgDesc site("/src/Lights", 1, "lamp {}");
  KESTREL_MSG("/src/Lights", "first");
  {
    MsgWriter abandoned = traceFile()->startMsg(site);
    abandoned.arg("never said");
    EXPECT_EQ(traceFile()->appended(), 1U);
    EXPECT_EQ(texts(), (Texts{"first"}));
  }
  KESTREL_MSG("/src/Lights", "second");
  EXPECT_EQ(texts(), (Texts{"first", "second"}));
  EXPECT_EQ(traceFile()->appended(), 2U);
}

// ---- call sites

TEST_F(Log, siteIsNumberedFromOneOn) {
  static constinit MsgDesc site("/src/Lights", 1, "lamp");
  EXPECT_GE(site.id(), 1U);
  EXPECT_EQ(site.id(), site.id());
  EXPECT_STREQ(site.file(), "/src/Lights");
  EXPECT_EQ(site.line(), 1U);
  EXPECT_STREQ(site.format(), "lamp");
}

TEST_F(Log, siteIsRegisteredOnce) {
  static constinit MsgDesc before("/src/Lights", 1, "before");
  static constinit MsgDesc after("/src/Lights", 2, "after");
  const std::uint32_t first = before.id();
  for (int i = 0; i < 10; ++i) KESTREL_MSG("/src/Lights", "lamp {}", i);
  EXPECT_EQ(after.id(), first + 2);
}

TEST_F(Log, siteKeepsItsNumberInTheNextLog) {
  static constinit MsgDesc site("/src/Lights", 1, "lamp {}");
  const std::uint32_t id = site.id();
  append(*traceFile(), site, 1U);
  traceFileIs(smallest);
  append(*traceFile(), site, 2U);
  EXPECT_EQ(site.id(), id);
  EXPECT_EQ(texts(), (Texts{"lamp 2"}));
}

TEST_F(Log, siteWithoutMemoryToRegisterItTriesAgain) {
  // Registering takes memory now and then only, so make sites until one finds none. They live as long as the process.
  static std::deque<MsgDesc> sites;
  bool isRegistered = true;
  while (isRegistered) {
    sites.emplace_back("/src/Lights", 1U, "lamp {}");
    const FailingAllocations noMemory;
    isRegistered = sites.back().id() != 0;
    if (!isRegistered) append(*traceFile(), sites.back(), 1U);
  }
  EXPECT_EQ(texts(), (Texts{"(call site not registered for lack of memory) 1"}));
  append(*traceFile(), sites.back(), 2U);
  EXPECT_GE(sites.back().id(), 1U);
  EXPECT_EQ(texts().back(), "lamp 2");
}

// ---- the ring

TEST_F(Log, oldestAreOverwrittenAndNumberingGoesOn) {
  constexpr unsigned count = 2'000;
  for (unsigned i = 0; i < count; ++i) KESTREL_MSG("/src/Lights", "lamp {}", i);
  EXPECT_EQ(traceFile()->appended(), count);
  const auto messages = traceFile()->messages();
  ASSERT_FALSE(messages.empty());
  EXPECT_LT(messages.size(), count);
  std::uint64_t expected = count - messages.size();
  for (const Message& message : messages) {
    EXPECT_EQ(message.number, expected);
    EXPECT_EQ(message.text, "lamp " + std::to_string(expected));
    ++expected;
  }
}

/// How many short messages a log of this size keeps.
std::size_t capacity(std::size_t bytes) {
  traceFileIs(bytes);
  for (std::size_t i = 0; i < bytes; ++i) KESTREL_MSG("/src/Lights", "lamp");
  return traceFile()->messages().size();
}

TEST_F(Log, sizeIsAtLeast8192BytesAndAPowerOfTwo) {
  const std::size_t least = capacity(8192);
  EXPECT_EQ(capacity(8191), least);
  EXPECT_EQ(capacity(4096), least);
  traceFileIs(0);
  for (int i = 0; i < 2'000; ++i) KESTREL_MSG("/src/Lights", "lamp");
  EXPECT_EQ(traceFile()->messages().size(), least);
  const std::size_t next = capacity(8193);
  EXPECT_GT(next, least + least / 2);
  EXPECT_EQ(capacity(16384), next);
  EXPECT_GT(capacity(16385), next + next / 2);
}

TEST_F(Log, ofMoreThanAGibibyteIsRefusedAndTheOldOneStays) {
  const TraceFile* const before = traceFile();
  for (const std::size_t bytes : {(std::size_t{1} << 30) + 1, std::numeric_limits<std::size_t>::max()}) {
    EXPECT_THROW(traceFileIs(bytes), Mox::RangeException);
  }
  EXPECT_EQ(traceFile(), before);
}

TEST_F(Log, keepsItsShareOfItsMemory) {
  // A message without arguments takes three words; the room for the next one may take a few more.
  EXPECT_GE(capacity(65536), 65536 / 32);
  EXPECT_LE(capacity(65536), 65536 / 16);
}

TEST_F(Log, longestMessageFits) {
  static constinit MsgDesc site("/src/Lights", 1, "{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}");
  for (char last = 'a'; last < 'f'; ++last) {
    std::string expected;
    MsgWriter message = traceFile()->startMsg(site);
    for (std::size_t i = 0; i < MsgWriter::maxArguments; ++i) {
      std::string text(MsgWriter::maxText, static_cast<char>('A' + i));
      text.back() = last;
      message.arg(std::string_view(text));
      expected += text;
    }
    message.endMsg();
    EXPECT_EQ(texts().back(), expected);
  }
}

TEST_F(Log, fullMessagesWrapAtEveryWord) {
  // Both messages take all the room that a message may take, once with text and once without.
  static constinit MsgDesc site("/src/Lights", 1, "{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}");
  const Quill::IntfId cpu("Cpu");
  const std::string cpus = "CpuCpuCpuCpuCpuCpuCpuCpuCpuCpuCpuCpuCpuCpuCpuCpu";
  const std::string text(MsgWriter::maxText, 'x');
  const std::string longest(MsgWriter::maxText * MsgWriter::maxArguments, 'x');
  // A short message is three words long, which has no divisor in common with the words of the ring.
  for (std::size_t offset = 0; offset < smallest / 8; ++offset) {
    SCOPED_TRACE(offset);
    traceFileIs(smallest);
    for (std::size_t i = 0; i < offset; ++i) KESTREL_MSG("/src/Lights", "short");
    append(*traceFile(), site, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu);
    Texts expected = texts();
    ASSERT_EQ(expected.back(), cpus);
    ASSERT_EQ(static_cast<std::size_t>(std::count(expected.begin(), expected.end(), "short")), expected.size() - 1);

    MsgWriter message = traceFile()->startMsg(site);
    for (std::size_t i = 0; i < MsgWriter::maxArguments; ++i) message.arg(text.c_str());
    message.endMsg();
    expected = texts();
    ASSERT_GE(expected.size(), 2U);
    ASSERT_EQ(expected.back(), longest);
    ASSERT_EQ(expected[expected.size() - 2], cpus);
    ASSERT_EQ(static_cast<std::size_t>(std::count(expected.begin(), expected.end(), "short")), expected.size() - 2);
  }
}

// ---- memory

TEST_F(Log, appendingAllocatesNothingAfterTheFirstMessageOfASite) {
  const Quill::IntfId intf("Ethernet1/2");
  const Quill::IntfId odd("odd name");
  const Mox::String name = "hall";
  const std::string text(500, 'x');
  const auto log = [&](unsigned i) {
    KESTREL_MSG("/src/Lights", "plain");
    KESTREL_MSG("/src/Lights", "{} {} {} {} {}", i, -1, true, 1.5, &i);
    KESTREL_MSG("/src/Lights", "{} {} {}", name, "chars", std::string_view(text));
    KESTREL_MSG("/src/Lights", "{} {} {}", intf, odd, Quill::IntfId());
  };
  log(0);
  {
    const AllocationCount count;
    for (unsigned i = 1; i < 2'000; ++i) log(i);
    EXPECT_EQ(count.made(), 0U);
    EXPECT_FALSE(traceFile()->messages().empty());
    EXPECT_GT(count.made(), 0U) << "the count must see what is allocated for the text";
  }
}

TEST_F(Log, skippingAllocatesNothing) {
  traceFileDel();
  const AllocationCount count;
  for (int i = 0; i < 100; ++i) KESTREL_MSG("/src/Lights", "lamp {}", Mox::String("hall"));
  EXPECT_EQ(count.made(), 0U);
}

}  // namespace Kestrel::KestrelTest
