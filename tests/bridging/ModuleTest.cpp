// What the framework knows of the module's types.

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "bridging/TopologyInstStatus.h"
#include "bridging/TopologyStatus.h"
#include "mox/Type.h"
#include "tests/support/ModuleTypes.h"

namespace Bridging::ModuleTest {

using Test::attributesOf;
using Names = std::vector<std::string>;

TEST(BridgingModule, listsItsEntitiesWithTheirAttributes) {
  const Mox::ModuleDesc* const module = Mox::moxModule("Bridging");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module->name(), "Bridging");
  std::map<std::string, Names> entities;
  for (const auto& type : module->type()) {
    if (type.value().empty()) entities[type.name()] = attributesOf(type);
  }
  EXPECT_EQ(entities,
            (std::map<std::string, Names>{
                {"Bridging::Config", {"vlanConfig[]"}},
                {"Bridging::VlanConfig", {"vlanPortConfig[]", "floodsetExpandedVlan"}},
                {"Bridging::Topology::Config", {"vidToTopoMap[]", "topoConfig[]"}},
                {"Bridging::Topology::TopoConfig", {"topoPortConfig[]", "publishPortConfig", "publishedPortState"}},
                {"Bridging::Topology::TopoPortConfig", {"portState", "fdbFlush"}},
                {"Bridging::Topology::Status", {"topoStatus[]"}},
                {"Bridging::Topology::TopoStatus", {"topoPortStatus[]"}},
                {"Bridging::Topology::Inst::Status", {"topoStatus[]"}},
                {"Bridging::Topology::Inst::TopoStatus", {"topoPortStatus[]"}}}));
}

TEST(BridgingModule, listsItsEnumerationsWithTheirValues) {
  using Values = std::vector<std::pair<std::uint32_t, std::string>>;
  const Mox::ModuleDesc* const module = Mox::moxModule("Bridging");
  ASSERT_NE(module, nullptr);
  std::map<std::string, Values> enumerations;
  for (const auto& type : module->type()) {
    for (const auto& value : type.value()) enumerations[type.name()].emplace_back(value.value, value.name);
  }
  EXPECT_EQ(
      enumerations,
      (std::map<std::string, Values>{
          {"Bridging::AllowedTrafficDirection", {{0, "both"}, {1, "ingress"}, {2, "egress"}, {3, "none"}}},
          {"Bridging::Topology::PortState", {{0, "disabled"}, {1, "blocking"}, {2, "learning"}, {3, "forwarding"}}}}));
}

TEST(BridgingModule, entitiesKnowTheirType) {
  EXPECT_EQ(configFactory("x")->fwkType().name(), "Bridging::Config");
  EXPECT_EQ(configFactory("x")->vlanConfigIs(10)->fwkType().name(), "Bridging::VlanConfig");
  const auto topo = Topology::configFactory("x")->topoConfigIs("A", 1);
  EXPECT_EQ(topo->fwkType().name(), "Bridging::Topology::TopoConfig");
  ASSERT_NE(topo->fwkType().attribute(Topology::TopoConfig::publishPortConfigAttr.id()), nullptr);
  EXPECT_STREQ(topo->fwkType().attribute(Topology::TopoConfig::publishPortConfigAttr.id())->name, "publishPortConfig");
  EXPECT_EQ(Topology::statusFactory("x")->fwkType().name(), "Bridging::Topology::Status");
  EXPECT_EQ(Topology::Inst::statusFactory("x")->fwkType().name(), "Bridging::Topology::Inst::Status");
}

TEST(BridgingModule, entitiesArePrintedByTypeAndName) {
  const auto config = configFactory("bridging");
  std::ostringstream out;
  out << config << ' ' << config->vlanConfigIs(10);
  EXPECT_EQ(out.str(), "Bridging::Config(bridging) Bridging::VlanConfig");
}

}  // namespace Bridging::ModuleTest
