#include "topolib/vlan/VlanPortMapping.h"

#include "topolib/vlan/TopoSm.h"
#include "topolib/vlan/VlanLibSm.h"
#include "topolib/vlan/detail/Log.h"

namespace Topology::Library::Vlan {

VlanPortMapping::VlanPortMapping(Quill::IntfId intf, const Mox::Ptr<const Library::Port>& port, TopoSm* topoSm)
    : intf_(intf),
      port_(port),
      view_(topoSm->vlanLibSm()->libVlanState()),
      topoName_(topoSm->name()),
      moxPort_(this, port) {
  handleTopoVlanPort();
  handleTopoPortActive();
  handleTopoPortStates();
  handleInitialized();
}

Mox::Ptr<VlanPortMapping> VlanPortMapping::VlanPortMappingIs(Quill::IntfId intf,
                                                             const Mox::Ptr<const Library::Port>& port,
                                                             TopoSm* topoSm) {
  Mox::Ptr<VlanPortMapping> mapping = Mox::makePtr<VlanPortMapping>(intf, port, topoSm);
  mapping->hasNotificationActiveIs(true);
  return mapping;
}

VlanPortMapping::~VlanPortMapping() { moxDoZombieReactors(true); }

void VlanPortMapping::moxDoZombieReactors(bool zombie) {
  StateMachine::moxDoZombieReactors(zombie);
  if (zombie) view_ = nullptr;
}

void VlanPortMapping::portDel() {
  moxPort_.notifierIs(nullptr);
  port_ = nullptr;
}

void VlanPortMapping::handleInitialized() {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleInitialized()";
  initializedIs(true);
  handleTopoVlanPort();
  handleTopoPortStates();
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
  for (const auto& [vid, config] : port->vlanPortConfig()) handleTopoVlanPort(vid);
}

void VlanPortMapping::handleTopoVlanPort(Bridging::VlanId vid) {
  if (!initialized() || !port_ || !view_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleTopoVlanPort(Bridging::VlanId)"
                       << " in topoPort " << topoName_ << intf_ << "for vlan " << vid;
  const bool isEligible = port_->active() || isForced();
  if (isEligible && port_->vlanPortConfig(vid) != nullptr) {
    doTopoVlanPortIs(vid);
  } else {
    doTopoVlanPortDel(vid);
  }
}

void VlanPortMapping::doTopoVlanPortIs(Bridging::VlanId vid) {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::doTopoVlanPortIs(Bridging::VlanId)"
                       << " in topo " << topoName_ << " port " << intf_;
  Mox::Ptr<TopoVlan> topoVlan = view_->topoVlan(vid);
  if (!topoVlan) {
    TOPOLIBVLAN_TRACE(2) << "New topo vlan " << vid;
    topoVlan = view_->topoVlanIs(vid);
  }
  Mox::Ptr<Port> viewPort = topoVlan->topoPort(intf_);
  if (!viewPort) {
    viewPort = topoVlan->topoPortIs(intf_);
    TOPOLIBVLAN_TRACE(2) << "New topo intf " << intf_ << " on vlan " << vid;
  }
  handleTopoPortState(vid);
  viewPort->topoIs(topoName_, this);
  const Bridging::VlanPortConfig* const config = port_ ? port_->vlanPortConfig(vid) : nullptr;
  viewPort->allowedTrafficDirectionIs(config == nullptr ? Bridging::AllowedTrafficDirection{}
                                                        : config->allowedTrafficDirection());
}

void VlanPortMapping::doTopoVlanPortDel(Bridging::VlanId vid) {
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::doTopoVlanPortDel(Bridging::VlanId)"
                       << " in topo " << topoName_ << " port " << intf_;
  const Mox::Ptr<LibVlanState> view = view_;
  const Mox::Ptr<TopoVlan> topoVlan = view ? view->topoVlan(vid) : nullptr;
  const Mox::Ptr<Port> viewPort = topoVlan ? topoVlan->topoPort(intf_) : nullptr;
  if (!viewPort) return;
  TOPOLIBVLAN_TRACE(9) << "Deleting topo " << topoName_ << " from Vlan " << vid << ", " << intf_;
  viewPort->topoDel(topoName_);
  if (viewPort->topo().empty()) topoVlan->topoPortDel(intf_);
  if (topoVlan->topoPort().empty()) {
    TOPOLIBVLAN_TRACE(2) << " All topo ports deleted, removing topo vlan " << vid;
    view->topoVlanDel(vid);
  }
}

void VlanPortMapping::handleTopoPortStates() {
  if (!initialized() || !port_) return;
  TOPOLIBVLAN_TRACE(8) << "void Topology::Library::Vlan::VlanPortMapping::handleTopoPortStates()";
  const Mox::Ptr<VlanPortMapping> self(this);
  const Mox::Ptr<const Library::Port> port = port_;
  for (const auto& [vid, config] : port->vlanPortConfig()) handleTopoPortState(vid);
}

void VlanPortMapping::handleTopoPortState(Bridging::VlanId vid) {
  if (!initialized() || !port_ || !view_) return;
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
  for (const auto& [vid, config] : port->vlanPortConfig()) doTopoVlanPortDel(vid);
}

bool VlanPortMapping::isForced() const {
  const bool* const forced = view_->forceEnabledPorts(intf_);
  return forced != nullptr && *forced;
}

void VlanPortMapping::MoxPort::onChange(Mox::AttributeId id, const void* key) {
  using Library::Port;
  if (const auto* vid = Port::vlanPortConfigAttr.keyOf(id, key)) sm().handleTopoVlanPort(*vid);
  if (Port::activeAttr.is(id)) sm().handleTopoPortActive();
  if (Port::stateAttr.is(id)) sm().handleTopoPortStates();
}

}  // namespace Topology::Library::Vlan
