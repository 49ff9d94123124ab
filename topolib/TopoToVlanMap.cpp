#include "topolib/TopoToVlanMap.h"

namespace Topology::Library {

MappedVlan::MappedVlan(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
MappedVlan::~MappedVlan() = default;

TopoToVlanMap::TopoToVlanMap(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
TopoToVlanMap::~TopoToVlanMap() = default;

Mox::Ptr<TopoToVlanMap> topoToVlanMapFactory(const Mox::String& name) { return Mox::makePtr<TopoToVlanMap>(name); }

}  // namespace Topology::Library
