#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/random/history.h"

namespace pellow::random {

// How a history went.
struct Outcome {
  std::optional<std::string> promise;  // that was broken; "the program goes on" when it died
  std::string details;
  int steps = 0;                       // that were taken
  std::uint64_t calls = 0;             // of the program
  std::vector<std::string> story;      // what happened, in words
  std::vector<std::string> log;        // of the program
  std::vector<std::string> portCalls;  // if they were to be recorded
};

enum class Record { outcome, everything };

// Plays the history on a fresh desktop in this process, until its end or the first broken promise.
Outcome play(const History& history, Record record = Record::outcome);

// The same in a process of its own, so that dying or hanging is an outcome like others.
Outcome playApart(const History& history, Record record = Record::outcome);

// Tells of a history that broke a promise: its shortest form that still breaks it, in words, and
// the line that replays it.
std::string tell(History history, const Outcome& outcome);

}  // namespace pellow::random
