#include "base/texts.h"

namespace pellow {

const Texts macTexts{
    .control = "⌃",
    .option = "⌥",
    .shift = "⇧",
    .command = "⌘",
    .betweenKeys = "",
    .settingsKey = ",",
    .quitKey = "q",

    .openSystemSettings = "Open System Settings",
    .accessibilityNeeded =
        "Pellow controls windows belonging to other apps, which macOS only allows with the "
        "Accessibility permission.\n\nOpen System Settings > Privacy & Security > Accessibility "
        "and enable Pellow. It will start working the moment you do, with no relaunch needed.",
    .screenRecordingNeeded =
        "You have real window images switched on, so Pellow photographs each window as you pellow "
        "it and flies that picture to its tab, the way the Dock does. macOS calls that Screen "
        "Recording.\n\nThe picture is taken once, while the window is still on screen, and never "
        "leaves your Mac. Nothing is recorded continuously.\n\nEnable Pellow in System Settings > "
        "Privacy & Security > Screen Recording, then relaunch Pellow from its menu.",
    .screenRecordingDenied =
        "Window thumbnails need Screen Recording permission. Enable Pellow in System Settings > "
        "Privacy & Security > Screen Recording, or turn thumbnails off in the Pellow menu.",
    .screenRecordingOff = "Screen Recording is off, so tabs show app icons",
    .screenRecordingLost =
        "macOS drops this permission when an app moves or is re-signed. Re-grant it and relaunch "
        "Pellow.",
    .screenRecordingExplained =
        "Optional. Lets the real window fly to its tab instead of the app icon. One photo per "
        "window, taken as you pellow it, never leaving your Mac.",
    .screenRecordingCaveat =
        "This may be wrong. Screen Recording is granted to an application\n"
        "bundle launched through LaunchServices, and this diagnostic is the\n"
        "bare executable started from a shell, which macOS can treat as a\n"
        "different thing. Accessibility is not fussy about this; Screen\n"
        "Recording is.\n"
        "Settings > Permissions inside the running app is the authority.\n"
        "If it says Granted there, the grant is fine and this line is noise.",

    .hideRefused = "macOS refused to hide that app.",
    .minimizeInstead =
        "They can be minimized to their tabs instead, which puts them away but leaves them in the "
        "Dock.",

    .minimizeTitle = "Minimize to Dock (genie animation)",
    .offscreenTitle = "Slide off-screen (no Dock, animates to tab)",
    .hideAppTitle = "Hide whole app (no Dock, animates to tab)",
    .minimizeNote =
        "Minimize is the only mechanism macOS animates itself, and that genie cannot be redirected "
        "to the tab.",
    .offscreenIsMinimize =
        "Windows cannot leave the screen here, so \"Slide off-screen\" minimizes them instead.",
    .minimizeFlightNote =
        "Not used in minimize mode: macOS plays its own genie animation there and it cannot be "
        "suppressed.",
    .pellowOnMinimizeNote =
        "The yellow button, Cmd-M, or an app's own Window menu. Turn this off to use the hover "
        "palette only.",
    .restoreOnActivationNote =
        "Cmd-Tab, the Dock, anything. Without this, switching to an app whose windows are all "
        "pellowed leaves you on a frontmost app with nothing on screen.",

    .needsModifier = "A shortcut without ⌘, ⌥ or ⌃ would fire while you were typing.",
    .systemUsesShortcut = "macOS uses that shortcut",
    .systemShortcut = "a macOS shortcut",
    .clashesNote =
        "Pellow watches for these without taking them over, so a shortcut shared with the app you "
        "are in will trigger both. Clashes with macOS's own shortcuts are flagged; clashes with "
        "other apps cannot be detected.",

    .syncTitle = "Sync settings across my Macs with iCloud",
    .syncNote =
        "Zones, pins, shortcuts and preferences. Tabs themselves are never synced: a tab points at "
        "a window on this Mac, which does not exist on another. ",
    .syncPlace = "iCloud Drive › Pellow › settings.json",
    .syncUnavailable = "iCloud Drive is not available on this Mac.",
    .syncApplied = "Applied settings from iCloud",
    .updatesNote =
        "Pellow checks once a day and puts a dot on its menu bar icon if there is something new. "
        "It never installs on its own: installing restarts Pellow, and restarting puts all of your "
        "pellowed windows back on screen.",

    .firstMinute = "",
};

const Texts x11Texts{
    .control = "Ctrl",
    .option = "Alt",
    .shift = "Shift",
    .command = "Super",
    .betweenKeys = "+",
    .settingsKey = "",
    .quitKey = "",

    .openSystemSettings = "Open Settings",
    .accessibilityNeeded =
        "Pellow controls windows belonging to other apps, which this desktop does not allow at the "
        "moment.\n\nAllow it in the settings of your desktop. Pellow will start working the moment "
        "you do, with no relaunch needed.",
    .screenRecordingNeeded =
        "You have real window images switched on, so Pellow photographs each window as you pellow "
        "it and flies that picture to its tab. This display does not let programs take pictures of "
        "windows.\n\nThe picture is taken once, while the window is still on screen, and never "
        "leaves your computer. Nothing is recorded continuously.\n\nSwitch on the Composite "
        "extension of the display, then relaunch Pellow from its menu.",
    .screenRecordingDenied =
        "Window thumbnails need pictures of windows, which this display does not give. Switch on "
        "its Composite extension, or turn thumbnails off in the settings of Pellow.",
    .screenRecordingOff = "This display gives no pictures, so tabs show app icons",
    .screenRecordingLost =
        "This display does not let programs take pictures of windows. Switch on its Composite "
        "extension and relaunch Pellow.",
    .screenRecordingExplained =
        "Optional. Lets the real window fly to its tab instead of the app icon. One photo per "
        "window, taken as you pellow it, never leaving your computer.",
    .screenRecordingCaveat =
        "The X server of this display lacks what pictures of windows need:\n"
        "the extensions Composite, Damage, XFixes and Shape. Nothing else is\n"
        "asked for here; no permission of the desktop is missing.",

    .hideRefused = "The window manager refused to hide that app.",
    .minimizeInstead =
        "They can be minimized to their tabs instead, which puts them away but leaves them in the "
        "taskbar.",

    .minimizeTitle = "Minimize (the desktop's own animation)",
    .offscreenTitle = "Slide off-screen (animates to tab)",
    .hideAppTitle = "Hide whole app (animates to tab)",
    .minimizeNote =
        "Minimize is the only mechanism the desktop animates itself, and that animation cannot be "
        "redirected to the tab.",
    .offscreenIsMinimize =
        "This desktop keeps windows on its screen, so \"Slide off-screen\" minimizes them here.",
    .minimizeFlightNote =
        "Not used in minimize mode: the desktop plays its own animation there and it cannot be "
        "suppressed.",
    .pellowOnMinimizeNote =
        "The minimize button, a shortcut, or the window's own menu. Turn this off to use the hover "
        "palette only.",
    .restoreOnActivationNote =
        "Alt+Tab, the taskbar, anything. Without this, switching to an app whose windows are all "
        "pellowed leaves you on a frontmost app with nothing on screen.",

    .needsModifier = "A shortcut without Super, Alt or Ctrl would fire while you were typing.",
    .systemUsesShortcut = "Your desktop uses that shortcut",
    .systemShortcut = "a desktop shortcut",
    .clashesNote =
        "Pellow watches for these without taking them over, so a shortcut shared with the app you "
        "are in will trigger both. Clashes with your desktop's own shortcuts are flagged; clashes "
        "with other apps cannot be detected.",

    .syncTitle = "Sync settings across my computers with a shared folder",
    .syncNote =
        "Zones, pins, shortcuts and preferences. Tabs themselves are never synced: a tab points at "
        "a window on this computer, which does not exist on another. ",
    .syncPlace = "Shared folder › Pellow › settings.json",
    .syncUnavailable =
        "There is no shared folder yet: link one to ~/Library/Mobile "
        "Documents/com~apple~CloudDocs.",
    .syncApplied = "Applied settings from the shared folder",
    .updatesNote =
        "Pellow checks once a day and puts a dot on its icon in the panel if there is something "
        "new. It never installs anything.",

    .firstMinute =
        "Go to any other window and press {0}: it becomes a tab at the side of the screen. A click "
        "on the tab brings it back, {1} brings all of them. {2} puts everything else away.",
};

}  // namespace pellow
