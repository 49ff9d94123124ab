// How LibSm brings the ports of a VLAN into LibState, and takes them out.
//
// An entry of a VLAN on a port is the VLAN's own if its configuration has one for that interface; otherwise the VLAN
// inherits it from a VLAN that it expands into (LibSmFloodset.cpp). An own entry always takes precedence. The topology's
// TopoConfigSm is told of ports that own entries make and unmake, not of those that are merely inherited.

#include "topolib/FilterIntf.h"
#include "topolib/LibSm.h"
#include "topolib/detail/FirstException.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {
namespace {

/// What a published topology, which may be absent, says of a VLAN on a port; null if it says nothing.
const Bridging::VlanPortConfig* entryOf(const Topo* topo, Bridging::VlanId vid, Quill::IntfId intf) {
  const Port* const port = topo == nullptr ? nullptr : topo->port(intf);
  return port == nullptr ? nullptr : port->vlanPortConfig(vid);
}

}  // namespace

void LibSm::doOnVlanPortConfigAdd(Bridging::VlanId vid, Quill::IntfId intf, const Mox::String& topoName) {
  TOPOLIB_TRACE(8) << "doOnVlanPortConfigAdd" << vid << " intf " << intf << " topoName " << topoName;
  const VlanConfigSm* const vlanSm = vlanConfigSm(vid);
  FilterIntf* const filter = vlanSm == nullptr ? nullptr : vlanSm->intfFilterPtr();
  if (filter != nullptr && !filter->isValidIntf(intf)) {
    TOPOLIB_TRACE(2) << "Port " << intf << " is not a valid port in the context of libSm";
    return;
  }
  const Mox::Ptr<Topo> topo = libState_->topo(topoName);
  if (!topo) {
    TOPOLIB_TRACE(2) << " topo not yet created in libSate, returning " << topoName;
    return;
  }
  const Mox::Ptr<Port> port = portOf(topo, intf);
  if (isRetired()) return;
  TOPOLIB_TRACE(2) << topoName << ": Creating/Updating VlanPortConfig for Vlan" << vid << "/" << intf;
  TOPOLIB_MSG("{}: Creating/Updating VlanPortConfig for {}", topoName, intf);
  const Bridging::VlanConfig* const vlanConfig = bridging().vlanConfig(vid);
  const Bridging::VlanPortConfig* const entry = vlanConfig == nullptr ? nullptr : vlanConfig->vlanPortConfig(intf);
  const Bridging::VlanPortConfig value = entry == nullptr ? Bridging::VlanPortConfig() : *entry;
  port->vlanPortConfigIs(vid, value);
  if (isRetired()) return;
  TopoConfigSm* const topoSm = topoConfigSm(topoName);
  if (topoSm != nullptr && topoSm->isUnannounced(intf)) {
    TOPOLIB_TRACE(2) << topoName << ": notifying TopoConfigSm about new Port " << intf;
    topoSm->unannouncedDel(intf);
    topoSm->handleTopoPortConfigOrStatus(intf);
  }
  propagateToExpandingVlans(vid, intf, topoName);
}

void LibSm::doOnVlanPortConfigDelete(Bridging::VlanId vid, Quill::IntfId intf, const Mox::String& topoName) {
  TOPOLIB_TRACE(8) << "doOnVlanPortConfigDelete" << vid << " intf " << intf << " topoName " << topoName;
  const Mox::Ptr<Topo> topo = libState_->topo(topoName);
  if (const Mox::Ptr<Port> port = topo ? topo->port(intf) : nullptr) {
    TOPOLIB_TRACE(2) << topoName << ": Deleting VlanPortConfig for Vlan" << vid << "/" << intf << " topoName "
                     << topoName;
    TOPOLIB_MSG("{}: Deleting VlanPortConfig for Vlan{}/{}", topoName, vid, intf);
    detail::FirstException thrown;
    thrown.collect([&] { port->vlanPortConfigDel(vid); });
    if (!isRetired() && port->vlanPortConfig().empty() && topo->port(intf) == port.get()) {
      TOPOLIB_TRACE(2) << topoName << ": no more VPCs, deleting Port " << intf;
      const Mox::Ptr<TopoConfigSm> topoSm = topoConfigSm(topoName);
      if (topoSm) topoSm->unannouncedDel(intf);
      thrown.collect([&] { topo->portDel(intf); });
      if (topoSm && !isRetired()) thrown.collect([&] { topoSm->handleTopoPortConfigOrStatus(intf); });
    }
    thrown.rethrow();
  }
  withdrawFromExpandingVlans(vid, intf);
  inheritFromExpandedVlans(vid, intf);
}

