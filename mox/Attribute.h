// The identities of attributes, by which a reactor tells what changed.
//
// An entity class has one constant per attribute, numbered from 0:
//
//   static constexpr Mox::ScalarAttribute litAttr{0, "lit"};
//   static constexpr Mox::CollectionAttribute<Mox::String> bulbAttr{1, "bulb"};
//
// and a reactor asks the constants, which know the type of the key:
//
//   void onAttribute(Mox::AttributeId id, const void* key) override {
//     if (Lamp::litAttr.is(id)) sm().handleLit();
//     if (const auto* socket = Lamp::bulbAttr.keyOf(id, key)) sm().handleBulb(*socket);
//   }

#pragma once

#include <cstdint>

namespace Mox {

using AttributeId = std::uint32_t;

class ScalarAttribute {
 public:
  consteval ScalarAttribute(AttributeId id, const char* name) : id_(id), name_(name) {}

  [[nodiscard]] constexpr AttributeId id() const noexcept { return id_; }
  [[nodiscard]] constexpr const char* name() const noexcept { return name_; }

  /// True for a notification of this attribute.
  [[nodiscard]] constexpr bool is(AttributeId id) const noexcept { return id == id_; }

  static constexpr bool isCollection = false;

 private:
  AttributeId id_;
  const char* name_;
};

template <class Key>
class CollectionAttribute {
 public:
  consteval CollectionAttribute(AttributeId id, const char* name) : id_(id), name_(name) {}

  [[nodiscard]] constexpr AttributeId id() const noexcept { return id_; }
  [[nodiscard]] constexpr const char* name() const noexcept { return name_; }

  /// The key of the changed member when the notification is one of this attribute, else null. Also null for a
  /// notification without a key, which a collection never sends and a reactor is to ignore.
  [[nodiscard]] const Key* keyOf(AttributeId id, const void* key) const noexcept {
    return id == id_ ? static_cast<const Key*>(key) : nullptr;
  }

  static constexpr bool isCollection = true;

 private:
  AttributeId id_;
  const char* name_;
};

}  // namespace Mox
