#include "mox/Hash.h"

namespace Mox {

namespace {
constexpr std::uint32_t seedAtStart = 0x5EED'0001;
std::uint32_t processSeed32 = seedAtStart;
}  // namespace

constinit HashSeed detail::processSeed{seedAtStart};

std::uint32_t hashSeed32() noexcept { return processSeed32; }

void hashSeed32Is(std::uint32_t seed) noexcept {
  processSeed32 = seed;
  detail::processSeed = HashSeed(seed);
}

}  // namespace Mox
