// The kinds of interfaces, by their names.

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "quill/IntfId.h"

namespace Quill::IntfKindTest {

/// The kinds whose predicates hold for the interface.
std::vector<IntfKind> predicated(IntfId intf) {
  std::vector<IntfKind> kinds;
  if (EthIntfId::isEthIntfId(intf)) kinds.push_back(IntfKind::ethernet);
  if (PortChannelIntfId::isPortChannelIntfId(intf)) kinds.push_back(IntfKind::portChannel);
  if (SubIntfId::isSubIntfId(intf)) kinds.push_back(IntfKind::subIntf);
  if (CpuIntfId::isCpuIntfId(intf)) kinds.push_back(IntfKind::cpu);
  if (VxlanTunnelIntfId::isVxlanTunnelIntfId(intf)) kinds.push_back(IntfKind::vxlanTunnel);
  if (MplsTrunkIntfId::isMplsTrunkIntfId(intf)) kinds.push_back(IntfKind::mplsTrunk);
  return kinds;
}

/// Expects that each name is printed as it is and has this kind and no other.
void expectKind(IntfKind kind, std::initializer_list<std::string> names) {
  const bool hasPredicate = kind != IntfKind::none && kind != IntfKind::other;
  const std::vector<IntfKind> expected(hasPredicate ? 1 : 0, kind);
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const IntfId intf(name);
    EXPECT_EQ(intf.kind(), kind);
    EXPECT_EQ(predicated(intf), expected);
    EXPECT_EQ(intf.stringValue(), name);
  }
}

TEST(IntfKind, ofTheEmptyIdIsNone) {
  expectKind(IntfKind::none, {""});
  EXPECT_EQ(predicated(IntfId()), std::vector<IntfKind>());
}

TEST(IntfKind, ofEthernetPorts) {
  expectKind(IntfKind::ethernet, {"Ethernet0", "Ethernet1", "Ethernet48", "Ethernet4294967295"});
  expectKind(IntfKind::ethernet, {"Ethernet0/0", "Ethernet1/2", "Ethernet36/4", "Ethernet65535/65535"});
  expectKind(IntfKind::ethernet, {"Ethernet0/0/0", "Ethernet1/2/3", "Ethernet16/36/4", "Ethernet4095/1023/1023"});
}

TEST(IntfKind, ofLinuxEthernetDevices) {
  expectKind(IntfKind::ethernet, {"eth0", "eth1", "eth4294967295"});
  expectKind(IntfKind::ethernet, {"swp0", "swp32", "swp4294967295"});
  expectKind(IntfKind::ethernet, {"swp1s0", "swp32s3", "swp65535s65535"});
  expectKind(IntfKind::ethernet, {"eno1", "ens3f0np0", "enp0s31f6", "enx0123456789ab", "en0", "en-", "en/"});
}

TEST(IntfKind, ofPortChannels) {
  expectKind(IntfKind::portChannel, {"PortChannel0", "PortChannel1", "PortChannel999999", "PortChannel4294967295"});
  expectKind(IntfKind::portChannel, {"bond0", "bond17", "team0", "team17"});
}

TEST(IntfKind, ofTheCpuPort) { expectKind(IntfKind::cpu, {"Cpu"}); }

TEST(IntfKind, ofVxlanTunnels) {
  expectKind(IntfKind::vxlanTunnel, {"VxlanTunnel0", "VxlanTunnel1", "vxlan0", "vxlan16777215"});
}

TEST(IntfKind, ofMplsTrunks) { expectKind(IntfKind::mplsTrunk, {"MplsTrunk0", "MplsTrunk1", "mpls0", "mpls10"}); }

TEST(IntfKind, ofAllOtherNamesIsOther) {
  expectKind(IntfKind::other, {"Vlan1", "Vlan4094", "Loopback0", "Loopback100"});
  expectKind(IntfKind::other, {"Management1", "lo", "br0", "docker0", "veth1a2b", "x", "1", "/", " ", "\n", "\xFF"});
}

TEST(IntfKind, ofAnyNameWithASuffixIsSubIntf) {
  expectKind(IntfKind::subIntf, {"Ethernet1.1", "Ethernet1/2.10", "Ethernet1/2/3.4094", "Ethernet1.0"});
  expectKind(IntfKind::subIntf, {"eth0.10", "swp1.10", "swp1s2.10", "enp0s31f6.10", "en.1"});
  expectKind(IntfKind::subIntf, {"PortChannel1.1", "bond0.1", "team0.1", "Cpu.1", "VxlanTunnel1.1", "vxlan1.1",
                                 "MplsTrunk1.1", "mpls1.1", "Vlan1.1", "Loopback0.1", "br0.1"});
  expectKind(IntfKind::subIntf, {"Ethernet1.01", "Ethernet01.1", "Ethernet1.4294967296", "Ethernet4294967296.1"});
}

TEST(IntfKind, ofSuffixWithoutParentIsSubIntf) { expectKind(IntfKind::subIntf, {".5", ".0", ".00", "..5"}); }

TEST(IntfKind, ofSeveralSuffixesIsSubIntf) {
  expectKind(IntfKind::subIntf, {"eth0.10.20", "eth0..20", "eth0.x.20", "Ethernet1.1.1.1", "10.0.0.1"});
}

TEST(IntfKind, ofDotWithoutNumberIsThatOfTheWholeName) {
  expectKind(IntfKind::other, {"eth0.", "Ethernet1.", "Ethernet1.x", "Ethernet1.1x", "Ethernet1.x1", "eth0.10.", "Cpu.",
                               ".", "..", ".x", "Ethernet1. 1", "Ethernet1.-1", "Ethernet1.+1", "Ethernet1.1 "});
  expectKind(IntfKind::ethernet, {"en.", "enp3s0.", "enp3s0.x", "enp3s0.1x"});
}

