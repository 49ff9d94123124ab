// Tracing of module TopoLibVlan, under the name of its source file.

#pragma once

#include "mox/Trace.h"

namespace Topology::Library::Vlan::detail {

extern Mox::TraceHandle& traceHandle;

}  // namespace Topology::Library::Vlan::detail

#define TOPOLIBVLAN_TRACE(level) \
  MOX_TRACE("/src/Sylk/TopoLibVlan", ::Topology::Library::Vlan::detail::traceHandle, level)
