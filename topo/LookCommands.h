// The commands that look: they change nothing but what is shown from now on.

#pragma once

#include "topo/Command.h"
#include "topo/Documents.h"

namespace Topo {

void showCommand(Session& session, Words& words);
void watchCommand(Session& session, Words& words);
void traceCommand(Session& session, Words& words);
void explainCommand(Session& session, Words& words);
void echoCommand(Session& session, Words& words);
void helpCommand(Session& session, Words& words);

/// Takes the name of a document.
[[nodiscard]] Document takeDocument(Words& words);

/// The levels of a trace facility as text, 2,3,8 or all or none, as a mask.
[[nodiscard]] std::uint32_t traceMask(const Word& levels);
/// Sets the levels of a facility, which must exist.
void traceLevelsIs(const std::string& facility, std::uint32_t mask);

}  // namespace Topo
