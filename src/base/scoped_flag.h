#pragma once

namespace pellow {

// Keeps a flag up while it lives, even if a coroutine ends in the middle.
class [[nodiscard]] ScopedFlag {
 public:
  explicit ScopedFlag(bool& flag) : flag_(flag) { flag_ = true; }
  ScopedFlag(const ScopedFlag&) = delete;
  ScopedFlag& operator=(const ScopedFlag&) = delete;
  ~ScopedFlag() { flag_ = false; }

 private:
  bool& flag_;
};

}  // namespace pellow
