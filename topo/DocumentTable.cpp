#include "topo/DocumentTable.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "topo/Ranges.h"
#include "topo/Table.h"

namespace Topo {

namespace {

using Json = nlohmann::ordered_json;

[[nodiscard]] Cell yesNo(const Json& value, Colour ifYes = Colour::none, Colour ifNo = Colour::none) {
  return value.get<bool>() ? Cell("yes", ifYes) : Cell("no", ifNo);
}

[[nodiscard]] Cell stateCell(const Json& state) {
  const auto text = state.get<std::string>();
  return {text, text == "forwarding" ? Colour::green : text == "learning" ? Colour::yellow : Colour::red};
}

/// Both directions go without saying.
[[nodiscard]] std::string directionText(const Json& direction) {
  const auto text = direction.get<std::string>();
  return text == "both" ? "" : text;
}

/// The VLANs that are keys of an object, or elements of an array.
[[nodiscard]] std::string vlansText(const Json& json) {
  std::vector<Bridging::VlanId> vlans;
  for (const auto& [key, value] : json.items()) {
    vlans.push_back(json.is_array() ? Bridging::VlanId(value.get<unsigned>()) : Bridging::VlanId::sequenceToValue(key));
  }
  return vlanText(vlans);
}

[[nodiscard]] std::string intfsText(const Json& array) {
  std::vector<Quill::IntfId> intfs;
  for (const Json& intf : array) intfs.emplace_back(intf.get<std::string>());
  return intfText(intfs);
}

[[nodiscard]] std::string namesText(const Json& array) {
  std::string text;
  for (const Json& name : array) text += (text.empty() ? "" : ", ") + name.get<std::string>();
  return text;
}

/// Calls `act` for each run of members next to each other with equal values, with their keys and the value.
template <class F>
void forEachRun(const Json& object, const F& act) {
  for (auto first = object.begin(); first != object.end();) {
    std::vector<std::string> keys;
    auto end = first;
    for (; end != object.end() && end.value() == first.value(); ++end) keys.push_back(end.key());
    act(keys, first.value());
    first = end;
  }
}

[[nodiscard]] std::string vlanKeysText(const std::vector<std::string>& keys) {
  std::vector<Bridging::VlanId> vlans;
  vlans.reserve(keys.size());
  for (const std::string& key : keys) vlans.push_back(Bridging::VlanId::sequenceToValue(key));
  return vlanText(vlans);
}

[[nodiscard]] std::string intfKeysText(const std::vector<std::string>& keys) {
  return intfText(std::vector<Quill::IntfId>(keys.begin(), keys.end()));
}

class TablePrinter {
 public:
  TablePrinter(const Json& json, std::ostream& out, bool isColoured)
      : json_(json), out_(out), isColoured_(isColoured) {}

  void state() {
    initDone();
    Table table({"TOPOLOGY", "PORT", "ACTIVE", "STATE", "FLUSH", "VLANS"});
    for (const auto& [name, topo] : json_["topo"].items()) {
      if (topo["port"].empty()) table.row({name});
      forEachRun(topo["port"], [&, topology = name](const auto& intfs, const Json& port) {
        table.row({topology, intfKeysText(intfs), yesNo(port["active"], Colour::none, Colour::dim),
                   stateCell(port["state"]), port["fdbFlush"].dump(), vlansText(port["vlanPortConfig"])});
      });
    }
    print(table);
  }

  void view() {
    initDone();
    Table table({"VLAN", "PORT", "TOPOLOGY", "BLOCKED", "DIRECTION"});
    forEachRun(json_["topoVlan"], [&](const auto& vlans, const Json& vlan) {
      std::string first = vlanKeysText(vlans);
      forEachRun(vlan["topoPort"], [&](const auto& intfs, const Json& port) {
        table.row({first, intfKeysText(intfs), namesText(port["topo"]),
                   yesNo(port["blocked"], Colour::red, Colour::green),
                   port["allowedTrafficDirection"].get<std::string>()});
        first.clear();
      });
    });
    print(table);
    forEachRun(json_["forceEnabledPorts"], [&](const auto& intfs, const Json& isForced) {
      out_ << "forced " << (isForced.get<bool>() ? "on: " : "off: ") << intfKeysText(intfs) << '\n';
    });
  }

  void instance() {
    Table table({"TOPOLOGY", "NUMBER", "PORTS"});
    for (const auto& [name, topo] : json_["topoStatus"].items()) {
      table.row({name, topo["topoNumber"].dump(), intfsText(topo["topoPortStatus"])});
    }
    print(table);
  }

  void status() {
    Table table({"TOPOLOGY", "PORTS"});
    for (const auto& [name, topo] : json_["topoStatus"].items()) table.row({name, intfsText(topo["topoPortStatus"])});
    print(table);
  }

