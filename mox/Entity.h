// Entities: named, counted objects whose attributes notify when they change.
//
// Overview
//   An entity class declares, per attribute, a constant that identifies it, a private member that stores it, and one-line
//   operations. By convention attribute `x` is read by `x()` and written by `xIs(v)`; a collection member is read by
//   `x(key)`, made or found by `xIs(key)`, removed by `xDel(key)`, and `xDelAll()` removes all.
//
// Usage: a lamp with a scalar, a value collection and an entity collection
//
//   class Bulb : public Mox::Entity {
//    public:
//     static constexpr Mox::ScalarAttribute wattAttr{0, "watt"};
//
//     explicit Bulb(Mox::String socket) : socket_(std::move(socket)) {}   // an entity collection passes the key
//     Mox::String name() const override { return socket_; }
//
//     unsigned watt() const { return watt_; }
//     void wattIs(unsigned v) { scalarIs(watt_, v, wattAttr); }
//
//    private:
//     Mox::String socket_;
//     unsigned watt_ = 0;
//   };
//
//   class Lamp : public Mox::NamedEntity {
//    public:
//     static constexpr Mox::ScalarAttribute litAttr{0, "lit"};
//     static constexpr Mox::CollectionAttribute<Mox::String> sceneAttr{1, "scene"};
//     static constexpr Mox::CollectionAttribute<Mox::String> bulbAttr{2, "bulb"};
//     using NamedEntity::NamedEntity;
//
//     // lit: a scalar
//     bool lit() const { return lit_; }
//     void litIs(bool v) { scalarIs(lit_, v, litAttr); }
//
//     // scene[name]: brightness in percent, a collection of values
//     const auto& scene() const { return scene_; }
//     const unsigned* scene(const Mox::String& name) const { return scene_.find(name); }
//     void sceneIs(const Mox::String& name, unsigned v) { valueIs(scene_, sceneAttr, name, v); }
//     void sceneDel(const Mox::String& name) { valueDel(scene_, sceneAttr, name); }
//     void sceneDelAll() { valueDelAll(scene_, sceneAttr); }
//
//     // bulb[socket]: a collection of entities
//     const auto& bulb() const { return bulb_; }
//     const Bulb* bulb(const Mox::String& socket) const { return bulb_.find(socket); }
//     Bulb* bulb(const Mox::String& socket) { return bulb_.find(socket); }
//     Mox::Ptr<Bulb> bulbIs(const Mox::String& socket) { return memberIs(bulb_, bulbAttr, socket); }
//     void bulbDel(const Mox::String& socket) { memberDel(bulb_, bulbAttr, socket); }
//     void bulbDelAll() { memberDelAll(bulb_, bulbAttr); }
//
//    private:
//     bool lit_ = false;
//     Mox::ValueCollection<Mox::String, unsigned> scene_;
//     Mox::EntityCollection<Mox::String, Bulb> bulb_;
//   };
//
//   auto lamp = Mox::makePtr<Lamp>("hall");      // or a factory function of yours: lampFactory("hall")
//   lamp->litIs(true);                           // notifies `lit`
//   lamp->litIs(true);                           // silent: nothing changed
//   lamp->sceneIs("evening", 40);                // notifies `scene` with "evening"
//   lamp->bulbIs("left")->wattIs(7);             // notifies `bulb` with "left", then the bulb's `watt`
//
// A state machine with a reactor on it is shown in mox/StateMachine.h; examples/lamp.cpp is the whole program.
//
// Rules
//   - Each operation first stores the change and then notifies, once; it notifies only when something changed. What
//     handlers may do meanwhile stands in mox/Notifiee.h. A member that a handler deletes is still returned by `memberIs`
//     and lives while the caller holds it.
//   - `memberIs` makes `T(key, args...)`. Where there are further arguments, T must have `isBuiltFrom(args...)`: an
//     existing member that was built from others raises MutatorReinstantiatingException, and nothing changes.
//   - Handlers have run when the operation returns. A change inside a member notifies the member's reactors, not those of
//     the collection's entity.
//   - A removed member is absent when its removal is notified, and is destroyed last, as is an overwritten value.
//     `...DelAll` removes one by one in the order of a pass, with a notification each; a member that a handler inserts
//     behind the position stays. Removing what is absent does nothing.
//   - The number of an attribute is any that its class uses once; its name is for people.
//   - mox/Entity.h is all that an entity needs to include; mox/Collection.h says how to iterate.
//   - An entity belongs to its collection: its parent is the collection's entity while it is a member, and null after.
//
// Limits: everything happens on the activity thread. Destroying an entity notifies nobody.

#pragma once

#include <ostream>
#include <type_traits>
#include <utility>

#include "mox/Notifier.h"
#include "mox/Ptr.h"
#include "mox/String.h"

namespace Mox {

class MOX_PUBLIC Entity : public Notifier {
 public:
  ~Entity() override;

  /// The entity's name, empty for one that is known by a key of another kind.
  [[nodiscard]] virtual String name() const;

  /// The object whose collection this entity is a member of, or null.
  [[nodiscard]] const Notifier* parent() const noexcept { return parent_; }
  [[nodiscard]] Notifier* parent() noexcept { return parent_; }
  void parentIs(Notifier* parent) noexcept { parent_ = parent; }

 protected:
  Entity() noexcept = default;

 private:
  Notifier* parent_ = nullptr;
};

/// An entity with a name, fixed at construction.
class MOX_PUBLIC NamedEntity : public Entity {
 public:
  explicit NamedEntity(String name) noexcept : name_(std::move(name)) {}
  ~NamedEntity() override;

  [[nodiscard]] String name() const override;

 private:
  String name_;
};

/// Prints an entity for a person: its type and its name, or "null".
MOX_PUBLIC std::ostream& operator<<(std::ostream& out, const Entity* entity);
template <class T>
requires std::is_base_of_v<Entity, T> std::ostream& operator<<(std::ostream& out, const Ptr<T>& entity) {
  return out << static_cast<const Entity*>(entity.get());
}

}  // namespace Mox
