// Fatal assertions on internal invariants, in every build.
//
//   MOX_ASSERT("/src/Sylk/TopoLib", libState());
//   MOX_ASSERT_TEXT("/src/Sylk/TopoLib", vid > 0 && vid < 4096, "( vid > 0 ) && ( vid < 4096 )");
//
// A failing one writes a single line to standard error and aborts the process:
//
//   /src/Sylk/TopoLib:57: void Topology::Library::LibSm::handleInitialized(): Assertion 'libState()' failed.
//
// The second form is for a text that must stay as it is, whatever a code formatter does to the expression. Bad input
// from outside is never asserted; it raises an exception (mox/Exception.h).

#pragma once

#include "mox/Public.h"

namespace Mox {

/// Reports the failed assertion and aborts. Called by the macros.
[[noreturn]] MOX_PUBLIC void assertionFailed(const char* expression, const char* file, unsigned line,
                                             const char* function) noexcept;

}  // namespace Mox

#define MOX_ASSERT_TEXT(file, expression, text) \
  ((expression) ? static_cast<void>(0) : ::Mox::assertionFailed((text), (file), __LINE__, __PRETTY_FUNCTION__))

#define MOX_ASSERT(file, ...) MOX_ASSERT_TEXT(file, (__VA_ARGS__), #__VA_ARGS__)
