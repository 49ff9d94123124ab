// The entity that the benchmarks write to.

#pragma once

#include "mox/Entity.h"

namespace Bench {

class Lamp : public Mox::Entity {
 public:
  static constexpr Mox::ScalarAttribute wattAttr{0, "watt"};

  [[nodiscard]] unsigned watt() const noexcept { return watt_; }
  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }

 private:
  unsigned watt_ = 0;
};

}  // namespace Bench
