#include "topo/Backlog.h"

#include <cmath>
#include <iomanip>
#include <ostream>
#include <sstream>

#include "topo/Agent.h"
#include "topo/Ranges.h"
#include "topo/Table.h"

namespace Topo {

namespace {

using Topology::Library::TopoLibCodef;

[[nodiscard]] std::string ports(std::size_t count) { return std::to_string(count) + (count == 1 ? " port" : " ports"); }

[[nodiscard]] std::string milliseconds(double seconds) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3) << seconds * 1e3 << " ms";
  return text.str();
}

class BacklogPrinter {
 public:
  BacklogPrinter(const Agent& agent, const TopoLibCodef& codef, std::ostream& out)
      : agent_(agent), codef_(codef), out_(out) {}

  void state(bool isColoured) {
    const bool isIdle = codef_.codefState()->idle();
    const std::string text = isIdle ? "idle" : "at work";
    out_ << "Processor:    " << (isColoured ? coloured(text, isIdle ? Colour::green : Colour::yellow) : text);
    if (std::isinf(Loop::nextDue())) {
      out_ << ", no run is due\n";
    } else if (codef_.timeMin() <= Loop::now()) {
      out_ << ", the next run is due now\n";
    } else {
      out_ << ", the next run is due at " << codef_.timeMin() << " s\n";
    }
  }

  void pending(std::optional<Bridging::VlanId> only) {
    std::vector<Bridging::VlanId> whole;
    Table parts({"  VLAN", "PORTS TO SERVE"});
    for (const auto& [vid, dirty] : codef_.dirtyVlanDir()->dirtyVlan()) {
      if (only && *only != vid) continue;
      if (dirty.dirty()) {
        whole.push_back(vid);
      } else if (!dirty.intf().empty()) {
        std::vector<Quill::IntfId> intfs;
        for (const auto& [intf, isMarked] : dirty.intf()) intfs.push_back(intf);
        std::sort(intfs.begin(), intfs.end());
        parts.row({"  " + std::to_string(vid.value()), intfText(intfs)});
      }
    }
    const std::size_t marked = codef_.dirtyVlanDir()->dirtyVlan().size();
    out_ << "Pending:      " << (marked == 0 ? "nothing" : std::to_string(marked) + (marked == 1 ? " VLAN" : " VLANs"))
         << '\n';
    if (!whole.empty()) out_ << "  as a whole: " << vlanText(whole) << '\n';
    parts.print(out_, false);
  }

  /// A visit leaves the ports of the old topology first, and then serves those of the VLAN's configuration.
  void visit() {
    if (codef_.bookmark().isNone()) {
      out_ << "Bookmark:     none\n";
      return;
    }
    const Bridging::VlanId vid(codef_.bookmark());
    const std::size_t leaving = codef_.oldTopoName().empty() ? 0 : codef_.delPendingPortSet()->port().size();
    const std::size_t served = codef_.deletedPortSet()->port().size();
    out_ << "Bookmark:     VLAN " << vid << ", ";
    if (!codef_.oldTopoName().empty()) {
      out_ << "leaving topology " << codef_.oldTopoName() << ": " << ports(served) << " done, " << ports(leaving)
           << " to leave, then " << ports(configuredPorts(vid)) << " to serve\n";
    } else {
      out_ << ports(served) << " served, " << ports(unservedPorts(vid)) << " to serve\n";
    }
  }

  void counters(bool doesTimePass) {
    out_ << "Updates:      " << codef_.updatesSeen() << " seen, " << codef_.updatesProcessed() << " processed\n"
         << "Runs:         " << codef_.dispatchCount() << " finished in " << milliseconds(codef_.timeUsed()) << ", "
         << codef_.yieldBeforeFinishingCount() << " yielded\n"
         << "Slice:        " << milliseconds(codef_.backlogQuantum())
         << (codef_.yieldAfterOne() ? ", one item a run" : "")
         << (doesTimePass || codef_.backlogQuantum() <= 0 ? "" : ", never used up: virtual time has no tick") << '\n';
  }

 private:
  [[nodiscard]] std::size_t configuredPorts(Bridging::VlanId vid) const {
    const Bridging::VlanConfig* const vlan = std::as_const(*agent_.bridging).vlanConfig(vid);
    return vlan == nullptr ? 0 : vlan->vlanPortConfig().size();
  }
  [[nodiscard]] std::size_t unservedPorts(Bridging::VlanId vid) const {
    const Bridging::VlanConfig* const vlan = std::as_const(*agent_.bridging).vlanConfig(vid);
    if (vlan == nullptr) return 0;
    std::size_t count = 0;
    for (const auto& [intf, config] : vlan->vlanPortConfig()) {
      if (codef_.deletedPortSet()->port(intf) == nullptr) ++count;
    }
    return count;
  }

  const Agent& agent_;
  const TopoLibCodef& codef_;
  std::ostream& out_;
};

}  // namespace

void printBacklog(const Agent& agent, const Loop& loop, std::optional<Bridging::VlanId> vlan, std::ostream& out,
                  bool isColoured) {
  const TopoLibCodef* const codef = agent.codef();
  if (codef == nullptr) {
    const char* const why = agent.libSm() == nullptr ? "is not running" : "waits for its interfaces";
    out << "The library " << why << ".\n";
    return;
  }
  BacklogPrinter printer(agent, *codef, out);
  if (vlan) {
    printer.pending(vlan);
    return;
  }
  printer.state(isColoured);
  printer.pending(std::nullopt);
  printer.visit();
  printer.counters(loop.passesDuringWork());
  const Loop::LongestRun& longest = loop.longestRun();
  out << "Longest run:  ";
  if (!agent.libSm()->deferProcessing()) {
    out << "not measured: the commands do the work themselves\n";
  } else if (longest.vlan.isNone()) {
    out << "none yet\n";
  } else {
    out << milliseconds(longest.seconds) << " of real time, from VLAN " << longest.vlan << " on\n";
  }
}

}  // namespace Topo
