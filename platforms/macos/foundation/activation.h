#pragma once

namespace pellow {

// Makes this process the active one. The polite request may be refused to an agent; it then insists
// on the next turn of the main loop. Main thread.
void activateThisProcess();

}  // namespace pellow