void LibSm::doPopulateCurrentPortSet(Bridging::VlanId vid, const Mox::String& topoName) {
  populatePortSet(*topoLibCodef_->delPendingPortSet(), vid, topoName);
}

void LibSm::populatePortSet(PortSet& set, Bridging::VlanId vid, const Mox::String& topoName) const {
  set.portDelAll();
  TOPOLIB_TRACE(2) << "old topo is " << topoName;
  const Topo* const topo = std::as_const(*libState_).topo(topoName);
  if (topo == nullptr) return;
  for (const auto& [intf, port] : topo->port()) {
    if (port.vlanPortConfig(vid) != nullptr) set.portIs(intf);
  }
}

void LibSm::doSyncTopoPort(Quill::IntfId intf, const Mox::String& topoName, Bridging::Topology::PortState state,
                           std::uint32_t fdbFlush, bool active) {
  const Mox::Ptr<Topo> topo = libState_->topo(topoName);
  const Mox::Ptr<Port> port = topo ? topo->port(intf) : nullptr;
  if (!port) return;
  port->activeIs(active);
  if (!isRetired()) port->stateIs(state);
  if (!isRetired()) port->fdbFlushIs(fdbFlush);
}

bool LibSm::hasOwnEntry(Bridging::VlanId vid, Quill::IntfId intf) const {
  const Bridging::VlanConfig* const vlanConfig = bridging().vlanConfig(vid);
  return vlanConfig != nullptr && vlanConfig->vlanPortConfig(intf) != nullptr;
}

/// Whether a VLAN takes over an entry of an expanded one: it is configured and has no entry of its own.
bool LibSm::mayInherit(Bridging::VlanId vid, Quill::IntfId intf) const {
  return bridging().vlanConfig(vid) != nullptr && !hasOwnEntry(vid, intf);
}

/// The published port, made if it is absent.
Mox::Ptr<Port> LibSm::portOf(const Mox::Ptr<Topo>& topo, Quill::IntfId intf) {
  for (;;) {
    if (Port* const existing = topo->port(intf)) return existing;
    TopoConfigSm* const topoSm = isPublished(*topo) ? topoConfigSm(topo->name()) : nullptr;
    if (topoSm != nullptr) topoSm->unannouncedIs(intf);
    Mox::Ptr<Port> made = topo->portIs(intf);
    // Readers that were told of it may have had it filled, emptied and so removed again.
    if (isRetired() || topo->port(intf) == made.get()) return made;
  }
}

/// The published topology to which the configuration gives a VLAN, or null.
Mox::Ptr<Topo> LibSm::topoOfVlan(Bridging::VlanId vid) const {
  const Mox::String* const name = mappedTopo(vid);
  return name == nullptr ? nullptr : libState_->topo(*name);
}

/// Whether it is still the one that bears its name: a reader may have had it rebuilt.
bool LibSm::isPublished(const Topo& topo) const { return std::as_const(*libState_).topo(topo.name()) == &topo; }

/// The VLANs that expand into this one inherit its entry, each in its own topology.
void LibSm::propagateToExpandingVlans(Bridging::VlanId expVid, Quill::IntfId intf, const Mox::String& topoName) {
  if (isRetired() || !expVlanToVlanSetMapHas(expVid)) return;
  expanding_.run([this, expVid, intf, topoName] {
    const Mox::Ptr<const VlanToVlanSet> expanding = expVlanToVlanSetMap(expVid);
    if (!expanding) return;
    for (const auto& [vid, present] : expanding->someVlan()) {
      if (isRetired()) return;
      const Topo* const expTopo = std::as_const(*libState_).topo(topoName);
      const Bridging::VlanPortConfig* const entry = entryOf(expTopo, expVid, intf);
      if (entry == nullptr) return;
      const Mox::Ptr<Topo> topo = topoOfVlan(vid);
      if (topo && mayInherit(vid, intf)) inheritEntry(topo, vid, intf, Bridging::VlanPortConfig(*entry));
    }
  });
}

