// Random operations on the published state, against a plain model, and watched by mirrors that know it from
// notifications alone.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/support/Random.h"
#include "topolib/LibState.h"

namespace Topology::Library::LibStateRandomTest {

using Bridging::VlanId;
using Bridging::VlanPortConfig;
using Bridging::Topology::PortState;
using Mox::Ptr;
using Mox::String;
using Quill::IntfId;
using Test::Random;
using Test::seedTrace;

struct PortModel {
  std::map<VlanId, VlanPortConfig> vlans;
  bool active = false;
  PortState state = PortState::disabled;
  std::uint32_t fdbFlush = 0;

  friend bool operator==(const PortModel&, const PortModel&) = default;
};
using TopoModel = std::map<IntfId, PortModel>;
struct StateModel {
  std::map<String, TopoModel> topos;
  bool initDone = false;

  friend bool operator==(const StateModel&, const StateModel&) = default;
};

PortModel readPort(const Port& port) {
  PortModel model{{}, port.active(), port.state(), port.fdbFlush()};
  for (const auto& [vid, config] : port.vlanPortConfig()) EXPECT_TRUE(model.vlans.emplace(vid, config).second);
  return model;
}
TopoModel readTopo(const Topo& topo) {
  TopoModel model;
  for (const auto& [intf, port] : topo.port()) {
    EXPECT_EQ(port.intf(), intf);
    EXPECT_EQ(port.parent(), &topo);
    EXPECT_TRUE(model.emplace(intf, readPort(port)).second);
  }
  return model;
}
StateModel readState(const LibState& state) {
  StateModel model{{}, state.initDone()};
  for (const auto& [name, topo] : state.topo()) {
    EXPECT_EQ(topo.name(), name);
    EXPECT_EQ(topo.parent(), &state);
    EXPECT_TRUE(model.topos.emplace(name, readTopo(topo)).second);
  }
  return model;
}

/// What the mirrors of one state share: how many notifications came, and what to do before each is read.
struct Watch {
  std::size_t notifications = 0;
  std::function<void()> meddle;

  void notified() {
    ++notifications;
    if (meddle) meddle();
  }
};

/// Copies from an entity, at each notification, what it is about.
template <class T>
class Mirror : public Mox::PtrInterface::NotifieeConst {
 public:
  Mirror(Watch& watch, const T& entity) : watch_(&watch), entity_(&entity) {
    hasNotificationActiveIs(true);
    notifierIs(&entity);
  }

  void onAttribute(Mox::AttributeId id, const void* key) final {
    const Ptr<NotifieeConst> self(this);  // Meddling may remove the mirror.
    watch_->notified();
    copy(id, key);
  }

  [[nodiscard]] const T& entity() const { return *entity_; }

 protected:
  [[nodiscard]] Watch& watch() const { return *watch_; }

 private:
  virtual void copy(Mox::AttributeId id, const void* key) = 0;

  Watch* watch_;
  Ptr<const T> entity_;
};

class PortMirror : public Mirror<Port> {
 public:
  PortMirror(Watch& watch, const Port& port) : Mirror(watch, port), model_(readPort(port)) {}

  [[nodiscard]] const PortModel& model() const { return model_; }

 private:
  void copy(Mox::AttributeId id, const void* key) override {
    if (const VlanId* const vid = Port::vlanPortConfigAttr.keyOf(id, key)) {
      const VlanPortConfig* const config = entity().vlanPortConfig(*vid);
      model_.vlans.erase(*vid);
      if (config != nullptr) model_.vlans.emplace(*vid, *config);
    }
    if (Port::activeAttr.is(id)) model_.active = entity().active();
    if (Port::stateAttr.is(id)) model_.state = entity().state();
    if (Port::fdbFlushAttr.is(id)) model_.fdbFlush = entity().fdbFlush();
  }

  PortModel model_;
};

/// Follows whether a member is there: drops the mirror of one that is gone, and makes one for a new entity.
template <class Key, class M, class T>
void follow(std::map<Key, Ptr<M>>& mirrors, Watch& watch, const Key& key, const T* present) {
  const auto found = mirrors.find(key);
  if (found != mirrors.end() && &found->second->entity() != present) mirrors.erase(found);
  if (present != nullptr && !mirrors.contains(key)) mirrors.emplace(key, Mox::makePtr<M>(watch, *present));
}

class TopoMirror : public Mirror<Topo> {
 public:
  TopoMirror(Watch& watch, const Topo& topo) : Mirror(watch, topo) {
    for (const auto& [intf, port] : topo.port()) follow(ports_, watch, IntfId(intf), &port);
  }

  [[nodiscard]] TopoModel model() const {
    TopoModel model;
    for (const auto& [intf, port] : ports_) model.emplace(intf, port->model());
    return model;
  }

