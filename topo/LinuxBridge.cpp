#include "topo/LinuxBridge.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "quill/IntfId.h"
#include "topo/JsonElement.h"
#include "topo/Text.h"

namespace Topo {

namespace {

using Bridging::VlanId;
using PortState = LinuxBridge::PortState;

/// The instances that the kernel knows.
constexpr LinuxBridge::Msti maxMsti = 4094;

[[nodiscard]] PortState portState(const JsonElement& state) {
  const auto& name = state.text();
  if (name == "disabled") return PortState::disabled;
  // A port that listens forwards nothing and learns nothing, as one that blocks.
  if (name == "blocking" || name == "listening") return PortState::blocking;
  if (name == "learning") return PortState::learning;
  if (name == "forwarding") return PortState::forwarding;
  state.fail("expected a port state, found \"" + name + '"');
}

[[nodiscard]] bool hasFlag(const std::vector<std::string_view>& flags, std::string_view flag) {
  return std::ranges::find(flags, flag) != flags.end();
}

[[nodiscard]] std::vector<std::string_view> flagsOf(const JsonElement& owner) {
  std::vector<std::string_view> flags;
  if (const auto list = owner.find("flags")) {
    list->forEach([&](const JsonElement& flag) { flags.emplace_back(flag.text()); });
  }
  return flags;
}

/// UNKNOWN is what drivers say that do not tell; then the carrier decides.
[[nodiscard]] bool linkUp(const JsonElement& link) {
  const auto& operstate = link.member("operstate").text();
  const auto flags = flagsOf(link);
  return operstate == "UP" || (operstate == "UNKNOWN" && hasFlag(flags, "UP") && hasFlag(flags, "LOWER_UP"));
}

[[nodiscard]] bool isBridge(const JsonElement& link) {
  const auto info = link.find("linkinfo");
  if (!info) return false;
  const auto kind = info->find("info_kind");
  return kind && kind->text() == "bridge";
}

[[nodiscard]] bool isVlanAware(const JsonElement& bridge) {
  const auto filtering = bridge.member("linkinfo").member("info_data").find("vlan_filtering");
  return filtering && filtering->number(0, 1) == 1;
}

[[nodiscard]] std::string listOf(std::vector<std::string> names) {
  std::ranges::sort(names, [](const auto& a, const auto& b) { return Quill::IntfId(a) < Quill::IntfId(b); });
  std::string list;
  for (const auto& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

/// The name of the bridge to read.
[[nodiscard]] std::string chosenBridge(const JsonElement& links, const std::optional<std::string>& wanted) {
  std::vector<std::string> aware;
  bool isThere = false;
  links.forEach([&](const JsonElement& link) {
    const auto& name = link.member("ifname").text();
    if (!isBridge(link)) return;
    isThere = isThere || name == wanted;
    if (isVlanAware(link)) aware.push_back(name);
  });
  if (wanted && std::ranges::find(aware, *wanted) != aware.end()) return *wanted;
  if (wanted) {
    const auto others = aware.empty() ? "there is no VLAN-aware bridge" : "VLAN-aware bridges are " + listOf(aware);
    links.fail((isThere ? "the bridge " + *wanted + " is not VLAN-aware; " : "no bridge " + *wanted + "; ") + others);
  }
  if (aware.empty()) links.fail("no VLAN-aware bridge");
  if (aware.size() > 1) links.fail("several VLAN-aware bridges, choose one with --bridge: " + listOf(aware));
  return aware.front();
}

/// A port gets its name from whoever configures the kernel, which takes nearly anything. Scenarios do not.
void checkName(const JsonElement& name) {
  const auto& text = name.text();
  if (text.empty()) name.fail("a port without a name");
  if (std::ranges::any_of(text, isControl)) {
    name.fail("a scenario cannot hold the name " + text);
  }
}

/// The ports of the bridge, in natural order.
[[nodiscard]] std::vector<LinuxBridge::Port> portsOf(const std::string& bridge, const JsonElement& links) {
  std::vector<LinuxBridge::Port> ports;
  std::unordered_set<std::string_view> names;
  links.forEach([&](const JsonElement& link) {
    const auto nameElement = link.member("ifname");
    const auto& name = nameElement.text();
    const auto master = link.find("master");
    if (!master || master->text() != bridge || name == bridge) return;
    checkName(nameElement);
    if (!names.insert(name).second) nameElement.fail("a second port " + name);
    auto& port = ports.emplace_back();
    port.name = name;
    port.linkUp = linkUp(link);
    port.state = portState(link.member("linkinfo").member("info_slave_data").member("state"));
  });
  std::ranges::sort(ports, {}, [](const auto& port) { return Quill::IntfId(port.name); });
  return ports;
}

/// Calls `visit` with first and last id and the element, for each range in the member "vlans" of this element.
template <class F>
void forEachVlanRange(const JsonElement& owner, const F& visit) {
  owner.member("vlans").forEach([&](const JsonElement& range) {
    const auto first = range.member("vlan").number(VlanId::min, VlanId::max);
    const auto end = range.find("vlanEnd");
    visit(first, end ? end->number(first, VlanId::max) : first, range);
  });
}

using PortsByName = std::unordered_map<std::string_view, LinuxBridge::Port*>;

void readVlans(const JsonElement& vlans, const PortsByName& ports) {
  vlans.forEach([&](const JsonElement& each) {
    const auto port = ports.find(each.member("ifname").text());
    forEachVlanRange(each, [&](std::uint16_t first, std::uint16_t last, const JsonElement& range) {
      const auto names = flagsOf(range);
      std::uint8_t flags = LinuxPortVlans::carried;
      if (hasFlag(names, "PVID")) flags |= LinuxPortVlans::pvid;
      if (hasFlag(names, "Egress Untagged")) flags |= LinuxPortVlans::untagged;
      if (port != ports.end()) port->second->vlans.add(first, last, flags);
    });
  });
}

void readInstanceStates(const JsonElement& mst, const PortsByName& ports, std::set<LinuxBridge::Msti>& instances) {
  mst.forEach([&](const JsonElement& each) {
    const auto port = ports.find(each.member("ifname").text());
    each.member("mst").forEach([&](const JsonElement& instance) {
      const auto msti = instance.member("msti").number(0, maxMsti);
      const auto state = portState(instance.member("state"));
      if (port == ports.end()) return;
      port->second->mst.insert_or_assign(msti, state);
      instances.insert(msti);
    });
  });
}

void readInstancesOfVlans(const JsonElement& vlans, LinuxBridge& bridge) {
  vlans.forEach([&](const JsonElement& each) {
    const bool ours = each.member("ifname").text() == bridge.name;
    forEachVlanRange(each, [&](std::uint16_t first, std::uint16_t last, const JsonElement& range) {
      const auto element = range.find("msti");
      const auto msti = element ? element->number(0, maxMsti) : LinuxBridge::Msti{0};
      if (!ours) return;
      std::fill(bridge.instanceOfVlan.begin() + first, bridge.instanceOfVlan.begin() + last + 1, msti);
      bridge.instances.insert(msti);
    });
  });
}

/// Parses a file and hands its root to `read`.
template <class F>
void withJson(const LinuxCapture::File& file, const F& read) {
  const ParsedJson json = parseJson(file.name, file.text);
  read(JsonElement(json, file.name));
}

}  // namespace

LinuxCaptureError::LinuxCaptureError(std::string_view text) : std::runtime_error(onOneLine(text)) {}

void LinuxPortVlans::add(std::uint16_t first, std::uint16_t last, std::uint8_t flags) {
  flags_.resize(VlanId::max + 1);
  for (std::size_t vid = first; vid <= last; ++vid) flags_[vid] |= flags;
}

std::optional<PortState> LinuxBridge::Port::stateIn(Msti msti) const {
  if (const auto found = mst.find(msti); found != mst.end()) return found->second;
  if (msti == 0) return state;
  return std::nullopt;
}

LinuxBridge readLinuxBridge(const LinuxCapture& capture, const std::optional<std::string>& name) {
  LinuxBridge bridge;
  bridge.instances.insert(0);
  bridge.instanceOfVlan.resize(VlanId::max + 1);
  withJson(capture.link, [&](const JsonElement& links) {
    bridge.name = chosenBridge(links, name);
    bridge.ports = portsOf(bridge.name, links);
  });
  PortsByName ports;
  for (auto& port : bridge.ports) ports.emplace(port.name, &port);
  withJson(capture.vlan, [&](const JsonElement& vlans) { readVlans(vlans, ports); });
  if (capture.mst)
    withJson(*capture.mst, [&](const JsonElement& mst) { readInstanceStates(mst, ports, bridge.instances); });
  if (capture.vlanGlobal)
    withJson(*capture.vlanGlobal, [&](const JsonElement& vlans) { readInstancesOfVlans(vlans, bridge); });
  return bridge;
}

}  // namespace Topo
