#include "platforms/simulated/main_loop.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

namespace pellow::simulated {
namespace {

constexpr Seconds day = 24 * 60 * 60;

}  // namespace

struct MainLoop::Items {
  struct Item {
    Seconds due = 0;
    Work work;                   // empty in a repeating item
    std::function<void()> tick;  // empty in any other
    Seconds interval = 0;
  };
  std::map<std::uint64_t, Item> byAge;
  std::set<std::pair<Seconds, std::uint64_t>> byDue;
  std::uint64_t next = 0;

  // What the item owns may itself take items out, so it dies outside the collection.
  Item take(std::uint64_t age) {
    const auto found = byAge.find(age);
    if (found == byAge.end()) return {};
    byDue.erase({found->second.due, age});
    return std::move(byAge.extract(found).mapped());
  }
};

MainLoop::MainLoop(Scheduler& scheduler)
    : scheduler_(scheduler), items_(std::make_shared<Items>()) {}

MainLoop::~MainLoop() {
  while (!items_->byAge.empty()) items_->take(items_->byAge.begin()->first);
}

Subscription MainLoop::after(Seconds delay, Work work) {
  return add(scheduler_.now() + std::max(delay, 0.0), std::move(work), {}, 0);
}

Subscription MainLoop::every(Seconds interval, std::function<void()> tick) {
  return add(scheduler_.now() + interval, {}, std::move(tick), std::max(interval, 0.001));
}

Subscription MainLoop::add(Seconds due, Work work, std::function<void()> tick, Seconds interval) {
  const auto age = items_->next++;
  items_->byDue.emplace(due, age);
  items_->byAge.emplace(age, Items::Item{due, std::move(work), std::move(tick), interval});
  return Subscription([weak = std::weak_ptr(items_), age] {
    if (const auto items = weak.lock()) items->take(age);
  });
}

void MainLoop::post(Work event, Seconds moment) {
  if (isStopped_) return;
  const auto age = items_->next++;
  const auto due = std::max(moment, scheduler_.now());
  items_->byDue.emplace(due, age);
  items_->byAge.emplace(age, Items::Item{due, std::move(event), {}, 0});
}

void MainLoop::runUntilQuiet(Seconds horizon) {
  const auto limit = scheduler_.now() + day;
  runWhile([this, horizon] { return isQuiet(horizon) ? 0.0 : never; }, limit);
}

void MainLoop::run(Seconds duration) {
  const auto end = scheduler_.now() + duration;
  runWhile([end] { return end; }, never);
}

void MainLoop::runWhile(const std::function<Seconds()>& givesWayUntil, Seconds limit) {
  if (std::exchange(isRunning_, true))
    throw std::logic_error("the main loop of a simulated desktop runs already");
  struct Guard {
    bool& flag;
    ~Guard() { flag = false; }
  } guard{isRunning_};

  do {
    if (scheduler_.now() > limit)
      throw std::runtime_error("the simulated desktop does not become quiet within a day");
    scheduler_.wait({.what = "something to do on the main queue",
                     .moment = [this] { return nextDue(); },
                     .givesWayUntil = givesWayUntil});
  } while (runDueItem());
}

bool MainLoop::runDueItem() {
  if (atEnd_) {
    std::exchange(atEnd_, nullptr)();
    return true;
  }
  if (nextDue() > scheduler_.now()) return false;
  const auto age = items_->byDue.begin()->second;
  auto& next = items_->byAge.at(age);
  if (!next.tick) {
    items_->take(age).work();
    return true;
  }
  // A tick may end its own timer.
  const auto tick = next.tick;
  items_->byDue.erase({next.due, age});
  while (next.due <= scheduler_.now()) next.due += next.interval;
  items_->byDue.emplace(next.due, age);
  tick();
  return true;
}

void MainLoop::terminate(std::function<void()> atEnd) { atEnd_ = std::move(atEnd); }

void MainLoop::stop() {
  isStopped_ = true;
  atEnd_ = nullptr;
}

Seconds MainLoop::nextDue() const {
  if (isStopped_) return never;
  if (atEnd_) return 0;
  return items_->byDue.empty() ? never : items_->byDue.begin()->first;
}

bool MainLoop::isQuiet(Seconds horizon) const {
  if (!scheduler_.othersAreIdle()) return false;
  if (isStopped_) return true;
  return !atEnd_ && std::ranges::all_of(items_->byAge, [&](const auto& entry) {
    return entry.second.tick || entry.second.due > scheduler_.now() + horizon;
  });
}

}  // namespace pellow::simulated
