#include <unistd.h>
#include <xcb/composite.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>

#include "platforms/linux/system/pollable_main_queue.h"
#include "platforms/linux/system/thread_serial_queue.h"
#include "platforms/linux/x11/pixel_image.h"
#include "platforms/linux/x11/pixels.h"
#include "platforms/linux/x11/x11_screen_capture.h"
#include "tests/linux/painted_window.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

constexpr std::uint32_t red = 0xc02010;
constexpr std::uint32_t blue = 0x1040d0;
constexpr std::uint32_t green = 0x20a040;
constexpr std::uint32_t opaque = 0xff000000;
constexpr PaintedWindow::Looks framed{.left = red, .right = blue};
constexpr PaintedWindow::Looks bare{.left = red, .right = blue, .isManaged = false};
constexpr PaintedWindow::Looks cover{.left = green, .right = green, .isManaged = false};

struct ThreadQueues final : Queues {
  PollableMainQueue& main() override { return main_; }
  std::unique_ptr<SerialQueue> makeSerialQueue(std::string label) override {
    return std::make_unique<ThreadSerialQueue>(label);
  }

  PollableMainQueue main_;
};

class ScreenCaptureTest : public X11DesktopTest {
 protected:
  using Answer = std::expected<Image, SystemError>;
  using Windows = std::vector<ShareableWindow>;

  ScreenCaptureTest() { restart(1); }

  void restart(double scale) {
    capture.reset();
    x11 = open(desktop.display(), scale).value();
    capture = x11->makeScreenCapture(queues);
  }

  bool untilAnswered(const std::function<bool()>& holds) {
    return eventually([&] {
      queues.main().runPending();
      return holds();
    });
  }

  Windows list() {
    std::optional<Windows> found;
    const auto request =
        capture->shareableWindows([&](auto windows) { found = std::move(windows.value()); });
    EXPECT_TRUE(untilAnswered([&] { return found.has_value(); }));
    return found.value_or(Windows{});
  }

  static ShareableWindow shareable(WindowID window) {
    return {.object = std::make_shared<X11ShareableWindow>(window)};
  }
  static WindowID idOf(const ShareableWindow& window) {
    return dynamic_cast<const X11ShareableWindow&>(*window.object).window;
  }

  Answer picture(WindowID window) { return picture(window, desktop.frame(window)); }
  Answer picture(WindowID window, PixelRect size) {
    std::optional<Answer> answer;
    const auto request =
        capture->captureImage(shareable(window), size.width, size.height,
                              [&](Answer image) { answer.emplace(std::move(image)); });
    EXPECT_TRUE(untilAnswered([&] { return answer.has_value(); }));
    return *answer;
  }
  static const PixelImage& pixels(const Answer& answer) {
    if (!answer) throw std::runtime_error(answer.error().sentence);
    return dynamic_cast<const PixelImage&>(answer.value().object());
  }
  static std::uint32_t pixel(const Answer& answer, int x, int y) {
    const auto& image = pixels(answer);
    return image.pixels().at(std::size_t(y) * image.width() + x);
  }
  static bool areSame(const Answer& a, const Answer& b) {
    return pixels(a).pixels() == pixels(b).pixels();
  }

  ThreadQueues queues;
  std::unique_ptr<ScreenCapture> capture;
};

TEST_F(ScreenCaptureTest, TellsOfTheWindowsOnTheScreen) {
  EXPECT_TRUE(capture->preflightAccess());
  const auto back = client.open("Back", {100, 100, 300, 200});
  const auto shadowed = client.openWithShadow("Shadow", {500, 100, 300, 200});
  const auto away = client.open("Away", {300, 300, 300, 200});
  desktop.iconify(away);
  ASSERT_TRUE(eventually([&] { return !desktop.isShown(away); }));
  const auto dock = client.openDock({0, 0, 1280, 24});
  const PaintedWindow own(desktop, {700, 400, 200, 150}, framed);

  const auto windows = list();
  const auto find = [&](WindowID id) {
    return std::ranges::find(windows, id, &ScreenCaptureTest::idOf);
  };
  ASSERT_EQ(windows.size(), 4u);
  EXPECT_EQ(find(shadowed)->frame, QuartzRect(500, 100, 300, 200));
  EXPECT_EQ(find(own.id())->owner, getpid());
  EXPECT_EQ(find(own.id())->title, std::nullopt);
  EXPECT_NE(find(dock), windows.end());
  // The front one first.
  EXPECT_LT(find(own.id()), find(shadowed));
  EXPECT_LT(find(shadowed), find(back));
}

