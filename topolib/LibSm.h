// The topology library's main state machine: keeps a `LibState` true to the configuration and the status of topologies,
// VLANs and interfaces.
//
// Overview
//   Made by `Root` (topolib/Root.h). It watches its inputs with five reactors and reduces every change that can affect the
//   ports of a VLAN to one call, `doOnVlanPortUpdate`, which marks the VLAN, or one interface of it, in the `DirtyVlanDir`.
//   The backlog processor (topolib/TopoLibCodef.h) works the marks off, in time slices or at once, and is the only caller
//   of the actions that move VLANs and ports. Its operations are divided by what it reacts to:
//
//     LibSm.cpp            start-up, the reactors, what it owns
//     LibSmVlan.cpp        VLANs come and go: marking, taking a VLAN into service and out of it
//     LibSmTopo.cpp        topologies come and go, linger, are orphaned and rebuilt
//     LibSmVlanPort.cpp    the ports of a VLAN in LibState, and their state
//     LibSmFloodset.cpp    VLANs that reach the ports of another VLAN
//
//   Children: a TopoConfigSm per topology, a VlanConfigSm per VLAN in service.
//
// Life
//   With a plain topology status it waits for `ethIntfStatusDirIs`, with `initialized()` false: the link of an interface
//   counts there. Otherwise it is initialised when it is made. `initDone` of the LibState turns true when every VLAN has
//   been processed once.
//
// Rules
//   - A topology is wanted while it is configured and, unless an instance status is watched in mode `createStatus`, has a
//     status. One that is no longer wanted lingers until its last VLAN has left; one whose entities were replaced under
//     the same name meanwhile is an orphan, and is rebuilt then.
//   - A reader of LibState may change the inputs, and release or replace the state machine, from inside a notification.
//     A state machine that is released inside one of its own notifications does nothing more, and ends when the
//     notification has returned.
//   - Destroying it leaves the contents of LibState as they stand.
//   - The operations named `do...` and `handle...` are for the state machines and the tests; a client needs none of them.
//
// IEEE 802.1Q-2018, 8.9 defines how VLANs are allocated to spanning tree instances, the usual topologies.

#pragma once

#include <cstdint>
#include <vector>

#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "bridging/TopologyInstStatus.h"
#include "bridging/TopologyStatus.h"
#include "interface/EthIntfStatus.h"
#include "mox/Clock.h"
#include "mox/StateMachine.h"
#include "topolib/DirtyVlanDir.h"
#include "topolib/LibSmMode.h"
#include "topolib/LibState.h"
#include "topolib/TopoConfigSm.h"
#include "topolib/TopoLibCodef.h"
#include "topolib/TopoToVlanMap.h"
#include "topolib/VlanConfigSm.h"
#include "topolib/VlanToVlanSet.h"
#include "topolib/detail/Busy.h"
#include "topolib/detail/InTurn.h"
#include "topolib/detail/OneAtATime.h"

namespace Topology::Library {

class FilterIntf;

class MOX_PUBLIC LibSm : public Mox::StateMachine<LibSm> {
 public:
  static constexpr Mox::ScalarAttribute validIntfPtrAttr{0, "validIntfPtr"};
  static constexpr Mox::ScalarAttribute dirtyVlanPortThresholdAttr{1, "dirtyVlanPortThreshold"};
  static constexpr Mox::ScalarAttribute dirtyVlanDirAttr{2, "dirtyVlanDir"};
  static constexpr Mox::ScalarAttribute topoLibCodefAttr{3, "topoLibCodef"};
  static constexpr Mox::ScalarAttribute topoToVlanMapAttr{4, "topoToVlanMap"};
  static constexpr Mox::CollectionAttribute<Mox::String> topoConfigSmAttr{5, "topoConfigSm"};
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> vlanConfigSmAttr{6, "vlanConfigSm"};
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> vlanToExpVlanSetMapAttr{7, "vlanToExpVlanSetMap"};
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> expVlanToVlanSetMapAttr{8, "expVlanToVlanSetMap"};
  static constexpr Mox::CollectionAttribute<Bridging::VlanId> vidToExpandedTopoMapAttr{9, "vidToExpandedTopoMap"};

