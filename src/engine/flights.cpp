#include "engine/flights.h"

#include "model/mechanism.h"

namespace pellow {
namespace {

// What flies for a tab, and as what; nothing when it has no picture at all.
struct Traveller {
  Image image;
  FlightAnimator::Subject subject;
};

std::optional<Traveller> traveller(const TabItem& tab) {
  if (tab.snapshot) return Traveller{*tab.snapshot, FlightAnimator::Subject::picture};
  if (tab.icon) return Traveller{*tab.icon, FlightAnimator::Subject::icon};
  return std::nullopt;
}

bool canFly(const TabItem& tab) {
  return tab.mechanism != Mechanism::minimize && tab.originalFrame.has_value();
}

}  // namespace

std::optional<AppKitRect> Flights::projectedTabFrame(const TabItem& tab) {
  if (!isWanted() || !canFly(tab) || !tab.zoneID || !around_.animator.makeWay() ||
      around_.displays.areLocked())
    return std::nullopt;
  return around_.strips.projectedTabFrame(*tab.zoneID);
}

std::map<UUID, AppKitRect> Flights::tabFrames(const std::vector<UUID>& ids) const {
  if (!isWanted() || around_.displays.areLocked()) return {};
  return around_.strips.frames(ids);
}

bool Flights::isWanted() const { return around_.preferences.value(preference::animateFlight); }

void Flights::flyOut(const TabItem& tab, const AppKitRect& tabFrame) {
  if (const auto what = traveller(tab))
    around_.animator.flyOut(what->image, what->subject,
                            around_.displays.flip().toAppKit(*tab.originalFrame), tabFrame);
}

void Flights::flyBack(const TabItem& tab, const AppKitRect& tabFrame) {
  const auto what = traveller(tab);
  if (!what || !canFly(tab)) return;
  auto home = *tab.originalFrame;
  if (tab.mechanism == Mechanism::offscreen) home.origin = around_.places.restoreOrigin(home);
  around_.animator.flyBack(what->image, what->subject, tabFrame,
                           around_.displays.flip().toAppKit(home));
}

}  // namespace pellow
