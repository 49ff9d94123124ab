#include "mox/Trace.h"

#include <cstdio>
#include <functional>
#include <map>

#include "mox/System.h"

namespace Mox {

namespace {

struct Facility {
  std::uint32_t levels = traceNone;
  std::vector<TraceHandle*> handles;
};

using Facilities = std::map<std::string, Facility, std::less<>>;

// Made on first use, since handles are static objects of other modules, and never destroyed for the same reason.
Facilities& facilities() {
  static auto& instance = *new Facilities;
  return instance;
}

class StandardError final : public TraceSink {
 public:
  void write(const TraceRecord& r) override {
    std::fprintf(stderr, "%.6f\t%.*s\t%u\t%s:%u\t%s\t%.*s\n", r.time, static_cast<int>(r.facility.size()),
                 r.facility.data(), r.level, r.file, r.line, r.function, static_cast<int>(r.text.size()),
                 r.text.data());
  }
};

TraceSink& standardError() {
  static auto& instance = *new StandardError;
  return instance;
}

constinit TraceSink* sink = nullptr;
constinit bool isWriting = false;

/// Marks the sink as busy. Otherwise a trace from inside the sink would go on for ever.
class Writing {
 public:
  Writing() noexcept { isWriting = true; }
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;
  ~Writing() { isWriting = false; }
};

}  // namespace

TraceHandle::TraceHandle(std::string_view facility, bool isOn) : facility_(facility) {
  const auto [known, isNew] = facilities().try_emplace(facility_);
  if (isNew) known->second.levels = isOn ? traceAll : traceNone;
  levels_ = known->second.levels;
  known->second.handles.push_back(this);
}

TraceHandle::~TraceHandle() { std::erase(facilities().find(facility_)->second.handles, this); }

void traceLevelsIs(std::string_view facility, std::uint32_t levels) {
  Facility& known = facilities().try_emplace(std::string(facility)).first->second;
  known.levels = levels;
  for (TraceHandle* handle : known.handles) handle->levels_ = levels;
}

std::uint32_t traceLevels(std::string_view facility) {
  const auto found = facilities().find(facility);
  return found == facilities().end() ? traceNone : found->second.levels;
}

std::vector<std::string> traceFacilities() {
  std::vector<std::string> names;
  for (const auto& [name, facility] : facilities()) names.push_back(name);
  return names;
}

TraceSink::~TraceSink() = default;

void traceSinkIs(TraceSink* newSink) noexcept { sink = newSink; }

TraceStatement::TraceStatement(const TraceHandle& handle, unsigned level, const char* file, unsigned line,
                               const char* function)
    : handle_(handle), level_(level), file_(file), line_(line), function_(function) {
  text_ << std::boolalpha;
}

TraceStatement::~TraceStatement() {
  if (isWriting) return;
  try {
    const Writing writing;
    const std::string text = std::move(text_).str();
    (sink != nullptr ? *sink : standardError())
        .write({System::presentTime(), handle_.facility(), level_, file_, line_, function_, text});
  } catch (...) {
    return;  // nobody can be told
  }
}

}  // namespace Mox
