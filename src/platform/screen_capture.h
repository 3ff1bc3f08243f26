#pragma once

namespace pellow {

// The permission to take pictures of other applications' windows. Main thread.
class ScreenCapture {
 public:
  virtual ~ScreenCapture() = default;

  // Whether pictures may be taken now; asks nobody.
  virtual bool preflightAccess() const = 0;
};

}  // namespace pellow
