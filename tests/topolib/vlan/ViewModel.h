// The library with publisher and view under random changes, and what the two have to show, told from the published state,
// the interfaces and the forced ports alone.

#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/topolib/Publisher.h"
#include "tests/topolib/model/Check.h"
#include "tests/topolib/model/StateWatch.h"
#include "tests/topolib/vlan/View.h"

namespace Test {

/// The ports that the publisher has to report for a topology.
[[nodiscard]] inline std::set<Quill::IntfId> reportedPorts(const Topology::Library::Topo& topo,
                                                           const Interface::EthIntfStatusDir& intfDir) {
  std::set<Quill::IntfId> ports;
  for (const auto& [intf, port] : topo.port()) {
    const auto* const status = intfDir.intfStatus(intf);
    const bool isLinkUp = status != nullptr && unsigned(status->linkStatus()) == 2;
    const unsigned model = status == nullptr ? 0 : unsigned(status->forwardingModel());
    const bool isSubIntf = intf.kind() == Quill::IntfKind::subIntf;
    const bool isUp = isSubIntf ? model != 4 || isLinkUp : isLinkUp && (model == 4 || model == 5);
    if (intf.kind() == Quill::IntfKind::cpu || (status != nullptr && isUp)) ports.insert(intf);
  }
  return ports;
}

/// A port of a VLAN of the view.
struct ModelViewPort {
  std::set<Mox::String> topos;
  // The verdicts of every topology that carries the port in the VLAN, member or not.
  std::set<bool> blocked;
  std::set<Bridging::AllowedTrafficDirection> directions;
};
using ModelView = std::map<std::pair<Bridging::VlanId, Quill::IntfId>, ModelViewPort>;

[[nodiscard]] inline ModelView modelView(const Topology::Library::LibState& state,
                                         const std::map<Quill::IntfId, bool>& forced) {
  ModelView view;
  for (const auto& [name, topo] : state.topo()) {
    for (const auto& [intf, port] : topo.port()) {
      const auto found = forced.find(intf);
      const bool isForced = found != forced.end() && found->second;
      for (const auto& [vid, config] : port.vlanPortConfig()) {
        ModelViewPort& viewPort = view[{vid, intf}];
        if (port.active() || isForced) viewPort.topos.insert(name);
        viewPort.blocked.insert(unsigned(port.state()) != 3 && !isForced);
        viewPort.directions.insert(config.allowedTrafficDirection());
      }
    }
  }
  std::erase_if(view, [](const auto& item) { return item.second.topos.empty(); });
  return view;
}

class ViewPlay {
 public:
  struct Step {
    std::string line;
    std::function<void(ViewPlay&)> apply;
    bool isInside = false;  // takes place inside the next notification of the state, the view or the instance status
  };

  /// Whether the publisher writes the status that the library watches.
  ViewPlay(const Start& start, bool isShared)
      : agent_(start),
        isShared_(isShared),
        published_(isShared ? agent_.statusInst : Bridging::Topology::Inst::statusFactory("published")),
        stateWatch_(agent_.state, [this](const StateWatch::Change& change) { stateChanged(change); }),
        statusLog_(published_, agent_.config) {
    agent_.mayWriteStatusInst = [this] { return mayWriteStatus(); };
    agent_.mayDeleteTopo = [this](const std::string& topo) { return !isPublisherOn_ || !isUntold(topo); };
    // Whoever reads an input is told of it beside the library, and must not change it on the way.
    statusLog_.actionIs([this](const std::string& line) {
      if (line.find(" config ") == std::string::npos) actInside();
    });
  }

  /// What goes wrong first; empty if nothing does.
  [[nodiscard]] std::string run(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      hasReaders_ = hasReaders_ || step.isInside;
      step.isInside ? waiting_.push_back(step) : step.apply(*this);
      if (!failure_.empty()) return "at " + step.line + ": " + failure_;
    }
    startLibrary();
    drainAndCompare();
    return failure_.empty() ? failure_ : "at the end: " + failure_;
  }

  // What the steps do.
  [[nodiscard]] Agent& agent() noexcept { return agent_; }
  [[nodiscard]] bool mayWriteStatus() const noexcept { return !isShared_ || !isPublisherOn_; }

