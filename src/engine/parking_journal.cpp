#include "engine/parking_journal.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

namespace pellow {
namespace {

constexpr auto key = "parkedWindows";

nlohmann::json encode(QuartzPoint point) { return {point.x, point.y}; }

QuartzPoint decodePoint(const nlohmann::json& json) {
  return {json.at(0).get<double>(), json.at(1).get<double>()};
}

nlohmann::json encode(const ParkingRecord& record) {
  return {{"bundleID", record.bundleID},
          {"title", record.title},
          {"originalOrigin", encode(record.originalOrigin)},
          {"parkedOrigin", encode(record.parkedOrigin)}};
}

ParkingRecord decodeRecord(const nlohmann::json& json) {
  return {json.at("bundleID").get<std::string>(), json.at("title").get<std::string>(),
          decodePoint(json.at("originalOrigin")), decodePoint(json.at("parkedOrigin"))};
}

std::vector<ParkingRecord> decode(const std::string& text) {
  try {
    std::vector<ParkingRecord> records;
    for (const auto& json : nlohmann::json::parse(text)) records.push_back(decodeRecord(json));
    return records;
  } catch (const nlohmann::json::exception&) {
    return {};
  }
}

}  // namespace

ParkingJournal::ParkingJournal(UserDefaults& defaults)
    : defaults_(defaults), records_(decode(data(defaults, key).value_or("[]"))) {}

std::expected<void, SystemError> ParkingJournal::write(std::vector<ParkingRecord> records) {
  records_ = std::move(records);
  auto json = nlohmann::json::array();
  for (const auto& record : records_) json.push_back(encode(record));
  // A title is whatever bytes another application made of it.
  auto text = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return defaults_.set(key, DefaultsData{std::move(text)}, Durability::immediate);
}

std::expected<void, SystemError> ParkingJournal::append(ParkingRecord record) {
  auto all = records_;
  all.push_back(std::move(record));
  return write(std::move(all));
}

std::expected<void, SystemError> ParkingJournal::forget(const std::string& bundleID,
                                                        const std::string& title,
                                                        std::vector<QuartzPoint> stillParked) {
  auto all = records_;
  const auto removed = std::erase_if(all, [&](const ParkingRecord& record) {
    if (record.bundleID != bundleID || record.title != title) return false;
    const auto sibling = std::ranges::find(stillParked, record.originalOrigin);
    if (sibling == stillParked.end()) return true;
    stillParked.erase(sibling);
    return false;
  });
  if (removed == 0) return {};
  return write(std::move(all));
}

}  // namespace pellow
