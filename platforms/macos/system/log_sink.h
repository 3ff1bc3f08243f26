#pragma once

#include "base/log.h"

namespace pellow {

// The unified log of the system. Messages of the level `info` are kept in memory only, and a
// warning is an error there.
Log::Sink makeLogSink();

}  // namespace pellow