  /// `libState` is required: null aborts at initialisation, as do both kinds of status at once. Everything else may be
  /// null: an absent `config` holds nothing; an absent `brConfig` aborts when the first VLAN has to be processed.
  /// `ignoreInternalVlan` leaves internal VLANs unmapped. With `deferProcessing` the backlog is worked off by the clock, in
  /// slices, otherwise inside the notification that adds to it. `validIntfPtr` is the address of a FilterIntf, or 0.
  LibSm(const Mox::String& name, const Mox::Ptr<const Bridging::Topology::Config>& config,
        const Mox::Ptr<const Bridging::Topology::Status>& status,
        const Mox::Ptr<Bridging::Topology::Inst::Status>& statusInst, const Mox::Ptr<const Bridging::Config>& brConfig,
        const Mox::Ptr<LibState>& libState, LibSmMode libSmMode, bool ignoreInternalVlan, bool deferProcessing,
        const std::uint64_t& validIntfPtr);
  [[nodiscard]] static Mox::Ptr<LibSm> LibSmIs(const Mox::String& name,
                                               const Mox::Ptr<const Bridging::Topology::Config>& config,
                                               const Mox::Ptr<const Bridging::Topology::Status>& status,
                                               const Mox::Ptr<Bridging::Topology::Inst::Status>& statusInst,
                                               const Mox::Ptr<const Bridging::Config>& brConfig,
                                               const Mox::Ptr<LibState>& libState, LibSmMode libSmMode,
                                               bool ignoreInternalVlan, bool deferProcessing,
                                               const std::uint64_t& validIntfPtr);
  ~LibSm() override;
  void zeroReferencesIs(bool zero) override;

  // What it was made of.
  [[nodiscard]] const Mox::String& name() const noexcept { return name_; }
  [[nodiscard]] const Bridging::Topology::Config* config() const noexcept { return config_.get(); }
  [[nodiscard]] const Bridging::Topology::Status* status() const noexcept { return status_.get(); }
  [[nodiscard]] const Bridging::Topology::Inst::Status* statusInst() const noexcept { return statusInst_.get(); }
  [[nodiscard]] const Bridging::Config* brConfig() const noexcept { return brConfig_.get(); }
  [[nodiscard]] const Mox::Ptr<LibState>& libState() const noexcept { return libState_; }
  [[nodiscard]] LibSmMode libSmMode() const noexcept { return libSmMode_; }
  [[nodiscard]] bool ignoreInternalVlan() const noexcept { return ignoreInternalVlan_; }
  [[nodiscard]] bool deferProcessing() const noexcept { return deferProcessing_; }

  /// The directory of interface statuses. Setting the first one while a plain status is watched starts the state machine
  /// up; topologies take the directory over when they come into being.
  [[nodiscard]] const Interface::EthIntfStatusDir* ethIntfStatusDir() const noexcept { return ethIntfStatusDir_.get(); }
  void ethIntfStatusDirIs(const Mox::Ptr<const Interface::EthIntfStatusDir>& dir);
  void ethIntfStatusDirDel();

  /// A later change reaches only the VLANs that come into service after it.
  [[nodiscard]] std::uint64_t validIntfPtr() const noexcept { return validIntfPtr_; }
  void validIntfPtrIs(const std::uint64_t& v) { scalarIs(validIntfPtr_, v, validIntfPtrAttr); }

  /// How many interfaces of a VLAN may be waiting when one more is marked by itself; beyond that the mark is on the whole
  /// VLAN. So up to one more than this number are recorded one by one.
  [[nodiscard]] std::uint16_t dirtyVlanPortThreshold() const noexcept { return dirtyVlanPortThreshold_; }
  void dirtyVlanPortThresholdIs(std::uint16_t v) { scalarIs(dirtyVlanPortThreshold_, v, dirtyVlanPortThresholdAttr); }

