// Feeds the import of Linux bridges with anything, for libFuzzer:
//
//   clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address tests/fuzz/ImportFuzz.cpp topo/Import.cpp ... -o import-fuzz
//   import-fuzz -max_total_time=120 NEW_INPUTS tests/fuzz/corpus-import
//
// An input is up to five texts with a form feed between them: link, vlan, mst, vlan-global, and the name of the bridge.
// The texts of MST and the name may be missing.
//
// An import gives a scenario or one line of error. The scenario is the same each time, and each line of it is a command of
// the configuration whose names cannot be taken for anything else.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "topo/Import.h"
#include "topo/LinuxBridge.h"

namespace Topo {
namespace {

constexpr char separator = '\f';

[[nodiscard]] std::vector<std::string> split(std::string_view input) {
  std::vector<std::string> texts;
  for (;;) {
    const auto end = input.find(separator);
    texts.emplace_back(input.substr(0, end));
    if (end == std::string_view::npos) return texts;
    input.remove_prefix(end + 1);
  }
}

void require(bool holds, const char* what, std::string_view text) {
  if (holds) return;
  std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(text.size()), text.data());
  std::abort();
}

[[nodiscard]] bool isConfiguration(std::string_view line) {
  constexpr std::array commands{"interface ", "vlan ", "topology ", "map ", "instance "};
  return std::ranges::any_of(commands, [line](const char* command) { return line.starts_with(command); });
}

[[nodiscard]] bool isPrintable(std::string_view line) {
  return std::ranges::none_of(line, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

[[nodiscard]] bool hasOpenQuote(std::string_view line) {
  bool isOpen = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (isOpen && line[i] == '\\') {
      ++i;
    } else if (line[i] == '"') {
      isOpen = !isOpen;
    }
  }
  return isOpen;
}

void checkScenario(const std::string& scenario) {
  std::istringstream lines(scenario);
  for (std::string line; std::getline(lines, line);) {
    require(isConfiguration(line), "no command of the configuration", line);
    require(isPrintable(line), "control characters", line);
    require(!hasOpenQuote(line), "a quote is open", line);
  }
  require(scenario.ends_with('\n'), "the last line is open", scenario);
}

[[nodiscard]] std::string scenarioOf(const LinuxCapture& capture, const std::optional<std::string>& bridge) {
  std::ostringstream out;
  writeScenario(readLinuxBridge(capture, bridge), out);
  return out.str();
}

void check(std::string_view input) {
  auto texts = split(input);
  const auto isGiven = [&](std::size_t i) { return i < texts.size() && !texts[i].empty(); };
  texts.resize(std::max<std::size_t>(texts.size(), 2));
  LinuxCapture capture{{"link.json", texts[0]}, {"vlan.json", texts[1]}, {}, {}};
  if (isGiven(2)) capture.mst = LinuxCapture::File{"mst.json", texts[2]};
  if (isGiven(3)) capture.vlanGlobal = LinuxCapture::File{"vlan-global.json", texts[3]};
  const auto bridge = isGiven(4) ? std::optional(texts[4]) : std::nullopt;
  try {
    const auto scenario = scenarioOf(capture, bridge);
    checkScenario(scenario);
    require(scenario == scenarioOf(capture, bridge), "not the same again", scenario);
  } catch (const LinuxCaptureError& error) {
    require(isPrintable(error.what()), "more than a line", error.what());
    require(std::string_view(error.what()).find(": error: ") != std::string_view::npos, "no error", error.what());
  }
}

}  // namespace
}  // namespace Topo

// The name that libFuzzer looks for.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Topo::check({reinterpret_cast<const char*>(data), size});
  return 0;
}
