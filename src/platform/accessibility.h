#pragma once

#include "platform/ax_element.h"

namespace pellow {

// The way to other applications' windows.
class Accessibility {
 public:
  virtual ~Accessibility() = default;

  // Whether the user allows this process to use the interface. Main thread.
  virtual bool isProcessTrusted() const = 0;

  // The element of the whole system. Any thread.
  virtual AXElement systemWide() = 0;

  // The element of an application, alive or not: calls on it tell. Any thread.
  virtual AXElement application(ProcessID pid) = 0;
};

}  // namespace pellow
