#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/geometry.h"
#include "platform/platform.h"

// What the ports promise, whoever keeps the promise: the same tests run on every desktop, each of
// which brings a host. The files are named after the ports. A port has none when the user's own
// settings or the world outside decide what it answers: the log, the login item, the system's
// shortcuts, updates.

namespace pellow::contract {

// Virtual key codes of the ANSI layout.
namespace key {
inline constexpr std::uint16_t t = 17;
inline constexpr std::uint16_t returnKey = 36;
inline constexpr std::uint16_t k = 40;
}  // namespace key

// Another application in the test's hand; it ends with this object. Its windows have different
// titles.
class Guest {
 public:
  virtual ~Guest() = default;

  virtual ProcessID pid() const = 0;

  // Opens a standard window with about this frame in front of the others, and returns once it
  // shows.
  virtual void open(const std::string& title, const QuartzRect& frame) = 0;
  virtual void close(const std::string& title) = 0;
  // As the user does.
  virtual void minimize(const std::string& title) = 0;

  // As the desktop has it, whatever the ports say.
  virtual QuartzRect frame(const std::string& title) const = 0;
  virtual bool isMinimized(const std::string& title) const = 0;
  virtual bool isShown(const std::string& title) const = 0;  // neither minimized nor hidden
};

// A desktop with this process on it, and its user. Main thread.
class Host {
 public:
  // The one of this build.
  static std::unique_ptr<Host> make();

  virtual ~Host() = default;

  virtual Platform& platform() = 0;

  // Whether this process may use Accessibility, type and point.
  virtual bool letsUsAct() = 0;

  // Lets everybody work until `holds()`; false when it does not come true.
  virtual bool until(const std::function<bool()>& holds) = 0;

  virtual std::unique_ptr<Guest> launch(const std::string& name) = 0;

  // Whether a panel of this name is where the pointer can meet it, or shows and ignores it.
  virtual bool showsPanel(const std::string& name) = 0;

  // The user's hands. What they do reaches everybody later.
  virtual void type(std::uint16_t keyCode, std::uint64_t modifierFlags = 0) = 0;
  virtual void hold(std::uint16_t keyCode) = 0;  // until it has repeated, and release it
  virtual void movePointer(QuartzPoint to) = 0;
  virtual void pressButton() = 0;  // the primary one, where the pointer is
  virtual void releaseButton() = 0;
  // Presses the button or check box with this title in an alert or a form.
  virtual void operate(const std::string& title) = 0;
  virtual void closeWindow(const std::string& title) = 0;  // of this process
  virtual void pickColour(Colour colour) = 0;              // in the colour panel
  // Opens the menu and chooses the item with this title.
  virtual void chooseFromStatusMenu(const std::string& title) = 0;
  virtual void chooseFromContextMenu(QuartzPoint at, const std::string& title) = 0;

  // From outside; the program gets it like one from anybody else.
  virtual void send(TerminationSignal signal) = 0;
};

}  // namespace pellow::contract
