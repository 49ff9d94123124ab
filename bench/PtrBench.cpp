// Copying a pointer to a counted object and dropping the copy. The floor is an intrusive pointer of Boost with a plain
// count, the peers with atomic counts are that pointer and std::shared_ptr.

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <memory>
#include <vector>

#include "bench/Lamp.h"
#include "bench/Suites.h"
#include "mox/Ptr.h"

namespace Bench {
namespace {

constexpr std::size_t objects = 64;

template <class Policy>
class Counted : public boost::intrusive_ref_counter<Counted<Policy>, Policy> {
 public:
  virtual ~Counted() = default;
};
using Plain = Counted<boost::thread_unsafe_counter>;
using Atomic = Counted<boost::thread_safe_counter>;

template <class P>
void copy(benchmark::State& state, P (*make)()) {
  std::vector<P> all;
  for (std::size_t i = 0; i < objects; ++i) all.push_back(make());
  for (auto _ : state) {
    for (const P& p : all) {
      P another(p);
      benchmark::DoNotOptimize(another);
    }
  }
  itemsAre(state, objects);
}

void copyOurs(benchmark::State& state, bool threadSafe) {
  Mox::threadSafePointersIs(threadSafe);
  copy<Mox::Ptr<Lamp>>(state, [] { return Mox::makePtr<Lamp>(); });
  Mox::threadSafePointersIs(false);
}

template <class C>
void copyIntrusive(benchmark::State& state) {
  copy<boost::intrusive_ptr<C>>(state, [] { return boost::intrusive_ptr<C>(new C); });
}

/// The library counts atomically only once a process has several threads; this one has.
void copyShared(benchmark::State& state) {
  copy<std::shared_ptr<Lamp>>(state, [] { return std::make_shared<Lamp>(); });
}

}  // namespace

void addPtrs(Targets& targets) {
  add("Ptr/copy/Mox", copyOurs, false);
  add("Ptr/copy/plain", copyIntrusive<Plain>);
  add("Ptr/copyThreadSafe/Mox", copyOurs, true);
  add("Ptr/copyThreadSafe/atomic", copyIntrusive<Atomic>);
  add("Ptr/copyThreadSafe/std::shared_ptr", copyShared);

  targets.ratio("pointer copy, switch off", "Ptr/copy/Mox", "Ptr/copy/plain", 1.2, "boost::intrusive_ptr, plain");
  targets.compare("pointer copy, switch on", "Ptr/copyThreadSafe/Mox", "Ptr/copyThreadSafe/atomic",
                  "boost::intrusive_ptr, atomic");
  targets.compare("pointer copy, switch on", "Ptr/copyThreadSafe/Mox", "Ptr/copyThreadSafe/std::shared_ptr",
                  "std::shared_ptr");
}

}  // namespace Bench
