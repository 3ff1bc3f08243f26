#include "platforms/simulated/screen_capture.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/named_image.h"

namespace pellow::simulated {
namespace {

// Numbers that cannot be taken for those of elements.
constexpr std::uint32_t firstDesktopNumber = 10;
constexpr std::uint32_t firstWindowNumber = 5000;

const SystemError noPermission{"The user declined the capture of windows."};
const SystemError noSuchWindow{"The window is not on the screen."};
const SystemError noSize{"A picture needs at least one pixel."};

ShareableWindow asShared(const WindowState& window) {
  return {.windowID = firstWindowNumber + static_cast<std::uint32_t>(window.id),
          .owner = window.pid,
          .title = window.title,
          .frame = window.frame};
}

std::optional<WindowID> windowNumbered(std::uint32_t number) {
  if (number < firstWindowNumber) return std::nullopt;
  return static_cast<WindowID>(number - firstWindowNumber);
}

// Takes the result when its time has come and hands it over on the main queue.
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
  if (!system_.portCall("captures window {}", window.windowID)) return {};
  return answerLater<Image>(
      system_, CaptureCall::image,
      [this, number = window.windowID, pixelWidth, pixelHeight] {
        return imageNow(number, pixelWidth, pixelHeight);
      },
      std::move(onImage));
}

void ScreenCapture::failNext(SystemError error, std::optional<CaptureCall> call) {
  system_.state.captureFaults.push_back({call, std::move(error)});
}

std::expected<std::vector<ShareableWindow>, SystemError> ScreenCapture::windowsNow() const {
  const auto& desktop = system_.state;
  std::vector<ShareableWindow> windows;
  for (const auto& each : desktop.windows)
    if (desktop.isOnScreen(each)) windows.push_back(asShared(each));
  auto number = firstDesktopNumber;
  for (const auto& screen : desktop.screens)
    windows.push_back({.windowID = number++, .frame = desktop.flip().toQuartz(screen.frame)});
  return windows;
}

std::expected<Image, SystemError> ScreenCapture::imageNow(std::uint32_t windowID, int pixelWidth,
                                                          int pixelHeight) const {
  if (pixelWidth < 1 || pixelHeight < 1) return std::unexpected(noSize);
  const auto windows = *windowsNow();
  const auto found = std::ranges::find(windows, windowID, &ShareableWindow::windowID);
  if (found == windows.end()) return std::unexpected(noSuchWindow);
  const auto window = windowNumbered(windowID);
  return Image(std::make_shared<NamedImage>(
      WindowPicture{.window = window,
                    .title = window ? system_.state.window(*window)->title : "",
                    .frame = found->frame,
                    .pixelWidth = pixelWidth,
                    .pixelHeight = pixelHeight,
                    .takenAt = system_.scheduler.now()}));
}

const WindowPicture& windowPicture(const Image& image) {
  const auto* simulated = dynamic_cast<const NamedImage*>(&image.object());
  if (!simulated || !simulated->picture) throw std::out_of_range("no picture of a window");
  return *simulated->picture;
}

}  // namespace pellow::simulated
