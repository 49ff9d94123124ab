#include "topo/Completion.h"

#include <algorithm>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "mox/Trace.h"
#include "topo/Command.h"
#include "topo/Documents.h"
#include "topo/ScenarioError.h"
#include "topo/Session.h"
#include "topo/Text.h"
#include "topo/Words.h"

namespace Topo {

namespace {

using Names = std::vector<std::string>;

/// Each of several key words, or of what a word in capitals stands for.
using Choice = Names;
using Sequence = std::vector<Choice>;

/// A usage: what must stand there, and the options behind it.
struct Usage {
  Sequence fixed;
  std::vector<Sequence> options;
};

[[nodiscard]] Choice choiceOf(const std::string& text) {
  Choice choice;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, '|');) choice.push_back(part);
  return choice;
}

[[nodiscard]] Usage usageOf(std::string_view text) {
  Usage usage;
  bool isOption = false;
  std::istringstream words{std::string(text)};
  for (std::string word; words >> word;) {
    if (word.front() == '[') {
      isOption = true;
      usage.options.emplace_back();
      word.erase(0, 1);
    }
    const bool isLast = word.back() == ']';
    if (isLast) word.pop_back();
    (isOption ? usage.options.back() : usage.fixed).push_back(choiceOf(word));
    if (isLast) isOption = false;
  }
  return usage;
}

/// Whether it is a word in capitals, which stands for others.
[[nodiscard]] bool isPlaceholder(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

[[nodiscard]] bool matches(const Choice& choice, const Word& word) {
  return std::any_of(choice.begin(), choice.end(), [&](const std::string& text) {
    if (text == "DOCUMENT") return documentOf(word.text).has_value();
    return isPlaceholder(text) || word == text;
  });
}

/// Whether `show` would refuse this option: not every document has topologies and VLANs.
[[nodiscard]] bool isRefused(const std::vector<Word>& words, const std::string& option) {
  if (words.size() < 2 || words[0] != "show") return false;
  const std::optional<Document> document = documentOf(words[1].text);
  if (!document) return false;
  return (option == "topology" && !hasTopologies(*document)) || (option == "vlan" && !hasVlans(*document));
}

/// Adds what is not there yet.
void addTo(Choice& all, const Choice& some) {
  for (const std::string& text : some) {
    if (std::find(all.begin(), all.end(), text) == all.end()) all.push_back(text);
  }
}

/// Adds what may follow the words in this usage.
void addNext(Usage usage, const std::vector<Word>& words, Choice& next) {
  std::size_t at = 0;
  // Whether the words go on behind the sequence.
  const auto passes = [&](const Sequence& sequence) {
    for (const Choice& choice : sequence) {
      if (at == words.size()) {
        addTo(next, choice);
        return false;
      }
      if (!matches(choice, words[at++])) return false;
    }
    return true;
  };
  if (!passes(usage.fixed)) return;
  while (at < words.size()) {
    const auto option = std::find_if(usage.options.begin(), usage.options.end(),
                                     [&](const Sequence& sequence) { return matches(sequence.front(), words[at]); });
    if (option == usage.options.end() || !passes(*option)) return;
    if (option->front() == Choice{"json"}) return;  // It stands last.
    usage.options.erase(option);
  }
  for (const Sequence& option : usage.options) {
    if (!isRefused(words, option.front().front())) addTo(next, option.front());
  }
}

/// What may follow the words: key words, and words in capitals for the rest.
[[nodiscard]] Choice nextOf(const std::vector<Word>& words) {
  Choice next;
  for (const Command& command : commands()) {
    for (const std::string_view usage : command.usage) {
      // What goes on like another command is in the usage of that one.
      if (!usage.ends_with("...")) addNext(usageOf(usage), words, next);
    }
  }
  if (words.empty()) next.insert(next.end(), endingWords.begin(), endingWords.end());
  return next;
}

// The names that exist, in their order.

[[nodiscard]] Names interfacesOf(const Agent& agent) {
  std::set<Quill::IntfId> all;
  const auto add = [&](const auto& byIntf) {
    for (auto i = byIntf.begin(); i; ++i) all.insert(i.key());
  };
  add(std::as_const(*agent.interfaces).intfStatus());
  for (const auto& [vid, vlan] : std::as_const(*agent.bridging).vlanConfig()) add(vlan.vlanPortConfig());
  for (const auto& [name, topo] : std::as_const(*agent.config).topoConfig()) add(topo.topoPortConfig());
  for (const auto& [name, topo] : std::as_const(*agent.status).topoStatus()) add(topo.topoPortStatus());
  for (const auto& [name, topo] : std::as_const(*agent.instance).topoStatus()) add(topo.topoPortStatus());
  add(std::as_const(*agent.view).forceEnabledPorts());
  Names names;
  for (const Quill::IntfId intf : all) names.emplace_back(intf.stringValue().view());
  return names;
}

[[nodiscard]] Names topologiesOf(const Agent& agent) {
  std::set<std::string> all;
  const auto add = [&](const auto& byName) {
    for (auto i = byName.begin(); i; ++i) all.emplace(i.key().view());
  };
  add(std::as_const(*agent.config).topoConfig());
  for (const auto& [vid, name] : std::as_const(*agent.config).vidToTopoMap()) all.emplace(name.view());
  add(std::as_const(*agent.status).topoStatus());
  add(std::as_const(*agent.instance).topoStatus());
  add(std::as_const(*agent.state).topo());
  return {all.begin(), all.end()};
}

[[nodiscard]] Names vlansOf(const Agent& agent) {
  std::set<unsigned> all;
  for (const auto& [vid, vlan] : std::as_const(*agent.bridging).vlanConfig()) all.insert(vid.value());
  for (const auto& [vid, name] : std::as_const(*agent.config).vidToTopoMap()) all.insert(vid.value());
  Names names;
  for (const unsigned vid : all) names.push_back(std::to_string(vid));
  return names;
}

/// What a word in capitals stands for. Numbers and texts are the user's own.
[[nodiscard]] Names namesOf(const std::string& placeholder, const Agent& agent) {
  Names names;
  if (placeholder == "INTF") return interfacesOf(agent);
  if (placeholder == "TOPO") return topologiesOf(agent);
  if (placeholder == "VID") return vlansOf(agent);
  if (placeholder == "FACILITY") return Mox::traceFacilities();
  if (placeholder == "DOCUMENT") {
    for (const Document document : documents()) names.emplace_back(nameOf(document));
  } else if (placeholder == "STATE") {
    for (const auto& state : moxEnumValues(Bridging::Topology::PortState{})) names.emplace_back(state.name);
  } else if (placeholder == "COMMAND") {
    for (const Command& command : commands()) names.emplace_back(command.name);
  }
  return names;
}

// The word that is being typed.

/// Where the last word of the line begins; nothing inside a comment.
[[nodiscard]] std::optional<std::size_t> lastWordOf(std::string_view line) {
  std::size_t begin = 0;
  bool isQuoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') isQuoted = !isQuoted;
    if (isQuoted) {
      if (line[i] == '\\') ++i;
      continue;
    }
    if (line[i] == '#') return std::nullopt;
    if (line[i] == ' ' || line[i] == '\t') begin = i + 1;
  }
  return begin;
}

