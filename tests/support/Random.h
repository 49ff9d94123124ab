// Chance for randomised tests, the same in every run unless the environment says otherwise.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Test {

/// The seed of randomised tests: TOPOLIB_TEST_SEED if that is set. Tests trace it, so that a failure tells how to replay
/// it: SCOPED_TRACE(Test::seedTrace()).
[[nodiscard]] inline std::uint64_t randomSeed() {
  const char* const seed = std::getenv("TOPOLIB_TEST_SEED");
  return seed == nullptr ? 20'240'229 : std::stoull(seed);
}
[[nodiscard]] inline std::string seedTrace() { return "TOPOLIB_TEST_SEED=" + std::to_string(randomSeed()); }

class Random {
 public:
  explicit Random(std::uint64_t seed = randomSeed()) : engine_(seed) {}

  [[nodiscard]] std::uint64_t bits() { return engine_(); }
  /// A number below `bound`.
  [[nodiscard]] std::size_t below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }
  [[nodiscard]] bool percent(unsigned chance) { return below(100) < chance; }

  template <class T>
  void shuffle(std::vector<T>& items) {
    for (std::size_t n = items.size(); n > 1; --n) std::swap(items[n - 1], items[below(n)]);
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace Test
