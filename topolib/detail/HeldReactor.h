// A reactor that keeps its state machine alive during a handler: what the handler publishes may make others release it.

#pragma once

#include "mox/StateMachine.h"

namespace Topology::Library::detail {

/// `Self` handles the change in `onChange(id, key)`.
template <class Self, class Sm, class Notifier>
class HeldReactor : public Mox::Reactor<Self, Sm, Notifier> {
 public:
  using Mox::Reactor<Self, Sm, Notifier>::Reactor;

  void onAttribute(Mox::AttributeId id, const void* key) final {
    const Mox::Ptr<Sm> self(&this->sm());
    static_cast<Self*>(this)->onChange(id, key);
  }
};

}  // namespace Topology::Library::detail