  // What it owns; the first three are null until it is initialised.
  [[nodiscard]] const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir() const noexcept { return dirtyVlanDir_; }
  void dirtyVlanDirIs(const Mox::Ptr<DirtyVlanDir>& dir) { scalarIs(dirtyVlanDir_, dir, dirtyVlanDirAttr); }

  [[nodiscard]] const Mox::Ptr<TopoLibCodef>& topoLibCodef() const noexcept { return topoLibCodef_; }
  Mox::Ptr<TopoLibCodef> topoLibCodefIs(LibSm* libSm, const Mox::Ptr<DirtyVlanDir>& dirtyVlanDir,
                                        const Mox::Ptr<const Mox::Clock>& clock);
  void topoLibCodefDel();

  [[nodiscard]] const Mox::Ptr<TopoToVlanMap>& topoToVlanMap() const noexcept { return topoToVlanMap_; }
  Mox::Ptr<TopoToVlanMap> topoToVlanMapIs(const Mox::String& name);
  void topoToVlanMapDel();

  /// topoConfigSm[topology name]. Making one that exists on the same configuration and status takes the instance status
  /// over; on others it raises MutatorReinstantiatingException, and a null configuration MutatorArgNullPointerException.
  [[nodiscard]] const auto& topoConfigSm() const noexcept { return topoConfigSm_; }
  [[nodiscard]] const TopoConfigSm* topoConfigSm(const Mox::String& name) const noexcept {
    return topoConfigSm_.find(name);
  }
  [[nodiscard]] TopoConfigSm* topoConfigSm(const Mox::String& name) noexcept { return topoConfigSm_.find(name); }
  Mox::Ptr<TopoConfigSm> topoConfigSmIs(const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig,
                                        const Mox::Ptr<const Bridging::Topology::TopoStatus>& topoStatus,
                                        const Mox::Ptr<const Bridging::Topology::Inst::TopoStatus>& topoInstStatus,
                                        const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir);
  void topoConfigSmDel(const Mox::String& name);
  void topoConfigSmDelAll();

  /// vlanConfigSm[vid]. Making one that exists on another configuration raises MutatorReinstantiatingException.
  [[nodiscard]] const auto& vlanConfigSm() const noexcept { return vlanConfigSm_; }
  [[nodiscard]] const VlanConfigSm* vlanConfigSm(Bridging::VlanId vid) const noexcept {
    return vlanConfigSm_.find(vid);
  }
  [[nodiscard]] VlanConfigSm* vlanConfigSm(Bridging::VlanId vid) noexcept { return vlanConfigSm_.find(vid); }
  Mox::Ptr<VlanConfigSm> vlanConfigSmIs(Bridging::VlanId vid, const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig);
  void vlanConfigSmDel(Bridging::VlanId vid);
  void vlanConfigSmDelAll();

  /// vlanToExpVlanSetMap[vid]: the VLANs whose ports a VLAN reaches as well.
  [[nodiscard]] const auto& vlanToExpVlanSetMap() const noexcept { return vlanToExpVlanSetMap_; }
  [[nodiscard]] VlanToVlanSet* vlanToExpVlanSetMap(Bridging::VlanId vid) noexcept {
    return vlanToExpVlanSetMap_.find(vid);
  }
  [[nodiscard]] bool vlanToExpVlanSetMapHas(Bridging::VlanId vid) const noexcept {
    return vlanToExpVlanSetMap_.has(vid);
  }
  Mox::Ptr<VlanToVlanSet> vlanToExpVlanSetMapIs(Bridging::VlanId vid);
  void vlanToExpVlanSetMapDel(Bridging::VlanId vid);
  void vlanToExpVlanSetMapDelAll();