TEST_F(ScreenCaptureTest, ShowsAWindowWholeWhateverCoversIt) {
  const PaintedWindow window(desktop, {200, 150, 400, 300}, framed);
  const auto frame = desktop.frame(window.id());
  const auto content = desktop.content(window.id());
  ASSERT_GT(content.y, frame.y);
  desktop.movePointer(content.x + 50, content.y + 50);
  // Its title bar changes its colours once more when it gets the focus.
  ASSERT_TRUE(eventually([&] { return desktop.activeWindow() == window.id(); }));
  const auto inSight = picture(window.id());
  EXPECT_EQ(inSight->size(), (Size{double(frame.width), double(frame.height)}));
  const int left = content.x - frame.x;
  const int top = content.y - frame.y;
  EXPECT_EQ(pixel(inSight, left, top), opaque | red);
  EXPECT_EQ(pixel(inSight, left + 199, top + 299), opaque | red);
  EXPECT_EQ(pixel(inSight, left + 200, top), opaque | blue);
  const auto screen = desktop.picture(frame);
  EXPECT_EQ(pixel(inSight, frame.width / 2, 5), opaque | screen.at(frame.width / 2, 5));

  {
    const PaintedWindow above(desktop, {100, 100, 300, 250}, cover);
    EXPECT_TRUE(areSame(picture(window.id()), inSight));
    EXPECT_EQ(desktop.picture({250, 200, 100, 100}).count(green), 100 * 100);
  }
  const auto element = windows(*x11, getpid()).front();
  for (const QuartzPoint beyond : {QuartzPoint{1100, 150}, QuartzPoint{200, -90}}) {
    move(element, beyond.x, beyond.y);
    EXPECT_TRUE(areSame(picture(window.id()), inSight));
  }
  // Nothing set up for the picture remains: the screen shows the window again.
  move(element, frame.x, frame.y);
  EXPECT_TRUE(eventually([&] { return desktop.picture(frame).pixels == screen.pixels; }));
}

TEST_F(ScreenCaptureTest, ShowsShadowlessFramesShapesAndAlpha) {
  const auto shadowed = client.openWithShadow("Shadow", {100, 100, 300, 200});
  const auto image = picture(shadowed);
  EXPECT_EQ(image->size(), (Size{300, 200}));
  EXPECT_EQ(pixel(image, 0, 0), opaque | TestClient::colourOf(shadowed));

  PaintedWindow round(desktop, {500, 100, 200, 100}, bare);
  round.shape({20, 10, 100, 90});
  const auto shaped = picture(round.id());
  EXPECT_EQ(pixel(shaped, 19, 9), 0u);
  EXPECT_EQ(pixel(shaped, 20, 10), opaque | red);
  EXPECT_EQ(pixel(shaped, 119, 99), opaque | blue);
  EXPECT_EQ(pixel(shaped, 120, 50), 0u);

  PaintedWindow::Looks looks{.left = 0x80400000, .right = 0, .hasAlpha = true};
  const PaintedWindow managed(desktop, {100, 400, 200, 100}, looks);
  looks.isManaged = false;
  const PaintedWindow unmanaged(desktop, {500, 400, 200, 100}, looks);
  for (const auto window : {managed.id(), unmanaged.id()}) {
    const auto frame = desktop.frame(window);
    const auto content = desktop.content(window);
    const auto glass = picture(window);
    EXPECT_EQ(pixel(glass, content.x - frame.x, content.y - frame.y), 0x80800000);
    EXPECT_EQ(pixel(glass, content.x - frame.x + 150, content.y - frame.y + 50), 0u);
  }
}

TEST_F(ScreenCaptureTest, SaysWhenAWindowCannotBeShown) {
  PaintedWindow frozen(desktop, {200, 150, 300, 200}, bare);
  const PaintedWindow above(desktop, {100, 100, 200, 200}, cover);
  frozen.insteadOfDrawing([] {});
  constexpr PixelRect size{0, 0, 300, 200};
  EXPECT_EQ(picture(frozen.id(), size).error().sentence,
            "The window is covered, and its application has not drawn it anew in time.");
  // It dies when it is told to draw itself for the picture.
  frozen.insteadOfDrawing([&] { frozen.destroy(); });
  EXPECT_EQ(picture(frozen.id(), size).error().sentence, "The window is gone.");
  EXPECT_EQ(picture(frozen.id(), size).error().sentence, "The window is gone.");

  const auto window = client.open("Away", {300, 300, 300, 200});
  desktop.iconify(window);
  ASSERT_TRUE(eventually([&] { return !desktop.isShown(window); }));
  EXPECT_EQ(picture(window, size).error().sentence, "The window is not on the screen.");
}

