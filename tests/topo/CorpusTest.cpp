// Plays the corpora of the fuzz targets.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/fuzz/ImportInput.h"
#include "tests/fuzz/ScenarioInput.h"

namespace Topo::CorpusTest {

namespace fs = std::filesystem;

using Test::Defect;
using Test::playImport;
using Test::playScenario;
using Test::require;
using Test::detail::Sieve;

/// The inputs of a corpus, in the order of their names; the tests run somewhere in the tree.
std::vector<fs::path> corpus(const std::string& name) {
  for (auto root = fs::current_path(); root != root.parent_path(); root = root.parent_path()) {
    const auto dir = root / "tests/fuzz" / name;
    if (!fs::exists(dir)) continue;
    std::vector<fs::path> files(fs::directory_iterator(dir), {});
    std::sort(files.begin(), files.end());
    return files;
  }
  throw std::runtime_error("no tests/fuzz/" + name + " from the current directory upwards");
}

void playEach(const std::string& name, void (*play)(std::string_view)) {
  const std::vector<fs::path> files = corpus(name);
  EXPECT_FALSE(files.empty());
  for (const fs::path& file : files) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    EXPECT_NO_THROW(play(text.str())) << file;
  }
}

TEST(Corpus, ofTheImportShowsNoDefect) { playEach("corpus-import", playImport); }

TEST(Corpus, ofTheScenarioLanguageShowsNoDefect) { playEach("corpus-scenario", playScenario); }

TEST(Corpus, aDefectIsTold) {
  EXPECT_NO_THROW(require(true, "a reason", "a text"));
  EXPECT_THROW(require(false, "a reason", "a text"), Defect);
}

TEST(ScenarioInput, passesOverWhatTheProgramMayTakeLongForOrAbortOn) {
  Sieve sieve;
  const Agent agent;
  const auto lets = [&](std::string_view line) { return sieve.lets(line, agent); };
  EXPECT_TRUE(lets("vlan 1-7,10 bad"));
  EXPECT_TRUE(lets("dispatch 999"));
  EXPECT_FALSE(lets("dispatch 1000"));
  EXPECT_FALSE(lets("vlan 1-4094"));
  EXPECT_FALSE(lets("interface Ethernet1-9"));
  EXPECT_TRUE(lets("vlan 20 expand 10"));
  EXPECT_TRUE(lets("vlan 20 expand none"));
  EXPECT_FALSE(lets("vlan 10 expand 30"));
}

}  // namespace Topo::CorpusTest
