// What is wrong with a line of a scenario. Whoever reads the lines adds the place (topo/Runner.h).

#pragma once

#include <stdexcept>

namespace Topo {

class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Topo
