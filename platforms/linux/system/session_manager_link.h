#pragma once

namespace pellow {

// Qt keeps a connection to the session manager, whose library ends the process when it breaks, with
// windows away. After this the process goes on and logs it. Before there is a Qt application.
void outliveSessionManager();

}  // namespace pellow
