// docs/agents.md shows pieces of programs that are built: each is found in the file that the comment before it names,
//
//   <!-- from: examples/chip_agent.cpp -->
//
// line by line, wherever it is indented to.

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <vector>

#include "tests/topo/Docs.h"

namespace Topo::AgentsGuideTest {

using Test::docText;
using Test::linesOf;

using Lines = std::vector<std::string>;

/// Lines without the indentation that they have in common.
[[nodiscard]] Lines dedented(Lines lines) {
  std::size_t indentation = std::string::npos;
  for (const std::string& line : lines) indentation = std::min(indentation, line.find_first_not_of(' '));
  for (std::string& line : lines) line.erase(0, std::min(indentation, line.size()));
  return lines;
}

[[nodiscard]] bool hasPiece(const Lines& file, const Lines& piece) {
  for (std::size_t at = 0; at + piece.size() <= file.size(); ++at) {
    const auto begin = file.begin() + static_cast<std::ptrdiff_t>(at);
    if (dedented(Lines(begin, begin + static_cast<std::ptrdiff_t>(piece.size()))) == piece) return true;
  }
  return false;
}

TEST(AgentsGuide, itsFragmentsAreOfProgramsThatAreBuilt) {
  static const std::regex marker("<!-- from: ([A-Za-z0-9_./]+) -->");
  const Lines lines = linesOf(docText("agents.md"));
  std::size_t count = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!lines[i].starts_with("```cpp") && !lines[i].starts_with("```cmake")) continue;
    std::smatch match;
    ASSERT_TRUE(i > 0 && std::regex_match(lines[i - 1], match, marker)) << "agents.md:" << i << ": no <!-- from: -->";
    const auto begin = lines.begin() + static_cast<std::ptrdiff_t>(i) + 1;
    const Lines piece(begin, std::find(begin, lines.end(), "```"));
    ASSERT_FALSE(piece.empty()) << "agents.md:" << i;
    EXPECT_TRUE(hasPiece(linesOf(docText("../" + match[1].str())), piece))
        << "agents.md:" << i + 2 << ": not in " << match[1];
    ++count;
  }
  EXPECT_GT(count, 5U);
}

}  // namespace Topo::AgentsGuideTest
