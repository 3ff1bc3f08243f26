#pragma once

#include <xcb/xcb.h>

#include <string>

namespace pellow {

// The numbers of the X server for the names that the adapter uses; the same on all connections.
struct X11Atoms {
  xcb_atom_t atSpiBus = 0;
  xcb_atom_t gtkFrameExtents = 0;
  xcb_atom_t gtkApplicationId = 0;
  xcb_atom_t gtkThemeVariant = 0;
  xcb_atom_t motifWMHints = 0;
  xcb_atom_t netActiveWindow = 0;
  xcb_atom_t netClientList = 0;
  xcb_atom_t netClientListStacking = 0;
  xcb_atom_t netCurrentDesktop = 0;
  xcb_atom_t netFrameExtents = 0;
  xcb_atom_t netMoveResizeWindow = 0;
  xcb_atom_t netRequestFrameExtents = 0;
  xcb_atom_t netRestackWindow = 0;
  xcb_atom_t netShowingDesktop = 0;
  xcb_atom_t netSupported = 0;
  xcb_atom_t netSupportingWMCheck = 0;
  xcb_atom_t netWMActionClose = 0;
  xcb_atom_t netWMActionMaximizeHorz = 0;
  xcb_atom_t netWMActionMaximizeVert = 0;
  xcb_atom_t netWMActionMinimize = 0;
  xcb_atom_t netWMActionShade = 0;
  xcb_atom_t netWMAllowedActions = 0;
  xcb_atom_t netWMDesktop = 0;
  xcb_atom_t netWMIcon = 0;
  xcb_atom_t netWMName = 0;
  xcb_atom_t netWMPid = 0;
  xcb_atom_t netWMState = 0;
  xcb_atom_t netWMStateFullscreen = 0;
  xcb_atom_t netWMStateHidden = 0;
  xcb_atom_t netWMStateMaximizedHorz = 0;
  xcb_atom_t netWMStateMaximizedVert = 0;
  xcb_atom_t netWMStateShaded = 0;
  xcb_atom_t netWMStateSkipTaskbar = 0;
  xcb_atom_t netWMStrut = 0;
  xcb_atom_t netWMStrutPartial = 0;
  xcb_atom_t netWMWindowType = 0;
  xcb_atom_t netWMWindowTypeDialog = 0;
  xcb_atom_t netWMWindowTypeNormal = 0;
  xcb_atom_t netWMWindowTypeUtility = 0;
  xcb_atom_t netWorkarea = 0;
  xcb_atom_t pellowHidden = 0;    // on windows of an application that Pellow has hidden
  xcb_atom_t pellowState = 0;     // the maximized or full-screen state that a window has left
  xcb_atom_t pellowWindowID = 0;  // tells windows apart that had the same XID in turn
  xcb_atom_t wmChangeState = 0;
  xcb_atom_t wmState = 0;
  xcb_atom_t xsettingsSettings = 0;

  static X11Atoms intern(xcb_connection_t* connection);
};

// The atom of a name that depends on the X screen, such as the instance selection; 0 when the
// connection is lost.
xcb_atom_t internAtom(xcb_connection_t* connection, const std::string& name);

}  // namespace pellow
