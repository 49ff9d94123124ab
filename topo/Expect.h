// Expectations: what a document holds at a place that a JSON Pointer names (RFC 6901).

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "topo/Words.h"

namespace Topo {

class Session;

/// The tokens of a JSON Pointer. A text that is none raises ScenarioError.
[[nodiscard]] std::vector<std::string> pointerTokens(std::string_view pointer);

void expectCommand(Session& session, Words& words);

}  // namespace Topo
