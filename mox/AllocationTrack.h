// Counts the living objects of a type, so that a leak or a reactor that outlives its work can be named.
//
//   class Lamp : private Mox::AllocationTrack<Lamp> { ... };
//   for (const auto& count : Mox::allocationCounts()) std::cout << count.type << ' ' << count.living << '\n';
//
// Reactors are counted by `Mox::Reactor`. The cost is one addition when an object is made and one when it ends. The
// counts are kept on the activity thread.

#pragma once

#include <cstdint>
#include <string>
#include <typeinfo>
#include <vector>

#include "mox/Public.h"

namespace Mox {

struct AllocationCount {
  std::string type;
  std::uint64_t living;
  std::uint64_t made;
};

/// All counted types that had an object, by name.
[[nodiscard]] MOX_PUBLIC std::vector<AllocationCount> allocationCounts();

namespace detail {

/// The counter of one type. Registers itself with the first object.
struct MOX_PUBLIC AllocationCounter {
  explicit AllocationCounter(const std::type_info& counted);

  const std::type_info* type;
  std::uint64_t living = 0;
  std::uint64_t made = 0;
};

}  // namespace detail

template <class T>
class AllocationTrack {
 protected:
  AllocationTrack() {
    ++counter().living;
    ++counter().made;
  }
  AllocationTrack(const AllocationTrack&) : AllocationTrack() {}
  AllocationTrack& operator=(const AllocationTrack&) = default;
  ~AllocationTrack() { --counter().living; }

 private:
  [[nodiscard]] static detail::AllocationCounter& counter() {
    // Lives as long as the process: objects may end after all static destructors of their module.
    static auto& instance = *new detail::AllocationCounter(typeid(T));
    return instance;
  }
};

}  // namespace Mox
