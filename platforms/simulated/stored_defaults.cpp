#include "platforms/simulated/stored_defaults.h"

#include <algorithm>
#include <ranges>
#include <utility>

#include "platforms/simulated/scheduler.h"

namespace pellow::simulated {
namespace {

constexpr Seconds eventually = 1;

}  // namespace

std::optional<DefaultsValue> StoredDefaults::value(std::string_view key) const {
  return afterCrash(key, never);
}

std::optional<DefaultsValue> StoredDefaults::afterCrash(std::string_view key, Seconds now) const {
  for (const auto& write : std::views::reverse(unsaved_))
    if (write.key == key && write.saved <= now) return write.value;
  const auto found = saved_.find(key);
  return found == saved_.end() ? std::nullopt : std::optional(found->second);
}

std::expected<void, SystemError> StoredDefaults::write(std::string_view key, DefaultsValue value,
                                                       Kept kept, Seconds now) {
  settle(now);
  if (kept == Kept::eventually) {
    unsaved_.push_back({std::string(key), std::move(value), now + eventually});
    return {};
  }
  const auto fault = std::ranges::find_if(
      faults_, [&](const Fault& candidate) { return !candidate.key || *candidate.key == key; });
  if (fault != faults_.end()) {
    unsaved_.push_back({std::string(key), std::move(value), never});
    auto error = std::move(fault->error);
    faults_.erase(fault);
    return std::unexpected(std::move(error));
  }
  put(key, std::move(value));
  return {};
}

void StoredDefaults::put(std::string_view key, DefaultsValue value) {
  std::erase_if(unsaved_, [&](const Write& write) { return write.key == key; });
  saved_.insert_or_assign(std::string(key), std::move(value));
}

void StoredDefaults::failNextWrite(std::optional<std::string> key, SystemError error) {
  faults_.push_back({std::move(key), std::move(error)});
}

void StoredDefaults::saveAll() { settle(never); }

void StoredDefaults::loseUnsaved(Seconds now) {
  settle(now);
  unsaved_.clear();
}

void StoredDefaults::settle(Seconds now) {
  for (auto& write : unsaved_)
    if (write.saved <= now) saved_.insert_or_assign(write.key, write.value);
  std::erase_if(unsaved_, [&](const Write& write) { return write.saved <= now; });
}

}  // namespace pellow::simulated
