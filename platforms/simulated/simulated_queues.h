#pragma once

#include <memory>
#include <string>

#include "platform/queues.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

class SimulatedMainQueue final : public MainQueue {
 public:
  explicit SimulatedMainQueue(SimulatedSystem& system) : system_(system) {}

  Subscription async(Work work) override { return after(0, std::move(work)); }
  Subscription after(Seconds delay, Work work) override {
    return system_.mainLoop.after(delay, std::move(work));
  }
  Subscription every(Seconds interval, std::function<void()> tick) override {
    return system_.mainLoop.every(interval, std::move(tick));
  }

 private:
  SimulatedSystem& system_;
};

// A real thread that runs when the scheduler gives it the baton.
class SimulatedSerialQueue final : public SerialQueue {
 public:
  SimulatedSerialQueue(SimulatedSystem& system, std::string label);
  ~SimulatedSerialQueue() override;

  Subscription async(Work work) override;

 private:
  struct Job;
  struct Jobs;

  void run();

  SimulatedSystem& system_;
  std::string label_;
  std::shared_ptr<Jobs> jobs_;
  std::shared_ptr<Scheduler::Thread> thread_;
};

class SimulatedQueues final : public Queues {
 public:
  explicit SimulatedQueues(SimulatedSystem& system) : system_(system), main_(system) {}

  MainQueue& main() override { return main_; }
  std::unique_ptr<SerialQueue> makeSerialQueue(std::string label) override {
    return std::make_unique<SimulatedSerialQueue>(system_, std::move(label));
  }

 private:
  SimulatedSystem& system_;
  SimulatedMainQueue main_;
};

}  // namespace pellow::simulated
