#include "platforms/simulated/queues.h"

#include <algorithm>
#include <deque>
#include <utility>

namespace pellow::simulated {

struct SerialQueue::Job {
  Work work;
  bool isDone = false;
};

struct SerialQueue::Jobs {
  std::deque<std::shared_ptr<Job>> waiting;
  bool areOver = false;  // the queue ends
};

SerialQueue::SerialQueue(System& system, std::string label)
    : system_(system), label_(std::move(label)), jobs_(std::make_shared<Jobs>()) {
  thread_ = system_.scheduler.start(label_, [this] { run(); });
}

SerialQueue::~SerialQueue() {
  jobs_->areOver = true;
  // What a job owns may drop other jobs.
  while (!jobs_->waiting.empty()) {
    const auto job = std::move(jobs_->waiting.front());
    jobs_->waiting.pop_front();
  }
  system_.scheduler.join(thread_);
}

Subscription SerialQueue::async(Work work) {
  const auto job = std::make_shared<Job>(std::move(work));
  jobs_->waiting.push_back(job);
  return Subscription([this, jobs = std::weak_ptr(jobs_), job] {
    const auto queue = jobs.lock();
    if (!queue || std::erase(queue->waiting, job) > 0 || job->isDone) return;
    system_.scheduler.waitUntil("the end of the running work of " + label_,
                                [&] { return job->isDone; });
  });
}

void SerialQueue::run() {
  const auto mayBegin = [this] {
    return jobs_->areOver || (!jobs_->waiting.empty() && system_.processRuns());
  };
  while (true) {
    system_.scheduler.wait(
        {.what = "work", .moment = [&] { return mayBegin() ? 0.0 : never; }, .isIdle = true});
    if (jobs_->areOver) return;
    const auto job = std::move(jobs_->waiting.front());
    jobs_->waiting.pop_front();
    job->work();
    job->work = nullptr;
    job->isDone = true;
  }
}

}  // namespace pellow::simulated
