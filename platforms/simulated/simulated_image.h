#pragma once

#include <string>
#include <utility>

#include "platform/image.h"

namespace pellow::simulated {

// A picture that nobody draws: its name stands for what it shows.
class SimulatedImage final : public Image::Object {
 public:
  SimulatedImage(std::string imageName, Size imageSize)
      : name(std::move(imageName)), size_(imageSize) {}

  const std::string name;

  Size size() const override { return size_; }

 private:
  Size size_;
};

}  // namespace pellow::simulated
