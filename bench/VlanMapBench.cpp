// Maps from VLAN to a value of 12 bytes: the memory that they allocate, and their speed.

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bench/Allocations.h"
#include "bench/MapJobs.h"
#include "bench/Peers.h"
#include "bench/Suites.h"
#include "bridging/VlanId.h"
#include "mox/Collection.h"

namespace Bench {
namespace {

using Bridging::VlanId;

/// The size of a value that a port keeps for each of its VLANs.
struct Config {
  std::array<std::uint32_t, 3> words;
};

class Ours {
 public:
  using Key = VlanId;
  using Value = Config;

  [[nodiscard]] static Key keyOf(Key key) noexcept { return key; }

  [[nodiscard]] const Value* find(Key key) const noexcept { return map_.find(key); }
  void insert(Key key, Value&& value) { map_.insert(key, value); }
  void erase(Key key) noexcept { map_.erase(key); }
  [[nodiscard]] std::uint64_t walk() const noexcept {
    std::uint64_t sum = 0;
    for (const auto& [vid, config] : map_) sum += visit(vid.value(), config);
    return sum;
  }

 private:
  Mox::IdMap<VlanId, Config> map_;
};

/// Which VLANs there are, in the order of their insertion.
enum class Pattern { dense, interleaved, random };

constexpr std::array patterns{Pattern::dense, Pattern::interleaved, Pattern::random};

std::string nameOf(Pattern pattern) {
  switch (pattern) {
    case Pattern::dense:
      return "dense";
    case Pattern::interleaved:
      return "interleaved";
    case Pattern::random:
      return "random";
  }
  return {};
}

/// Dense: 1, 2, 3 and so on. Interleaved: ascending, evenly over all ids. Random: any, in any order.
std::vector<VlanId> vlans(Pattern pattern, std::size_t count) {
  std::vector<VlanId> all;
  for (std::uint16_t vid = VlanId::min; vid <= VlanId::max; ++vid) all.emplace_back(vid);
  if (pattern == Pattern::random) {
    std::shuffle(all.begin(), all.end(), std::mt19937(1));  // NOLINT
  }
  std::vector<VlanId> result;
  for (std::size_t i = 0; i < count; ++i) {
    result.push_back(all[pattern == Pattern::interleaved ? i * all.size() / count : i]);
  }
  return result;
}

/// The bytes that a map of these VLANs has allocated, per entry.
template <class Contender>
double bytesPerEntry(const std::vector<VlanId>& vids) {
  const Allocations allocations;
  Contender map;
  for (const VlanId vid : vids) map.insert(Contender::keyOf(vid), Config{});
  return static_cast<double>(allocations.bytes()) / static_cast<double>(vids.size());
}

template <class Contender>
void addBytes(const std::string& contender, Pattern pattern, std::size_t size) {
  const std::string name = "VlanMap/bytes/" + nameOf(pattern) + '/' + std::to_string(size) + '/' + contender;
  add(name,
      [pattern, size](benchmark::State& state) {
        double bytes = 0;
        for (auto _ : state) bytes = bytesPerEntry<Contender>(vlans(pattern, size));
        amountIs(state, bytes, "bytes");
      })
      ->Iterations(1)
      ->Repetitions(1);
}

/// The worst of all sizes from 64 entries on.
void addWorstBytes(Pattern pattern) {
  add("VlanMap/bytes/" + nameOf(pattern) + "/worst/Mox",
      [pattern](benchmark::State& state) {
        double worst = 0;
        for (auto _ : state) {
          for (std::size_t size = 64; size <= VlanId::max; ++size) {
            worst = std::max(worst, bytesPerEntry<Ours>(vlans(pattern, size)));
          }
        }
        amountIs(state, worst, "bytes");
      })
      ->Iterations(1)
      ->Repetitions(1);
}

constexpr std::array<std::size_t, 6> memorySizes{64, 128, 512, 1024, 2048, 4094};
constexpr std::array<std::size_t, 3> speedSizes{64, 512, 4094};

void addMemory(Targets& targets) {
  for (const Pattern pattern : patterns) {
    const std::string prefix = "VlanMap/bytes/" + nameOf(pattern) + '/';
    const std::string what = "VLAN map, bytes an entry, " + nameOf(pattern) + ", ";
    for (const std::size_t size : memorySizes) {
      const std::string at = prefix + std::to_string(size) + '/';
      const std::string entries = what + std::to_string(size) + " entries";
      addBytes<Ours>("Mox", pattern, size);
      targets.amount(entries, at + "Mox", 16.5, "bytes");
      if (pattern != Pattern::dense) continue;
      // What the others need does not depend on the ids.
      addBytes<BoostFlat<std::uint16_t, Config>>(boostFlat, pattern, size);
      addBytes<AbslFlat<std::uint16_t, Config>>(abslFlat, pattern, size);
      addBytes<StdUnordered<std::uint16_t, Config>>(stdUnordered, pattern, size);
      for (const char* peer : {boostFlat, abslFlat, stdUnordered})
        targets.compare(entries, at + "Mox", at + peer, peer);
    }
    addWorstBytes(pattern);
    targets.amount(what + "worst size from 64 on", prefix + "worst/Mox", 16.5, "bytes");
  }
}

void addSpeed(Targets& targets) {
  const std::string subject = "VlanMap";
  for (const std::size_t size : speedSizes) {
    const std::vector<VlanId> keys = vlans(Pattern::dense, size);
    const std::vector<Config> values(size);
    const auto addContender = [&]<class Contender>(std::type_identity<Contender>, const char* name) {
      addMapChanges<Contender>(subject, name, keys, values);
      addMapWalk<Contender>(subject, name, keys, values);
    };
    addContender(std::type_identity<Ours>(), "Mox");
    addContender(std::type_identity<BoostFlat<std::uint16_t, Config>>(), boostFlat);
    addContender(std::type_identity<AbslFlat<std::uint16_t, Config>>(), abslFlat);
    addContender(std::type_identity<StdUnordered<std::uint16_t, Config>>(), stdUnordered);
  }
  for (const char* job : {"hit", "insert", "erase", "walk"}) {
    for (const std::size_t size : speedSizes) {
      for (const char* peer : {boostFlat, abslFlat, stdUnordered}) {
        targets.compare(std::string("VLAN map, ") + job + ", " + std::to_string(size) + " entries",
                        mapJob(subject, job, size, "Mox"), mapJob(subject, job, size, peer), peer);
      }
    }
  }
}

}  // namespace

void addVlanMaps(Targets& targets) {
  addMemory(targets);
  addSpeed(targets);
}

}  // namespace Bench
