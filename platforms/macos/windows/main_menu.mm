#include "platforms/macos/windows/main_menu.h"

#import <AppKit/AppKit.h>

namespace {

void addItem(NSMenu* menu, NSString* title, SEL action, NSString* key,
             NSEventModifierFlags modifiers = NSEventModifierFlagCommand) {
  NSMenuItem* const item = [[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:key];
  item.keyEquivalentModifierMask = modifiers;
  [menu addItem:item];
}

void addSubmenu(NSMenu* bar, NSMenu* menu) {
  NSMenuItem* const item = [[NSMenuItem alloc] initWithTitle:menu.title
                                                      action:nil
                                               keyEquivalent:@""];
  item.submenu = menu;
  [bar addItem:item];
}

NSMenu* windowMenu() {
  NSMenu* const menu = [[NSMenu alloc] initWithTitle:@"Window"];
  addItem(menu, @"Close", @selector(performClose:), @"w");
  addItem(menu, @"Minimize", @selector(performMiniaturize:), @"m");
  return menu;
}

NSMenu* editMenu() {
  NSMenu* const menu = [[NSMenu alloc] initWithTitle:@"Edit"];
  addItem(menu, @"Undo", @selector(undo:), @"z");
  addItem(menu, @"Redo", @selector(redo:), @"z",
          NSEventModifierFlagCommand | NSEventModifierFlagShift);
  addItem(menu, @"Cut", @selector(cut:), @"x");
  addItem(menu, @"Copy", @selector(copy:), @"c");
  addItem(menu, @"Paste", @selector(paste:), @"v");
  addItem(menu, @"Select All", @selector(selectAll:), @"a");
  return menu;
}

}  // namespace

namespace pellow {

// The first submenu is the application's, whatever it holds.
void installMainMenu() {
  NSMenu* const bar = [[NSMenu alloc] initWithTitle:@""];
  addSubmenu(bar, [[NSMenu alloc] initWithTitle:@"Pellow"]);
  addSubmenu(bar, editMenu());
  addSubmenu(bar, windowMenu());
  NSApplication.sharedApplication.mainMenu = bar;
}

}  // namespace pellow
