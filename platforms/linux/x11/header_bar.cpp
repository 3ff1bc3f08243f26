#include "platforms/linux/x11/header_bar.h"

#include <algorithm>
#include <tuple>

#include "platforms/linux/accessibility_bus/title_buttons.h"
#include "platforms/linux/x11/client_processes.h"

namespace pellow {

namespace {

// From an application's units in a window to pixels of the X screen.
struct Units {
  PixelPoint origin;
  int scale = 1;

  PixelRect toPixels(const AccessibleRect& rect) const {
    return {origin.x + rect.x * scale, origin.y + rect.y * scale, rect.width * scale,
            rect.height * scale};
  }
};

// Whether the window that an application tells of can be this one, and in which units then.
//
//     ┌ content, GTK 3, Chromium ─────┐
//     │ shadow  ┌ frame ───────────┐  │
//     │         │ border ┌ GTK 4 ─ │  │
std::optional<Units> unitsIn(const WindowFacts& window, const AccessibleRect& known) {
  constexpr int largestScale = 4;
  constexpr int thickestBorder = 8;
  if (known.width <= 0 || known.height <= 0) return std::nullopt;
  const auto& [content, frame] = std::tie(window.content, window.frame);
  for (int scale = 1; scale <= largestScale; ++scale)
    if (content.width == known.width * scale && content.height == known.height * scale)
      return Units{content.origin(), scale};
  const int scale = std::clamp(frame.width / known.width, 1, largestScale);
  const int width = frame.width - known.width * scale;
  const int height = frame.height - known.height * scale;
  const int most = 2 * thickestBorder * scale;
  if (std::min(width, height) < 0 || std::max(width, height) > most) return std::nullopt;
  return Units{{frame.x + width / 2, frame.y + height / 2}, scale};
}

struct Found {
  AccessibleObject object;
  Units units;
};

// The window in this place or, if an application does not know where its windows are, of this size.
std::optional<Found> findWindow(AccessibilityBus& bus, const AccessibleObject& application,
                                const WindowFacts& window) {
  const auto family = bus.children({application});
  if (!family || !family->front()) return std::nullopt;
  const auto& objects = *family->front();
  const auto places = bus.onScreen(objects);
  if (!places) return std::nullopt;
  std::optional<Found> found;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const auto& place = (*places)[i];
    const auto units = place ? unitsIn(window, *place) : std::nullopt;
    if (!units) continue;
    if (Units{{}, units->scale}.toPixels(*place) == window.content)
      return Found{objects[i], *units};
    if (!found) found = Found{objects[i], *units};
  }
  return found;
}

std::vector<PixelRect> toPixels(const std::vector<AccessibleRect>& rects, const Units& units) {
  std::vector<PixelRect> pixels;
  for (const auto& rect : rects) pixels.push_back(units.toPixels(rect));
  return pixels;
}

void moveBy(HeaderBars::Buttons& buttons, int dx, int dy) {
  for (auto* side : {&buttons.left, &buttons.right})
    for (auto& button : *side) button = button.at({button.x + dx, button.y + dy});
}

}  // namespace

std::optional<HeaderBars::Buttons> HeaderBars::buttons(const WindowFacts& window,
                                                       Deadline deadline) {
  constexpr Seconds lifetime = 5;
  const auto key = window.key();
  const auto& content = window.content;
  const PixelSize size{content.width, content.height};
  const auto isThis = [&](const Reading& reading) { return reading.window == key; };
  std::optional<Buttons> told;
  std::unique_lock lock(mutex_);
  std::erase_if(readings_, [&](const Reading& reading) { return hasPassed(reading.expiry); });
  const auto known = std::ranges::find_if(readings_, isThis);
  // An application that has told nothing would tell no more about another size.
  if (known != readings_.end() && (!known->buttons || known->size == size)) {
    told = known->buttons;
  } else {
    lock.unlock();
    const auto now = Deadline::Clock::now();
    told = ask(window, {now + (deadline.end - now) / 2});
    if (told) moveBy(*told, -content.x, -content.y);
    lock.lock();
    std::erase_if(readings_, isThis);
    readings_.push_back({key, told, size, deadlineIn(lifetime)});
  }
  if (told) moveBy(*told, content.x, content.y);
  return told;
}

std::optional<HeaderBars::Buttons> HeaderBars::ask(const WindowFacts& window, Deadline deadline) {
  constexpr int usualHeight = 46;  // of a header bar, in the units of an application
  auto& connection = server_.connection();
  const auto address =
      connection.property(connection.root(), server_.atoms().atSpiBus).collect(deadline);
  if (!address || !address->exists()) return std::nullopt;
  const auto pid = owningProcesses(server_, {window.window}, deadline).front();
  if (pid <= 0) return std::nullopt;
  const auto bus = AccessibilityBus::open(address->bytes, deadline.end);
  if (!bus) return std::nullopt;
  const auto application = bus->application(pid);
  if (!application) return std::nullopt;
  const auto found = findWindow(*bus, *application, window);
  if (!found) return std::nullopt;
  const auto& units = found->units;
  const int top = (window.frame.y - units.origin.y) / units.scale;
  const auto buttons = titleButtons(*bus, found->object, top, usualHeight);
  if (!buttons) return std::nullopt;
  return Buttons{toPixels(buttons->left, units), toPixels(buttons->right, units)};
}

}  // namespace pellow
