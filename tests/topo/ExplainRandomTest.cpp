// The verdict of `explain` over random scenarios: it is what the library publishes.

#include <algorithm>
#include <array>
#include <optional>
#include <sstream>

#include "mox/Exception.h"
#include "tests/support/Effort.h"
#include "tests/topo/RandomLines.h"
#include "tests/topo/Run.h"
#include "topo/Explain.h"
#include "topo/ScenarioError.h"
#include "topo/Session.h"

namespace Topo::ExplainRandomTest {

using Test::Json;
using Test::Random;
using Test::seedTrace;
using Test::sequences;

constexpr std::array vlans{10U, 20U, 21U, 22U, 30U, 50U, 60U, 70U};
const std::vector<std::string> intfs{"Ethernet1", "Ethernet2",   "Ethernet3", "PortChannel1",
                                     "Cpu",       "Ethernet1.5", "Vlan7"};

/// Whether a document has a port that forwards a VLAN.
[[nodiscard]] bool forwardsInView(const Json& view, const std::string& vlan, const std::string& intf) {
  const Json& vlanPorts = view["topoVlan"];
  if (!vlanPorts.contains(vlan) || !vlanPorts[vlan]["topoPort"].contains(intf)) return false;
  const Json& port = vlanPorts[vlan]["topoPort"][intf];
  return port["blocked"] == false && port["allowedTrafficDirection"] != "none";
}

[[nodiscard]] bool forwardsInState(const Json& state, const std::string& vlan, const std::string& intf, bool isForced) {
  const Json& topologies = state["topo"];
  return std::any_of(topologies.begin(), topologies.end(), [&](const Json& topo) {
    if (!topo["port"].contains(intf) || !topo["port"][intf]["vlanPortConfig"].contains(vlan)) return false;
    const Json& port = topo["port"][intf];
    if (port["vlanPortConfig"][vlan]["allowedTrafficDirection"] == "none") return false;
    return isForced || (port["active"] == true && port["state"] == "forwarding");
  });
}

/// A session that is fed with random lines.
class RandomSession {
 public:
  explicit RandomSession(std::uint64_t seed)
      : random_(seed), lines_(random_, {"A", "B", "\"my topo\""}, intfs), session_({.out = &out_, .err = &out_}) {}

  [[nodiscard]] Random& random() { return random_; }
  [[nodiscard]] const Agent& agent() { return session_.agent(); }
  [[nodiscard]] const std::string& text() const { return text_; }

  /// Bad lines change nothing.
  void execute(const std::string& line) {
    text_ += line + '\n';
    try {
      session_.execute(line);
    } catch (const ScenarioError&) {
    } catch (const Mox::Exception&) {
    }
  }
  void lines(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) execute(random_.percent(10) ? "dispatch" : lines_.next());
  }
  [[nodiscard]] std::string one(std::initializer_list<std::string> texts) {
    return *(texts.begin() + random_.below(texts.size()));
  }

 private:
  Random random_;
  Test::RandomLines lines_;
  std::ostringstream out_;
  Session session_;
  std::string text_;
};

/// Everything that can forward at all, so that little is missing for a port to do it.
void configure(RandomSession& session) {
  for (const char* const line : {"interface Ethernet1-3 link up model bridged",
                                 "vlan 10,20-22,30",
                                 "vlan 10,20-22 port Ethernet1-3",
                                 "vlan 30 port Cpu",
                                 "vlan 30 port PortChannel1",
                                 "vlan 10,20 port Ethernet1.5",
                                 "vlan 20 port Vlan7",
                                 "topology A",
                                 "topology B",
                                 "topology A port Ethernet1-3 state forwarding",
                                 "topology A port Ethernet1.5 state forwarding",
                                 "topology B port Ethernet1-2 state forwarding",
                                 "topology B port Cpu state forwarding",
                                 "topology B port PortChannel1 state learning",
                                 "map 10,20-21 A",
                                 "map 22,30 B",
                                 "vlan 60",
                                 "vlan 60 expand 10",
                                 "map 60 B",
                                 "status A",
                                 "status B",
                                 "status A port Ethernet1-3",
                                 "status B port Ethernet1-2",
                                 "status B port Cpu",
                                 "instance A",
                                 "instance B",
                                 "instance A port Ethernet1-3",
                                 "instance B port Ethernet1-2",
                                 "instance B port Cpu"}) {
    session.execute(line);
  }
}

void start(RandomSession& session) {
  const std::string watch = session.one({"status", "instance", "instance", "none"});
  session.execute("start library watch " + watch + " mode " + session.one({"createStatus", "notifyStatus"}) +
                  session.one({"", " ignore-internal"}) + session.one({" deferred", " immediate"}) +
                  session.one({"", "", " filter LocalInterface"}));
  if (session.random().percent(30)) session.execute("set yield-after-one on");
  if (watch == "instance" && session.random().percent(50)) session.execute("start publisher");
  if (session.random().percent(60)) session.execute("start view");
}

/// What explanations say of ports that forward, and of those that do not.
class Verdicts {
 public:
  void check(RandomSession& session, bool isSettled) {
    const Json view = documentOf(session.agent(), Document::view);
    const Json state = documentOf(session.agent(), Document::state);
    for (const unsigned vlan : vlans) {
      for (const std::string& intf : intfs) {
        const Explanation explanation = explain(session.agent(), Bridging::VlanId(vlan), intf);
        SCOPED_TRACE(explanation.verdict());
        const std::string vid = std::to_string(vlan);
        const bool isForced = view["forceEnabledPorts"].value(intf, false);
        const bool forwards =
            session.agent().isViewing() ? forwardsInView(view, vid, intf) : forwardsInState(state, vid, intf, isForced);
        ASSERT_EQ(explanation.isForwarding, forwards);
        ASSERT_EQ(explanation.firstHindrance().has_value(), !forwards);
        if (isSettled) checkReasons(explanation);
        ++(forwards ? forwarding : hindered);
      }
    }
  }

  std::size_t forwarding = 0;
  std::size_t hindered = 0;

 private:
  /// When nothing is pending, the facts before the view are reason enough, and nothing hinders a port that forwards.
  static void checkReasons(const Explanation& explanation) {
    ASSERT_FALSE(explanation.isPending);
    const auto first = explanation.firstHindrance();
    if (first) {
      ASSERT_STRNE(explanation.facts[*first].name, "view");
      return;
    }
    for (const Fact& fact : explanation.facts) ASSERT_FALSE(fact.isHindrance) << fact.name << ' ' << fact.value;
  }
};

TEST(ExplainRandom, theVerdictIsWhatIsPublished) {
  SCOPED_TRACE(seedTrace());
  Random seeds;
  Verdicts verdicts;
  const std::size_t count = sequences(400);
  for (std::size_t sequence = 0; sequence < count; ++sequence) {
    RandomSession session(seeds.bits());
    if (session.random().percent(90)) configure(session);
    session.lines(session.random().below(8));
    start(session);
    for (int part = 0; part < 4; ++part) {
      session.lines(session.random().below(12));
      verdicts.check(session, false);
      if (session.random().percent(50)) {
        session.execute("settle");
        verdicts.check(session, true);
      }
      ASSERT_FALSE(testing::Test::HasFatalFailure()) << "sequence " << sequence << ":\n" << session.text();
    }
  }
  // Neither answer goes without saying.
  EXPECT_GT(verdicts.forwarding, 25 * count);
  EXPECT_GT(verdicts.hindered, 25 * count);
}

}  // namespace Topo::ExplainRandomTest
