#include "strips/strip_entry.h"

namespace pellow {

std::vector<StripItem> items(const std::vector<StripEntry>& entries) {
  std::vector<StripItem> items;
  items.reserve(entries.size());
  for (const auto& entry : entries) items.push_back({entry.size, entry.showsTitle});
  return items;
}

}  // namespace pellow
