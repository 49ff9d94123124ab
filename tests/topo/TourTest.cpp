// docs/tour.md never goes stale: it is played, and its links, like those of the other documents, lead somewhere.

#include "tests/topo/PlayedDocument.h"

namespace Topo::TourTest {

using Test::docText;
using Test::playDocument;
using Test::sourceRoot;

TEST(Tour, everyOutputIsReal) { playDocument("tour.md", 15); }

TEST(Tour, linksLeadSomewhere) {
  static const std::regex link(R"(\]\(([^)#]+)[^)]*\))");
  for (const char* const file : {"tour.md", "language.md", "agents.md", "../README.md"}) {
    const std::string text = docText(file);
    const std::filesystem::path folder = (sourceRoot() / "docs" / file).parent_path();
    std::size_t count = 0;
    for (std::sregex_iterator i(text.begin(), text.end(), link); i != std::sregex_iterator(); ++i, ++count) {
      EXPECT_TRUE(exists(folder / (*i)[1].str())) << file << ": " << (*i)[1];
    }
    EXPECT_GT(count, 0U) << file;
  }
}

}  // namespace Topo::TourTest
