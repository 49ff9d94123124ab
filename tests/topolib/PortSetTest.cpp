#include "topolib/PortSet.h"

#include <gtest/gtest.h>

#include <map>

namespace Topology::Library::PortSetTest {

using Quill::IntfId;

TEST(PortSet, isEmptyByDefault) {
  const PortSet set;
  EXPECT_TRUE(set.port().empty());
  EXPECT_EQ(set.port("Ethernet1"), nullptr);
}

TEST(PortSet, portIsInsertsOrOverwrites) {
  PortSet set;
  set.portIs("Ethernet1", true);
  ASSERT_NE(set.port("Ethernet1"), nullptr);
  EXPECT_TRUE(*set.port("Ethernet1"));
  set.portIs("Ethernet1", false);
  EXPECT_FALSE(*set.port("Ethernet1"));
  EXPECT_EQ(set.port().size(), 1U);
}

TEST(PortSet, portIsThereWhateverItsValue) {
  PortSet set;
  set.portIs("Ethernet1", false);
  EXPECT_NE(set.port("Ethernet1"), nullptr);
  EXPECT_EQ(set.port("Ethernet2"), nullptr);
}

TEST(PortSet, portDelRemovesThePort) {
  PortSet set;
  set.portIs("Ethernet1", true);
  set.portIs("Ethernet2", true);
  set.portDel("Ethernet1");
  set.portDel("Ethernet3");
  EXPECT_EQ(set.port("Ethernet1"), nullptr);
  EXPECT_NE(set.port("Ethernet2"), nullptr);
  EXPECT_EQ(set.port().size(), 1U);
}

TEST(PortSet, portDelAllEmptiesIt) {
  PortSet set;
  set.portDelAll();
  for (int i = 0; i < 100; ++i) set.portIs("Ethernet" + std::to_string(i), true);
  EXPECT_EQ(set.port().size(), 100U);
  set.portDelAll();
  EXPECT_TRUE(set.port().empty());
  set.portIs("Ethernet1", true);
  EXPECT_EQ(set.port().size(), 1U);
}

TEST(PortSet, iterationVisitsEachPort) {
  PortSet set;
  const std::map<IntfId, bool> ports{{"", true}, {"Ethernet1", true}, {"Ethernet2", false}, {"anything", true}};
  for (const auto& [intf, value] : ports) set.portIs(intf, value);
  std::map<IntfId, bool> visited;
  for (const auto& [intf, value] : set.port()) visited.emplace(intf, value);
  EXPECT_EQ(visited, ports);
}

TEST(PortSet, notifiesNobody) {
  const PortSet set;
  EXPECT_EQ(set.notifieeList(), nullptr);
}

TEST(PortSet, isCounted) {
  const auto set = Mox::makePtr<PortSet>();
  set->portIs("Ethernet1", true);
  {
    const Mox::Ptr<const PortSet> reader = set;
    EXPECT_EQ(set->references(), 2U);
    EXPECT_NE(reader->port("Ethernet1"), nullptr);
  }
  EXPECT_EQ(set->references(), 1U);
}

}  // namespace Topology::Library::PortSetTest