TEST(IntfKind, ofNearMissesOfEthernetIsOther) {
  expectKind(IntfKind::other,
             {"Ethernet",       "Ethernet/",         "Ethernet1/",  "Ethernet/1", "Ethernet1//2", "Ethernet1/2/",
              "Ethernet1/2/3/", "Ethernet1/2/3/4",   "Ethernet1/x", "Ethernetx",  "Ethernet1x",   "Ethernet 1",
              "Ethernet1 ",     " Ethernet1",        "Ethernet-1",  "Ethernet+1", "Ethernet1s2",  "ethernet1",
              "ETHERNET1",      "EthernetEthernet1", "Ethernet1\n", "xEthernet1"});
}

TEST(IntfKind, ofNearMissesOfLinuxDevicesIsOther) {
  expectKind(IntfKind::other,
             {"eth", "ethx", "eth0x", "eth0/1", "Eth0", "eth-0", "ethe0", "et0", "swp", "swpx", "swp1s", "swps1",
              "swp1s2s", "swp1s2s3", "swp1/2", "swp1S2", "Swp1", "swp1 s2", "swp1sx"});
  expectKind(IntfKind::other, {"en", "e", "n", "En0", "EN0", "xen0", "e0"});
}

TEST(IntfKind, ofNearMissesOfOtherFormsIsOther) {
  expectKind(IntfKind::other,
             {"PortChannel", "PortChannelx", "PortChannel1/2", "Port-Channel1", "port-channel1", "portchannel1",
              "Portchannel1", "bond", "bondx", "Bond0", "bonding0", "team", "teamx", "Team0"});
  expectKind(IntfKind::other, {"cpu", "CPU", "Cpu1", "Cpu0", "Cp", "Cpu ", "Cpux", "CpuCpu"});
  expectKind(IntfKind::other, {"VxlanTunnel", "Vxlan1", "VxlanTunnelx", "vxlan", "vxlanx", "vxlan1/2", "vxlanTunnel1",
                               "Vxlantunnel1", "VXLAN1"});
  expectKind(IntfKind::other, {"MplsTrunk", "Mpls1", "MplsTrunkx", "mpls", "mplsx", "mplsTrunk1", "MPLS1", "mpls1-2"});
  expectKind(IntfKind::other, {"Vlan", "vlan10", "VLAN10", "Loopback", "loopback0", "Loopback0/1"});
}

TEST(IntfKind, isKeptByNumbersTooLargeForTheEncoding) {
  expectKind(IntfKind::ethernet,
             {"Ethernet4294967296", "Ethernet65536/1", "Ethernet1/65536", "Ethernet4096/1/1", "Ethernet1/1024/1",
              "Ethernet1/1/1024", "Ethernet18446744073709551615", "Ethernet18446744073709551616", "eth4294967296",
              "swp4294967296", "swp65536s1", "swp1s65536", "Ethernet" + std::string(1000, '9')});
  expectKind(IntfKind::portChannel, {"PortChannel4294967296", "bond4294967296", "team99999999999999999999"});
  expectKind(IntfKind::vxlanTunnel, {"VxlanTunnel4294967296", "vxlan99999999999999999999"});
  expectKind(IntfKind::mplsTrunk, {"MplsTrunk4294967296", "mpls99999999999999999999"});
  expectKind(IntfKind::other, {"Vlan4294967296", "Loopback99999999999999999999"});
  expectKind(IntfKind::subIntf, {"Ethernet1.8388606", "Ethernet1.8388607", "Ethernet1.8388608", "Ethernet1.4294967295",
                                 "Ethernet1.4294967296", "Ethernet4294967296.1", "eth0." + std::string(1000, '9')});
}

TEST(IntfKind, isKeptByLeadingZeros) {
  expectKind(IntfKind::ethernet, {"Ethernet01", "Ethernet00", "Ethernet1/01", "Ethernet01/1/1", "eth00", "swp01s1",
                                  "swp1s01", "Ethernet0000000000000000000000000000000001"});
  expectKind(IntfKind::portChannel, {"PortChannel01", "bond00", "team007"});
  expectKind(IntfKind::vxlanTunnel, {"VxlanTunnel01", "vxlan01"});
  expectKind(IntfKind::mplsTrunk, {"MplsTrunk01", "mpls01"});
  expectKind(IntfKind::other, {"Vlan01", "Loopback00"});
}

TEST(IntfKind, numbersTooLargeForTheEncodingDoNotWrap) {
  const auto expectDistinct = [](const char* a, const char* b) { EXPECT_NE(IntfId(a), IntfId(b)) << a << ' ' << b; };
  expectDistinct("Ethernet4294967296", "Ethernet0");
  expectDistinct("Ethernet4294967297", "Ethernet1");
  expectDistinct("Ethernet1/65536", "Ethernet2/0");
  expectDistinct("Ethernet65536/0", "Ethernet0/0");
  expectDistinct("Ethernet1/1/1024", "Ethernet1/2/0");
  expectDistinct("Ethernet1/1024/1", "Ethernet2/0/1");
  expectDistinct("Ethernet4096/0/0", "Ethernet0/0/0");
  expectDistinct("swp1s65536", "swp2s0");
  expectDistinct("Ethernet1.8388607", "Ethernet1");
  expectDistinct("Ethernet1.8388608", "Ethernet1.0");
  expectDistinct("Ethernet1.4294967295", "Ethernet1");
  expectDistinct("Ethernet1.4294967296", "Ethernet1.0");
  expectDistinct("Ethernet18446744073709551616", "Ethernet0");
}

}  // namespace Quill::IntfKindTest
