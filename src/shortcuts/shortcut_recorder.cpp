#include "shortcuts/shortcut_recorder.h"

#include <fmt/format.h>

#include <cstdint>
#include <exception>
#include <utility>

#include "base/unicode.h"
#include "shortcuts/system_shortcuts.h"

namespace pellow {
namespace {

constexpr std::uint16_t escapeKey = 53;

Alert warning(std::string_view messageText, std::string informativeText) {
  return {.style = AlertStyle::warning,
          .messageText = std::string(messageText),
          .informativeText = std::move(informativeText),
          .buttons = {"OK"}};
}

// Shift alone makes capitals.
bool canBeTyped(const Shortcut& shortcut) { return (shortcut.modifiers & ~modifier::shift) == 0; }

}  // namespace

ShortcutRecorder::ShortcutRecorder(ShortcutAction action, const Surroundings& surroundings)
    : action_(action), around_(surroundings), warning_([this](std::exception_ptr) {
        around_.log.error("The refusal of a shortcut could not be shown");
      }) {}

std::string ShortcutRecorder::title() const {
  return isRecording() ? "Press keys…" : around_.shortcuts.shortcut(action_).display(around_.texts);
}

std::string_view ShortcutRecorder::tooltip() const {
  return around_.shortcuts.isCustom(action_)
             ? "Custom. Press Escape while recording to restore the default."
             : "Default shortcut.";
}

// The newest monitor is the first to hear of a key press, and none after one that swallows it.
void ShortcutRecorder::beginRecording() {
  if (isRecording()) return;
  if (auto monitor = around_.eventMonitors.addLocalKeyDown([this](const KeyEvent& event) {
        record(event);
        return false;
      }))
    monitor_ = std::move(*monitor);
}

void ShortcutRecorder::endRecording() {
  monitor_.cancel();
  if (onRecorded) onRecorded();
}

void ShortcutRecorder::record(const KeyEvent& event) {
  const Shortcut candidate{.keyCode = event.keyCode,
                           .characters = lowerCased(event.charactersIgnoringModifiers),
                           .modifiers = event.modifierFlags & modifier::all};
  if (event.keyCode == escapeKey) {
    around_.shortcuts.restoreDefault(action_);
  } else if (auto refusal = refusalOf(candidate)) {
    endRecording();
    return warning_.start(warn(std::move(*refusal)));
  } else {
    around_.shortcuts.set(action_, candidate);
  }
  endRecording();
}

std::optional<Alert> ShortcutRecorder::refusalOf(const Shortcut& candidate) const {
  const auto& texts = around_.texts;
  if (canBeTyped(candidate))
    return warning("That needs a modifier", std::string(texts.needsModifier));
  for (const auto other : allCases<ShortcutAction>())
    if (other != action_ && around_.shortcuts.shortcut(other) == candidate)
      return warning(
          "Already used by Pellow",
          fmt::format("{} is set to {}.", candidate.display(texts), pellow::title(other)));
  if (const auto owner =
          SystemShortcuts::conflictDescription(around_.symbolicHotKeys, candidate, texts))
    return warning(texts.systemUsesShortcut,
                   fmt::format("{} belongs to {}. Pellow does not take a shortcut over, so both "
                               "would fire. Pick another combination.",
                               candidate.display(texts), *owner));
  return std::nullopt;
}

Task<> ShortcutRecorder::warn(Alert alert) { co_await around_.alerts.present(std::move(alert)); }

}  // namespace pellow
