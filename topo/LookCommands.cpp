#include "topo/LookCommands.h"

#include <charconv>
#include <iomanip>
#include <nlohmann/json.hpp>

#include "kestrel/Kestrel.h"
#include "mox/Trace.h"
#include "topo/Arguments.h"
#include "topo/Backlog.h"
#include "topo/DocumentTable.h"
#include "topo/Explain.h"
#include "topo/Session.h"
#include "topo/ShowConfig.h"
#include "topo/Table.h"

namespace Topo {

namespace {

using Json = nlohmann::ordered_json;

[[nodiscard]] std::string documentNames() {
  std::vector<std::string> names;
  for (const Document document : documents()) names.emplace_back(nameOf(document));
  return alternatives(names);
}

/// What `show` is asked for beside the document.
struct Request {
  Part part;
  bool isJson = false;

  [[nodiscard]] bool isNarrowed() const noexcept { return part.topology || part.vlan; }
};

[[nodiscard]] Request takeRequest(Words& words, Document document) {
  Request request;
  while (const std::optional<Word> word = words.next()) {
    if (*word == "topology" && hasTopologies(document)) {
      setOnce(request.part.topology, "topology", takeName(words, "topology"));
    } else if (*word == "vlan" && hasVlans(document)) {
      setOnce(request.part.vlan, "vlan", takeVlan(words));
    } else if (*word == "json") {
      request.isJson = true;
      words.finish();
    } else {
      std::vector<std::string> options;
      if (hasTopologies(document)) options.emplace_back("topology");
      if (hasVlans(document)) options.emplace_back("vlan");
      options.emplace_back("json");
      throwUnexpected(alternatives(options), word);
    }
  }
  return request;
}

void showLog(Session& session, Words& words) {
  const bool isJson = words.nextIf("json") || session.options().isJson;
  words.finish();
  const std::vector<Kestrel::Message> messages = Kestrel::traceFile()->messages();
  if (!isJson) {
    for (const Kestrel::Message& m : messages) {
      session.out() << std::fixed << std::setprecision(6) << m.time << std::defaultfloat << '\t' << m.file << ':'
                    << m.line << '\t' << m.text << '\n';
    }
    return;
  }
  Json log = Json::array();
  for (const Kestrel::Message& m : messages) {
    log.push_back(Json{{"number", m.number}, {"time", m.time}, {"file", m.file}, {"line", m.line}, {"text", m.text}});
  }
  session.out() << lineOf(log) << '\n';
}

void printExplanation(const Explanation& explanation, std::ostream& out, bool isColoured) {
  const std::optional<std::size_t> hindrance = explanation.firstHindrance();
  out << "VLAN " << explanation.vlan << ", port " << explanation.port << '\n';
  for (std::size_t i = 0; i < explanation.facts.size(); ++i) {
    const Fact& fact = explanation.facts[i];
    const bool isMarked = hindrance == i;
    std::ostringstream line;
    line << (isMarked ? "> " : "  ") << std::left << std::setw(15) << fact.name << fact.value;
    out << (isColoured && isMarked ? coloured(line.str(), Colour::red) : line.str()) << '\n';
  }
  const Colour colour = explanation.isForwarding ? Colour::green : Colour::red;
  out << (isColoured ? coloured(explanation.verdict(), colour) : explanation.verdict()) << ".\n";
}

[[nodiscard]] Json explanationJson(const Explanation& explanation) {
  const std::optional<std::size_t> hindrance = explanation.firstHindrance();
  Json facts = Json::array();
  for (std::size_t i = 0; i < explanation.facts.size(); ++i) {
    const Fact& fact = explanation.facts[i];
    facts.push_back(
        Json{{"fact", fact.name}, {"value", fact.value}, {"hinders", fact.isHindrance}, {"first", hindrance == i}});
  }
  return Json{{"vlan", explanation.vlan.value()},     {"port", std::string(explanation.port.stringValue().view())},
              {"forwards", explanation.isForwarding}, {"pending", explanation.isPending},
              {"verdict", explanation.verdict()},     {"facts", std::move(facts)}};
}

/// A level of tracing, 0 to 31.
[[nodiscard]] unsigned levelOf(std::string_view text) {
  unsigned level = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
  if (error != std::errc() || end != text.data() + text.size() || level > 31) {
    throw ScenarioError("expected trace levels from 0 to 31 such as 2,3,8, or all or none, found '" +
                        std::string(text) + "'");
  }
  return level;
}

}  // namespace

Document takeDocument(Words& words) {
  const std::optional<Word> word = words.next();
  const std::optional<Document> document = word ? documentOf(word->text) : std::nullopt;
  if (!document) throwUnexpected("a document, " + documentNames(), word);
  return *document;
}

void showCommand(Session& session, Words& words) {
  if (words.nextIf("log")) return showLog(session, words);
  const Document document = takeDocument(words);
  Request request = takeRequest(words, document);
  const bool isJson = request.isJson || session.options().isJson;
  if (!isJson && document == Document::backlog) {
    return printBacklog(session.agent(), session.loop(), request.part.vlan, session.out(),
                        session.options().isColoured);
  }
  if (!isJson && document == Document::config && !request.isNarrowed()) {
    return showConfig(session.agent(), session.out());
  }
  // Of a configuration narrowed down to a VLAN, the topology that the VLAN belongs to.
  if (document == Document::config && request.part.vlan && !request.part.topology) {
    const Mox::String* const topology = session.agent().config->vidToTopoMap(*request.part.vlan);
    request.part.topology = topology == nullptr ? Mox::String() : *topology;
  }
  const Json json = documentOf(session.agent(), document, request.part);
  if (isJson) {
    session.out() << lineOf(json) << '\n';
  } else {
    printDocument(document, json, session.out(), session.options().isColoured);
  }
}

void watchCommand(Session& session, Words& words) {
  const Document document = takeDocument(words);
  const bool isOn = takeOnOff(words, "watch");
  words.finish();
  session.watchIs(document, isOn);
}

std::uint32_t traceMask(const Word& levels) {
  if (levels == "all") return Mox::traceAll;
  if (levels == "none") return Mox::traceNone;
  std::uint32_t mask = 0;
  std::string_view left = levels.text;
  for (bool isLast = false; !isLast;) {
    const std::size_t comma = left.find(',');
    isLast = comma == std::string_view::npos;
    mask |= Mox::traceLevel(levelOf(left.substr(0, comma)));
    if (!isLast) left.remove_prefix(comma + 1);
  }
  return mask;
}

void traceLevelsIs(const std::string& facility, std::uint32_t mask) {
  const std::vector<std::string> known = Mox::traceFacilities();
  if (std::find(known.begin(), known.end(), facility) == known.end()) {
    throwUnexpected("a trace facility, " + alternatives(known), Word{facility});
  }
  Mox::traceLevelsIs(facility, mask);
}

void traceCommand(Session& /*session*/, Words& words) {
  const Word facility = words.take("a trace facility, " + alternatives(Mox::traceFacilities()));
  const std::uint32_t mask = traceMask(words.take("trace levels such as 2,3,8, or all or none"));
  words.finish();
  traceLevelsIs(facility.text, mask);
}

void explainCommand(Session& session, Words& words) {
  if (!words.nextIf("vlan")) throwUnexpected("vlan", words.next());
  const Bridging::VlanId vlan = takeVlan(words);
  if (!words.nextIf("port")) throwUnexpected("port", words.next());
  const Quill::IntfId port = takeIntf(words);
  const bool isJson = words.nextIf("json") || session.options().isJson;
  words.finish();
  const Explanation explanation = explain(session.agent(), vlan, port);
  if (isJson) {
    session.out() << lineOf(explanationJson(explanation)) << '\n';
  } else {
    printExplanation(explanation, session.out(), session.options().isColoured);
  }
}

void echoCommand(Session& session, Words& words) {
  std::string text;
  bool isFirst = true;
  while (const std::optional<Word> word = words.next()) {
    if (!isFirst) text += ' ';
    isFirst = false;
    text += word->text;
  }
  session.out() << text << '\n';
}

void helpCommand(Session& session, Words& words) {
  const std::optional<Word> name = words.next();
  words.finish();
  if (!name) return printHelp(session.out());
  const Command* const command = findCommand(name->text);
  if (command == nullptr) throwUnexpected("a command; help lists them", name);
  printHelp(session.out(), *command);
}

}  // namespace Topo
