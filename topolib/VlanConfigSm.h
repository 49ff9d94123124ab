// A VLAN in service: watches its configuration and marks what changes.
//
// Made and replaced by `LibSm` when the backlog processor comes to a VLAN that has a configuration; it stays on the
// configuration entity that it was made with. It takes the interface filter of its LibSm when it is made.

#pragma once

#include "bridging/Config.h"
#include "mox/Public.h"
#include "mox/StateMachine.h"
#include "topolib/detail/Busy.h"

namespace Topology::Library {

class FilterIntf;
class LibSm;

class MOX_PUBLIC VlanConfigSm : public Mox::StateMachine<VlanConfigSm> {
 public:
  static constexpr Mox::ScalarAttribute intfFilterPtrAttr{0, "intfFilterPtr"};

  VlanConfigSm(Bridging::VlanId vid, const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig, LibSm* libSm);
  [[nodiscard]] static Mox::Ptr<VlanConfigSm> VlanConfigSmIs(Bridging::VlanId vid,
                                                             const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig,
                                                             LibSm* libSm);
  ~VlanConfigSm() override;

  [[nodiscard]] Bridging::VlanId vlanId() const noexcept { return vlanId_; }
  /// The configuration that it watches, or null.
  [[nodiscard]] const Bridging::VlanConfig* vlanConfig() const noexcept { return vlanConfig_.notifier(); }
  [[nodiscard]] LibSm* libSm() const noexcept { return libSm_; }
  [[nodiscard]] bool isBuiltFrom(const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig,
                                 const LibSm* /*libSm*/) const noexcept {
    return this->vlanConfig() == vlanConfig.get();
  }

  /// Decides which interfaces the VLAN has, or null: all of them.
  [[nodiscard]] FilterIntf* intfFilterPtr() const noexcept { return intfFilterPtr_; }
  void intfFilterPtrIs(FilterIntf* v) { scalarIs(intfFilterPtr_, v, intfFilterPtrAttr); }

  void handleInitialized();
  void handleVlanPortConfig(Quill::IntfId intf);
  /// Only for the initial pass, which marks the whole VLAN: aborts once it is initialised.
  void handleVlanPortConfig() const;
  void handleFloodsetExpandedVlan();

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(vlanConfig_); }

  class MoxVlanConfig : public detail::LibReactor<MoxVlanConfig, VlanConfigSm, Bridging::VlanConfig> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  Bridging::VlanId vlanId_;
  MoxVlanConfig vlanConfig_;
  FilterIntf* intfFilterPtr_ = nullptr;
  LibSm* libSm_;
};

}  // namespace Topology::Library
