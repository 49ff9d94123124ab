// Completion: what may stand at the end of a line that is being typed.
//
//   complete(session, "interface Ethernet1 li").text    // "link "
//   complete(session, "sho").candidates                 // show
//   complete(session, "explain vlan ").candidates       // the VLANs that there are
//
// It goes by the usage of the commands, the one that `help` prints: a word in lower case stands for itself, one in capitals
// for the names that exist at that moment, if there are any to know. Options are proposed in any order, each of them once.

#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Topo {

class Session;

/// The commands of the shell beside those of the language: each of them ends it.
inline constexpr std::array<std::string_view, 2> endingWords{"exit", "quit"};

struct Completion {
  /// Where the word begins that is being typed.
  std::size_t begin = 0;
  /// All that it may become, as it has to be written, in quotes if need be.
  std::vector<std::string> candidates;
  /// What it becomes now: the only candidate and a blank, or what several have in common, with the quote still open.
  /// Without a candidate, the word as it stands.
  std::string text;
};

/// Completes the last word of a line; behind a blank, an empty one.
[[nodiscard]] Completion complete(const Session& session, std::string_view line);

}  // namespace Topo
