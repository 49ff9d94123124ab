// Tracing, messages and assertions of module TopoLib, under the name of its source file.

#pragma once

#include <ostream>

#include "kestrel/Kestrel.h"
#include "mox/Assert.h"
#include "mox/Trace.h"

namespace Topology::Library::detail {

extern Mox::TraceHandle& traceHandle;

/// Prints the address of an object, or "null".
struct Address {
  const void* object;

  friend std::ostream& operator<<(std::ostream& out, Address address) {
    return address.object == nullptr ? out << "null" : out << address.object;
  }
};

}  // namespace Topology::Library::detail

#define TOPOLIB_FILE "/src/Sylk/TopoLib"
#define TOPOLIB_TRACE(level) MOX_TRACE(TOPOLIB_FILE, ::Topology::Library::detail::traceHandle, level)
#define TOPOLIB_MSG(...) KESTREL_MSG(TOPOLIB_FILE, __VA_ARGS__)
#define TOPOLIB_ASSERT_TEXT(expression, text) MOX_ASSERT_TEXT(TOPOLIB_FILE, expression, text)

/// For the entry points that need the start-up to be over.
#define TOPOLIB_ASSERT_INITIALIZED() \
  TOPOLIB_ASSERT_TEXT(initialized(), "initialized() && \"Did you forget to set ethIntfStatusDir?\"")
