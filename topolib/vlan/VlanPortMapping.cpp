#include "topolib/vlan/VlanPortMapping.h"

#include "topolib/detail/FirstException.h"
#include "topolib/vlan/TopoSm.h"
#include "topolib/vlan/VlanLibSm.h"
#include "topolib/vlan/detail/Log.h"

namespace Topology::Library::Vlan {

VlanPortMapping::VlanPortMapping(Quill::IntfId intf, const Mox::Ptr<const Library::Port>& port, TopoSm* topoSm)
    : intf_(intf),
      port_(port),
      view_(topoSm->vlanLibSm()->libVlanState()),
      topoName_(topoSm->name()),
      moxPort_(this, port) {}

Mox::Ptr<VlanPortMapping> VlanPortMapping::VlanPortMappingIs(Quill::IntfId intf,
                                                             const Mox::Ptr<const Library::Port>& port,
                                                             TopoSm* topoSm) {
  Mox::Ptr<VlanPortMapping> mapping = Mox::makePtr<VlanPortMapping>(intf, port, topoSm);
  mapping->doStart();
  return mapping;
}

void VlanPortMapping::doStart() {
  hasNotificationActiveIs(true);
  handleTopoVlanPort();
  handleTopoPortActive();
  handleTopoPortStates();
  handleInitialized();
}

VlanPortMapping::~VlanPortMapping() { moxDoZombieReactors(true); }

void VlanPortMapping::moxDoZombieReactors(bool zombie) {
  StateMachine::moxDoZombieReactors(zombie);
  if (!zombie) return;
  view_ = nullptr;
  port_ = nullptr;
}

void VlanPortMapping::portDel() {
  moxPort_.notifierIs(nullptr);
  port_ = nullptr;
}

void VlanPortMapping::handleInitialized() {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleInitialized()";
  initializedIs(true);
  Library::detail::FirstException thrown;
  thrown.collect([this] { handleTopoVlanPort(); });
  thrown.collect([this] { handleTopoPortStates(); });
  thrown.rethrow();
}

void VlanPortMapping::handleTopoPortActive() {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleTopoPortActive()";
  handleTopoVlanPort();
}

void VlanPortMapping::handleTopoVlanPort() {
  if (!initialized() || !port_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleTopoVlanPort()"
                       << " in topo " << topoName_ << " port " << intf_;
  const Mox::Ptr<VlanPortMapping> self(this);
  const Mox::Ptr<const Library::Port> port = port_;
  Library::detail::FirstException thrown;
  for (const auto& [vid, config] : port->vlanPortConfig()) {
    thrown.collect([&, vid = vid] { handleTopoVlanPort(vid); });
  }
  thrown.rethrow();
}

void VlanPortMapping::handleTopoVlanPort(Bridging::VlanId vid) {
  if (!initialized() || !port_ || !view_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleTopoVlanPort(Bridging::VlanId)"
                       << " in topoPort " << topoName_ << intf_ << "for vlan " << vid;
  if (isMember(vid)) {
    doTopoVlanPortIs(vid);
  } else {
    doTopoVlanPortDel(vid);
  }
}

bool VlanPortMapping::isMember(Bridging::VlanId vid) const {
  return port_ && !isLeaving_ && (port_->active() || isForced()) && port_->vlanPortConfig(vid) != nullptr;
}

bool VlanPortMapping::isRecorded(const LibVlanState& view, Bridging::VlanId vid) const {
  const TopoVlan* const topoVlan = view.topoVlan(vid);
  const Port* const viewPort = topoVlan == nullptr ? nullptr : topoVlan->topoPort(intf_);
  const Mox::Ptr<VlanPortMapping>* const recorded = viewPort == nullptr ? nullptr : viewPort->topo(topoName_);
  return recorded != nullptr && *recorded == this;
}

void VlanPortMapping::doTopoVlanPortIs(Bridging::VlanId vid) {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::doTopoVlanPortIs(Bridging::VlanId)"
                       << " in topo " << topoName_ << " port " << intf_;
  const Mox::Ptr<LibVlanState> view = view_;
  if (!view) return;
  const Mox::Ptr<VlanPortMapping> self(this);
  const bool wasMember = isMember(vid);
  Library::detail::FirstException thrown;
  do {
    thrown.collect([&] { record(*view, vid); });
    // Readers of the view may have changed the verdict meanwhile, or removed the VLAN or the port.
  } while (isMember(vid) && !isRecorded(*view, vid));
  if (wasMember && !isMember(vid) && isRecorded(*view, vid)) thrown.collect([&] { withdraw(*view, vid); });
  thrown.rethrow();
}

void VlanPortMapping::record(LibVlanState& view, Bridging::VlanId vid) {
  const auto configured = [&] { return port_ ? port_->vlanPortConfig(vid) : nullptr; };
  const bool wasConfigured = configured() != nullptr;
  // A reader of the view may have had the VLAN moved to another topology, whose verdicts must stay then.
  const auto hasLeft = [&] { return wasConfigured && configured() == nullptr; };
  Mox::Ptr<TopoVlan> topoVlan = view.topoVlan(vid);
  if (!topoVlan) {
    TOPOLIBVLAN_TRACE(2) << "New topo vlan " << vid;
    topoVlan = view.topoVlanIs(vid);
  }
  Mox::Ptr<Port> viewPort = topoVlan->topoPort(intf_);
  if (!viewPort) {
    viewPort = topoVlan->topoPortIs(intf_);
    TOPOLIBVLAN_TRACE(2) << "New topo intf " << intf_ << " on vlan " << vid;
  }
  if (!hasLeft()) handleTopoPortState(vid);
  if (isLeaving_) return removeIfEmpty(view, topoVlan, viewPort);
  recorded_.insertOrAssign(vid, {});
  viewPort->topoIs(topoName_, this);
  if (hasLeft()) return;
  const Bridging::VlanPortConfig* const config = configured();
  viewPort->allowedTrafficDirectionIs(config == nullptr ? Bridging::AllowedTrafficDirection{}
                                                        : config->allowedTrafficDirection());
}

void VlanPortMapping::doTopoVlanPortDel(Bridging::VlanId vid) {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::doTopoVlanPortDel(Bridging::VlanId)"
                       << " in topo " << topoName_ << " port " << intf_;
  if (const Mox::Ptr<LibVlanState> view = view_) withdraw(*view, vid);
}

void VlanPortMapping::withdraw(LibVlanState& view, Bridging::VlanId vid) {
  const Mox::Ptr<TopoVlan> topoVlan = view.topoVlan(vid);
  const Mox::Ptr<Port> viewPort = topoVlan ? topoVlan->topoPort(intf_) : nullptr;
  if (!viewPort) return;
  TOPOLIBVLAN_TRACE(9) << "Deleting topo " << topoName_ << " from Vlan " << vid << ", " << intf_;
  Library::detail::FirstException thrown;
  recorded_.erase(vid);
  thrown.collect([&] { viewPort->topoDel(topoName_); });
  thrown.collect([&] { removeIfEmpty(view, topoVlan, viewPort); });
  thrown.rethrow();
}

void VlanPortMapping::removeIfEmpty(LibVlanState& view, const Mox::Ptr<TopoVlan>& topoVlan,
                                    const Mox::Ptr<Port>& viewPort) {
  const Bridging::VlanId vid = topoVlan->vid();
  Library::detail::FirstException thrown;
  if (viewPort->topo().empty() && topoVlan->topoPort(intf_) == viewPort.get()) {
    thrown.collect([&] { topoVlan->topoPortDel(intf_); });
  }
  if (topoVlan->topoPort().empty() && view.topoVlan(vid) == topoVlan.get()) {
    TOPOLIBVLAN_TRACE(2) << " All topo ports deleted, removing topo vlan " << vid;
    thrown.collect([&] { view.topoVlanDel(vid); });
  }
  thrown.rethrow();
}

void VlanPortMapping::handleTopoPortStates() {
  if (!initialized() || !port_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleTopoPortStates()";
  const Mox::Ptr<VlanPortMapping> self(this);
  const Mox::Ptr<const Library::Port> port = port_;
  Library::detail::FirstException thrown;
  for (const auto& [vid, config] : port->vlanPortConfig()) {
    thrown.collect([&, vid = vid] { handleTopoPortState(vid); });
  }
  thrown.rethrow();
}

void VlanPortMapping::handleTopoPortState(Bridging::VlanId vid) {
  if (!initialized() || isLeaving_ || !port_ || !view_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleTopoPortState(Bridging::VlanId)" << vid
                       << ":" << intf_ << " port::state = " << port_->state();
  const bool isBlocked = port_->state() != Bridging::Topology::PortState::forwarding && !isForced();
  TOPOLIBVLAN_TRACE(9) << " port: " << port_ << ", state: " << port_->state();
  const Mox::Ptr<TopoVlan> topoVlan = view_->topoVlan(vid);
  if (!topoVlan) {
    TOPOLIBVLAN_TRACE(9) << "tv == NULL. Return early";
    return;
  }
  const Mox::Ptr<Port> viewPort = topoVlan->topoPort(intf_);
  if (!viewPort) {
    TOPOLIBVLAN_TRACE(9) << "port == NULL. Return early";
    return;
  }
  TOPOLIBVLAN_TRACE(9) << "Mark port::blocked as " << isBlocked;
  viewPort->blockedIs(isBlocked);
}

void VlanPortMapping::handleCleanup() {
  if (!initialized() || !port_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleCleanup()"
                       << " in topo " << topoName_ << " port " << intf_;
  const Mox::Ptr<VlanPortMapping> self(this);
  const Mox::Ptr<const Library::Port> port = port_;
  isLeaving_ = true;
  Library::detail::FirstException thrown;
  for (const auto& [vid, config] : port->vlanPortConfig()) {
    thrown.collect([&, vid = vid] { doTopoVlanPortDel(vid); });
  }
  // A VLAN that has left the port just now, of which this was not told yet.
  for (const auto& [vid, present] : recorded_) {
    thrown.collect([&, vid = vid] { doTopoVlanPortDel(vid); });
  }
  thrown.rethrow();
}

bool VlanPortMapping::isForced() const {
  const bool* const forced = view_ ? view_->forceEnabledPorts(intf_) : nullptr;
  return forced != nullptr && *forced;
}

void VlanPortMapping::MoxPort::onChange(Mox::AttributeId id, const void* key) {
  using Library::Port;
  if (const auto* vid = Port::vlanPortConfigAttr.keyOf(id, key)) sm().handleTopoVlanPort(*vid);
  if (Port::activeAttr.is(id)) sm().handleTopoPortActive();
  if (Port::stateAttr.is(id)) sm().handleTopoPortStates();
}

}  // namespace Topology::Library::Vlan
