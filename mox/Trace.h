// Tracing: facilities with levels, and where the lines go.
//
// Usage
//   Mox::TraceHandle& lightsTrace = *new Mox::TraceHandle("Lights", false);     // of the module, never destroyed
//
//   MOX_TRACE("/src/Lights", lightsTrace, 8) << "handleLit " << lamp->name();
//
//   Mox::traceLevelsIs("Lights", Mox::traceLevel(8) | Mox::traceLevel(2));
//   Mox::traceSinkIs(&mySink);
//
// A statement at level N writes when bit N of its facility's mask is set; otherwise it costs a load and a branch, and
// nothing behind it is evaluated. Anything with a stream operator can be streamed; bool prints as true or false. What a
// stream operator or a sink throws ends there: tracing never changes what the program does.
//
// Levels of the libraries here: 2 detail of decisions, 3 topology and port life cycle, 4 marking dirty, 5 backlog
// progress, 6 link up and down, 7 status publisher, 8 entry of a handler, 9 state of the backlog processor.
//
// Rules: a facility is known by its name; handles of one name share their mask, which may be set before the first handle
// exists. Without a sink of one's own, a line goes to standard error as tab-separated fields: time, facility, level,
// file:line, function, text. A sink that traces itself is not called again for that. Everything runs on the activity thread.

#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "mox/Public.h"

namespace Mox {

/// The mask bit of a level, 0 to 31.
[[nodiscard]] constexpr std::uint32_t traceLevel(unsigned level) noexcept { return std::uint32_t{1} << level; }
inline constexpr std::uint32_t traceNone = 0;
inline constexpr std::uint32_t traceAll = 0xFFFF'FFFF;

/// A module's handle on a trace facility. Lives as long as the process, as a rule.
class MOX_PUBLIC TraceHandle {
 public:
  /// A handle on the facility of this name. The first one decides whether all levels are on or off at the start, unless
  /// the facility's levels were set before.
  TraceHandle(std::string_view facility, bool isOn);
  TraceHandle(const TraceHandle&) = delete;
  TraceHandle& operator=(const TraceHandle&) = delete;
  ~TraceHandle();

  [[nodiscard]] const std::string& facility() const noexcept { return facility_; }
  [[nodiscard]] bool isEnabled(unsigned level) const noexcept {
    return __builtin_expect(static_cast<long>(levels_ >> level & 1), 0L) != 0;
  }

 private:
  friend MOX_PUBLIC void traceLevelsIs(std::string_view facility, std::uint32_t levels);

  std::uint32_t levels_ = traceNone;
  std::string facility_;
};

/// Sets the levels of a facility, which need not exist yet.
MOX_PUBLIC void traceLevelsIs(std::string_view facility, std::uint32_t levels);
/// The levels of a facility; none for one that is unknown.
[[nodiscard]] MOX_PUBLIC std::uint32_t traceLevels(std::string_view facility);
/// The names of all facilities, in alphabetical order.
[[nodiscard]] MOX_PUBLIC std::vector<std::string> traceFacilities();

/// One trace line. The texts are valid during `TraceSink::write`.
struct TraceRecord {
  double time;  // seconds
  std::string_view facility;
  unsigned level;
  const char* file;
  unsigned line;
  const char* function;
  std::string_view text;
};

/// Receives trace lines.
class MOX_PUBLIC TraceSink {
 public:
  TraceSink() = default;
  TraceSink(const TraceSink&) = delete;
  TraceSink& operator=(const TraceSink&) = delete;
  virtual ~TraceSink();

  virtual void write(const TraceRecord& record) = 0;
};

/// Directs all trace lines to a sink, which must outlive its use; null selects standard error again.
MOX_PUBLIC void traceSinkIs(TraceSink* sink) noexcept;

/// A trace statement under way: collects the text and hands the line over at the end.
class MOX_PUBLIC TraceStatement {
 public:
  TraceStatement(const TraceHandle& handle, unsigned level, const char* file, unsigned line, const char* function);
  TraceStatement(const TraceStatement&) = delete;
  TraceStatement& operator=(const TraceStatement&) = delete;
  ~TraceStatement();

  /// Adds a piece of the text. In place of one that cannot be printed it adds "(unprintable)".
  template <class T>
  TraceStatement& operator<<(const T& piece) noexcept {
    try {
      text_ << piece;
    } catch (...) {
      text_ << "(unprintable)";
    }
    return *this;
  }

 private:
  const TraceHandle& handle_;
  unsigned level_;
  const char* file_;
  unsigned line_;
  const char* function_;
  std::ostringstream text_;
};

namespace detail {

/// Gives both branches of a trace statement the type void. Binds looser than the stream operator.
struct TraceEnd {
  void operator&(const TraceStatement& /*statement*/) const noexcept {}
};

}  // namespace detail

}  // namespace Mox

// An expression, so that it stands wherever a statement may, an `if` without braces included.
#define MOX_TRACE(file, handle, level)                                                                                \
  !(handle).isEnabled(level) ? static_cast<void>(0)                                                                   \
                             : ::Mox::detail::TraceEnd() & ::Mox::TraceStatement((handle), (level), (file), __LINE__, \
                                                                                 static_cast<const char*>(__func__))
