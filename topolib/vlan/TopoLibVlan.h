// The VLAN view: include this.
//
//   auto view = Topology::Library::Vlan::libVlanStateFactory("view");
//   auto viewSm = Topology::Library::Vlan::vlanLibSmFactory(state, view);     // works while it is held
//
//   topolib/vlan/LibVlanState.h      what the view publishes, and the ports that a client forces
//   topolib/vlan/VlanPortMapping.h   the rules: member, blocked, direction
//   topolib/vlan/VlanLibSm.h         the state machine

#pragma once

#include "topolib/vlan/LibVlanState.h"
#include "topolib/vlan/VlanLibSm.h"
