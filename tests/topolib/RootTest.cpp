#include "topolib/Root.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Recorder.h"
#include "tests/support/TraceLines.h"
#include "tests/topolib/Switch.h"
#include "topolib/LocalIntfFilter.h"

namespace Topology::Library::RootTest {

using Test::Recorder;
using Test::Running;
using Test::Start;

/// The arguments of a start, which a test changes one by one.
struct Arguments {
  Mox::String name = "libSm";
  Mox::Ptr<const Bridging::Topology::Config> config = Bridging::Topology::configFactory("config");
  Mox::Ptr<const Bridging::Topology::Status> status;
  Mox::Ptr<Bridging::Topology::Inst::Status> statusInst = Bridging::Topology::Inst::statusFactory("statusInst");
  Mox::Ptr<const Bridging::Config> brConfig = Bridging::configFactory("brConfig");
  Mox::Ptr<LibState> libState = libStateFactory("state");
  LibSmMode mode = LibSmMode::createStatus;
  bool ignoreInternalVlan = true;
  bool deferProcessing = true;

  [[nodiscard]] Mox::Ptr<LibSm> start(Root& root, const Mox::String& filterType = {}) const {
    return root.doStartLibSm(name, config, status, statusInst, brConfig, libState, mode, ignoreInternalVlan,
                             deferProcessing, filterType);
  }
  [[nodiscard]] Mox::Ptr<LibSm> startWithFilter(Root& root, std::uint64_t validIntfPtr) const {
    return root.libSmIs(name, config, status, statusInst, brConfig, libState, mode, ignoreInternalVlan, deferProcessing,
                        validIntfPtr);
  }
};

class RootStart : public testing::Test {
 protected:
  ::Test::VirtualTimeInUse time;
  Arguments arguments;
  Mox::Ptr<Root> root = rootFactory("root");
};

FilterIntf& filterAt(std::uint64_t address) { return *reinterpret_cast<FilterIntf*>(address); }

TEST(Root, isMadeWithItsNameAndWithoutStateMachine) {
  const auto root = rootFactory("root");
  EXPECT_EQ(root->name(), "root");
  EXPECT_EQ(root->libSm(), nullptr);
  EXPECT_EQ(root->references(), 1U);
  EXPECT_NE(rootFactory("root"), root);
}

TEST_F(RootStart, handsItsArgumentsOn) {
  arguments.mode = LibSmMode::notifyStatus;
  arguments.deferProcessing = false;
  const auto libSm = arguments.start(*root);
  EXPECT_EQ(libSm->name(), "libSm");
  EXPECT_EQ(libSm->config(), arguments.config.get());
  EXPECT_EQ(libSm->status(), nullptr);
  EXPECT_EQ(libSm->statusInst(), arguments.statusInst.get());
  EXPECT_EQ(libSm->brConfig(), arguments.brConfig.get());
  EXPECT_EQ(libSm->libState(), arguments.libState);
  EXPECT_EQ(libSm->libSmMode(), LibSmMode::notifyStatus);
  EXPECT_TRUE(libSm->ignoreInternalVlan());
  EXPECT_FALSE(libSm->deferProcessing());
  EXPECT_EQ(libSm->validIntfPtr(), 0U);
  EXPECT_EQ(libSm->ethIntfStatusDir(), nullptr);
}

TEST_F(RootStart, keepsTheStateMachineAndSwitchesItsNotificationsOn) {
  const Recorder recorder(root.get(), [this](auto, const void*) { EXPECT_NE(root->libSm(), nullptr); });
  const auto libSm = arguments.start(*root);
  EXPECT_EQ(root->libSm(), libSm);
  EXPECT_EQ(libSm->references(), 2U);
  EXPECT_TRUE(libSm->hasNotificationActive());
  EXPECT_EQ(recorder.events, (std::vector<Recorder::Event>{{Root::libSmAttr.id(), false}}));
}

TEST_F(RootStart, withTheSameArgumentsGivesTheSameOne) {
  const auto libSm = arguments.start(*root, "LocalInterface");
  const Recorder recorder(root.get());
  const Recorder changes(libSm.get());
  const ::Test::TraceLines trace("TopoLib");
  EXPECT_EQ(arguments.start(*root, "LocalInterface"), libSm);
  arguments.name = std::string("lib") + "Sm";
  EXPECT_EQ(arguments.start(*root, "LocalInterface"), libSm) << "names are compared by their text";
  EXPECT_EQ(root->libSm(), libSm);
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_TRUE(changes.events.empty());
  EXPECT_TRUE(trace.lines().empty());
  EXPECT_FALSE(libSm->isRetired());
}

TEST_F(RootStart, withNullArgumentsTwiceGivesTheSameOne) {
  arguments.config = nullptr;
  arguments.statusInst = nullptr;
  arguments.brConfig = nullptr;
  const auto libSm = arguments.start(*root);
  EXPECT_EQ(arguments.start(*root), libSm);
}

TEST_F(RootStart, withAnotherFilterTypeKeepsTheStateMachineAndStoresTheFilter) {
  const auto libSm = arguments.start(*root, "LocalInterface");
  EXPECT_NE(libSm->validIntfPtr(), 0U);
  const Recorder recorder(root.get());
  const Recorder changes(libSm.get());
  EXPECT_EQ(arguments.start(*root, "other"), libSm);
  EXPECT_EQ(libSm->validIntfPtr(), 0U);
  EXPECT_EQ(arguments.start(*root, "LocalInterface"), libSm);
  EXPECT_NE(libSm->validIntfPtr(), 0U);
  EXPECT_TRUE(recorder.events.empty());
  const Recorder::Event stored{LibSm::validIntfPtrAttr.id(), false};
  EXPECT_EQ(changes.events, (std::vector{stored, stored}));
}

TEST_F(RootStart, withAnyOtherArgumentChangedMakesANewOne) {
  using Change = std::function<void(Arguments&)>;
  const std::vector<std::pair<std::string, Change>> changes{
      {"name", [](Arguments& a) { a.name = "other"; }},
      {"config", [](Arguments& a) { a.config = Bridging::Topology::configFactory("config"); }},
      {"no config", [](Arguments& a) { a.config = nullptr; }},
      {"status", [](Arguments& a) { a.status = Bridging::Topology::statusFactory("status"); }},
      {"statusInst", [](Arguments& a) { a.statusInst = Bridging::Topology::Inst::statusFactory("statusInst"); }},
      {"no statusInst", [](Arguments& a) { a.statusInst = nullptr; }},
      {"brConfig", [](Arguments& a) { a.brConfig = Bridging::configFactory("brConfig"); }},
      {"no brConfig", [](Arguments& a) { a.brConfig = nullptr; }},
      {"libState", [](Arguments& a) { a.libState = libStateFactory("state"); }},
      {"mode", [](Arguments& a) { a.mode = LibSmMode::notifyStatus; }},
      {"ignoreInternalVlan", [](Arguments& a) { a.ignoreInternalVlan = false; }},
      {"deferProcessing", [](Arguments& a) { a.deferProcessing = false; }}};
  for (const auto& [what, change] : changes) {
    SCOPED_TRACE(what);
    const auto old = arguments.start(*root);
    Arguments changed = arguments;
    change(changed);
    const auto made = changed.start(*root);
    EXPECT_NE(made, old);
    EXPECT_EQ(root->libSm(), made);
    EXPECT_TRUE(old->isRetired());
    EXPECT_FALSE(made->isRetired());
    EXPECT_EQ(changed.start(*root), made);
    EXPECT_EQ(old->references(), 1U) << "only this test holds it";
  }
}

TEST_F(RootStart, storesTheFilterInTheOldOneAlsoWhenItIsReplaced) {
  const auto old = arguments.start(*root);
  arguments.deferProcessing = false;
  const auto made = arguments.start(*root, "LocalInterface");
  EXPECT_NE(made, old);
  EXPECT_EQ(old->validIntfPtr(), made->validIntfPtr());
  EXPECT_NE(old->validIntfPtr(), 0U);
}

TEST_F(RootStart, selectsTheFilterByExactText) {
  for (const char* const text : {"", "localinterface", "LocalInterface ", "LocalIntf", "None"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(arguments.start(*root, text)->validIntfPtr(), 0U);
  }
  FilterIntf& filter = filterAt(arguments.start(*root, "LocalInterface")->validIntfPtr());
  EXPECT_NE(dynamic_cast<LocalIntfFilter*>(&filter), nullptr);
  EXPECT_TRUE(filter.isValidIntf("Ethernet1"));
  EXPECT_FALSE(filter.isValidIntf("Vlan1"));
}

TEST_F(RootStart, makesOneFilterForAllStarts) {
  const auto libSm = arguments.start(*root, "LocalInterface");
  const std::uint64_t address = libSm->validIntfPtr();
  EXPECT_EQ(arguments.start(*root, "LocalInterface")->validIntfPtr(), address);
  EXPECT_EQ(arguments.start(*rootFactory("another"), "LocalInterface")->validIntfPtr(), address);
  root = nullptr;
  EXPECT_TRUE(filterAt(address).isValidIntf("Ethernet1")) << "it outlives who asked for it";
}

TEST_F(RootStart, takesTheAddressOfAFilterOfOnesOwn) {
  LocalIntfFilter filter;
  const auto address = reinterpret_cast<std::uintptr_t>(static_cast<FilterIntf*>(&filter));
  const auto libSm = arguments.startWithFilter(*root, address);
  EXPECT_EQ(libSm->validIntfPtr(), address);
  EXPECT_EQ(arguments.startWithFilter(*root, 0), libSm);
  EXPECT_EQ(libSm->validIntfPtr(), 0U);
}

TEST_F(RootStart, releasesTheReplacedOne) {
  const auto references = arguments.config->references();
  (void)arguments.start(*root);
  const auto used = arguments.config->references();
  EXPECT_GT(used, references);
  EXPECT_EQ(arguments.config->notifieeList()->size(), 1U);
  arguments.name = "other";
  (void)arguments.start(*root);
  EXPECT_EQ(arguments.config->references(), used) << "there is one state machine as before";
  EXPECT_EQ(arguments.config->notifieeList()->size(), 1U);
  root = nullptr;
  EXPECT_EQ(arguments.config->references(), references);
  EXPECT_TRUE(arguments.config->notifieeList()->empty());
}

TEST_F(RootStart, showsTheNewOneToThoseWhoAreToldOfTheChange) {
  const auto old = arguments.start(*root);
  Mox::Ptr<LibSm> seen;
  const Recorder recorder(root.get(), [&](auto, const void*) {
    seen = root->libSm();
    EXPECT_TRUE(seen->initialized());
  });
  arguments.mode = LibSmMode::notifyStatus;
  EXPECT_EQ(arguments.start(*root), seen);
  EXPECT_NE(seen, old);
  EXPECT_EQ(recorder.events.size(), 1U);
}

TEST_F(RootStart, survivesThatItIsReleasedWhileItsChangeIsTold) {
  const Recorder recorder(root.get(), [this](auto, const void*) { root = nullptr; });
  const auto libSm = arguments.start(*root);
  ASSERT_NE(libSm, nullptr);
  EXPECT_TRUE(libSm->initialized());
}

TEST_F(RootStart, startThatFailsDoesNotLeaveARetiredOneBehind) {
  const auto old = arguments.start(*root);
  Arguments failing = arguments;
  failing.libState = libStateFactory("failing");
  Recorder reader(failing.libState.get(), [](auto, const void*) { throw std::runtime_error("not now"); });
  EXPECT_THROW((void)failing.start(*root), std::runtime_error);
  const auto again = arguments.start(*root);
  EXPECT_FALSE(again->isRetired());
  EXPECT_EQ(root->libSm(), again);
  reader.actionIs({});
  const auto other = failing.start(*root);
  EXPECT_FALSE(other->isRetired());
  EXPECT_EQ(root->libSm(), other);
}

TEST_F(RootStart, leavesTheStateAsItStandsWhenItEnds) {
  Running agent{Start{}};
  agent.libSm = nullptr;
  agent.root = nullptr;
  ASSERT_TRUE(agent.carries("A", "Ethernet1", 10));
  EXPECT_TRUE(agent.port("A", "Ethernet1")->active());
  EXPECT_TRUE(agent.state->initDone());
  EXPECT_EQ(agent.state->references(), 1U);
  EXPECT_TRUE(agent.config->notifieeList()->empty());
  EXPECT_TRUE(agent.status->notifieeList()->empty());
  EXPECT_TRUE(agent.brConfig->notifieeList()->empty());
  EXPECT_TRUE(agent.intfDir->notifieeList()->empty());
}

}  // namespace Topology::Library::RootTest
