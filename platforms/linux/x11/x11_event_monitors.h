#pragma once

#include <bitset>
#include <functional>

#include "base/handler_list.h"
#include "platform/event_monitors.h"
#include "platforms/linux/system/file_descriptor.h"
#include "platforms/linux/x11/grabs.h"
#include "platforms/linux/x11/keyboard.h"
#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// Key presses for other applications come from raw events of XInput 2, which every client may hear
// and none can swallow; those that somebody has grabbed with the whole keyboard are left out. Those
// for windows of this process come from whoever receives the events of these windows. A key that is
// held down is one press. Pointer movements are raw events too,
// gathered for a moment and told apart by whose window is below the pointer then. Listens to
// nothing while nobody monitors.
class X11EventMonitors : public EventMonitors {
 public:
  // `events` is the connection whose events the desktop hands on; `pollSet` an epoll descriptor
  // that the desktop waits on.
  X11EventMonitors(X11Server& server, X11Connection& events, Keyboard& keyboard, const Grabs& grabs,
                   int pollSet, std::function<bool()> ownWindowHasKeyboard);

  std::optional<Subscription> addGlobalKeyDown(
      std::function<void(const KeyEvent&)> handler) override;
  std::optional<Subscription> addLocalKeyDown(
      std::function<bool(const KeyEvent&)> handler) override;
  std::optional<Subscription> addGlobalPointerMoved(std::function<void()> handler) override;
  std::optional<Subscription> addLocalPointerMoved(std::function<void()> handler) override;
  AppKitPoint pointerLocation() const override;

  // Whether the event was one of the keyboard's or the pointer's.
  bool handle(const xcb_generic_event_t& event);

  // A key press for a window of this process; false when a handler swallowed it.
  bool deliverLocalKeyDown(std::uint8_t keycode, std::uint16_t state);

  // The moment for which movements are gathered may be over.
  void tellOfMovements();

 private:
  // Asks the server for what is monitored; once it answers true, nothing is missed.
  bool listen();
  void gatherMovements();
  bool isOwnWindowBelowPointer() const;
  void readModifiers();
  void handleRawEvent(const xcb_generic_event_t& event);
  void handleRawKey(unsigned keycode, bool isPress);
  void keyPressed(std::uint8_t keycode);
  void handleKeyboard(const xcb_generic_event_t& event);

  X11Server& server_;
  X11Connection& events_;
  Keyboard& keyboard_;
  const Grabs& grabs_;
  std::function<bool()> ownWindowHasKeyboard_;
  std::optional<std::uint8_t> inputOpcode_;  // of XInput 2.1 or later
  std::optional<std::uint8_t> xkbEvent_;
  unsigned modifiers_ = 0;  // X modifier bits held now
  unsigned group_ = 0;      // the layout in use
  std::bitset<256> down_;   // by X key code, while keys are heard
  HandlerList<void(const KeyEvent&)> global_;
  HandlerList<bool(const KeyEvent&)> local_;
  FileDescriptor movementTimer_;
  bool areMovementsGathered_ = false;
  HandlerList<void()> globalMoved_;
  HandlerList<void()> localMoved_;
};

}  // namespace pellow
