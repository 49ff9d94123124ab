// Random lines of the scenario language that configure, over few names, so that they meet. Some are bad: a port of what is
// not there, or another number for what is.
//
// VLANs 60 and 70 expand into others, and nothing expands into them: a chain of expansions would abort.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/Random.h"

namespace Test {

class RandomLines {
 public:
  RandomLines(Random& random, std::vector<std::string> topologies, std::vector<std::string> intfs)
      : random_(random), topologies_(std::move(topologies)), intfs_(std::move(intfs)) {}

  [[nodiscard]] std::string next() {
    // Ports more often than what they are ports of, and removals seldom, so that there is something to look at.
    switch (random_.below(20)) {
      case 0:
      case 1:
        return "interface " + intf() + maybe(" link " + one({"up", "up", "up", "down", "unknown"})) +
               maybe(" model " + one({"bridged", "bridged", "routed", "dropped", "mirrored", "tunneled"}));
      case 2:
        return "vlan " + vlans() + one({"", "", "", " internal", " external"});
      case 3:
        return "vlan " + one({"60", "70"}) + " expand " + one({"10", "20", "none"});
      case 4:
      case 5:
      case 6:
        return "vlan " + vlans() + " port " + intf() + maybe(one({" tagged", " untagged"})) +
               maybe(one({" pvid", " no-pvid"})) +
               one({"", "", "", " direction both", " direction ingress", " direction none"});
      case 7:
        return "topology " + topology() + one({"", "", " number 1"}) + maybe(" publish-ports " + one({"on", "off"})) +
               maybe(" publish-state " + state());
      case 8:
      case 9:
      case 10:
        return "topology " + topology() + " port " + intf() + one({"", " state " + state()}) +
               maybe(" flush " + std::to_string(random_.below(3)));
      case 11:
      case 12:
        return "map " + vlans() + ' ' + topology();
      case 13:
        return "status " + topology() + maybe(" port " + intf());
      case 14:
        return "status " + topology() + " port " + intf();
      case 15:
        return "instance " + topology() + one({"", "", " number 1"});
      case 16:
        return "instance " + topology() + " port " + intf();
      case 17:
        return random_.percent(50) ? "force " + intf() + one({" on", " off"}) : "no force " + intf();
      default:
        return removal();
    }
  }

 private:
  [[nodiscard]] std::string removal() {
    switch (random_.below(9)) {
      case 0:
        return "no interface " + intf();
      case 1:
        return "no vlan " + vlans();
      case 2:
        return "no vlan " + vlans() + " port " + intf();
      case 3:
        return "no topology " + topology();
      case 4:
        return "no topology " + topology() + " port " + intf();
      case 5:
        return "no map " + vlans();
      case 6:
        return "no status " + topology() + maybe(" port " + intf());
      case 7:
        return "no instance " + topology();
      default:
        return "no instance " + topology() + " port " + intf();
    }
  }

  [[nodiscard]] std::string one(const std::vector<std::string>& texts) { return texts[random_.below(texts.size())]; }
  [[nodiscard]] std::string maybe(const std::string& text) { return random_.percent(50) ? text : ""; }
  [[nodiscard]] std::string vlans() { return one({"10", "20", "30", "10,20", "20-22", "50", "60", "70"}); }
  [[nodiscard]] std::string intf() { return one(intfs_); }
  [[nodiscard]] std::string topology() { return one(topologies_); }
  [[nodiscard]] std::string state() { return one({"disabled", "blocking", "learning", "forwarding", "forwarding"}); }

  Random& random_;
  std::vector<std::string> topologies_;
  std::vector<std::string> intfs_;
};

}  // namespace Test
