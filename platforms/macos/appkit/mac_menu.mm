#include "platforms/macos/appkit/mac_menu.h"

#include <utility>
#include <variant>

#include "platform/event_monitors.h"
#include "platforms/macos/appkit/one_line.h"
#include "platforms/macos/foundation/colour.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/symbol.h"
#include "platforms/macos/foundation/text.h"

// What an item does. Its item keeps it, as items do not keep their targets.
@interface PellowMenuAction : NSObject
- (instancetype)initWithAction:(std::function<void()>)action;
- (void)choose:(id)sender;
@end

@implementation PellowMenuAction {
  std::function<void()> _action;
}

- (instancetype)initWithAction:(std::function<void()>)action {
  if ((self = [super init])) _action = std::move(action);
  return self;
}

- (void)choose:(id)__unused sender {
  pellow::runInPool(_action);
}

@end

namespace pellow {
namespace {

constexpr double swatchSide = 12;  // points
constexpr double swatchRadius = 3;

static_assert(modifier::shift == NSEventModifierFlagShift);
static_assert(modifier::control == NSEventModifierFlagControl);
static_assert(modifier::option == NSEventModifierFlagOption);
static_assert(modifier::command == NSEventModifierFlagCommand);

// A block keeps a reference as it is: the paint comes as a copy.
NSImage* swatch(Paint paint) {
  return [NSImage imageWithSize:NSMakeSize(swatchSide, swatchSide)
                        flipped:NO
                 drawingHandler:^BOOL(NSRect area) {
                   [toNSColor(paint) setFill];
                   [[NSBezierPath bezierPathWithRoundedRect:area
                                                    xRadius:swatchRadius
                                                    yRadius:swatchRadius] fill];
                   return YES;
                 }];
}

NSImage* imageOf(const MenuItem& item) {
  if (const auto* shown = std::get_if<MenuSwatch>(&item.image)) return swatch(shown->paint);
  if (const auto* shown = std::get_if<MenuSymbol>(&item.image)) return symbolImage(shown->name);
  return nil;
}

void showKey(NSMenuItem* target, const KeyEquivalent& key) {
  if (key.characters.empty()) return;
  target.keyEquivalent = toNSString(key.characters).lowercaseString;  // upper case implies Shift
  target.keyEquivalentModifierMask = key.modifiers & modifier::all;   // else it is Command
}

NSMenuItem* makeItem(const MenuItem& item, const MenuChoice& choose) {
  if (item.isSeparator) return NSMenuItem.separatorItem;
  NSMenuItem* const made = [[NSMenuItem alloc] initWithTitle:toOneLine(item.title)
                                                      action:nullptr
                                               keyEquivalent:@""];
  made.image = imageOf(item);
  made.state = item.isChecked ? NSControlStateValueOn : NSControlStateValueOff;
  made.enabled = item.isEnabled && (item.onChosen || item.submenu);
  if (!item.tooltip.empty()) made.toolTip = toNSString(item.tooltip);
  showKey(made, item.key);
  if (item.submenu) {
    made.submenu = makeMenu(*item.submenu, choose);
  } else if (item.onChosen) {
    PellowMenuAction* const action = [[PellowMenuAction alloc]
        initWithAction:[choose, onChosen = item.onChosen] { choose(onChosen); }];
    made.representedObject = action;
    made.target = action;
    made.action = @selector(choose:);
  }
  return made;
}

}  // namespace

void fillMenu(NSMenu* target, const Menu& menu, const MenuChoice& choose) {
  target.autoenablesItems = NO;
  for (const auto& item : menu.items) [target addItem:makeItem(item, choose)];
}

NSMenu* makeMenu(const Menu& menu, const MenuChoice& choose) {
  NSMenu* const made = [[NSMenu alloc] initWithTitle:@""];
  fillMenu(made, menu, choose);
  return made;
}

}  // namespace pellow
