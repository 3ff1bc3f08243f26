#pragma once

#include <optional>

#include "base/geometry.h"
#include "engine/ledger.h"
#include "model/strip_edge.h"
#include "model/tab_item.h"

namespace pellow {

// One window on its way off the screen, from the claim to its tab.
struct Departure {
  Ledger::Claim claim;  // with the tab to come
  StripEdge side;       // where the window slides to, if it does
  bool wasMinimized = false;
  std::optional<QuartzPoint> recordedAt;  // where the journal has it parked

  TabItem& tab() { return claim.tab(); }
  const TabItem& tab() const { return claim.tab(); }
};

}  // namespace pellow
