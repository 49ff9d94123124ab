// What a module says of its types, for tests.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mox/Type.h"

namespace Test {

/// The attributes of an entity type by ascending id, collections with brackets.
inline std::vector<std::string> attributesOf(const Mox::TypeDesc& type) {
  std::vector<std::string> names;
  for (const auto& attribute : type.attribute()) {
    EXPECT_EQ(attribute.id, names.size()) << type.name() << ' ' << attribute.name;
    names.push_back(std::string(attribute.name) + (attribute.isCollection ? "[]" : ""));
  }
  return names;
}

}  // namespace Test
