#include "topolib/vlan/detail/Log.h"

namespace Topology::Library::Vlan::detail {

Mox::TraceHandle& traceHandle = *new Mox::TraceHandle("TopoLibVlan", false);

}  // namespace Topology::Library::Vlan::detail
