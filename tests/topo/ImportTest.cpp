// From captures of Linux bridges to scenarios.

#include "topo/Import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "tests/topo/LinuxTexts.h"

namespace Topo::ImportTest {

namespace fs = std::filesystem;

using Test::bridgeLink;
using Test::jsonList;
using Test::portLink;
using Test::vlansOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// What an import does.
struct Imported {
  int status = 0;
  std::string out;
  std::string err;
};

[[nodiscard]] Imported import(const fs::path& dir, const std::optional<std::string>& bridge = {}) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = importLinux(dir.string(), bridge, out, err);
  return {status, out.str(), err.str()};
}

/// The captures of real bridges, which stand beside this file; the tests run somewhere in the tree.
[[nodiscard]] fs::path realCapture(const std::string& name) {
  for (auto root = fs::current_path(); root != root.parent_path(); root = root.parent_path()) {
    if (auto dir = root / "tests/topo/captures" / name; fs::exists(dir)) return dir;
  }
  throw std::runtime_error("no tests/topo/captures/" + name + " from the current directory upwards");
}

/// A directory that goes with the test.
class ImportLinuxFiles : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "topo-import-XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr) << name;
    dir_ = name;
  }
  void TearDown() override { fs::remove_all(dir_); }

  void write(const std::string& file, const std::string& text) const { std::ofstream(dir_ / file) << text; }
  void writeGoodFiles() const {
    write("link.json", jsonList({bridgeLink("br0"), portLink("swp1")}) + '\n');
    write("vlan.json", jsonList({vlansOf("swp1", R"({"vlan":10})")}) + '\n');
  }

  [[nodiscard]] const fs::path& dir() const noexcept { return dir_; }

 private:
  fs::path dir_;
};

TEST(ImportLinux, writesABridgeWithMst) {
  const auto imported = import(realCapture("kernel6.12"), "br0");
  EXPECT_EQ(imported.status, 0);
  EXPECT_EQ(imported.err, "");
  EXPECT_EQ(imported.out, R"(interface bond0 link up model bridged
interface dum1 link up model bridged
interface swp1 link up model bridged
interface swp2 link up model bridged
interface swp3 link up model bridged
interface swp4 link down model bridged
interface swp5 link up model bridged
interface swp6 link up model bridged
interface swp7 link down model bridged
interface swp8 link up model bridged
interface vx100 link up model bridged
interface vxlan0 link up model bridged
vlan 1-999,2000-4094
vlan 1,11 port dum1 untagged
vlan 10 port dum1 untagged pvid
vlan 10-20 port swp1
vlan 10-20 port swp2
vlan 10-20 port swp3
vlan 10-20 port swp4
vlan 30 port swp5 untagged
vlan 31 port swp5 untagged pvid
vlan 50-51,54-59 port swp5
vlan 100-400 port swp6
vlan 100-110 port swp7
vlan 2-999,2000-4094 port swp8
vlan 100 port vx100 untagged pvid
vlan 200-209 port vxlan0
topology msti0 number 0
topology msti0 port dum1 state forwarding
topology msti0 port swp1 state forwarding
topology msti0 port swp2 state forwarding
topology msti0 port swp3 state forwarding
topology msti0 port swp4 state disabled
topology msti0 port swp5 state forwarding
topology msti0 port swp6 state forwarding
topology msti0 port swp8 state forwarding
topology msti0 port vxlan0 state forwarding
topology msti1 number 1
topology msti1 port dum1 state disabled
topology msti1 port swp1 state forwarding
topology msti1 port swp2 state blocking
topology msti1 port swp3 state learning
topology msti1 port swp4 state disabled
topology msti1 port swp8 state forwarding
topology msti2 number 2
topology msti2 port swp1 state blocking
topology msti2 port swp2 state forwarding
topology msti2 port swp3 state disabled
topology msti2 port swp4 state learning
topology msti2 port swp8 state blocking
topology msti3 number 3
topology msti3 port swp6 state forwarding
topology msti3 port swp7  # The capture does not tell the state.
topology msti3 port swp8 state learning
topology msti3 port vx100 state disabled
topology msti3 port vxlan0 state disabled
topology msti4 number 4
topology msti4 port swp6 state forwarding
topology msti4 port swp8 state disabled
topology msti63 number 63
topology msti63 port swp8 state disabled
topology msti64 number 64
topology msti64 port swp8 state disabled
map 1-9,13-14,21-99,201-299,311-499,502-999,2000-4094 msti0
map 10-11,15 msti1
map 12,16-20 msti2
map 100-200 msti3
map 300-310 msti4
map 501 msti63
map 500 msti64
instance msti0 number 0
instance msti0 port dum1
instance msti0 port swp1
instance msti0 port swp2
instance msti0 port swp3
instance msti0 port swp5
instance msti0 port swp6
instance msti0 port swp8
instance msti0 port vxlan0
instance msti1 number 1
instance msti1 port dum1
instance msti1 port swp1
instance msti1 port swp2
instance msti1 port swp3
instance msti1 port swp8
instance msti2 number 2
instance msti2 port swp1
instance msti2 port swp2
instance msti2 port swp3
instance msti2 port swp8
instance msti3 number 3
instance msti3 port swp6
instance msti3 port swp8
instance msti3 port vx100
instance msti3 port vxlan0
instance msti4 number 4
instance msti4 port swp6
instance msti4 port swp8
instance msti63 number 63
instance msti63 port swp8
instance msti64 number 64
instance msti64 port swp8
)");
}

