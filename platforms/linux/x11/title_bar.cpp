#include "platforms/linux/x11/title_bar.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "platforms/linux/x11/text_encoding.h"

namespace pellow {

namespace {

namespace fs = std::filesystem;

struct Child {
  xcb_window_t window = XCB_WINDOW_NONE;
  int x = 0;
};

// The square windows of a title bar that are shown, from left to right. Labels, grips and edges are
// not square.
std::vector<Child> squaresIn(X11Connection& connection, xcb_window_t title, Deadline deadline) {
  auto pendingTree =
      connection.pending<xcb_query_tree_reply_t>(xcb_query_tree(connection.raw(), title));
  const auto tree = pendingTree.collect(deadline);
  if (!tree) return {};
  struct Look {
    xcb_window_t window;
    PendingReply<xcb_get_geometry_reply_t> geometry;
    PendingReply<xcb_get_window_attributes_reply_t> attributes;
  };
  std::vector<Look> looks;
  const auto* windows = xcb_query_tree_children(tree->get());
  const int count = xcb_query_tree_children_length(tree->get());
  for (int i = 0; i < count; ++i)
    looks.push_back({windows[i],
                     connection.pending<xcb_get_geometry_reply_t>(
                         xcb_get_geometry(connection.raw(), windows[i])),
                     connection.pending<xcb_get_window_attributes_reply_t>(
                         xcb_get_window_attributes(connection.raw(), windows[i]))});
  std::vector<Child> squares;
  for (auto& look : looks) {
    const auto geometry = look.geometry.collect(deadline);
    const auto attributes = look.attributes.collect(deadline);
    if (!geometry || !attributes || (*geometry)->width != (*geometry)->height) continue;
    if ((*attributes)->map_state == XCB_MAP_STATE_VIEWABLE)
      squares.push_back({look.window, (*geometry)->x});
  }
  std::ranges::sort(squares, {}, &Child::x);
  return squares;
}

std::string environmentOr(const char* name, const std::string& otherwise) {
  const char* value = std::getenv(name);
  return value && *value ? value : otherwise;
}

// Where openbox looks for its configuration, in its order; it tells of a file only when it was
// started with it.
std::vector<fs::path> openboxConfigurations(const std::string& named) {
  if (!named.empty()) return {named};
  const fs::path file = fs::path("openbox") / "rc.xml";
  std::vector<fs::path> files{
      fs::path(environmentOr("XDG_CONFIG_HOME", environmentOr("HOME", "") + "/.config")) / file};
  std::istringstream folders(environmentOr("XDG_CONFIG_DIRS", "/etc/xdg"));
  for (std::string folder; std::getline(folders, folder, ':');)
    files.push_back(fs::path(folder) / file);
  return files;
}

// A letter for each part of the title bar, from left to right: N icon, L label, I iconify,
// M maximize, C close, S shade, D all desktops.
std::string openboxLayout(const std::vector<fs::path>& configurations) {
  const std::string usual = "NLIMC";
  for (const auto& path : configurations) {
    std::ifstream file(path);
    if (!file) continue;
    std::string text((std::istreambuf_iterator<char>(file)), {});
    while (text.contains("<!--")) {
      const auto begin = text.find("<!--");
      const auto end = text.find("-->", begin);
      text.erase(begin, end == std::string::npos ? end : end + 3 - begin);
    }
    constexpr std::string_view opening = "<titleLayout>";
    const auto begin = text.find(opening);
    if (begin == std::string::npos) return usual;
    const auto first = begin + opening.size();
    return text.substr(first, text.find('<', first) - first);
  }
  return usual;
}

// The letters of the buttons that a window with these actions gets.
std::string shownButtons(const std::string& layout, const XProperty& actions,
                         const X11Atoms& atoms) {
  const auto isShown = [&](char letter) {
    switch (letter) {
      case 'N':
        return true;
      case 'I':
        return actions.contains(atoms.netWMActionMinimize);
      case 'M':
        return actions.contains(atoms.netWMActionMaximizeHorz) ||
               actions.contains(atoms.netWMActionMaximizeVert);
      case 'C':
        return actions.contains(atoms.netWMActionClose);
      case 'S':
        return actions.contains(atoms.netWMActionShade);
      case 'D':
        return actions.contains(atoms.netWMActionChangeDesktop);
      default:
        return false;
    }
  };
  std::string shown;
  std::ranges::copy_if(layout, std::back_inserter(shown), isShown);
  return shown;
}

bool isOpenboxButton(X11Server& server, xcb_window_t button, xcb_window_t title,
                     xcb_window_t client, Deadline deadline) {
  auto& connection = server.connection();
  const auto& atoms = server.atoms();
  auto pendingFile = connection.property(connection.root(), atoms.obConfigFile);
  auto pendingActions = connection.property(client, atoms.netWMAllowedActions);
  const auto squares = squaresIn(connection, title, deadline);
  const auto file = pendingFile.collect(deadline);
  const auto actions = pendingActions.collect(deadline);
  if (!file || !actions) return false;
  const auto name = file->bytes.substr(0, file->bytes.find('\0'));
  const auto buttons = shownButtons(openboxLayout(openboxConfigurations(name)), *actions, atoms);
  // Where there is no room for all of them, some are left out.
  if (buttons.size() != squares.size()) return false;
  const auto minimize = buttons.find('I');
  return minimize != std::string::npos && squares[minimize].window == button;
}

bool isNamedMinimize(X11Server& server, xcb_window_t button, Deadline deadline) {
  auto& connection = server.connection();
  const auto name = connection.property(button, XCB_ATOM_WM_NAME).collect(deadline);
  return name && name->bytes == "Minimize";
}

}  // namespace

bool isMinimizeButton(X11Server& server, xcb_window_t button, xcb_window_t title,
                      xcb_window_t client, Deadline deadline) {
  const auto windowManager = server.windowManagerName();
  if (windowManager.starts_with("Openbox"))
    return isOpenboxButton(server, button, title, client, deadline);
  if (windowManager.starts_with("IceWM")) return isNamedMinimize(server, button, deadline);
  return false;
}

}  // namespace pellow
