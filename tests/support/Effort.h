// How much the suites play that could play for ever.
//
// Run by hand, or as ./dev check does, each plays its full number. TOPOLIB_TEST_FUZZ=N multiplies the random sequences;
// TOPOLIB_TEST_PART=N plays one Nth of everything, chosen so that all kinds of places and changes still meet.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <numeric>
#include <string>

namespace Test {

[[nodiscard]] inline std::size_t numberInEnvironment(const char* name) {
  const char* const text = std::getenv(name);
  return text == nullptr ? 1 : std::stoul(text);
}
[[nodiscard]] inline std::size_t fuzzFactor() { return numberInEnvironment("TOPOLIB_TEST_FUZZ"); }
[[nodiscard]] inline std::size_t part() { return numberInEnvironment("TOPOLIB_TEST_PART"); }

/// How many random sequences to play where the full number is this.
[[nodiscard]] inline std::size_t sequences(std::size_t full) {
  return std::max<std::size_t>(full * fuzzFactor() / part(), 1);
}

/// How far apart the places are that a suite plays if it plays one in `stride` when it plays its full number. A run of
/// `changes` changes at each place meets each of them, because the two numbers have no common divisor.
[[nodiscard]] inline std::size_t strideOver(std::size_t changes, std::size_t stride = 1) {
  stride *= part();
  while (std::gcd(stride, changes) != 1) ++stride;
  return stride;
}

}  // namespace Test
