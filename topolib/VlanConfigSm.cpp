#include "topolib/VlanConfigSm.h"

#include "topolib/FilterIntf.h"
#include "topolib/LibSm.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

VlanConfigSm::VlanConfigSm(Bridging::VlanId vid, const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig, LibSm* libSm)
    : vlanId_(vid), vlanConfig_(this, vlanConfig), libSm_(libSm) {
  handleFloodsetExpandedVlan();
  handleInitialized();
}

Mox::Ptr<VlanConfigSm> VlanConfigSm::VlanConfigSmIs(Bridging::VlanId vid,
                                                    const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig,
                                                    LibSm* libSm) {
  return Mox::makePtr<VlanConfigSm>(vid, vlanConfig, libSm);
}

VlanConfigSm::~VlanConfigSm() { moxDoZombieReactors(true); }

void VlanConfigSm::handleInitialized() {
  TOPOLIB_TRACE(8) << "handleInitialized";
  initializedIs(true);
  TOPOLIB_TRACE(4) << vlanId_ << ": Updating vlan port configs";
  if (libSm_->validIntfPtr() != 0) {
    TOPOLIB_TRACE(4) << "Attaching a filter for topo port";
    intfFilterPtrIs(reinterpret_cast<FilterIntf*>(libSm_->validIntfPtr()));
  } else {
    intfFilterPtrIs(nullptr);
  }
  libSm_->doOnVlanPortUpdate(vlanId_, {});
  handleFloodsetExpandedVlan();
}

void VlanConfigSm::handleVlanPortConfig(Quill::IntfId intf) {
  TOPOLIB_TRACE(8) << "handleVlanPortConfig";
  if (!initialized()) return;
  TOPOLIB_TRACE(4) << "Marking port " << intf << " in vlan " << vlanId_ << " dirty ";
  TOPOLIB_MSG("Marking port {} dirty", intf);
  libSm_->doOnVlanPortUpdate(vlanId_, intf);
}

void VlanConfigSm::handleVlanPortConfig() const { TOPOLIB_ASSERT_TEXT(!initialized(), "!initialized()"); }

void VlanConfigSm::handleFloodsetExpandedVlan() {
  TOPOLIB_TRACE(8) << "handleFloodsetExpandedVlan";
  if (!initialized() || vlanConfig() == nullptr) return;
  const Bridging::VlanIdOrNone expVid = vlanConfig()->floodsetExpandedVlan();
  TOPOLIB_TRACE(8) << "VlanConfigSm::handleFloodsetExpandedVlan vlan:" << vlanId_ << " expVlan:" << expVid;
  libSm_->handleFloodsetExpandedVlan(vlanId_, expVid);
}

void VlanConfigSm::MoxVlanConfig::onChange(Mox::AttributeId id, const void* key) {
  using Bridging::VlanConfig;
  if (const auto* intf = VlanConfig::vlanPortConfigAttr.keyOf(id, key)) sm().handleVlanPortConfig(*intf);
  if (VlanConfig::floodsetExpandedVlanAttr.is(id)) sm().handleFloodsetExpandedVlan();
}

}  // namespace Topology::Library
