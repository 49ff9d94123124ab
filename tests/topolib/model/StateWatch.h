// Watches a published state with all its topologies and ports.

#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "tests/support/Recorder.h"
#include "topolib/LibState.h"

namespace Test {

class StateWatch {
 public:
  /// What has changed: an attribute of the port, or of the topology if that is null, or of the state if both are.
  struct Change {
    const Topology::Library::Topo* topo;
    const Topology::Library::Port* port;
    Mox::AttributeId id;
    const void* key;
  };
  using Handler = std::function<void(const Change&)>;

  StateWatch(Mox::Ptr<const Topology::Library::LibState> state, Handler handler)
      : state_(std::move(state)), handler_(std::move(handler)) {
    for (const auto& [name, topo] : state_->topo()) watchTopo(topo);
    watch(*state_, nullptr, nullptr);
  }
  StateWatch(const StateWatch&) = delete;
  StateWatch& operator=(const StateWatch&) = delete;
  ~StateWatch() = default;

 private:
  using Topo = Topology::Library::Topo;
  using Port = Topology::Library::Port;

  void watch(const Mox::PtrInterface& notifier, const Topo* topo, const Port* port) {
    const auto tell = [this, topo, port](Mox::AttributeId id, const void* key) {
      const Change change{topo, port, id, key};
      watchWhatIsNew(change);
      handler_(change);
    };
    recorders_.push_back(std::make_unique<Recorder>(&notifier, tell));
  }
  void watchTopo(const Topo& topo) {
    for (const auto& [intf, port] : topo.port()) watch(port, &topo, &port);
    watch(topo, &topo, nullptr);
  }
  void watchWhatIsNew(const Change& change) {
    if (change.port != nullptr) return;
    if (change.topo != nullptr) {
      const auto* const intf = Topo::portAttr.keyOf(change.id, change.key);
      const Port* const port = intf == nullptr ? nullptr : change.topo->port(*intf);
      if (port != nullptr) watch(*port, change.topo, port);
    } else {
      const auto* const name = Topology::Library::LibState::topoAttr.keyOf(change.id, change.key);
      const Topo* const topo = name == nullptr ? nullptr : state_->topo(*name);
      if (topo != nullptr) watchTopo(*topo);
    }
  }

  Mox::Ptr<const Topology::Library::LibState> state_;
  Handler handler_;
  std::vector<std::unique_ptr<Recorder>> recorders_;
};

}  // namespace Test
