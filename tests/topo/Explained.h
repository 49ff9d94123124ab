// Asks the program to explain a port, and looks at the facts.

#pragma once

#include <algorithm>
#include <string>

#include "tests/topo/Run.h"

namespace Test {

/// A VLAN on three ports that forward it.
inline const std::string configuration =
    "interface Ethernet1-3 link up model bridged\n"
    "vlan 10\n"
    "vlan 10 port Ethernet1-3\n"
    "topology A number 1\n"
    "topology A port Ethernet1-3 state forwarding\n"
    "map 10 A\n"
    "status A\n"
    "status A port Ethernet1-3\n"
    "instance A number 1\n"
    "instance A port Ethernet1-3\n";
inline const std::string running = configuration + "start library\nsettle\n";
inline const std::string runningOnStatus = configuration + "start library watch status\nsettle\n";

class Explained {
 public:
  explicit Explained(const std::string& scenario, const std::string& what = "vlan 10 port Ethernet1") {
    const Outcome outcome = runScenario(scenario + "explain " + what + " json\n");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    json_ = outcome.json().back();
    const auto marks = std::count_if(facts().begin(), facts().end(), [](const Json& fact) { return fact["first"]; });
    EXPECT_EQ(marks, forwards() ? 0 : 1) << json_.dump(1);
  }

  [[nodiscard]] bool forwards() const { return json_["forwards"]; }
  [[nodiscard]] bool isPending() const { return json_["pending"]; }
  [[nodiscard]] std::string verdict() const { return json_["verdict"]; }
  /// What a fact is, or "" if it does not come up.
  [[nodiscard]] std::string operator[](const std::string& name) const {
    for (const Json& fact : facts()) {
      if (fact["fact"] == name) return fact["value"];
    }
    return "";
  }
  /// The first fact that hinders the port, or "".
  [[nodiscard]] std::string hindrance() const {
    for (const Json& fact : facts()) {
      if (fact["first"]) return fact["fact"];
    }
    return "";
  }

 private:
  [[nodiscard]] const Json& facts() const { return json_["facts"]; }

  Json json_;
};

/// What a fact is when it is the first to hinder the port; else what is instead.
[[nodiscard]] inline std::string hindering(const std::string& fact, const Explained& explained) {
  return explained.hindrance() == fact ? explained[fact] : "the hindrance is '" + explained.hindrance() + "'";
}

}  // namespace Test
