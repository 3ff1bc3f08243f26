#include "platforms/linux/x11/x11_atoms.h"

#include <array>
#include <cstdlib>
#include <string_view>

namespace pellow {

namespace {

struct Name {
  xcb_atom_t X11Atoms::* atom;
  std::string_view text;
};

constexpr std::array names{
    Name{&X11Atoms::atSpiBus, "AT_SPI_BUS"},
    Name{&X11Atoms::gtkFrameExtents, "_GTK_FRAME_EXTENTS"},
    Name{&X11Atoms::gtkApplicationId, "_GTK_APPLICATION_ID"},
    Name{&X11Atoms::gtkThemeVariant, "_GTK_THEME_VARIANT"},
    Name{&X11Atoms::motifWMHints, "_MOTIF_WM_HINTS"},
    Name{&X11Atoms::netActiveWindow, "_NET_ACTIVE_WINDOW"},
    Name{&X11Atoms::netClientList, "_NET_CLIENT_LIST"},
    Name{&X11Atoms::netClientListStacking, "_NET_CLIENT_LIST_STACKING"},
    Name{&X11Atoms::netCurrentDesktop, "_NET_CURRENT_DESKTOP"},
    Name{&X11Atoms::netFrameExtents, "_NET_FRAME_EXTENTS"},
    Name{&X11Atoms::netMoveResizeWindow, "_NET_MOVERESIZE_WINDOW"},
    Name{&X11Atoms::netRequestFrameExtents, "_NET_REQUEST_FRAME_EXTENTS"},
    Name{&X11Atoms::netRestackWindow, "_NET_RESTACK_WINDOW"},
    Name{&X11Atoms::netShowingDesktop, "_NET_SHOWING_DESKTOP"},
    Name{&X11Atoms::netSupported, "_NET_SUPPORTED"},
    Name{&X11Atoms::netSupportingWMCheck, "_NET_SUPPORTING_WM_CHECK"},
    Name{&X11Atoms::netWMActionClose, "_NET_WM_ACTION_CLOSE"},
    Name{&X11Atoms::netWMActionMaximizeHorz, "_NET_WM_ACTION_MAXIMIZE_HORZ"},
    Name{&X11Atoms::netWMActionMaximizeVert, "_NET_WM_ACTION_MAXIMIZE_VERT"},
    Name{&X11Atoms::netWMActionMinimize, "_NET_WM_ACTION_MINIMIZE"},
    Name{&X11Atoms::netWMActionShade, "_NET_WM_ACTION_SHADE"},
    Name{&X11Atoms::netWMAllowedActions, "_NET_WM_ALLOWED_ACTIONS"},
    Name{&X11Atoms::netWMDesktop, "_NET_WM_DESKTOP"},
    Name{&X11Atoms::netWMIcon, "_NET_WM_ICON"},
    Name{&X11Atoms::netWMName, "_NET_WM_NAME"},
    Name{&X11Atoms::netWMPid, "_NET_WM_PID"},
    Name{&X11Atoms::netWMState, "_NET_WM_STATE"},
    Name{&X11Atoms::netWMStateFullscreen, "_NET_WM_STATE_FULLSCREEN"},
    Name{&X11Atoms::netWMStateHidden, "_NET_WM_STATE_HIDDEN"},
    Name{&X11Atoms::netWMStateMaximizedHorz, "_NET_WM_STATE_MAXIMIZED_HORZ"},
    Name{&X11Atoms::netWMStateMaximizedVert, "_NET_WM_STATE_MAXIMIZED_VERT"},
    Name{&X11Atoms::netWMStateShaded, "_NET_WM_STATE_SHADED"},
    Name{&X11Atoms::netWMStateSkipTaskbar, "_NET_WM_STATE_SKIP_TASKBAR"},
    Name{&X11Atoms::netWMStrut, "_NET_WM_STRUT"},
    Name{&X11Atoms::netWMStrutPartial, "_NET_WM_STRUT_PARTIAL"},
    Name{&X11Atoms::netWMWindowType, "_NET_WM_WINDOW_TYPE"},
    Name{&X11Atoms::netWMWindowTypeDialog, "_NET_WM_WINDOW_TYPE_DIALOG"},
    Name{&X11Atoms::netWMWindowTypeNormal, "_NET_WM_WINDOW_TYPE_NORMAL"},
    Name{&X11Atoms::netWMWindowTypeUtility, "_NET_WM_WINDOW_TYPE_UTILITY"},
    Name{&X11Atoms::netWorkarea, "_NET_WORKAREA"},
    Name{&X11Atoms::pellowHidden, "_PELLOW_HIDDEN"},
    Name{&X11Atoms::pellowState, "_PELLOW_STATE"},
    Name{&X11Atoms::pellowWindowID, "_PELLOW_WINDOW_ID"},
    Name{&X11Atoms::wmChangeState, "WM_CHANGE_STATE"},
    Name{&X11Atoms::wmState, "WM_STATE"},
    Name{&X11Atoms::xsettingsSettings, "_XSETTINGS_SETTINGS"},
};

xcb_intern_atom_cookie_t request(xcb_connection_t* connection, std::string_view name) {
  return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t collect(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie) {
  auto* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
  const xcb_atom_t atom = reply ? reply->atom : 0;
  std::free(reply);
  return atom;
}

}  // namespace

X11Atoms X11Atoms::intern(xcb_connection_t* connection) {
  std::array<xcb_intern_atom_cookie_t, names.size()> cookies;
  for (std::size_t i = 0; i < names.size(); ++i) cookies[i] = request(connection, names[i].text);
  X11Atoms atoms;
  for (std::size_t i = 0; i < names.size(); ++i)
    atoms.*names[i].atom = collect(connection, cookies[i]);
  return atoms;
}

xcb_atom_t internAtom(xcb_connection_t* connection, const std::string& name) {
  return collect(connection, request(connection, name));
}

}  // namespace pellow
