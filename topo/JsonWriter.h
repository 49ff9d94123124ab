// Makes JSON of entities: the visitor of topo/Schema.h that documents are made with.
//
//   Json json = Json::object();
//   JsonWriter writer(json, part);
//   describe(writer, *state);
//
// Members are appended to objects and never looked up, so that the cost is that of the document alone; and with a path,
// only that of what lies on it.

#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "bridging/VlanPortConfig.h"
#include "topo/Documents.h"
#include "topo/Schema.h"

namespace Topo {

using Json = nlohmann::ordered_json;

/// Appends a member that the object does not have yet.
inline void append(Json& object, std::string_view key, Json value) {
  object.get_ref<Json::object_t&>().emplace_back(key, std::move(value));
}

// Keys as they stand in a document, in an array, and back.
[[nodiscard]] inline std::string keyText(const Mox::String& name) { return std::string(name.view()); }
[[nodiscard]] inline std::string keyText(Quill::IntfId intf) { return keyText(intf.stringValue()); }
[[nodiscard]] inline std::string keyText(Bridging::VlanId vid) { return std::to_string(vid.value()); }

template <class K>
[[nodiscard]] Json keyJson(const K& key) {
  return keyText(key);
}
[[nodiscard]] inline Json keyJson(Bridging::VlanId vid) { return vid.value(); }

template <class K>
[[nodiscard]] std::optional<K> keyFrom(const std::string& text) {
  if constexpr (std::is_same_v<K, Bridging::VlanId>) {
    try {
      const auto vid = Bridging::VlanId::sequenceToValue(text);
      return keyText(vid) == text ? std::optional(vid) : std::nullopt;
    } catch (const Mox::RangeException&) {
      return std::nullopt;
    }
  } else {
    return K(text);
  }
}

// Values.
template <class T>
requires std::is_arithmetic_v<T>
[[nodiscard]] Json valueJson(T value) { return value; }
template <Mox::RegisteredEnum E>
[[nodiscard]] Json valueJson(E value) {
  return Mox::EnumType<E>::valueToStrep(value);
}
[[nodiscard]] inline Json valueJson(const Mox::String& text) { return keyText(text); }
[[nodiscard]] inline Json valueJson(Bridging::VlanIdOrNone vid) { return vid.value(); }
[[nodiscard]] inline Json valueJson(const Bridging::VlanPortConfig& config) {
  return Json{{"allowedTrafficDirection", valueJson(config.allowedTrafficDirection())},
              {"untagged", config.untagged()},
              {"pvid", config.pvid()}};
}

/// The keys of a collection in their order.
template <class C>
[[nodiscard]] auto sortedKeys(const C& collection) {
  using K = std::remove_cvref_t<decltype(collection.begin().key())>;
  std::vector<K> keys;
  keys.reserve(collection.size());
  for (const auto& [key, value] : collection) keys.push_back(key);
  if (!std::is_sorted(keys.begin(), keys.end())) std::sort(keys.begin(), keys.end());
  return keys;
}

/// Which members are left out because nothing of what is wanted lies beneath them.
enum class Prune : std::uint8_t { nothing, withoutVlan, withoutTopology };

class JsonWriter {
 public:
  JsonWriter(Json& out, const Part& part, Prune prune = Prune::nothing)
      : JsonWriter(out, part, prune, std::span(part.path)) {}

  void constant(const char* name, const auto& value) {
    if (wants(name)) append(out_, name, valueJson(value));
  }
  void scalar(const Mox::ScalarAttribute& attribute, const auto& value) { constant(attribute.name(), value); }

  template <class K>
  void values(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
    if (!wants(attribute.name())) return;
    Json object = Json::object();
    forEachWanted<K>(collection, [&](const K& key) {
      const auto& value = *collection.find(key);
      if (admitsValue(value)) append(object, keyText(key), valueJson(value));
    });
    append(out_, attribute.name(), std::move(object));
  }

