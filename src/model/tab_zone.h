#pragma once

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "base/uuid.h"
#include "model/strip_edge.h"
#include "platform/screens.h"

namespace pellow {

// A place on a display as fractions of it.
//
//   (0,0) ──▶ x  (1,0)
//     │
//     ▼ y
//   (0,1)        (1,1)
struct ZonePosition {
  double x = 0;
  double y = 0;

  bool operator==(const ZonePosition&) const = default;
};

// A named strip of tabs: where it stands, and how it looks.
struct TabZone {
  UUID id;
  std::string name;
  ZonePosition position;
  bool showsName = false;
  std::optional<std::string> colorHex;  // "#1A2B3C"; absent: the standard look
  std::optional<double> tabSize;        // points; absent: the preference
  std::optional<DisplayID> displayID;   // absent: the default placement
  std::optional<StripEdge> snap;        // absent: floats at `position`

  bool operator==(const TabZone&) const = default;
};

// The stored form. Also reads the layout of an earlier version, with "edge" and "alignment" instead
// of "position" and "snap"; throws when the value is not a zone.
void to_json(nlohmann::json& json, const TabZone& zone);
void from_json(const nlohmann::json& json, TabZone& zone);

}  // namespace pellow
