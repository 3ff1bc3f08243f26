#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/clock.h"

namespace pellow::simulated {

inline constexpr Seconds never = std::numeric_limits<Seconds>::infinity();

// Virtual time, and the baton that lets exactly one of many real threads run.
//
// A thread gives the baton away only inside `wait` (and what is built on it). Whoever gives it away
// picks the next: of all that can run, the one whose moment is the earliest; the seed decides
// between equals. Time stands still while anybody runs and jumps to the next moment when nobody
// can. So one seed is one history. The baton also makes every other object of this folder safe to
// use without a lock.
//
// The thread that makes the scheduler is its main thread. When nothing could ever run again, the
// process aborts with a sentence about who waits for what.
class Scheduler {
 public:
  struct Wait {
    // "the main queue waits for …", for the reader of an abort.
    std::string what;
    // When the thread can go on; `never` while it cannot know. Asked whenever the baton is free.
    std::function<Seconds()> moment;
    // When the thread goes on although its moment has not come, provided that nobody else can run
    // by then. Empty: never.
    std::function<Seconds()> givesWayUntil = {};
    // The thread has nothing to do; nobody needs to wait for it.
    bool isIdle = false;
  };

  // The clock starts at `now`.
  Scheduler(std::uint64_t seed, Seconds now);
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  Seconds now() const { return now_; }

  // Gives the baton away until the wait is over.
  void wait(const Wait& wait);

  // For every call that could wait on a real desktop: others may run first.
  void mayWait();

  void sleep(Seconds duration);

  // Waits until `isDone`, which somebody else brings about.
  void waitUntil(std::string what, std::function<bool()> isDone);

  // Starts a thread; it runs when somebody gives it the baton.
  class Thread;
  std::shared_ptr<Thread> start(std::string name, std::function<void()> body);

  // Waits until the thread's body has returned, and ends it.
  void join(const std::shared_ptr<Thread>& thread);

  // Something that happens outside of all threads; it must not wait.
  void happenAt(Seconds moment, std::function<void()> happening);

  // Whether nothing will happen and nobody but threads that give way has anything to do, now or
  // later. Call it inside a wait.
  bool othersAreIdle() const;

  const std::string& runningThread() const;

  // From 0 to `bound` - 1, by seed.
  std::uint64_t random(std::uint64_t bound) { return randomness_() % bound; }
  // From 0 to 1, by seed.
  double randomFraction() { return static_cast<double>(random(1'000'001)) / 1e6; }

 private:
  struct Happening {
    Seconds moment;
    std::function<void()> happen;
  };
  using Threads = std::vector<std::shared_ptr<Thread>>;

  Thread& next();
  Thread* pick();
  void happen();
  void handTo(Thread& thread);
  void awaitBaton(Thread& thread);
  void noteProgress();
  [[noreturn]] void giveUp(const std::string& why) const;

  const Wait itsTurn_{.what = "its turn", .moment = [] { return 0.0; }};
  std::mt19937_64 randomness_;
  Seconds now_;
  Threads threads_;  // the main thread first
  Thread* running_;
  std::vector<Happening> happenings_;  // by moment, then by age
  std::vector<Thread*> candidates_;    // of the choice that is being made
  bool isHappening_ = false;
  Seconds lastProgress_ = 0;
  std::uint64_t choicesSinceProgress_ = 0;
};

}  // namespace pellow::simulated
