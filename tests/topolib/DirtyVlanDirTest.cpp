#include "topolib/DirtyVlanDir.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <type_traits>
#include <vector>

#include "tests/support/Recorder.h"

namespace Topology::Library::DirtyVlanDirTest {

using Bridging::VlanId;
using Quill::IntfId;
using Test::KeyRecorder;
using Test::Recorder;

using Events = std::vector<Recorder::Event>;
constexpr Recorder::Event dirtyVlanChanged{DirtyVlanDir::dirtyVlanAttr.id(), true};
constexpr Recorder::Event dirtyChanged{DirtyVlan::dirtyAttr.id(), false};
constexpr Recorder::Event intfChanged{DirtyVlan::intfAttr.id(), true};

TEST(DirtyVlanDir, isMadeEmptyWithItsName) {
  const auto dir = dirtyVlanDirFactory("dirtyVlanDir");
  EXPECT_EQ(dir->name(), "dirtyVlanDir");
  EXPECT_EQ(dir->parent(), nullptr);
  EXPECT_TRUE(dir->dirtyVlan().empty());
}

TEST(DirtyVlanDir, isMadeByItsTypeAsWell) {
  const auto dir = DirtyVlanDir::DirtyVlanDirIs("dirtyVlanDir");
  EXPECT_EQ(dir->name(), "dirtyVlanDir");
  EXPECT_EQ(dir->references(), 1U);
  EXPECT_NE(DirtyVlanDir::DirtyVlanDirIs("dirtyVlanDir"), dir);
}

TEST(DirtyVlanDir, dirtyVlanIsMakesAVlan) {
  const auto dir = dirtyVlanDirFactory("dir");
  const auto vlan = dir->dirtyVlanIs(10);
  EXPECT_EQ(dir->dirtyVlan(10), vlan.get());
  EXPECT_EQ(dir->dirtyVlan().size(), 1U);
  EXPECT_EQ(vlan->vlanId(), VlanId(10));
  EXPECT_EQ(vlan->parent(), dir.get());
  EXPECT_EQ(dir->dirtyVlan(11), nullptr);
}

TEST(DirtyVlanDir, dirtyVlanIsNotifiesOnceWithItsKey) {
  const auto dir = dirtyVlanDirFactory("dir");
  const Recorder all(dir.get(), [&](auto, const void*) { EXPECT_NE(dir->dirtyVlan(10), nullptr); });
  const KeyRecorder<VlanId> vlans(dir.get(), DirtyVlanDir::dirtyVlanAttr);
  dir->dirtyVlanIs(10);
  EXPECT_EQ(all.events, Events{dirtyVlanChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(DirtyVlanDir, dirtyVlanIsOfPresentVlanReturnsSameObjectSilently) {
  const auto dir = dirtyVlanDirFactory("dir");
  const auto vlan = dir->dirtyVlanIs(10);
  const Recorder recorder(dir.get());
  EXPECT_EQ(dir->dirtyVlanIs(10), vlan);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(DirtyVlanDir, dirtyVlanIsOfNoVlanRaisesAndChangesNothing) {
  const auto dir = dirtyVlanDirFactory("dir");
  const Recorder recorder(dir.get());
  EXPECT_THROW(dir->dirtyVlanIs(0), Mox::RangeException);
  EXPECT_THROW(dir->dirtyVlanIs(4095), Mox::RangeException);
  EXPECT_TRUE(dir->dirtyVlan().empty());
  EXPECT_TRUE(recorder.events.empty());
}

TEST(DirtyVlanDir, dirtyVlanDelRemovesTheVlanAndNotifiesOnce) {
  const auto dir = dirtyVlanDirFactory("dir");
  const auto vlan = dir->dirtyVlanIs(10);
  dir->dirtyVlanIs(20);
  const Recorder all(dir.get(), [&](auto, const void*) { EXPECT_EQ(dir->dirtyVlan(10), nullptr); });
  const KeyRecorder<VlanId> vlans(dir.get(), DirtyVlanDir::dirtyVlanAttr);
  dir->dirtyVlanDel(11);
  EXPECT_TRUE(all.events.empty());
  dir->dirtyVlanDel(10);
  EXPECT_EQ(dir->dirtyVlan().size(), 1U);
  EXPECT_EQ(vlan->parent(), nullptr);
  EXPECT_EQ(all.events, Events{dirtyVlanChanged});
  EXPECT_EQ(vlans.keys, std::vector<VlanId>{10});
}

TEST(DirtyVlanDir, dirtyVlanDelAllNotifiesEachVlan) {
  const auto dir = dirtyVlanDirFactory("dir");
  for (const int vid : {30, 10, 20}) dir->dirtyVlanIs(vid);
  const KeyRecorder<VlanId> vlans(dir.get(), DirtyVlanDir::dirtyVlanAttr);
  dir->dirtyVlanDelAll();
  EXPECT_TRUE(dir->dirtyVlan().empty());
  EXPECT_EQ(vlans.keys, (std::vector<VlanId>{10, 20, 30}));
  dir->dirtyVlanDelAll();
  EXPECT_EQ(vlans.keys.size(), 3U);
}

TEST(DirtyVlanDir, vlanMadeAgainIsANewEntity) {
  const auto dir = dirtyVlanDirFactory("dir");
  const auto old = dir->dirtyVlanIs(10);
  old->dirtyIs(true);
  old->intfIs("Ethernet1", true);
  dir->dirtyVlanDel(10);
  const auto made = dir->dirtyVlanIs(10);
  EXPECT_NE(made, old);
  EXPECT_FALSE(made->dirty());
  EXPECT_TRUE(made->intf().empty());
}

TEST(DirtyVlanDir, iterationVisitsEachVlan) {
  const auto dir = dirtyVlanDirFactory("dir");
  for (const int vid : {4094, 1, 100}) dir->dirtyVlanIs(vid);
  std::map<VlanId, const DirtyVlan*> visited;
  for (const auto& [vid, vlan] : dir->dirtyVlan()) {
    static_assert(std::is_same_v<decltype(vlan), const DirtyVlan&>);
    EXPECT_TRUE(visited.emplace(vid, &vlan).second);
  }
  ASSERT_EQ(visited.size(), 3U);
  for (const auto& [vid, vlan] : visited) EXPECT_EQ(vlan, dir->dirtyVlan(vid));
}

TEST(DirtyVlanDir, leavesHeldMembersBehindWhenItEnds) {
  auto dir = dirtyVlanDirFactory("dir");
  const auto vlan = dir->dirtyVlanIs(10);
  dir = nullptr;
  EXPECT_EQ(vlan->references(), 1U);
  EXPECT_EQ(vlan->parent(), nullptr);
  EXPECT_EQ(vlan->vlanId(), VlanId(10));
}

/// The VLANs that a pass visits from this one on.
std::vector<VlanId> passFrom(const DirtyVlanDir& dir, VlanId vid) {
  std::vector<VlanId> pass;
  for (auto i = dir.dirtyVlan().startAtHash(vid); i; i.advance()) {
    EXPECT_EQ(i.value().vlanId(), i.key());
    pass.push_back(i.key());
  }
  return pass;
}

Mox::Ptr<DirtyVlanDir> directoryOf(std::size_t vlans) {
  auto dir = dirtyVlanDirFactory("dir");
  for (std::size_t i = 0; i < vlans; ++i) dir->dirtyVlanIs(1 + i * 7919 % 4094);
  return dir;
}

std::vector<VlanId> wholePass(const DirtyVlanDir& dir) {
  std::vector<VlanId> pass;
  for (const auto& [vid, vlan] : dir.dirtyVlan()) pass.push_back(vid);
  return pass;
}

TEST(DirtyVlanDir, resumesAtAPresentVlanAndGoesOnInTheSameOrder) {
  for (const std::size_t size : {1U, 2U, 20U, 500U}) {
    const auto dir = directoryOf(size);
    const std::vector<VlanId> whole = wholePass(*dir);
    ASSERT_EQ(whole.size(), size);
    for (std::size_t i = 0; i < whole.size(); ++i) {
      const auto from = whole.begin() + static_cast<std::ptrdiff_t>(i);
      EXPECT_EQ(passFrom(*dir, whole[i]), std::vector<VlanId>(from, whole.end())) << size << ' ' << i;
    }
  }
}

TEST(DirtyVlanDir, resumesBehindAVlanThatIsGone) {
  for (const std::size_t size : {1U, 2U, 20U, 500U}) {
    const auto dir = directoryOf(size);
    std::vector<VlanId> left = wholePass(*dir);
    while (!left.empty()) {
      const VlanId bookmark = left.front();
      dir->dirtyVlanDel(bookmark);
      left.erase(left.begin());
      ASSERT_EQ(passFrom(*dir, bookmark), left) << size << ' ' << bookmark;
    }
  }
}

TEST(DirtyVlanDir, resumedPassMissesNobodyWhenVlansComeAndGo) {
  const auto dir = directoryOf(300);
  const std::vector<VlanId> whole = wholePass(*dir);
  // Between two slices of one VLAN each, others come and go, on both sides of the bookmark.
  const std::set<VlanId> leavers(whole.begin() + 100, whole.begin() + 200);
  std::multiset<VlanId> visited;
  std::size_t step = 0;
  for (auto i = dir->dirtyVlan().begin(); i;) {
    const VlanId bookmark = i.key();
    visited.insert(bookmark);
    dir->dirtyVlanIs(1 + step * 104729 % 4094);
    const VlanId leaver = *std::next(leavers.begin(), static_cast<std::ptrdiff_t>(step % leavers.size()));
    dir->dirtyVlanDel(leaver);
    i = dir->dirtyVlan().startAtHash(bookmark);
    if (i && i.key() == bookmark) i.advance();
    ++step;
  }
  for (const VlanId vid : whole) {
    EXPECT_TRUE(leavers.contains(vid) || visited.contains(vid)) << vid;
  }
  for (const VlanId vid : visited) EXPECT_EQ(visited.count(vid), 1U) << vid;
}

TEST(DirtyVlan, isMadeCleanWithoutPorts) {
  const auto vlan = dirtyVlanDirFactory("dir")->dirtyVlanIs(10);
  EXPECT_FALSE(vlan->dirty());
  EXPECT_TRUE(vlan->intf().empty());
}

TEST(DirtyVlan, dirtyIsNotifiesOnlyOnChange) {
  const auto vlan = dirtyVlanDirFactory("dir")->dirtyVlanIs(10);
  const Recorder recorder(vlan.get());
  vlan->dirtyIs(false);
  EXPECT_TRUE(recorder.events.empty());
  vlan->dirtyIs(true);
  vlan->dirtyIs(true);
  EXPECT_TRUE(vlan->dirty());
  EXPECT_EQ(recorder.events, Events{dirtyChanged});
  vlan->dirtyIs(false);
  EXPECT_EQ(recorder.events, Events(2, dirtyChanged));
}

TEST(DirtyVlan, intfIsTwiceNotifiesOnce) {
  const auto vlan = dirtyVlanDirFactory("dir")->dirtyVlanIs(10);
  const Recorder all(vlan.get(), [&](auto, const void*) { EXPECT_NE(vlan->intf("Ethernet1"), nullptr); });
  const KeyRecorder<IntfId> intfs(vlan.get(), DirtyVlan::intfAttr);
  vlan->intfIs("Ethernet1", true);
  vlan->intfIs("Ethernet1", true);
  ASSERT_NE(vlan->intf("Ethernet1"), nullptr);
  EXPECT_TRUE(*vlan->intf("Ethernet1"));
  EXPECT_EQ(vlan->intf("Ethernet2"), nullptr);
  EXPECT_EQ(all.events, Events{intfChanged});
  EXPECT_EQ(intfs.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(DirtyVlan, intfIsOfAnotherValueNotifiesOnceMore) {
  const auto vlan = dirtyVlanDirFactory("dir")->dirtyVlanIs(10);
  vlan->intfIs("Ethernet1", true);
  const Recorder recorder(vlan.get());
  vlan->intfIs("Ethernet1", false);
  ASSERT_NE(vlan->intf("Ethernet1"), nullptr);
  EXPECT_FALSE(*vlan->intf("Ethernet1"));
  EXPECT_EQ(vlan->intf().size(), 1U);
  EXPECT_EQ(recorder.events, Events{intfChanged});
}

TEST(DirtyVlan, intfDelNotifiesOnceAndOnlyWhenPresent) {
  const auto vlan = dirtyVlanDirFactory("dir")->dirtyVlanIs(10);
  vlan->intfIs("Ethernet1", true);
  const Recorder all(vlan.get());
  const KeyRecorder<IntfId> intfs(vlan.get(), DirtyVlan::intfAttr);
  vlan->intfDel("Ethernet2");
  EXPECT_TRUE(all.events.empty());
  vlan->intfDel("Ethernet1");
  EXPECT_EQ(vlan->intf("Ethernet1"), nullptr);
  EXPECT_EQ(all.events, Events{intfChanged});
  EXPECT_EQ(intfs.keys, std::vector<IntfId>{"Ethernet1"});
}

TEST(DirtyVlan, intfDelAllNotifiesEachPortInOrderOfThePass) {
  const auto vlan = dirtyVlanDirFactory("dir")->dirtyVlanIs(10);
  std::map<IntfId, bool> values{{"Ethernet1", true}, {"Ethernet2", false}, {"PortChannel1", true}};
  for (const auto& [intf, value] : values) vlan->intfIs(intf, value);
  std::vector<IntfId> pass;
  for (const auto& [intf, value] : vlan->intf()) {
    pass.push_back(intf);
    EXPECT_EQ(values.at(intf), value);
  }
  const KeyRecorder<IntfId> intfs(vlan.get(), DirtyVlan::intfAttr);
  vlan->intfDelAll();
  EXPECT_TRUE(vlan->intf().empty());
  EXPECT_EQ(intfs.keys, pass);
  EXPECT_EQ(pass.size(), 3U);
  vlan->intfDelAll();
  EXPECT_EQ(intfs.keys.size(), 3U);
}

}  // namespace Topology::Library::DirtyVlanDirTest
