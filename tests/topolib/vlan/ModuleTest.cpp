// What the framework knows of the types of the VLAN view.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "mox/Type.h"
#include "tests/support/ModuleTypes.h"
#include "topolib/vlan/TopoLibVlan.h"

namespace Topology::Library::Vlan::ModuleTest {

using Test::attributesOf;
using Names = std::vector<std::string>;

TEST(TopoLibVlanModule, isListedBesideTheOneBelow) {
  // The library registers itself when it is loaded, which takes that something of it is used.
  ASSERT_NE(libVlanStateFactory("view"), nullptr);
  const std::vector<std::string> modules = Mox::moxModules();
  for (const char* const name : {"TopoLib", "TopoLibVlan"}) {
    EXPECT_EQ(std::count(modules.begin(), modules.end(), name), 1) << name;
  }
}

TEST(TopoLibVlanModule, listsItsEntitiesWithTheirAttributes) {
  const Mox::ModuleDesc* const module = Mox::moxModule("TopoLibVlan");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module->name(), "TopoLibVlan");
  std::map<std::string, Names> entities;
  for (const auto& type : module->type()) entities[type.name()] = attributesOf(type);
  EXPECT_EQ(entities, (std::map<std::string, Names>{
                          {"Topology::Library::Vlan::LibVlanState", {"topoVlan[]", "forceEnabledPorts[]", "initDone"}},
                          {"Topology::Library::Vlan::TopoVlan", {"topoPort[]"}},
                          {"Topology::Library::Vlan::Port", {"topo[]", "blocked", "allowedTrafficDirection"}}}));
}

TEST(TopoLibVlanModule, entitiesArePrintedByTypeAndName) {
  const auto view = libVlanStateFactory("view");
  std::ostringstream out;
  out << view << ' ' << view->topoVlanIs(10) << ' ' << view->topoVlanIs(10)->topoPortIs("Ethernet1");
  EXPECT_EQ(out.str(),
            "Topology::Library::Vlan::LibVlanState(view) Topology::Library::Vlan::TopoVlan "
            "Topology::Library::Vlan::Port");
}

}  // namespace Topology::Library::Vlan::ModuleTest
