// Registers the module's types when the library is loaded.

#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "bridging/TopologyInstStatus.h"
#include "bridging/TopologyStatus.h"
#include "mox/Enum.h"
#include "mox/Type.h"

namespace Bridging {

namespace {

[[maybe_unused]] const bool registered = Mox::moxModuleIs(
    "Bridging",
    {Mox::entityType<Config>(Config::vlanConfigAttr),
     Mox::entityType<VlanConfig>(VlanConfig::vlanPortConfigAttr, VlanConfig::floodsetExpandedVlanAttr),
     Mox::entityType<Topology::Config>(Topology::Config::vidToTopoMapAttr, Topology::Config::topoConfigAttr),
     Mox::entityType<Topology::TopoConfig>(Topology::TopoConfig::topoPortConfigAttr,
                                           Topology::TopoConfig::publishPortConfigAttr,
                                           Topology::TopoConfig::publishedPortStateAttr),
     Mox::entityType<Topology::TopoPortConfig>(Topology::TopoPortConfig::portStateAttr,
                                               Topology::TopoPortConfig::fdbFlushAttr),
     Mox::entityType<Topology::Status>(Topology::Status::topoStatusAttr),
     Mox::entityType<Topology::TopoStatus>(Topology::TopoStatus::topoPortStatusAttr),
     Mox::entityType<Topology::Inst::Status>(Topology::Inst::Status::topoStatusAttr),
     Mox::entityType<Topology::Inst::TopoStatus>(Topology::Inst::TopoStatus::topoPortStatusAttr),
     Mox::enumerationType<AllowedTrafficDirection>(), Mox::enumerationType<Topology::PortState>()});

}  // namespace

}  // namespace Bridging
