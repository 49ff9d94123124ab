#include "topolib/LocalIntfFilter.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace Topology::Library::LocalIntfFilterTest {

TEST(LocalIntfFilter, acceptsLocalInterfaces) {
  LocalIntfFilter filter;
  for (const std::string name :
       {"Ethernet1", "Ethernet1/2", "Ethernet3/4/1", "eth0", "swp1s0", "enp0s31f6", "PortChannel1", "bond0", "team3",
        "Cpu", "VxlanTunnel1", "vxlan100", "MplsTrunk1", "mpls7"}) {
    EXPECT_TRUE(filter.isValidIntf(name)) << name;
  }
}

TEST(LocalIntfFilter, rejectsSubInterfacesWhateverTheirParent) {
  LocalIntfFilter filter;
  for (const std::string name : {"Ethernet1.5", "Ethernet1/2.10", "PortChannel1.7", "bond0.1", "VxlanTunnel1.2"}) {
    EXPECT_FALSE(filter.isValidIntf(name)) << name;
  }
}

TEST(LocalIntfFilter, rejectsEveryOtherKind) {
  LocalIntfFilter filter;
  for (const std::string name :
       {"", "Vlan1", "Vlan4094", "Loopback0", "Management1", "Tunnel1", "Ethernet", "cpu", "Cpu1", "Null0"}) {
    EXPECT_FALSE(filter.isValidIntf(name)) << name;
  }
}

TEST(LocalIntfFilter, givesTheSameAnswerEveryTimeAndEverywhere) {
  LocalIntfFilter one;
  LocalIntfFilter two;
  FilterIntf& filter = two;
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(one.isValidIntf("Ethernet1"));
    EXPECT_FALSE(one.isValidIntf("Ethernet1.1"));
    EXPECT_TRUE(filter.isValidIntf("Ethernet1"));
    EXPECT_FALSE(filter.isValidIntf("Ethernet1.1"));
  }
}

TEST(LocalIntfFilter, isAFilterWithoutStateOfItsOwn) {
  static_assert(std::is_base_of_v<FilterIntf, LocalIntfFilter>);
  static_assert(std::is_abstract_v<FilterIntf>);
  static_assert(std::has_virtual_destructor_v<FilterIntf>);
  static_assert(!std::is_copy_constructible_v<FilterIntf>);
  EXPECT_EQ(sizeof(LocalIntfFilter), sizeof(FilterIntf));
}

}  // namespace Topology::Library::LocalIntfFilterTest
