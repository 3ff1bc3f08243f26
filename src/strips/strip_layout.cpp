#include "strips/strip_layout.h"

namespace pellow {
namespace {

Size tabSize(const StripItem& item, bool pictureTabs) {
  const double s = item.size;
  if (pictureTabs) return {item.showsTitle ? 5.5 * s : 2 * s, 1.35 * s};
  if (item.showsTitle) return {5.3 * s, 0.82 * s};
  return {s, s};
}

}  // namespace

StripLayout StripLayout::make(const StripItem& item, bool pictureTabs) {
  return {tabSize(item, pictureTabs), 0.65 * item.size};
}

}  // namespace pellow
