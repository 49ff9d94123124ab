#include "topo/Expect.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "topo/Documents.h"
#include "topo/LookCommands.h"
#include "topo/ScenarioError.h"
#include "topo/Session.h"

namespace Topo {

namespace {

using Json = nlohmann::ordered_json;

/// The element of an array that a token names: a number without leading zeros.
[[nodiscard]] std::optional<std::size_t> indexOf(const std::string& token) {
  std::size_t index = 0;
  const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), index);
  const bool isWhole = error == std::errc() && end == token.data() + token.size();
  return isWhole && (token.size() == 1 || token.front() != '0') ? std::optional(index) : std::nullopt;
}

/// What stands at the place, or null.
[[nodiscard]] const Json* find(const Json& json, const std::vector<std::string>& tokens) {
  const Json* at = &json;
  for (const std::string& token : tokens) {
    if (at->is_object()) {
      const auto member = at->find(token);
      if (member == at->end()) return nullptr;
      at = &*member;
    } else if (at->is_array()) {
      const std::optional<std::size_t> index = indexOf(token);
      if (!index || *index >= at->size()) return nullptr;
      at = &(*at)[*index];
    } else {
      return nullptr;
    }
  }
  return at;
}

/// Objects are equal whatever the order of their members.
[[nodiscard]] bool isEqual(const Json& a, const Json& b) { return nlohmann::json(a) == nlohmann::json(b); }

/// Deeper than any document, and not so deep that comparing it would exhaust the stack.
constexpr int maxDepth = 100;

[[nodiscard]] Json parsed(std::string_view text) {
  if (text.empty()) throwUnexpected("a JSON value", std::nullopt);
  const auto admit = [](int depth, Json::parse_event_t event, const Json& /*part*/) {
    const bool isStart = event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start;
    if (isStart && depth >= maxDepth) throw ScenarioError("the JSON value is nested too deeply");
    return true;
  };
  Json json = Json::parse(text, admit, false);
  if (json.is_discarded()) {
    throw ScenarioError(R"(expected a JSON value, such as 10, true, "forwarding" or ["A"], found )" +
                        std::string(text));
  }
  return json;
}

}  // namespace

std::vector<std::string> pointerTokens(std::string_view pointer) {
  if (!pointer.empty() && pointer.front() != '/') {
    throw ScenarioError("a JSON Pointer begins with /, not as " + std::string(pointer));
  }
  std::vector<std::string> tokens;
  for (std::size_t i = 0; i < pointer.size(); ++i) {
    if (pointer[i] == '/') {
      tokens.emplace_back();
    } else if (pointer[i] != '~') {
      tokens.back() += pointer[i];
    } else if (i + 1 < pointer.size() && (pointer[i + 1] == '0' || pointer[i + 1] == '1')) {
      tokens.back() += pointer[++i] == '0' ? '~' : '/';
    } else {
      throw ScenarioError("in a JSON Pointer ~ stands as ~0, and / in a key as ~1: " + std::string(pointer));
    }
  }
  return tokens;
}

void expectCommand(Session& session, Words& words) {
  const Document document = takeDocument(words);
  const std::string pointer = words.take("a JSON Pointer such as /topo/A, or \"\" for the whole document").text;
  Part part;
  part.path = pointerTokens(pointer);
  const Word comparison = words.take("==, != or absent");
  const bool isAbsence = comparison == "absent";
  if (!isAbsence && comparison != "==" && comparison != "!=") throwUnexpected("==, != or absent", comparison);
  const Json wanted = isAbsence ? Json() : parsed(words.rest());
  words.finish();

  const Json json = documentOf(session.agent(), document, part);
  const Json* const found = find(json, part.path);
  const bool isEqualToWanted = found != nullptr && !isAbsence && isEqual(*found, wanted);
  const bool holds = isAbsence ? found == nullptr : isEqualToWanted == (comparison == "==");
  if (holds) return;
  const std::string expected = isAbsence ? "absent" : comparison.text + ' ' + lineOf(wanted);
  session.expectationFailed(std::string(nameOf(document)) + ' ' + (pointer.empty() ? "\"\"" : pointer) + " is " +
                            (found == nullptr ? "absent" : lineOf(*found)) + ", expected " + expected);
}

}  // namespace Topo