 private:
  void copy(Mox::AttributeId id, const void* key) override {
    if (const IntfId* const intf = Topo::portAttr.keyOf(id, key)) follow(ports_, watch(), *intf, entity().port(*intf));
  }

  std::map<IntfId, Ptr<PortMirror>> ports_;
};

class StateMirror : public Mirror<LibState> {
 public:
  StateMirror(Watch& watch, const LibState& state) : Mirror(watch, state), initDone_(state.initDone()) {
    for (const auto& [name, topo] : state.topo()) follow(topos_, watch, String(name), &topo);
  }

  [[nodiscard]] StateModel model() const {
    StateModel model{{}, initDone_};
    for (const auto& [name, topo] : topos_) model.topos.emplace(name, topo->model());
    return model;
  }

 private:
  void copy(Mox::AttributeId id, const void* key) override {
    if (const String* const name = LibState::topoAttr.keyOf(id, key)) {
      follow(topos_, watch(), *name, entity().topo(*name));
    }
    if (LibState::initDoneAttr.is(id)) initDone_ = entity().initDone();
  }

  std::map<String, Ptr<TopoMirror>> topos_;
  bool initDone_;
};

/// Does random things to a state, and the same to a model of it.
class Writer {
 public:
  explicit Writer(Random& random) : random_(random) {}

  [[nodiscard]] const LibState& state() const { return *state_; }
  [[nodiscard]] const StateModel& model() const { return model_; }
  /// How many notifications the operations so far should have given.
  [[nodiscard]] std::size_t changes() const { return changes_; }

  void act() {
    switch (random_.below(100)) {
      case 0:
        return delAllTopos();
      case 1:
      case 2:
      case 3:
        return delTopo(anyName());
      case 4:
        return delAllPorts();
      case 5:
        return initDoneIs(random_.percent(50));
      case 6:
        return fill();
      case 7:
        return static_cast<void>(topoIs(anyName()));
      default:
        return actOnPort();
    }
  }

 private:
  String anyName() {
    static const std::vector<String> names{"A", "B", "C", "", "a longer name than the others \xC3\xA9"};
    return names[random_.below(names.size())];
  }
  IntfId anyIntf() {
    static const std::vector<IntfId> intfs{"Ethernet1",   "Ethernet2", "Ethernet10", "Ethernet1/1", "PortChannel1",
                                           "Ethernet1.5", "Cpu",       "anything",   "vxlan1",      ""};
    return intfs[random_.below(intfs.size())];
  }
  VlanId anyVlan() { return 1 + random_.below(random_.percent(80) ? 100 : 4094); }
  VlanPortConfig anyConfig() {
    return VlanPortConfig(static_cast<Bridging::AllowedTrafficDirection>(random_.below(2)), random_.percent(50));
  }

  Ptr<Topo> topoIs(const String& name) {
    changes_ += model_.topos.try_emplace(name).second ? 1 : 0;
    return state_->topoIs(name);
  }
  Ptr<Port> portIs(Topo& topo, const String& name, IntfId intf) {
    changes_ += model_.topos[name].try_emplace(intf).second ? 1 : 0;
    return topo.portIs(intf);
  }
  void delTopo(const String& name) {
    changes_ += model_.topos.erase(name);
    state_->topoDel(name);
  }
  void delAllTopos() {
    changes_ += model_.topos.size();
    model_.topos.clear();
    state_->topoDelAll();
  }
  void delAllPorts() {
    const String name = anyName();
    const Ptr<Topo> topo = topoIs(name);
    changes_ += model_.topos[name].size();
    model_.topos[name].clear();
    topo->portDelAll();
  }
  void initDoneIs(bool v) {
    write(model_.initDone, v);
    state_->initDoneIs(v);
  }

  /// Many ports in a topology, or many VLANs on a port, so that the collections change their form.
  void fill() {
    const String name = anyName();
    const Ptr<Topo> topo = topoIs(name);
    if (random_.percent(50)) {
      for (int i = 0; i < 40; ++i) static_cast<void>(portIs(*topo, name, "Ethernet" + std::to_string(100 + i)));
      return;
    }
    const IntfId intf = anyIntf();
    const Ptr<Port> port = portIs(*topo, name, intf);
    const VlanPortConfig config = anyConfig();
    for (int vid = 1; vid <= 300; ++vid) vlanPortConfigIs(*port, name, intf, vid, config);
  }

