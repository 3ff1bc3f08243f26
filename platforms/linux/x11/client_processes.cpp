#include "platforms/linux/x11/client_processes.h"

#include <signal.h>
#include <unistd.h>
#include <xcb/res.h>

#include <array>
#include <cerrno>
#include <map>
#include <set>
#include <string_view>

namespace pellow {

namespace {

using Client = std::uint32_t;  // the part of an XID that all windows of a connection share

Client clientOf(const X11Connection& connection, xcb_window_t window) {
  return window & ~xcb_get_setup(connection.raw())->resource_id_mask;
}

ProcessID numberWithoutProcess(const X11Connection& connection, Client client) {
  const auto perClient = xcb_get_setup(connection.raw())->resource_id_mask + 1;
  return -static_cast<ProcessID>(client / perClient) - 1;
}

std::map<Client, ProcessID> askServer(X11Connection& connection, const std::set<Client>& clients,
                                      Deadline deadline) {
  const auto* extension = xcb_get_extension_data(connection.raw(), &xcb_res_id);
  if (!extension || !extension->present || clients.empty()) return {};
  std::vector<xcb_res_client_id_spec_t> specs;
  specs.reserve(clients.size());
  for (const auto client : clients)
    specs.push_back({client, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID});
  auto pending = connection.pending<xcb_res_query_client_ids_reply_t>(xcb_res_query_client_ids(
      connection.raw(), static_cast<std::uint32_t>(specs.size()), specs.data()));
  const auto reply = pending.collect(deadline);
  if (!reply) return {};

  std::map<Client, ProcessID> processes;
  for (auto ids = xcb_res_query_client_ids_ids_iterator(reply->get()); ids.rem > 0;
       xcb_res_client_id_value_next(&ids)) {
    if (xcb_res_client_id_value_value_length(ids.data) < 1) continue;
    const auto pid = static_cast<ProcessID>(*xcb_res_client_id_value_value(ids.data));
    if (pid > 0) processes[ids.data->spec.client] = pid;
  }
  return processes;
}

std::string hostName() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0) return {};
  return name.data();
}

// What a window says of itself, where it can be believed.
std::optional<ProcessID> askWindow(X11Server& server, X11Connection& connection,
                                   xcb_window_t window, Deadline deadline) {
  auto pendingPid = connection.property(window, server.atoms().netWMPid);
  auto pendingMachine = connection.property(window, XCB_ATOM_WM_CLIENT_MACHINE);
  const auto pid = pendingPid.collect(deadline);
  const auto machine = pendingMachine.collect(deadline);
  if (!pid || !machine) return 0;
  const std::string_view name =
      std::string_view(machine->bytes).substr(0, machine->bytes.find('\0'));
  const auto number = static_cast<ProcessID>(pid->firstWord().value_or(0));
  return number > 0 && name == hostName() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::vector<ProcessID> owningProcesses(X11Server& server, const std::vector<xcb_window_t>& windows,
                                       Deadline deadline) {
  auto& connection = server.connection();
  if (connection.isLost()) return std::vector<ProcessID>(windows.size(), 0);
  std::vector<ProcessID> owners;
  std::set<Client> clients;
  for (const auto window : windows) {
    // The number of an ended process's window may now be another's.
    const auto known = server.knownOwner(window).value_or(0);
    owners.push_back(isAlive(known) ? known : 0);
    if (owners.back() == 0) clients.insert(clientOf(connection, window));
  }
  const auto processes = askServer(connection, clients, deadline);
  for (std::size_t i = 0; i < windows.size(); ++i) {
    if (owners[i] != 0) continue;
    const auto client = clientOf(connection, windows[i]);
    const auto found = processes.find(client);
    owners[i] = found != processes.end() ? found->second
                                         : askWindow(server, connection, windows[i], deadline)
                                               .value_or(numberWithoutProcess(connection, client));
  }
  return owners;
}

bool isAlive(ProcessID pid) { return pid > 0 && (kill(pid, 0) == 0 || errno == EPERM); }

}  // namespace pellow
