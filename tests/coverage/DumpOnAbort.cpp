// Writes the counts of a coverage build when the process aborts: the lines that end in an abort are
// tested too, and would otherwise count as never run. Every library and program counts for itself,
// so each of them has its own copy of this file and passes the signal on to the one before it.
#include <csignal>

extern "C" {
#include <gcov.h>
}

namespace {

using Handler = void (*)(int);

void dumpAndPassOn(int signal);

const Handler previousHandler = std::signal(SIGABRT, dumpAndPassOn);

void dumpAndPassOn(int signal) {
  __gcov_dump();
  if (previousHandler != SIG_DFL && previousHandler != SIG_IGN && previousHandler != SIG_ERR) {
    previousHandler(signal);
  }
}

}  // namespace
