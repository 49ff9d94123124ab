// The log against a plain model: random messages through the smallest ring.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "bridging/PortState.h"
#include "bridging/VlanId.h"
#include "kestrel/Kestrel.h"
#include "mox/String.h"
#include "quill/IntfId.h"
#include "tests/support/Random.h"
#include "tests/support/VirtualTime.h"

namespace Kestrel::KestrelRandomTest {

using Bridging::Topology::PortState;
using Test::Random;
using Test::seedTrace;
using Test::VirtualTimeInUse;

constexpr std::size_t ringBytes = 8192;
constexpr std::size_t ringWords = ringBytes / 8;

/// What a message must read as, and the memory that it takes.
struct Expected {
  std::uint64_t number = 0;
  double time = 0.0;
  const MsgDesc* site = nullptr;
  std::string text;
  // In words: where it starts, and how many it takes; the ring also keeps room for two words of each argument that a
  // message may have.
  std::size_t start = 0;
  std::size_t words = 3;
  std::size_t room = 3 + 2 * MsgWriter::maxArguments;
};

class Trial {
 public:
  Trial() {
    for (unsigned places = 0; places < formats_.size(); ++places) {
      if (places != 0) formats_[places] = formats_[places - 1] + " {}";
    }
    // Sites live as long as the process, and so do their formats.
    static std::deque<std::string> formats;
    static std::deque<MsgDesc> sites;
    for (const std::string& format : formats_) {
      const char* const kept = formats.emplace_back("message" + format).c_str();
      site_.push_back(&sites.emplace_back("/src/Lights", static_cast<unsigned>(sites.size()), kept));
    }
  }

  /// Appends a random message to the log and to the model.
  void append() {
    time_->advance(0.125 * static_cast<double>(random_.below(3)));
    const std::size_t places = random_.below(site_.size());
    // Often the usual few arguments, sometimes more than a message takes, all of one kind, or long texts.
    const std::size_t arguments = random_.percent(70) ? random_.below(5) : random_.below(20);
    const bool isLong = random_.percent(10);
    const bool isUniform = random_.percent(10);
    const std::size_t kind = random_.below(kinds);

    Expected expected;
    expected.number = appended_++;
    expected.time = time_->presentTime();
    expected.site = site_[places];
    expected.text = "message";
    expected.start = end_;
    MsgWriter message = file_.startMsg(*site_[places]);
    for (std::size_t i = 0; i < arguments; ++i) {
      Expected part;
      append(message, part, isUniform ? kind : random_.below(kinds), isLong);
      if (i >= MsgWriter::maxArguments) continue;
      expected.text += ' ' + part.text;
      expected.words += part.words - Expected().words;
      expected.room += part.room - Expected().room;
    }
    for (std::size_t i = std::min(arguments, MsgWriter::maxArguments); i < places; ++i) expected.text += " {}";
    message.endMsg();

    end_ += expected.words;
    const std::size_t limit = expected.start + expected.room;
    if (limit > ringWords) kept_ = std::max(kept_, limit - ringWords);
    model_.push_back(expected);
    while (model_.front().start < kept_) model_.pop_front();
  }

  /// The log holds the latest messages, and no fewer than its memory has room for.
  void check() const {
    const auto messages = file_.messages();
    ASSERT_EQ(file_.appended(), appended_);
    ASSERT_GE(messages.size(), model_.size());
    ASSERT_LE(messages.size(), ringWords / Expected().words);
    std::uint64_t number = appended_ - messages.size();
    auto expected = model_.begin();
    for (const Message& message : messages) {
      ASSERT_EQ(message.number, number);
      if (number == expected->number) {
        ASSERT_EQ(message.text, expected->text);
        ASSERT_EQ(message.time, expected->time);
        ASSERT_EQ(message.file, expected->site->file());
        ASSERT_EQ(message.line, expected->site->line());
        ++expected;
      }
      ++number;
    }
    ASSERT_EQ(expected, model_.end());
  }

  [[nodiscard]] std::size_t words() const { return end_; }
  [[nodiscard]] Random& random() { return random_; }

 private:
  static constexpr std::size_t kinds = 8;

  template <class T>
  void append(MsgWriter& message, Expected& expected, const T& value, const std::string& text, std::size_t words) {
    message.arg(value);
    expected.text = text;
    expected.words += words;
  }

  void appendText(MsgWriter& message, Expected& expected, bool isLong) {
    std::string text;
    for (std::size_t size = random_.below(isLong ? 400 : 30); size > 0; --size) {
      text += "{}abcdefgh"[random_.below(10)];
    }
    const std::string cut = text.substr(0, MsgWriter::maxText);
    const std::size_t words = 1 + (cut.size() + 7) / 8;
    if (random_.percent(50)) {
      append(message, expected, std::string_view(text), cut, words);
    } else {
      append(message, expected, Mox::String(text), cut, words);
    }
    expected.room += cut.size() / 8;
  }

  /// A random argument of a kind.
  void append(MsgWriter& message, Expected& expected, std::size_t kind, bool isLong) {
    const std::uint64_t bits = random_.bits();
    const auto signedBits = static_cast<std::int64_t>(bits);
    switch (isLong ? 0 : kind) {
      case 0:
        return appendText(message, expected, isLong);
      case 1:
        return append(message, expected, bits, std::to_string(bits), 1);
      case 2:
        return append(message, expected, signedBits, std::to_string(signedBits), 1);
      case 3:
        return append(message, expected, bits % 2 == 0, bits % 2 == 0 ? "true" : "false", 1);
      case 4: {
        const Bridging::VlanId vid = static_cast<unsigned>(1 + bits % 4094);
        return append(message, expected, vid, std::to_string(vid.value()), 1);
      }
      case 5: {
        constexpr std::array names{"disabled", "blocking", "learning", "forwarding"};
        return append(message, expected, static_cast<PortState>(bits % 4), names[bits % 4], 2);
      }
      case 6: {
        const std::string name = (bits % 2 == 0 ? "Ethernet" : "odd name ") + std::to_string(bits % 97);
        return append(message, expected, Quill::IntfId(name), name, 2);
      }
      default:
        return append(message, expected, 0.25 * static_cast<double>(bits % 8),
                      std::array{"0", "0.25", "0.5", "0.75", "1", "1.25", "1.5", "1.75"}[bits % 8], 1);
    }
  }

  Random random_;
  VirtualTimeInUse time_;
  TraceFile file_{ringBytes};
  std::array<std::string, 20> formats_;
  std::vector<MsgDesc*> site_;
  std::deque<Expected> model_;
  std::uint64_t appended_ = 0;
  std::size_t end_ = 0;   // words appended
  std::size_t kept_ = 0;  // words that may be overwritten
};

TEST(LogRandom, holdsTheLatestMessages) {
  SCOPED_TRACE(seedTrace());
  Trial trial;
  for (int i = 0; i < 1'000 && !testing::Test::HasFailure(); ++i) {
    for (std::size_t n = trial.random().below(40); n > 0; --n) trial.append();
    trial.check();
  }
  EXPECT_GT(trial.words(), 100 * ringWords);
}

/// The same, looked at after each message from the first on, until the ring has been filled a few times.
TEST(LogRandom, holdsTheLatestMessagesAtEveryStep) {
  SCOPED_TRACE(seedTrace());
  Trial trial;
  while (trial.words() < 5 * ringWords && !testing::Test::HasFailure()) {
    trial.check();
    trial.append();
  }
}

}  // namespace Kestrel::KestrelRandomTest