  /// expVlanToVlanSetMap[expanded vid]: the inverse.
  [[nodiscard]] const auto& expVlanToVlanSetMap() const noexcept { return expVlanToVlanSetMap_; }
  [[nodiscard]] VlanToVlanSet* expVlanToVlanSetMap(Bridging::VlanId vid) noexcept {
    return expVlanToVlanSetMap_.find(vid);
  }
  [[nodiscard]] bool expVlanToVlanSetMapHas(Bridging::VlanId vid) const noexcept {
    return expVlanToVlanSetMap_.has(vid);
  }
  Mox::Ptr<VlanToVlanSet> expVlanToVlanSetMapIs(Bridging::VlanId vid);
  void expVlanToVlanSetMapDel(Bridging::VlanId vid);
  void expVlanToVlanSetMapDelAll();

  /// vidToExpandedTopoMap[vid]: the topology in which a VLAN's expansion was last applied.
  [[nodiscard]] const auto& vidToExpandedTopoMap() const noexcept { return vidToExpandedTopoMap_; }
  [[nodiscard]] const Mox::String* vidToExpandedTopoMap(Bridging::VlanId vid) const noexcept {
    return vidToExpandedTopoMap_.find(vid);
  }
  void vidToExpandedTopoMapIs(Bridging::VlanId vid, const Mox::String& name) {
    valueIs(vidToExpandedTopoMap_, vidToExpandedTopoMapAttr, vid, name);
  }
  void vidToExpandedTopoMapDel(Bridging::VlanId vid) { valueDel(vidToExpandedTopoMap_, vidToExpandedTopoMapAttr, vid); }

  // Start-up.
  void handleInitialized();
  void handleEthIntfStatusDir();
  void doOnInitDone();

  // VLANs.
  void handleVidToTopoMap(Bridging::VlanId vid);
  void handleVlanConfig(Bridging::VlanId vid);
  /// Marks an interface of a VLAN, or with the empty id the whole VLAN, for processing. Without deferral it has been
  /// processed when this returns. Before `initDone` nothing is recorded: the initial pass covers everything.
  void doOnVlanPortUpdate(Bridging::VlanId vid, Quill::IntfId intf);
  void doVlanMapped(Bridging::VlanId vid, const Mox::Ptr<const Bridging::VlanConfig>& vlanConfig);
  void doVlanUnmapped(Bridging::VlanId vid);

  // Topologies.
  void handleTopoConfigOrStatus(const Mox::String& name);
  void handleTopoInstStatus(const Mox::String& name);

  // The ports of a VLAN.
  void doOnVlanPortConfigAdd(Bridging::VlanId vid, Quill::IntfId intf, const Mox::String& topoName);
  void doOnVlanPortConfigDelete(Bridging::VlanId vid, Quill::IntfId intf, const Mox::String& topoName);
  void doPopulateCurrentPortSet(Bridging::VlanId vid, const Mox::String& topoName);
  /// The only writer of the three attributes of a published port; nothing where there is no such port.
  void doSyncTopoPort(Quill::IntfId intf, const Mox::String& topoName, Bridging::Topology::PortState state,
                      std::uint32_t fdbFlush, bool active);

  // Floodset expansion.
  void handleFloodsetExpandedVlan(Bridging::VlanId vid, Bridging::VlanIdOrNone expVid);
  void doExpandVlanTopo(const Mox::String& topoName, Bridging::VlanId vid, Bridging::VlanId expVid);
  void undoExpandVlanTopo(const Mox::String& topoName, Bridging::VlanId vid, Bridging::VlanId expVid);

  /// Applies a VLAN's expansions again, where the configuration still gives it to the topology.
  void doReapplyExpansion(Bridging::VlanId vid, const Mox::String& topoName);

  // Questions, which the backlog processor asks for every VLAN and port. The free functions below ask the same.
  [[nodiscard]] bool skipsInternalVlan(Bridging::VlanId vid) const;
  [[nodiscard]] bool hasVlanMappedToTopo(const Mox::String& topoName, Bridging::VlanId vid) const;
  [[nodiscard]] bool hasTopoPresent(const Mox::String& name) const;
  [[nodiscard]] bool hasOrphan(const Bridging::Topology::TopoConfig* topoConfig) const;
  /// Whether the topology is to exist: the rule above.
  [[nodiscard]] bool wantsTopo(const Mox::String& name) const;
  /// The bridging configuration, which must be there.
  [[nodiscard]] const Bridging::Config& bridging() const;
  /// The topology that the configuration gives the VLAN to, or the empty name.
  [[nodiscard]] Mox::String configuredTopo(Bridging::VlanId vid) const;
  /// Replaces the contents of a set by the ports of a topology that carry the VLAN.
  void populatePortSet(PortSet& set, Bridging::VlanId vid, const Mox::String& topoName) const;
  /// Deletes a topology that has lost its last VLAN, unless it is to stay; rebuilds an orphan.
  void doMaybeDeleteTopo(const Mox::String& oldTopoName);