  void actOnPort() {
    const String name = anyName();
    const IntfId intf = anyIntf();
    const Ptr<Topo> topo = topoIs(name);
    if (random_.percent(8)) {
      changes_ += model_.topos[name].erase(intf);
      strays_.emplace_back(topo->port(intf));
      return topo->portDel(intf);
    }
    const Ptr<Port> port = portIs(*topo, name, intf);
    switch (random_.below(10)) {
      case 0: {
        const bool active = random_.percent(50);
        write(model_.topos[name][intf].active, active);
        return port->activeIs(active);
      }
      case 1: {
        const auto portState = static_cast<PortState>(random_.below(4));
        write(model_.topos[name][intf].state, portState);
        return port->stateIs(portState);
      }
      case 2: {
        const auto count = static_cast<std::uint32_t>(random_.below(3));
        write(model_.topos[name][intf].fdbFlush, count);
        return port->fdbFlushIs(count);
      }
      case 3:
        return writeToStray();
      case 4:
      case 5: {
        const VlanId vid = anyVlan();
        changes_ += model_.topos[name][intf].vlans.erase(vid);
        return port->vlanPortConfigDel(vid);
      }
      case 6: {
        if (random_.percent(80)) return;
        auto& vlans = model_.topos[name][intf].vlans;
        changes_ += vlans.size();
        vlans.clear();
        return port->vlanPortConfigDelAll();
      }
      default:
        return vlanPortConfigIs(*port, name, intf, anyVlan(), anyConfig());
    }
  }

  void vlanPortConfigIs(Port& port, const String& name, IntfId intf, VlanId vid, const VlanPortConfig& config) {
    const auto [place, isNew] = model_.topos[name][intf].vlans.try_emplace(vid, config);
    if (isNew) ++changes_;
    write(place->second, config);
    port.vlanPortConfigIs(vid, config);
  }

  /// A port that was removed and is still held is no part of the state any more.
  void writeToStray() {
    if (strays_.empty()) return;
    const Ptr<Port> stray = std::exchange(strays_[random_.below(strays_.size())], nullptr);
    if (!stray) return;
    stray->activeIs(!stray->active());
    stray->vlanPortConfigIs(anyVlan(), anyConfig());
  }

  template <class T>
  void write(T& stored, const T& value) {
    changes_ += stored == value ? 0 : 1;
    stored = value;
  }

  Random& random_;
  Ptr<LibState> state_ = libStateFactory("state");
  StateModel model_;
  std::size_t changes_ = 0;
  std::vector<Ptr<Port>> strays_;
};

TEST(LibStateRandom, isItsModelAndNotifiesEveryChangeOnce) {
  SCOPED_TRACE(seedTrace());
  Random random;
  Writer writer(random);
  Watch watch;
  const auto mirror = Mox::makePtr<StateMirror>(watch, writer.state());
  for (int i = 0; i < 10'000; ++i) {
    writer.act();
    ASSERT_EQ(watch.notifications, writer.changes()) << "step " << i;
    if (i % 8 != 0) continue;
    ASSERT_TRUE(readState(writer.state()) == writer.model()) << "step " << i;
    ASSERT_TRUE(mirror->model() == writer.model()) << "step " << i;
  }
}

TEST(LibStateRandom, readerThatComesLateCatchesUp) {
  SCOPED_TRACE(seedTrace());
  Random random;
  Writer writer(random);
  for (int round = 0; round < 20; ++round) {
    for (int i = 0; i < 50; ++i) writer.act();
    Watch watch;
    const auto mirror = Mox::makePtr<StateMirror>(watch, writer.state());
    ASSERT_TRUE(mirror->model() == writer.model()) << "round " << round;
    for (int i = 0; i < 50; ++i) writer.act();
    ASSERT_TRUE(mirror->model() == writer.model()) << "round " << round;
  }
}

// A reader that writes, from inside the notifications, leaves every reader with what is there in the end, whether it is
// told before or after the one that writes.
TEST(LibStateRandom, readersAgreeWhenOneOfThemWrites) {
  SCOPED_TRACE(seedTrace());
  Random random;
  Writer writer(random);
  Watch before;
  Watch meddling;
  Watch after;
  int depth = 0;
  std::size_t meddled = 0;
  meddling.meddle = [&] {
    if (depth == 3 || !random.percent(20)) return;
    ++depth;
    ++meddled;
    writer.act();
    --depth;
  };
  const auto first = Mox::makePtr<StateMirror>(before, writer.state());
  const auto meddler = Mox::makePtr<StateMirror>(meddling, writer.state());
  const auto last = Mox::makePtr<StateMirror>(after, writer.state());
  for (int i = 0; i < 3'000; ++i) {
    writer.act();
    if (i % 8 != 0) continue;
    const StateModel present = readState(writer.state());
    ASSERT_TRUE(first->model() == present) << "step " << i;
    ASSERT_TRUE(meddler->model() == present) << "step " << i;
    ASSERT_TRUE(last->model() == present) << "step " << i;
  }
  EXPECT_GT(meddled, 1'000U);
}

}  // namespace Topology::Library::LibStateRandomTest
