#include "engine/parking_journal.h"

#include <algorithm>
#include <utility>

#include "base/json.h"

namespace pellow {
namespace {

constexpr auto key = "parkedWindows";

nlohmann::json encode(QuartzPoint point) { return {point.x, point.y}; }

QuartzPoint readPoint(const nlohmann::json& json, const char* member) {
  const auto& point = json.at(member);
  return {readJSON<double>(point.at(0)), readJSON<double>(point.at(1))};
}

}  // namespace

void to_json(nlohmann::json& json, const ParkingRecord& record) {
  json = {{"bundleID", record.bundleID},
          {"title", record.title},
          {"originalOrigin", encode(record.originalOrigin)},
          {"parkedOrigin", encode(record.parkedOrigin)}};
}

void from_json(const nlohmann::json& json, ParkingRecord& record) {
  record = {readMember<std::string>(json, "bundleID"), readMember<std::string>(json, "title"),
            readPoint(json, "originalOrigin"), readPoint(json, "parkedOrigin")};
}

ParkingJournal::ParkingJournal(UserDefaults& defaults, const Log& log)
    : defaults_(defaults), log_(log) {
  const auto stored = data(defaults_, key).value_or("");
  records_ = decodeJSON<std::vector<ParkingRecord>>(stored).value_or(std::vector<ParkingRecord>{});
}

void ParkingJournal::release(const ParkingRecord& record) {
  const auto found = std::ranges::find(kept_, record);
  if (found == kept_.end()) return;
  kept_.erase(found);
  write(std::exchange(records_, {}));
}

void ParkingJournal::clear() {
  kept_.clear();
  write({});
}

bool ParkingJournal::write(std::vector<ParkingRecord> records) {
  records_ = std::move(records);
  auto stored = kept_;
  stored.insert(stored.end(), records_.begin(), records_.end());
  // A title is whatever bytes another application made it.
  auto text = nlohmann::json(stored).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  const auto written = defaults_.set(key, DefaultsData{std::move(text)}, Kept::atOnce);
  if (!written)
    log_.error("Could not write the parked-window journal: {}", written.error().sentence);
  return written.has_value();
}

}  // namespace pellow
