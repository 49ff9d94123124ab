#include "topolib/LibState.h"

namespace Topology::Library {

Port::Port(Quill::IntfId intf) noexcept : intf_(intf) {}
Port::~Port() = default;

Topo::Topo(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Topo::~Topo() = default;

LibState::LibState(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
LibState::~LibState() = default;

void Port::vlanPortConfigDelAll() { valueDelAll(vlanPortConfig_, vlanPortConfigAttr); }
Mox::Ptr<Port> Topo::portIs(Quill::IntfId intf) { return memberIs(port_, portAttr, intf); }
void Topo::portDel(Quill::IntfId intf) { memberDel(port_, portAttr, intf); }
void Topo::portDelAll() { memberDelAll(port_, portAttr); }
Mox::Ptr<Topo> LibState::topoIs(const Mox::String& name) { return memberIs(topo_, topoAttr, name); }
void LibState::topoDel(const Mox::String& name) { memberDel(topo_, topoAttr, name); }
void LibState::topoDelAll() { memberDelAll(topo_, topoAttr); }

Mox::Ptr<LibState> libStateFactory(const Mox::String& name) { return Mox::makePtr<LibState>(name); }

}  // namespace Topology::Library
