// The library, the publisher and the view together: started and ended in every order, with changes in between.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <vector>

#include "tests/topolib/InputChanges.h"
#include "tests/topolib/Publisher.h"
#include "tests/topolib/vlan/View.h"

namespace Topology::Library::Vlan::LifetimeTest {

using Test::contentsOf;
using Test::inst;
using Test::instAtOnce;
using Test::Start;
using Test::StatusLog;
using Test::Switch;
using Test::View;
using Test::ViewLog;
using Contents = std::set<std::string>;
using Interface::ForwardingModel;
using Interface::LinkStatus;

enum Part { library, publisher, view };
using Order = std::array<Part, 3>;

std::vector<Order> orders() {
  std::vector<Order> all;
  Order order{library, publisher, view};
  do all.push_back(order);
  while (std::next_permutation(order.begin(), order.end()));
  return all;
}

std::ostream& operator<<(std::ostream& out, const Order& order) {
  for (const Part part : order) out << (part == library ? "library " : part == publisher ? "publisher " : "view ");
  return out;
}

/// A switch with all three. The publisher writes a status of its own, or the one that the library watches.
class Whole : public Switch {
 public:
  explicit Whole(const Start& how = inst, bool isShared = false) : Switch(how), published(isShared ? statusInst : own) {
    intfDir->intfStatusIs("Ethernet1")->forwardingModelIs(ForwardingModel::bridged);
  }

  void begin(Part part) {
    if (part == library) startLibrary();
    if (part == publisher) publisherSm = publisherRoot->topologyStatusLibSmIs(published, state, config, intfDir);
    if (part == view) viewSm = vlanLibSmFactory(state, vlanView);
  }
  void end(Part part) {
    if (part == library) {
      libSm = nullptr;
      root = rootFactory("root");
    }
    if (part == publisher) {
      publisherSm = nullptr;
      publisherRoot = rootFactory("publisher");
    }
    if (part == view) viewSm = nullptr;
  }
  /// Changes everything that one of the three may watch.
  void change() {
    for (const auto link : {LinkStatus::down, LinkStatus::up}) intfDir->intfStatusIs("Ethernet1")->linkStatusIs(link);
    for (const bool isForced : {true, false}) vlanView->forceEnabledPortsIs("Ethernet1", isForced);
    memberIs(20, "Ethernet1");
    vlanIs(20, "A");
    drain();
    topoPortIs("A", "Ethernet1", PortState::blocking);
    memberIs(10, "Ethernet2");
    brConfig->vlanConfig(10)->vlanPortConfigDel("Ethernet1");
    drain();
    state->initDoneIs(false);
    state->initDoneIs(true);
    intfDir->intfStatusDel("Ethernet1");
    config->vidToTopoMapDelAll();
    drain();
    config->topoConfigDel("A");
    drain();
    state->topoDelAll();
  }

