// What was measured, and what it is held against.
//
// Overview
//   Google Benchmark repeats every benchmark in random order and hands each repetition to `Results`. A benchmark counts
//   by the median of its repetitions. `Targets` says which of them are compared: ours against a peer or a floor of the
//   same run, or against a fixed limit.
//
// Usage
//   targets.ratio("write, no reactor", "ScalarWrite/change/Mox", "ScalarWrite/change/plain", 1.5, "a plain store");
//   targets.amount("message", "Kestrel/ints/Mox", 20, "ns");
//   targets.compare("copy, counts atomic", "Ptr/copyAtomic/Mox", "Ptr/copyAtomic/shared_ptr", "std::shared_ptr");
//
// A target is met when its value is at most the limit. A comparison has no limit and is shown for information. What was
// not measured, because of a filter, is left out.

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace Bench {

/// What the repetitions of each benchmark measured, by the benchmark's name.
class Results {
 public:
  void add(const std::string& benchmark, double value, const std::string& unit);

  [[nodiscard]] bool empty() const noexcept { return series_.empty(); }
  /// The median of the repetitions, or nothing when the benchmark did not run.
  [[nodiscard]] std::optional<double> median(const std::string& benchmark) const;

  /// Prints each benchmark with its median, and how far the middle half of its repetitions spreads around it.
  void print(std::ostream& out) const;

 private:
  struct Series {
    std::vector<double> values;
    std::string unit;
  };

  std::map<std::string, Series> series_;
};

/// The comparisons to make once everything was measured.
class Targets {
 public:
  /// Ours divided by theirs is at most the limit.
  void ratio(std::string name, std::string ours, std::string theirs, double limit, std::string against);
  /// Ours is at most the limit above theirs, in nanoseconds.
  void difference(std::string name, std::string ours, std::string theirs, double limit, std::string against);
  /// Ours is at most the limit.
  void amount(std::string name, std::string ours, double limit, std::string unit);
  /// Ours divided by theirs, for information.
  void compare(std::string name, std::string ours, std::string theirs, std::string against);

  /// Prints the targets, then the comparisons.
  void print(std::ostream& out, const Results& results) const;
  /// Writes the targets as a JSON list of objects.
  void writeJson(std::ostream& out, const Results& results) const;

 private:
  enum class Kind { ratio, difference, amount };
  struct Target {
    std::string name;
    Kind kind;
    std::string ours;
    std::string theirs;
    std::optional<double> limit;
    std::string unit;
    std::string against;
  };
  struct Row;

  [[nodiscard]] std::vector<Row> rows(const Results& results) const;

  std::vector<Target> targets_;
};

}  // namespace Bench
