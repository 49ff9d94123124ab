#include "interface/EthIntfStatus.h"

#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"

namespace Interface::EthIntfStatusTest {

using Quill::IntfId;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event intfStatusChanged{EthIntfStatusDir::intfStatusAttr.id(), true};
constexpr Recorder::Event linkStatusChanged{EthIntfStatus::linkStatusAttr.id(), false};
constexpr Recorder::Event forwardingModelChanged{EthIntfStatus::forwardingModelAttr.id(), false};

TEST(EthIntfStatusDir, isMadeEmptyWithItsName) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  EXPECT_EQ(dir->name(), "interfaces");
  EXPECT_EQ(dir->parent(), nullptr);
  EXPECT_TRUE(dir->intfStatus().empty());
  EXPECT_NE(ethIntfStatusDirFactory("interfaces"), dir);
}

TEST(EthIntfStatusDir, intfStatusIsMakesAnInterface) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  const auto intf = dir->intfStatusIs("Ethernet1");
  EXPECT_EQ(dir->intfStatus("Ethernet1"), intf.get());
  EXPECT_EQ(dir->intfStatus().size(), 1U);
  EXPECT_EQ(intf->intfId(), IntfId("Ethernet1"));
  EXPECT_EQ(intf->parent(), dir.get());
  EXPECT_EQ(dir->intfStatus("Ethernet2"), nullptr);
}

TEST(EthIntfStatusDir, intfStatusIsNotifiesOnceWithItsKey) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  const Recorder all(dir.get(), [&](auto, const void*) { EXPECT_NE(dir->intfStatus("Ethernet1"), nullptr); });
  const KeyRecorder<IntfId> intfs(dir.get(), EthIntfStatusDir::intfStatusAttr);
  dir->intfStatusIs("Ethernet1");
  EXPECT_EQ(all.events, Events{intfStatusChanged});
  EXPECT_EQ(intfs.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(EthIntfStatusDir, intfStatusIsOfExistingInterfaceReturnsItSilently) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  const auto intf = dir->intfStatusIs("Ethernet1");
  const Recorder recorder(dir.get());
  EXPECT_EQ(dir->intfStatusIs("Ethernet1"), intf);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(EthIntfStatusDir, intfStatusDelRemovesTheInterfaceAndNotifiesOnce) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  const auto intf = dir->intfStatusIs("Ethernet1");
  dir->intfStatusIs("Ethernet2");
  const Recorder all(dir.get(), [&](auto, const void*) { EXPECT_EQ(dir->intfStatus("Ethernet1"), nullptr); });
  const KeyRecorder<IntfId> intfs(dir.get(), EthIntfStatusDir::intfStatusAttr);
  dir->intfStatusDel("Ethernet3");
  EXPECT_TRUE(all.events.empty());
  dir->intfStatusDel("Ethernet1");
  EXPECT_EQ(dir->intfStatus().size(), 1U);
  EXPECT_EQ(intf->parent(), nullptr);
  EXPECT_EQ(all.events, Events{intfStatusChanged});
  EXPECT_EQ(intfs.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(EthIntfStatusDir, intfStatusDelAllNotifiesEachInterfaceInOrderOfThePass) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  for (const char* intf : {"Ethernet1", "Ethernet2", "PortChannel1"}) dir->intfStatusIs(intf);
  std::vector<IntfId> pass;
  for (const auto& [intf, status] : dir->intfStatus()) pass.push_back(intf);
  const KeyRecorder<IntfId> intfs(dir.get(), EthIntfStatusDir::intfStatusAttr);
  dir->intfStatusDelAll();
  EXPECT_TRUE(dir->intfStatus().empty());
  EXPECT_EQ(intfs.keys, pass);
  EXPECT_EQ(pass.size(), 3U);
  dir->intfStatusDelAll();
  EXPECT_EQ(intfs.keys.size(), 3U);
}

TEST(EthIntfStatusDir, interfaceMadeAgainIsANewEntity) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  const auto old = dir->intfStatusIs("Ethernet1");
  old->linkStatusIs(LinkStatus::up);
  old->forwardingModelIs(ForwardingModel::bridged);
  dir->intfStatusDel("Ethernet1");
  const auto made = dir->intfStatusIs("Ethernet1");
  EXPECT_NE(made, old);
  EXPECT_EQ(made->linkStatus(), LinkStatus::unknown);
  EXPECT_EQ(made->forwardingModel(), ForwardingModel::unspecified);
}