void LibSm::withdrawFromExpandingVlans(Bridging::VlanId expVid, Quill::IntfId intf) {
  if (isRetired() || !expVlanToVlanSetMapHas(expVid)) return;
  expanding_.run([this, expVid, intf] {
    const Mox::Ptr<const VlanToVlanSet> expanding = expVlanToVlanSetMap(expVid);
    if (!expanding) return;
    for (const auto& [vid, present] : expanding->someVlan()) {
      if (isRetired()) return;
      const Mox::Ptr<Topo> topo = topoOfVlan(vid);
      if (topo && topo->port(intf) != nullptr && !hasOwnEntry(vid, intf)) disinheritEntry(topo, vid, intf);
    }
  });
}

/// A VLAN that has lost its own entry inherits one, if it expands into a VLAN that the port carries.
void LibSm::inheritFromExpandedVlans(Bridging::VlanId vid, Quill::IntfId intf) {
  if (isRetired() || !vlanToExpVlanSetMapHas(vid)) return;
  expanding_.run([this, vid, intf] {
    const Mox::Ptr<const VlanToVlanSet> expanded = vlanToExpVlanSetMap(vid);
    if (!expanded) return;
    for (const auto& [expVid, present] : expanded->someVlan()) {
      if (isRetired()) return;
      const Mox::Ptr<Topo> topo = topoOfVlan(vid);
      const Mox::Ptr<const Topo> expTopo = topoOfVlan(expVid);
      const Bridging::VlanPortConfig* const entry = entryOf(expTopo.get(), expVid, intf);
      if (topo && entry != nullptr && mayInherit(vid, intf)) {
        inheritEntry(topo, vid, intf, Bridging::VlanPortConfig(*entry));
      }
    }
  });
}

void LibSm::inheritEntry(const Mox::Ptr<Topo>& topo, Bridging::VlanId vid, Quill::IntfId intf,
                         const Bridging::VlanPortConfig& value) {
  const Mox::Ptr<Port> port = portOf(topo, intf);
  if (isRetired()) return;
  // A reader that was told of the new port may have given the VLAN an entry of its own, or taken its configuration away.
  if (!mayInherit(vid, intf)) {
    if (port->vlanPortConfig().empty() && topo->port(intf) == port.get()) disinheritEntry(topo, vid, intf);
    return;
  }
  TOPOLIB_TRACE(2) << topo->name() << ": Creating/Updating VlanPortConfig for Vlan" << vid << "/" << intf;
  TOPOLIB_MSG("{}: Creating/Updating VlanPortConfig for Vlan{}/{}", topo->name(), vid, intf);
  port->vlanPortConfigIs(vid, value);
}

void LibSm::disinheritEntry(const Mox::Ptr<Topo>& topo, Bridging::VlanId vid, Quill::IntfId intf) {
  const Mox::Ptr<Port> port = topo->port(intf);
  TOPOLIB_TRACE(2) << topo->name() << ": Deleting VlanPortConfig for Vlan" << vid << "/" << intf;
  detail::FirstException thrown;
  thrown.collect([&] { port->vlanPortConfigDel(vid); });
  if (isRetired() || !port->vlanPortConfig().empty()) {
    thrown.rethrow();
    return;
  }
  TOPOLIB_TRACE(2) << topo->name() << ": no more VPCs, deleting Port " << intf;
  const Mox::Ptr<TopoConfigSm> topoSm = isPublished(*topo) ? topoConfigSm(topo->name()) : nullptr;
  if (topoSm) thrown.collect([&] { topoSm->doRemovePort(intf); });
  // A reader that was told of the port while it went may have given it an entry again, or had it admitted again.
  if (!isRetired() && port->vlanPortConfig().empty() && topo->port(intf) == port.get()) {
    if (topoSm) topoSm->unannouncedDel(intf);
    thrown.collect([&] { topo->portDel(intf); });
  }
  if (topoSm && !isRetired() && (topo->port(intf) != nullptr || topoSm->topoPortConfigSm(intf) != nullptr)) {
    thrown.collect([&] { topoSm->handleTopoPortConfigOrStatus(intf); });
  }
  thrown.rethrow();
}

}  // namespace Topology::Library