[[nodiscard]] std::vector<Word> wordsOf(std::string_view line) {
  std::vector<Word> all;
  Words words(line);
  while (std::optional<Word> word = words.next()) all.push_back(*std::move(word));
  return all;
}

[[nodiscard]] std::string commonBeginning(const Names& texts) {
  std::string common = texts.front();
  for (const std::string& text : texts) {
    const auto [end, ignored] = std::mismatch(common.begin(), common.end(), text.begin(), text.end());
    common.erase(end, common.end());
  }
  // Half a character is none.
  while (common.size() < texts.front().size() && isContinuation(texts.front()[common.size()])) common.pop_back();
  return common;
}

}  // namespace

Completion complete(const Session& session, std::string_view line) {
  const std::optional<std::size_t> begin = lastWordOf(line);
  if (!begin) return {line.size(), {}, {}};
  Completion completion{*begin, {}, std::string(line.substr(*begin))};
  const bool isQuoted = completion.text.starts_with('"');
  std::vector<Word> words;
  std::string typed = completion.text;
  try {
    words = wordsOf(line.substr(0, *begin));
    if (isQuoted) typed = wordsOf(typed + '"').at(0).text;
  } catch (const ScenarioError&) {
    return completion;  // The line is bad already.
  }

  Names& candidates = completion.candidates;
  for (const std::string& text : nextOf(words)) {
    if (isPlaceholder(text)) {
      for (const std::string& name : namesOf(text, session.agent())) {
        if (name.starts_with(typed)) candidates.push_back(written(name));
      }
    } else if (text.starts_with(typed)) {
      addTo(candidates, {text});  // A key word may be a name as well, as of a document.
    }
  }
  if (candidates.empty()) return completion;
  // Of names with and without quotes it is empty.
  const std::string common = commonBeginning(candidates);
  if (!common.empty()) completion.text = common;
  if (candidates.size() == 1) completion.text += ' ';
  return completion;
}

}  // namespace Topo
