// What the framework knows of the module's types.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "interface/EthIntfStatus.h"
#include "mox/Type.h"

namespace Interface::ModuleTest {

/// The attributes of an entity type, or the values of an enumeration, as "id name".
std::vector<std::string> contentsOf(const Mox::TypeDesc& type) {
  std::vector<std::string> contents;
  for (const auto& attribute : type.attribute()) {
    contents.push_back(std::to_string(attribute.id) + ' ' + attribute.name + (attribute.isCollection ? "[]" : ""));
  }
  for (const auto& value : type.value()) contents.push_back(std::to_string(value.value) + ' ' + value.name);
  return contents;
}

TEST(InterfaceModule, listsItsTypes) {
  const Mox::ModuleDesc* const module = Mox::moxModule("Interface");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module->name(), "Interface");
  std::vector<std::string> names;
  for (const auto& type : module->type()) names.push_back(type.name());
  EXPECT_EQ(names, (std::vector<std::string>{"Interface::EthIntfStatusDir", "Interface::EthIntfStatus",
                                             "Interface::LinkStatus", "Interface::ForwardingModel"}));
}

TEST(InterfaceModule, describesItsTypes) {
  using Contents = std::vector<std::string>;
  EXPECT_EQ(contentsOf(Mox::typeDescOf(typeid(EthIntfStatusDir))), (Contents{"0 intfStatus[]"}));
  EXPECT_EQ(contentsOf(Mox::typeDescOf(typeid(EthIntfStatus))), (Contents{"0 linkStatus", "1 forwardingModel"}));
  EXPECT_EQ(contentsOf(Mox::typeDescOf(typeid(LinkStatus))), (Contents{"0 unknown", "1 down", "2 up"}));
  EXPECT_EQ(contentsOf(Mox::typeDescOf(typeid(ForwardingModel))),
            (Contents{"0 unspecified", "1 dropped", "2 routed", "3 mirrored", "4 bridged", "5 tunneled"}));
}

TEST(InterfaceModule, entitiesArePrintedByTypeAndName) {
  const auto dir = ethIntfStatusDirFactory("interfaces");
  std::ostringstream out;
  out << dir << ' ' << dir->intfStatusIs("Ethernet1");
  EXPECT_EQ(out.str(), "Interface::EthIntfStatusDir(interfaces) Interface::EthIntfStatus");
}

}  // namespace Interface::ModuleTest
