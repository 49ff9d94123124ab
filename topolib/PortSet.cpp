#include "topolib/PortSet.h"

namespace Topology::Library {

PortSet::PortSet() noexcept = default;
PortSet::~PortSet() = default;

}  // namespace Topology::Library
