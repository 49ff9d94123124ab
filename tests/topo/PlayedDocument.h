// Documents that are played: the blocks of docs/*.md are run, and what they print is compared with what the document shows.
//
// A comment before each block says what it is:
//
//   <!-- scenario -->                what `topo run` reads
//   <!-- scenario, continued -->     goes on where the scenario before it ends
//   <!-- shell -->                   what the shell runs at the top of the source tree
//   <!-- output -->                  what the block before prints; without it, it prints nothing
//   <!-- errors, status N -->        what it writes to standard error, and how it ends; without it, nothing and 0
//   <!-- usage -->                   usage lines of the language, which are not run

#pragma once

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "tests/topo/Docs.h"
#include "tests/topo/Run.h"

namespace Test {

struct Block {
  std::size_t line = 0;  // of the tour, where it begins
  std::string marker;
  std::string text;
};

/// A block that is run, and what it is to do.
struct Step {
  Block block;
  std::string out;
  std::string err;
  int status = 0;
};

/// All fenced blocks of a document. One without a marker is an error: nobody would look whether it is true.
inline std::vector<Block> blocksOf(const std::string& file) {
  const std::string text = docText(file);
  std::vector<Block> blocks;
  std::istringstream lines(text);
  std::string marker;
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (line.starts_with("<!-- ") && line.ends_with(" -->")) {
      marker = line.substr(5, line.size() - 9);
    } else if (line.starts_with("```")) {
      Block block{number + 1, std::exchange(marker, {}), {}};
      EXPECT_NE(block.marker, "") << file << ':' << number << ": a block without a marker";
      while (std::getline(lines, line) && line != "```") {
        ++number;
        block.text += line + '\n';
      }
      ++number;
      blocks.push_back(std::move(block));
    } else if (!line.empty()) {
      EXPECT_EQ(marker, "") << file << ':' << number << ": no block follows the marker";
    }
  }
  return blocks;
}

inline std::vector<Step> stepsOf(const std::string& file) {
  static const std::regex errors("errors, status ([0-9]+)");
  std::vector<Step> steps;
  for (Block& block : blocksOf(file)) {
    if (block.marker == "usage") continue;
    std::smatch match;
    if (block.marker == "output" && !steps.empty()) {
      steps.back().out = block.text;
    } else if (std::regex_match(block.marker, match, errors) && !steps.empty()) {
      steps.back().status = std::stoi(match[1]);
      steps.back().err = block.text;
    } else {
      steps.push_back({std::move(block), {}, {}});
    }
  }
  return steps;
}

/// The text without the only figure in it that differs from run to run.
inline std::string steady(const std::string& text) {
  static const std::regex realTime("[0-9.]+ ms of real time");
  return std::regex_replace(text, realTime, "? ms of real time");
}

/// What the shell does with the text at the top of the source tree, where `topo` is the program under test.
inline Outcome runShell(const std::string& text) {
  const std::filesystem::path program(std::getenv("TOPO_PROGRAM"));
  const std::string command = "cd '" + sourceRoot().string() + "' && PATH='" + program.parent_path().string() +
                              "':\"$PATH\" && {\n" + text + "}\n";
  Outcome outcome;
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("no shell");
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) outcome.out += static_cast<char>(c);
  outcome.status = WEXITSTATUS(pclose(pipe));
  return outcome;
}

/// Runs the blocks in their order, each scenario with those that it continues.
class Player {
 public:
  [[nodiscard]] Outcome play(const Block& block) {
    if (block.marker == "shell") return runShell(block.text);
    EXPECT_TRUE(block.marker == "scenario" || block.marker == "scenario, continued") << block.marker;
    if (block.marker == "scenario") {
      scenario_.clear();
      printed_.clear();
    }
    scenario_ += block.text;
    Outcome outcome = runScenario(scenario_);
    const std::string all = steady(outcome.out);
    EXPECT_TRUE(all.starts_with(printed_)) << "what was played before is different now";
    outcome.out = all.substr(std::min(printed_.size(), all.size()));
    printed_ = all;
    return outcome;
  }

 private:
  std::string scenario_;
  std::string printed_;
};

/// Runs every block of a document, and compares.
inline void playDocument(const std::string& file, std::size_t minBlocks) {
  const std::vector<Step> steps = stepsOf(file);
  EXPECT_GE(steps.size(), minBlocks);
  Player player;
  for (const Step& step : steps) {
    SCOPED_TRACE(file + ':' + std::to_string(step.block.line));
    const Outcome outcome = player.play(step.block);
    EXPECT_EQ(steady(outcome.out), steady(step.out));
    EXPECT_EQ(outcome.err, step.err);
    EXPECT_EQ(outcome.status, step.status);
  }
}

}  // namespace Test
