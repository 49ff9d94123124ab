// The configuration as the commands that make it: replayed in a new session they give the same one.

#pragma once

#include <iosfwd>

namespace Topo {

class Agent;

void showConfig(const Agent& agent, std::ostream& out);

}  // namespace Topo
