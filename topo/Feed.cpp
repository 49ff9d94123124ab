#include "topo/Feed.h"

#include <unordered_map>
#include <unordered_set>

#include "topo/JsonWriter.h"
#include "topo/Loop.h"

namespace Topo {

namespace {

/// A token of a JSON Pointer.
[[nodiscard]] std::string escaped(std::string_view key) {
  std::string token;
  for (const char c : key) {
    if (c == '~') {
      token += "~0";
    } else if (c == '/') {
      token += "~1";
    } else {
      token += c;
    }
  }
  return token;
}

}  // namespace

/// A reactor on one entity of the document.
class Feed::Node : public Mox::PtrInterface::NotifieeConst {
 public:
  Node(Feed& feed, std::string path) : feed_(feed), path_(std::move(path)) { hasNotificationActiveIs(true); }

 protected:
  /// What is known of one collection: its keys, and of entities the reactors on them.
  struct Known {
    std::unordered_map<std::string, Mox::Ptr<Node>> members;
    std::unordered_set<std::string> keys;
  };

  // NOLINTBEGIN(misc-non-private-member-variables-in-classes): for the template below, and for nobody else.
  Feed& feed_;
  std::string path_;
  std::unordered_map<Mox::AttributeId, Known> known_;
  // NOLINTEND(misc-non-private-member-variables-in-classes)
};

namespace {

/// The reactor on an entity and those on its members.
template <class T>
[[nodiscard]] Mox::Ptr<Feed::Node> watchEntity(Feed& feed, const std::string& path, const T& entity);

template <class T>
class EntityNode final : public Feed::Node {
 public:
  EntityNode(Feed& feed, std::string path, const T& entity) : Node(feed, std::move(path)) {
    notifierIs(&entity);
    Start start{*this};
    describe(start, entity);
  }
  ~EntityNode() override { notifierIs(nullptr); }

  void onAttribute(Mox::AttributeId id, const void* key) override {
    Change change{*this, id, key};
    describe(change, *static_cast<const T*>(notifier()));
  }

 private:
  [[nodiscard]] std::string pathOf(std::string_view name) const { return (path_ + '/') += name; }
  template <class K>
  [[nodiscard]] std::string pathOf(const Mox::CollectionAttribute<K>& attribute, const K& key) const {
    return pathOf(attribute.name()) + '/' + escaped(keyText(key));
  }

  /// Takes in what is there when the watch begins.
  struct Start {
    EntityNode& node;

    void constant(const char* /*name*/, const auto& /*value*/) {}
    void scalar(const Mox::ScalarAttribute& /*attribute*/, const auto& /*value*/) {}
    template <class K>
    void values(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
      Known& known = node.known_[attribute.id()];
      for (const auto& [key, value] : collection) known.keys.insert(keyText(key));
    }
    template <class K>
    void set(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
      values(attribute, collection);
    }
    template <class K>
    void wholeSet(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
      values(attribute, collection);
    }
    template <class K>
    void members(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
      Known& known = node.known_[attribute.id()];
      for (const auto& [key, member] : collection) {
        known.members[keyText(key)] = watchEntity(node.feed_, node.pathOf(attribute, K(key)), member);
      }
    }
  };

  /// Writes the line of one notification.
  struct Change {
    EntityNode& node;
    Mox::AttributeId id;
    const void* changedKey;

