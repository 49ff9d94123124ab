// VLANs that reach the ports of another VLAN.
//
// A VLAN's configuration may name an expanded VLAN. Then every port that carries the expanded VLAN, in the expanded VLAN's
// topology, carries the expanding one as well, in the expanding VLAN's own topology: it inherits the entry, unless its
// configuration has one of its own. Three maps keep the books: the expanded VLANs of a VLAN, the inverse, and the topology
// in which a VLAN's expansion was last applied. Expansions act on LibState at once, not through the backlog.
//
// Changes that readers of LibState ask for while an expansion is applied or withdrawn take their turn after it.

#include <optional>

#include "topolib/LibSm.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

void LibSm::handleFloodsetExpandedVlan(Bridging::VlanId vid, Bridging::VlanIdOrNone expVid) {
  TOPOLIB_ASSERT_INITIALIZED();
  if (isRetired()) return;
  TOPOLIB_TRACE(8) << "LibSm::handleFloodsetExpandedVlan vlan:" << vid << " expVlan:" << expVid;
  // Inside an expansion under way the record may be behind: the VLAN's move then waits in front of this change.
  if (const Mox::String* const topoName = vidToExpandedTopoMap(vid); topoName != nullptr && !expanding_.isRunning()) {
    const Mox::String* const current = mappedTopo(vid);
    TOPOLIB_ASSERT_TEXT(current == nullptr || *current == *topoName,
                        "( !config()->vidToTopoMapHas( vid ) || config()->vidToTopoMap( vid )->name() == topoName ) && "
                        "\"Current topo is not the expanded topo!\"");
  }
  expanding_.run([this, vid, expVid] { changeExpansion(vid, expVid); });
}

void LibSm::changeExpansion(Bridging::VlanId vid, Bridging::VlanIdOrNone expVid) {
  if (isRetired()) return;
  const Mox::String* const recorded = vidToExpandedTopoMap(vid);
  const Mox::String topoName = recorded == nullptr ? configuredTopo(vid) : *recorded;
  if (expVid.isNone()) {
    withdrawExpansion(vid, topoName, unlinkExpansion(vid));
    return;
  }
  const Bridging::VlanId expanded(expVid);
  dropStaleExpansion(expanded);
  const VlanToVlanSet* const set = vlanToExpVlanSetMap(vid);
  if (set != nullptr && !set->someVlan(expanded)) withdrawExpansion(vid, topoName, unlinkExpansion(vid));
  if (isRetired()) return;
  vlanToExpVlanSetMapIs(vid)->someVlanIs(expanded);
  expVlanToVlanSetMapIs(expanded)->someVlanIs(vid);
  vidToExpandedTopoMapIs(vid, topoName);
  doExpandVlanTopo(topoName, vid, expanded);
}

void LibSm::doReapplyExpansion(Bridging::VlanId vid, const Mox::String& topoName) {
  if (!vlanToExpVlanSetMapHas(vid)) return;
  expanding_.run([this, vid, topoName] {
    if (!isRetired() && vlanToExpVlanSetMapHas(vid) && configuredTopo(vid) == topoName) applyExpansion(vid, topoName);
  });
}

/// The expansion side of a VLAN that was given to another topology, or to none.
void LibSm::moveExpansion(Bridging::VlanId vid) {
  if (vlanToExpVlanSetMap_.empty() && !expanding_.isRunning()) return;
  expanding_.run([this, vid] {
    if (isRetired()) return;
    dropStaleExpansionsAround(vid);
    if (isRetired() || !vlanToExpVlanSetMapHas(vid)) return;
    TOPOLIB_ASSERT_TEXT(!vlanToExpVlanSetMapHas(vid) || !expVlanToVlanSetMapHas(vid),
                        "!vlanToExpVlanSetMapHas( vid ) || !expVlanToVlanSetMapHas( vid )");
    const Mox::String* const current = mappedTopo(vid);
    const Mox::String* const recorded = vidToExpandedTopoMap(vid);
    if (current != nullptr && recorded != nullptr && *current == *recorded) return;
    const std::optional<Mox::String> left = recorded == nullptr ? std::nullopt : std::optional(*recorded);
    const std::optional<Mox::String> entered = current == nullptr ? std::nullopt : std::optional(*current);
    // The record first: whatever a reader throws, it says where the expansion belongs.
    if (entered) {
      vidToExpandedTopoMapIs(vid, *entered);
    } else {
      vidToExpandedTopoMapDel(vid);
    }
    if (left) withdrawExpansion(vid, *left, expandedVlans(vid));
    if (entered && !isRetired()) applyExpansion(vid, *entered);
  });
}

void LibSm::doExpandVlanTopo(const Mox::String& topoName, Bridging::VlanId vid, Bridging::VlanId expVid) {
  TOPOLIB_ASSERT_INITIALIZED();
  TOPOLIB_TRACE(8) << "LibSm::doExpandVlanTopo topo:" << topoName << " expVlan:" << expVid;
  const Mox::Ptr<Topo> topo = libState_->topo(topoName);
  const Mox::Ptr<const Topo> expTopo = topoOfVlan(expVid);
  if (!topo || !expTopo) return;
  for (const auto& [intf, expPort] : expTopo->port()) {
    if (isRetired() || !isPublished(*topo)) return;
    const Bridging::VlanPortConfig* const entry = expPort.vlanPortConfig(expVid);
    if (entry != nullptr && mayInherit(vid, intf)) inheritEntry(topo, vid, intf, Bridging::VlanPortConfig(*entry));
  }
}

