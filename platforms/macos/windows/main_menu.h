#pragma once

namespace pellow {

// Gives the process a main menu, which an agent never shows: without one, Command-C, V, W and their
// like do nothing in its windows. Main thread.
void installMainMenu();

}  // namespace pellow
