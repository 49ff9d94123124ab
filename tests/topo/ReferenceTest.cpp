// docs/language.md and docs/topo.1 say what the program's own help says: every command, every usage line, every call and
// every option, and no other. What the reference shows as real, is.

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

#include "tests/topo/PlayedDocument.h"

namespace Topo::ReferenceTest {

using Test::docText;
using Test::linesOf;
using Test::Outcome;
using Test::playDocument;
using Test::run;
using Test::runScenario;

using Lines = std::vector<std::string>;
using Options = std::set<std::string>;

[[nodiscard]] Options optionsIn(const std::string& text) {
  static const std::regex option("--[a-z][a-z-]*");
  return {std::sregex_token_iterator(text.begin(), text.end(), option), std::sregex_token_iterator()};
}

/// The usage lines of a command, as its help gives them, or of a section of a document.
using Usage = std::map<std::string, Lines>;

[[nodiscard]] Lines commandNames() {
  Lines names;
  for (const std::string& line : linesOf(run({"help"}).out)) {
    if (line.empty()) break;
    names.push_back(line.substr(0, line.find(' ')));
  }
  return names;
}

/// By command, what stands indented below the first line of its help.
[[nodiscard]] Usage usageOfHelp() {
  Usage usage;
  for (const std::string& name : commandNames()) {
    for (const std::string& line : linesOf(run({"help", name}).out)) {
      if (line.starts_with("  ")) usage[name].push_back(line.substr(2));
    }
  }
  return usage;
}

/// By heading, the usage blocks of the reference.
[[nodiscard]] Usage usageOfReference() {
  static const std::regex heading("##+ `?([^`]*)`?");
  Usage usage;
  std::string section;
  bool isUsage = false;
  bool isInside = false;
  for (const std::string& line : linesOf(docText("language.md"))) {
    std::smatch match;
    if (line.starts_with("```")) {
      isInside = !isInside;
      if (!isInside) isUsage = false;
    } else if (isInside) {
      if (isUsage) usage[section].push_back(line);
    } else if (line == "<!-- usage -->") {
      isUsage = true;
    } else if (std::regex_match(line, match, heading)) {
      section = match[1];
    }
  }
  return usage;
}

/// A line of a man page without its fonts and escapes.
[[nodiscard]] std::string plain(std::string_view line) {
  constexpr std::string_view quote = "\\(dq";
  std::string text;
  while (!line.empty()) {
    const bool isEscape = line.front() == '\\' && line.size() > 1;
    std::size_t length = isEscape ? 2 : 1;
    if (line.starts_with(quote)) {
      text += '"';
      length = quote.size();
    } else if (line.starts_with("\\f")) {
      length = 3;
    } else if (line.starts_with("\\e")) {
      text += '\\';
    } else if (!line.starts_with("\\&")) {
      text += line[length - 1];
    }
    line.remove_prefix(std::min(length, line.size()));
  }
  return text;
}

/// By section, what stands in the man page between .EX and .EE.
[[nodiscard]] Usage usageOfManPage() {
  Usage usage;
  std::string section;
  bool isInside = false;
  for (const std::string& line : linesOf(docText("topo.1"))) {
    if (line.starts_with(".SH ") || line.starts_with(".SS ")) {
      section = line.substr(4);
    } else if (line == ".EX" || line == ".EE") {
      isInside = line == ".EX";
    } else if (isInside) {
      usage[section].push_back(plain(line));
    }
  }
  return usage;
}

/// By call (`run`, `import linux`, and for the program itself the empty text) the options that it takes.
using Calls = std::map<std::string, Options>;

void addCallsOfHelp(const Lines& call, Calls& calls) {
  Lines arguments = call;
  arguments.emplace_back("--help");
  const Outcome outcome = run(arguments);
  EXPECT_EQ(outcome.status, 0);
  const std::size_t at = outcome.out.find("Subcommands:\n");
  if (at != std::string::npos) {
    const Lines subcommands = linesOf(outcome.out.substr(at));
    for (std::size_t i = 1; i < subcommands.size() && subcommands[i].starts_with("  "); ++i) {
      Lines further = call;
      further.push_back(subcommands[i].substr(2, subcommands[i].find(' ', 2) - 2));
      addCallsOfHelp(further, calls);
    }
    if (!call.empty()) return;
  }
  std::string name;
  for (const std::string& word : call) name += (name.empty() ? "" : " ") + word;
  calls[name] = optionsIn(outcome.out);
  if (!call.empty()) calls[name].erase("--help");
}

[[nodiscard]] Calls callsOfHelp() {
  Calls calls;
  addCallsOfHelp({}, calls);
  return calls;
}

/// The calls that usage lines such as `topo run FILE... [--json]` name.
[[nodiscard]] Calls callsIn(const Lines& usage) {
  static const std::regex call("topo((?: [a-z]+)*)(.*)");
  Calls calls;
  for (const std::string& line : usage) {
    std::smatch match;
    if (!std::regex_match(line, match, call)) {
      ADD_FAILURE() << "no call: " << line;
      continue;
    }
    const std::string name = match[1];
    calls[name.empty() ? name : name.substr(1)].merge(optionsIn(match[2]));
  }
  return calls;
}

TEST(Reference, hasTheUsageOfEveryCommandAndNoOther) {
  Usage usage = usageOfReference();
  usage.erase("Command line");
  const Usage help = usageOfHelp();
  EXPECT_EQ(help.size(), commandNames().size());
  EXPECT_EQ(usage, help);
}

TEST(Reference, namesEveryCallAndOptionAndNoOther) {
  EXPECT_EQ(callsIn(usageOfReference()["Command line"]), callsOfHelp());
}

TEST(Reference, itsExamplesAreReal) { playDocument("language.md", 4); }

TEST(Reference, itsErrorsAreReal) {
  static const std::regex row(R"(\| (?:`([^`]*)` )?\| `([^`]*)` \| `([^`]*)` \|)");
  std::size_t count = 0;
  for (const std::string& line : linesOf(docText("language.md"))) {
    std::smatch match;
    if (!std::regex_match(line, match, row)) continue;
    ++count;
    const bool hasBefore = match[1].length() != 0;
    const Outcome outcome = runScenario((hasBefore ? match[1].str() + '\n' : "") + match[2].str() + '\n');
    EXPECT_EQ(outcome.err, (hasBefore ? "-:2: error: " : "-:1: error: ") + match[3].str() + '\n');
    EXPECT_EQ(outcome.status, 2) << match[2];
  }
  EXPECT_GT(count, 20U);
}

TEST(ManPage, hasTheUsageOfEveryCommandAndNoOther) {
  Usage usage = usageOfManPage();
  usage.erase("SYNOPSIS");
  EXPECT_EQ(usage, usageOfHelp());
}

TEST(ManPage, namesEveryCallAndOptionAndNoOther) { EXPECT_EQ(callsIn(usageOfManPage()["SYNOPSIS"]), callsOfHelp()); }

TEST(ManPage, explainsEveryOption) {
  Options explained;
  for (const std::string& line : linesOf(docText("topo.1"))) {
    if (line.starts_with(".B")) explained.merge(optionsIn(plain(line)));
  }
  Options all;
  for (const auto& [call, options] : callsOfHelp()) all.insert(options.begin(), options.end());
  EXPECT_EQ(explained, all);
}

}  // namespace Topo::ReferenceTest
