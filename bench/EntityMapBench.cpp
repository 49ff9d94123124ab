// Maps from interface to entity: ours, which keeps one order and tolerates changes during a pass, against maps of others,
// which do neither. All hold counted pointers; the key is an interface id, for the others its 64 bits.

#include <array>
#include <string>
#include <vector>

#include "bench/Lamp.h"
#include "bench/MapJobs.h"
#include "bench/Peers.h"
#include "bench/Suites.h"
#include "mox/Collection.h"
#include "quill/IntfId.h"

namespace Bench {
namespace {

using Item = Mox::Ptr<Lamp>;

/// The map beneath the collection.
class Ours {
 public:
  using Key = Quill::IntfId;
  using Value = Item;

  [[nodiscard]] static Key keyOf(Key key) noexcept { return key; }

  [[nodiscard]] const Value* find(Key key) const noexcept { return map_.find(key); }
  void insert(Key key, Value&& value) { map_.insert(key, std::move(value)); }
  void erase(Key key) noexcept { map_.erase(key); }

 private:
  Mox::HashMap<Quill::IntfId, Item> map_;
};

/// The collection, walked as its users do.
class OurCollection {
 public:
  using Key = Quill::IntfId;
  using Value = Item;

  [[nodiscard]] static Key keyOf(Key key) noexcept { return key; }

  void insert(Key key, Value&& value) { lamps_.insert(key, std::move(value)); }
  [[nodiscard]] std::uint64_t walk() const noexcept {
    std::uint64_t sum = 0;
    for (const auto& [intf, lamp] : lamps_) sum += visit(intf.bits(), lamp);
    return sum;
  }

 private:
  Mox::EntityCollection<Quill::IntfId, Lamp> lamps_;
};

/// The ports of a modular switch.
std::vector<Quill::IntfId> interfaces(std::size_t count) {
  std::vector<Quill::IntfId> result;
  for (std::size_t i = 0; i < count; ++i) {
    result.emplace_back("Ethernet" + std::to_string(3 + i / 48) + '/' + std::to_string(1 + i % 48));
  }
  return result;
}

std::vector<Item> lamps(std::size_t count) {
  std::vector<Item> result;
  for (std::size_t i = 0; i < count; ++i) result.push_back(Mox::makePtr<Lamp>());
  return result;
}

}  // namespace

void addEntityMaps(Targets& targets) {
  const std::string subject = "EntityMap";
  for (const std::size_t size : {8UL, 64UL, 512UL, 1024UL}) {
    const std::vector<Quill::IntfId> keys = interfaces(size);
    const std::vector<Item> values = lamps(size);
    const auto addPeer = [&]<class Contender>(std::type_identity<Contender>, const char* name) {
      addMapChanges<Contender>(subject, name, keys, values);
      addMapWalk<Contender>(subject, name, keys, values);
    };
    addMapChanges<Ours>(subject, "Mox", keys, values);
    addMapWalk<OurCollection>(subject, "Mox", keys, values);
    addPeer(std::type_identity<BoostFlat<std::uint64_t, Item>>(), boostFlat);
    addPeer(std::type_identity<AbslFlat<std::uint64_t, Item>>(), abslFlat);
    addPeer(std::type_identity<StdUnordered<std::uint64_t, Item>>(), stdUnordered);
  }

  struct Job {
    const char* name;
    double limit;
  };
  for (const Job job : {Job{"hit", 0.7}, Job{"insert", 1.0}, Job{"erase", 1.5}, Job{"walk", 0.8}}) {
    for (const std::size_t size : {8UL, 64UL, 512UL, 1024UL}) {
      const std::string what = std::string("entity map, ") + job.name + ", " + std::to_string(size) + " entries";
      const std::string ours = mapJob(subject, job.name, size, "Mox");
      targets.ratio(what, ours, mapJob(subject, job.name, size, boostFlat), job.limit, boostFlat);
      targets.compare(what, ours, mapJob(subject, job.name, size, abslFlat), abslFlat);
      targets.compare(what, ours, mapJob(subject, job.name, size, stdUnordered), stdUnordered);
    }
  }
}

}  // namespace Bench
