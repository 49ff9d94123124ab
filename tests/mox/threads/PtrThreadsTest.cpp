// What several threads may do with counted objects once the switch is on. The thread sanitizer runs these too.

#include <gtest/gtest.h>

#include <array>
#include <latch>
#include <numeric>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "mox/Ptr.h"
#include "mox/String.h"

namespace Mox::PtrThreadsTest {

constexpr std::size_t threadCount = 4;
constexpr int rounds = 2000;

/// Holds a number for each thread, which its end adds up.
class Ledger : public PtrInterface {
 public:
  Ledger(int& ends, int& sum) : ends_(ends), sum_(sum) {}
  ~Ledger() override {
    ++ends_;
    sum_ += std::accumulate(entries.begin(), entries.end(), 0);
  }

  std::array<int, threadCount> entries{};

 private:
  int& ends_;
  int& sum_;
};

class PtrThreads : public testing::Test {
 public:
  PtrThreads() { threadSafePointersIs(true); }
  ~PtrThreads() override { threadSafePointersIs(before_); }

 protected:
  /// Runs `work(i)` in each thread, all at once, and waits for their ends.
  static void inThreads(const auto& work) {
    std::latch start(threadCount);
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < threadCount; ++i) {
      threads.emplace_back([&start, &work, i] {
        start.arrive_and_wait();
        work(i);
      });
    }
  }

  [[nodiscard]] Ptr<Ledger> ledger() { return makePtr<Ledger>(ends_, sum_); }
  [[nodiscard]] int ends() const { return ends_; }
  [[nodiscard]] int sum() const { return sum_; }

 private:
  bool before_ = threadSafePointers();
  int ends_ = 0;
  int sum_ = 0;
};

TEST_F(PtrThreads, copiesAndDropsLeaveRightCount) {
  auto object = ledger();
  inThreads([&object](std::size_t) {
    for (int i = 0; i < rounds; ++i) {
      const Ptr<Ledger> copy(object);  // NOLINT(performance-unnecessary-copy-initialization)
      Ptr<const Ledger> constant(copy);
      const Ptr<const PtrInterface> moved(std::move(constant));
      const Ptr<Ledger> again(copy.get());
    }
  });
  EXPECT_EQ(object->references(), 1U);
  EXPECT_EQ(ends(), 0);
  object = nullptr;
  EXPECT_EQ(ends(), 1);
}

TEST_F(PtrThreads, referencesThatThreadsKeepAreCounted) {
  const auto object = ledger();
  std::array<std::vector<Ptr<Ledger>>, threadCount> kept;
  inThreads([&](std::size_t thread) { kept[thread].assign(rounds, object); });
  EXPECT_EQ(object->references(), 1 + threadCount * rounds);
  inThreads([&](std::size_t thread) { kept[thread].clear(); });
  EXPECT_EQ(object->references(), 1U);
}

TEST_F(PtrThreads, lastReferenceEndsObjectOnceWhicheverThreadDropsIt) {
  constexpr int objects = 200;
  std::array<std::vector<Ptr<Ledger>>, threadCount> held;
  for (int i = 0; i < objects; ++i) {
    const auto object = ledger();
    for (auto& ofThread : held) ofThread.push_back(object);
  }
  // The ends of different objects may overlap, but these count into the same two numbers: one object at a time.
  for (int i = 0; i < objects; ++i) {
    inThreads([&held](std::size_t thread) { held[thread].pop_back(); });
    ASSERT_EQ(ends(), i + 1);
  }
}

TEST_F(PtrThreads, endSeesWhatEveryThreadWroteBeforeItsDrop) {
  constexpr int objects = 200;
  for (int i = 0; i < objects; ++i) {
    std::array<Ptr<Ledger>, threadCount> held;
    held.fill(ledger());
    inThreads([&held](std::size_t thread) {
      held[thread]->entries[thread] = 1;
      held[thread] = nullptr;
    });
  }
  EXPECT_EQ(ends(), objects);
  EXPECT_EQ(sum(), objects * static_cast<int>(threadCount));
}

TEST_F(PtrThreads, copiesOfStringAreCounted) {
  std::optional<String> text("a text that every thread shares");
  std::array<std::vector<String>, threadCount> kept;
  inThreads([&](std::size_t thread) {
    for (int i = 0; i < rounds; ++i) {
      const String copy(*text);  // NOLINT(performance-unnecessary-copy-initialization)
      String moved;
      moved = copy;
      kept[thread].push_back(std::move(moved));
    }
  });
  text.reset();
  for (const auto& ofThread : kept) {
    ASSERT_EQ(ofThread.size(), std::size_t{rounds});
    EXPECT_EQ(ofThread.back(), "a text that every thread shares");
  }
  inThreads([&](std::size_t thread) { kept[thread].clear(); });
}

TEST_F(PtrThreads, lastCopyOfStringMayGoInAnyThread) {
  for (int i = 0; i < 200; ++i) {
    std::array<String, threadCount> held;
    held.fill(String(std::to_string(i)));
    std::array<std::size_t, threadCount> sizes{};
    inThreads([&](std::size_t thread) {
      sizes[thread] = held[thread].size();
      held[thread] = String();
    });
    for (const std::size_t size : sizes) EXPECT_EQ(size, std::to_string(i).size());
  }
}

}  // namespace Mox::PtrThreadsTest
