// The commands that run: starting and stopping, settings, and time.

#pragma once

#include "topo/Command.h"

namespace Topo {

void startCommand(Session& session, Words& words);
void stopCommand(Session& session, Words& words);
void attachCommand(Session& session, Words& words);
void detachCommand(Session& session, Words& words);
void setCommand(Session& session, Words& words);
void dispatchCommand(Session& session, Words& words);
void advanceCommand(Session& session, Words& words);
void settleCommand(Session& session, Words& words);

}  // namespace Topo
