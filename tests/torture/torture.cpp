#include "tests/torture/torture.h"

#include <algorithm>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "tests/harness/eventually.h"

namespace pellow::desktop {
namespace {

// By the classes of their windows: the first two are one application in two processes.
constexpr const char* applications[] = {"Editor", "Editor", "Terminal", "Viewer"};

// What the user has minimized is none of the program's business here.
const nlohmann::json defaults{{"mechanism", "offscreen"}, {"pellowOnMinimize", false}};

constexpr std::size_t renamed = 2;
constexpr std::size_t undecorated = 4;
constexpr std::size_t maximized = 6;
constexpr std::size_t minimized = 8;

void demand(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

}  // namespace

Torture::Torture(unsigned seed, std::ostream& report) : random_(seed), report_(report) {
  PellowProgram::writeDefaults(desktop_, defaults);
  for (const auto* name : applications)
    clients_.push_back(std::make_unique<TestClient>(desktop_, name));
  openWindows();
  launch();
}

void Torture::openWindows() {
  const Kind kinds[] = {
      {0, "Letter", {40, 60, 400, 260}},     {0, "Letter", {90, 130, 380, 240}},
      {0, "Untitled", {140, 200, 360, 220}}, {1, "Letter", {520, 60, 420, 260}},
      {1, "Letter", {570, 140, 300, 200}},   {2, "Shell", {200, 300, 500, 300}},
      {2, "Shell", {240, 350, 480, 280}},    {2, "Log", {280, 400, 460, 260}},
      {3, "Letter", {700, 320, 340, 240}},   {3, "Picture", {740, 380, 320, 220}}};
  for (const auto& kind : kinds) guests_.push_back({.kind = kind});
  for (std::size_t index = 0; index < guests_.size(); ++index) open(index);
}

void Torture::open(std::size_t index) {
  auto& guest = guests_[index];
  auto& client = *clients_[guest.kind.client];
  guest.window = index == undecorated ? client.openUndecorated(guest.kind.title, guest.kind.place)
                                      : client.open(guest.kind.title, guest.kind.place);
  if (index == maximized) {
    client.maximize(guest.window);
    demand(
        eventually([&] { return desktop_.frame(guest.window).width == desktop_.screen().width; }),
        "no window was maximized");
  }
  guest.home = desktop_.frame(guest.window);
}

void Torture::launch() {
  pellow_ = std::make_unique<PellowProgram>(desktop_);
  demand(pellow_->isReady(), "Pellow does not start:\n" + pellow_->process().standardError());
}

void Torture::press(KeySym letter) { desktop_.type({key::control, key::alt, key::super, letter}); }

void Torture::pause(int milliseconds) {
  const auto longest = std::chrono::microseconds(1000 * milliseconds);
  std::this_thread::sleep_for(longest * random(10000) / 10000);
}

void Torture::minimize(const Guest& guest) {
  desktop_.iconify(guest.window);
  demand(eventually([&] { return !desktop_.isShown(guest.window); }), "no window is minimized");
}

void Torture::putEverythingAway() {
  press('a');
  demand(eventually([this] { return countAway() == std::ssize(guests_); }),
         "not everything was put away:\n" + pellow_->process().standardError());
}

std::vector<Torture::Scene> Torture::scenes() {
  const auto all = static_cast<int>(guests_.size());
  const auto restoreAll = [this] {
    putEverythingAway();
    press('r');
  };
  const auto click = [this, all] {
    putEverythingAway();
    demand(eventually([&] { return pellow_->tabCount() == all; }), "not every window has a tab");
    pellow_->clickTab(random(all));
  };
  const auto turnAround = [this] {
    press('a');
    pause(100);
    press('r');
  };
  // The program is killed once more while it repairs what the first kill has left.
  const auto recover = [this] {
    press('a');
    pause(100);
    pellow_->process().kill();
    pellow_ = std::make_unique<PellowProgram>(desktop_);
  };
  return {{"putting one window away", 20, 1, [this] { press('t'); }},
          {"putting everything away", 100, all, [this] { press('a'); }},
          {"focus mode", 100, all - 1, [this] { press('e'); }},
          {"restoring everything", 100, all, restoreAll},
          {"restoring one window", 20, 1, click},
          {"restoring in the middle of putting away", 100, all, turnAround},
          {"recovery", 300, all, recover}};
}

void Torture::kill() {
  const auto all = scenes();
  const auto& scene = all[random(static_cast<int>(all.size()))];
  const auto& frontmost = guests_[random(static_cast<int>(guests_.size()))];
  demand(desktop_.activate(frontmost.window), "no window becomes active");
  minimize(guests_[minimized]);

  scene.begin();
  pause(scene.milliseconds);
  pellow_->process().kill();

  ++tally_.kills;
  const int away = countAway();
  if (away > 0) ++tally_.withWindowsAway;
  if (scene.windows > 1 && away > 0 && away < scene.windows) ++tally_.halfDone;
  std::ostringstream scars;
  scars << pellow_->journal() << ", away were";
  for (const auto& each : guests_)
    if (!isHome(each)) scars << " \"" << each.kind.title << "\" " << desktop_.frame(each.window);
  clients_[guests_[renamed].kind.client]->setTitle(guests_[renamed].window,
                                                   "Draft " + std::to_string(tally_.kills));
  launch();
  look(scene, scars.str());
}

// Places, not sizes: twins may change places.
bool Torture::isHome(const Guest& guest) const {
  const auto frame = desktop_.frame(guest.window);
  const auto& own = applications[guest.kind.client];
  return std::ranges::any_of(guests_, [&](const Guest& other) {
    return std::string_view(applications[other.kind.client]) == own && other.home.x == frame.x &&
           other.home.y == frame.y;
  });
}

// A minimized window is judged by the place to which it would come back.
bool Torture::isLost(const Guest& guest) const {
  const auto frame = desktop_.frame(guest.window);
  const auto screen = desktop_.screen();
  const auto visible = [](int from, int length, int end) {
    return std::max(0, std::min(from + length, end) - std::max(from, 0));
  };
  const double seen = double{1} * visible(frame.x, frame.width, screen.width) *
                      visible(frame.y, frame.height, screen.height);
  return seen <= 0.05 * frame.width * frame.height;
}

int Torture::countAway() const {
  return static_cast<int>(
      std::ranges::count_if(guests_, [this](const Guest& guest) { return !isHome(guest); }));
}

void Torture::look(const Scene& scene, const std::string& scars) {
  // Once the window manager has done this, no request of the killed program is pending.
  desktop_.activate(guests_.front().window);
  desktop_.activate(guests_.back().window);
  for (std::size_t index = 0; index < guests_.size(); ++index) {
    const auto& guest = guests_[index];
    // openbox may still be animating its frame to the taskbar, and puts it back at the end.
    if (index == minimized) (void)eventually([&] { return isHome(guest); });
    const bool lost = isLost(guest);
    if (!lost && isHome(guest)) continue;
    ++(lost ? tally_.lost : tally_.misplaced);
    report_ << "Kill " << tally_.kills << ", " << scene.name << ": "
            << applications[guest.kind.client] << "'s \"" << guest.kind.title << "\" is "
            << (lost ? "lost" : "misplaced") << ", " << desktop_.frame(guest.window)
            << " instead of " << guest.home << "\nthe journal held " << scars
            << "\nthe next launch said\n"
            << pellow_->process().standardError() << std::flush;
    clients_[guest.kind.client]->destroy(guest.window);
    open(index);
  }
}

}  // namespace pellow::desktop
