#pragma once

#include <string>

namespace pellow {

// One name for each X screen, however the display is written: ":0" for ":0.0" and "unix:0" too.
// An empty name stands for the environment's DISPLAY; one that names no display stays as it is.
std::string canonicalDisplayName(const std::string& name);

}  // namespace pellow
