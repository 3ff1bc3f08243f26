#pragma once

#import <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace pellow {

// Owns one retain count of a Core Foundation object, or nothing. Any thread.
template <typename Ref>
class CFOwner {
 public:
  CFOwner() = default;

  // Takes over the count that a Create or Copy function gives. NULL is nothing.
  static CFOwner adopt(Ref ref) { return CFOwner(ref); }
  // Adds a count to what somebody else owns: the result of a Get function, a member of an array.
  static CFOwner retain(Ref ref) {
    if (ref) CFRetain(ref);
    return CFOwner(ref);
  }

  CFOwner(const CFOwner& other) : CFOwner(retain(other.ref_)) {}
  CFOwner(CFOwner&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
  CFOwner& operator=(CFOwner other) noexcept {
    std::swap(ref_, other.ref_);
    return *this;
  }
  ~CFOwner() {
    if (ref_) CFRelease(ref_);
  }

  // Borrowed: valid while this owner lives.
  Ref get() const { return ref_; }
  explicit operator bool() const { return ref_ != nullptr; }

 private:
  explicit CFOwner(Ref ref) : ref_(ref) {}

  Ref ref_ = nullptr;
};

}  // namespace pellow
