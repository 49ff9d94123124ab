// Feeds the scenario language with anything, for libFuzzer (cmake/Fuzz.cmake):
//
//   scenario-fuzz -max_total_time=600 NEW_INPUTS tests/fuzz/corpus-scenario

#include <cstddef>
#include <cstdint>

#include "tests/fuzz/ScenarioInput.h"

// The name that libFuzzer looks for.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Test::playScenario({reinterpret_cast<const char*>(data), size});
  return 0;
}
