#include "topolib/DirtyVlanDir.h"

namespace Topology::Library {

DirtyVlan::DirtyVlan(Bridging::VlanId vid) noexcept : vlanId_(vid) {}
DirtyVlan::~DirtyVlan() = default;

DirtyVlanDir::DirtyVlanDir(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
DirtyVlanDir::~DirtyVlanDir() = default;

Mox::Ptr<DirtyVlanDir> DirtyVlanDir::DirtyVlanDirIs(const Mox::String& name) {
  return Mox::makePtr<DirtyVlanDir>(name);
}

Mox::Ptr<DirtyVlanDir> dirtyVlanDirFactory(const Mox::String& name) { return DirtyVlanDir::DirtyVlanDirIs(name); }

}  // namespace Topology::Library
