#include "mox/Type.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "mox/Entity.h"
#include "mox/Enum.h"
#include "mox/Exception.h"

namespace Mox {

namespace TypeTestLights {

enum class Colour : std::uint32_t { red, green };
[[maybe_unused]] constexpr auto moxEnumValues(Colour /*tag*/) {
  return std::array{Mox::enumValue(Colour::red, "red"), Mox::enumValue(Colour::green, "green")};
}

class Lamp : public Entity {
 public:
  static constexpr ScalarAttribute litAttr{0, "lit"};
  static constexpr CollectionAttribute<String> bulbAttr{1, "bulb"};
  static constexpr ScalarAttribute wattAttr{4, "watt"};
};

class Bulb : public Entity {};

}  // namespace TypeTestLights

namespace TypeTest {

using TypeTestLights::Bulb;
using TypeTestLights::Colour;
using TypeTestLights::Lamp;

// A module registers while the program starts, in whatever order.
const bool isRegistered = moxModuleIs(
    "TypeTestLights", {enumerationType<Colour>(), entityType<Lamp>(Lamp::litAttr, Lamp::bulbAttr, Lamp::wattAttr)});

TEST(Module, registersFromStaticInitialiser) {
  EXPECT_TRUE(isRegistered);
  const ModuleDesc* const module = moxModule("TypeTestLights");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module->name(), "TypeTestLights");
  ASSERT_EQ(module->type().size(), 2U);
  EXPECT_EQ(module->type()[0].name(), "Mox::TypeTestLights::Colour");
  EXPECT_EQ(module->type()[1].name(), "Mox::TypeTestLights::Lamp");
}

TEST(Module, unknownNameIsNull) {
  EXPECT_EQ(moxModule("TypeTestLight"), nullptr);
  EXPECT_EQ(moxModule(""), nullptr);
  EXPECT_EQ(moxModule("typetestlights"), nullptr);
}

TEST(Module, namesAreAlphabetical) {
  // Tests may be repeated in one process, a module cannot be registered twice.
  if (moxModule("TypeTest.zz") == nullptr) moxModuleIs("TypeTest.zz", {});
  if (moxModule("TypeTest.aa") == nullptr) moxModuleIs("TypeTest.aa", {});
  const std::vector<std::string> names = moxModules();
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  for (const char* name : {"TypeTest.aa", "TypeTest.zz", "TypeTestLights"}) {
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
  }
}

TEST(Module, secondOfSameNameRaisesAndChangesNothing) {
  try {
    moxModuleIs("TypeTestLights", {entityType<Lamp>(), entityType<Bulb>(Lamp::litAttr)});
    FAIL() << "nothing was raised";
  } catch (const MutatorReinstantiatingException& e) {
    EXPECT_STREQ(e.what(), "moxModuleIs: a member of this key exists, made with other arguments");
  }
  EXPECT_EQ(moxModule("TypeTestLights")->type().size(), 2U);
  EXPECT_EQ(typeDescOf(typeid(Lamp)).attribute().size(), 3U);
  EXPECT_TRUE(typeDescOf(typeid(Bulb)).attribute().empty());
}

TEST(TypeDesc, ofRegisteredEntityListsItsAttributes) {
  const TypeDesc& desc = typeDescOf(typeid(Lamp));
  EXPECT_EQ(desc.name(), "Mox::TypeTestLights::Lamp");
  EXPECT_EQ(desc.type(), typeid(Lamp));
  ASSERT_EQ(desc.attribute().size(), 3U);
  const AttributeDesc& bulb = desc.attribute()[1];
  EXPECT_EQ(bulb.id, 1U);
  EXPECT_STREQ(bulb.name, "bulb");
  EXPECT_TRUE(bulb.isCollection);
  EXPECT_FALSE(desc.attribute()[0].isCollection);
  EXPECT_TRUE(desc.value().empty());
}

TEST(TypeDesc, attributeIsFoundById) {
  const TypeDesc& desc = typeDescOf(typeid(Lamp));
  ASSERT_NE(desc.attribute(4), nullptr);
  EXPECT_STREQ(desc.attribute(4)->name, "watt");
  EXPECT_STREQ(desc.attribute(0)->name, "lit");
  EXPECT_EQ(desc.attribute(2), nullptr);
  EXPECT_EQ(desc.attribute(5), nullptr);
}

TEST(TypeDesc, attributesStandByAscendingId) {
  const TypeDesc desc = entityType<Lamp>(Lamp::wattAttr, Lamp::litAttr, Lamp::bulbAttr);
  std::vector<AttributeId> ids;
  for (const AttributeDesc& attribute : desc.attribute()) ids.push_back(attribute.id);
  EXPECT_EQ(ids, (std::vector<AttributeId>{0, 1, 4}));
}

TEST(TypeDesc, ofRegisteredEnumerationListsItsValues) {
  const TypeDesc& desc = typeDescOf(typeid(Colour));
  ASSERT_EQ(desc.value().size(), 2U);
  EXPECT_EQ(desc.value()[1].value, 1U);
  EXPECT_STREQ(desc.value()[1].name, "green");
  EXPECT_TRUE(desc.attribute().empty());
  EXPECT_EQ(desc.attribute(0), nullptr);
}

TEST(TypeDesc, ofTypeThatNobodyRegisteredHasJustItsName) {
  struct Unknown {};
  const TypeDesc& desc = typeDescOf(typeid(Unknown));
  EXPECT_EQ(desc.name(), typeName(typeid(Unknown)));
  EXPECT_EQ(desc.type(), typeid(Unknown));
  EXPECT_TRUE(desc.attribute().empty());
  EXPECT_TRUE(desc.value().empty());
  EXPECT_EQ(&typeDescOf(typeid(Unknown)), &desc) << "it lives as long as the process";
}

TEST(TypeDesc, askedForBeforeRegistrationIsCompletedByIt) {
  struct Late : Lamp {};
  const TypeDesc& desc = typeDescOf(typeid(Late));
  if (moxModule("TypeTest.late") == nullptr) {
    EXPECT_TRUE(desc.attribute().empty());
    moxModuleIs("TypeTest.late", {entityType<Late>(Lamp::litAttr)});
  }
  EXPECT_EQ(&typeDescOf(typeid(Late)), &desc);
  ASSERT_EQ(desc.attribute().size(), 1U);
  EXPECT_STREQ(desc.attribute()[0].name, "lit");
}

TEST(TypeDesc, isThatOfDynamicType) {
  const auto lamp = makePtr<Lamp>();
  const PtrInterface& object = *lamp;
  EXPECT_EQ(&object.fwkType(), &typeDescOf(typeid(Lamp)));
  EXPECT_STREQ(object.fwkType().attribute(Lamp::bulbAttr.id())->name, "bulb");
}

TEST(TypeName, isSpelledAsInTheSource) {
  EXPECT_EQ(typeName(typeid(Lamp)), "Mox::TypeTestLights::Lamp");
  EXPECT_EQ(typeName(typeid(Entity)), "Mox::Entity");
  EXPECT_EQ(typeName(typeid(PtrInterface::NotifieeConst)), "Mox::PtrInterface::NotifieeConst");
  EXPECT_EQ(typeName(typeid(int)), "int");
  EXPECT_EQ(typeName(typeid(Ptr<const Lamp>)), "Mox::Ptr<Mox::TypeTestLights::Lamp const>");
}

}  // namespace TypeTest
}  // namespace Mox
