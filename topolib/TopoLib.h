// The topology library: include this, and start with Root.
//
//   topolib/Root.h                start the library
//   topolib/LibState.h            what it publishes
//   topolib/LibSm.h               the state machine, and how it treats its inputs
//   topolib/TopoLibCodef.h        the backlog processor: slices, counters, the idle flag
//   topolib/TopologyStatusLibSm.h the status publisher
//   topolib/FilterIntf.h          a choice of interfaces of one's own; topolib/LocalIntfFilter.h is the usual one
//   bridging/, interface/         the inputs

#pragma once

#include "topolib/FilterIntf.h"
#include "topolib/LibSm.h"
#include "topolib/LibSmMode.h"
#include "topolib/LibState.h"
#include "topolib/LocalIntfFilter.h"
#include "topolib/Root.h"
#include "topolib/TopoLibCodef.h"
#include "topolib/TopologyStatusLibSm.h"
