#pragma once

#include <memory>
#include <string>

#include "platform/queues.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

class MainQueue final : public pellow::MainQueue {
 public:
  explicit MainQueue(System& system) : system_(system) {}

  Subscription async(Work work) override { return after(0, std::move(work)); }
  Subscription after(Seconds delay, Work work) override {
    return system_.mainLoop.after(delay, std::move(work));
  }
  Subscription every(Seconds interval, std::function<void()> tick) override {
    return system_.mainLoop.every(interval, std::move(tick));
  }

 private:
  System& system_;
};

// A real thread that runs when the scheduler gives it the baton.
class SerialQueue final : public pellow::SerialQueue {
 public:
  SerialQueue(System& system, std::string label);
  ~SerialQueue() override;

  Subscription async(Work work) override;

 private:
  struct Job;
  struct Jobs;

  void run();

  System& system_;
  std::string label_;
  std::shared_ptr<Jobs> jobs_;
  std::shared_ptr<Scheduler::Thread> thread_;
};

class Queues final : public pellow::Queues {
 public:
  explicit Queues(System& system) : system_(system), main_(system) {}

  MainQueue& main() override { return main_; }
  std::unique_ptr<pellow::SerialQueue> makeSerialQueue(std::string label) override {
    return std::make_unique<SerialQueue>(system_, std::move(label));
  }

 private:
  System& system_;
  MainQueue main_;
};

}  // namespace pellow::simulated
