#include "platforms/linux/linux_platform.h"

#include <fmt/format.h>
#include <xcb/xcb.h>

#include <QApplication>
#include <QSocketNotifier>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <functional>
#include <string_view>
#include <utility>

#include "platforms/linux/desktop_shortcuts/desktop_shortcuts.h"
#include "platforms/linux/qt/display_scale.h"
#include "platforms/linux/qt/local_key_filter.h"
#include "platforms/linux/qt/picture_source.h"
#include "platforms/linux/qt/qt_alerts.h"
#include "platforms/linux/qt/qt_colour_panel.h"
#include "platforms/linux/qt/qt_display.h"
#include "platforms/linux/qt/qt_form_windows.h"
#include "platforms/linux/qt/qt_panels.h"
#include "platforms/linux/qt/qt_probe_windows.h"
#include "platforms/linux/qt/qt_process.h"
#include "platforms/linux/qt/qt_status_bar.h"
#include "platforms/linux/qt/qt_system_colours.h"
#include "platforms/linux/system/autostart_entry.h"
#include "platforms/linux/system/environment.h"
#include "platforms/linux/system/file_user_defaults.h"
#include "platforms/linux/system/monotonic_clock.h"
#include "platforms/linux/system/pollable_main_queue.h"
#include "platforms/linux/system/random_uuid_source.h"
#include "platforms/linux/system/thread_serial_queue.h"
#include "platforms/linux/system/user_folders.h"
#include "platforms/linux/updates/feed_updates.h"
#include "platforms/linux/x11/display_name.h"
#include "platforms/linux/x11/x11_desktop.h"
#include "platforms/posix/posix_files.h"

namespace pellow {
namespace {

// A predecessor brings all its windows back before it ends; each application may use up its
// messaging timeout.
constexpr Seconds predecessorPatience = 60;

class LinuxQueues final : public Queues {
 public:
  PollableMainQueue& main() override { return main_; }
  std::unique_ptr<SerialQueue> makeSerialQueue(std::string label) override {
    return std::make_unique<ThreadSerialQueue>(label);
  }

 private:
  PollableMainQueue main_;
};

FeedUpdates::Build thisBuild() { return {.version = PELLOW_VERSION, .feed = PELLOW_UPDATE_FEED}; }

Seconds secondsSince1970() {
  return std::chrono::duration<Seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::unique_ptr<QSocketNotifier> watch(int fileDescriptor, std::function<void()> onReadable) {
  auto notifier = std::make_unique<QSocketNotifier>(fileDescriptor, QSocketNotifier::Read);
  QObject::connect(notifier.get(), &QSocketNotifier::activated, std::move(onReadable));
  return notifier;
}

bool mayHaveKeyboard(const QWindow& window) {
  return window.handle() && window.isVisible() &&
         !window.flags().testFlag(Qt::WindowDoesNotAcceptFocus);
}

// Qt learns a little late that one of its windows, an alert for example, has got or lost the
// keyboard; a key pressed in between would go to both chains, or to none. So the server says which.
bool ownWindowHasKeyboard(std::uint32_t focus) {
  if (QApplication::activePopupWidget()) return true;
  auto windows = QGuiApplication::allWindows();
  windows.removeIf([](const QWindow* window) { return !mayHaveKeyboard(*window); });
  return std::ranges::any_of(windows,
                             [&](const QWindow* window) { return window->winId() == focus; });
}

std::expected<void, SystemError> claimDisplay(LinuxPlatform::Claim claim, X11Desktop& desktop) {
  switch (claim) {
    case LinuxPlatform::Claim::now:
      return desktop.claimInstance();
    case LinuxPlatform::Claim::afterPredecessorEnds:
      return desktop.waitForInstance(predecessorPatience);
    case LinuxPlatform::Claim::none:
      return {};
  }
  return {};
}

X11Desktop::Hooks desktopHooks() {
  return {.loadIcon = [](const std::string& name) { return ThemeIcon::load(name); },
          .ownWindowHasKeyboard = ownWindowHasKeyboard,
          .shortcuts = desktopShortcuts};
}

}  // namespace

struct LinuxPlatform::Parts {
  const Log& log;
  MonotonicClock clock;
  RandomUUIDSource uuidSource;
  PosixFiles files{homeFolder(), temporaryFolder()};
  QtFormWindows formWindows;
  QtProbeWindows probeWindows;
  QtColourPanel colourPanel;
  QtSystemColours systemColours;
  AutostartEntry loginItem = AutostartEntry::ofEnvironment();
  LinuxQueues queues;
  std::unique_ptr<X11Desktop> desktop;
  QtStatusBar statusBar{[this] { return desktop->panels(); }};
  std::unique_ptr<ScreenCapture> screenCapture;
  FileUserDefaults userDefaults;
  QtProcess process;
  QtAlerts alerts;
  FeedUpdates updates;
  QtPanels panels;
  LocalKeyFilter localKeys;
  DisplayScale scale;
  std::unique_ptr<QSocketNotifier> workHasCome;
  std::unique_ptr<QSocketNotifier> signalHasCome;
  std::unique_ptr<QSocketNotifier> displayHasEvents;

