// Feeds the import of Linux bridges with anything, for libFuzzer (cmake/Fuzz.cmake):
//
//   import-fuzz -max_total_time=600 NEW_INPUTS tests/fuzz/corpus-import

#include <cstddef>
#include <cstdint>

#include "tests/fuzz/ImportInput.h"

// The name that libFuzzer looks for.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Test::playImport({reinterpret_cast<const char*>(data), size});
  return 0;
}
