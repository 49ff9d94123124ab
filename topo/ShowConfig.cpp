#include "topo/ShowConfig.h"

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "topo/JsonWriter.h"
#include "topo/Ranges.h"
#include "topo/Words.h"

namespace Topo {

namespace {

using Bridging::VlanId;
using Quill::IntfId;
using Intfs = std::vector<IntfId>;
using Vlans = std::vector<VlanId>;

[[nodiscard]] std::string option(std::string_view name, const auto& value, const auto& byDefault) {
  if (value == byDefault) return {};
  std::ostringstream text;
  text << ' ' << name << ' ' << value;
  return text.str();
}

[[nodiscard]] std::string optionsOf(const Interface::EthIntfStatus& intf) {
  return option("link", intf.linkStatus(), Interface::LinkStatus::unknown) +
         option("model", intf.forwardingModel(), Interface::ForwardingModel::unspecified);
}

[[nodiscard]] std::string optionsOf(const Bridging::VlanConfig& vlan) {
  return std::string(vlan.internal() ? " internal" : "") +
         option("expand", vlan.floodsetExpandedVlan(), Bridging::VlanIdOrNone());
}

[[nodiscard]] std::string optionsOf(const Bridging::VlanPortConfig& port) {
  return std::string(port.untagged() ? " untagged" : "") + (port.pvid() ? " pvid" : "") +
         option("direction", port.allowedTrafficDirection(), Bridging::AllowedTrafficDirection::both);
}

[[nodiscard]] std::string optionsOf(const Bridging::Topology::TopoConfig& topo) {
  return option("number", topo.topoNumber(), 0U) + (topo.publishPortConfig() ? " publish-ports on" : "") +
         option("publish-state", topo.publishedPortState(), Bridging::Topology::PortState::forwarding);
}

[[nodiscard]] std::string optionsOf(const Bridging::Topology::TopoPortConfig& port) {
  return option("state", port.portState(), Bridging::Topology::PortState::disabled) +
         option("flush", port.fdbFlush(), 0U);
}

/// Members with equal options next to each other, under these options.
template <class K>
class Runs {
 public:
  void add(std::string options, const K& key) {
    if (runs_.empty() || runs_.back().first != options) runs_.emplace_back(std::move(options), std::vector<K>());
    runs_.back().second.push_back(key);
  }
  [[nodiscard]] const auto& runs() const noexcept { return runs_; }

 private:
  std::vector<std::pair<std::string, std::vector<K>>> runs_;
};

class Writer {
 public:
  Writer(const Agent& agent, std::ostream& out) : agent_(agent), out_(out) {}

  void write() {
    interfaces();
    vlans();
    vlanPorts();
    topologies();
    map();
    statuses();
    instances();
    forced();
  }

 private:
  /// A line for each range of interfaces.
  void lines(const std::string& front, const Intfs& intfs, const std::string& back) {
    for (const std::string& word : intfWords(intfs)) out_ << front << word << back << '\n';
  }
  void lines(const std::string& front, const Runs<IntfId>& runs) {
    for (const auto& [options, intfs] : runs.runs()) lines(front, intfs, options);
  }

  void interfaces() {
    Runs<IntfId> runs;
    const auto& all = std::as_const(*agent_.interfaces).intfStatus();
    for (const IntfId intf : sortedKeys(all)) runs.add(optionsOf(*all.find(intf)), intf);
    lines("interface ", runs);
  }

  void vlans() {
    Runs<VlanId> runs;
    for (const auto& [vid, vlan] : std::as_const(*agent_.bridging).vlanConfig()) runs.add(optionsOf(vlan), vid);
    for (const auto& [options, vlans] : runs.runs()) out_ << "vlan " << vlanText(vlans) << options << '\n';
  }

  /// By interface and options the VLANs, and then the interfaces that have the same of both in one line.
  void vlanPorts() {
    std::map<IntfId, std::map<std::string, Vlans>> byIntf;
    for (const auto& [vid, vlan] : std::as_const(*agent_.bridging).vlanConfig()) {
      for (const auto& [intf, port] : vlan.vlanPortConfig()) byIntf[intf][optionsOf(port)].push_back(vid);
    }
    std::map<std::pair<std::string, std::string>, Intfs> byVlans;
    for (const auto& [intf, byOptions] : byIntf) {
      for (const auto& [options, vlans] : byOptions) byVlans[{vlanText(vlans), options}].push_back(intf);
    }
    for (const auto& [vlansAndOptions, intfs] : byVlans) {
      lines("vlan " + vlansAndOptions.first + " port ", intfs, vlansAndOptions.second);
    }
  }

  void topologies() {
    const auto& all = std::as_const(*agent_.config).topoConfig();
    for (const Mox::String& name : sortedKeys(all)) {
      const Bridging::Topology::TopoConfig& topo = *all.find(name);
      const std::string line = "topology " + written(name.view());
      out_ << line << optionsOf(topo) << '\n';
      Runs<IntfId> runs;
      for (const IntfId intf : sortedKeys(topo.topoPortConfig())) runs.add(optionsOf(*topo.topoPortConfig(intf)), intf);
      lines(line + " port ", runs);
    }
  }

  void map() {
    std::map<Mox::String, Vlans> byTopo;
    for (const auto& [vid, name] : agent_.config->vidToTopoMap()) byTopo[name].push_back(vid);
    for (const auto& [name, vlans] : byTopo) out_ << "map " << vlanText(vlans) << ' ' << written(name.view()) << '\n';
  }

  void statuses() {
    const auto& all = std::as_const(*agent_.status).topoStatus();
    for (const Mox::String& name : sortedKeys(all)) {
      const std::string line = "status " + written(name.view());
      out_ << line << '\n';
      lines(line + " port ", sortedKeys(all.find(name)->topoPortStatus()), {});
    }
  }

  void instances() {
    const auto& all = std::as_const(*agent_.instance).topoStatus();
    for (const Mox::String& name : sortedKeys(all)) {
      const std::string line = "instance " + written(name.view());
      out_ << line << option("number", all.find(name)->topoNumber(), 0U) << '\n';
      lines(line + " port ", sortedKeys(all.find(name)->topoPortStatus()), {});
    }
  }

  void forced() {
    Runs<IntfId> runs;
    const auto& all = agent_.view->forceEnabledPorts();
    for (const IntfId intf : sortedKeys(all)) runs.add(*all.find(intf) ? " on" : " off", intf);
    lines("force ", runs);
  }

  const Agent& agent_;
  std::ostream& out_;
};

}  // namespace

void showConfig(const Agent& agent, std::ostream& out) { Writer(agent, out).write(); }

}  // namespace Topo
