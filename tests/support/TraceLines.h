// Collects the trace lines of one facility during a test.

#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "mox/Trace.h"

namespace Test {

class TraceLines : public Mox::TraceSink {
 public:
  /// The levels that are written, as a mask of Mox::traceLevel(n).
  explicit TraceLines(std::string facility, std::uint32_t levels = Mox::traceAll) : facility_(std::move(facility)) {
    Mox::traceSinkIs(this);
    Mox::traceLevelsIs(facility_, levels);
  }
  TraceLines(const TraceLines&) = delete;
  TraceLines& operator=(const TraceLines&) = delete;
  ~TraceLines() override {
    Mox::traceLevelsIs(facility_, Mox::traceNone);
    Mox::traceSinkIs(nullptr);
  }

  void write(const Mox::TraceRecord& record) override {
    if (record.facility == facility_) lines_.emplace_back(record.level, record.text);
  }

  /// Level and text of each line, in order.
  [[nodiscard]] const std::vector<std::pair<unsigned, std::string>>& lines() const noexcept { return lines_; }
  [[nodiscard]] std::size_t count(unsigned level, const std::string& text) const {
    return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), std::pair(level, text)));
  }
  [[nodiscard]] bool has(unsigned level, const std::string& text) const { return count(level, text) != 0; }
  void clear() { lines_.clear(); }

 private:
  std::string facility_;
  std::vector<std::pair<unsigned, std::string>> lines_;
};

}  // namespace Test
