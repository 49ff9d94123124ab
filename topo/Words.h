// A line of the scenario language, word by word.
//
//   Words words("vlan 10 port \"my port\" untagged   # the printer");
//   words.next()                    // vlan, 10, port, my port, untagged, and then nothing
//
// Rules
//   - Words are separated by blanks: spaces, tabs and carriage returns. `#` starts a comment, except inside quotes.
//   - A word in double quotes may hold blanks, `#`, and as \" and \\ the two characters that have a meaning there. It is
//     always taken literally: where a plain word would be a range of interfaces, a quoted one is a name.
//   - A quote that is not closed, or that stands inside a plain word, is an error (ScenarioError).
//
// The line must outlive the Words. Nothing is read before it is asked for.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Topo {

struct Word {
  std::string text;
  bool isQuoted = false;

  [[nodiscard]] friend bool operator==(const Word& word, std::string_view other) noexcept { return word.text == other; }
};

class Words {
 public:
  explicit Words(std::string_view line) noexcept : line_(line) {}

  /// The next word, or nothing at the end of the line.
  [[nodiscard]] std::optional<Word> next();
  /// The next word if it is this one; otherwise it stays.
  bool nextIf(std::string_view text);
  /// The next word, which must be there; else the error says what was expected.
  [[nodiscard]] Word take(std::string_view expected);
  /// Everything up to the end of the line or its comment, as it stands, for a text in another language whose strings
  /// stand in double quotes as well.
  [[nodiscard]] std::string_view rest();
  /// Raises an error if there is a further word.
  void finish();

 private:
  void skipBlanks() noexcept;
  [[nodiscard]] Word quoted();

  std::string_view line_;
  std::size_t position_ = 0;
};

/// Raises the error "expected X, found 'word'", or "..., found the end of the line".
[[noreturn]] void throwUnexpected(std::string_view expected, const std::optional<Word>& found);

/// The text as a word in double quotes, whatever it holds.
[[nodiscard]] std::string inQuotes(std::string_view text);
/// A word as it has to be written in a line: in quotes where it would not be read as itself.
[[nodiscard]] std::string written(std::string_view text);

}  // namespace Topo
