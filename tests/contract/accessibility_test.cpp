#include "platform/accessibility.h"

#include <array>

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class AccessibilityContract : public DesktopContractTest {
 protected:
  std::function<void(const AXElement&)> noteTitle(const std::string& what) {
    return [this, what](const AXElement& element) {
      heard.push_back(what + " " +
                      read<std::string>(element, AX::attribute::title).value_or("unknown"));
    };
  }

  std::expected<Subscription, AXError> observe(const AXElement& element, std::string_view what,
                                               std::function<void(const AXElement&)> handler) {
    return platform.accessibility().observe(element, what, std::move(handler), patience);
  }

  // The element there, or what it stands on, that is a window.
  std::optional<AXElement> windowAt(QuartzPoint point) {
    auto& accessibility = platform.accessibility();
    auto found = accessibility.elementAtPosition(accessibility.systemWide(), point, patience);
    while (found && read<std::string>(*found, AX::attribute::role) != AX::role::window)
      found = read<AXElement>(*found, AX::attribute::parent);
    return found ? std::optional(*found) : std::nullopt;
  }

  std::unique_ptr<Guest> guest;
  void SetUp() override {
    DesktopContractTest::SetUp();
    if (!IsSkipped()) guest = host->launch("Guest");
  }
};

TEST_F(AccessibilityContract, AWindowTellsOfItselfAndDoesAsItIsTold) {
  guest->open("Document", {300, 150, 400, 300});
  const auto window = windowNamed(*guest, "Document");
  const auto home = guest->frame("Document");
  EXPECT_EQ(window.pid(), guest->pid());
  EXPECT_EQ(read<std::string>(window, AX::attribute::role), AX::role::window);
  EXPECT_EQ(read<std::string>(window, AX::attribute::subrole), AX::subrole::standardWindow);
  EXPECT_EQ(read<QuartzPoint>(window, AX::attribute::position), home.origin);
  EXPECT_EQ(read<Size>(window, AX::attribute::size), home.size);
  EXPECT_EQ(read<bool>(window, AX::attribute::minimized), false);

  const QuartzPoint away{360, 230};
  ASSERT_TRUE(window.setAttribute(AX::attribute::position, away, patience));
  EXPECT_EQ(read<QuartzPoint>(window, AX::attribute::position), away);
  EXPECT_TRUE(until([&] { return guest->frame("Document") == QuartzRect(away, home.size); }));

  ASSERT_TRUE(window.setAttribute(AX::attribute::minimized, true, patience));
  EXPECT_TRUE(until([&] { return guest->isMinimized("Document"); }));
  EXPECT_TRUE(until([&] { return read<bool>(window, AX::attribute::minimized) == true; }));
  EXPECT_EQ(windows(*guest), std::vector{window}) << "minimized windows are listed, too";
  ASSERT_TRUE(window.setAttribute(AX::attribute::minimized, false, patience));
  EXPECT_TRUE(until([&] { return guest->isShown("Document"); }));
  EXPECT_TRUE(until([&] { return guest->frame("Document") == QuartzRect(away, home.size); }));
}

TEST_F(AccessibilityContract, AnElementIsTheSameHoweverItWasFound) {
  guest->open("Below", {300, 150, 400, 300});
  guest->open("Above", {350, 200, 400, 300});
  ASSERT_TRUE(bringToFront(*guest));
  const auto below = windowNamed(*guest, "Below");
  const auto above = windowNamed(*guest, "Above");
  EXPECT_NE(above, below);
  EXPECT_EQ(windowNamed(*guest, "Above"), above);
  EXPECT_TRUE(until(
      [&] { return read<AXElement>(application(*guest), AX::attribute::focusedWindow) == above; }));
  const auto frame = guest->frame("Above");
  EXPECT_TRUE(until([&] { return windowAt({frame.midX(), frame.midY()}) == above; }));

  ASSERT_TRUE(below.performAction(AX::action::raise, patience));
  EXPECT_TRUE(until([&] { return windowAt({frame.minX() + 5, frame.midY()}) == below; }));
}

