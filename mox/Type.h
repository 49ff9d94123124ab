// What the framework knows of types and modules at run time.
//
// A module (a shared library, as a rule) registers descriptions of its types from a static initialiser:
//
//   const bool registered = Mox::moxModuleIs(
//       "Lights", {Mox::enumerationType<Colour>(), Mox::entityType<Lamp>(Lamp::litAttr, Lamp::bulbAttr)});
//
// Tools use them: the entity printer to name an entity's type, a change feed to name the attribute that changed, a
// shell to list an enumeration's values. Types that nobody registered have a description with just their name.

#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "mox/Attribute.h"
#include "mox/Ptr.h"
#include "mox/Public.h"

namespace Mox {

struct AttributeDesc {
  AttributeId id;
  const char* name;
  bool isCollection;
};

struct EnumValueDesc {
  std::uint32_t value;
  const char* name;
};

class TypeDesc {
 public:
  TypeDesc(const std::type_info& type, std::string name) : type_(&type), name_(std::move(name)) {}

  /// The qualified name, such as "Topology::Library::Port".
  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  [[nodiscard]] const std::type_info& type() const noexcept { return *type_; }
  /// The attributes of a registered entity type, by ascending id.
  [[nodiscard]] const std::vector<AttributeDesc>& attribute() const noexcept { return attribute_; }
  /// The values of a registered enumeration.
  [[nodiscard]] const std::vector<EnumValueDesc>& value() const noexcept { return value_; }
  /// The attribute with this id, or null.
  [[nodiscard]] MOX_PUBLIC const AttributeDesc* attribute(AttributeId id) const noexcept;

  /// Given in any order.
  MOX_PUBLIC void attributeIs(std::vector<AttributeDesc> attribute);
  void valueIs(std::vector<EnumValueDesc> value) { value_ = std::move(value); }

 private:
  const std::type_info* type_;
  std::string name_;
  std::vector<AttributeDesc> attribute_;
  std::vector<EnumValueDesc> value_;
};

class ModuleDesc {
 public:
  ModuleDesc(std::string name, std::vector<TypeDesc> type) : name_(std::move(name)), type_(std::move(type)) {}

  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  [[nodiscard]] const std::vector<TypeDesc>& type() const noexcept { return type_; }

 private:
  std::string name_;
  std::vector<TypeDesc> type_;
};

/// Registers a module and its types; returns true. A second module of the same name raises
/// MutatorReinstantiatingException.
MOX_PUBLIC bool moxModuleIs(std::string_view name, std::vector<TypeDesc> types);

/// The module of this name, or null.
[[nodiscard]] MOX_PUBLIC const ModuleDesc* moxModule(std::string_view name);
/// The names of all modules, in alphabetical order.
[[nodiscard]] MOX_PUBLIC std::vector<std::string> moxModules();

/// The description of a type: the registered one, else one with just the name. Lives as long as the process.
[[nodiscard]] MOX_PUBLIC const TypeDesc& typeDescOf(const std::type_info& type);

/// A type's name as the source spells it: "Mox::Clock".
[[nodiscard]] MOX_PUBLIC std::string typeName(const std::type_info& type);

/// Describes an entity type by its attribute constants, for `moxModuleIs`.
template <class T, class... Attributes>
[[nodiscard]] TypeDesc entityType(const Attributes&... attributes) {
  TypeDesc desc(typeid(T), typeName(typeid(T)));
  desc.attributeIs({AttributeDesc{attributes.id(), attributes.name(), Attributes::isCollection}...});
  return desc;
}

}  // namespace Mox
