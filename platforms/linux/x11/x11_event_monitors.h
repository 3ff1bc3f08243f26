#pragma once

#include <bitset>
#include <deque>
#include <functional>

#include "base/handler_list.h"
#include "platform/event_monitors.h"
#include "platforms/linux/x11/grabs.h"
#include "platforms/linux/x11/keyboard.h"
#include "platforms/linux/x11/x11_server.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {

// Key presses for other applications come from raw events of XInput 2, which every client may hear
// and none can swallow; those that somebody has grabbed with the whole keyboard are left out. Those
// for windows of this process come from whoever receives the events of these windows. A key that is
// held down is one press. Pointer movements and buttons are raw events too, told
// apart by whose window is below the pointer then. After a movement others are not listened to for
// a moment, at the end of which the pointer's place tells of them all: a mouse sends a thousand a
// second. Listens to nothing while nobody monitors.
class X11EventMonitors : public EventMonitors {
 public:
  // Whether a window of this process has the keyboard; `focus` is the one that has it for X.
  using OwnWindowHasKeyboard = std::function<bool(xcb_window_t focus)>;

  // `events` is the connection whose events the desktop hands on; `pollSet` an epoll descriptor
  // that the desktop waits on.
  X11EventMonitors(X11Server& server, X11Connection& events, Keyboard& keyboard, const Grabs& grabs,
                   int pollSet, OwnWindowHasKeyboard ownWindowHasKeyboard);

  std::optional<Subscription> addGlobalKeyDown(
      std::function<void(const KeyEvent&)> handler) override;
  std::optional<Subscription> addLocalKeyDown(
      std::function<bool(const KeyEvent&)> handler) override;
  std::optional<Subscription> addGlobalPointerMoved(std::function<void()> handler) override;
  std::optional<Subscription> addLocalPointerMoved(std::function<void()> handler) override;
  std::optional<Subscription> addGlobalMouseDown(std::function<void()> handler) override;
  AppKitPoint pointerLocation() const override;

  // Whether the event was one of the keyboard's or the pointer's.
  bool handle(const xcb_generic_event_t& event);

  // A key press for a window of this process; false when a handler swallowed it.
  bool deliverLocalKeyDown(std::uint8_t keycode, std::uint16_t state);

  // Tells of the presses, and of the movements once the moment for which they are gathered is over.
  // Those whose receiver the server does not name yet wait.
  void dispatch();

 private:
  struct Press {
    std::uint8_t keycode;
    unsigned modifiers;
    unsigned group;
  };

  // Asks the server for what is monitored; once it answers true, nothing is missed.
  bool listen();
  void gatherMovements();
  void tellOfKeys();
  void tellOfButtons();
  void tellOfMovements();
  bool isOwnWindowBelowPointer(Deadline deadline) const;
  void readModifiers();
  void handleRawEvent(const xcb_generic_event_t& event);
  void handleRawKey(unsigned keycode, bool isPress);
  void handleRawButton(unsigned button);
  bool isForOtherApplications(const Press& press) const;
  void handleKeyboard(const xcb_generic_event_t& event);

  X11Server& server_;
  X11Connection& events_;
  Keyboard& keyboard_;
  const Grabs& grabs_;
  OwnWindowHasKeyboard ownWindowHasKeyboard_;
  std::optional<std::uint8_t> inputOpcode_;  // of XInput 2.1 or later
  std::optional<std::uint8_t> xkbEvent_;
  unsigned modifiers_ = 0;     // X modifier bits held now
  unsigned group_ = 0;         // the layout in use
  std::bitset<256> down_;      // by X key code, while keys are heard
  std::deque<Press> presses_;  // to be told of
  HandlerList<void(const KeyEvent&)> global_;
  HandlerList<bool(const KeyEvent&)> local_;
  FileDescriptor movementTimer_;
  bool areMovementsGathered_ = false;
  bool areMovementsToBeTold_ = false;
  mutable PixelPoint pointer_;  // where it was last
  HandlerList<void()> globalMoved_;
  HandlerList<void()> localMoved_;
  bool areButtonsToBeTold_ = false;
  HandlerList<void()> globalMouseDown_;
};

}  // namespace pellow
