#pragma once

#include "base/texts.h"
#include "model/preferences.h"
#include "platform/form.h"

namespace pellow {

// How tabs look, what shows when the pointer rests on one, and what flies. The arguments outlive
// the form. Main thread.
FormPane appearancePane(Preferences& preferences, const Texts& texts);

}  // namespace pellow
