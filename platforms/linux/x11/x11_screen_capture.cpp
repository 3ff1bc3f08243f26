#include "platforms/linux/x11/x11_screen_capture.h"

#include <algorithm>
#include <ranges>
#include <utility>

#include "platforms/linux/x11/pixel_image.h"
#include "platforms/linux/x11/windows_on_screen.h"

namespace pellow {

namespace {

constexpr int largestSide = 1 << 14;  // pixels

}  // namespace

// A question on its way to the queue and back. Main thread, but for the answer, which is the work's
// until the work is over.
struct X11ScreenCapture::Request {
  std::atomic<bool> isWanted = true;

  // They end in reverse order: first the work, which then writes `wayBack` no more.
  Subscription wayBack;
  Subscription work;
};

template <class Answer>
struct X11ScreenCapture::RequestFor : Request {
  std::function<void(Answer)> onAnswer;
  std::optional<Answer> answer;
};

X11ScreenCapture::X11ScreenCapture(X11Server& server, Queues& queues)
    : server_(server), queues_(queues) {}

X11ScreenCapture::~X11ScreenCapture() {
  for (const auto& request : requests_) request->isWanted = false;
  queue_.reset();  // before what its work uses
}

bool X11ScreenCapture::preflightAccess() const {
  return WindowPhotographer::isPossible(server_.connection());
}

template <class Answer>
Subscription X11ScreenCapture::ask(std::function<Answer()> question,
                                   std::function<void(Answer)> onAnswer) {
  if (!queue_) queue_ = queues_.makeSerialQueue("com.velloway.pellow.capture");
  const auto request = std::make_shared<RequestFor<Answer>>();
  request->onAnswer = std::move(onAnswer);
  requests_.push_back(request);
  auto* const raw = request.get();
  request->work = queue_->async([this, raw, question = std::move(question)] {
    if (raw->isWanted) raw->answer = question();
    raw->wayBack = queues_.main().async([this, raw] {
      raw->work.cancel();
      const auto found = std::ranges::find(requests_, raw, &std::shared_ptr<Request>::get);
      const auto held = std::move(*found);
      requests_.erase(found);
      if (const auto answer = std::exchange(raw->onAnswer, nullptr); answer && raw->answer)
        answer(std::move(*raw->answer));
    });
  });
  return Subscription([weak = std::weak_ptr(request)] {
    const auto held = weak.lock();
    if (!held) return;
    held->isWanted = false;
    held->onAnswer = nullptr;
  });
}

Subscription X11ScreenCapture::shareableWindows(OnWindows onWindows) {
  return ask<std::expected<std::vector<ShareableWindow>, SystemError>>(
      [this] { return listWindows(); }, std::move(onWindows));
}

Subscription X11ScreenCapture::captureImage(const ShareableWindow& window, int pixelWidth,
                                            int pixelHeight, OnImage onImage) {
  const PixelSize size{std::clamp(pixelWidth, 1, largestSide),
                       std::clamp(pixelHeight, 1, largestSide)};
  return ask<std::expected<Image, SystemError>>(
      [this, id = dynamic_cast<const X11ShareableWindow&>(*window.object).window, size] {
        return takePicture(id, size);
      },
      std::move(onImage));
}

Subscription X11ScreenCapture::captureDisplay(DisplayID display, OnDisplay onDisplay) {
  return ask<std::expected<DisplayPicture, SystemError>>(
      [this, display] { return takePictureOf(display); }, std::move(onDisplay));
}

std::expected<std::vector<ShareableWindow>, SystemError> X11ScreenCapture::listWindows() {
  const Deadline deadline = deadlineIn(serverPatience);
  const auto shown = windowsOnScreen(server_, Facet::frame | Facet::title, deadline);
  if (server_.connection().isLost())
    return std::unexpected(SystemError{"The connection to the X server is lost."});
  const auto layout = server_.layout();
  std::vector<ShareableWindow> windows;
  for (const auto& [window, owner] : shown)
    windows.push_back({.object = std::make_shared<X11ShareableWindow>(window.window),
                       .owner = owner == 0 ? std::nullopt : std::optional(owner),
                       .title = window.title.empty() ? std::nullopt : std::optional(window.title),
                       .frame = layout.toQuartz(window.frame)});
  return windows;
}

std::expected<Image, SystemError> X11ScreenCapture::takePicture(xcb_window_t window,
                                                                PixelSize size) {
  if (!photographer_) photographer_.emplace(server_);
  const auto picture = photographer_->photograph(window);
  if (!picture) return std::unexpected(picture.error());
  const auto scale = server_.layout().scale;
  return Image(std::make_shared<PixelImage>(
      size.width, size.height, withoutPremultiplication(scaled(*picture, size)),
      Size{picture->size.width / scale, picture->size.height / scale}));
}

// The root window shows what the compositor paints, if there is one, and else the windows.
std::expected<DisplayPicture, SystemError> X11ScreenCapture::takePictureOf(DisplayID display) {
  const auto layout = server_.layout();
  const auto monitor =
      std::ranges::find(layout.monitors, display, &ScreenLayout::Monitor::displayID);
  if (monitor == layout.monitors.end())
    return std::unexpected(SystemError{"The display is not connected."});
  auto& connection = server_.connection();
  DrawableReader reader(connection);
  const auto depth = connection.screen().root_depth;
  if (!reader.canRead(depth))
    return std::unexpected(
        SystemError{"A screen without 24 bits of colour cannot be photographed."});
  const auto shown =
      reader.read(connection.root(), depth, monitor->frame, deadlineIn(serverPatience));
  if (!shown) return std::unexpected(SystemError{"The X server refused to show the screen."});
  const auto size = layout.screen(*monitor).frame.size;
  DisplayPicture picture{.width = static_cast<int>(size.width),
                         .height = static_cast<int>(size.height)};
  picture.pixels = scaled(*shown, {picture.width, picture.height}).values;
  for (auto& pixel : picture.pixels) pixel &= 0xffffff;
  return picture;
}

}  // namespace pellow
