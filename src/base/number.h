#pragma once

#include <optional>
#include <string_view>

namespace pellow {

// The decimal number the text begins with, whatever the locale: "-2.5e3pt" begins with -2500.
// Nothing when it begins with none, or with one that no double can hold.
std::optional<double> leadingNumber(std::string_view text);

}  // namespace pellow
