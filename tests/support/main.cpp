// Runs the tests of a folder, under the hash seed of TOPOLIB_TEST_HASH_SEED if that is set: nothing may depend on the
// order in which hashed collections iterate. A process that dies says in which test.

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>

#include "mox/Hash.h"

namespace {

/// What the process says if it dies; made before, because a signal handler may not allocate. A child of a test that is
/// meant to die says nothing.
std::string lastWords;
const pid_t process = getpid();

class LastWords : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& test) override {
    lastWords = std::string("died in ") + test.test_suite_name() + '.' + test.name() + '\n';
  }
};

using Handler = void (*)(int);
Handler handlerBefore = SIG_DFL;

void sayLastWords(int signal) {
  if (getpid() == process) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, lastWords.data(), lastWords.size());
  }
  if (handlerBefore != SIG_DFL && handlerBefore != SIG_IGN) handlerBefore(signal);
  (void)std::signal(signal, SIG_DFL);
  (void)std::raise(signal);
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new LastWords);
  handlerBefore = std::signal(SIGABRT, sayLastWords);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // which say more
  (void)std::signal(SIGSEGV, sayLastWords);
#endif
  if (const char* const seed = std::getenv("TOPOLIB_TEST_HASH_SEED")) {
    Mox::hashSeed32Is(static_cast<std::uint32_t>(std::stoul(seed)));
    std::cout << "hash seed " << seed << '\n';
  }
  return RUN_ALL_TESTS();
}
