#pragma once

#include <deque>
#include <functional>

#include "base/texts.h"
#include "platform/form.h"
#include "shortcuts/shortcut_recorder.h"

namespace pellow {

// The recorders, a row each; all arguments but `onRecord` outlive the form. `onRecord` is called
// with the recorder whose button was clicked. Main thread.
FormPane shortcutsPane(std::deque<ShortcutRecorder>& recorders, const Texts& texts,
                       const std::function<void(ShortcutRecorder&)>& onRecord);

}  // namespace pellow
