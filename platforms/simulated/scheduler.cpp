#include "platforms/simulated/scheduler.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fmt/format.h>

namespace pellow::simulated {
namespace {

// How many times in a row the baton may change hands while the clock stands still.
constexpr std::uint64_t mostChoicesWithoutProgress = 50'000'000;

}  // namespace

class Scheduler::Thread : public std::enable_shared_from_this<Scheduler::Thread> {
 public:
  explicit Thread(std::string threadName) : name(std::move(threadName)) {}

  const std::string name;
  const Wait* wait = nullptr;  // none while it runs
  bool isFinished = false;
  std::thread::id id;
  std::thread thread;  // not of the main thread

  // The only thing that two threads touch at once.
  std::atomic<int> hasBaton = 0;

  Seconds moment() const { return isFinished || !wait ? never : wait->moment(); }
};

Scheduler::Scheduler(std::uint64_t seed, Seconds now) : randomness_(seed), now_(now) {
  threads_.push_back(std::make_shared<Thread>("main"));
  running_ = threads_.front().get();
  running_->id = std::this_thread::get_id();
}

Scheduler::~Scheduler() {
  if (threads_.size() > 1) giveUp("A serial queue outlives its platform.");
}

void Scheduler::wait(const Wait& wait) {
  auto& self = *running_;
  if (self.id != std::this_thread::get_id()) giveUp("A thread waits that is not of this desktop.");
  if (isHappening_) giveUp("A happening waits.");
  self.wait = &wait;
  auto& chosen = next();
  if (&chosen != &self) {
    handTo(chosen);
    awaitBaton(self);
  }
  self.wait = nullptr;
}

void Scheduler::mayWait() {
  if (threads_.size() == 1 && happenings_.empty()) return;
  wait(itsTurn_);
}

void Scheduler::sleep(Seconds duration) {
  const auto end = now_ + std::max(duration, 0.0);
  wait({.what = "the clock", .moment = [end] { return end; }});
}

void Scheduler::waitUntil(std::string what, std::function<bool()> isDone) {
  wait({.what = std::move(what), .moment = [&] { return isDone() ? 0.0 : never; }});
}

std::shared_ptr<Scheduler::Thread> Scheduler::start(std::string name, std::function<void()> body) {
  const auto thread = std::make_shared<Thread>(std::move(name));
  threads_.push_back(thread);
  const auto toBegin =
      std::make_shared<Wait>(Wait{.what = "its turn to begin", .moment = [] { return 0.0; }});
  thread->wait = toBegin.get();
  thread->thread = std::thread([this, thread, toBegin, body = std::move(body)] {
    awaitBaton(*thread);
    thread->wait = nullptr;
    body();
    thread->isFinished = true;
    handTo(next());
  });
  thread->id = thread->thread.get_id();
  return thread;
}

void Scheduler::join(const std::shared_ptr<Thread>& thread) {
  waitUntil(thread->name + " to end", [&] { return thread->isFinished; });
  thread->thread.join();
  std::erase(threads_, thread);
}

void Scheduler::happenAt(Seconds moment, std::function<void()> happening) {
  const auto later = std::ranges::upper_bound(happenings_, moment, {}, &Happening::moment);
  happenings_.insert(later, {moment, std::move(happening)});
}

bool Scheduler::othersAreIdle() const {
  return happenings_.empty() && std::ranges::all_of(threads_, [](const auto& thread) {
           if (thread->isFinished) return true;
           const auto* wait = thread->wait;
           return wait && (wait->givesWayUntil || (wait->isIdle && wait->moment() == never));
         });
}

const std::string& Scheduler::runningThread() const { return running_->name; }

// Runs happenings until it is a thread's turn.
Scheduler::Thread& Scheduler::next() {
  while (true) {
    if (auto* thread = pick()) {
      running_ = thread;
      return *thread;
    }
    happen();
  }
}

// The thread whose turn it is, with the clock set to its moment; none when a happening comes first.
Scheduler::Thread* Scheduler::pick() {
  bool happeningCompetes = !happenings_.empty();
  auto earliest = happeningCompetes ? std::max(happenings_.front().moment, now_) : never;
  candidates_.clear();
  for (const auto& thread : threads_) {
    const auto moment = std::max(thread->moment(), now_);
    if (moment == never || moment > earliest) continue;
    if (moment < earliest) {
      earliest = moment;
      candidates_.clear();
      happeningCompetes = false;
    }
    candidates_.push_back(thread.get());
  }

  for (const auto& thread : threads_) {
    if (!thread->wait || !thread->wait->givesWayUntil) continue;
    const auto last = std::max(thread->wait->givesWayUntil(), now_);
    if (last >= earliest) continue;
    now_ = last;
    return thread.get();
  }

  if (earliest == never) giveUp("Nothing can ever run again.");
  now_ = earliest;
  noteProgress();
  const auto choices = candidates_.size() + (happeningCompetes ? 1 : 0);
  const auto choice = choices > 1 ? random(choices) : 0;
  return choice < candidates_.size() ? candidates_[choice] : nullptr;
}

void Scheduler::happen() {
  const auto happening = std::move(happenings_.front().happen);
  happenings_.erase(happenings_.begin());
  isHappening_ = true;
  happening();
  isHappening_ = false;
}

void Scheduler::handTo(Thread& thread) {
  // The thread may run, end and be joined before it is even notified.
  const auto kept = thread.shared_from_this();
  thread.hasBaton = 1;
  thread.hasBaton.notify_one();
}

void Scheduler::awaitBaton(Thread& thread) {
  thread.hasBaton.wait(0);
  thread.hasBaton = 0;
}

void Scheduler::noteProgress() {
  if (now_ > lastProgress_) {
    lastProgress_ = now_;
    choicesSinceProgress_ = 0;
  }
  if (++choicesSinceProgress_ > mostChoicesWithoutProgress) giveUp("Time stands still.");
}

void Scheduler::giveUp(const std::string& why) const {
  auto report = fmt::format("The simulated desktop gives up at {} s: {}\n", now_, why);
  for (const auto& thread : threads_)
    report += thread->wait ? fmt::format("  {} waits for {}\n", thread->name, thread->wait->what)
                           : fmt::format("  {} runs\n", thread->name);
  std::fputs(report.c_str(), stderr);
  std::abort();
}

}  // namespace pellow::simulated
