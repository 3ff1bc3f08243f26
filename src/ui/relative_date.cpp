#include "ui/relative_date.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <string_view>

namespace pellow {
namespace {

struct Unit {
  Seconds length;
  std::string_view name;
};
constexpr Seconds day = 24 * 60 * 60;
constexpr std::array units{Unit{365.25 * day, "year"}, Unit{365.25 * day / 12, "month"},
                           Unit{7 * day, "week"},      Unit{day, "day"},
                           Unit{60 * 60, "hour"},      Unit{60, "minute"},
                           Unit{1, "second"}};

}  // namespace

std::string relativeDate(Seconds ago) {
  auto unit = units.begin();
  while (ago < unit->length && unit != &units.back()) ++unit;
  const double count = std::floor(ago / unit->length);
  return fmt::format("{:.0f} {}{} ago", count, unit->name, count == 1 ? "" : "s");
}

}  // namespace pellow
