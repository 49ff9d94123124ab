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

struct AllocationCounter {
  std::uint64_t living = 0;
  std::uint64_t made = 0;
};

/// The counter of a type. One for the whole process, where the template below is instantiated in every library that makes
/// or ends such an object. Lives as long as the process: objects may end after all static destructors of their module.
[[nodiscard]] MOX_PUBLIC AllocationCounter& allocationCounter(const std::type_info& type);

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
    static detail::AllocationCounter& found = detail::allocationCounter(typeid(T));
    return found;
  }
};

}  // namespace Mox
