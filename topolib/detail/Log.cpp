#include "topolib/detail/Log.h"

namespace Topology::Library::detail {

Mox::TraceHandle& traceHandle = *new Mox::TraceHandle("TopoLib", false);

}  // namespace Topology::Library::detail
