// What the fuzz targets and the replay of their corpora say of an input that shows a defect.

#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace Test {

/// Lets nobody take it for an error that the program reports.
class Defect : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

inline void require(bool holds, const std::string& what, std::string_view text) {
  if (!holds) throw Defect(what + ": " + std::string(text));
}

}  // namespace Test
