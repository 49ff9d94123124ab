#include "topolib/VlanToVlanSet.h"

namespace Topology::Library {

VlanToVlanSet::VlanToVlanSet(Bridging::VlanId vid) noexcept : vlanId_(vid) {}
VlanToVlanSet::~VlanToVlanSet() = default;

Mox::Ptr<VlanToVlanSet> vlanToVlanSetFactory(Bridging::VlanId vid) { return Mox::makePtr<VlanToVlanSet>(vid); }

void VlanToVlanSet::someVlanDelAll() { valueDelAll(someVlan_, someVlanAttr); }

}  // namespace Topology::Library
