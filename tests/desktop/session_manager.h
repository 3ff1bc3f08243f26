#pragma once

#include <X11/ICE/ICElib.h>
#include <X11/SM/SMlib.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace pellow::desktop {

// The smallest session manager there can be, for one client at a time; one in a process. It asks a
// client that joins to save itself, as every session manager does, and works on a thread of its
// own.
class SessionManager {
 public:
  SessionManager();
  ~SessionManager();
  SessionManager(const SessionManager&) = delete;
  SessionManager& operator=(const SessionManager&) = delete;

  // For the client's SESSION_MANAGER.
  const std::string& address() const { return address_; }

  // Called when the client says that it has saved itself, before it is told anything else. On the
  // thread of the session manager.
  std::function<void()> onSaved;
  int timesSaved() const;

  // `type` is SmSaveLocal, SmSaveGlobal or SmSaveBoth. Waits for nothing.
  void askToSave(int type, bool endsSession);
  void cancelShutdown();
  void tellToDie();
  // Breaks the connection, as a crash does.
  void vanish();

  // The bytes of a property of the client.
  std::string property(const std::string& name) const;

 private:
  static Status admit(SmsConn client, SmPointer self, unsigned long* mask, SmsCallbacks* callbacks,
                      char** reason);
  void work(const std::stop_token& stop);
  void process(int descriptor);

  mutable std::mutex mutex_;
  int listenerCount_ = 0;
  IceListenObj* listeners_ = nullptr;
  std::string address_;
  std::vector<IceConn> connections_;
  SmsConn client_ = nullptr;
  std::map<std::string, std::string> properties_;
  bool endsSession_ = false;
  int timesSaved_ = 0;
  std::jthread thread_;
};

}  // namespace pellow::desktop
