// What a pass over a collection shows of a member.

#pragma once

#include <type_traits>

namespace Mox {

/// How an iterator gives a key: by value where that is as good, else by reference to its own copy.
template <class K>
using KeyView = std::conditional_t<std::is_trivially_copyable_v<K>, K, const K&>;

/// A member of a collection as an iterator yields it; made for structured bindings:
///
///   for (const auto& [intf, port] : topo->port()) ...
///
/// The key stays as it is until the iterator advances, whatever happens to the collection. The value is the collection's:
/// of a value collection it is gone once the collection changes, of an entity collection it lives while somebody owns the
/// entity.
template <class K, class V>
struct Member {
  KeyView<K> key;
  V& value;
};

}  // namespace Mox