  void config() {
    Table topologies({"TOPOLOGY", "NUMBER", "VLANS", "PUBLISHES PORTS"});
    Table ports({"TOPOLOGY", "PORT", "STATE", "FLUSH"});
    std::vector<std::string> names;
    for (const auto& [name, topo] : json_["topoConfig"].items()) {
      const bool isPublishing = topo["publishPortConfig"].get<bool>();
      topologies.row({name, topo["topoNumber"].dump(), vlansOf(name),
                      isPublishing ? topo["publishedPortState"].get<std::string>() : "no"});
      forEachRun(topo["topoPortConfig"], [&, topology = name](const auto& intfs, const Json& port) {
        ports.row({topology, intfKeysText(intfs), stateCell(port["portState"]), port["fdbFlush"].dump()});
      });
    }
    for (const auto& [vid, name] : json_["vidToTopoMap"].items()) {
      const auto topology = name.get<std::string>();
      if (json_["topoConfig"].contains(topology)) continue;
      if (std::find(names.begin(), names.end(), topology) != names.end()) continue;
      names.push_back(topology);
      topologies.row({topology, "", vlansOf(topology), {"not configured", Colour::yellow}});
    }
    print(topologies);
    if (!ports.empty()) out_ << '\n';
    ports.print(out_, isColoured_);
  }

  void bridging() {
    Table table({"VLAN", "KIND", "EXPANDS INTO", "PORT", "TAGGED", "PVID", "DIRECTION"});
    forEachRun(json_["vlanConfig"], [&](const auto& vlans, const Json& vlan) {
      const Json& expanded = vlan["floodsetExpandedVlan"];
      std::vector<Cell> front{vlanKeysText(vlans), vlan["internal"].get<bool>() ? "internal" : "external",
                              expanded == 0 ? "" : expanded.dump()};
      if (vlan["vlanPortConfig"].empty()) table.row(front);
      forEachRun(vlan["vlanPortConfig"], [&](const auto& intfs, const Json& port) {
        std::vector<Cell> row = front;
        row.emplace_back(intfKeysText(intfs));
        row.emplace_back(port["untagged"].get<bool>() ? "untagged" : "tagged");
        row.push_back(yesNo(port["pvid"]));
        row.emplace_back(directionText(port["allowedTrafficDirection"]));
        table.row(std::move(row));
        front = {"", "", ""};
      });
    });
    print(table);
  }

  void interfaces() {
    Table table({"INTERFACE", "LINK", "MODEL"});
    forEachRun(json_["intfStatus"], [&](const auto& intfs, const Json& intf) {
      const auto link = intf["linkStatus"].get<std::string>();
      table.row({intfKeysText(intfs),
                 {link, link == "up" ? Colour::green : Colour::red},
                 intf["forwardingModel"].get<std::string>()});
    });
    print(table);
  }

  void mapping() {
    if (json_.empty()) {
      out_ << "The library is not running.\n";
      return;
    }
    Table table({"TOPOLOGY", "IN SERVICE", "VLANS"});
    for (const auto& [name, vlans] : json_["mappedVlan"].items()) {
      table.row({name, hasSm(name) ? "yes" : "no", vlansText(vlans)});
    }
    for (const Json& name : json_["topoConfigSm"]) {
      if (!json_["mappedVlan"].contains(name.get<std::string>())) table.row({name.get<std::string>(), "yes"});
    }
    print(table);
    if (!json_["vlanConfigSm"].empty()) out_ << "VLANs in service: " << vlansText(json_["vlanConfigSm"]) << '\n';
    for (const auto& [vid, vlans] : json_["vlanToExpVlanSetMap"].items()) {
      const Json& topologies = json_["vidToExpandedTopoMap"];
      out_ << "VLAN " << vid << " expands into " << vlansText(vlans)
           << (topologies.contains(vid) ? ", in " + topologies[vid].get<std::string>() : "") << '\n';
    }
  }

 private:
  void initDone() {
    if (!json_["initDone"].get<bool>())
      out_ << "The first synchronisation is not over: the contents are not complete.\n";
  }
  void print(const Table& table) {
    if (table.empty()) out_ << "Nothing.\n";
    table.print(out_, isColoured_);
  }
  [[nodiscard]] std::string vlansOf(const std::string& topology) const {
    std::vector<Bridging::VlanId> vlans;
    for (const auto& [vid, name] : json_["vidToTopoMap"].items()) {
      if (name == topology) vlans.push_back(Bridging::VlanId::sequenceToValue(vid));
    }
    return vlanText(vlans);
  }
  [[nodiscard]] bool hasSm(const std::string& topology) const {
    const Json& sms = json_["topoConfigSm"];
    return std::find(sms.begin(), sms.end(), topology) != sms.end();
  }

  const Json& json_;
  std::ostream& out_;
  bool isColoured_;
};

}  // namespace

void printDocument(Document document, const Json& json, std::ostream& out, bool isColoured) {
  TablePrinter printer(json, out, isColoured);
  switch (document) {
    case Document::state:
      return printer.state();
    case Document::view:
      return printer.view();
    case Document::instance:
      return printer.instance();
    case Document::status:
      return printer.status();
    case Document::config:
      return printer.config();
    case Document::bridging:
      return printer.bridging();
    case Document::interfaces:
      return printer.interfaces();
    case Document::mapping:
      return printer.mapping();
    case Document::backlog:
      return;
  }
}

}  // namespace Topo
