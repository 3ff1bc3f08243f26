#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace pellow {

// An object in the tree that an application shows to assistive programs.
struct AccessibleObject {
  std::string application;  // its name on the bus
  std::string path;
};

// In the units of the application, which are pixels or whole multiples of them, y down.
struct AccessibleRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  int maxX() const { return x + width; }
  int maxY() const { return y + height; }
};

// A conversation with applications over the accessibility bus (AT-SPI). Applications do more work
// while somebody listens, so keep it short; it ends with this object. One thread at a time; never
// waits past the deadline.
//
// Asking about many objects takes as long as asking about one. Answers come in the order of the
// objects: nothing for an object that lacks it, nothing at all when the deadline has passed or the
// bus is lost.
class AccessibilityBus {
 public:
  using Deadline = std::chrono::steady_clock::time_point;
  template <class Value>
  using Answers = std::optional<std::vector<std::optional<Value>>>;

  // The address is the word of any program on the display: one that names more or something else
  // than one Unix socket of this user is refused. Null also when no bus answers there in time.
  static std::unique_ptr<AccessibilityBus> open(const std::string& address, Deadline deadline);

  // The application that a process shows; nothing when it shows none.
  std::optional<AccessibleObject> application(int pid);

  Answers<std::vector<AccessibleObject>> children(const std::vector<AccessibleObject>& objects);
  // AT-SPI's role numbers.
  Answers<std::uint32_t> roles(const std::vector<AccessibleObject>& objects);
  // From the top left of the screen or, where an application does not know that, of its window.
  Answers<AccessibleRect> onScreen(const std::vector<AccessibleObject>& objects);
  // From the top left of their window.
  Answers<AccessibleRect> inWindow(const std::vector<AccessibleObject>& objects);

 private:
  struct Closer {
    void operator()(sd_bus* bus) const;
  };
  struct Releaser {
    void operator()(sd_bus_message* message) const;
  };
  using Bus = std::unique_ptr<sd_bus, Closer>;
  using Message = std::unique_ptr<sd_bus_message, Releaser>;
  using Messages = std::vector<Message>;
  using AddArguments = std::function<int(sd_bus_message*)>;

  AccessibilityBus(Bus bus, Deadline deadline) : bus_(std::move(bus)), deadline_(deadline) {}

  bool becomeReady();
  Message question(const AccessibleObject& to, const char* interface, const char* member,
                   const AddArguments& addArguments) const;
  // Asks all at once.
  std::optional<Messages> ask(const Messages& questions);
  // Does what can be done now, or waits until something can be; false at the deadline or the end.
  bool proceed();
  template <class Value>
  Answers<Value> askEach(const std::vector<AccessibleObject>& objects, const char* interface,
                         const char* member, const AddArguments& addArguments,
                         bool (*read)(sd_bus_message*, Value&));
  Answers<AccessibleRect> extents(const std::vector<AccessibleObject>& objects,
                                  std::uint32_t origin);

  Bus bus_;
  Deadline deadline_;
};

}  // namespace pellow
