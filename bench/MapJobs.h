// The jobs that maps are compared in: hit, insert, erase, walk.
//
// A contender is a class with the types `Key` and `Value`, `keyOf(k)`, which makes a key of one of ours, and `find`,
// `insert`, `erase` and `walk`, which adds up all keys and the addresses of what they lead to.
//
// Inserting and erasing work on so many maps that a round takes a while: setting up and tearing down are not measured, but
// stopping the time takes some itself. Keys come in random order, another one for each map.

#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/Suites.h"

namespace Bench {

/// How many operations a round has, at least.
inline constexpr std::size_t roundSize = 4096;

/// Repeats the keys until a round is full, each time in another order.
template <class K>
[[nodiscard]] std::vector<K> shuffledRounds(std::vector<K> keys) {
  std::mt19937 random(1);
  std::vector<K> result;
  while (result.size() < roundSize) {
    std::shuffle(keys.begin(), keys.end(), random);
    result.insert(result.end(), keys.begin(), keys.end());
  }
  return result;
}

/// The keys as the contender wants them.
template <class Contender, class K>
[[nodiscard]] std::vector<typename Contender::Key> keysFor(const std::vector<K>& keys) {
  std::vector<typename Contender::Key> result;
  result.reserve(keys.size());
  for (const K& key : keys) result.push_back(Contender::keyOf(key));
  return result;
}

template <class Contender>
class MapJobs {
  using Key = typename Contender::Key;
  using Value = typename Contender::Value;

 public:
  /// `keys` are different; the value at the same place goes with each.
  template <class K>
  MapJobs(const std::vector<K>& keys, std::vector<Value> values)
      : size_(keys.size()),
        keys_(keysFor<Contender>(keys)),
        rounds_(keysFor<Contender>(shuffledRounds(keys))),
        values_(std::move(values)) {}

  void hit(benchmark::State& state) const {
    Contender map;
    fill(map);
    for (auto _ : state) {
      for (const Key& key : rounds_) {
        const Value* found = map.find(key);
        benchmark::DoNotOptimize(found);
      }
    }
    itemsAre(state, rounds_.size());
  }

  void insert(benchmark::State& state) const {
    for (auto _ : state) {
      state.PauseTiming();
      std::vector<Contender> maps(mapCount());
      std::vector<Value> values = roundValues();
      state.ResumeTiming();
      for (std::size_t i = 0, map = 0; map < mapCount(); ++map) {
        for (const std::size_t end = i + size_; i < end; ++i) maps[map].insert(rounds_[i], std::move(values[i]));
      }
      benchmark::ClobberMemory();
      state.PauseTiming();
      maps.clear();
      state.ResumeTiming();
    }
    itemsAre(state, rounds_.size());
  }

  void erase(benchmark::State& state) const {
    for (auto _ : state) {
      state.PauseTiming();
      std::vector<Contender> maps(mapCount());
      for (std::size_t map = 0; map < mapCount(); ++map) fill(maps[map]);
      state.ResumeTiming();
      for (std::size_t i = 0, map = 0; map < mapCount(); ++map) {
        for (const std::size_t end = i + size_; i < end; ++i) maps[map].erase(rounds_[i]);
      }
      benchmark::ClobberMemory();
      state.PauseTiming();
      maps.clear();
      state.ResumeTiming();
    }
    itemsAre(state, rounds_.size());
  }

  void walk(benchmark::State& state) const {
    Contender map;
    fill(map);
    for (auto _ : state) {
      std::uint64_t sum = map.walk();
      benchmark::DoNotOptimize(sum);
    }
    itemsAre(state, size_);
  }

 private:
  [[nodiscard]] std::size_t mapCount() const noexcept { return rounds_.size() / size_; }
  void fill(Contender& map) const {
    for (std::size_t i = 0; i < size_; ++i) map.insert(keys_[i], Value(values_[i]));
  }
  [[nodiscard]] std::vector<Value> roundValues() const {
    std::vector<Value> result;
    result.reserve(rounds_.size());
    for (std::size_t i = 0; i < rounds_.size(); ++i) result.push_back(values_[i % size_]);
    return result;
  }

  std::size_t size_;
  std::vector<Key> keys_;
  std::vector<Key> rounds_;
  std::vector<Value> values_;
};

/// The name of a map benchmark.
[[nodiscard]] inline std::string mapJob(const std::string& subject, const char* job, std::size_t size,
                                        const std::string& contender) {
  return subject + '/' + job + '/' + std::to_string(size) + '/' + contender;
}

/// Registers the jobs hit, insert and erase of a contender.
template <class Contender, class K>
void addMapChanges(const std::string& subject, const std::string& contender, const std::vector<K>& keys,
                   std::vector<typename Contender::Value> values) {
  const auto jobs = std::make_shared<const MapJobs<Contender>>(keys, std::move(values));
  const std::size_t size = keys.size();
  add(mapJob(subject, "hit", size, contender), [jobs](benchmark::State& state) { jobs->hit(state); });
  add(mapJob(subject, "insert", size, contender), [jobs](benchmark::State& state) { jobs->insert(state); });
  add(mapJob(subject, "erase", size, contender), [jobs](benchmark::State& state) { jobs->erase(state); });
}

/// Registers the job walk.
template <class Contender, class K>
void addMapWalk(const std::string& subject, const std::string& contender, const std::vector<K>& keys,
                std::vector<typename Contender::Value> values) {
  const auto jobs = std::make_shared<const MapJobs<Contender>>(keys, std::move(values));
  add(mapJob(subject, "walk", keys.size(), contender), [jobs](benchmark::State& state) { jobs->walk(state); });
}

}  // namespace Bench
