// Registers the module's types when the library is loaded.

#include "mox/Type.h"
#include "topolib/vlan/LibVlanState.h"

namespace Topology::Library::Vlan {

namespace {

[[maybe_unused]] const bool registered = Mox::moxModuleIs(
    "TopoLibVlan", {Mox::entityType<LibVlanState>(LibVlanState::topoVlanAttr, LibVlanState::forceEnabledPortsAttr,
                                                  LibVlanState::initDoneAttr),
                    Mox::entityType<TopoVlan>(TopoVlan::topoPortAttr),
                    Mox::entityType<Port>(Port::topoAttr, Port::blockedAttr, Port::allowedTrafficDirectionAttr)});

}  // namespace

}  // namespace Topology::Library::Vlan
