// Runs the tests of a folder, under the hash seed of TOPOLIB_TEST_HASH_SEED if that is set: nothing may depend on the
// order in which hashed collections iterate.

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "mox/Hash.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (const char* const seed = std::getenv("TOPOLIB_TEST_HASH_SEED")) {
    Mox::hashSeed32Is(static_cast<std::uint32_t>(std::stoul(seed)));
    std::cout << "hash seed " << seed << '\n';
  }
  return RUN_ALL_TESTS();
}
