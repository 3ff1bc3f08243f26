#include "platform/probe_windows.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class ProbeWindowsContract : public DesktopContractTest {
 protected:
  // How many points of the primary display have the probe's colour; -1 without a picture.
  int pointsInColour() {
    std::optional<std::expected<DisplayPicture, SystemError>> picture;
    const auto screen = platform.screens().all().at(0);
    const auto capture = platform.screenCapture().captureDisplay(
        screen.displayID.value(), [&](auto answer) { picture = std::move(answer); });
    EXPECT_FALSE(picture) << "it comes later";
    if (!until([&] { return picture.has_value(); }) || !*picture) return -1;
    EXPECT_EQ((*picture)->width, screen.frame.width());
    EXPECT_EQ((*picture)->pixels.size(),
              std::size_t((*picture)->width) * std::size_t((*picture)->height));
    return static_cast<int>(std::ranges::count((*picture)->pixels, 0x0033ccu));
  }
  bool comesToHave(int points) {
    return until([&] { return pointsInColour() == points; });
  }
};

TEST_F(ProbeWindowsContract, AWindowOfOneColourShowsInThePictureOfItsDisplay) {
  if (!platform.screenCapture().preflightAccess())
    GTEST_SKIP() << "Allow this process to record the screen first.";
  ASSERT_EQ(pointsInColour(), 0);
  auto probe = platform.probeWindows().openWindow("pellow-probe", "Probe", {300, 200},
                                                  Colour::parse("0033CC").value());
  EXPECT_TRUE(comesToHave(300 * 200)) << pointsInColour();
  probe->setContentSize({120, 80});
  EXPECT_TRUE(comesToHave(120 * 80)) << pointsInColour();

  const auto self = platform.accessibility().application(platform.process().pid());
  const auto own = read<std::vector<AXElement>>(self, AX::attribute::windows);
  ASSERT_TRUE(own);
  ASSERT_EQ(own->size(), 1U);
  EXPECT_EQ(read<std::string>(own->front(), AX::attribute::title), "Probe");
  probe.reset();
  EXPECT_TRUE(comesToHave(0));

  bool isRefused = false;
  const auto nowhere = platform.screenCapture().captureDisplay(
      987654321, [&](const auto& answer) { isRefused = !answer; });
  EXPECT_TRUE(until([&] { return isRefused; }));
  auto dropped =
      platform.screenCapture().captureDisplay(1, [&](const auto&) { note("dropped")(); });
  dropped.cancel();
  EXPECT_TRUE(hearsNothing());
}

}  // namespace
}  // namespace pellow::contract
