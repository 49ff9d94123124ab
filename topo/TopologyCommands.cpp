// topology, status and instance: what is configured by topology.

#include "topo/Arguments.h"
#include "topo/ConfigCommands.h"
#include "topo/Session.h"

namespace Topo {

namespace {

using Bridging::Topology::PortState;

/// The member of this name, which must be there.
template <class T>
[[nodiscard]] Mox::Ptr<T> required(T* member, std::string_view what, const Mox::String& name) {
  if (member == nullptr) {
    const std::string line = std::string(what) + ' ' + written(name.view());
    throw ScenarioError(line + " does not exist; make it first: " + line);
  }
  return Mox::Ptr<T>(member);
}

/// A number is fixed when its entity is made.
void requireNumber(const auto* present, std::optional<std::uint32_t> number, std::string_view what) {
  if (present == nullptr || !number || present->topoNumber() == *number) return;
  const std::string line = std::string(what) + ' ' + written(present->name().view());
  throw ScenarioError(line + " has the number " + std::to_string(present->topoNumber()) +
                      ", which is fixed when it is made; remove it first: no " + line);
}

/// What stands behind the name of a topology or status: nothing more, or its ports.
[[nodiscard]] std::optional<IntfRange> takePortsOrEnd(Words& words) {
  if (words.nextIf("port")) {
    std::optional<IntfRange> intfs = takeIntfs(words);
    words.finish();
    return intfs;
  }
  if (const std::optional<Word> word = words.next()) throwUnexpected("port or the end of the line", word);
  return std::nullopt;
}

void topologyPort(Session& session, const Mox::String& name, Words& words) {
  const IntfRange intfs = takeIntfs(words);
  std::optional<PortState> state;
  std::optional<std::uint32_t> flush;
  while (const std::optional<Word> word = words.next()) {
    if (*word == "state") {
      setOnce(state, "state", takeEnum<PortState>(words));
    } else if (*word == "flush") {
      setOnce(flush, "flush", takeNumber(words, "flush"));
    } else {
      throwUnexpected("state or flush", word);
    }
  }
  const auto topo = required(session.agent().config->topoConfig(name), "topology", name);
  intfs.forEach([&](Quill::IntfId intf) {
    using Bridging::Topology::TopoPortConfig;
    Mox::Ptr<TopoPortConfig> port = topo->topoPortConfig(intf);
    if (!port) {
      port = topo->topoPortConfigIs(intf, 0, state.value_or(PortState::disabled));
    } else if (state) {
      port->portStateIs(*state);
    }
    if (flush) port->fdbFlushIs(*flush);
  });
}

}  // namespace

void topologyCommand(Session& session, Words& words) {
  const Mox::String name = takeName(words, "topology");
  if (words.nextIf("port")) return topologyPort(session, name, words);
  std::optional<std::uint32_t> number;
  std::optional<bool> isPublishing;
  std::optional<PortState> publishedState;
  while (const std::optional<Word> word = words.next()) {
    if (*word == "number") {
      setOnce(number, "number", takeNumber(words, "number"));
    } else if (*word == "publish-ports") {
      setOnce(isPublishing, "publish-ports", takeOnOff(words, "publish-ports"));
    } else if (*word == "publish-state") {
      setOnce(publishedState, "publish-state", takeEnum<PortState>(words));
    } else {
      throwUnexpected("port, number, publish-ports or publish-state", word);
    }
  }
  Bridging::Topology::Config& config = *session.agent().config;
  Mox::Ptr<Bridging::Topology::TopoConfig> topo = config.topoConfig(name);
  requireNumber(topo.get(), number, "topology");
  if (!topo) topo = config.topoConfigIs(name, number.value_or(0));
  if (isPublishing) topo->publishPortConfigIs(*isPublishing);
  if (publishedState) topo->publishedPortStateIs(*publishedState);
}

void noTopologyCommand(Session& session, Words& words) {
  const Mox::String name = takeName(words, "topology");
  Bridging::Topology::Config& config = *session.agent().config;
  if (const auto intfs = takePortsOrEnd(words)) {
    const auto topo = required(config.topoConfig(name), "topology", name);
    intfs->forEach([&](Quill::IntfId intf) { topo->topoPortConfigDel(intf); });
  } else {
    config.topoConfigDel(name);
  }
}

void statusCommand(Session& session, Words& words) {
  const Mox::String name = takeName(words, "topology");
  Bridging::Topology::Status& status = *session.agent().status;
  if (const auto intfs = takePortsOrEnd(words)) {
    const auto topo = required(status.topoStatus(name), "status", name);
    intfs->forEach([&](Quill::IntfId intf) { topo->topoPortStatusIs(intf); });
  } else {
    status.topoStatusIs(name);
  }
}

void noStatusCommand(Session& session, Words& words) {
  const Mox::String name = takeName(words, "topology");
  Bridging::Topology::Status& status = *session.agent().status;
  if (const auto intfs = takePortsOrEnd(words)) {
    const auto topo = required(status.topoStatus(name), "status", name);
    intfs->forEach([&](Quill::IntfId intf) { topo->topoPortStatusDel(intf); });
  } else {
    status.topoStatusDel(name);
  }
}

void instanceCommand(Session& session, Words& words) {
  const Mox::String name = takeName(words, "topology");
  Bridging::Topology::Inst::Status& instance = *session.agent().instance;
  if (words.nextIf("port")) {
    const IntfRange intfs = takeIntfs(words);
    words.finish();
    const auto topo = required(instance.topoStatus(name), "instance", name);
    intfs.forEach([&](Quill::IntfId intf) { topo->topoPortStatusIs(intf, 0); });
    return;
  }
  std::optional<std::uint32_t> number;
  while (const std::optional<Word> word = words.next()) {
    if (*word != "number") throwUnexpected("port or number", word);
    setOnce(number, "number", takeNumber(words, "number"));
  }
  const Bridging::Topology::Inst::TopoStatus* const present = instance.topoStatus(name);
  requireNumber(present, number, "instance");
  if (present == nullptr) instance.topoStatusIs(name, number.value_or(0));
}

void noInstanceCommand(Session& session, Words& words) {
  const Mox::String name = takeName(words, "topology");
  Bridging::Topology::Inst::Status& instance = *session.agent().instance;
  if (const auto intfs = takePortsOrEnd(words)) {
    const auto topo = required(instance.topoStatus(name), "instance", name);
    intfs->forEach([&](Quill::IntfId intf) { topo->topoPortStatusDel(intf); });
  } else {
    instance.topoStatusDel(name);
  }
}

}  // namespace Topo
