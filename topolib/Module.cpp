// Registers the module's types when the library is loaded.

#include "mox/Enum.h"
#include "mox/Type.h"
#include "topolib/DirtyVlanDir.h"
#include "topolib/LibSmMode.h"
#include "topolib/LibState.h"
#include "topolib/Root.h"
#include "topolib/TopoLibCodefState.h"
#include "topolib/TopoToVlanMap.h"
#include "topolib/VlanToVlanSet.h"

namespace Topology::Library {

namespace {

[[maybe_unused]] const bool registered = Mox::moxModuleIs(
    "TopoLib",
    {Mox::entityType<LibState>(LibState::topoAttr, LibState::initDoneAttr), Mox::entityType<Topo>(Topo::portAttr),
     Mox::entityType<Port>(Port::vlanPortConfigAttr, Port::activeAttr, Port::stateAttr, Port::fdbFlushAttr),
     Mox::entityType<TopoToVlanMap>(TopoToVlanMap::mappedVlanAttr), Mox::entityType<MappedVlan>(MappedVlan::vlanAttr),
     Mox::entityType<DirtyVlanDir>(DirtyVlanDir::dirtyVlanAttr),
     Mox::entityType<DirtyVlan>(DirtyVlan::dirtyAttr, DirtyVlan::intfAttr),
     Mox::entityType<VlanToVlanSet>(VlanToVlanSet::someVlanAttr),
     Mox::entityType<Root>(Root::libSmAttr, Root::topologyStatusLibSmAttr),
     Mox::entityType<TopoLibCodefState>(TopoLibCodefState::idleAttr), Mox::enumerationType<LibSmMode>()});

}  // namespace

}  // namespace Topology::Library
