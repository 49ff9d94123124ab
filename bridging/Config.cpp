#include "bridging/Config.h"

namespace Bridging {

VlanConfig::VlanConfig(VlanId vid, bool internal) noexcept : vlanId_(vid), internal_(internal) {}
VlanConfig::~VlanConfig() = default;

Config::Config(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Config::~Config() = default;

Mox::Ptr<Config> configFactory(const Mox::String& name) { return Mox::makePtr<Config>(name); }

}  // namespace Bridging
