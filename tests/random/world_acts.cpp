#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "base/json.h"
#include "model/preferences.h"
#include "model/zone_store.h"
#include "tests/random/pick.h"
#include "tests/random/world.h"

// What each verb does to the desktop.

namespace pellow::random {
namespace {

using simulated::AXCall;

struct UsualApplication {
  std::string_view name;
  std::string_view bundleID;  // empty: none
  ActivationPolicy policy = ActivationPolicy::regular;
};

constexpr auto usualApplications = std::to_array<UsualApplication>({
    {"Notes", "com.example.notes"},
    {"Mail", "com.example.mail"},
    {"Shell", "com.example.shell"},
    {"Nameless", ""},
    {"Agent", "com.example.agent", ActivationPolicy::accessory},
    {"Web", "com.example.web"},
    {"Daemon", "com.example.daemon", ActivationPolicy::prohibited},
    {"Notes Twin", "com.example.notes"},
});

constexpr auto titles =
    std::to_array<std::string_view>({"~", "Shopping", "~", "Letter", "Inbox", "", "Draft", "Log"});
constexpr auto subroles = std::to_array<std::string_view>(
    {"AXStandardWindow", "AXStandardWindow", "AXDialog", "AXStandardWindow", "AXStandardWindow",
     "AXStandardWindow", "", "AXStandardWindow", "AXStandardWindow", "AXFloatingWindow"});
constexpr auto sizes = std::to_array<Size>(
    {{800, 600}, {400, 300}, {600, 400}, {1000, 700}, {300, 200}, {1500, 1000}});
// From the top left of a display; the last one is nowhere.
constexpr auto places = std::to_array<QuartzPoint>(
    {{40, 40}, {200, 120}, {500, 300}, {700, 60}, {0, 30}, {900, 500}, {-150, 200}, {-9000, 100}});
constexpr auto keys = std::to_array<std::uint16_t>({17, 0, 14, 15, 17, 35, 17, 17, 15, 3, 17, 17});

constexpr int mostDisplays = 3;

// What happens, in words and in fact.
struct Change {
  std::string words;
  std::function<void()> make;
};

QuartzPoint placeOn(const simulated::DesktopState& desktop, int number, std::size_t among) {
  const auto offset = places[static_cast<std::size_t>(number) % among];
  if (desktop.screens.empty()) return offset;
  const auto& screen = pick(desktop.screens, number / static_cast<int>(places.size()));
  const auto corner = desktop.flip().toQuartz(screen.frame).origin;
  return {corner.x + offset.x, corner.y + offset.y};
}

// Whether it was asked for something that it will still do.
bool owesSomething(const simulated::DesktopState& desktop, ProcessID pid) {
  return std::ranges::any_of(desktop.lateWrites, [&](const simulated::LateWrite& late) {
    const auto* window = desktop.window(late.window);
    return window && window->pid == pid;
  });
}

UUID zoneID(int index) {
  UUID id;
  id.bytes.back() = static_cast<std::uint8_t>(index + 1);
  return id;
}

}  // namespace

std::string World::actOnDesktop(const Step& step) {
  auto& desktop = *desktop_;
  const auto [first, second, third] = step.numbers;
  switch (step.verb) {
    case Verb::launch:
      return launch(first);
    case Verb::open:
      return open(first, second, third);
    case Verb::manners:
      return manners(first, second, third);
    case Verb::temper:
      return temper(first, second, third);
    case Verb::rename:
    case Verb::resize:
    case Verb::minimize:
    case Verb::unminimize:
    case Verb::close:
    case Verb::move:
    case Verb::raise:
    case Verb::choose:
      return actOnWindow(step.verb, first, second);
    case Verb::hang:
    case Verb::wake:
    case Verb::quitApplication:
    case Verb::killApplication:
    case Verb::activate:
    case Verb::hide:
    case Verb::unhide:
      return actOnApplication(step.verb, first, second);
    case Verb::press:
      return press(first);
    case Verb::tab:
      return clickTab(first);
    case Verb::rest:
      return restOn(first);
    case Verb::menu:
      return openMenu(first, second);
    case Verb::item:
      return chooseItem(first, second);
    case Verb::drag:
      return dragStrip(first, second, third);
    case Verb::answer:
      return answer(first);
    case Verb::prefer:
      return prefer(first, second);
    case Verb::zones:
      return zones(first, second);
    case Verb::pin:
      return pin(first, second);
    case Verb::plug:
      return plug(first);
    case Verb::unplug:
      return unplug(first);
    case Verb::dock: {
      using enum simulated::DockSide;
      desktop.screens().moveDock(pick(std::array{left, right, autoHidden, bottom}, first));
      return "the Dock moves";
    }
    case Verb::faults: {
      using enum AXError;
      const std::array<std::vector<AXError>, 3> kinds{
          {{cannotComplete}, {failure}, {cannotComplete, failure, noValue, notImplemented}}};
      desktop.accessibility().injectFaults(first / 100.0, pick(kinds, second));
      return fmt::format("from now on {} % of all calls fail", first);
    }
    case Verb::delays:
      desktop.accessibility().delayAnswers(first / 1000.0);
      desktop.delayAnnouncements(second / 1000.0);
      desktop.screenCapture().answersAfter(third / 1000.0);
      return fmt::format("answers take up to {} ms, announcements up to {} ms, pictures {} ms",
                         first, second, third);
    case Verb::failWrite:
      desktop.userDefaults().failNextWrite({"the disk is full"});
      return "the next write that must be on disk will not be";
    case Verb::trust:
      desktop.accessibility().setTrusted(first % 2 == 1);
      return first % 2 == 1 ? "the permission is given" : "the permission is withdrawn";
    case Verb::capture:
      desktop.screenCapture().allow(first % 2 == 1);
      return first % 2 == 1 ? "pictures are allowed" : "pictures are not allowed";
    case Verb::quit:
    case Verb::signal:
      return end(step);
    case Verb::crashIn:
      if (!programRuns()) return "";
      callsUntilCrash_ = std::max(first, 1);
      return fmt::format("the program will crash at call {} from now", *callsUntilCrash_);
    case Verb::run:
    case Verb::quiet:
    case Verb::settle:
    case Verb::start:
    case Verb::crash:
      break;
  }
  return "";
}

// Who is meant

std::optional<World::Window> World::window(int which) const {
  auto all = desktop_->windows();
  if (all.empty()) return std::nullopt;
  std::ranges::sort(all, {}, &Window::id);
  return pick(all, which);
}

std::optional<World::Application> World::application(int which) const {
  auto& desktop = *desktop_;
  std::vector<std::string> names;
  for (const auto& each : desktop.state().applications)
    if (each.identity.localizedName != "Pellow") names.push_back(each.identity.localizedName);
  if (names.empty()) return std::nullopt;
  return desktop.application(pick(names, which));
}

std::optional<World::Application> World::usualApplication(int which) const {
  const auto& name = pick(usualApplications, which).name;
  for (const auto& each : desktop_->state().applications)
    if (each.identity.localizedName == name) return desktop_->application(name);
  return std::nullopt;
}

// Applications and windows

std::string World::launch(int which) {
  if (usualApplication(which)) return "";
  const auto& [name, bundleID, policy] = pick(usualApplications, which);
  desktop_->launch(std::string(name),
                   bundleID.empty() ? std::nullopt : std::optional(std::string(bundleID)), policy);
  return fmt::format("{} is launched", name);
}

std::string World::open(int which, int kind, int place) {
  auto owner = usualApplication(which);
  if (!owner) owner = application(which);
  if (!owner) return "";
  const auto& desktop = desktop_->state();
  const QuartzRect frame(placeOn(desktop, place, places.size() - 1), pick(sizes, place / 3));
  const auto& subrole = pick(subroles, kind / static_cast<int>(titles.size()));
  const auto opened =
      owner->openWindow(std::string(pick(titles, kind)), frame, std::string(subrole));
  return fmt::format("{} ({}) opens at ({}, {}) {} x {}",
                     nameOf(desktop, *desktop.window(opened.id())),
                     subrole.empty() ? "no subrole" : subrole, frame.minX(), frame.minY(),
                     frame.width(), frame.height());
}

// A window that owes something keeps its pace, or it would do later what it was asked first.
std::string World::manners(int which, int manner, int detail) {
  const auto found = window(which);
  if (!found) return "";
  const auto& desktop = desktop_->state();
  if (owesSomething(desktop, found->pid())) return "";
  const auto name = nameOf(desktop, *desktop.window(found->id()));
  const int call = 1 + detail % 12;
  // The last ones of 16 are the first one, too.
  const std::vector<Change> manners{
      {"behaves", [&] { found->behaves(); }},
      {fmt::format("answers after {} ms", 50 + detail),
       [&] { found->answersAfter((50 + detail) / 1000.0); }},
      {"answers after 6 s and acts late", [&] { found->answersAfter(6).actsLate(); }},
      {"answers after 6 s", [&] { found->answersAfter(6); }},
      {"refuses to move", [&] { found->refusesToMove(); }},
      {"stays inside of the displays", [&] { found->clampsToDisplay(); }},
      {"snaps to a grid", [&] { found->snapsToGrid(detail % 2 == 0 ? 10 : 64); }},
      {"moves sideways only",
       [&] { found->movesTo([](QuartzPoint asked) { return QuartzPoint{asked.x, 30}; }); }},
      {fmt::format("waits for call {} to close", call), [&] { found->closesDuring(call); }},
      {"fails when it is minimized or unminimized, once",
       [&] { found->failsNext("AXMinimized", AXError::failure, AXCall::write); }},
      {"fails when it is moved, once",
       [&] { found->failsNext("AXPosition", AXError::cannotComplete, AXCall::write); }},
      {"fails when it is asked where it is, once",
       [&] { found->failsNext("AXPosition", AXError::failure, AXCall::read); }},
      {"fails when it is raised, once",
       [&] { found->failsNext("AXRaise", AXError::cannotComplete); }},
      {"acts late when its application hangs", [&] { found->actsLate(); }}};
  const auto kind = static_cast<std::size_t>(manner % 16);
  const auto& [words, make] = manners[kind < manners.size() ? kind : 0];
  make();
  return name + " from now on " + words;
}

std::string World::temper(int which, int temper, int detail) {
  const auto found = application(which);
  if (!found) return "";
  const auto& desktop = desktop_->state();
  const auto name = desktop.application(found->pid())->identity.localizedName;
  const auto with = [&](const std::string& what) { return name + " from now on " + what; };
  const bool keepsPace = owesSomething(desktop, found->pid());
  switch (temper % 8) {
    case 1:
    case 2:
      if (keepsPace) return "";
      found->answersAfter(detail / 1000.0);
      return with(fmt::format("answers after {} ms", detail));
    case 3:
      if (keepsPace) return "";
      found->answersAfter(6);
      return with("answers after 6 s");
    case 4:
      found->refusesToHide();
      return with("refuses to be hidden");
    case 5:
      found->refusesObservers();
      return with("refuses to be watched");
    case 6:
      found->quitsDuring(1 + detail % 15);
      return with(fmt::format("waits for call {} to quit", 1 + detail % 15));
    default:
      if (!keepsPace) found->answersAfter(0);
      found->refusesToHide(false).refusesObservers(false);
      return with("behaves");
  }
}

std::string World::actOnWindow(Verb verb, int which, int detail) {
  const auto found = window(which);
  if (!found) return "";
  const auto& desktop = desktop_->state();
  const auto name = nameOf(desktop, *desktop.window(found->id()));
  const Application owner =
      desktop_->application(desktop.application(found->pid())->identity.localizedName);
  const auto& title = pick(titles, detail);
  const auto& size = pick(sizes, detail);
  const auto place = placeOn(desktop, detail, places.size());
  const std::map<Verb, Change> changes{
      {Verb::rename,
       {fmt::format("{} renames itself to \"{}\"", name, title),
        [&] {
          sightings_.renamed(found->pid());
          found->rename(std::string(title));
        }}},
      {Verb::resize,
       {fmt::format("{} resizes itself to {} x {}", name, size.width, size.height),
        [&] { found->resize(size); }}},
      {Verb::minimize, {"the user minimizes " + name, [&] { found->minimize(); }}},
      {Verb::unminimize, {"the user unminimizes " + name, [&] { found->unminimize(); }}},
      {Verb::close, {name + " closes", [&] { found->close(); }}},
      {Verb::move,
       {fmt::format("the user moves {} to ({}, {})", name, place.x, place.y),
        [&] { found->moveTo(place); }}},
      {Verb::raise, {name + " is raised", [&] { found->raise(); }}},
      {Verb::choose, {"the user chooses " + name + " from the menu of its application", [&] {
                        found->unminimize();
                        owner.activate();
                        found->raise();
                      }}}};
  const auto& [words, make] = changes.at(verb);
  make();
  return words;
}

std::string World::actOnApplication(Verb verb, int which, int detail) {
  const auto found = application(which);
  if (!found) return "";
  const auto name = desktop_->state().application(found->pid())->identity.localizedName;
  const bool actsLate = detail % 3 != 0;
  const std::map<Verb, Change> changes{
      {Verb::hang,
       {name + (actsLate ? " hangs, and will do later what it is asked" : " hangs"),
        [&] {
          found->hangs();
          if (!actsLate) return;
          for (const auto& each : found->windows()) each.actsLate();
        }}},
      {Verb::wake, {name + " answers again", [&] { found->wakes(); }}},
      {Verb::quitApplication, {name + " quits", [&] { found->quit(); }}},
      {Verb::killApplication, {name + " is killed", [&] { found->kill(); }}},
      {Verb::activate, {name + " is activated", [&] { found->activate(); }}},
      {Verb::hide, {"the user hides " + name, [&] { found->hide(); }}},
      {Verb::unhide, {"the user unhides " + name, [&] { found->unhide(); }}}};
  const auto& [words, make] = changes.at(verb);
  make();
  return words;
}

// The user and the program

std::string World::press(int key) {
  const auto code = pick(keys, key);
  desktop_->keyboard().press(code, modifier::control | modifier::option | modifier::command);
  static const std::map<std::uint16_t, std::string_view> actions{
      {17, "pellow the frontmost window"},
      {3, "float above"},
      {35, "pellow pinned"},
      {0, "pellow everything"},
      {14, "pellow all the rest"},
      {15, "restore all"}};
  return fmt::format("the user presses the keys for: {}", actions.at(code));
}

std::string World::answer(int button) {
  auto& desktop = *desktop_;
  if (desktop.alerts().showing().empty()) return "";
  const auto alert = desktop.alerts().showing().front();
  const auto& chosen = pick(alert.buttons, button);
  desktop.alerts().choose(chosen);
  return fmt::format("the user answers \"{}\" with \"{}\"", alert.messageText, chosen);
}

std::string World::prefer(int setting, int value) {
  using namespace preference;
  constexpr std::array booleans{restoreOnActivation, pellowOnMinimize,  useThumbnails,
                                animateFlight,       floatAboveWindows, autoHideStrip,
                                tabsOnAllScreens,    thumbnailTabs,     showTitles};
  constexpr std::array mechanisms{"offscreen", "minimize", "hideApp", "offscreen"};
  auto& desktop = *desktop_;
  const auto set = [&](const auto& preference, const auto& chosen) {
    desktop.userDefaults().put(preference.key, chosen);
    return fmt::format("{} is now {}", preference.key, chosen);
  };
  switch (const auto kind = setting % 14; kind) {
    case 0:
    case 1:
      return set(mechanism, std::string(pick(mechanisms, value)));
    case 2:
      return set(animationDuration, pick(std::array{0.3, 0.0, 1.2, 5.0}, value));
    case 3:
      return set(tabScope, std::string(value % 2 == 0 ? "window" : "app"));
    default:
      return set(pick(booleans, kind), value % 2 == 0);
  }
}

std::string World::zones(int count, int edge) {
  std::vector<TabZone> zones;
  for (int index = 0; index <= count % 3; ++index) {
    TabZone zone{.id = zoneID(index), .name = fmt::format("Zone {}", index + 1)};
    zone.position = {index % 2 == 0 ? 1.0 : 0.2, 0.3 * index};
    using enum StripEdge;
    constexpr std::array<std::optional<StripEdge>, 5> snaps{right, left, top, bottom, std::nullopt};
    zone.snap = pick(snaps, edge + index);
    zones.push_back(zone);
  }
  desktop_->userDefaults().put("zones",
                               DefaultsData{encodeJSON(nlohmann::json(zones)).value_or("")});
  return fmt::format("{} zone(s) from the next start on", zones.size());
}

std::string World::pin(int which, int zone) {
  const auto& bundleID = pick(usualApplications, which).bundleID;
  if (bundleID.empty()) return "";
  const ZoneStore::Pins pins{{std::string(bundleID), zoneID(zone % 3)}};
  desktop_->userDefaults().put("pinnedApps",
                               DefaultsData{encodeJSON(nlohmann::json(pins)).value_or("")});
  return fmt::format("{} is pinned from the next start on", bundleID);
}

// Displays

std::string World::plug(int side) {
  auto& desktop = *desktop_;
  const auto& screens = desktop.state().screens;
  if (std::ssize(screens) >= mostDisplays) return "";
  const auto size = pick(std::array{Size{1920, 1080}, Size{1280, 800}}, side / 3);
  AppKitPoint origin;
  if (!screens.empty()) {
    const auto right =
        std::ranges::max(screens, {}, [](const Screen& each) { return each.frame.maxX(); }).frame;
    const auto left =
        std::ranges::min(screens, {}, [](const Screen& each) { return each.frame.minX(); }).frame;
    const auto top =
        std::ranges::max(screens, {}, [](const Screen& each) { return each.frame.maxY(); }).frame;
    origin = pick(std::array{AppKitPoint{right.maxX(), right.minY()},
                             AppKitPoint{left.minX() - size.width, left.minY()},
                             AppKitPoint{top.minX(), top.maxY()}},
                  side);
  }
  desktop.screens().plug(static_cast<DisplayID>(++displays_), {origin, size});
  return fmt::format("display {} is plugged in at ({}, {}), {} x {}", displays_, origin.x, origin.y,
                     size.width, size.height);
}

std::string World::unplug(int which) {
  auto& desktop = *desktop_;
  const auto& screens = desktop.state().screens;
  // Now and then the last display goes too: a lid is closed.
  if (screens.empty() || (screens.size() == 1 && which % 3 != 2)) return "";
  const auto display = *pick(screens, which).displayID;
  desktop.screens().unplug(display);
  return fmt::format("display {} is unplugged", display);
}

}  // namespace pellow::random
