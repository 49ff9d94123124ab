// Keeps the library's state machines alive under their own handlers.
//
// Readers of LibState may release the LibSm, or have a child of it removed, from inside a notification that the LibSm or
// the child caused. A child is held by a pointer during its handler. The LibSm is retired at the moment that it is
// released, so that nothing more is delivered to it, and is destroyed when the last handler has returned.

#pragma once

#include <type_traits>

#include "mox/StateMachine.h"

namespace Topology::Library {

class LibSm;

namespace detail {

/// Stands for a handler or a run under way.
class MOX_PUBLIC Busy {
 public:
  struct State {
    unsigned depth = 0;
    bool isReleased = false;
  };

  explicit Busy(LibSm& libSm) noexcept;
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;
  ~Busy();

 private:
  LibSm& libSm_;
};

/// A reactor of LibSm or of one of its children, which has `libSm()`. `Self` handles the change in `onChange(id, key)`.
template <class Self, class Sm, class Notifier>
class LibReactor : public Mox::Reactor<Self, Sm, Notifier> {
 public:
  using Mox::Reactor<Self, Sm, Notifier>::Reactor;

  void onAttribute(Mox::AttributeId id, const void* key) final {
    if constexpr (std::is_same_v<Sm, LibSm>) {
      const Busy busy(this->sm());
      static_cast<Self*>(this)->onChange(id, key);
    } else {
      const Busy busy(*this->sm().libSm());
      const Mox::Ptr<Sm> self(&this->sm());
      static_cast<Self*>(this)->onChange(id, key);
    }
  }
};

}  // namespace detail

}  // namespace Topology::Library
