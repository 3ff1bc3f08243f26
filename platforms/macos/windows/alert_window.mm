#include "platforms/macos/windows/alert_window.h"

#include <utility>

#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"

namespace {

constexpr CGFloat textWidth = 380;   // points
constexpr CGFloat iconSide = 56;     // points
constexpr CGFloat margin = 20;       // points
constexpr CGFloat buttonWidth = 76;  // points, at least

NSImageView* makeIcon(pellow::AlertStyle style) {
  NSImage* const image = style == pellow::AlertStyle::warning
                             ? [NSImage imageNamed:NSImageNameCaution]
                             : NSApp.applicationIconImage;
  NSImageView* const view = [[NSImageView alloc] initWithFrame:NSZeroRect];
  view.image = image;
  view.imageScaling = NSImageScaleProportionallyUpOrDown;
  [view.widthAnchor constraintEqualToConstant:iconSide].active = YES;
  [view.heightAnchor constraintEqualToConstant:iconSide].active = YES;
  return view;
}

NSTextField* makeText(const std::string& text, NSFont* font) {
  NSTextField* const label = [NSTextField wrappingLabelWithString:pellow::toNSString(text)];
  label.selectable = NO;
  label.font = font;
  label.preferredMaxLayoutWidth = textWidth;
  [label.widthAnchor constraintEqualToConstant:textWidth].active = YES;
  return label;
}

NSStackView* makeTexts(const pellow::Alert& alert) {
  NSFont* const bold = [NSFont boldSystemFontOfSize:NSFont.systemFontSize];
  NSStackView* const texts =
      [NSStackView stackViewWithViews:@[ makeText(alert.messageText, bold) ]];
  texts.orientation = NSUserInterfaceLayoutOrientationVertical;
  texts.alignment = NSLayoutAttributeLeading;
  texts.spacing = 8;
  if (!alert.informativeText.empty()) {
    NSFont* const plain = [NSFont systemFontOfSize:NSFont.smallSystemFontSize];
    [texts addArrangedSubview:makeText(alert.informativeText, plain)];
  }
  return texts;
}

}  // namespace

@implementation PellowAlertWindow {
  std::size_t _lastButton;
}

- (instancetype)initWithAlert:(const pellow::Alert&)alert {
  if ((self = [super initWithContentRect:NSZeroRect
                               styleMask:NSWindowStyleMaskTitled
                                 backing:NSBackingStoreBuffered
                                   defer:YES])) {
    _lastButton = alert.buttons.size() - 1;
    self.title = @"Pellow";
    self.identifier = @"pellow-alert";
    self.releasedWhenClosed = NO;
    self.level = NSModalPanelWindowLevel;
    self.canHide = NO;  // nothing else would tell of it
    self.autorecalculatesKeyViewLoop = YES;
    self.acceptsMouseMovedEvents = YES;  // for the local monitors
    self.collectionBehavior =
        NSWindowCollectionBehaviorMoveToActiveSpace | NSWindowCollectionBehaviorFullScreenAuxiliary;
    [self arrange:makeIcon(alert.style)
            texts:makeTexts(alert)
          buttons:[self makeButtons:alert.buttons]];
  }
  return self;
}

- (NSStackView*)makeButtons:(const std::vector<std::string>&)titles {
  NSMutableArray<NSView*>* const buttons = [NSMutableArray array];
  for (std::size_t index = 0; index < titles.size(); ++index) {
    NSButton* const button = [NSButton buttonWithTitle:pellow::toNSString(titles[index])
                                                target:self
                                                action:@selector(press:)];
    button.tag = static_cast<NSInteger>(index);
    if (index == 0) button.keyEquivalent = @"\r";
    [button.widthAnchor constraintGreaterThanOrEqualToConstant:buttonWidth].active = YES;
    [buttons insertObject:button atIndex:0];
  }
  self.initialFirstResponder = buttons.lastObject;
  return [NSStackView stackViewWithViews:buttons];
}

//   +--------------------------------------+
//   | icon  message                        |
//   |       text                           |
//   |                   [ last ] [ first ] |
//   +--------------------------------------+
- (void)arrange:(NSView*)icon texts:(NSView*)texts buttons:(NSView*)buttons {
  NSView* const content = [[NSView alloc] initWithFrame:NSZeroRect];
  for (NSView* const part in @[ icon, texts, buttons ]) {
    part.translatesAutoresizingMaskIntoConstraints = NO;
    [content addSubview:part];
  }
  [NSLayoutConstraint activateConstraints:@[
    [icon.topAnchor constraintEqualToAnchor:content.topAnchor constant:margin],
    [icon.leadingAnchor constraintEqualToAnchor:content.leadingAnchor constant:margin],
    [texts.topAnchor constraintEqualToAnchor:icon.topAnchor],
    [texts.leadingAnchor constraintEqualToAnchor:icon.trailingAnchor constant:16],
    [content.trailingAnchor constraintGreaterThanOrEqualToAnchor:texts.trailingAnchor
                                                        constant:margin],
    [buttons.topAnchor constraintGreaterThanOrEqualToAnchor:texts.bottomAnchor constant:margin],
    [buttons.topAnchor constraintGreaterThanOrEqualToAnchor:icon.bottomAnchor constant:margin],
    [buttons.leadingAnchor constraintGreaterThanOrEqualToAnchor:content.leadingAnchor
                                                       constant:margin],
    [content.trailingAnchor constraintEqualToAnchor:buttons.trailingAnchor constant:margin],
    [content.bottomAnchor constraintEqualToAnchor:buttons.bottomAnchor constant:margin],
  ]];
  [self setContentSize:content.fittingSize];
  self.contentView = content;
  [self center];
}

// It may come above one of Sparkle's alerts, which are modal and would let nobody answer it.
- (BOOL)worksWhenModal {
  return YES;
}

- (void)press:(NSButton*)sender {
  [self answer:static_cast<std::size_t>(sender.tag)];
}

// Escape and Command-period.
- (void)cancelOperation:(id)sender {
  [self answer:_lastButton];
}

- (void)answer:(std::size_t)button {
  pellow::runInPool([&] {
    if (const auto answered = std::exchange(onAnswer, nullptr)) answered(button);
  });
}

@end
