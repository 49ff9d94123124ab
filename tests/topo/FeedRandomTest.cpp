// The feed is complete: over random scenarios, applying its lines to an earlier dump gives the later dump.

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "tests/support/Effort.h"
#include "tests/support/Random.h"
#include "tests/topo/Run.h"

namespace Topo::FeedRandomTest {

using Test::Outcome;
using Test::Random;
using Test::runScenario;
using Test::seedTrace;
using Test::sequences;
using Document = nlohmann::json;  // objects are equal whatever the order of their members

const std::array<std::string, 9> documents{"state",    "view",       "instance", "status", "config",
                                           "bridging", "interfaces", "backlog",  "mapping"};

/// Draws the lines of a scenario. It keeps account of what exists, so that every line is a good one.
class Walk {
 public:
  explicit Walk(Random& random) : random_(random) {}

  [[nodiscard]] const std::string& scenario() const { return scenario_; }

  void add(const std::string& text) { scenario_ += text + "\n"; }
  void step() {
    const std::size_t kind = random_.below(100);
    if (kind < 25) {
      vlanStep();
    } else if (kind < 50) {
      topologyStep();
    } else if (kind < 70) {
      statusStep();
    } else if (kind < 80) {
      interfaceStep();
    } else if (kind < 90) {
      add(oneOf({"dispatch", "dispatch 2", "settle", "advance 0.5"}));
    } else {
      partStep();
    }
  }

 private:
  [[nodiscard]] std::string oneOf(const std::vector<std::string>& choices) {
    return choices[random_.below(choices.size())];
  }
  [[nodiscard]] std::string intf() {
    return oneOf({"Ethernet1", "Ethernet2", "Ethernet3", "Ethernet1-4", "Ethernet1.5", "PortChannel1", "Cpu",
                  "\"veth1-2\"", "Ethernet1/1"});
  }
  [[nodiscard]] std::string topology() { return oneOf({"A", "B", "\"my topology\"", "x/y~z"}); }
  [[nodiscard]] std::string state() { return oneOf({"disabled", "blocking", "learning", "forwarding"}); }

  /// Makes the thing unless it exists; says whether it existed.
  bool isThere(const std::string& thing) {
    if (things_.insert(thing).second) {
      add(thing);
      return false;
    }
    return true;
  }
  void removed(const std::string& thing) {
    things_.erase(thing);
    add("no " + thing);
  }

  void vlanStep() {
    // VLANs that others expand into expand into none, and the other way round.
    const std::string vlan = "vlan " + oneOf({"10", "20", "30", "60", "61"});
    const bool expands = vlan[5] == '6';
    switch (random_.below(8)) {
      case 0:
        removed(vlan);
        break;
      case 1:
        if (isThere("vlan 50")) add(oneOf({"map 50 A", "no map 50", "vlan 50 port Ethernet1"}));
        break;
      case 2:
        if (isThere(vlan) && expands) add(vlan + " expand " + oneOf({"10", "20", "none"}));
        break;
      case 3:
        if (isThere(vlan)) add("no " + vlan + " port " + intf());
        break;
      default:
        if (isThere(vlan)) {
          add(vlan + " port " + intf() + " " + oneOf({"tagged", "untagged", "pvid", "no-pvid"}) + " direction " +
              oneOf({"both", "ingress", "egress", "none"}));
        }
    }
  }

  void topologyStep() {
    const std::string vids = oneOf({"10", "20", "30", "10,20", "60-61"});
    const std::string thing = "topology " + topology();
    switch (random_.below(10)) {
      case 0:
        removed(thing);
        break;
      case 1:
        if (isThere(thing)) add("no " + thing + " port " + intf());
        break;
      case 2:
        if (isThere(thing)) {
          add(thing + " publish-ports " + oneOf({"on", "off"}) + " publish-state " + state());
        }
        break;
      case 3:
        add("no map " + vids);
        break;
      case 4:
      case 5:
      case 6:
        add("map " + vids + " " + topology());
        break;
      default:
        if (isThere(thing)) add(thing + " port " + intf() + " state " + state() + " flush " + oneOf({"0", "1", "2"}));
    }
  }

  void statusStep() {
    const std::string thing = oneOf({"status ", "instance "}) + topology();
    const std::size_t kind = random_.below(8);
    if (kind == 0) {
      add("no " + thing);
    } else {
      // The publisher removes instance statuses as well.
      add(thing);
      if (kind > 1) add((kind == 2 ? "no " : "") + thing + " port " + intf());
    }
  }

