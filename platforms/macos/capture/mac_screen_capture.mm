#include "platforms/macos/capture/mac_screen_capture.h"

#import <CoreGraphics/CoreGraphics.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platforms/macos/foundation/cf.h"
#include "platforms/macos/foundation/error.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/image.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

class MacShareableWindow final : public ShareableWindow::Object {
 public:
  explicit MacShareableWindow(SCWindow* shared) : window(shared) {}

  SCWindow* const window;
};

// A handler that waits for an answer, which comes on any thread; it is called and dropped on the
// main thread only.
template <class Value>
class Waiting {
 public:
  using Handler = std::function<void(std::expected<Value, SystemError>)>;

  explicit Waiting(Handler handler) : handler_(std::make_shared<Handler>(std::move(handler))) {}

  Subscription subscription() const {
    return Subscription([handler = handler_] { *handler = nullptr; });
  }

  // `answer` is made on the main queue, and only if somebody still waits.
  void answer(std::function<std::expected<Value, SystemError>()> make) const {
    hopToMain([waiting = handler_, make = std::move(make)] {
      if (const auto handler = std::exchange(*waiting, nullptr)) handler(make());
    });
  }

 private:
  std::shared_ptr<Handler> handler_;
};

ShareableWindow toShareableWindow(SCWindow* window) {
  ShareableWindow shareable{.object = std::make_shared<MacShareableWindow>(window),
                            .frame = toQuartzRect(window.frame)};
  if (SCRunningApplication* const owner = window.owningApplication)
    shareable.owner = owner.processID;
  if (NSString* const title = window.title) shareable.title = toText(title);
  return shareable;
}

std::vector<ShareableWindow> toShareableWindows(NSArray<SCWindow*>* windows) {
  std::vector<ShareableWindow> all;
  for (SCWindow* window in windows) all.push_back(toShareableWindow(window));
  return all;
}

SCStreamConfiguration* configuration(int pixelWidth, int pixelHeight) {
  SCStreamConfiguration* const configuration = [[SCStreamConfiguration alloc] init];
  configuration.width = static_cast<std::size_t>(std::max(pixelWidth, 1));
  configuration.height = static_cast<std::size_t>(std::max(pixelHeight, 1));
  configuration.scalesToFit = YES;
  configuration.showsCursor = NO;
  configuration.ignoreShadowsSingleWindow = YES;
  configuration.ignoreGlobalClipSingleWindow = YES;
  return configuration;
}

}  // namespace

bool MacScreenCapture::preflightAccess() const { return CGPreflightScreenCaptureAccess(); }

void MacScreenCapture::requestAccess() { CGRequestScreenCaptureAccess(); }

Subscription MacScreenCapture::shareableWindows(OnWindows onWindows) {
  using Outcome = std::expected<std::vector<ShareableWindow>, SystemError>;
  const Waiting<std::vector<ShareableWindow>> waiting(std::move(onWindows));
  [SCShareableContent
      getShareableContentExcludingDesktopWindows:NO
                             onScreenWindowsOnly:YES
                               completionHandler:^(SCShareableContent* content, NSError* error) {
                                 waiting.answer([content, error]() -> Outcome {
                                   if (!content) return std::unexpected(toSystemError(error));
                                   return toShareableWindows(content.windows);
                                 });
                               }];
  return waiting.subscription();
}

// The picture is the system's only while the handler runs.
Subscription MacScreenCapture::captureImage(const ShareableWindow& window, int pixelWidth,
                                            int pixelHeight, OnImage onImage) {
  using Outcome = std::expected<Image, SystemError>;
  const Waiting<Image> waiting(std::move(onImage));
  const auto size = window.frame.size;
  SCWindow* const shared = static_cast<const MacShareableWindow&>(*window.object).window;
  [SCScreenshotManager
      captureImageWithFilter:[[SCContentFilter alloc] initWithDesktopIndependentWindow:shared]
               configuration:configuration(pixelWidth, pixelHeight)
           completionHandler:^(CGImageRef picture, NSError* error) {
             const auto kept = CFOwner<CGImageRef>::retain(picture);
             waiting.answer([kept, size, error]() -> Outcome {
               if (!kept) return std::unexpected(toSystemError(error));
               return Image(std::make_shared<MacImage>(kept.get(), size));
             });
           }];
  return waiting.subscription();
}

}  // namespace pellow
