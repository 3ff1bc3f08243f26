#include "platforms/linux/x11/desktop_settings.h"

#include "base/unicode.h"
#include "platforms/linux/system/programs.h"
#include "platforms/linux/x11/settings_announcement.h"

namespace pellow {

std::optional<std::string> gsettingsText(const std::string& schema, const std::string& key,
                                         Deadline deadline) {
  const auto output = outputOf({"gsettings", "get", schema, key}, deadline.end);
  if (!output) return std::nullopt;
  const auto quoted = trimmed(*output);
  if (quoted.size() < 2 || quoted.front() != '\'' || quoted.back() != '\'') return std::nullopt;
  return std::string(quoted.substr(1, quoted.size() - 2));
}

std::optional<std::string> announcedText(X11Server& server, std::string_view name,
                                         Deadline deadline) {
  auto& connection = server.connection();
  const auto selectionName = "_XSETTINGS_S" + std::to_string(connection.screenNumber());
  auto pendingSelection = connection.pending<xcb_intern_atom_reply_t>(xcb_intern_atom(
      connection.raw(), 0, static_cast<std::uint16_t>(selectionName.size()), selectionName.data()));
  const auto selection = pendingSelection.collect(deadline);
  if (!selection) return std::nullopt;
  auto pending = connection.pending<xcb_get_selection_owner_reply_t>(
      xcb_get_selection_owner(connection.raw(), (*selection)->atom));
  const auto owner = pending.collect(deadline);
  if (!owner || (*owner)->owner == XCB_WINDOW_NONE) return std::nullopt;
  const auto settings =
      connection.property((*owner)->owner, server.atoms().xsettingsSettings).collect(deadline);
  if (!settings) return std::nullopt;
  return announcedText(settings->bytes, name);
}

}  // namespace pellow
