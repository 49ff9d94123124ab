#include "topolib/TopoLibCodefState.h"

namespace Topology::Library {

TopoLibCodefState::TopoLibCodefState(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
TopoLibCodefState::~TopoLibCodefState() = default;

}  // namespace Topology::Library
