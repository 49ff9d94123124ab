// Writes down every change of a LibState, in the order in which a reader is told.

#pragma once

#include <utility>

#include "tests/support/ChangeLog.h"
#include "tests/topolib/Observed.h"
#include "topolib/LibState.h"

namespace Test {

/// A line per change: "+A" and "-A" for a topology, "+A/Ethernet1" and "-A/Ethernet1" for a port, "A/Ethernet1 10" and
/// "A/Ethernet1 no 10" for an entry of a VLAN, "A/Ethernet1 active" or "inactive", "A/Ethernet1 state forwarding",
/// "A/Ethernet1 flush 7", and "initDone". After each line it does what the test asks for.
class StateLog : public ChangeLog {
 public:
  explicit StateLog(const Mox::Ptr<Topology::Library::LibState>& state, Action action = {})
      : ChangeLog(std::move(action)), state_(state) {
    using Topology::Library::LibState;
    watch(*state, [this](Mox::AttributeId id, const void* key) {
      if (LibState::initDoneAttr.is(id)) write("initDone");
      if (const auto* name = LibState::topoAttr.keyOf(id, key)) topoChanged(*name);
    });
    for (const auto& [name, topo] : state_->topo()) watchTopo(name);
  }

 private:
  void topoChanged(const Mox::String& name) {
    const bool isThere = state_->topo(name) != nullptr;
    if (isThere) watchTopo(name);
    write(textOf(isThere ? "+" : "-", name));
  }
  void watchTopo(const Mox::String& name) {
    using Topology::Library::Topo;
    const Topo* const topo = state_->topo(name);
    watch(*topo, [this, topo, name](Mox::AttributeId id, const void* key) {
      const auto* intf = Topo::portAttr.keyOf(id, key);
      if (intf == nullptr) return;
      const Quill::IntfId changed = *intf;
      const bool isThere = topo->port(changed) != nullptr;
      if (isThere) watchPort(*topo->port(changed), name);
      write(textOf(isThere ? "+" : "-", name, "/", changed));
    });
    for (const auto& [intf, port] : topo->port()) watchPort(port, name);
  }
  void watchPort(const Topology::Library::Port& port, const Mox::String& name) {
    using Topology::Library::Port;
    watch(port, [this, &port, prefix = textOf(name, "/", port.intf(), " ")](Mox::AttributeId id, const void* key) {
      if (const auto* vid = Port::vlanPortConfigAttr.keyOf(id, key)) {
        write(textOf(prefix, port.vlanPortConfig(*vid) == nullptr ? "no " : "", *vid));
      }
      if (Port::activeAttr.is(id)) write(textOf(prefix, port.active() ? "active" : "inactive"));
      if (Port::stateAttr.is(id)) write(textOf(prefix, "state ", port.state()));
      if (Port::fdbFlushAttr.is(id)) write(textOf(prefix, "flush ", port.fdbFlush()));
    });
  }

  Mox::Ptr<Topology::Library::LibState> state_;
};

}  // namespace Test
