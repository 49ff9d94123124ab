// The commands that configure: each writes one kind of input entity, `no` removes it, and a repeated line changes only what
// it names. A command with a list or a range stands for the same command once per member; nothing is written unless it can
// be written for all of them.

#pragma once

#include "topo/Command.h"

namespace Topo {

void interfaceCommand(Session& session, Words& words);
void noInterfaceCommand(Session& session, Words& words);
void vlanCommand(Session& session, Words& words);
void noVlanCommand(Session& session, Words& words);
void topologyCommand(Session& session, Words& words);
void noTopologyCommand(Session& session, Words& words);
void mapCommand(Session& session, Words& words);
void noMapCommand(Session& session, Words& words);
void statusCommand(Session& session, Words& words);
void noStatusCommand(Session& session, Words& words);
void instanceCommand(Session& session, Words& words);
void noInstanceCommand(Session& session, Words& words);
void forceCommand(Session& session, Words& words);
void noForceCommand(Session& session, Words& words);

}  // namespace Topo
