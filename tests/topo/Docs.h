// The documents of docs/, as the tests read them. The tests run somewhere in the tree.

#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Test {

/// The top of the source tree.
[[nodiscard]] inline std::filesystem::path sourceRoot() {
  for (auto root = std::filesystem::current_path(); root != root.parent_path(); root = root.parent_path()) {
    if (exists(root / "docs/tour.md")) return root;
  }
  throw std::runtime_error("no docs/tour.md from the current directory upwards");
}

/// What a file holds, by its path from docs/ on.
[[nodiscard]] inline std::string docText(const std::string& file) {
  std::ifstream in(sourceRoot() / "docs" / file);
  if (!in) throw std::runtime_error("cannot read docs/" + file);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

/// The lines of a text.
[[nodiscard]] inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

}  // namespace Test
