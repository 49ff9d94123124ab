// What a test sees of the library beside the notifications: the contents of the published state, the messages, the report
// of a failed assertion.

#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "kestrel/Kestrel.h"
#include "topolib/LibState.h"

namespace Test {

/// Everything that is streamed, as a text.
[[nodiscard]] std::string textOf(const auto&... parts) {
  std::ostringstream out;
  (out << ... << parts);
  return out.str();
}

/// The whole contents of a LibState as lines.
[[nodiscard]] inline std::set<std::string> contentsOf(const Topology::Library::LibState& state) {
  std::set<std::string> lines{textOf("initDone ", state.initDone())};
  for (const auto& [name, topo] : state.topo()) {
    lines.insert(textOf(name));
    for (const auto& [intf, port] : topo.port()) {
      const std::string at = textOf(name, '/', intf, ' ');
      lines.insert(textOf(at, port.active(), ' ', port.state(), ' ', port.fdbFlush()));
      for (const auto& [vid, entry] : port.vlanPortConfig()) lines.insert(textOf(at, vid));
    }
  }
  return lines;
}

/// A message log for the time of a test.
class Messages {
 public:
  Messages() { clear(); }
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;
  ~Messages() { Kestrel::traceFileDel(); }

  /// The texts of the library's messages so far, oldest first.
  [[nodiscard]] std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (const auto& message : Kestrel::traceFile()->messages()) {
      if (message.file == std::string("/src/Sylk/TopoLib")) texts.push_back(message.text);
    }
    return texts;
  }
  [[nodiscard]] std::size_t count(const std::string& text) const {
    const std::vector<std::string> all = texts();
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), text));
  }
  [[nodiscard]] bool has(const std::string& text) const { return count(text) != 0; }
  void clear() { Kestrel::traceFileIs(1 << 18); }
};

/// Matches the report of a failed assertion of the library in one of its functions.
[[nodiscard]] inline auto assertionReport(const std::string& expression, const std::string& function) {
  return testing::AllOf(testing::StartsWith("/src/Sylk/TopoLib:"), testing::HasSubstr("::" + function + "("),
                        testing::EndsWith(": Assertion '" + expression + "' failed.\n"));
}

}  // namespace Test
