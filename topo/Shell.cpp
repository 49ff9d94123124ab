#include "topo/Shell.h"

#include <histedit.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "topo/Completion.h"
#include "topo/ScenarioError.h"
#include "topo/Text.h"
#include "topo/Words.h"

namespace Topo {

namespace {

/// Whether the line ends the shell.
[[nodiscard]] bool isEnd(const std::string& line) {
  try {
    Words words(line);
    const std::optional<Word> word = words.next();
    return word && !word->isQuoted && !words.next() &&
           std::find(endingWords.begin(), endingWords.end(), word->text) != endingWords.end();
  } catch (const ScenarioError&) {
    return false;  // Whoever runs the line says what is wrong with it.
  }
}

/// The file of the history, or nothing.
[[nodiscard]] std::string historyFile() {
  if (const char* const file = std::getenv("TOPO_HISTORY")) return file;
  const char* const home = std::getenv("HOME");
  return home == nullptr ? std::string() : std::string(home) + "/.topo_history";
}

/// The lines typed, in memory and in a file. A line is in the file before it is run: it may end the program.
class Past {
 public:
  explicit Past(std::string file) : file_(std::move(file)), lines_(history_init(), history_end) {
    set(H_SETSIZE, size);
    set(H_SETUNIQUE, 1);
    load();
  }

  [[nodiscard]] History* lines() const noexcept { return lines_.get(); }

  void add(const std::string& line) {
    if (line.find_first_not_of(" \t") == std::string::npos || line == last_) return;
    enter(line);
    if (!file_.empty()) std::ofstream(file_, std::ios::app) << line << '\n';
  }

 private:
  static constexpr int size = 1000;

  void set(int what, int value) {
    HistEvent ignored;
    history(lines_.get(), &ignored, what, value);
  }

  void enter(const std::string& line) {
    HistEvent ignored;
    history(lines_.get(), &ignored, H_ENTER, line.c_str());
    last_ = line;
  }

  /// Reads the file. One that has grown to twice the size is cut back to it.
  void load() {
    std::vector<std::string> all;
    std::ifstream in(file_);
    for (std::string line; std::getline(in, line);) all.push_back(line);
    if (all.size() >= 2 * std::size_t{size}) {
      all.erase(all.begin(), all.end() - size);
      std::ofstream out(file_);
      for (const std::string& line : all) out << line << '\n';
    }
    for (const std::string& line : all) enter(line);
  }

