// What the framework knows of the module's types.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "mox/Type.h"
#include "tests/support/ModuleTypes.h"
#include "topolib/DirtyVlanDir.h"
#include "topolib/LibState.h"
#include "topolib/TopoLibCodefState.h"
#include "topolib/TopoToVlanMap.h"
#include "topolib/VlanToVlanSet.h"

namespace Topology::Library::ModuleTest {

using Test::attributesOf;
using Names = std::vector<std::string>;

TEST(TopoLibModule, isListedBesideThoseBelow) {
  const std::vector<std::string> modules = Mox::moxModules();
  for (const char* name : {"Bridging", "Interface", "TopoLib"}) {
    EXPECT_EQ(std::count(modules.begin(), modules.end(), name), 1) << name;
  }
}

TEST(TopoLibModule, listsItsEntitiesWithTheirAttributes) {
  const Mox::ModuleDesc* const module = Mox::moxModule("TopoLib");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module->name(), "TopoLib");
  std::map<std::string, Names> entities;
  for (const auto& type : module->type()) {
    if (type.value().empty()) entities[type.name()] = attributesOf(type);
  }
  EXPECT_EQ(entities, (std::map<std::string, Names>{
                          {"Topology::Library::LibState", {"topo[]", "initDone"}},
                          {"Topology::Library::Topo", {"port[]"}},
                          {"Topology::Library::Port", {"vlanPortConfig[]", "active", "state", "fdbFlush"}},
                          {"Topology::Library::TopoToVlanMap", {"mappedVlan[]"}},
                          {"Topology::Library::MappedVlan", {"vlan[]"}},
                          {"Topology::Library::DirtyVlanDir", {"dirtyVlan[]"}},
                          {"Topology::Library::DirtyVlan", {"dirty", "intf[]"}},
                          {"Topology::Library::VlanToVlanSet", {"someVlan[]"}},
                          {"Topology::Library::Root", {"libSm", "topologyStatusLibSm"}},
                          {"Topology::Library::TopoLibCodefState", {"idle"}}}));
}

TEST(TopoLibModule, listsItsModesByNumberAndName) {
  const Mox::ModuleDesc* const module = Mox::moxModule("TopoLib");
  ASSERT_NE(module, nullptr);
  const auto isMode = [](const auto& type) { return type.name() == "Topology::Library::LibSmMode"; };
  const auto mode = std::find_if(module->type().begin(), module->type().end(), isMode);
  ASSERT_NE(mode, module->type().end());
  ASSERT_EQ(mode->value().size(), 2U);
  EXPECT_EQ(mode->value()[0].value, 0U);
  EXPECT_STREQ(mode->value()[0].name, "createStatus");
  EXPECT_EQ(mode->value()[1].value, 1U);
  EXPECT_STREQ(mode->value()[1].name, "notifyStatus");
}

TEST(TopoLibModule, entitiesArePrintedByTypeAndName) {
  const auto state = libStateFactory("state");
  std::ostringstream out;
  out << state << ' ' << state->topoIs("A") << ' ' << state->topoIs("A")->portIs("Ethernet1");
  EXPECT_EQ(out.str(), "Topology::Library::LibState(state) Topology::Library::Topo(A) Topology::Library::Port");
}

}  // namespace Topology::Library::ModuleTest
