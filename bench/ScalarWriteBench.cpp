// Writes of a scalar attribute that nobody watches. The floor is the same kind of object, whose write is a plain
// compare-and-store.

#include <vector>

#include "bench/Lamp.h"
#include "bench/Suites.h"

namespace Bench {
namespace {

constexpr std::size_t lamps = 64;

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

/// Writes to each of some lamps in turn; `step` is the difference between one round and the next.
template <class L>
void write(benchmark::State& state, unsigned step) {
  std::vector<Mox::Ptr<L>> all;
  for (std::size_t i = 0; i < lamps; ++i) all.push_back(Mox::makePtr<L>());
  unsigned watt = 0;
  for (auto _ : state) {
    watt += step;
    for (const auto& lamp : all) lamp->wattIs(watt);
    benchmark::ClobberMemory();
  }
  itemsAre(state, lamps);
}

}  // namespace

void addScalarWrites(Targets& targets) {
  add("ScalarWrite/equal/Mox", write<Lamp>, 0U);
  add("ScalarWrite/equal/plain", write<PlainLamp>, 0U);
  add("ScalarWrite/changed/Mox", write<Lamp>, 1U);
  add("ScalarWrite/changed/plain", write<PlainLamp>, 1U);

  const char* const floor = "plain compare-and-store";
  targets.ratio("equal write", "ScalarWrite/equal/Mox", "ScalarWrite/equal/plain", 1.5, floor);
  targets.ratio("write, no reactor", "ScalarWrite/changed/Mox", "ScalarWrite/changed/plain", 1.5, floor);
}

}  // namespace Bench
