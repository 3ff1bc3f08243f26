#pragma once

#include <future>
#include <memory>

#include "platforms/linux/x11/keyboard_map.h"
#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// The keyboard's map, read anew after every change. libxkbcommon waits for the X server as long as
// that takes, and another client may have grabbed it: so it reads on a thread of its own, and there
// is a connection that nothing else waits for. Main thread.
class Keyboard {
 public:
  Keyboard(X11Server& server, std::unique_ptr<X11Connection> connection)
      : server_(server), connection_(std::move(connection)) {}
  ~Keyboard();
  Keyboard(const Keyboard&) = delete;
  Keyboard& operator=(const Keyboard&) = delete;

  // What has been read no longer holds.
  void changed() { isOutdated_ = true; }

  // As it is now; as it was if the server does not answer in time.
  std::shared_ptr<const KeyboardMap> map();

 private:
  using Map = std::shared_ptr<const KeyboardMap>;

  static Map read(xcb_connection_t* connection);
  void collect(Deadline deadline);

  X11Server& server_;
  std::unique_ptr<X11Connection> connection_;
  Map map_ = std::make_shared<KeyboardMap>();
  bool isOutdated_ = true;
  std::future<Map> reading_;
};

}  // namespace pellow
