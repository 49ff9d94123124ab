// Uses the VLAN view as somebody would who has only the installed package.
#include <cstdlib>

#include "topolib/TopoLib.h"
#include "topolib/vlan/TopoLibVlan.h"

int main() {
  using namespace Topology::Library;
  const auto config = Bridging::Topology::configFactory("config");
  const auto bridging = Bridging::configFactory("bridging");
  const auto instance = Bridging::Topology::Inst::statusFactory("instance");
  const auto state = libStateFactory("state");
  const auto root = rootFactory("root");
  root->doStartLibSm("libSm", config, nullptr, instance, bridging, state, LibSmMode::createStatus, true, true, "");
  const auto view = Vlan::libVlanStateFactory("view");
  const auto viewSm = Vlan::vlanLibSmFactory(state, view);
  return state->initDone() && view->initDone() ? EXIT_SUCCESS : EXIT_FAILURE;
}
