#include "topo/Command.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <unordered_map>

#include "topo/ConfigCommands.h"
#include "topo/Expect.h"
#include "topo/LookCommands.h"
#include "topo/RunCommands.h"

namespace Topo {

namespace {

constexpr std::string_view vidNote = "VID may be a list such as 10,20,100-199: the same command for each of them.";
constexpr std::string_view intfNote =
    "INTF may be a range such as Ethernet1-48: the same command for each of them. In quotes it is one name.";
constexpr std::string_view repeatNote = "Repeating the line with other options changes only what it names.";
constexpr std::string_view stateNote = "STATE is disabled, blocking, learning or forwarding.";
constexpr std::string_view documentNote =
    "DOCUMENT is state, view, instance, status, config, bridging, interfaces, backlog or mapping.";

/// `no`: the other way of the command that follows.
void noCommand(Session& session, Words& words) {
  const std::optional<Word> name = words.next();
  const Command* const command = name ? findCommand(name->text) : nullptr;
  if (command == nullptr || command->runNo == nullptr) {
    throwUnexpected("interface, vlan, topology, map, status, instance or force", name);
  }
  command->runNo(session, words);
}

[[nodiscard]] std::vector<Command> configuring() {
  return {
      {"interface",
       "the status of an interface",
       {"interface INTF [link unknown|down|up] [model unspecified|dropped|routed|mirrored|bridged|tunneled]",
        "no interface INTF"},
       {"Defaults: link unknown, model unspecified.", intfNote, repeatNote},
       interfaceCommand,
       noInterfaceCommand},
      {"vlan",
       "a VLAN, or a member port of it",
       {"vlan VID [internal|external] [expand VID|none]", "no vlan VID",
        "vlan VID port INTF [tagged|untagged] [pvid|no-pvid] [direction both|ingress|egress|none]",
        "no vlan VID port INTF"},
       {"Defaults: external, expand none; tagged, no-pvid, direction both.",
        "Whether a VLAN is internal is fixed when it is made. A port needs its VLAN.", vidNote, intfNote, repeatNote},
       vlanCommand,
       noVlanCommand},
      {"topology",
       "a topology, or a port of it",
       {"topology TOPO [number N] [publish-ports on|off] [publish-state STATE]", "no topology TOPO",
        "topology TOPO port INTF [state STATE] [flush N]", "no topology TOPO port INTF"},
       {"Defaults: number 0, publish-ports off, publish-state forwarding; state disabled, flush 0.", stateNote,
        "The number is fixed when the topology is made. A port needs its topology.", intfNote, repeatNote},
       topologyCommand,
       noTopologyCommand},
      {"map",
       "the topology that a VLAN belongs to",
       {"map VID TOPO", "no map VID"},
       {"The topology need not be configured.", vidNote},
       mapCommand,
       noMapCommand},
      {"status",
       "the plain status of a topology, or of a port of it",
       {"status TOPO", "no status TOPO", "status TOPO port INTF", "no status TOPO port INTF"},
       {"A port needs the status of its topology.", intfNote},
       statusCommand,
       noStatusCommand},
      {"instance",
       "the instance status of a topology, or of a port of it",
       {"instance TOPO [number N]", "no instance TOPO", "instance TOPO port INTF", "no instance TOPO port INTF"},
       {"Default: number 0. It is fixed when the status is made. A port needs the status of its topology.", intfNote},
       instanceCommand,
       noInstanceCommand},
      {"force",
       "a port that the VLAN view takes for active, and never for blocked",
       {"force INTF on|off", "no force INTF"},
       {intfNote},
       forceCommand,
       noForceCommand},
      {"no", "removes what the command that follows makes", {"no COMMAND ..."}, {}, noCommand},
  };
}

[[nodiscard]] std::vector<Command> running() {
  return {
      {"start",
       "starts the library, the status publisher or the VLAN view",
       {"start library [mode createStatus|notifyStatus] [watch status|instance|none] [ignore-internal]\n"
        "              [deferred|immediate] [filter LocalInterface|none] [interfaces now|later] [name NAME]",
        "start publisher", "start view"},
       {"Defaults: mode createStatus, watch instance, deferred, filter none, interfaces now, name topoLib.",
        "Starting the library again on the same terms changes nothing; on others it replaces it."},
       startCommand},
      {"stop", "stops one of them; what it has published stays", {"stop library|publisher|view"}, {}, stopCommand},
      {"attach",
       "gives the library its interfaces",
       {"attach interfaces"},
       {"For a library that was started with interfaces later. With watch status it waits for them, and what it "
        "watches",
        "must not change meanwhile: the library asserts that."},
       attachCommand},
      {"detach",
       "takes the library's interfaces away",
       {"detach interfaces"},
       {"With watch status no topology may appear while they are away: the library asserts that."},
       detachCommand},
      {"set",
       "settings of the library, and of virtual time",
       {"set threshold N", "set quantum SECONDS", "set yield-after-one on|off", "set tick SECONDS"},
       {"threshold: how many ports of a VLAN may wait before the whole VLAN is marked; 20 at first.",
        "quantum: the length of a slice of the backlog; 0.01 at first.",
        "yield-after-one: whether a run stops after one item; off at first.",
        "tick: how far each reading of the clock by the library moves virtual time on; 0 at first.",
        "The first three reach the library that runs, and every one that is started later."},
       setCommand},
      {"dispatch", "runs what is due now, round by round", {"dispatch [N]"}, {"Default: one round."}, dispatchCommand},
      {"advance", "moves the clock on, and runs what falls due on the way", {"advance SECONDS"}, {}, advanceCommand},
      {"settle", "runs until nothing is pending", {"settle"}, {"An error after 1,000,000 rounds."}, settleCommand},
  };
}

[[nodiscard]] std::vector<Command> looking() {
  return {
      {"show",
       "shows a document, the configuration or the log",
       {"show DOCUMENT [topology TOPO] [vlan VID] [json]", "show config", "show log [json]"},
       {documentNote, "Without json a table; show config gives the configuration as the commands that make it.",
        "show log gives the messages of the library, oldest first."},
       showCommand},
      {"watch",
       "a line of JSON for every change of a document from now on",
       {"watch DOCUMENT on|off"},
       {documentNote},
       watchCommand},
      {"trace",
       "the levels of a trace facility, which go to standard error",
       {"trace FACILITY LEVELS|all|none"},
       {"FACILITY is TopoLib or TopoLibVlan, LEVELS a list such as 2,3,8."},
       traceCommand},
      {"explain",
       "why a port forwards a VLAN, or does not",
       {"explain vlan VID port INTF [json]"},
       {"The facts that decide it, in their order; the first one that prevents forwarding is marked."},
       explainCommand},
      {"expect",
       "what must hold now; if it does not, the program ends with status 1 in the end",
       {"expect DOCUMENT POINTER == JSON", "expect DOCUMENT POINTER != JSON", "expect DOCUMENT POINTER absent"},
       {documentNote, "POINTER is a JSON Pointer such as /topo/A; / in a key is ~1, and \"\" the whole document."},
       expectCommand},
      {"echo", "prints a text", {"echo TEXT"}, {}, echoCommand},
      {"help", "lists the commands, or explains one", {"help [COMMAND]"}, {}, helpCommand},
  };
}

using Index = std::unordered_map<std::string_view, const Command*>;

}  // namespace

const std::vector<Command>& commands() {
  static const auto& all = *new std::vector<Command>([] {
    std::vector<Command> list = configuring();
    for (const auto& part : {running(), looking()}) list.insert(list.end(), part.begin(), part.end());
    return list;
  }());
  return all;
}

const Command* findCommand(std::string_view name) {
  static const auto& index = *new Index([] {
    Index byName;
    for (const Command& command : commands()) byName.emplace(command.name, &command);
    return byName;
  }());
  const auto found = index.find(name);
  return found == index.end() ? nullptr : found->second;
}

void printHelp(std::ostream& out) {
  for (const Command& command : commands()) {
    out << std::left << std::setw(12) << command.name << command.summary << '\n';
  }
  out << "\nWords are separated by blanks; a word with blanks stands in double quotes; # starts a comment.\n"
         "help COMMAND explains a command. In the shell, exit or quit ends it.\n";
}

void printHelp(std::ostream& out, const Command& command) {
  out << command.name << ": " << command.summary << "\n\n";
  for (const std::string_view line : command.usage) {
    out << "  ";
    for (const char c : line) out << (c == '\n' ? "\n  " : std::string(1, c));
    out << '\n';
  }
  if (!command.notes.empty()) out << '\n';
  for (const std::string_view note : command.notes) out << note << '\n';
}

}  // namespace Topo
