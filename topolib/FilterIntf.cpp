#include "topolib/FilterIntf.h"

namespace Topology::Library {

FilterIntf::~FilterIntf() = default;

}  // namespace Topology::Library
