#pragma once

#include <filesystem>

#include "base/log.h"

namespace pellow {

// Writes every message as one line "level message" to standard error, and to the journal of the
// system when it runs one. Where standard error already ends in the journal, only the journal gets
// it, once.
Log::Sink makeLogSink(const std::filesystem::path& journal = "/run/systemd/journal/socket");

// The line of a message without its end, as a terminal may show it: line breaks and other control
// characters, which a window's title may hold, are written as \n or \x1B, and bytes that are no
// UTF-8 as U+FFFD.
std::string logLine(LogLevel level, std::string_view message);

}  // namespace pellow