TEST_F(AccessibilityContract, SeveralAttributesAnswerEachForItself) {
  guest->open("Document", {300, 150, 400, 300});
  const auto window = windowNamed(*guest, "Document");
  const std::array<std::string_view, 3> attributes{AX::attribute::title, "AXUnheardOf",
                                                   AX::attribute::minimized};
  const auto values = window.copyMultipleAttributeValues(attributes, patience);
  ASSERT_EQ(values.size(), 3u);
  EXPECT_EQ(values[0], AXValue("Document"));
  EXPECT_FALSE(values[1]);
  EXPECT_EQ(values[2], AXValue(false));
  EXPECT_EQ(errorOf(window.copyAttribute("AXUnheardOf", patience)), AXError::attributeUnsupported);
  EXPECT_EQ(errorOf(window.performAction("AXUnheardOf", patience)), AXError::actionUnsupported);

  // On another thread, too.
  std::expected<std::string, AXError> title;
  Subscription back;
  const auto queue = platform.queues().makeSerialQueue("com.velloway.pellow.actions");
  const auto work = queue->async([&] {
    title = read<std::string>(window, AX::attribute::title);
    back = platform.queues().main().async(note("read"));
  });
  EXPECT_TRUE(hears({"read"}));
  EXPECT_EQ(title, "Document");
}

TEST_F(AccessibilityContract, WhatIsGoneStaysGone) {
  guest->open("Document", {300, 150, 400, 300});
  guest->open("Other", {350, 200, 400, 300});
  const auto window = windowNamed(*guest, "Document");
  const auto destroyed = observe(window, AX::notification::elementDestroyed,
                                 [this](const AXElement&) { heard.push_back("gone"); });
  ASSERT_TRUE(destroyed);
  guest->close("Document");
  EXPECT_TRUE(hears({"gone"}));
  // The notice may come before the last of it has gone.
  const auto isGone = [&] {
    return errorOf(window.copyAttribute(AX::attribute::role, patience)) ==
           AXError::invalidUIElement;
  };
  ASSERT_TRUE(until(isGone));
  for (const auto attribute : {AX::attribute::role, AX::attribute::title, AX::attribute::position,
                               AX::attribute::minimized})
    EXPECT_EQ(errorOf(window.copyAttribute(attribute, patience)), AXError::invalidUIElement)
        << attribute;
  EXPECT_EQ(errorOf(window.setAttribute(AX::attribute::minimized, true, patience)),
            AXError::invalidUIElement);
  EXPECT_EQ(errorOf(window.performAction(AX::action::raise, patience)), AXError::invalidUIElement);
  EXPECT_EQ(errorOf(observe(window, AX::notification::elementDestroyed, noteTitle("never"))),
            AXError::invalidUIElement);

  const auto other = windowNamed(*guest, "Other");
  EXPECT_EQ(errorOf(observe(other, "AXUnheardOf", noteTitle("never"))),
            AXError::notificationUnsupported);
  const auto gone = application(*guest);
  guest.reset();
  EXPECT_TRUE(until([&] { return !gone.copyAttribute(AX::attribute::windows, patience); }));
  EXPECT_FALSE(other.copyAttribute(AX::attribute::title, patience));
  EXPECT_TRUE(hearsNothing());
}

TEST_F(AccessibilityContract, ObserversHearOfWhatAnybodyDoes) {
  guest->open("First", {300, 150, 300, 200});
  guest->open("Second", {350, 400, 300, 200});
  ASSERT_TRUE(bringToFront(*guest));
  auto minimized =
      observe(application(*guest), AX::notification::windowMiniaturized, noteTitle("minimized"));
  ASSERT_TRUE(minimized);
  guest->minimize("Second");
  EXPECT_TRUE(hears({"minimized Second"}));
  ASSERT_TRUE(windowNamed(*guest, "First").setAttribute(AX::attribute::minimized, true, patience));
  EXPECT_TRUE(hears({"minimized First"}));
  minimized->cancel();

  std::vector<std::string> focused;
  Subscription observer =
      observe(
          application(*guest), AX::notification::focusedWindowChanged,
          [&](const AXElement& window) {
            focused.push_back(read<std::string>(window, AX::attribute::title).value_or("unknown"));
            if (focused.back() == "Third") observer.cancel();
          })
          .value();
  guest->open("Third", {400, 200, 300, 200});
  EXPECT_TRUE(until([&] { return !focused.empty() && focused.back() == "Third"; }));
  guest->open("Fourth", {450, 250, 300, 200});
  EXPECT_TRUE(until([&] {
    return read<AXElement>(application(*guest), AX::attribute::focusedWindow) ==
           windowNamed(*guest, "Fourth");
  }));
  EXPECT_TRUE(hearsNothing());
  EXPECT_EQ(focused.back(), "Third") << "the handler has ended its observer";
}

}  // namespace
}  // namespace pellow::contract
