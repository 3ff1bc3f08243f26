#include "tests/random/shrink.h"

#include <algorithm>
#include <utility>

namespace pellow::random {
namespace {

class Shrinker {
 public:
  Shrinker(History history, const std::function<bool(const History&)>& stillFails, int effort)
      : shortest_(std::move(history)), stillFails_(stillFails), effort_(effort) {}

  History shrink() {
    History before;
    do {
      before = shortest_;
      leaveOutChunks();
      makeNumbersSmaller();
    } while (shortest_ != before && effort_ > 0);
    return shortest_;
  }

 private:
  bool accept(History candidate) {
    if (effort_-- <= 0 || candidate == shortest_ || !stillFails_(candidate)) return false;
    shortest_ = std::move(candidate);
    return true;
  }

  // From the end: most steps have no part in it.
  void leaveOutChunks() {
    for (auto size = shortest_.steps.size() / 2; size > 0; size /= 2) {
      for (auto end = shortest_.steps.size(); end > 0 && effort_ > 0;) {
        const auto begin = end > size ? end - size : 0;
        auto candidate = shortest_;
        candidate.steps.erase(candidate.steps.begin() + static_cast<std::ptrdiff_t>(begin),
                              candidate.steps.begin() + static_cast<std::ptrdiff_t>(end));
        accept(std::move(candidate));
        end = std::min(begin, shortest_.steps.size());
      }
    }
  }

  void makeNumbersSmaller() {
    for (std::size_t index = 0; index < shortest_.steps.size(); ++index) {
      for (std::size_t number = 0; number < shortest_.steps[index].numbers.size(); ++number)
        makeSmaller(
            [&](History& candidate) -> int& { return candidate.steps[index].numbers[number]; });
      makeSmaller([&](History& candidate) -> int& { return candidate.steps[index].later; });
    }
  }

  // To nothing, to few, to half, to one less, whichever works.
  template <class Find>
  void makeSmaller(Find find) {
    const auto tryIt = [&](int value) {
      auto candidate = shortest_;
      if (value < 0 || value >= find(candidate)) return false;
      find(candidate) = value;
      return accept(std::move(candidate));
    };
    for (const int few : {0, 1, 2, 3, 4, 5, 6, 7})
      if (find(shortest_) > few && tryIt(few)) return;
    while (effort_ > 0 && (tryIt(find(shortest_) / 2) || tryIt(find(shortest_) - 1))) {
    }
  }

  History shortest_;
  const std::function<bool(const History&)>& stillFails_;
  int effort_;
};

}  // namespace

History shrink(History history, const std::function<bool(const History&)>& stillFails, int effort) {
  return Shrinker(std::move(history), stillFails, effort).shrink();
}

}  // namespace pellow::random
