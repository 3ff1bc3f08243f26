#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "platforms/simulated/desktop.h"
#include "platforms/simulated/named_image.h"
#include "strips/tab_strip_controller.h"

// What one change of one tab costs while there are many, and the preview of one is to be seen: to
// decide what the strips show, and to compare it with what they show, by a platform that paints
// nothing. Processor time, so that other programs do not count.

namespace {

using namespace pellow;

constexpr int rounds = 15;
constexpr double limit = 2;  // milliseconds, with a thousand tabs
// Such tabs never shrink to fit, so the four counts differ in nothing but the count: no tab of more
// may cost more than one of ten. With the usual size, a change among a hundred resizes them all.
constexpr double smallest = StripGeometry::smallestTab;

// The program's part that draws tabs, with stores of its own.
class Bench {
 public:
  Bench(int count, double tabSize) {
    preferences_.set(preference::tabSize, tabSize);
    for (int index = 0; index < count; ++index) {
      const auto application = fmt::format("org.example.application{}", index % 40);
      TabItem tab{.id = desktop_.uuidSource().next(),
                  .window = {window_.element(), window_.pid()},
                  .appName = "Application",
                  .bundleID = application,
                  .title = fmt::format("Document {} - Application", index),
                  .icon = icon_,
                  .showsTitle = true};
      changed_ = index == count / 2 ? tab.id : changed_;
      tabs_.add(std::move(tab));
    }
    strips_.start();
    desktop_.pointer().move(desktop_.panels().panel("pellow-strip").centre(changedTab()));
    desktop_.run(1);
  }

  // Milliseconds of the median round.
  double timeForOneChange(int changesPerRound) {
    std::vector<double> times(rounds);
    for (auto& time : times) {
      const auto start = std::clock();
      for (int change = 0; change < changesPerRound; ++change) {
        tabs_.setShowsTitle(change % 2 != 0, {{changed_}});
        strips_.refresh();
      }
      time = 1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / changesPerRound;
    }
    std::ranges::sort(times);
    return times[rounds / 2];
  }

  // Whether what is drawn follows the last change.
  bool isShown() {
    const auto* const tab = desktop_.panels().panel("pellow-strip").view(changedTab());
    return tab && tab->children.size() == (tabs_.tab(changed_)->showsTitle == true ? 2 : 1) &&
           desktop_.panels().visible("pellow-preview").size() == 1;
  }

 private:
  std::string changedTab() const { return "tabs/" + changed_.text(); }

  simulated::Desktop desktop_;
  simulated::Window window_ = desktop_.launch("Application", "org.example.application")
                                  .openWindow("Document", {0, 0, 300, 200});
  Image icon_{std::make_shared<simulated::NamedImage>("icon", Size{32, 32})};
  NotificationCenter notifications_;
  Preferences preferences_{desktop_.userDefaults(), notifications_};
  ZoneStore zones_{desktop_.userDefaults(), preferences_, notifications_, desktop_.uuidSource()};
  TabStore tabs_{notifications_, desktop_.workspace()};
  TabStripController strips_{{tabs_, zones_, preferences_, desktop_.clock(),
                              desktop_.queues().main(), desktop_.screens(), desktop_.panels(),
                              desktop_.eventMonitors(), desktop_.colourPanel(),
                              desktop_.systemColours(), notifications_}};
  UUID changed_;
};

// Whether the cost stays within the limits.
bool isCheap(double tabSize) {
  fmt::print("tabs of {} points\n", tabSize);
  bool holds = true;
  double ofTen = 0;
  double before = 0;
  for (const int count : {10, 100, 1'000, 10'000}) {
    Bench bench(count, tabSize);
    const auto time = bench.timeForOneChange(std::max(20'000 / count, 2));
    fmt::print("{:6} tabs: one change {:8.3f} ms", count, time);
    if (before > 0) fmt::print(", {:.1f} times as long", time / before);
    fmt::print("\n");
    if (!bench.isShown()) fmt::print("the change is not shown\n");
    holds = holds && bench.isShown() && (count != 1'000 || time <= limit);
    if (count == 10) ofTen = time;
    holds = holds && (tabSize > smallest || time <= ofTen * count / 10);
    before = time;
  }
  return holds;
}

}  // namespace

int main() {
  const bool ofUsualSize = isCheap(preference::tabSize.registered);
  return isCheap(smallest) && ofUsualSize ? EXIT_SUCCESS : EXIT_FAILURE;
}