TEST(EthIntfStatusDir, iterationVisitsEachInterface) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  for (const char* intf : {"Ethernet1", "Ethernet2", "bond0"}) dir->intfStatusIs(intf);
  std::map<IntfId, const EthIntfStatus*> visited;
  for (const auto& [intf, status] : dir->intfStatus()) {
    static_assert(std::is_same_v<decltype(status), const EthIntfStatus&>);
    EXPECT_TRUE(visited.emplace(intf, &status).second);
  }
  ASSERT_EQ(visited.size(), 3U);
  for (const auto& [intf, status] : visited) EXPECT_EQ(status, dir->intfStatus(intf));
}

TEST(EthIntfStatus, isMadeWithDefaults) {
  const auto intf = ethIntfStatusDirFactory("interfaces")->intfStatusIs("Ethernet1");
  EXPECT_EQ(intf->linkStatus(), LinkStatus::unknown);
  EXPECT_EQ(intf->forwardingModel(), ForwardingModel::unspecified);
}

TEST(EthIntfStatus, linkStatusIsNotifiesOnlyOnChange) {
  const auto intf = ethIntfStatusDirFactory("interfaces")->intfStatusIs("Ethernet1");
  const Recorder recorder(intf.get(), [&](auto, const void*) { EXPECT_EQ(intf->linkStatus(), LinkStatus::up); });
  intf->linkStatusIs(LinkStatus::unknown);
  EXPECT_TRUE(recorder.events.empty());
  intf->linkStatusIs(LinkStatus::up);
  intf->linkStatusIs(LinkStatus::up);
  EXPECT_EQ(recorder.events, Events{linkStatusChanged});
  EXPECT_EQ(intf->forwardingModel(), ForwardingModel::unspecified);
}

TEST(EthIntfStatus, forwardingModelIsNotifiesOnlyOnChange) {
  const auto intf = ethIntfStatusDirFactory("interfaces")->intfStatusIs("Ethernet1");
  const Recorder recorder(intf.get(),
                          [&](auto, const void*) { EXPECT_EQ(intf->forwardingModel(), ForwardingModel::bridged); });
  intf->forwardingModelIs(ForwardingModel::unspecified);
  EXPECT_TRUE(recorder.events.empty());
  intf->forwardingModelIs(ForwardingModel::bridged);
  intf->forwardingModelIs(ForwardingModel::bridged);
  EXPECT_EQ(recorder.events, Events{forwardingModelChanged});
  EXPECT_EQ(intf->linkStatus(), LinkStatus::unknown);
}

TEST(EthIntfStatus, everyChangeOfItsAttributesIsNotified) {
  const auto intf = ethIntfStatusDirFactory("interfaces")->intfStatusIs("Ethernet1");
  const Recorder recorder(intf.get());
  for (const auto status : {LinkStatus::down, LinkStatus::up, LinkStatus::unknown}) {
    intf->linkStatusIs(status);
    EXPECT_EQ(intf->linkStatus(), status);
  }
  EXPECT_EQ(recorder.events, Events(3, linkStatusChanged));
}

TEST(EthIntfStatus, outlivesItsDirectoryWhileHeld) {
  auto dir = ethIntfStatusDirFactory("interfaces");
  const auto intf = dir->intfStatusIs("Ethernet1");
  intf->linkStatusIs(LinkStatus::up);
  dir = nullptr;
  EXPECT_EQ(intf->parent(), nullptr);
  EXPECT_EQ(intf->linkStatus(), LinkStatus::up);
}

template <class T>
concept WritesDir = requires(T& dir) {
  dir.intfStatusIs("Ethernet1");
}
|| requires(T& dir) { dir.intfStatusDel("Ethernet1"); }
|| requires(T& dir) { dir.intfStatusDelAll(); };
template <class T>
concept WritesIntf = requires(T& intf) {
  intf.linkStatusIs(LinkStatus::up);
}
|| requires(T& intf) { intf.forwardingModelIs(ForwardingModel::bridged); };
static_assert(WritesDir<EthIntfStatusDir> && !WritesDir<const EthIntfStatusDir>);
static_assert(WritesIntf<EthIntfStatus> && !WritesIntf<const EthIntfStatus>);

TEST(EthIntfStatusDir, isReadThroughPointerToConst) {
  const auto writable = ethIntfStatusDirFactory("interfaces");
  writable->intfStatusIs("Ethernet1");
  const Mox::Ptr<const EthIntfStatusDir> dir = writable;
  const Recorder recorder(dir.get());
  const auto* const intf = dir->intfStatus("Ethernet1");
  static_assert(std::is_same_v<decltype(intf), const EthIntfStatus* const>);
  EXPECT_EQ(intf, writable->intfStatus("Ethernet1"));
  writable->intfStatusDel("Ethernet1");
  EXPECT_EQ(recorder.events, Events{intfStatusChanged});
}

}  // namespace Interface::EthIntfStatusTest
