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

void DirtyVlan::intfDelAll() { valueDelAll(intf_, intfAttr); }
Mox::Ptr<DirtyVlan> DirtyVlanDir::dirtyVlanIs(Bridging::VlanId vid) { return memberIs(dirtyVlan_, dirtyVlanAttr, vid); }
void DirtyVlanDir::dirtyVlanDel(Bridging::VlanId vid) { memberDel(dirtyVlan_, dirtyVlanAttr, vid); }
void DirtyVlanDir::dirtyVlanDelAll() { memberDelAll(dirtyVlan_, dirtyVlanAttr); }

}  // namespace Topology::Library
