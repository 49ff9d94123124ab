// Measures our structures and their peers side by side, and prints how they compare.
//
//   topolib_bench [--targets=FILE] [arguments of Google Benchmark]
//
// The repetitions of all benchmarks run in random order, so that what else happens on the machine hits both sides of a
// comparison alike. Whatever is met, the exit code is 0.

#include <benchmark/benchmark.h>

#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Suites.h"
#include "bench/Targets.h"

namespace Bench {
namespace {

/// Collects the repetitions instead of printing them.
class Collector : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override {
    PrintBasicContext(&std::cout, context);
    std::cout << "measuring; the results come at the end\n" << std::flush;
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const std::string& name = run.run_name.function_name;
      if (const auto amount = run.counters.find(amountCounter); amount != run.counters.end()) {
        results_.add(name, amount->second, run.report_label);
      } else if (const auto rate = run.counters.find("items_per_second"); rate != run.counters.end()) {
        results_.add(name, 1e9 / rate->second, "ns");
      }
    }
  }

  [[nodiscard]] const Results& results() const noexcept { return results_; }

 private:
  Results results_;
};

/// Removes `--targets=FILE` from the arguments and returns FILE.
std::string targetsFile(std::vector<char*>& args) {
  constexpr std::string_view option = "--targets=";
  std::string file;
  std::erase_if(args, [&](const char* arg) {
    if (!std::string_view(arg).starts_with(option)) return false;
    file = std::string_view(arg).substr(option.size());
    return true;
  });
  return file;
}

int run(std::vector<char*> args) {
  const std::string file = targetsFile(args);
  // What the caller says stands behind and wins.
  std::string repetitions = "--benchmark_repetitions=7";
  std::string interleaving = "--benchmark_enable_random_interleaving=true";
  std::string time = "--benchmark_min_time=0.04";
  args.insert(args.begin() + 1, {repetitions.data(), interleaving.data(), time.data()});
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 1;

  Targets targets;
  addScalarWrites(targets);
  addNotifications(targets);
  addPtrs(targets);
  addEntityMaps(targets);
  addVlanMaps(targets);
  addTraces(targets);
  addKestrel(targets);
  addBuildStates(targets);
  addLibrary(targets);
  addView(targets);

  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  benchmark::Shutdown();
  const Results& results = collector.results();
  if (results.empty()) return 0;

  results.print(std::cout);
  targets.print(std::cout, results);
  if (!file.empty()) {
    std::ofstream out(file);
    targets.writeJson(out, results);
    if (!out.flush()) {
      std::cerr << "topolib_bench: cannot write " << file << '\n';
      return 1;
    }
  }
  return 0;
}

}  // namespace
}  // namespace Bench

int main(int argc, char** argv) { return Bench::run({argv, argv + argc}); }
