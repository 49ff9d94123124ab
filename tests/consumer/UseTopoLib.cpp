// Uses TopoLib as somebody would who has only the installed package.
#include <cstdlib>

#include "topolib/LibState.h"

int main() {
  const auto libState = Topology::Library::libStateFactory("state");
  return libState->name() == "state" ? EXIT_SUCCESS : EXIT_FAILURE;
}
