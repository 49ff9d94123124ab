// An entity with a scalar, a collection of values and a collection of entities, and a state machine with a reactor on it:
// the program that the manuals of mox/Entity.h and mox/StateMachine.h explain.

#include <iostream>
#include <utility>

#include "mox/Entity.h"
#include "mox/StateMachine.h"

class Bulb : public Mox::Entity {
 public:
  static constexpr Mox::ScalarAttribute wattAttr{0, "watt"};

  explicit Bulb(Mox::String socket) : socket_(std::move(socket)) {}
  Mox::String name() const override { return socket_; }

  unsigned watt() const { return watt_; }
  void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }

 private:
  Mox::String socket_;
  unsigned watt_ = 0;
};

class Lamp : public Mox::NamedEntity {
 public:
  static constexpr Mox::ScalarAttribute litAttr{0, "lit"};
  static constexpr Mox::CollectionAttribute<Mox::String> sceneAttr{1, "scene"};
  static constexpr Mox::CollectionAttribute<Mox::String> bulbAttr{2, "bulb"};
  using NamedEntity::NamedEntity;

  // lit: a scalar
  bool lit() const { return lit_; }
  void litIs(bool v) { scalarIs(lit_, v, litAttr); }

  // scene[name]: brightness in percent, a collection of values
  const auto& scene() const { return scene_; }
  const unsigned* scene(const Mox::String& name) const { return scene_.find(name); }
  void sceneIs(const Mox::String& name, unsigned v) { valueIs(scene_, sceneAttr, name, v); }
  void sceneDel(const Mox::String& name) { valueDel(scene_, sceneAttr, name); }
  void sceneDelAll() { valueDelAll(scene_, sceneAttr); }

  // bulb[socket]: a collection of entities
  const auto& bulb() const { return bulb_; }
  const Bulb* bulb(const Mox::String& socket) const { return bulb_.find(socket); }
  Bulb* bulb(const Mox::String& socket) { return bulb_.find(socket); }
  Mox::Ptr<Bulb> bulbIs(const Mox::String& socket) { return memberIs(bulb_, bulbAttr, socket); }
  void bulbDel(const Mox::String& socket) { memberDel(bulb_, bulbAttr, socket); }
  void bulbDelAll() { memberDelAll(bulb_, bulbAttr); }

 private:
  bool lit_ = false;
  Mox::ValueCollection<Mox::String, unsigned> scene_;
  Mox::EntityCollection<Mox::String, Bulb> bulb_;
};

/// Counts how often the lamp is lit, and tells which bulbs come and go.
class GuardSm : public Mox::StateMachine<GuardSm> {
 public:
  explicit GuardSm(const Mox::Ptr<const Lamp>& lamp) : lamp_(this, lamp) { handleInitialized(); }
  ~GuardSm() override { moxDoZombieReactors(true); }

  unsigned count() const { return count_; }

  void handleInitialized() { initializedIs(true); }
  void handleLit() {
    if (initialized() && lamp_.notifier()->lit()) ++count_;
  }
  void handleBulb(Mox::String socket) {
    std::cout << "bulb " << socket << (lamp_.notifier()->bulb(socket) != nullptr ? " is in\n" : " is out\n");
  }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(lamp_); }

  class MoxLamp : public Mox::Reactor<MoxLamp, GuardSm, Lamp> {
   public:
    using Reactor::Reactor;
    void onAttribute(Mox::AttributeId id, const void* key) override {
      if (Lamp::litAttr.is(id)) sm().handleLit();
      if (const auto* socket = Lamp::bulbAttr.keyOf(id, key)) sm().handleBulb(*socket);
    }
  };

  MoxLamp lamp_;
  unsigned count_ = 0;
};

int main() {
  auto lamp = Mox::makePtr<Lamp>("hall");
  auto guard = Mox::makePtr<GuardSm>(lamp);

  lamp->litIs(true);  // notifies `lit`
  lamp->litIs(true);  // silent: nothing changed
  lamp->sceneIs("evening", 40);
  lamp->bulbIs("left")->wattIs(7);
  lamp->bulbDel("left");

  std::cout << lamp << " was lit " << guard->count() << " time, " << *lamp->scene("evening") << " % in the evening\n";
  return 0;
}
