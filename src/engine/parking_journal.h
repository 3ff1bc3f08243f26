#pragma once

#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "base/geometry.h"
#include "base/log.h"
#include "platform/user_defaults.h"

namespace pellow {

// One window parked off-screen, or about to be. Quartz space.
struct ParkingRecord {
  std::string bundleID;
  std::string title;           // at parking time
  QuartzPoint originalOrigin;  // of the frame, before parking
  QuartzPoint parkedOrigin;

  bool operator==(const ParkingRecord&) const = default;
};

// The stored form; reading throws when the value is not a record.
void to_json(nlohmann::json& json, const ParkingRecord& record);
void from_json(const nlohmann::json& json, ParkingRecord& record);

// The records of the windows parked off-screen, safe from a crash: the next process can read a
// write before it returns; a write that fails logs why and answers false. Main thread.
class ParkingJournal {
 public:
  // Reads what a previous run left; nothing when the stored data does not decode.
  ParkingJournal(UserDefaults& defaults, const Log& log);

  const std::vector<ParkingRecord>& records() const { return records_; }

  bool write(std::vector<ParkingRecord> records);

  // Records from a previous run, or for the next one, whose windows could not be brought back.
  // Every write includes them.
  const std::vector<ParkingRecord>& kept() const { return kept_; }
  void keep(ParkingRecord record) { kept_.push_back(std::move(record)); }

  // The window is back or gone: drops this kept record and writes the rest.
  void release(const ParkingRecord& record);

  // Nothing is parked and nothing kept any more.
  void clear();

 private:
  UserDefaults& defaults_;
  const Log& log_;
  std::vector<ParkingRecord> records_;  // as stored; nobody else writes them
  std::vector<ParkingRecord> kept_;
};

}  // namespace pellow