    void constant(const char* /*name*/, const auto& /*value*/) {}
    void scalar(const Mox::ScalarAttribute& attribute, const auto& value) {
      if (!attribute.is(id)) return;
      const Json json = valueJson(value);
      node.feed_.write("replace", node.pathOf(attribute.name()), &json);
    }
    template <class K>
    void values(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
      const K* const key = attribute.keyOf(id, changedKey);
      if (key == nullptr) return;
      const auto* const value = collection.find(*key);
      const char* const op = opOf(attribute, *key, value != nullptr);
      if (op == nullptr) return;
      const Json json = value == nullptr ? Json() : valueJson(*value);
      node.feed_.write(op, node.pathOf(attribute, *key), value == nullptr ? nullptr : &json);
    }
    template <class K>
    void set(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
      const K* const key = attribute.keyOf(id, changedKey);
      if (key == nullptr) return;
      const bool isThere = collection.has(*key);
      if (opOf(attribute, *key, isThere) == nullptr) return;
      node.feed_.write(isThere ? "add" : "remove", node.pathOf(attribute, *key), nullptr);
    }
    template <class K>
    void wholeSet(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
      const K* const key = attribute.keyOf(id, changedKey);
      if (key == nullptr) return;
      const bool isThere = collection.has(*key);
      if (opOf(attribute, *key, isThere) == nullptr) return;
      node.feed_.write(isThere ? "add" : "remove", node.path_ + '/' + escaped(keyText(*key)), nullptr);
    }
    template <class K>
    void members(const Mox::CollectionAttribute<K>& attribute, const auto& collection) {
      const K* const key = attribute.keyOf(id, changedKey);
      if (key == nullptr) return;
      auto& known = node.known_[attribute.id()].members;
      const std::string text = keyText(*key);
      const std::string path = node.pathOf(attribute, *key);
      const auto* const member = collection.find(*key);
      if (member == nullptr) {
        if (known.erase(text) != 0) node.feed_.write("remove", path, nullptr);
        return;
      }
      Mox::Ptr<Feed::Node>& watched = known[text];
      const bool isSame = watched && watched->notifier() == member;
      const Json json = entityJson(*member);
      node.feed_.write(isSame ? "replace" : "add", path, &json);
      if (!isSame) watched = watchEntity(node.feed_, path, *member);
    }

    template <class K>
    [[nodiscard]] const char* opOf(const Mox::CollectionAttribute<K>& attribute, const K& key, bool isThere) {
      auto& keys = node.known_[attribute.id()].keys;
      if (!isThere) return keys.erase(keyText(key)) != 0 ? "remove" : nullptr;
      return keys.insert(keyText(key)).second ? "add" : "replace";
    }
  };
};

template <class T>
Mox::Ptr<Feed::Node> watchEntity(Feed& feed, const std::string& path, const T& entity) {
  return Mox::makePtr<EntityNode<T>>(feed, path, entity);
}

}  // namespace

Feed::Feed(const Agent& agent, Document document, std::ostream& out) : agent_(agent), document_(document), out_(out) {
  watch();
}

Feed::~Feed() = default;

bool Feed::isOfLibrary() const noexcept { return document_ == Document::backlog || document_ == Document::mapping; }

void Feed::watch() {
  const auto root = [this](const auto& entity) { roots_.push_back(watchEntity(*this, std::string(), entity)); };
  switch (document_) {
    case Document::state:
      root(std::as_const(*agent_.state));
      break;
    case Document::view:
      root(std::as_const(*agent_.view));
      break;
    case Document::instance:
      root(std::as_const(*agent_.instance));
      break;
    case Document::status:
      root(std::as_const(*agent_.status));
      break;
    case Document::config:
      root(std::as_const(*agent_.config));
      break;
    case Document::bridging:
      root(std::as_const(*agent_.bridging));
      break;
    case Document::interfaces:
      root(std::as_const(*agent_.interfaces));
      break;
    case Document::backlog:
    case Document::mapping: {
      const Library::TopoLibCodef* const codef = agent_.codef();
      codef_ = codef;
      if (codef == nullptr) break;
      if (document_ == Document::backlog) {
        root(std::as_const(*codef->codefState()));
        root(std::as_const(*codef->dirtyVlanDir()));
      } else {
        root(std::as_const(*agent_.libSm()->topoToVlanMap()));
        root(*agent_.libSm());
      }
      break;
    }
  }
}

void Feed::libraryMayHaveChanged() {
  if (!isOfLibrary() || agent_.codef() == codef_.get()) return;
  roots_.clear();
  codef_ = nullptr;
  const Json json = documentOf(agent_, document_);
  write("replace", {}, &json);
  watch();
}

void Feed::write(const char* op, const std::string& path, const Json* value) {
  Json line = Json::object();
  append(line, "time", Loop::now());
  append(line, "document", nameOf(document_));
  append(line, "op", op);
  append(line, "path", path);
  if (value != nullptr) append(line, "value", *value);
  out_ << lineOf(line) << '\n';
}

}  // namespace Topo