  void interfaceStep() {
    const std::string name = intf();
    switch (random_.below(6)) {
      case 0:
        add("no interface " + name);
        break;
      case 1:
        add("force " + name + " " + oneOf({"on", "off"}));
        break;
      case 2:
        add("no force " + name);
        break;
      default:
        add("interface " + name + " link " + oneOf({"up", "up", "down", "unknown"}) + " model " +
            oneOf({"bridged", "routed"}));
    }
  }

  /// The parts come and go. With a plain status the library never waits: no topology may change while it does.
  void partStep() {
    const std::string part = oneOf({"library", "publisher", "view"});
    bool& isRunning = isRunning_[part];
    if (isRunning && random_.percent(25)) {
      add("stop " + part);
      isRunning = false;
    } else if (part == "library") {
      add("start library mode " + oneOf({"createStatus", "notifyStatus"}) + " watch " +
          oneOf({"instance", "instance", "status", "none"}) + oneOf({" deferred", " immediate"}) +
          oneOf({"", " ignore-internal"}) + " filter " + oneOf({"LocalInterface", "none"}));
      isRunning = true;
    } else {
      add("start " + part);
      isRunning = true;
    }
    if (random_.percent(10)) add("set threshold " + oneOf({"0", "1", "20"}));
    if (random_.percent(10)) add("set yield-after-one " + oneOf({"on", "off"}));
  }

  Random& random_;
  std::string scenario_;
  std::set<std::string> things_;
  std::map<std::string, bool> isRunning_;
};

/// A document whose arrays, which stand for sets, are objects with their elements for keys.
Document withSets(const Document& value) {
  if (!value.is_structured()) return value;
  Document result = Document::object();
  if (value.is_array()) {
    for (const Document& element : value) {
      result[element.is_string() ? element.get<std::string>() : element.dump()] = nullptr;
    }
  } else {
    for (const auto& [key, member] : value.items()) result[key] = withSets(member);
  }
  return result;
}

/// What the feed keeps up to date: of the backlog not the counters.
Document watched(const std::string& name, const Document& document) {
  if (name != "backlog" || document.empty()) return document;
  return {{"idle", document.at("idle")}, {"dirtyVlan", document.at("dirtyVlan")}};
}

/// A line of the feed as an operation of JSON Patch.
Document operationOf(const Document& line) {
  Document operation{{"op", line.at("op")}, {"path", line.at("path")}};
  if (line.at("op") != "remove") operation["value"] = line.contains("value") ? withSets(line["value"]) : Document();
  return operation;
}

/// Follows the output of a scenario: applies the lines of the feed, and compares with every later dump.
void follow(const Outcome& outcome) {
  std::map<std::string, Document> followed;
  std::size_t dumps = 0;
  for (const std::string& text : outcome.lines()) {
    const Document line = Document::parse(text);
    if (line.contains("op")) {
      Document& document = followed.at(line.at("document"));
      // It would throw for a place that is not there.
      ASSERT_NO_THROW(document.patch_inplace(Document::array({operationOf(line)}))) << text << "\nin " << document;
      continue;
    }
    const std::string& name = documents[dumps % documents.size()];
    const Document dumped = withSets(line);
    if (dumps++ < documents.size()) {
      followed[name] = dumped;
    } else {
      ASSERT_EQ(watched(name, followed[name]), watched(name, dumped)) << "dump " << dumps << ", " << name;
    }
  }
  ASSERT_GE(dumps, 2 * documents.size());
}

TEST(FeedRandom, appliedToADumpItGivesTheNextDump) {
  SCOPED_TRACE(seedTrace());
  Random random;
  const std::size_t rounds = sequences(200);
  for (std::size_t round = 0; round < rounds; ++round) {
    Walk walk(random);
    const auto forEachDocument = [&](const std::string& before, const std::string& behind) {
      for (const std::string& name : documents) walk.add(before + name + behind);
    };
    for (std::size_t n = random.below(60); n > 0; --n) walk.step();
    forEachDocument("show ", "");
    forEachDocument("watch ", " on");
    for (std::size_t dumps = 3; dumps > 0; --dumps) {
      for (std::size_t n = 10 + random.below(50); n > 0; --n) walk.step();
      forEachDocument("show ", "");
    }
    walk.add("settle");
    forEachDocument("show ", "");

    SCOPED_TRACE("round " + std::to_string(round) + " of\n" + walk.scenario());
    const Outcome outcome = runScenario(walk.scenario(), {"--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    follow(outcome);
    if (testing::Test::HasFatalFailure()) return;
  }
}

}  // namespace Topo::FeedRandomTest
