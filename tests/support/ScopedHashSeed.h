// Another process-wide hash seed, for the time of a test.

#pragma once

#include <cstdint>

#include "mox/Hash.h"

namespace Test {

class ScopedHashSeed {
 public:
  explicit ScopedHashSeed(std::uint32_t seed) : before_(Mox::hashSeed32()) { Mox::hashSeed32Is(seed); }
  ScopedHashSeed(const ScopedHashSeed&) = delete;
  ScopedHashSeed& operator=(const ScopedHashSeed&) = delete;
  ~ScopedHashSeed() { Mox::hashSeed32Is(before_); }

 private:
  std::uint32_t before_;
};

}  // namespace Test
