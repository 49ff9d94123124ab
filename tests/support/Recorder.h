// A reactor that writes down what it is told.

#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "mox/Notifiee.h"

namespace Test {

/// Records the attribute id of each notification and whether it had a key, and then does what the test asks for.
class Recorder : public Mox::PtrInterface::NotifieeConst {
 public:
  struct Event {
    Mox::AttributeId id;
    bool hasKey;

    friend bool operator==(const Event&, const Event&) = default;
  };
  using Action = std::function<void(Mox::AttributeId id, const void* key)>;

  explicit Recorder(const Mox::PtrInterface* notifier = nullptr, Action action = {}) : action_(std::move(action)) {
    hasNotificationActiveIs(true);
    notifierIs(notifier);
  }

  void onAttribute(Mox::AttributeId id, const void* key) override {
    events.push_back({id, key != nullptr});
    if (action_) action_(id, key);
  }

  void actionIs(Action action) { action_ = std::move(action); }

  std::vector<Event> events;

 private:
  Action action_;
};

/// Records the keys of one collection attribute's notifications, in order of delivery.
template <class Key>
class KeyRecorder : public Mox::PtrInterface::NotifieeConst {
 public:
  KeyRecorder(const Mox::PtrInterface* notifier, Mox::CollectionAttribute<Key> attribute) : attribute_(attribute) {
    hasNotificationActiveIs(true);
    notifierIs(notifier);
  }

  void onAttribute(Mox::AttributeId id, const void* key) override {
    if (const Key* changed = attribute_.keyOf(id, key)) keys.push_back(*changed);
  }

  std::vector<Key> keys;

 private:
  Mox::CollectionAttribute<Key> attribute_;
};

}  // namespace Test