TEST_F(ScreenCaptureTest, TakesWhatACompositingManagerHasAtOnce) {
  const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> compositor(
      xcb_connect(desktop.display().c_str(), nullptr), xcb_disconnect);
  const auto root = xcb_setup_roots_iterator(xcb_get_setup(compositor.get())).data->root;
  xcb_composite_query_version(compositor.get(), 0, 4);
  xcb_composite_redirect_subwindows(compositor.get(), root, XCB_COMPOSITE_REDIRECT_MANUAL);
  xcb_flush(compositor.get());

  PaintedWindow frozen(desktop, {200, 150, 300, 200}, framed);
  auto inSight = picture(frozen.id());
  // The window manager repaints the frame when it gives the window the keyboard.
  ASSERT_TRUE(eventually([&] {
    const bool isActive = desktop.activeWindow() == frozen.id();
    const auto before = std::exchange(inSight, picture(frozen.id()));
    return isActive && areSame(before, inSight);
  }));
  frozen.insteadOfDrawing([] { ADD_FAILURE() << "made to draw itself"; });
  const PaintedWindow above(desktop, {100, 100, 200, 200}, cover);
  EXPECT_TRUE(areSame(picture(frozen.id()), inSight));
  EXPECT_EQ(pixel(inSight, 150, 100), opaque | red);
}

TEST_F(ScreenCaptureTest, AnswersManyInOrderAndDropsWhatNobodyWants) {
  std::vector<std::unique_ptr<PaintedWindow>> windows;
  for (int i = 0; i < 6; ++i)
    windows.push_back(std::make_unique<PaintedWindow>(
        desktop, PixelRect{100 + 20 * i, 100 + 20 * i, 200, 100},
        PaintedWindow::Looks{.left = red + i, .right = blue, .isManaged = false}));
  std::vector<std::uint32_t> seen;
  std::vector<Subscription> requests;
  for (const auto& window : windows)
    requests.push_back(capture->captureImage(shareable(window->id()), 200, 100, [&](Answer image) {
      seen.push_back(pixel(image, 10, 10));
      requests[3].cancel();
      if (seen.size() == 1) requests[0].cancel();  // the one under way
    }));
  requests[1].cancel();
  EXPECT_TRUE(untilAnswered([&] { return seen.size() == 4; }));
  EXPECT_EQ(seen, (std::vector{opaque | red, opaque | (red + 2), opaque | (red + 4),
                               opaque | (red + 5)}));
  // It is destroyed in the middle of one, with others waiting.
  for (const auto& window : windows)
    requests.push_back(capture->captureImage(shareable(window->id()), 200, 100,
                                             [](const Answer&) { ADD_FAILURE(); }));
  capture.reset();
  queues.main().runPending();
}

TEST_F(ScreenCaptureTest, MeasuresInPoints) {
  restart(2);
  const PaintedWindow window(desktop, {200, 150, 301, 200}, bare);
  const auto image = picture(window.id(), {0, 0, 150, 100});
  EXPECT_EQ(image->size(), (Size{150.5, 100}));
  EXPECT_EQ(pixels(image).width(), 150);
  EXPECT_EQ(pixel(image, 10, 50), opaque | red);
  EXPECT_EQ(pixel(image, 140, 50), opaque | blue);
}

TEST(Pixels, ShrinkToTheAverageOfWhatTheyStandFor) {
  const Pixels board{{4, 2},
                     {0xff000000, 0xffffffff, 0xff102030, 0xff102030,  //
                      0xffffffff, 0xff000000, 0xff102030, 0xff102030}};
  EXPECT_EQ(scaled(board, {2, 1}).values, (std::vector<std::uint32_t>{0xff808080, 0xff102030}));
  const Pixels line{{3, 1}, {0xff000000, 0xff0000ff, 0xff000000}};
  EXPECT_EQ(scaled(line, {2, 1}).values, (std::vector<std::uint32_t>{0xff000055, 0xff000055}));
  EXPECT_EQ(scaled(line, {3, 1}), line);
  // What cannot be seen lends no colour to its neighbours.
  const Pixels edge{{2, 1}, {0xff204060, 0x00000000}};
  EXPECT_EQ(withoutPremultiplication(scaled(edge, {1, 1})),
            (std::vector<std::uint32_t>{0x80204060}));
}

}  // namespace
}  // namespace pellow::desktop
