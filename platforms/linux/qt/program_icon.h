#pragma once

#include <QIcon>

namespace pellow {

// The program's own, for the windows that title bars and taskbars show. Main thread.
QIcon programIcon();

}  // namespace pellow
