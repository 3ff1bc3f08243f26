#include "platforms/simulated/screen_capture.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <ranges>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/named_image.h"

namespace pellow::simulated {
namespace {

const SystemError noPermission{"The user declined the capture of windows."};
const SystemError noSuchWindow{"The window is not on the screen."};
const SystemError noSuchDisplay{"There is no such display."};
const SystemError noSize{"A picture needs at least one pixel."};

const Colour titleBarColour{0.8, 0.8, 0.8};

std::uint32_t toPixel(const Colour& colour) {
  const auto byte = [](double component) { return static_cast<std::uint32_t>(component * 255); };
  return byte(colour.red()) << 16 | byte(colour.green()) << 8 | byte(colour.blue());
}

void paint(DisplayPicture& picture, QuartzPoint origin, const QuartzRect& rect,
           const Colour& colour) {
  const auto within = [](double place, int end) {
    return static_cast<int>(std::clamp(place, 0.0, static_cast<double>(end)));
  };
  const int left = within(rect.minX() - origin.x, picture.width);
  const int right = within(rect.maxX() - origin.x, picture.width);
  const int bottom = within(rect.maxY() - origin.y, picture.height);
  for (int y = within(rect.minY() - origin.y, picture.height); y < bottom; ++y) {
    const auto row = picture.pixels.begin() + std::ptrdiff_t{y} * picture.width;
    std::fill(row + left, row + right, toPixel(colour));
  }
}

// Takes what is wanted when its time has come and hands it over on the main queue.
template <class Result>
Subscription answerLater(System& system, CaptureCall call,
                         std::function<std::expected<Result, SystemError>()> take,
                         std::function<void(std::expected<Result, SystemError>)> onAnswer) {
  using Callback = std::function<void(std::expected<Result, SystemError>)>;
  const auto callback = std::make_shared<Callback>(std::move(onAnswer));
  const auto answer = [&system, callback](std::expected<Result, SystemError> result) {
    system.mainLoop.post([callback, result = std::move(result)] {
      // The callback may drop its own subscription.
      if (const auto wanted = *callback) wanted(result);
    });
  };
  auto fault = system.state.takeCaptureFault(call);
  const auto happen = [&system, take = std::move(take), answer, fault = std::move(fault)] {
    if (!system.state.allowsCapture) return answer(std::unexpected(noPermission));
    if (fault) return answer(std::unexpected(*fault));
    answer(take());
  };
  const auto delay = system.state.captureDelay;
  if (delay != never) system.scheduler.happenAt(system.scheduler.now() + delay, happen);
  return Subscription([callback] { *callback = nullptr; });
}

}  // namespace

// A window of an application, or without one the desktop on a display.
struct ScreenCapture::Subject final : ShareableWindow::Object {
  explicit Subject(WindowID id) : window(id) {}
  explicit Subject(std::size_t index) : display(index) {}

  std::optional<WindowID> window;
  std::size_t display = 0;
};

void ScreenCapture::requestAccess() {
  if (system_.portCall("asks for the permission to capture")) ++system_.state.captureRequests;
}

Subscription ScreenCapture::shareableWindows(OnWindows onWindows) {
  if (!system_.portCall("lists windows to capture")) return {};
  return answerLater<std::vector<ShareableWindow>>(
      system_, CaptureCall::windows, [this] { return windowsNow(); }, std::move(onWindows));
}

Subscription ScreenCapture::captureImage(const ShareableWindow& window, int pixelWidth,
                                         int pixelHeight, OnImage onImage) {
  if (!system_.portCall("captures the window \"{}\"", window.title.value_or(""))) return {};
  auto object = std::dynamic_pointer_cast<const Subject>(window.object);
  if (!object) throw std::invalid_argument("a window of no list");
  return answerLater<Image>(
      system_, CaptureCall::image,
      [this, subject = std::move(object), pixelWidth, pixelHeight] {
        return imageNow(*subject, pixelWidth, pixelHeight);
      },
      std::move(onImage));
}

Subscription ScreenCapture::captureDisplay(DisplayID display, OnDisplay onDisplay) {
  if (!system_.portCall("captures the display {}", display)) return {};
  return answerLater<DisplayPicture>(
      system_, CaptureCall::display, [this, display] { return displayNow(display); },
      std::move(onDisplay));
}

void ScreenCapture::failNext(SystemError error, std::optional<CaptureCall> call) {
  system_.state.captureFaults.push_back({call, std::move(error)});
}

std::expected<std::vector<ShareableWindow>, SystemError> ScreenCapture::windowsNow() const {
  const auto& desktop = system_.state;
  std::vector<ShareableWindow> windows;
  for (const auto& each : desktop.windows)
    if (desktop.isOnScreen(each))
      windows.push_back({.object = std::make_shared<Subject>(each.id),
                         .owner = each.pid,
                         .title = each.title,
                         .frame = each.frame});
  for (std::size_t display = 0; display < desktop.screens.size(); ++display)
    windows.push_back({.object = std::make_shared<Subject>(display),
                       .frame = desktop.flip().toQuartz(desktop.screens[display].frame)});
  return windows;
}

// None when it is not on the screen.
std::optional<QuartzRect> ScreenCapture::frameNow(const Subject& subject) const {
  const auto& desktop = system_.state;
  if (!subject.window) {
    if (subject.display >= desktop.screens.size()) return std::nullopt;
    return desktop.flip().toQuartz(desktop.screens[subject.display].frame);
  }
  const auto* const window = desktop.window(*subject.window);
  if (!window || !desktop.isOnScreen(*window)) return std::nullopt;
  return window->frame;
}

std::expected<Image, SystemError> ScreenCapture::imageNow(const Subject& subject, int pixelWidth,
                                                          int pixelHeight) const {
  if (pixelWidth < 1 || pixelHeight < 1) return std::unexpected(noSize);
  const auto frame = frameNow(subject);
  if (!frame) return std::unexpected(noSuchWindow);
  return Image(std::make_shared<NamedImage>(
      WindowPicture{.window = subject.window,
                    .title = subject.window ? system_.state.window(*subject.window)->title : "",
                    .frame = *frame,
                    .pixelWidth = pixelWidth,
                    .pixelHeight = pixelHeight,
                    .takenAt = system_.scheduler.now()}));
}

std::expected<DisplayPicture, SystemError> ScreenCapture::displayNow(DisplayID display) const {
  const auto& desktop = system_.state;
  const auto screen = std::ranges::find(desktop.screens, display, &Screen::displayID);
  if (screen == desktop.screens.end()) return std::unexpected(noSuchDisplay);
  DisplayPicture picture{.width = static_cast<int>(screen->frame.width()),
                         .height = static_cast<int>(screen->frame.height())};
  picture.pixels.resize(static_cast<std::size_t>(picture.width) *
                        static_cast<std::size_t>(picture.height));
  const auto frame = desktop.flip().toQuartz(screen->frame);
  for (const auto& window : desktop.windows | std::views::reverse) {
    if (!desktop.isVisible(window)) continue;
    auto whole = window.frame;
    whole.origin = window.paintedAt.value_or(whole.origin);
    const auto content = frameOf(WindowPart::content, whole);
    paint(picture, frame.origin, whole, titleBarColour);
    paint(picture, frame.origin, content, window.fill);
  }
  return picture;
}

const WindowPicture& windowPicture(const Image& image) {
  const auto* simulated = dynamic_cast<const NamedImage*>(&image.object());
  if (!simulated || !simulated->picture) throw std::out_of_range("no picture of a window");
  return *simulated->picture;
}

}  // namespace pellow::simulated
