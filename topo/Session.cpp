#include "topo/Session.h"

#include "kestrel/Kestrel.h"
#include "topo/Command.h"
#include "topo/ScenarioError.h"
#include "topo/Text.h"

namespace Topo {

namespace {

/// For the messages of `show log`.
constexpr std::size_t logBytes = std::size_t{1} << 20;

}  // namespace

Session::Session(const Options& options) : options_(options), loop_(agent_, options.isRealTime) {
  if (Kestrel::traceFile() == nullptr) Kestrel::traceFileIs(logBytes);
}

Session::~Session() = default;

void Session::execute(std::string_view line) {
  // Documents are JSON, which is UTF-8: other names could not be told from each other there.
  if (!isUtf8(line)) throw ScenarioError("the line is not UTF-8 text");
  Words words(line);
  const std::optional<Word> name = words.next();
  if (!name) return;
  const Command* const command = findCommand(name->text);
  if (command == nullptr) throw ScenarioError("unknown command '" + name->text + "'; help lists the commands");
  command->run(*this, words);
}

void Session::placeIs(std::string_view file, std::size_t line) {
  file_ = file;
  line_ = line;
}

void Session::expectationFailed(const std::string& text) {
  ++failedExpectations_;
  out().flush();
  if (!file_.empty()) *options_.err << file_ << ':' << line_ << ": ";
  *options_.err << "expectation failed: " << text << '\n';
}

void Session::watchIs(Document document, bool isOn) {
  if (!isOn) {
    feeds_.erase(document);
  } else if (!feeds_.contains(document)) {
    feeds_.emplace(document, std::make_unique<Feed>(agent_, document, out()));
  }
}

void Session::libraryMayHaveChanged() {
  for (const auto& [document, feed] : feeds_) feed->libraryMayHaveChanged();
}

}  // namespace Topo