 private:
  friend StateMachine;
  friend detail::Busy;

  void forEachReactor(const auto& act) {
    act(moxConfig_);
    act(moxStatus_);
    act(moxStatusInst_);
    act(moxBrConfig_);
    act(moxEthIntfStatusDir_);
    for (const auto& [name, sm] : topoConfigSm_) act(sm);
    for (const auto& [vid, sm] : vlanConfigSm_) act(sm);
    act(topoLibCodef_);
  }

  class MoxConfig : public detail::LibReactor<MoxConfig, LibSm, Bridging::Topology::Config> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxStatus : public detail::LibReactor<MoxStatus, LibSm, Bridging::Topology::Status> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxStatusInst : public detail::LibReactor<MoxStatusInst, LibSm, Bridging::Topology::Inst::Status> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  class MoxBrConfig : public detail::LibReactor<MoxBrConfig, LibSm, Bridging::Config> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };
  /// Its presence counts; what the directory holds is watched by those who need it.
  class MoxEthIntfStatusDir : public detail::LibReactor<MoxEthIntfStatusDir, LibSm, Interface::EthIntfStatusDir> {
   public:
    using LibReactor::LibReactor;
    void onChange(Mox::AttributeId id, const void* key);
  };

  [[nodiscard]] bool isInCreateStatusMode() const noexcept { return libSmMode_ == LibSmMode::createStatus; }
  void markConfiguredVlans();
  void markEveryVlan();
  void markVlansOfTopo(const Mox::String& name);
  void recordUpdate(TopoLibCodef& codef, Bridging::VlanId vid, Quill::IntfId intf);

  // Topologies.
  struct TopoInputs;
  [[nodiscard]] TopoInputs topoInputs(const Mox::String& name) const;
  void reconcileTopo(const Mox::String& name);
  void createTopo(const Mox::String& name);
  void withdrawTopo(const Mox::String& name);
  void deleteTopo(const Mox::String& name);
  void serveTopo(const Mox::String& name, auto&& work);

  // The ports of a VLAN.
  [[nodiscard]] const Mox::String* mappedTopo(Bridging::VlanId vid) const;
  [[nodiscard]] bool hasOwnEntry(Bridging::VlanId vid, Quill::IntfId intf) const;
  [[nodiscard]] bool mayInherit(Bridging::VlanId vid, Quill::IntfId intf) const;
  [[nodiscard]] Mox::Ptr<Port> portOf(const Mox::Ptr<Topo>& topo, Quill::IntfId intf);
  void propagateToExpandingVlans(Bridging::VlanId expVid, Quill::IntfId intf, const Mox::String& topoName);
  void withdrawFromExpandingVlans(Bridging::VlanId expVid, Quill::IntfId intf);
  void inheritFromExpandedVlans(Bridging::VlanId vid, Quill::IntfId intf);
  [[nodiscard]] Mox::Ptr<Topo> topoOfVlan(Bridging::VlanId vid) const;
  [[nodiscard]] bool isPublished(const Topo& topo) const;
  void inheritEntry(const Mox::Ptr<Topo>& topo, Bridging::VlanId vid, Quill::IntfId intf,
                    const Bridging::VlanPortConfig& value);
  void disinheritEntry(const Mox::Ptr<Topo>& topo, Bridging::VlanId vid, Quill::IntfId intf);

