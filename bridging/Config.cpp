#include "bridging/Config.h"

namespace Bridging {

VlanConfig::VlanConfig(VlanId vid, bool internal) noexcept : vlanId_(vid), internal_(internal) {}
VlanConfig::~VlanConfig() = default;

Config::Config(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Config::~Config() = default;

void VlanConfig::vlanPortConfigDelAll() { valueDelAll(vlanPortConfig_, vlanPortConfigAttr); }
Mox::Ptr<VlanConfig> Config::vlanConfigIs(VlanId vid, bool internal) {
  return memberIs(vlanConfig_, vlanConfigAttr, vid, internal);
}
void Config::vlanConfigDel(VlanId vid) { memberDel(vlanConfig_, vlanConfigAttr, vid); }
void Config::vlanConfigDelAll() { memberDelAll(vlanConfig_, vlanConfigAttr); }

Mox::Ptr<Config> configFactory(const Mox::String& name) { return Mox::makePtr<Config>(name); }

}  // namespace Bridging