  template <class K>
  void members(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
    if (!wants(attribute.name())) return;
    Json object = Json::object();
    forEachWanted<K>(collection, [&](const K& key) {
      Json member = Json::object();
      JsonWriter writer(member, part_, prune_, path_.subspan(std::min<std::size_t>(path_.size(), 2)));
      writer.hasMatched_ = isMatch(key);
      writer.isWhole_ = isAskedFor(key);
      describe(writer, *collection.find(key));
      if (prune_ != Prune::nothing && !writer.hasMatched_) return;
      hasMatched_ = true;
      append(object, keyText(key), std::move(member));
    });
    append(out_, attribute.name(), std::move(object));
  }

  template <class K>
  void set(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
    if (wants(attribute.name())) append(out_, attribute.name(), arrayOf<K>(collection));
  }
  template <class K>
  void wholeSet(const Mox::CollectionAttribute<K>& /*attribute*/, const auto& collection) {
    out_ = arrayOf<K>(collection);
  }

 private:
  JsonWriter(Json& out, const Part& part, Prune prune, std::span<const std::string> path)
      : out_(out), part_(part), path_(path), prune_(prune) {}

  /// The path is empty, or leads on through this member.
  [[nodiscard]] bool wants(const char* name) const { return path_.empty() || path_.front() == name; }

  template <class K>
  void forEachWanted(const auto& collection, const auto& act) {
    if (path_.size() >= 2) {
      const std::optional<K> key = keyFrom<K>(path_[1]);
      if (key && collection.has(*key) && admits(*key)) act(*key);
      return;
    }
    for (const K& key : sortedKeys(collection)) {
      if (!admits(key)) continue;
      if (isMatch(key)) hasMatched_ = true;
      act(key);
    }
  }

  template <class K>
  [[nodiscard]] Json arrayOf(const auto& collection) {
    Json array = Json::array();
    for (const K& key : sortedKeys(collection)) {
      if (isMatch(key)) hasMatched_ = true;
      // What a view's port is in is told whole, and so is what stands under the VLAN that is asked for.
      if (prune_ == Prune::withoutTopology || isWhole_ || admits(key)) array.push_back(keyJson(key));
    }
    return array;
  }

  [[nodiscard]] bool admits(const Mox::String& name) const { return !part_.topology || *part_.topology == name; }
  [[nodiscard]] bool admits(Bridging::VlanId vid) const { return !part_.vlan || *part_.vlan == vid; }
  [[nodiscard]] static bool admits(Quill::IntfId /*intf*/) { return true; }
  [[nodiscard]] bool admitsValue(const Mox::String& name) const { return admits(name); }
  [[nodiscard]] static bool admitsValue(const auto& /*value*/) { return true; }

  /// Whether the key is what members are kept for.
  [[nodiscard]] bool isMatch(const Mox::String& name) const { return prune_ == Prune::withoutTopology && admits(name); }
  [[nodiscard]] bool isMatch(Bridging::VlanId vid) const { return prune_ == Prune::withoutVlan && admits(vid); }
  [[nodiscard]] static bool isMatch(Quill::IntfId /*intf*/) { return false; }

  /// Whether the key is the VLAN that is asked for, given that it is admitted.
  [[nodiscard]] bool isAskedFor(Bridging::VlanId /*vid*/) const { return part_.vlan.has_value(); }
  [[nodiscard]] static bool isAskedFor(const auto& /*key*/) { return false; }

  Json& out_;
  const Part& part_;
  std::span<const std::string> path_;
  Prune prune_;
  bool hasMatched_ = false;
  bool isWhole_ = false;
};

/// An entity as it stands in its document.
template <class T>
[[nodiscard]] Json entityJson(const T& entity) {
  static const Part whole;
  Json json = Json::object();
  JsonWriter writer(json, whole);
  describe(writer, entity);
  return json;
}

}  // namespace Topo