  // Floodset expansion.
  [[nodiscard]] bool isExpansionStale(Bridging::VlanId vid) const;
  void changeExpansion(Bridging::VlanId vid, Bridging::VlanIdOrNone expVid);
  void moveExpansion(Bridging::VlanId vid);
  void applyExpansion(Bridging::VlanId vid, const Mox::String& topoName);
  void withdrawExpansion(Bridging::VlanId vid, const Mox::String& topoName,
                         const std::vector<Bridging::VlanId>& expanded);
  void withdrawInherited(Bridging::VlanId vid, const Mox::String& topoName);
  void dropExpansion(Bridging::VlanId vid, bool hadToWait = false);
  void dropStaleExpansion(Bridging::VlanId vid);
  void dropStaleExpansionsAround(Bridging::VlanId vid);
  std::vector<Bridging::VlanId> unlinkExpansion(Bridging::VlanId vid);
  [[nodiscard]] std::vector<Bridging::VlanId> expandedVlans(Bridging::VlanId vid) const;

  Mox::String name_;
  // The inputs beside their reactors: an action that is under way when the state machine is retired reads them still.
  Mox::Ptr<const Bridging::Topology::Config> config_;
  Mox::Ptr<const Bridging::Topology::Status> status_;
  Mox::Ptr<const Bridging::Topology::Inst::Status> statusInst_;
  Mox::Ptr<const Bridging::Config> brConfig_;
  Mox::Ptr<const Interface::EthIntfStatusDir> ethIntfStatusDir_;
  MoxConfig moxConfig_;
  MoxStatus moxStatus_;
  MoxStatusInst moxStatusInst_;
  MoxBrConfig moxBrConfig_;
  MoxEthIntfStatusDir moxEthIntfStatusDir_;
  Mox::EntityCollection<Mox::String, TopoConfigSm> topoConfigSm_;
  Mox::EntityCollection<Bridging::VlanId, VlanConfigSm> vlanConfigSm_;
  VlanToExpVlanSetMap vlanToExpVlanSetMap_;
  ExpVlanToVlanSetMap expVlanToVlanSetMap_;
  Mox::ValueCollection<Bridging::VlanId, Mox::String> vidToExpandedTopoMap_;
  Mox::Ptr<LibState> libState_;
  LibSmMode libSmMode_;
  bool ignoreInternalVlan_;
  bool deferProcessing_;
  std::uint64_t validIntfPtr_;
  std::uint16_t dirtyVlanPortThreshold_ = 20;
  Mox::Ptr<DirtyVlanDir> dirtyVlanDir_;
  Mox::Ptr<TopoLibCodef> topoLibCodef_;
  Mox::Ptr<TopoToVlanMap> topoToVlanMap_;
  detail::OneAtATime<Mox::String> reconciling_;
  detail::InTurn expanding_;
  detail::Busy::State busy_;
};

/// Whether `vid` is an internal VLAN that the state machine was started to ignore.
[[nodiscard]] MOX_PUBLIC bool skipInternalVlan(const Mox::Ptr<const LibSm>& libSm, Bridging::VlanId vid);
/// Whether `vid` is registered with the topology in `topoToVlanMap`.
[[nodiscard]] MOX_PUBLIC bool vlanMappedToTopo(const Mox::Ptr<const LibSm>& libSm, const Mox::String& topoName,
                                               Bridging::VlanId vid);
/// Whether the name is that of a topology that is configured and has a TopoConfigSm.
[[nodiscard]] MOX_PUBLIC bool isTopoPresent(const Mox::Ptr<const LibSm>& libSm, const Mox::String& name);
/// Whether the TopoConfigSm of this configuration's name stands on other entities than the present ones.
[[nodiscard]] MOX_PUBLIC bool topoIsOrphan(const Mox::Ptr<const LibSm>& libSm,
                                           const Mox::Ptr<const Bridging::Topology::TopoConfig>& topoConfig);
/// After a VLAN has left: deletes the topology if it was the last one and nothing keeps it; rebuilds an orphan.
MOX_PUBLIC void maybeDeleteTopo(const Mox::Ptr<LibSm>& libSm, const Mox::String& oldTopoName);

}  // namespace Topology::Library
