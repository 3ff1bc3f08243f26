#pragma once

#include <memory>
#include <utility>

#include "base/geometry.h"

namespace pellow {

// A picture made by the platform, such as an application's icon. A value that shares the platform's
// object; two images are equal when they share the same one.
class Image {
 public:
  // The base of a platform's pictures.
  class Object {
   public:
    virtual ~Object() = default;
    // Points.
    virtual Size size() const = 0;
  };

  explicit Image(std::shared_ptr<const Object> object) : object_(std::move(object)) {}

  bool operator==(const Image&) const = default;

  Size size() const { return object_->size(); }
  const Object& object() const { return *object_; }

 private:
  std::shared_ptr<const Object> object_;  // never empty
};

}  // namespace pellow
