// What the import of Linux bridges must do with any input whatever.
//
// An import gives a scenario or one line of error. The scenario is the same each time, and each line of it is a command of
// the configuration whose names cannot be taken for anything else.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/Require.h"
#include "topo/Import.h"
#include "topo/LinuxBridge.h"

namespace Test {

namespace detail {

inline constexpr char importSeparator = '\f';

[[nodiscard]] inline std::vector<std::string> split(std::string_view input) {
  std::vector<std::string> texts;
  for (;;) {
    const auto end = input.find(importSeparator);
    texts.emplace_back(input.substr(0, end));
    if (end == std::string_view::npos) return texts;
    input.remove_prefix(end + 1);
  }
}

[[nodiscard]] inline bool isConfiguration(std::string_view line) {
  constexpr std::array commands{"interface ", "vlan ", "topology ", "map ", "instance "};
  return std::ranges::any_of(commands, [line](const char* command) { return line.starts_with(command); });
}

[[nodiscard]] inline bool isPrintable(std::string_view line) {
  return std::ranges::none_of(line, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

[[nodiscard]] inline bool hasOpenQuote(std::string_view line) {
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

inline void checkScenario(const std::string& scenario) {
  std::istringstream lines(scenario);
  for (std::string line; std::getline(lines, line);) {
    require(isConfiguration(line), "no command of the configuration", line);
    require(isPrintable(line), "control characters", line);
    require(!hasOpenQuote(line), "a quote is open", line);
  }
  require(scenario.ends_with('\n'), "the last line is open", scenario);
}

[[nodiscard]] inline std::string scenarioOf(const Topo::LinuxCapture& capture,
                                            const std::optional<std::string>& bridge) {
  std::ostringstream out;
  Topo::writeScenario(Topo::readLinuxBridge(capture, bridge), out);
  return out.str();
}

}  // namespace detail

/// An input is up to five texts with a form feed between them: link, vlan, mst, vlan-global, and the name of the bridge.
/// The texts of MST and the name may be missing.
inline void playImport(std::string_view input) {
  using namespace detail;
  auto texts = split(input);
  const auto isGiven = [&](std::size_t i) { return i < texts.size() && !texts[i].empty(); };
  texts.resize(std::max<std::size_t>(texts.size(), 2));
  Topo::LinuxCapture capture{{"link.json", texts[0]}, {"vlan.json", texts[1]}, {}, {}};
  if (isGiven(2)) capture.mst = Topo::LinuxCapture::File{"mst.json", texts[2]};
  if (isGiven(3)) capture.vlanGlobal = Topo::LinuxCapture::File{"vlan-global.json", texts[3]};
  const auto bridge = isGiven(4) ? std::optional(texts[4]) : std::nullopt;
  try {
    const auto scenario = scenarioOf(capture, bridge);
    checkScenario(scenario);
    require(scenario == scenarioOf(capture, bridge), "not the same again", scenario);
  } catch (const Topo::LinuxCaptureError& error) {
    require(isPrintable(error.what()), "more than a line", error.what());
    require(std::string_view(error.what()).find(": error: ") != std::string_view::npos, "no error", error.what());
  }
}

}  // namespace Test
