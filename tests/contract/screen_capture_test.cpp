#include "platform/screen_capture.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class ScreenCaptureContract : public ContractTest {
 protected:
  void SetUp() override {
    if (!capture.preflightAccess())
      GTEST_SKIP() << "Allow this process to record the screen first.";
  }

  ScreenCapture& capture = platform.screenCapture();
};

TEST_F(ScreenCaptureContract, AWindowIsFoundAmongAllAndItsPictureHasItsSize) {
  const auto guest = host->launch("Guest");
  guest->open("Document", {300, 150, 400, 300});
  const auto frame = guest->frame("Document");
  std::optional<ShareableWindow> found;
  Subscription listing;
  bool isListing = false;
  // Its new frame may not have come through to everybody at the first look.
  ASSERT_TRUE(until([&] {
    if (!std::exchange(isListing, true))
      listing = capture.shareableWindows([&](auto windows) {
        isListing = false;
        ASSERT_TRUE(windows) << windows.error().sentence;
        for (const auto& window : *windows)
          if (window.owner == guest->pid() && window.title == "Document" && window.frame == frame)
            found = window;
      });
    return found.has_value();
  }));

  std::optional<std::expected<Image, SystemError>> image;
  const auto picture =
      capture.captureImage(*found, 120, 90, [&](auto answer) { image = std::move(answer); });
  EXPECT_FALSE(image) << "it comes later";
  ASSERT_TRUE(until([&] { return image.has_value(); }));
  ASSERT_TRUE(*image) << image->error().sentence;
  EXPECT_EQ((*image)->size(), frame.size);

  auto dropped = capture.captureImage(*found, 120, 90, [&](const auto&) { note("dropped")(); });
  dropped.cancel();
  image.reset();
  const auto last =
      capture.captureImage(*found, 60, 45, [&](auto answer) { image = std::move(answer); });
  ASSERT_TRUE(until([&] { return image.has_value(); }));
  EXPECT_TRUE(hearsNothing());
}

}  // namespace
}  // namespace pellow::contract