TEST(ImportLinux, writesABridgeWithoutMst) {
  const auto imported = import(realCapture("kernel6.12"), "br3");
  EXPECT_EQ(imported.status, 0);
  EXPECT_THAT(imported.out, StartsWith("interface d1 link up model bridged\n"
                                       "interface d2 link down model bridged\n"
                                       "interface d3 link up model bridged\n"
                                       "vlan 1-399\n"
                                       "vlan 1 port d1 untagged pvid\n"
                                       "vlan 10-19 port d1\n"
                                       "vlan 1 port d2 untagged pvid\n"
                                       "vlan 1 port d3 untagged pvid\n"
                                       "vlan 2,4,6,8,10,12,"));
  EXPECT_THAT(imported.out, HasSubstr(",394,396,398 port d3 untagged\nvlan 3,5,7,9,"));
  EXPECT_THAT(imported.out, EndsWith(",395,397,399 port d3\n"
                                     "topology msti0 number 0\n"
                                     "topology msti0 port d1 state forwarding\n"
                                     "topology msti0 port d2 state disabled\n"
                                     "topology msti0 port d3 state forwarding\n"
                                     "map 1-399 msti0\n"
                                     "instance msti0 number 0\n"
                                     "instance msti0 port d1\n"
                                     "instance msti0 port d3\n"));
}

TEST(ImportLinux, withoutMstDataAllVlansBelongToInstanceZero) {
  const auto imported = import(realCapture("kernel6.1"), "br0");
  EXPECT_EQ(imported.status, 0);
  EXPECT_THAT(imported.out, HasSubstr("\nvlan 1-4094\n"));
  EXPECT_THAT(imported.out, HasSubstr("\nvlan 1 port bond0 untagged\n"
                                      "vlan 10-20,100-110 port bond0\n"
                                      "vlan 99 port bond0 untagged pvid\n"
                                      "vlan 1,11 port dum0 untagged\n"
                                      "vlan 10 port dum0 untagged pvid\n"));
  EXPECT_THAT(imported.out, HasSubstr("\nvlan 1 port swp8 untagged pvid\nvlan 2-4094 port swp8\n"));
  EXPECT_THAT(imported.out, HasSubstr("\ntopology msti0 port swp3 state learning\n"
                                      "topology msti0 port swp4 state disabled\n"));
  EXPECT_THAT(imported.out, HasSubstr("\nmap 1-4094 msti0\ninstance msti0 number 0\n"));
  EXPECT_THAT(imported.out, Not(HasSubstr("msti1")));
}

TEST(ImportLinux, portThatIsDownHasNoInstanceStatus) {
  EXPECT_EQ(import(realCapture("kernel6.1"), "br4").out,
            "interface d4 link down model bridged\n"
            "vlan 1000\n"
            "vlan 1000 port d4 untagged pvid\n"
            "topology msti0 number 0\n"
            "topology msti0 port d4 state disabled\n"
            "map 1000 msti0\n"
            "instance msti0 number 0\n");
}

