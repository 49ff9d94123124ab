// Makes a failing sequence short: leaves out what it fails without.
//
// Each try is a process of its own, so that a sequence that aborts is one that fails.

#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <exception>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "tests/topolib/model/Sequence.h"

// Only there in a build that measures coverage.
extern "C" __attribute__((weak)) void
__gcov_dump();  // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)

namespace Test {

/// A sequence that takes longer has failed.
constexpr unsigned secondsOfASequence = 20;

/// What the work returns, or throws.
[[nodiscard]] inline std::string outcomeOf(const std::function<std::string()>& work) {
  try {
    return work();
  } catch (const std::exception& thrown) {
    return std::string("throws ") + thrown.what() + '\n';
  }
}

/// Does the work in a child process and returns what it writes: what the work returns, or why it ended without.
[[nodiscard]] inline std::string outcomeInChild(const std::function<std::string()>& work) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return "there is no pipe";
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    dup2(ends[1], STDERR_FILENO);
    alarm(secondsOfASequence);
    const std::string outcome = outcomeOf(work);
    for (std::size_t done = 0; done < outcome.size();) {
      const ssize_t written = write(ends[1], outcome.data() + done, outcome.size() - done);
      if (written <= 0) break;
      done += static_cast<std::size_t>(written);
    }
    if (__gcov_dump != nullptr) __gcov_dump();
    _exit(0);
  }
  close(ends[1]);
  std::string outcome;
  std::array<char, 4096> some{};
  for (ssize_t got = 0; (got = read(ends[0], some.data(), some.size())) > 0;) {
    outcome.append(some.data(), static_cast<std::size_t>(got));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status)) outcome += "ended by signal " + std::to_string(WTERMSIG(status)) + '\n';
  if (WIFEXITED(status) && WEXITSTATUS(status) != 0) outcome += "ended with an error\n";
  return outcome;
}

/// What goes wrong when the sequence is played in a child process; empty if nothing does.
[[nodiscard]] inline std::string failureInChild(const Sequence& sequence) {
  return outcomeInChild([&] { return Play(sequence).run().value_or(""); });
}

/// The first of so many sequences that fails, or their number. They are played in one child process, which writes a dot
/// for each success.
[[nodiscard]] inline std::size_t firstFailing(std::size_t count, const std::function<Sequence(std::size_t)>& sequence) {
  const auto playAll = [&]() -> std::string {
    for (std::size_t n = 0; n < count; ++n) {
      alarm(secondsOfASequence);
      if (const auto failure = Play(sequence(n)).run()) return "\n" + *failure;
      if (write(STDERR_FILENO, ".", 1) != 1) return "the pipe is broken";
    }
    return {};
  };
  const std::string outcome = outcomeInChild(playAll);
  if (outcome == std::string(count, '.')) return count;
  const std::size_t failing = std::min(outcome.find_first_not_of('.'), count - 1);
  if (!failureInChild(sequence(failing)).empty()) return failing;
  throw std::runtime_error("fails only after others: " + sequence(failing).text() + outcome.substr(failing));
}

/// A sequence that fails too, and from which no item can be left out.
[[nodiscard]] inline Sequence shrunk(Sequence sequence) {
  const auto without = [](const Sequence& whole, std::size_t from, std::size_t count) {
    Sequence part = whole;
    const auto first = part.items.begin() + static_cast<std::ptrdiff_t>(from);
    part.items.erase(first, first + static_cast<std::ptrdiff_t>(std::min(count, part.items.size() - from)));
    return part;
  };
  for (std::size_t chunk = sequence.items.size() / 2; chunk != 0;) {
    bool isShorter = false;
    for (std::size_t from = 0; from < sequence.items.size();) {
      Sequence part = without(sequence, from, chunk);
      if (failureInChild(part).empty()) {
        from += chunk;
      } else {
        sequence = std::move(part);
        isShorter = true;
      }
    }
    if (chunk != 1) {
      chunk /= 2;
    } else if (!isShorter) {
      break;
    }
  }
  return sequence;
}

/// The short form of a failing sequence and how it fails.
[[nodiscard]] inline std::string shrunkReport(const Sequence& sequence) {
  const Sequence shortest = shrunk(sequence);
  return shortest.text() + "fails " + failureInChild(shortest);
}

}  // namespace Test
