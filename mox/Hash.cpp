#include "mox/Hash.h"

#include "mox/Exception.h"

namespace Mox {

namespace {
constexpr std::uint32_t seedAtStart = 0x5EED'0001;
std::uint32_t processSeed32 = seedAtStart;
}  // namespace

constinit HashSeed detail::processSeed{seedAtStart};
constinit std::size_t detail::processSeedTables = 0;

std::uint32_t hashSeed32() noexcept { return processSeed32; }

void hashSeed32Is(std::uint32_t seed) {
  if (seed == processSeed32) return;
  if (detail::processSeedTables != 0) throwRangeException("hashSeed32 is set while collections have members");
  processSeed32 = seed;
  detail::processSeed = HashSeed(seed);
}

}  // namespace Mox
