#include "platforms/macos/capture/mac_screen_capture.h"

#import <CoreGraphics/CoreGraphics.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
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

  // `work` runs on the main queue, and only if somebody still waits.
  void goOn(std::function<void()> work) const {
    hopToMain([waiting = handler_, work = std::move(work)] {
      if (*waiting) work();
    });
  }

  // `make` makes the answer, under the same conditions.
  void answer(std::function<std::expected<Value, SystemError>()> make) const {
    goOn(
        [waiting = handler_, make = std::move(make)] { std::exchange(*waiting, nullptr)(make()); });
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

using DisplayOutcome = std::expected<DisplayPicture, SystemError>;

DisplayOutcome toDisplayPicture(CGImageRef bitmap, int width, int height) {
  constexpr std::size_t bytesPerPixel = 4;
  constexpr std::uint32_t rgb = 0xffffff;
  const auto columns = static_cast<std::size_t>(width);
  const auto rows = static_cast<std::size_t>(height);
  DisplayPicture picture{.width = width, .height = height};
  picture.pixels.resize(columns * rows);
  const auto colours =
      CFOwner<CGColorSpaceRef>::adopt(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
  const auto context = CFOwner<CGContextRef>::adopt(CGBitmapContextCreate(
      picture.pixels.data(), columns, rows, 8, bytesPerPixel * columns, colours.get(),
      static_cast<CGBitmapInfo>(kCGImageAlphaNoneSkipFirst) | kCGBitmapByteOrder32Little));
  if (!context)
    return std::unexpected(SystemError{"The system cannot read the picture of the display."});
  CGContextDrawImage(context.get(), CGRectMake(0, 0, width, height), bitmap);
  for (auto& pixel : picture.pixels) pixel &= rgb;
  return picture;
}

SCDisplay* find(DisplayID display, NSArray<SCDisplay*>* displays) {
  for (SCDisplay* each in displays)
    if (each.displayID == display) return each;
  return nil;
}

// ScreenCaptureKit gives a display's size in points. The picture is the system's only while the
// handler runs.
void capture(SCDisplay* display, Waiting<DisplayPicture> waiting) {
  const auto width = static_cast<int>(display.width);
  const auto height = static_cast<int>(display.height);
  [SCScreenshotManager captureImageWithFilter:[[SCContentFilter alloc] initWithDisplay:display
                                                                      excludingWindows:@[]]
                                configuration:configuration(width, height)
                            completionHandler:^(CGImageRef bitmap, NSError* error) {
                              const auto kept = CFOwner<CGImageRef>::retain(bitmap);
                              waiting.answer([kept, width, height, error]() -> DisplayOutcome {
                                if (!kept) return std::unexpected(toSystemError(error));
                                return toDisplayPicture(kept.get(), width, height);
                              });
                            }];
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

Subscription MacScreenCapture::captureDisplay(DisplayID display, OnDisplay onDisplay) {
  const Waiting<DisplayPicture> waiting(std::move(onDisplay));
  const auto onContent = [waiting, display](SCShareableContent* content, NSError* error) {
    if (!content)
      return waiting.answer(
          [error] { return DisplayOutcome(std::unexpect, toSystemError(error)); });
    if (SCDisplay* const found = find(display, content.displays)) return capture(found, waiting);
    waiting.answer(
        [] { return DisplayOutcome(std::unexpect, SystemError{"The display is not connected."}); });
  };
  [SCShareableContent
      getShareableContentWithCompletionHandler:^(SCShareableContent* content, NSError* error) {
        waiting.goOn([onContent, content, error] { onContent(content, error); });
      }];
  return waiting.subscription();
}

}  // namespace pellow
