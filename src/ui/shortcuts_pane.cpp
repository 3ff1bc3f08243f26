#include "ui/shortcuts_pane.h"

#include <string>
#include <utility>

#include "ui/form_builders.h"

namespace pellow {
namespace {

constexpr double recorderWidth = 200;  // points; the same for long and short ones

}  // namespace

FormPane shortcutsPane(std::deque<ShortcutRecorder>& recorders, const Texts& texts,
                       const std::function<void(ShortcutRecorder&)>& onRecord) {
  FormPane pane{"Shortcuts", {}};
  auto& elements = pane.elements;
  elements.push_back(form::section("Shortcuts"));
  elements.push_back(form::note("record", "Click a shortcut, then press the keys you want."));
  for (auto& recorder : recorders) {
    auto button = form::button(std::string(rawValue(recorder.action())), recorder.title(),
                               [&recorder, onRecord] { onRecord(recorder); });
    button.width = recorderWidth;
    button.tooltip = recorder.tooltip();
    elements.push_back(form::row(std::string(title(recorder.action())), std::move(button)));
  }
  elements.push_back(form::note("clashes", texts.clashesNote));
  return pane;
}

}  // namespace pellow
