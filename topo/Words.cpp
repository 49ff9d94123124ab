#include "topo/Words.h"

#include <algorithm>

#include "topo/ScenarioError.h"

namespace Topo {

namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view wordEnds = " \t\r\n#";

[[nodiscard]] bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

}  // namespace

void Words::skipBlanks() noexcept {
  position_ = line_.find_first_not_of(blanks, position_);
  if (position_ == std::string_view::npos || line_[position_] == '#') position_ = line_.size();
}

std::optional<Word> Words::next() {
  skipBlanks();
  if (position_ == line_.size()) return std::nullopt;
  if (line_[position_] == '"') return quoted();
  const std::size_t end = std::min(line_.find_first_of(wordEnds, position_), line_.size());
  const std::string_view text = line_.substr(position_, end - position_);
  if (text.find('"') != std::string_view::npos) {
    throw ScenarioError("a double quote inside the word " + std::string(text) + "; quote the whole word");
  }
  position_ = end;
  return Word{std::string(text), false};
}

/// The word behind the opening quote at the position.
Word Words::quoted() {
  Word word{{}, true};
  std::size_t at = position_ + 1;
  for (; at < line_.size() && line_[at] != '"'; ++at) {
    const bool isEscape = line_[at] == '\\' && at + 1 < line_.size() && (line_[at + 1] == '"' || line_[at + 1] == '\\');
    if (isEscape) ++at;
    word.text += line_[at];
  }
  if (at >= line_.size()) throw ScenarioError("the closing double quote is missing");
  position_ = at + 1;
  if (position_ < line_.size() && wordEnds.find(line_[position_]) == std::string_view::npos) {
    throw ScenarioError("a blank must follow the closing double quote");
  }
  return word;
}

bool Words::nextIf(std::string_view text) {
  const std::size_t before = position_;
  const std::optional<Word> word = next();
  if (word && *word == text) return true;
  position_ = before;
  return false;
}

Word Words::take(std::string_view expected) {
  std::optional<Word> word = next();
  if (!word) throwUnexpected(expected, word);
  return *std::move(word);
}

std::string_view Words::rest() {
  skipBlanks();
  const std::size_t begin = position_;
  bool isInQuotes = false;
  std::size_t at = begin;
  for (; at < line_.size() && (isInQuotes || line_[at] != '#'); ++at) {
    if (line_[at] == '"') isInQuotes = !isInQuotes;
    if (isInQuotes && line_[at] == '\\') ++at;
  }
  position_ = line_.size();
  const std::string_view text = line_.substr(begin, std::min(at, line_.size()) - begin);
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

void Words::finish() {
  if (const std::optional<Word> word = next()) throwUnexpected("the end of the line", word);
}

void throwUnexpected(std::string_view expected, const std::optional<Word>& found) {
  throw ScenarioError("expected " + std::string(expected) + ", found " +
                      (found ? "'" + found->text + "'" : "the end of the line"));
}

std::string inQuotes(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string written(std::string_view text) {
  // A name such as veth1-2 would be taken for a range of interfaces; Port-Channel1 would not.
  const std::size_t dash = text.rfind('-');
  const bool isLikeRange = dash != std::string_view::npos && dash != 0 && dash + 1 < text.size() &&
                           isDigit(text[dash - 1]) &&
                           std::all_of(text.begin() + static_cast<std::ptrdiff_t>(dash) + 1, text.end(), isDigit);
  const bool isPlain = !text.empty() && !isLikeRange && text.find_first_of(" \t\r\n#\"") == std::string_view::npos;
  return isPlain ? std::string(text) : inQuotes(text);
}

}  // namespace Topo
