#include "bench/Targets.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace Bench {

namespace {

/// Four digits, since a benchmark knows no more.
std::string number(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.4g", value);
  return text.data();
}

std::string left(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}
std::string right(const std::string& text, std::size_t width) {
  return std::string(width - std::min(text.size(), width), ' ') + text;
}

/// The value below which that share of the sorted values lies.
double quantile(const std::vector<double>& sorted, double share) {
  const double at = share * static_cast<double>(sorted.size() - 1);
  const auto below = static_cast<std::size_t>(at);
  const std::size_t above = std::min(below + 1, sorted.size() - 1);
  return sorted[below] + (sorted[above] - sorted[below]) * (at - static_cast<double>(below));
}

std::vector<double> sorted(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values;
}

}  // namespace

void Results::add(const std::string& benchmark, double value, const std::string& unit) {
  Series& series = series_[benchmark];
  series.values.push_back(value);
  series.unit = unit;
}

std::optional<double> Results::median(const std::string& benchmark) const {
  const auto found = series_.find(benchmark);
  if (found == series_.end()) return std::nullopt;
  return quantile(sorted(found->second.values), 0.5);
}

void Results::print(std::ostream& out) const {
  std::size_t width = 0;
  for (const auto& [name, series] : series_) width = std::max(width, name.size());
  out << '\n' << left("measured", width) << "    median  spread\n";
  for (const auto& [name, series] : series_) {
    const std::vector<double> values = sorted(series.values);
    const double median = quantile(values, 0.5);
    out << left(name, width) << right(number(median), 10);
    if (values.size() > 1 && median != 0) {
      const double spread = (quantile(values, 0.75) - quantile(values, 0.25)) / median;
      out << right(number(std::round(1000 * spread) / 10), 6) << " %";
    } else {
      out << "        ";
    }
    out << "  " << series.unit << '\n';
  }
}

/// A target with what was measured.
struct Targets::Row {
  const Target* target;
  double value;
  double ours;
  std::optional<double> theirs;

  [[nodiscard]] bool isMet() const { return value <= *target->limit; }
};

void Targets::ratio(std::string name, std::string ours, std::string theirs, double limit, std::string against) {
  targets_.push_back(
      {std::move(name), Kind::ratio, std::move(ours), std::move(theirs), limit, "ratio", std::move(against)});
}

void Targets::difference(std::string name, std::string ours, std::string theirs, double limit, std::string against) {
  targets_.push_back(
      {std::move(name), Kind::difference, std::move(ours), std::move(theirs), limit, "ns", std::move(against)});
}

void Targets::amount(std::string name, std::string ours, double limit, std::string unit) {
  targets_.push_back({std::move(name), Kind::amount, std::move(ours), {}, limit, std::move(unit), "a fixed limit"});
}

void Targets::compare(std::string name, std::string ours, std::string theirs, std::string against) {
  targets_.push_back(
      {std::move(name), Kind::ratio, std::move(ours), std::move(theirs), {}, "ratio", std::move(against)});
}

std::vector<Targets::Row> Targets::rows(const Results& results) const {
  std::vector<Row> rows;
  for (const Target& target : targets_) {
    const std::optional<double> ours = results.median(target.ours);
    const std::optional<double> theirs = results.median(target.theirs);
    if (!ours || (!theirs && target.kind != Kind::amount)) continue;
    double value = *ours;
    if (target.kind == Kind::ratio) value = *ours / *theirs;
    if (target.kind == Kind::difference) value = *ours - *theirs;
    rows.push_back({&target, value, *ours, theirs});
  }
  return rows;
}

void Targets::print(std::ostream& out, const Results& results) const {
  const std::vector<Row> all = rows(results);
  std::size_t nameWidth = 0;
  std::size_t againstWidth = 0;
  for (const Row& row : all) {
    nameWidth = std::max(nameWidth, row.target->name.size());
    againstWidth = std::max(againstWidth, row.target->against.size());
  }
  const auto printRow = [&](const Row& row, const std::string& limit, const char* verdict) {
    out << left(row.target->name, nameWidth) << right(number(row.value), 9) << right(limit, 8) << ' '
        << left(row.target->unit, 12) << left(row.target->against, againstWidth) << right(number(row.ours), 9)
        << right(row.theirs ? number(*row.theirs) : "", 9) << "  " << verdict << '\n';
  };
  const auto printHead = [&](const char* title, const char* limit) {
    out << '\n'
        << left(title, nameWidth) << right("value", 9) << right(limit, 8) << ' ' << left("unit", 12)
        << left("against", againstWidth) << right("ours", 9) << right("theirs", 9) << '\n';
  };

  printHead("target", "target");
  std::size_t met = 0;
  std::size_t count = 0;
  for (const Row& row : all) {
    if (!row.target->limit) continue;
    printRow(row, number(*row.target->limit), row.isMet() ? "met" : "MISSED");
    met += row.isMet() ? 1 : 0;
    ++count;
  }
  out << met << " of " << count << " targets met\n";

  printHead("for information", "");
  for (const Row& row : all) {
    if (!row.target->limit) printRow(row, "", "");
  }
}

void Targets::writeJson(std::ostream& out, const Results& results) const {
  out << '[';
  const char* separator = "\n";
  for (const Row& row : rows(results)) {
    const Target& target = *row.target;
    if (!target.limit) continue;
    // Names, units and peers are texts of ours, free of quotes and backslashes.
    out << separator << R"(  {"name": ")" << target.name << R"(", "value": )" << number(row.value) << R"(, "target": )"
        << number(*target.limit) << R"(, "unit": ")" << target.unit << R"(", "against": ")" << target.against
        << R"(", "met": )" << (row.isMet() ? "true" : "false") << '}';
    separator = ",\n";
  }
  out << "\n]\n";
}

}  // namespace Bench
