#include "tests/harness/pellow_program.h"

#include <fstream>
#include <sstream>

#include "tests/harness/eventually.h"

namespace pellow::desktop {
namespace {

// Along a strip of icon tabs, in pixels: an empty strip is 60 long.
constexpr int tabSide = 34;
constexpr int spacing = 4;
constexpr int padding = 5;
constexpr int emptyLength = 60;

int lengthOf(int tabs) {
  return tabs == 0 ? emptyLength : tabs * (tabSide + spacing) - spacing + 2 * padding;
}

}  // namespace

PellowProgram::PellowProgram(DesktopSession& desktop, const Environment& changes)
    : desktop_(desktop) {
  beKnown(desktop);
  process_ = desktop.start({PELLOW_BINARY}, changes);
}

bool PellowProgram::isReady() {
  // The first strip may be the last of a program that was killed, which the server still cleans up,
  // or go when the program reads the zones of a settings file.
  const auto answers = [this] {
    const auto shown = strip();
    return shown != 0 && desktop_.answersPing(shown);
  };
  return eventually([&] { return !process_->isRunning() || answers(); }) && process_->isRunning();
}

WindowID PellowProgram::strip() const {
  const auto strips = desktop_.shownWindows("pellow", "pellow-strip");
  return strips.empty() ? 0 : strips[0];
}

int PellowProgram::tabCount() const {
  const int length = desktop_.content(strip()).height;
  for (int tabs = 0; lengthOf(tabs) <= std::max(length, emptyLength); ++tabs)
    if (lengthOf(tabs) == length) return tabs;
  return -1;
}

void PellowProgram::clickTab(int index) const {
  const auto place = desktop_.content(strip());
  desktop_.click(place.x + place.width / 2,
                 place.y + padding + index * (tabSide + spacing) + tabSide / 2);
}

std::filesystem::path PellowProgram::defaultsFile(const DesktopSession& desktop) {
  return desktop.configHome() / "pellow" / "defaults.json";
}

void PellowProgram::writeDefaults(const DesktopSession& desktop, const nlohmann::json& defaults) {
  const auto file = defaultsFile(desktop);
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file) << defaults;
}

void PellowProgram::beKnown(const DesktopSession& desktop) {
  auto defaults = nlohmann::json::object();
  if (std::ifstream stored(defaultsFile(desktop)); stored) defaults = nlohmann::json::parse(stored);
  if (defaults.emplace("firstMinuteShown", true).second) writeDefaults(desktop, defaults);
}

std::filesystem::path PellowProgram::journalFile(const DesktopSession& desktop) {
  return desktop.runtimeFolder() / "pellow" / ("parked-" + desktop.display() + ".json");
}

nlohmann::json PellowProgram::journal() const {
  std::ifstream file(journalFile(desktop_));
  if (!file) return nlohmann::json::array();
  const auto stored = nlohmann::json::parse(file);
  return nlohmann::json::parse(stored.at("parkedWindows").at("data").get<std::string>());
}

int PellowProgram::timesLogged(std::string_view line) const {
  std::istringstream log(process_->standardError());
  int times = 0;
  for (std::string logged; std::getline(log, logged);) times += logged == line ? 1 : 0;
  return times;
}

}  // namespace pellow::desktop
