#include "topolib/LibState.h"

namespace Topology::Library {

Port::Port(Quill::IntfId intf) noexcept : intf_(intf) {}
Port::~Port() = default;

Topo::Topo(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Topo::~Topo() = default;

LibState::LibState(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
LibState::~LibState() = default;

Mox::Ptr<LibState> libStateFactory(const Mox::String& name) { return Mox::makePtr<LibState>(name); }

}  // namespace Topology::Library
