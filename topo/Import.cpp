#include "topo/Import.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "topo/LinuxBridge.h"
#include "topo/Words.h"

namespace Topo {

namespace {

using Bridging::VlanId;
using Msti = LinuxBridge::Msti;
using Port = LinuxBridge::Port;

[[noreturn]] void failRead(const std::string& name, const std::string& why) {
  throw LinuxCaptureError(name + ": error: " + why);
}

[[nodiscard]] LinuxCapture::File readFile(const std::filesystem::path& path) {
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  if (!in) failRead(path.string(), std::generic_category().message(errno));
  std::ostringstream text;
  text << in.rdbuf();
  // A directory can be opened, but not read. An empty file leaves `text` with nothing inserted, which is no error here.
  if (text.bad() || std::filesystem::is_directory(path)) failRead(path.string(), "cannot be read");
  return {path.string(), std::move(text).str()};
}

[[nodiscard]] std::optional<LinuxCapture::File> readFileIfThere(const std::filesystem::path& path) {
  std::error_code ignored;
  if (std::filesystem::symlink_status(path, ignored).type() == std::filesystem::file_type::not_found)
    return std::nullopt;
  return readFile(path);
}

/// A name as a word of a scenario.
[[nodiscard]] std::string word(const std::string& name) {
  constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./:";
  return name.find_first_not_of(plain) == std::string::npos ? name : inQuotes(name);
}

[[nodiscard]] std::string topologyName(Msti msti) { return "msti" + std::to_string(msti); }

/// VLAN ids in ascending order, written as 1,10-20.
class VlanText {
 public:
  void add(std::uint16_t vid) {
    if (!empty() && vid == last_ + 1) {
      last_ = vid;
      return;
    }
    closed_ += lastRange();
    first_ = last_ = vid;
  }

  [[nodiscard]] bool empty() const noexcept { return first_ == 0; }

  [[nodiscard]] std::string text() const { return closed_ + lastRange(); }

 private:
  [[nodiscard]] std::string lastRange() const {
    if (empty()) return {};
    std::string range = closed_.empty() ? "" : ",";
    range += std::to_string(first_);
    if (last_ != first_) range.append(1, '-').append(std::to_string(last_));
    return range;
  }

  std::string closed_;
  std::uint16_t first_ = 0;
  std::uint16_t last_ = 0;
};

/// What of the bridge belongs to an MST instance.
struct Instance {
  /// In natural order.
  std::vector<const Port*> ports;
  VlanText vlans;
};

/// Every instance of the bridge, with the ports that carry one of its VLANs, and the VLANs that a port carries.
[[nodiscard]] std::map<Msti, Instance> instancesOf(const LinuxBridge& bridge) {
  std::map<Msti, Instance> instances;
  for (const auto msti : bridge.instances) instances[msti];
  std::vector<bool> carried(VlanId::max + 1);
  for (const auto& port : bridge.ports) {
    for (std::uint16_t vid = VlanId::min; vid <= VlanId::max; ++vid) {
      if (port.vlans[vid] == 0) continue;
      carried[vid] = true;
      auto& ports = instances.at(bridge.instanceOfVlan[vid]).ports;
      if (ports.empty() || ports.back() != &port) ports.push_back(&port);
    }
  }
  for (std::uint16_t vid = VlanId::min; vid <= VlanId::max; ++vid) {
    if (carried[vid]) instances.at(bridge.instanceOfVlan[vid]).vlans.add(vid);
  }
  return instances;
}

void writeInterfaces(const LinuxBridge& bridge, std::ostream& out) {
  for (const auto& port : bridge.ports) {
    out << "interface " << word(port.name) << " link " << (port.linkUp ? "up" : "down") << " model bridged\n";
  }
}

void writeVlans(const LinuxBridge& bridge, std::ostream& out) {
  VlanText all;
  for (std::uint16_t vid = VlanId::min; vid <= VlanId::max; ++vid) {
    const auto carries = [vid](const Port& port) { return port.vlans[vid] != 0; };
    if (std::ranges::any_of(bridge.ports, carries)) all.add(vid);
  }
  if (!all.empty()) out << "vlan " << all.text() << '\n';
}

/// One line for all VLANs that the port carries in the same way; the line with the lowest VLAN first.
void writeVlansOfPort(const Port& port, std::ostream& out) {
  std::array<VlanText, 8> byFlags;
  std::vector<std::uint8_t> order;
  for (std::uint16_t vid = VlanId::min; vid <= VlanId::max; ++vid) {
    const auto flags = port.vlans[vid];
    if (flags == 0) continue;
    if (byFlags.at(flags).empty()) order.push_back(flags);
    byFlags.at(flags).add(vid);
  }
  for (const auto flags : order) {
    out << "vlan " << byFlags.at(flags).text() << " port " << word(port.name)
        << ((flags & LinuxPortVlans::untagged) != 0 ? " untagged" : "")
        << ((flags & LinuxPortVlans::pvid) != 0 ? " pvid" : "") << '\n';
  }
}

void writeTopology(Msti msti, const Instance& instance, std::ostream& out) {
  const auto name = topologyName(msti);
  out << "topology " << name << " number " << msti << '\n';
  for (const auto* port : instance.ports) {
    out << "topology " << name << " port " << word(port->name);
    if (const auto state = port->stateIn(msti)) {
      out << " state " << *state << '\n';
    } else {
      out << "  # The capture does not tell the state.\n";
    }
  }
}

void writeInstanceStatus(Msti msti, const Instance& instance, std::ostream& out) {
  const auto name = topologyName(msti);
  out << "instance " << name << " number " << msti << '\n';
  for (const auto* port : instance.ports) {
    if (port->linkUp) out << "instance " << name << " port " << word(port->name) << '\n';
  }
}

}  // namespace

int importLinux(const std::string& dir, const std::optional<std::string>& bridge, std::ostream& out,
                std::ostream& err) {
  try {
    const std::filesystem::path path(dir);
    const LinuxCapture capture{readFile(path / "link.json"), readFile(path / "vlan.json"),
                               readFileIfThere(path / "mst.json"), readFileIfThere(path / "vlan-global.json")};
    writeScenario(readLinuxBridge(capture, bridge), out);
    return 0;
  } catch (const LinuxCaptureError& error) {
    err << error.what() << '\n';
    return 2;
  }
}

void writeScenario(const LinuxBridge& bridge, std::ostream& out) {
  const auto instances = instancesOf(bridge);
  writeInterfaces(bridge, out);
  writeVlans(bridge, out);
  for (const auto& port : bridge.ports) writeVlansOfPort(port, out);
  for (const auto& [msti, instance] : instances) writeTopology(msti, instance, out);
  for (const auto& [msti, instance] : instances) {
    if (!instance.vlans.empty()) out << "map " << instance.vlans.text() << ' ' << topologyName(msti) << '\n';
  }
  for (const auto& [msti, instance] : instances) writeInstanceStatus(msti, instance, out);
}

}  // namespace Topo