  std::string file_;
  std::unique_ptr<History, void (*)(History*)> lines_;
  std::string last_;
};

/// Reads lines from the terminal.
class LineEditor {
 public:
  explicit LineEditor(const Session& session)
      : session_(session), past_(historyFile()), editor_(el_init("topo", stdin, stdout, stderr), el_end) {
    set(EL_CLIENTDATA, this);
    set(EL_PROMPT, prompt);
    set(EL_SIGNAL, 1);  // The terminal gets its settings back when a signal stops or ends the program.
    set(EL_HIST, history, past_.lines());
    set(EL_EDITOR, "emacs");
    // Told in narrow characters, the editor would never free its copies of the names.
    el_wset(editor_.get(), EL_ADDFN, L"topo-complete", L"Complete the word", completeWord);
    el_wset(editor_.get(), EL_ADDFN, L"topo-discard", L"Discard the line", discardLine);
    set(EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_source(editor_.get(), nullptr);
    set(EL_BIND, "^I", "topo-complete", nullptr);
    // A key like any other while a line is edited, and so in its place among those that were typed ahead.
    set(EL_SETTY, "-d", "-intr", "intr=", nullptr);
    set(EL_BIND, "^C", "topo-discard", nullptr);
  }

  /// The next line, empty if it was discarded; nothing at the end.
  [[nodiscard]] std::optional<std::string> readLine() {
    isDiscarded_ = false;
    lastTabLine_.reset();
    // Before the prompt invites to type, so that nothing typed is seen twice.
    set(EL_PREP_TERM, 1);
    int size = 0;
    const char* const text = el_gets(editor_.get(), &size);
    // A stop that nobody could end, as of a shell without job control above this one, only interrupts.
    const bool isInterrupted = text == nullptr && size < 0 && errno == EINTR;
    if (isDiscarded_ || isInterrupted) return std::string();
    if (text == nullptr || size <= 0) return std::nullopt;
    std::string line(text, static_cast<std::size_t>(size));
    if (line.ends_with('\n')) line.pop_back();
    past_.add(line);
    return line;
  }

 private:
  void set(int what, auto... values) { el_set(editor_.get(), what, values...); }

  static const char* prompt(EditLine* /*editor*/) { return "topo> "; }

  [[nodiscard]] static LineEditor& of(EditLine* editor) {
    void* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return *static_cast<LineEditor*>(self);
  }

  static unsigned char discardLine(EditLine* editor, int /*key*/) {
    of(editor).isDiscarded_ = true;
    std::fputs("^C\n", stdout);
    return CC_NEWLINE;
  }

  static unsigned char completeWord(EditLine* editor, int /*key*/) { return of(editor).complete(); }

  unsigned char complete() {
    const LineInfo* const info = el_line(editor_.get());
    const std::string line(info->buffer, info->cursor);
    const Completion completion = Topo::complete(session_, line);
    const std::string_view typed = std::string_view(line).substr(completion.begin);
    if (completion.text != typed) {
      // The characters in front of the cursor, of which UTF-8 may need several bytes for each.
      el_deletestr(editor_.get(), static_cast<int>(charactersOf(typed)));
      el_insertstr(editor_.get(), completion.text.c_str());
      lastTabLine_ = line.substr(0, completion.begin) + completion.text;
      return CC_REFRESH;
    }
    const bool isSecond = lastTabLine_ == line;
    lastTabLine_ = line;
    if (completion.candidates.empty() || !isSecond) return CC_REFRESH_BEEP;
    list(completion.candidates);
    return CC_REDISPLAY;
  }

  /// Lists the words in columns below the line, as many of them as a screen can be expected to hold.
  void list(const std::vector<std::string>& words) const {
    constexpr std::size_t most = 200;
    const std::size_t count = std::min(words.size(), most);
    std::size_t width = 0;
    for (std::size_t i = 0; i < count; ++i) width = std::max(width, words[i].size() + 2);
    int screen = 0;
    el_get(editor_.get(), EL_GETTC, "co", &screen);
    const std::size_t columns = std::max<std::size_t>(static_cast<std::size_t>(std::max(screen, 0)) / width, 1);
    const std::size_t rows = (count + columns - 1) / columns;
    std::string text = "\n";
    for (std::size_t row = 0; row < rows; ++row) {
      for (std::size_t i = row; i < count; i += rows) {
        text += words[i];
        text += i + rows < count ? std::string(width - words[i].size(), ' ') : "\n";
      }
    }
    if (count < words.size()) text += "and " + std::to_string(words.size() - count) + " more\n";
    std::fputs(text.c_str(), stdout);
  }

  const Session& session_;
  Past past_;
  std::unique_ptr<EditLine, void (*)(EditLine*)> editor_;
  bool isDiscarded_ = false;
  /// What the line was after the last Tab.
  std::optional<std::string> lastTabLine_;
};

}  // namespace

int Shell::run() { return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0 ? runTerminal() : runLines(); }

int Shell::runTerminal() {
  std::setlocale(LC_CTYPE, "");  // The editor's, for characters of several bytes.
  session_.out() << "help lists the commands, Tab completes them; exit or Ctrl-D ends the shell.\n" << std::flush;
  LineEditor editor(session_);
  const std::string nowhere;
  for (;;) {
    const std::optional<std::string> line = editor.readLine();
    if (!line) session_.out() << '\n';
    if (!line || isEnd(*line)) return exitStatus(session_);
    // What is wrong has been said, and the line can be typed again.
    static_cast<void>(runner_.runLine(*line, nowhere, 0));
    session_.out().flush();
  }
}

int Shell::runLines() {
  const std::string file = "-";
  bool isGood = true;
  std::size_t number = 0;
  for (std::string line; std::getline(std::cin, line) && !isEnd(line);) {
    isGood = runner_.runLine(line, file, ++number) && isGood;
  }
  return isGood ? exitStatus(session_) : badInput;
}

}  // namespace Topo
