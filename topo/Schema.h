// What the documents consist of: one function per entity, which shows the entity's attributes to a visitor in the order
// of the document's keys.
//
// A visitor has, for attributes whose names are the keys of the document,
//
//   constant(name, value)                  what never changes
//   scalar(attribute, value)
//   values(attribute, collection)          plain values by key
//   members(attribute, collection)         entities by key, each with a function of its own here
//   set(attribute, collection)             keys alone, shown as an array; also of a collection whose values are its own business
//   wholeSet(attribute, collection)        the same for an entity that is nothing but a set: shown in the entity's place
//
// JsonWriter (topo/JsonWriter.h) makes documents of it, Feed (topo/Feed.cpp) watches everything that it names.

#pragma once

#include "topo/Agent.h"

namespace Topo {

namespace Library = Topology::Library;

// state
void describe(auto& v, const Library::Port& port) {
  v.scalar(Library::Port::activeAttr, port.active());
  v.scalar(Library::Port::stateAttr, port.state());
  v.scalar(Library::Port::fdbFlushAttr, port.fdbFlush());
  v.values(Library::Port::vlanPortConfigAttr, port.vlanPortConfig());
}
void describe(auto& v, const Library::Topo& topo) { v.members(Library::Topo::portAttr, topo.port()); }
void describe(auto& v, const Library::LibState& state) {
  v.constant("name", state.name());
  v.scalar(Library::LibState::initDoneAttr, state.initDone());
  v.members(Library::LibState::topoAttr, state.topo());
}

// view
void describe(auto& v, const Library::Vlan::Port& port) {
  v.set(Library::Vlan::Port::topoAttr, port.topo());
  v.scalar(Library::Vlan::Port::blockedAttr, port.blocked());
  v.scalar(Library::Vlan::Port::allowedTrafficDirectionAttr, port.allowedTrafficDirection());
}
void describe(auto& v, const Library::Vlan::TopoVlan& vlan) {
  v.members(Library::Vlan::TopoVlan::topoPortAttr, vlan.topoPort());
}
void describe(auto& v, const Library::Vlan::LibVlanState& view) {
  v.constant("name", view.name());
  v.scalar(Library::Vlan::LibVlanState::initDoneAttr, view.initDone());
  v.members(Library::Vlan::LibVlanState::topoVlanAttr, view.topoVlan());
  v.values(Library::Vlan::LibVlanState::forceEnabledPortsAttr, view.forceEnabledPorts());
}

// instance
void describe(auto& v, const Bridging::Topology::Inst::TopoStatus& topo) {
  v.constant("topoNumber", topo.topoNumber());
  v.set(Bridging::Topology::Inst::TopoStatus::topoPortStatusAttr, topo.topoPortStatus());
}
void describe(auto& v, const Bridging::Topology::Inst::Status& instance) {
  v.constant("name", instance.name());
  v.members(Bridging::Topology::Inst::Status::topoStatusAttr, instance.topoStatus());
}

// status
void describe(auto& v, const Bridging::Topology::TopoStatus& topo) {
  v.set(Bridging::Topology::TopoStatus::topoPortStatusAttr, topo.topoPortStatus());
}
void describe(auto& v, const Bridging::Topology::Status& status) {
  v.constant("name", status.name());
  v.members(Bridging::Topology::Status::topoStatusAttr, status.topoStatus());
}

// config
void describe(auto& v, const Bridging::Topology::TopoPortConfig& port) {
  v.scalar(Bridging::Topology::TopoPortConfig::portStateAttr, port.portState());
  v.scalar(Bridging::Topology::TopoPortConfig::fdbFlushAttr, port.fdbFlush());
}
void describe(auto& v, const Bridging::Topology::TopoConfig& topo) {
  v.constant("topoNumber", topo.topoNumber());
  v.scalar(Bridging::Topology::TopoConfig::publishPortConfigAttr, topo.publishPortConfig());
  v.scalar(Bridging::Topology::TopoConfig::publishedPortStateAttr, topo.publishedPortState());
  v.members(Bridging::Topology::TopoConfig::topoPortConfigAttr, topo.topoPortConfig());
}
void describe(auto& v, const Bridging::Topology::Config& config) {
  v.constant("name", config.name());
  v.values(Bridging::Topology::Config::vidToTopoMapAttr, config.vidToTopoMap());
  v.members(Bridging::Topology::Config::topoConfigAttr, config.topoConfig());
}

// bridging
void describe(auto& v, const Bridging::VlanConfig& vlan) {
  v.constant("internal", vlan.internal());
  v.scalar(Bridging::VlanConfig::floodsetExpandedVlanAttr, vlan.floodsetExpandedVlan());
  v.values(Bridging::VlanConfig::vlanPortConfigAttr, vlan.vlanPortConfig());
}
void describe(auto& v, const Bridging::Config& bridging) {
  v.constant("name", bridging.name());
  v.members(Bridging::Config::vlanConfigAttr, bridging.vlanConfig());
}

// interfaces
void describe(auto& v, const Interface::EthIntfStatus& intf) {
  v.scalar(Interface::EthIntfStatus::linkStatusAttr, intf.linkStatus());
  v.scalar(Interface::EthIntfStatus::forwardingModelAttr, intf.forwardingModel());
}
void describe(auto& v, const Interface::EthIntfStatusDir& interfaces) {
  v.constant("name", interfaces.name());
  v.members(Interface::EthIntfStatusDir::intfStatusAttr, interfaces.intfStatus());
}

// backlog; the counters and the bookmark, which change without notice, stand in topo/Documents.cpp
void describe(auto& v, const Library::TopoLibCodefState& codefState) {
  v.scalar(Library::TopoLibCodefState::idleAttr, codefState.idle());
}
void describe(auto& v, const Library::DirtyVlan& vlan) {
  v.scalar(Library::DirtyVlan::dirtyAttr, vlan.dirty());
  v.set(Library::DirtyVlan::intfAttr, vlan.intf());
}
void describe(auto& v, const Library::DirtyVlanDir& directory) {
  v.members(Library::DirtyVlanDir::dirtyVlanAttr, directory.dirtyVlan());
}

// mapping
void describe(auto& v, const Library::MappedVlan& mapped) { v.wholeSet(Library::MappedVlan::vlanAttr, mapped.vlan()); }
void describe(auto& v, const Library::TopoToVlanMap& map) {
  v.members(Library::TopoToVlanMap::mappedVlanAttr, map.mappedVlan());
}
void describe(auto& v, const Library::VlanToVlanSet& vlans) {
  v.wholeSet(Library::VlanToVlanSet::someVlanAttr, vlans.someVlan());
}
void describe(auto& v, const Library::LibSm& libSm) {
  v.set(Library::LibSm::vlanConfigSmAttr, libSm.vlanConfigSm());
  v.set(Library::LibSm::topoConfigSmAttr, libSm.topoConfigSm());
  v.members(Library::LibSm::vlanToExpVlanSetMapAttr, libSm.vlanToExpVlanSetMap());
  v.members(Library::LibSm::expVlanToVlanSetMapAttr, libSm.expVlanToVlanSetMap());
  v.values(Library::LibSm::vidToExpandedTopoMapAttr, libSm.vidToExpandedTopoMap());
}

}  // namespace Topo
