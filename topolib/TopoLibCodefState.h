// Whether deferred processing is pending, for other components to watch.

#pragma once

#include "mox/Entity.h"
#include "mox/Public.h"

namespace Topology::Library {

class MOX_PUBLIC TopoLibCodefState : public Mox::NamedEntity {
 public:
  static constexpr Mox::ScalarAttribute idleAttr{0, "idle"};

  explicit TopoLibCodefState(Mox::String name) noexcept;
  ~TopoLibCodefState() override;

  /// True while the backlog processor has no work left; false at construction.
  [[nodiscard]] bool idle() const noexcept { return idle_; }
  void idleIs(bool v) { scalarIs(idle_, v, idleAttr); }

 private:
  bool idle_ = false;
};

}  // namespace Topology::Library
