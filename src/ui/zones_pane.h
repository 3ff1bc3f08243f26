#pragma once

#include "model/tab_store.h"
#include "model/zone_store.h"
#include "platform/form.h"

namespace pellow {

// The zones, a row each. A zone that is gone by the time its row is used stays gone. The arguments
// outlive the form. Main thread.
FormPane zonesPane(ZoneStore& zones, TabStore& tabs);

}  // namespace pellow
