// Counts how often each entry of a VLAN on a published port is written and removed.

#pragma once

#include <map>
#include <ostream>
#include <string>
#include <tuple>

#include "tests/topolib/model/StateWatch.h"

namespace Test {

class EntryJournal {
 public:
  /// Topology, interface and VLAN.
  using Entry = std::tuple<Mox::String, Quill::IntfId, Bridging::VlanId>;
  struct Count {
    unsigned written = 0;
    unsigned removed = 0;

    friend bool operator==(const Count&, const Count&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Count& c) {
      return out << "written " << c.written << ", removed " << c.removed;
    }
  };

  explicit EntryJournal(const Mox::Ptr<const Topology::Library::LibState>& state)
      : watch_(state, [this](const StateWatch::Change& change) { changed(change); }) {}
  EntryJournal(const EntryJournal&) = delete;
  EntryJournal& operator=(const EntryJournal&) = delete;
  ~EntryJournal() = default;

  [[nodiscard]] Count count(const std::string& topo, const std::string& intf, unsigned vid) const {
    const auto found = counts_.find(Entry{topo, intf, vid});
    return found == counts_.end() ? Count{} : found->second;
  }
  [[nodiscard]] const std::map<Entry, Count>& counts() const noexcept { return counts_; }

 private:
  void changed(const StateWatch::Change& change) {
    if (change.port == nullptr) return;
    const auto* const vid = Topology::Library::Port::vlanPortConfigAttr.keyOf(change.id, change.key);
    if (vid == nullptr) return;
    Count& count = counts_[Entry{change.topo->name(), change.port->intf(), *vid}];
    ++(change.port->vlanPortConfig(*vid) != nullptr ? count.written : count.removed);
  }

  std::map<Entry, Count> counts_;
  StateWatch watch_;
};

}  // namespace Test
