#include "topo/RunCommands.h"

#include "topo/Arguments.h"
#include "topo/Session.h"

namespace Topo {

namespace {

using Topology::Library::LibSmMode;
using Watch = LibraryStart::Watch;

constexpr std::string_view parts = "library, publisher or view";

/// One of several words, as the value that stands for it.
template <class T>
[[nodiscard]] T takeChoice(Words& words, std::initializer_list<std::pair<std::string_view, T>> choices) {
  const std::optional<Word> word = words.next();
  std::vector<std::string> names;
  for (const auto& [name, value] : choices) {
    if (word && *word == name) return value;
    names.emplace_back(name);
  }
  throwUnexpected(alternatives(names), word);
}

[[nodiscard]] LibraryStart takeLibraryStart(Words& words) {
  std::optional<LibSmMode> mode;
  std::optional<Watch> watch;
  std::optional<bool> ignoreInternal;
  std::optional<bool> isDeferred;
  std::optional<Mox::String> filter;
  std::optional<bool> hasInterfaces;
  std::optional<Mox::String> name;
  while (const std::optional<Word> word = words.next()) {
    if (*word == "mode") {
      setOnce(mode, "mode", takeEnum<LibSmMode>(words));
    } else if (*word == "watch") {
      setOnce(
          watch, "watch",
          takeChoice<Watch>(words, {{"status", Watch::status}, {"instance", Watch::instance}, {"none", Watch::none}}));
    } else if (*word == "ignore-internal") {
      setOnce(ignoreInternal, "ignore-internal", true);
    } else if (*word == "deferred" || *word == "immediate") {
      setOnce(isDeferred, "deferred or immediate", *word == "deferred");
    } else if (*word == "filter") {
      setOnce(filter, "filter",
              takeChoice<Mox::String>(words, {{"LocalInterface", "LocalInterface"}, {"none", "none"}}));
    } else if (*word == "interfaces") {
      setOnce(hasInterfaces, "interfaces", takeChoice<bool>(words, {{"now", true}, {"later", false}}));
    } else if (*word == "name") {
      setOnce(name, "name", takeName(words, "library"));
    } else {
      throwUnexpected("mode, watch, ignore-internal, deferred, immediate, filter, interfaces or name", word);
    }
  }
  const LibraryStart defaults;
  return {mode.value_or(defaults.mode),
          watch.value_or(defaults.watch),
          ignoreInternal.value_or(defaults.ignoreInternal),
          isDeferred.value_or(defaults.isDeferred),
          filter.value_or(defaults.filter),
          hasInterfaces.value_or(defaults.hasInterfaces),
          name.value_or(defaults.name)};
}

/// `interfaces`, the only thing that can be attached.
void takeInterfaces(Words& words) {
  const std::optional<Word> word = words.next();
  if (!word || *word != "interfaces") throwUnexpected("interfaces", word);
  words.finish();
}

}  // namespace

void startCommand(Session& session, Words& words) {
  const std::optional<Word> part = words.next();
  if (part && *part == "library") {
    session.agent().startLibrary(takeLibraryStart(words));
    session.libraryMayHaveChanged();
  } else if (part && *part == "publisher") {
    words.finish();
    session.agent().startPublisher();
  } else if (part && *part == "view") {
    words.finish();
    session.agent().startView();
  } else {
    throwUnexpected(parts, part);
  }
}

void stopCommand(Session& session, Words& words) {
  const std::optional<Word> part = words.next();
  if (!part || (*part != "library" && *part != "publisher" && *part != "view")) throwUnexpected(parts, part);
  words.finish();
  if (*part == "library") {
    session.agent().stopLibrary();
    session.libraryMayHaveChanged();
  } else if (*part == "publisher") {
    session.agent().stopPublisher();
  } else {
    session.agent().stopView();
  }
}

void attachCommand(Session& session, Words& words) {
  takeInterfaces(words);
  session.agent().attachInterfaces();
  session.libraryMayHaveChanged();
}

void detachCommand(Session& session, Words& words) {
  takeInterfaces(words);
  session.agent().detachInterfaces();
}

void setCommand(Session& session, Words& words) {
  const std::optional<Word> what = words.next();
  LibrarySettings settings;
  if (what && *what == "threshold") {
    settings.threshold = static_cast<std::uint16_t>(takeNumber(words, "threshold", UINT16_MAX));
  } else if (what && *what == "quantum") {
    settings.quantum = takeSeconds(words, "quantum");
  } else if (what && *what == "yield-after-one") {
    settings.yieldAfterOne = takeOnOff(words, "yield-after-one");
  } else if (what && *what == "tick") {
    const double tick = takeSeconds(words, "tick");
    words.finish();
    session.loop().tickIs(tick);
    return;
  } else {
    throwUnexpected("threshold, quantum, yield-after-one or tick", what);
  }
  words.finish();
  session.agent().settingsIs(settings);
}

void dispatchCommand(Session& session, Words& words) {
  std::uint32_t rounds = 1;
  if (Words ahead = words; ahead.next()) rounds = takeNumber(words, "the number of rounds");
  words.finish();
  for (std::uint32_t round = 0; round < rounds; ++round) session.loop().dispatch();
}

void advanceCommand(Session& session, Words& words) {
  const double seconds = takeSeconds(words, "the time to advance by");
  words.finish();
  session.loop().advance(seconds);
}

void settleCommand(Session& session, Words& words) {
  words.finish();
  session.loop().settle();
}

}  // namespace Topo
