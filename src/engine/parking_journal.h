#pragma once

#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "base/geometry.h"
#include "base/log.h"
#include "platform/user_defaults.h"

namespace pellow {

// One window that is parked off-screen, or is about to be. Quartz space.
struct ParkingRecord {
  std::string bundleID;
  std::string title;           // at parking time
  QuartzPoint originalOrigin;  // of the frame, before parking
  QuartzPoint parkedOrigin;

  bool operator==(const ParkingRecord&) const = default;
};

// The stored form; reading throws when the value is no record.
void to_json(nlohmann::json& json, const ParkingRecord& record);
void from_json(const nlohmann::json& json, ParkingRecord& record);

// The records of the windows that are parked off-screen, kept where a crash cannot take them: the
// next process can read every write before it returns, or it answers false and has said why in the
// log. Main thread.
class ParkingJournal {
 public:
  // Reads what a previous run left; nothing when the stored data does not decode.
  ParkingJournal(UserDefaults& defaults, const Log& log);

  const std::vector<ParkingRecord>& records() const { return records_; }

  bool write(std::vector<ParkingRecord> records);

  // Records of a previous run, or for the next one, whose windows nobody could ask. Every write has
  // them besides its own.
  const std::vector<ParkingRecord>& kept() const { return kept_; }
  void keep(ParkingRecord record) { kept_.push_back(std::move(record)); }

  // Its window is back or gone: keeps one record less, and writes that.
  void release(const ParkingRecord& record);

  // Nothing is parked, and nothing is kept any more.
  void clear();

 private:
  UserDefaults& defaults_;
  const Log& log_;
  std::vector<ParkingRecord> records_;  // as stored; nobody else writes them
  std::vector<ParkingRecord> kept_;
};

}  // namespace pellow