  Mox::Ptr<Bridging::Topology::Inst::Status> own = Bridging::Topology::Inst::statusFactory("published");
  Mox::Ptr<Bridging::Topology::Inst::Status> published;
  Mox::Ptr<LibVlanState> vlanView = libVlanStateFactory("view");
  Mox::Ptr<Root> publisherRoot = rootFactory("publisher");
  Mox::Ptr<TopologyStatusLibSm> publisherSm;
  Mox::Ptr<VlanLibSm> viewSm;
};

const Contents inView{"10", "10/Ethernet1 open both", "10/Ethernet1 in A"};
const Contents inStatus{"A 1", "A/Ethernet1 0"};

TEST(Lifetime, startedInEveryOrderComesToTheSame) {
  for (const Start& how : {inst, instAtOnce, Start{}, Start{.deferProcessing = false}}) {
    for (const Order& order : orders()) {
      SCOPED_TRACE(::Test::textOf(order, how.deferProcessing));
      Whole agent(how);
      for (const Part part : order) {
        agent.begin(part);
        EXPECT_EQ(agent.vlanView->initDone(), agent.viewSm && agent.state->initDone());
      }
      agent.drain();
      EXPECT_EQ(contentsOf(*agent.vlanView), inView);
      EXPECT_EQ(contentsOf(*agent.published), inStatus);
      EXPECT_TRUE(agent.vlanView->initDone());
    }
  }
}

TEST(Lifetime, endsInEveryOrder) {
  for (const Start& how : {inst, instAtOnce}) {
    for (const Order& start : orders()) {
      for (const Order& order : orders()) {
        SCOPED_TRACE(::Test::textOf(start, "then ", order));
        Whole agent(how);
        for (const Part part : start) agent.begin(part);
        agent.drain();
        for (const Part part : order) {
          agent.end(part);
          agent.memberIs(30, "Ethernet1");
          agent.vlanIs(30, "A");
          agent.drain();
          agent.intfDir->intfStatusIs("Ethernet1")->linkStatusIs(LinkStatus::down);
          agent.intfDir->intfStatusIs("Ethernet1")->linkStatusIs(LinkStatus::up);
        }
        const Contents state = contentsOf(*agent.state);
        const Contents shown = contentsOf(*agent.vlanView);
        const Contents status = contentsOf(*agent.published);
        agent.config->topoConfigDel("A");
        agent.intfDir->intfStatusDelAll();
        agent.config->vidToTopoMapDelAll();
        agent.drain();
        EXPECT_EQ(contentsOf(*agent.state), state) << "what was published stays";
        EXPECT_EQ(contentsOf(*agent.vlanView), shown);
        EXPECT_EQ(contentsOf(*agent.published), status);
      }
    }
  }
}

TEST(Lifetime, whatRemainsGoesOnAfterEachEnd) {
  for (const Part ended : {library, publisher, view}) {
    for (const Order& start : orders()) {
      for (const bool isShared : {false, true}) {
        SCOPED_TRACE(::Test::textOf(start, "then without ", Order{ended, ended, ended}, isShared));
        Whole agent(isShared ? instAtOnce : Start{.deferProcessing = false}, isShared);
        for (const Part part : start) agent.begin(part);
        agent.drain();
        agent.end(ended);
        agent.change();
        if (ended == library) continue;
        if (ended != view) {
          EXPECT_EQ(contentsOf(*agent.vlanView), Contents());
        }
        if (ended != publisher) {
          EXPECT_EQ(contentsOf(*agent.published), Contents());
        }
      }
    }
  }
}

TEST(Lifetime, keepsInertMappingsInTheView) {
  View agent;
  agent.portUp("A", "Ethernet1", {10, 20});
  agent.start();
  agent.sm = nullptr;
  const Mox::Ptr<VlanPortMapping> mapping = *std::as_const(*agent.view).topoVlan(10)->topoPort("Ethernet1")->topo("A");
  EXPECT_TRUE(mapping->isRetired());
  EXPECT_EQ(mapping->references(), 3U) << "this one and the view's two";
  EXPECT_TRUE(agent.port("A").notifieeList()->empty());
  const Contents before = agent.contents();
  agent.port("A").activeIs(false);
  agent.port("A").stateIs(View::PortState::blocking);
  agent.port("A").vlanPortConfigDel(10);
  mapping->handleInitialized();
  mapping->handleTopoPortActive();
  mapping->handleTopoVlanPort();
  mapping->handleTopoVlanPort(10);
  mapping->handleTopoPortStates();
  mapping->handleTopoPortState(20);
  mapping->doTopoVlanPortIs(30);
  mapping->doTopoVlanPortDel(10);
  mapping->handleCleanup();
  mapping->portDel();
  EXPECT_EQ(agent.contents(), before);
  agent.state = nullptr;
  agent.view->topoVlanDelAll();
  EXPECT_EQ(mapping->references(), 1U);
}

TEST(Lifetime, aNewViewOverAnOldOneTakesItsEntriesOver) {
  View agent;
  agent.portUp("A", "Ethernet1", {10});
  agent.start();
  agent.sm = nullptr;
  const ViewLog log(agent);
  agent.start();
  EXPECT_EQ(log.lines, std::vector<std::string>{"10/Ethernet1 +A"}) << "the mapping is another one";
  EXPECT_EQ(*std::as_const(*agent.view).topoVlan(10)->topoPort("Ethernet1")->topo("A"), agent.mapping("A"));
  agent.port("A").activeIs(false);
  EXPECT_EQ(agent.contents(), Contents());
}

TEST(Lifetime, theViewOutlivesTheState) {
  View agent;
  agent.portUp("A", "Ethernet1", {10});
  agent.start();
  agent.state = nullptr;
  agent.view->forceEnabledPortsIs("Ethernet1", true);
  EXPECT_EQ(agent.contents(), inView) << "the state machine holds the state";
  agent.sm = nullptr;
  agent.view->forceEnabledPortsIs("Ethernet1", false);
  EXPECT_EQ(agent.contents(), inView);
}

TEST(Lifetime, theStateMachineOutlivesTheClientsView) {
  View agent;
  agent.portUp("A", "Ethernet1", {10});
  agent.start();
  const Mox::Ptr<TopoVlan> held = agent.view->topoVlan(10);
  agent.view = nullptr;
  agent.port("A").stateIs(View::PortState::blocking);
  EXPECT_TRUE(held->topoPort("Ethernet1")->blocked()) << "the state machine holds the view";
  agent.sm = nullptr;
  agent.port("A").activeIs(false);
  EXPECT_EQ(held->topoPort().size(), 1U);
}

TEST(Lifetime, ofAPublisherThatIsReplacedInsideItsOwnNotification) {
  for (const char* const at : {"+A", "A +Ethernet1", "-stale"}) {
    SCOPED_TRACE(at);
    ::Test::Publisher agent;
    agent.portUp("A");
    agent.portIs("A", "Ethernet2");
    (void)agent.status->topoStatusIs("stale", 1);
    (void)agent.status->topoStatusIs("stale2", 1);
    agent.start(false);
    const auto first = agent.sm;
    const auto other = Bridging::Topology::Inst::statusFactory("other");
    StatusLog log(agent);
    log.onceAt(at,
               [&] { agent.sm = agent.root->topologyStatusLibSmIs(other, agent.state, agent.config, agent.intfDir); });
    agent.state->initDoneIs(true);
    EXPECT_TRUE(first->isRetired());
    EXPECT_EQ(log.lines.back(), at) << "the old one writes nothing more";
    EXPECT_EQ(contentsOf(*other), inStatus);
    log.clear();
    agent.linkIs("Ethernet1", LinkStatus::down);
    agent.linkIs("Ethernet2");
    EXPECT_EQ(contentsOf(*other), (Contents{"A 1", "A/Ethernet2 0"}));
    EXPECT_EQ(log.lines, std::vector<std::string>());
  }
}

// The publisher and the library on one instance status, and on the port configurations.

TEST(Feedback, thePublisherMakesThePortsActiveThatTheLibraryWatches) {
  for (const Start& how : {inst, instAtOnce}) {
    Whole agent(how, true);
    agent.statusInst->topoStatusDelAll();
    for (const Part part : {library, publisher, view}) agent.begin(part);
    agent.drain();
    EXPECT_EQ(contentsOf(*agent.published), inStatus);
    EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
    EXPECT_EQ(contentsOf(*agent.vlanView), inView);
    agent.linkIs("Ethernet1", LinkStatus::down);
    agent.drain();
    EXPECT_FALSE(agent.port("A", "Ethernet1")->active());
    EXPECT_EQ(contentsOf(*agent.vlanView), Contents());
    agent.linkIs("Ethernet1");
    agent.drain();
    EXPECT_EQ(contentsOf(*agent.vlanView), inView);
  }
}

TEST(Feedback, thePublisherConfiguresThePortsThatItReports) {
  for (const Start& how : {inst, instAtOnce}) {
    Whole agent(how, true);
    agent.statusInst->topoStatusDelAll();
    agent.config->topoConfig("A")->topoPortConfigDelAll();
    agent.config->topoConfig("A")->publishPortConfigIs(true);
    agent.config->topoConfig("A")->publishedPortStateIs(Bridging::Topology::PortState::learning);
    for (const Part part : {publisher, view, library}) agent.begin(part);
    agent.drain();
    ASSERT_NE(agent.port("A", "Ethernet1"), nullptr);
    EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
    EXPECT_EQ(contentsOf(*agent.vlanView), (Contents{"10", "10/Ethernet1 blocked both", "10/Ethernet1 in A"}));
    agent.brConfig->vlanConfig(10)->vlanPortConfigDel("Ethernet1");
    agent.drain();
    EXPECT_EQ(agent.config->topoConfig("A")->topoPortConfig("Ethernet1"), nullptr);
    EXPECT_EQ(contentsOf(*agent.published), Contents{"A 1"});
    EXPECT_EQ(contentsOf(*agent.vlanView), Contents());
  }
}

TEST(Feedback, aTopologyThatIsConfiguredAnewIsPublishedAnew) {
  for (const Start& how : {inst, instAtOnce}) {
    for (const bool isShared : {false, true}) {
      Whole agent(how, isShared);
      for (const Part part : {library, publisher, view}) agent.begin(part);
      agent.drain();
      agent.config->topoConfigDel("A");
      agent.config->topoConfigIs("A", 2)->topoPortConfigIs("Ethernet1", 0, Bridging::Topology::PortState::forwarding);
      agent.drain();
      EXPECT_EQ(contentsOf(*agent.published), (Contents{"A 2", "A/Ethernet1 0"}));
      EXPECT_EQ(contentsOf(*agent.vlanView), inView);
      agent.config->topoConfigDel("A");
      agent.drain();
      EXPECT_EQ(contentsOf(*agent.published), Contents());
      EXPECT_EQ(contentsOf(*agent.vlanView), Contents());
    }
  }
}

TEST(Feedback, aConfigurationThatGoesInTheInitialPassAbortsNobody) {
  for (const Order& order : orders()) {
    SCOPED_TRACE(::Test::textOf(order));
    Whole agent;
    for (const Part part : order) agent.begin(part);
    agent.config->topoConfigDel("A");
    agent.drain();
    EXPECT_EQ(contentsOf(*agent.published), Contents());
    EXPECT_EQ(contentsOf(*agent.vlanView), Contents());
    EXPECT_TRUE(agent.vlanView->initDone());
  }
}

}  // namespace Topology::Library::Vlan::LifetimeTest
