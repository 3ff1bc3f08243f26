#pragma once

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/uuid.h"

namespace pellow {

// What a list held before, found by the `id` of each: at once where ids are asked for in the order
// of the list, which they most often are.
template <class Thing>
class Former {
 public:
  explicit Former(std::vector<Thing> things) : things_(std::move(things)) {}

  Thing& operator[](std::size_t place) { return things_[place]; }

  std::optional<std::size_t> find(UUID id) {
    const bool comesNext = next_ < things_.size() && things_[next_].id == id;
    const auto place = comesNext ? std::optional(next_) : search(id);
    if (place) next_ = *place + 1;
    return place;
  }

 private:
  std::optional<std::size_t> search(UUID id) {
    if (!places_) {
      places_.emplace();
      for (std::size_t place = 0; place < things_.size(); ++place)
        places_->emplace(things_[place].id, place);
    }
    const auto found = places_->find(id);
    return found == places_->end() ? std::nullopt : std::optional(found->second);
  }

  std::vector<Thing> things_;
  std::size_t next_ = 0;
  std::optional<std::unordered_map<UUID, std::size_t>> places_;
};

}  // namespace pellow
