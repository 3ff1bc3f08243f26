#pragma once

#include <cstddef>

namespace pellow::random {

// An element by number, round and round.
template <class List>
const auto& pick(const List& list, int number) {
  return list[static_cast<std::size_t>(number) % list.size()];
}

}  // namespace pellow::random