  void startLibrary() {
    if (!agent_.libSm) agent_.startLibrary();
  }
  void startPublisher() {
    if (std::exchange(isPublisherOn_, true)) return;
    announced_.clear();
    if (agent_.state->initDone()) noteLeftovers();
    publisherSm_ = publisherRoot_->topologyStatusLibSmIs(published_, agent_.state, agent_.config, agent_.intfDir);
  }
  void stopPublisher() {
    if (!publisherSm_) return;
    isPublisherOn_ = false;
    publisherSm_ = nullptr;
    publisherRoot_ = Topology::Library::rootFactory("publisher");
  }
  /// Leaves a status as an earlier run may have done.
  void leaveStatus(const std::string& topo, unsigned number, const std::string& intf) {
    if (isPublisherOn_ || isShared_) return;
    published_->topoStatusDel(topo);
    // Somebody who was told of the deletion may have left another one.
    if (isPublisherOn_ || published_->topoStatus(topo) != nullptr) return;
    const auto left = published_->topoStatusIs(topo, number);
    if (!isPublisherOn_) left->topoPortStatusIs(intf, 3);
  }
  void startView() {
    if (std::exchange(isViewOn_, true)) return;
    view_ = Topology::Library::Vlan::libVlanStateFactory("view");
    for (const auto& [intf, isForced] : forced_) view_->forceEnabledPortsIs(intf, isForced);
    viewLog_ = std::make_unique<ViewLog>(view_);
    viewLog_->actionIs([this](const std::string&) { actInside(); });
    viewSm_ = Topology::Library::Vlan::vlanLibSmFactory(agent_.state, view_);
  }
  void stopView() {
    if (!viewSm_) return;
    isViewOn_ = false;
    viewSm_ = nullptr;
    old_.emplace_back(view_, std::nullopt);
  }
  /// Ends it and starts it again over the same view. What would go meanwhile would stay in the view, so nothing does.
  void restartView() {
    if (!viewSm_ || isInside_) return;
    isInside_ = true;
    isRestarting_ = true;
    viewSm_ = nullptr;
    viewSm_ = Topology::Library::Vlan::vlanLibSmFactory(agent_.state, view_);
    isRestarting_ = false;
    isInside_ = false;
  }
  void force(const std::string& intf, std::optional<bool> isForced) {
    if (isForced) {
      forced_[intf] = *isForced;
      if (isViewOn_) view_->forceEnabledPortsIs(intf, *isForced);
    } else {
      forced_.erase(intf);
      if (isViewOn_) view_->forceEnabledPortsDel(intf);
    }
  }
  void drainAndCompare() {
    for (unsigned rounds = 0; Mox::activityManager()->nextDue() <= Mox::System::currentTime(); ++rounds) {
      if (rounds == 20'000) failure_ = "the backlog is never worked off\n";
      if (rounds == 20'000) return;
      Mox::activityManager()->dispatch();
    }
    if (agent_.libSm) {
      for (const std::string& difference : Check(agent_).differences()) failure_ += "  state: " + difference + '\n';
    }
    if (publisherSm_) compareStatus();
    if (viewSm_) compareView();
    for (auto& [view, contents] : old_) {
      if (!contents) contents = contentsOf(*view);
      holds(*contents == contentsOf(*view), "a view that has ended changes");
    }
  }

 private:
  void holds(bool isTrue, const auto&... pieces) {
    if (!isTrue) failure_ += "  " + textOf(pieces...) + '\n';
  }

  void actInside() {
    if (waiting_.empty() || isRestarting_) return;
    const Step step = std::move(waiting_.front());
    waiting_.pop_front();
    const bool wasInside = std::exchange(isInside_, true);
    step.apply(*this);
    isInside_ = wasInside;
  }
  void stateChanged(const StateWatch::Change& change) {
    using Topology::Library::LibState;
    if (change.topo == nullptr && change.port == nullptr) {
      if (const auto* const name = LibState::topoAttr.keyOf(change.id, change.key)) noteTopo(*name);
      if (LibState::initDoneAttr.is(change.id) && isPublisherOn_) noteLeftovers();
    }
    actInside();
  }
  [[nodiscard]] const Topology::Library::TopoSm* publisherOf(const Mox::String& name) const {
    return publisherSm_ ? std::as_const(*publisherSm_).topoSm(name) : nullptr;
  }
  /// Whether a topology has been announced, and not yet to the publisher. Those that its start or the end of the first
  /// pass finds are not announced to it one by one.
  [[nodiscard]] bool isUntold(const Mox::String& name) const {
    const auto* const topo = std::as_const(*agent_.state).topo(name);
    const auto* const topoSm = publisherOf(name);
    return topo != nullptr && announced_.contains(name) && (topoSm == nullptr || topoSm->topo() != topo);
  }
  /// A topology has come or gone; the publisher learns it later.
  void noteTopo(const Mox::String& name) {
    leftovers_.erase(name);
    if (std::as_const(*agent_.state).topo(name) != nullptr) {
      if (agent_.state->initDone()) announced_.insert(name);
      return;
    }
    announced_.erase(name);
    // One that goes before the publisher comes to it leaves the status that the publisher has found.
    const auto found = found_.find(name);
    const bool isAsFound = found != found_.end() && found->second == published_->topoStatus(name);
    if (isPublisherOn_ && isAsFound && publisherOf(name) == nullptr) leftovers_.insert(name);
  }
  /// Statuses of topologies that are configured and not published stay where they are.
  void noteLeftovers() {
    leftovers_.clear();
    found_.clear();
    for (const auto& [name, status] : published_->topoStatus()) {
      found_.emplace(name, published_->topoStatus(name));
      const bool isPublished = std::as_const(*agent_.state).topo(name) != nullptr;
      if (!isPublished && (hasReaders_ || agent_.config->topoConfig(name) != nullptr)) leftovers_.insert(name);
    }
  }

  void compareStatus() {
    if (!agent_.state->initDone()) return;
    for (const auto& [name, topo] : agent_.state->topo()) {
      const auto* const status = std::as_const(*published_).topoStatus(name);
      holds(status != nullptr, "status ", name, " is missing");
      if (status == nullptr) continue;
      holds(status->topoNumber() == agent_.config->topoConfig(name)->topoNumber(), "status ", name, ": number");
      const std::set<Quill::IntfId> expected = reportedPorts(topo, *agent_.intfDir);
      for (const Quill::IntfId intf : expected) {
        holds(status->topoPortStatus(intf) != nullptr, "status ", name, '/', intf, " is missing");
      }
      for (const auto& [intf, number] : status->topoPortStatus()) {
        holds(expected.contains(intf), "status ", name, '/', intf, " should not be there");
      }
    }
    for (const auto& [name, status] : published_->topoStatus()) {
      const bool isPublished = std::as_const(*agent_.state).topo(name) != nullptr;
      holds(isPublished || leftovers_.contains(name), "status ", name, " should not be there");
    }
    for (const Mox::String& name : leftovers_) {
      const bool isThere = std::as_const(*published_).topoStatus(name) != nullptr;
      holds(isThere || hasReaders_ || isShared_, "status ", name, ", left from before, is gone");
    }
  }

  void compareView() {
    holds(view_->initDone() == agent_.state->initDone(), "view: initDone is ", view_->initDone());
    if (!agent_.state->initDone()) {
      holds(view_->topoVlan().empty(), "view: it is built before its time");
      return;
    }
    const ModelView expected = modelView(*agent_.state, forced_);
    for (const auto& [key, port] : expected) {
      const auto* const vlan = std::as_const(*view_).topoVlan(key.first);
      holds(vlan != nullptr && vlan->topoPort(key.second) != nullptr, key.first, '/', key.second, " is missing");
    }
    for (const auto& [vid, vlan] : view_->topoVlan()) {
      holds(!vlan.topoPort().empty(), vid, " is empty");
      for (const auto& [intf, port] : vlan.topoPort()) {
        const auto found = expected.find({vid, intf});
        holds(found != expected.end(), vid, '/', intf, " should not be there");
        if (found != expected.end()) compareViewPort(textOf(vid, '/', intf, ": "), port, found->second);
      }
    }
  }

  void compareViewPort(const std::string& at, const Topology::Library::Vlan::Port& port,
                       const ModelViewPort& expected) {
    for (const Mox::String& name : expected.topos) holds(port.topo(name) != nullptr, at, "misses ", name);
    for (const auto& [name, mapping] : port.topo()) {
      holds(expected.topos.contains(name), at, "should not have ", name);
      const auto* const topoSm = std::as_const(*viewSm_).topoSm(name);
      holds(topoSm != nullptr && topoSm->vlanPortMapping(port.intf()) == mapping.get(), at, "old mapping of ", name);
    }
    holds(expected.blocked.contains(port.blocked()), at, "blocked ", port.blocked());
    holds(expected.directions.contains(port.allowedTrafficDirection()), at, port.allowedTrafficDirection());
  }

  Agent agent_;
  bool isShared_;
  Mox::Ptr<Bridging::Topology::Inst::Status> published_;
  Mox::Ptr<Topology::Library::Root> publisherRoot_ = Topology::Library::rootFactory("publisher");
  Mox::Ptr<Topology::Library::TopologyStatusLibSm> publisherSm_;
  std::map<Quill::IntfId, bool> forced_;
  Mox::Ptr<Topology::Library::Vlan::LibVlanState> view_;
  std::unique_ptr<ViewLog> viewLog_;
  Mox::Ptr<Topology::Library::Vlan::VlanLibSm> viewSm_;
  std::vector<std::pair<Mox::Ptr<Topology::Library::Vlan::LibVlanState>, std::optional<std::set<std::string>>>> old_;
  std::deque<Step> waiting_;
  // From the beginning of their start on.
  bool isPublisherOn_ = false;
  bool isViewOn_ = false;
  bool isInside_ = false;
  bool isRestarting_ = false;
  bool hasReaders_ = false;
  std::map<Mox::String, Mox::Ptr<const Bridging::Topology::Inst::TopoStatus>> found_;
  std::set<Mox::String> leftovers_;
  std::set<Mox::String> announced_;
  StateWatch stateWatch_;
  StatusLog statusLog_;
  std::string failure_;
};

}  // namespace Test
