// Writes of a scalar attribute that nobody watches. The floor is the same kind of object, whose write is a plain
// compare-and-store.
//
// A few thousand entities are as many as a large switch has ports, and the fastest cache does not hold them. With a few
// entities the floor takes one or two cycles, depending on where the linker puts its loop, and ours takes two.

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "bench/Lamp.h"
#include "bench/Suites.h"

namespace Bench {
namespace {

/// A lamp that tells nobody.
class PlainLamp : public Mox::Entity {
 public:
  [[nodiscard]] unsigned watt() const noexcept { return watt_; }
  void wattIs(unsigned v) {
    if (watt_ == v) return;
    watt_ = v;
  }

 private:
  unsigned watt_ = 0;
};

/// Writes to many lamps in any order; `step` is the difference between one round and the next.
template <class L>
void write(benchmark::State& state, std::size_t size, unsigned step) {
  std::vector<Mox::Ptr<L>> lamps;
  for (std::size_t i = 0; i < size; ++i) lamps.push_back(Mox::makePtr<L>());
  std::shuffle(lamps.begin(), lamps.end(), std::mt19937(1));  // NOLINT(*-msc51-cpp): the same in every run
  unsigned watt = 0;
  for (auto _ : state) {
    watt += step;
    for (const auto& lamp : lamps) lamp->wattIs(watt);
    benchmark::ClobberMemory();
  }
  itemsAre(state, size);
}

}  // namespace

void addScalarWrites(Targets& targets) {
  constexpr std::size_t many = 4096;
  constexpr std::size_t few = 64;
  struct Job {
    const char* what;
    const char* name;
    unsigned step;
  };
  const char* const floor = "plain compare-and-store";
  for (const Job job : {Job{"equal write", "equal", 0}, Job{"write, no reactor", "changed", 1}}) {
    for (const std::size_t size : {many, few}) {
      const std::string what = std::string(job.what) + ", " + std::to_string(size) + " entities";
      const std::string name = std::string("ScalarWrite/") + job.name + '/' + std::to_string(size) + '/';
      add(name + "Mox", write<Lamp>, size, job.step);
      add(name + "plain", write<PlainLamp>, size, job.step);
      targets.ratio(what, name + "Mox", name + "plain", 1.5, floor);
    }
  }
}

}  // namespace Bench
