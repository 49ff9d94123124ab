// What a pass over a collection shows of a member.

#pragma once

namespace Mox {

/// A member of a collection as an iterator yields it; made for structured bindings:
///
///   for (const auto& [intf, port] : topo->port()) ...
///
/// The key belongs to the iterator and stays as it is until the iterator advances, whatever happens to the collection.
/// The value is the collection's: of a value collection it is gone once the collection changes, of an entity collection
/// it lives while somebody owns the entity.
template <class K, class V>
struct Member {
  const K& key;
  V& value;
};

}  // namespace Mox
