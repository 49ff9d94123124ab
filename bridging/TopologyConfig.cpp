#include "bridging/TopologyConfig.h"

namespace Bridging::Topology {

TopoPortConfig::TopoPortConfig(Quill::IntfId intf, unsigned number, PortState state) noexcept
    : intfId_(intf), number_(number), portState_(state) {}
TopoPortConfig::~TopoPortConfig() = default;

TopoConfig::TopoConfig(Mox::String name, unsigned topoNumber) noexcept
    : NamedEntity(std::move(name)), topoNumber_(topoNumber) {}
TopoConfig::~TopoConfig() = default;

Mox::Ptr<TopoPortConfig> TopoConfig::topoPortConfigIs(Quill::IntfId intf, unsigned number, PortState state) {
  const bool isThere = topoPortConfig_.has(intf);
  Mox::Ptr<TopoPortConfig> port = memberIs(topoPortConfig_, topoPortConfigAttr, intf, number, state);
  // A new port has its state, unless somebody who was told of it has already written another one.
  if (isThere) port->portStateIs(state);
  return port;
}

Config::Config(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Config::~Config() = default;

Mox::Ptr<Config> configFactory(const Mox::String& name) { return Mox::makePtr<Config>(name); }

}  // namespace Bridging::Topology