  Parts(std::unique_ptr<X11Desktop> openDesktop, const Log& systemLog, TerminationSignals& signals)
      : log(systemLog),
        desktop(std::move(openDesktop)),
        screenCapture(desktop->makeScreenCapture(queues)),
        userDefaults(FileUserDefaults::standardFiles(canonicalDisplayName("")), log),
        process(signals, [this] { userDefaults.finish(); }),
        alerts(queues.main()),
        updates(thisBuild(), {.defaults = userDefaults,
                              .queue = queues.main(),
                              .alerts = alerts,
                              .workspace = desktop->workspace(),
                              .log = log,
                              .now = secondsSince1970}),
        panels(queues.main(),
               {.toPixels = [this](const AppKitRect& rect) { return desktop->toPixels(rect); },
                .stretchesDocks = [this] { return desktop->stretchesDocks(); },
                .serverAnswers = [this] { return desktop->serverAnswers(); }}),
        localKeys([this](std::uint8_t keycode, std::uint16_t state) {
          return desktop->deliverLocalKeyDown(keycode, state);
        }),
        scale([this](double pixelsPerPoint) {
          desktop->setScale(pixelsPerPoint);
          panels.placeAnew();
        }),
        workHasCome(watch(queues.main().fileDescriptor(), [this] { queues.main().runPending(); })),
        signalHasCome(watch(signals.fileDescriptor(), [&signals] { signals.processPending(); })),
        displayHasEvents(watch(desktop->fileDescriptor(), [this] { processDisplayEvents(); })) {}

  void processDisplayEvents() {
    if (desktop->processEvents()) return;
    log.error("{}", desktop->connectionError().sentence);
    process.exit(1);
  }
};

std::optional<SystemError> LinuxPlatform::whyNoDisplay() {
  const auto name = environment("DISPLAY");
  if (name.empty() && !environment("WAYLAND_DISPLAY").empty())
    return SystemError{
        "This is a Wayland session without an X display, and Pellow can only reach windows on X: "
        "enable Xwayland, or log in to an X11 session."};
  if (name.empty())
    return SystemError{
        "There is no display: start Pellow inside a desktop session, or set DISPLAY."};
  auto* const connection = xcb_connect(nullptr, nullptr);
  const bool failed = xcb_connection_has_error(connection) != 0;
  xcb_disconnect(connection);
  if (!failed) return std::nullopt;
  return SystemError{fmt::format(
      "The display \"{}\" cannot be opened: check that it runs and that DISPLAY and XAUTHORITY are "
      "those of the desktop session.",
      name)};
}

std::expected<std::unique_ptr<LinuxPlatform>, SystemError> LinuxPlatform::open(
    Claim claim, const Log& log, TerminationSignals& signals) {
  auto desktop = X11Desktop::open("", DisplayScale::now(), desktopHooks(), log);
  if (!desktop) return std::unexpected(desktop.error());
  // Before the user defaults are read: a predecessor writes them until it ends.
  if (const auto claimed = claimDisplay(claim, **desktop); !claimed)
    return std::unexpected(claimed.error());
  return std::unique_ptr<LinuxPlatform>(
      new LinuxPlatform(std::make_unique<Parts>(std::move(*desktop), log, signals)));
}

LinuxPlatform::LinuxPlatform(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
LinuxPlatform::~LinuxPlatform() = default;

void LinuxPlatform::setPatient(bool isPatient) { parts_->desktop->setPatient(isPatient); }

Accessibility& LinuxPlatform::accessibility() { return parts_->desktop->accessibility(); }
Alerts& LinuxPlatform::alerts() { return parts_->alerts; }
Clock& LinuxPlatform::clock() { return parts_->clock; }
ColourPanel& LinuxPlatform::colourPanel() { return parts_->colourPanel; }
EventMonitors& LinuxPlatform::eventMonitors() { return parts_->desktop->eventMonitors(); }
Files& LinuxPlatform::files() { return parts_->files; }
FormWindows& LinuxPlatform::formWindows() { return parts_->formWindows; }
const Log& LinuxPlatform::log() { return parts_->log; }
LoginItem& LinuxPlatform::loginItem() { return parts_->loginItem; }
Panels& LinuxPlatform::panels() { return parts_->panels; }
ProbeWindows& LinuxPlatform::probeWindows() { return parts_->probeWindows; }
Process& LinuxPlatform::process() { return parts_->process; }
Queues& LinuxPlatform::queues() { return parts_->queues; }
ScreenCapture& LinuxPlatform::screenCapture() { return *parts_->screenCapture; }
Screens& LinuxPlatform::screens() { return parts_->desktop->screens(); }
StatusBar& LinuxPlatform::statusBar() { return parts_->statusBar; }
SymbolicHotKeys& LinuxPlatform::symbolicHotKeys() { return parts_->desktop->symbolicHotKeys(); }
SystemColours& LinuxPlatform::systemColours() { return parts_->systemColours; }
UpdateFramework& LinuxPlatform::updateFramework() { return parts_->updates; }
UserDefaults& LinuxPlatform::userDefaults() { return parts_->userDefaults; }
UUIDSource& LinuxPlatform::uuidSource() { return parts_->uuidSource; }
Workspace& LinuxPlatform::workspace() { return parts_->desktop->workspace(); }

}  // namespace pellow
