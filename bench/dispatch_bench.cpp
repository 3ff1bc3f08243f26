#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <new>
#include <vector>

#include "shortcuts/hotkey_manager.h"

// What a key press costs that is no shortcut. Every key press in every application pays it.

namespace {

std::size_t allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (auto* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using namespace pellow;
using Clock = std::chrono::steady_clock;

constexpr int rounds = 21;
constexpr int pressesPerRound = 1'000'000;

class NoDefaults final : public UserDefaults {
 public:
  std::optional<DefaultsValue> value(std::string_view) const override { return std::nullopt; }
  std::expected<void, SystemError> set(std::string_view, DefaultsValue, Kept) override {
    return {};
  }
  void registerDefaults(std::map<std::string, DefaultsValue>) override {}
};

// Keeps what it is given, for the keys of another application.
class Keyboard final : public EventMonitors {
 public:
  std::optional<Subscription> addGlobalKeyDown(
      std::function<void(const KeyEvent&)> handler) override {
    press = std::move(handler);
    return Subscription();
  }
  std::optional<Subscription> addLocalKeyDown(std::function<bool(const KeyEvent&)>) override {
    return std::nullopt;
  }
  std::optional<Subscription> addGlobalPointerMoved(std::function<void()>) override {
    return std::nullopt;
  }
  std::optional<Subscription> addLocalPointerMoved(std::function<void()>) override {
    return std::nullopt;
  }
  std::optional<Subscription> addGlobalMouseDown(std::function<void()>) override {
    return std::nullopt;
  }
  AppKitPoint pointerLocation() const override { return {}; }

  std::function<void(const KeyEvent&)> press;
};

struct Result {
  double nanoseconds = 0;  // a key press, in the median round
  std::size_t allocations = 0;
};

Result measure(const Keyboard& keyboard, const KeyEvent& event) {
  std::vector<double> times(rounds);
  const auto before = allocations;
  for (auto& time : times) {
    const auto start = Clock::now();
    for (int press = 0; press < pressesPerRound; ++press) keyboard.press(event);
    time = std::chrono::duration<double, std::nano>(Clock::now() - start).count() / pressesPerRound;
  }
  const auto made = allocations - before;
  std::ranges::sort(times);
  return {times[rounds / 2], made};
}

}  // namespace

int main() {
  NoDefaults defaults;
  NotificationCenter notifications;
  Keyboard keyboard;
  int logged = 0;
  const Log log([&](LogLevel, std::string_view) { ++logged; });
  const ShortcutStore shortcuts(defaults, notifications);
  HotkeyManager hotkeys(keyboard, shortcuts, log);
  int fired = 0;
  hotkeys.handler = [&](ShortcutAction) { ++fired; };
  hotkeys.start();

  constexpr auto all = modifier::control | modifier::option | modifier::command;
  const struct {
    const char* name;
    KeyEvent event;
  } presses[] = {{"a letter", {.keyCode = 7, .charactersIgnoringModifiers = "x"}},
                 {"the key of a shortcut alone", {.keyCode = 15}},
                 {"its modifiers with another key", {.keyCode = 7, .modifierFlags = all}}};
  bool isWithin = true;
  for (const auto& [name, event] : presses) {
    const auto result = measure(keyboard, event);
    fmt::print("{:<32} {:6.1f} ns, {} allocations\n", name, result.nanoseconds, result.allocations);
    isWithin = isWithin && result.nanoseconds < 500 && result.allocations == 0;
  }
  keyboard.press({.keyCode = 17, .modifierFlags = all});
  if (fired != 1 || logged != 1) {
    fmt::print("the shortcut itself does not fire\n");
    return EXIT_FAILURE;
  }
  return isWithin ? EXIT_SUCCESS : EXIT_FAILURE;
}