TEST(ImportLinux, severalBridgesAreAnErrorThatListsThem) {
  const auto dir = realCapture("kernel6.1");
  const auto imported = import(dir);
  EXPECT_EQ(imported.status, 2);
  EXPECT_EQ(imported.out, "");
  EXPECT_EQ(imported.err, (dir / "link.json").string() +
                              ": error: several VLAN-aware bridges, choose one with --bridge: br0, br3, br4\n");
}

TEST(ImportLinux, bridgeThatIsNotVlanAwareIsAnError) {
  const auto imported = import(realCapture("kernel6.1"), "br1");
  EXPECT_EQ(imported.status, 2);
  EXPECT_EQ(imported.out, "");
  EXPECT_THAT(imported.err,
              HasSubstr(": error: the bridge br1 is not VLAN-aware; VLAN-aware bridges are br0, br3, br4\n"));
}

TEST_F(ImportLinuxFiles, filesOfMstMayBeMissing) {
  writeGoodFiles();
  const auto imported = import(dir());
  EXPECT_EQ(imported.status, 0);
  EXPECT_EQ(imported.err, "");
  EXPECT_EQ(imported.out,
            "interface swp1 link up model bridged\n"
            "vlan 10\n"
            "vlan 10 port swp1\n"
            "topology msti0 number 0\n"
            "topology msti0 port swp1 state forwarding\n"
            "map 10 msti0\n"
            "instance msti0 number 0\n"
            "instance msti0 port swp1\n");
}

TEST_F(ImportLinuxFiles, linksAndVlansMustBeThere) {
  for (const std::string file : {"link.json", "vlan.json"}) {
    writeGoodFiles();
    fs::remove(dir() / file);
    const auto imported = import(dir());
    EXPECT_EQ(imported.status, 2);
    EXPECT_EQ(imported.out, "");
    EXPECT_EQ(imported.err, (dir() / file).string() + ": error: No such file or directory\n");
  }
}

TEST_F(ImportLinuxFiles, fileThatCannotBeReadIsAnError) {
  for (const std::string file : {"link.json", "vlan.json", "mst.json", "vlan-global.json"}) {
    writeGoodFiles();
    fs::remove(dir() / file);
    fs::create_directory(dir() / file);
    const auto imported = import(dir());
    EXPECT_EQ(imported.status, 2);
    EXPECT_EQ(imported.out, "");
    EXPECT_EQ(imported.err, (dir() / file).string() + ": error: cannot be read\n");
    fs::remove(dir() / file);
  }
}

TEST_F(ImportLinuxFiles, linkToNowhereIsAnError) {
  writeGoodFiles();
  fs::create_symlink("nowhere", dir() / "mst.json");
  EXPECT_EQ(import(dir()).err, (dir() / "mst.json").string() + ": error: No such file or directory\n");
}

TEST_F(ImportLinuxFiles, errorNamesTheFileAndThePlace) {
  for (const std::string file : {"link.json", "vlan.json", "mst.json", "vlan-global.json"}) {
    writeGoodFiles();
    write(file, "[\n  {\"ifname\":1}\n]\n");
    EXPECT_EQ(import(dir()).err, (dir() / file).string() + ": error: /0/ifname: expected text, found a number\n");
    write(file, "[\n  {\"ifname\":}\n]\n");
    const auto imported = import(dir());
    EXPECT_EQ(imported.status, 2);
    EXPECT_EQ(imported.out, "");
    EXPECT_THAT(imported.err, StartsWith((dir() / file).string() + ":2: error: byte 15: "));
    EXPECT_EQ(imported.err.find('\n'), imported.err.size() - 1);
    fs::remove(dir() / file);
  }
}

TEST_F(ImportLinuxFiles, emptyFileIsNotJson) {
  for (const std::string file : {"link.json", "vlan.json", "mst.json", "vlan-global.json"}) {
    writeGoodFiles();
    write(file, "");
    EXPECT_THAT(import(dir()).err, StartsWith((dir() / file).string() + ":1: error: byte 1: ")) << file;
    fs::remove(dir() / file);
  }
}

}  // namespace Topo::ImportTest
