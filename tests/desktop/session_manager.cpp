#include "tests/desktop/session_manager.h"

#include <poll.h>
#include <sys/socket.h>

#include <cstdlib>
#include <cstring>
#include <span>
#include <stdexcept>

namespace pellow::desktop {
namespace {

SessionManager& manager(SmPointer self) { return *static_cast<SessionManager*>(self); }

}  // namespace

SessionManager::SessionManager() {
  IceSetIOErrorHandler([](IceConn) {});  // the default one ends the process
  const IceHostBasedAuthProc everybody = [](char*) -> Bool { return True; };
  char error[256] = "";
  if (!SmsInitialize("Pellow", "1", &admit, this, everybody, sizeof error, error) ||
      !IceListenForConnections(&listenerCount_, &listeners_, sizeof error, error))
    throw std::runtime_error(error);
  for (int index = 0; index < listenerCount_; ++index)
    IceSetHostBasedAuthProc(listeners_[index], everybody);
  char* const addresses = IceComposeNetworkIdList(listenerCount_, listeners_);
  address_ = addresses;
  std::free(addresses);
  thread_ = std::jthread([this](const std::stop_token& stop) { work(stop); });
}

SessionManager::~SessionManager() {
  thread_ = {};
  IceFreeListenObjs(listenerCount_, listeners_);
}

Status SessionManager::admit(SmsConn client, SmPointer self, unsigned long* mask,
                             SmsCallbacks* callbacks, char**) {
  manager(self).client_ = client;
  *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
          SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask |
          SmsSaveYourselfDoneProcMask | SmsCloseConnectionProcMask | SmsSetPropertiesProcMask |
          SmsDeletePropertiesProcMask | SmsGetPropertiesProcMask;
  *callbacks = {};
  callbacks->register_client = {[](SmsConn joined, SmPointer, char* previous) -> Status {
                                  std::free(previous);
                                  SmsRegisterClientReply(joined, strdup("client"));
                                  SmsSaveYourself(joined, SmSaveLocal, False, SmInteractStyleNone,
                                                  False);
                                  return True;
                                },
                                self};
  callbacks->save_yourself_done = {[](SmsConn, SmPointer data, Bool) {
                                     auto& own = manager(data);
                                     if (own.onSaved) own.onSaved();
                                     ++own.timesSaved_;
                                     if (!own.endsSession_) SmsSaveComplete(own.client_);
                                   },
                                   self};
  callbacks->set_properties = {[](SmsConn, SmPointer data, int count, SmProp** properties) {
                                 for (int index = 0; index < count; ++index) {
                                   const auto* const each = properties[index];
                                   auto& value = manager(data).properties_[each->name];
                                   if (each->num_vals > 0)
                                     value.assign(static_cast<char*>(each->vals->value),
                                                  static_cast<std::size_t>(each->vals->length));
                                   SmFreeProperty(properties[index]);
                                 }
                                 std::free(properties);
                               },
                               self};
  callbacks->close_connection = {[](SmsConn leaving, SmPointer data, int count, char** reasons) {
                                   SmFreeReasons(count, reasons);
                                   std::erase(manager(data).connections_,
                                              SmsGetIceConnection(leaving));
                                   IceCloseConnection(SmsGetIceConnection(leaving));
                                   SmsCleanUp(leaving);
                                 },
                                 self};
  // Nobody asks for these here.
  callbacks->interact_request = {[](SmsConn, SmPointer, int) {}, self};
  callbacks->interact_done = {[](SmsConn, SmPointer, Bool) {}, self};
  callbacks->save_yourself_request = {[](SmsConn, SmPointer, int, Bool, int, Bool, Bool) {}, self};
  callbacks->save_yourself_phase2_request = {[](SmsConn, SmPointer) {}, self};
  callbacks->delete_properties = {[](SmsConn, SmPointer, int, char**) {}, self};
  callbacks->get_properties = {[](SmsConn, SmPointer) {}, self};
  return True;
}

void SessionManager::work(const std::stop_token& stop) {
  while (!stop.stop_requested()) {
    std::vector<pollfd> pollers;
    for (auto* const each : std::span(listeners_, static_cast<std::size_t>(listenerCount_)))
      pollers.push_back({IceGetListenConnectionNumber(each), POLLIN, 0});
    for (auto* const each : connections_) pollers.push_back({IceConnectionNumber(each), POLLIN, 0});
    poll(pollers.data(), pollers.size(), 10);
    const std::lock_guard lock(mutex_);
    for (const auto& each : pollers)
      if (each.revents != 0) process(each.fd);
  }
}

void SessionManager::process(int descriptor) {
  for (auto* const each : std::span(listeners_, static_cast<std::size_t>(listenerCount_))) {
    if (IceGetListenConnectionNumber(each) != descriptor) continue;
    IceAcceptStatus status{};
    if (auto* const accepted = IceAcceptConnection(each, &status)) connections_.push_back(accepted);
    return;
  }
  for (auto* const each : connections_) {
    if (IceConnectionNumber(each) != descriptor) continue;
    Bool isReply = False;
    if (IceProcessMessages(each, nullptr, &isReply) != IceProcessMessagesIOError) return;
    IceCloseConnection(each);
    std::erase(connections_, each);
    return;
  }
}

int SessionManager::timesSaved() const {
  const std::lock_guard lock(mutex_);
  return timesSaved_;
}

std::string SessionManager::property(const std::string& name) const {
  const std::lock_guard lock(mutex_);
  const auto found = properties_.find(name);
  return found == properties_.end() ? "" : found->second;
}

void SessionManager::askToSave(int type, bool endsSession) {
  const std::lock_guard lock(mutex_);
  endsSession_ = endsSession;
  SmsSaveYourself(client_, type, endsSession, SmInteractStyleNone, False);
}

void SessionManager::cancelShutdown() {
  const std::lock_guard lock(mutex_);
  SmsShutdownCancelled(client_);
}

void SessionManager::tellToDie() {
  const std::lock_guard lock(mutex_);
  SmsDie(client_);
}

void SessionManager::vanish() {
  const std::lock_guard lock(mutex_);
  shutdown(IceConnectionNumber(SmsGetIceConnection(client_)), SHUT_RDWR);
}

}  // namespace pellow::desktop