void LibSm::undoExpandVlanTopo(const Mox::String& topoName, Bridging::VlanId vid, Bridging::VlanId expVid) {
  TOPOLIB_ASSERT_INITIALIZED();
  TOPOLIB_TRACE(8) << "LibSm::undoExpandVlanTopo vlan:" << vid << " expVlan:" << expVid;
  const Mox::Ptr<Topo> topo = libState_->topo(topoName);
  const Mox::Ptr<const Topo> expTopo = topoOfVlan(expVid);
  if (!topo || !expTopo) return;
  for (const auto& [intf, expPort] : expTopo->port()) {
    if (isRetired() || !isPublished(*topo)) return;
    if (expPort.vlanPortConfig(expVid) == nullptr || !mayInherit(vid, intf)) continue;
    const Port* const port = std::as_const(*topo).port(intf);
    if (port != nullptr && port->vlanPortConfig(vid) != nullptr) disinheritEntry(topo, vid, intf);
  }
}

void LibSm::applyExpansion(Bridging::VlanId vid, const Mox::String& topoName) {
  for (const Bridging::VlanId expVid : expandedVlans(vid)) {
    if (!isRetired()) doExpandVlanTopo(topoName, vid, expVid);
  }
}

void LibSm::withdrawExpansion(Bridging::VlanId vid, const Mox::String& topoName,
                              const std::vector<Bridging::VlanId>& expanded) {
  for (const Bridging::VlanId expVid : expanded) {
    if (!isRetired()) undoExpandVlanTopo(topoName, vid, expVid);
  }
  if (!expanded.empty() && !isRetired()) withdrawInherited(vid, topoName);
}

/// Removes what could not be told from the expanded VLAN, which may have moved or gone meanwhile: the inherited entries of
/// the VLAN in a topology, or all of them if it is not registered there and so has none of its own.
void LibSm::withdrawInherited(Bridging::VlanId vid, const Mox::String& topoName) {
  const Mox::Ptr<Topo> topo = libState_->topo(topoName);
  if (!topo) return;
  for (const auto& [intf, port] : std::as_const(*topo).port()) {
    if (isRetired() || !isPublished(*topo)) return;
    // Asked for each port: a reader may have let the backlog come to the VLAN meanwhile.
    const bool isOwn = hasVlanMappedToTopo(topoName, vid) && hasOwnEntry(vid, intf);
    if (port.vlanPortConfig(vid) != nullptr && !isOwn) disinheritEntry(topo, vid, intf);
  }
}

bool LibSm::isExpansionStale(Bridging::VlanId vid) const {
  const Bridging::VlanConfig* const current = bridging().vlanConfig(vid);
  const VlanConfigSm* const sm = vlanConfigSm(vid);
  return current == nullptr || (sm != nullptr && sm->vlanConfig() != current);
}

/// A VLAN whose configuration is gone expands into nothing, also where the backlog has not come to it yet.
void LibSm::dropStaleExpansion(Bridging::VlanId vid) {
  if (vlanToExpVlanSetMapHas(vid) && isExpansionStale(vid)) dropExpansion(vid);
}

/// The same for a VLAN and for those that expand into it.
void LibSm::dropStaleExpansionsAround(Bridging::VlanId vid) {
  dropStaleExpansion(vid);
  const Mox::Ptr<const VlanToVlanSet> expanding = expVlanToVlanSetMap(vid);
  if (!expanding) return;
  for (const auto& [source, present] : expanding->someVlan()) dropStaleExpansion(source);
}

/// What it inherited in the topology with which it is registered is left to the visit that removes the VLAN from there.
/// When this had to wait for other expansions, that visit may be over.
void LibSm::dropExpansion(Bridging::VlanId vid, bool hadToWait) {
  if (isRetired()) return;
  const Mox::String* const recorded = vidToExpandedTopoMap(vid);
  const Mox::String topoName = recorded == nullptr ? Mox::String() : *recorded;
  const bool wasApplied = recorded != nullptr;
  unlinkExpansion(vid);
  const DirtyVlan* const dv = dirtyVlanDir_->dirtyVlan(vid);
  const bool isVisitToCome = !hadToWait || (dv != nullptr && dv->dirty());
  if (wasApplied && !(isVisitToCome && hasVlanMappedToTopo(topoName, vid))) withdrawInherited(vid, topoName);
}

/// Takes a VLAN out of the three maps; returns the VLANs that it expanded into.
std::vector<Bridging::VlanId> LibSm::unlinkExpansion(Bridging::VlanId vid) {
  std::vector<Bridging::VlanId> expanded = expandedVlans(vid);
  for (const Bridging::VlanId expVid : expanded) {
    const Mox::Ptr<VlanToVlanSet> inverse = expVlanToVlanSetMap(expVid);
    inverse->someVlanDel(vid);
    if (inverse->someVlan().empty()) expVlanToVlanSetMapDel(expVid);
  }
  if (const Mox::Ptr<VlanToVlanSet> set = vlanToExpVlanSetMap(vid)) set->someVlanDelAll();
  vlanToExpVlanSetMapDel(vid);
  vidToExpandedTopoMapDel(vid);
  return expanded;
}

std::vector<Bridging::VlanId> LibSm::expandedVlans(Bridging::VlanId vid) const {
  std::vector<Bridging::VlanId> expanded;
  if (const VlanToVlanSet* const set = vlanToExpVlanSetMap_.find(vid)) {
    for (const auto& [expVid, present] : set->someVlan()) expanded.push_back(expVid);
  }
  return expanded;
}

}  // namespace Topology::Library
