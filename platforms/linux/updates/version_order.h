#pragma once

#include <compare>
#include <string_view>

namespace pellow {

// Which of two versions is the newer one. Numbers count as numbers and missing ones as 0, so that
// 1.10 comes after 1.9, and 1.0 is 1.0.0. What begins with a letter or a dash makes a version
// earlier ("2.0b1", "2.0-rc.2"), and what follows a plus sign does not count.
std::strong_ordering compareVersions(std::string_view a, std::string_view b);

}  // namespace pellow
