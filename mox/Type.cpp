#include "mox/Type.h"

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <typeindex>

#include "mox/Exception.h"

namespace Mox {

namespace {

// Both are made on first use, since modules register from static initialisers in any order, and are never destroyed,
// since objects may be printed by the destructors of other static objects.
using Modules = std::map<std::string, ModuleDesc, std::less<>>;
using Types = std::map<std::type_index, TypeDesc>;

Modules& modules() {
  static auto& instance = *new Modules;
  return instance;
}

Types& types() {
  static auto& instance = *new Types;
  return instance;
}

}  // namespace

const AttributeDesc* TypeDesc::attribute(AttributeId id) const noexcept {
  const auto found = std::find_if(attribute_.begin(), attribute_.end(), [id](const auto& a) { return a.id == id; });
  return found == attribute_.end() ? nullptr : &*found;
}

void TypeDesc::attributeIs(std::vector<AttributeDesc> attribute) {
  attribute_ = std::move(attribute);
  std::sort(attribute_.begin(), attribute_.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
}

bool moxModuleIs(std::string_view name, std::vector<TypeDesc> newTypes) {
  if (modules().contains(name)) throwMutatorReinstantiating("moxModuleIs");
  for (const TypeDesc& type : newTypes) types().insert_or_assign(std::type_index(type.type()), type);
  modules().emplace(name, ModuleDesc(std::string(name), std::move(newTypes)));
  return true;
}

const ModuleDesc* moxModule(std::string_view name) {
  const auto found = modules().find(name);
  return found == modules().end() ? nullptr : &found->second;
}

std::vector<std::string> moxModules() {
  std::vector<std::string> names;
  for (const auto& [name, module] : modules()) names.push_back(name);
  return names;
}

const TypeDesc& typeDescOf(const std::type_info& type) {
  const auto found = types().find(std::type_index(type));
  if (found != types().end()) return found->second;
  return types().emplace(std::type_index(type), TypeDesc(type, typeName(type))).first->second;
}

std::string typeName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                    std::free);
  return text ? text.get() : type.name();
}

}  // namespace Mox
