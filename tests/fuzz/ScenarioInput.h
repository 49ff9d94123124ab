// What the scenario language must do with any lines whatever.
//
// A line is good, or it raises ScenarioError or an exception of the framework and changes nothing. In the end the
// configuration, written as commands and run in a new session, is the same configuration.
//
// Lines that the program may take its time for, or for which it may abort, are passed over:
//   - long lists and ranges, and many rounds;
//   - an expansion chain. A VLAN that others expand into must not expand itself; the library asserts that;
//   - changes while the library watches the plain status and has no interfaces. It needs them for every topology, and
//     asserts that it has got them.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>

#include "kestrel/Kestrel.h"
#include "mox/Exception.h"
#include "mox/Trace.h"
#include "tests/fuzz/Require.h"
#include "topo/Arguments.h"
#include "topo/Documents.h"
#include "topo/ScenarioError.h"
#include "topo/Session.h"
#include "topo/ShowConfig.h"
#include "topo/Words.h"

namespace Test {

namespace detail {

// Enough for every command to meet every other, and for one input to take some milliseconds.
inline constexpr std::size_t maxLines = 60;
inline constexpr std::size_t maxMembers = 8;
inline constexpr std::size_t maxRoundsDigits = 3;

/// How many VLANs, or interfaces, a word stands for.
[[nodiscard]] inline std::size_t membersOf(const Topo::Word& word) {
  std::size_t most = 0;
  const auto count = [&most](const auto& list) {
    std::size_t members = 0;
    list.forEach([&members](const auto& /*member*/) { ++members; });
    most = std::max(most, members);
  };
  try {
    count(Topo::VlanList::parse(word));
  } catch (const Topo::ScenarioError&) {
  } catch (const Mox::Exception&) {
  }
  try {
    count(Topo::IntfRange::parse(word));
  } catch (const Topo::ScenarioError&) {
  }
  return most;
}

/// Passes over lines that a session may not get.
class Sieve {
 public:
  [[nodiscard]] bool lets(std::string_view line, const Topo::Agent& agent) {
    try {
      return isQuick(line) && !makesChain(line) && !(lacksInterfaces(agent) && isChange(line));
    } catch (const Topo::ScenarioError&) {
      return true;  // a bad line, which the session has to find out, too
    } catch (const Mox::Exception&) {
      return true;
    }
  }

 private:
  [[nodiscard]] static bool isQuick(std::string_view line) {
    Topo::Words words(line);
    const bool isDispatch = words.nextIf("dispatch");
    while (const std::optional<Topo::Word> word = words.next()) {
      if (isDispatch && word->text.size() > maxRoundsDigits) return false;
      if (word->text.find_first_of(",-") != std::string::npos && membersOf(*word) > maxMembers) return false;
    }
    return true;
  }

  [[nodiscard]] static bool lacksInterfaces(const Topo::Agent& agent) {
    const Topology::Library::LibSm* const libSm = agent.libSm();
    return libSm != nullptr && libSm->status() != nullptr && libSm->ethIntfStatusDir() == nullptr;
  }
  /// Whether the line may change the configuration, or let the library work.
  [[nodiscard]] static bool isChange(std::string_view line) {
    constexpr std::array names{"interface", "vlan", "topology", "map",     "status", "instance",
                               "force",     "no",   "dispatch", "advance", "settle"};
    Topo::Words words(line);
    return std::ranges::any_of(names, [&words](const char* name) { return words.nextIf(name); });
  }

  /// Remembers every expansion, since the library may still be at work on one that is configured no more.
  [[nodiscard]] bool makesChain(std::string_view line) {
    Topo::Words words(line);
    if (!words.nextIf("vlan")) return false;
    const Topo::VlanList vlans = Topo::takeVlans(words);
    while (std::optional<Topo::Word> word = words.next()) {
      if (*word != "expand") continue;
      const Bridging::VlanIdOrNone expanded = Topo::takeVlanOrNone(words);
      if (expanded.isNone()) return false;
      expanded_.insert(expanded.value());
      vlans.forEach([this](Bridging::VlanId vid) { expanding_.insert(vid.value()); });
      return std::ranges::any_of(expanding_, [this](unsigned vid) { return expanded_.contains(vid); });
    }
    return false;
  }

  std::set<unsigned> expanding_;
  std::set<unsigned> expanded_;
};

/// Swallows what a session prints.
class Nowhere : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }
};

/// What the process shares between sessions, as it is at the start.
class FreshProcess : public Mox::TraceSink {
 public:
  FreshProcess() {
    constexpr std::size_t logBytes = 4096;
    Kestrel::traceFileIs(logBytes);
    Mox::traceSinkIs(this);
  }
  FreshProcess(const FreshProcess&) = delete;
  FreshProcess& operator=(const FreshProcess&) = delete;
  ~FreshProcess() override {
    for (const std::string& facility : Mox::traceFacilities()) Mox::traceLevelsIs(facility, Mox::traceNone);
    Mox::traceSinkIs(nullptr);
    Kestrel::traceFileDel();
  }
  void write(const Mox::TraceRecord& /*record*/) override {}
};

[[nodiscard]] inline std::string configOf(const Topo::Session& session) {
  std::ostringstream text;
  Topo::showConfig(session.agent(), text);
  return text.str();
}

/// The configuration, and what the library and the view publish.
[[nodiscard]] inline std::string contentsOf(const Topo::Session& session) {
  std::string text = configOf(session);
  for (const auto document : {Topo::Document::state, Topo::Document::view}) {
    text += Topo::lineOf(Topo::documentOf(session.agent(), document)) + '\n';
  }
  return text;
}

/// Runs the lines, and returns the configuration that they make.
[[nodiscard]] inline std::string configAfter(std::string_view scenario) {
  Nowhere nowhere;
  std::ostream out(&nowhere);
  Topo::Session session({.isColoured = true, .out = &out, .err = &out});
  Sieve sieve;
  std::string before = contentsOf(session);
  std::istringstream lines{std::string(scenario)};
  std::size_t count = 0;
  for (std::string line; std::getline(lines, line) && count < maxLines; ++count) {
    if (!sieve.lets(line, session.agent())) continue;
    bool isGood = false;
    try {
      session.execute(line);
      isGood = true;
    } catch (const Topo::ScenarioError&) {
    } catch (const Mox::Exception&) {
    }
    std::string after = contentsOf(session);
    require(isGood || after == before, "a bad line has changed something", line);
    before = std::move(after);
  }
  return configOf(session);
}

/// Runs a configuration as `show config` writes it.
[[nodiscard]] inline std::string replayed(const std::string& config) {
  Nowhere nowhere;
  std::ostream out(&nowhere);
  Topo::Session session({.out = &out, .err = &out});
  std::istringstream lines(config);
  for (std::string line; std::getline(lines, line);) {
    try {
      session.execute(line);
    } catch (const std::runtime_error& error) {
      require(false, error.what(), line);
    }
  }
  return configOf(session);
}

}  // namespace detail

inline void playScenario(std::string_view scenario) {
  const detail::FreshProcess process;
  const std::string config = detail::configAfter(scenario);
  require(detail::replayed(config) == config, "the replayed configuration is another one", config);
}

}  // namespace Test
