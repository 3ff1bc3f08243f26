#include "platforms/macos/windows/form_pane.h"

#include <algorithm>

#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/windows/form_row.h"

// Starts at the top of its scroller.
@interface PellowPaneStack : NSStackView
@end

@implementation PellowPaneStack

- (BOOL)isFlipped {
  return YES;
}

@end

namespace pellow {
namespace {

constexpr CGFloat spacing = 10;        // points between elements
constexpr CGFloat widestColumn = 240;  // points; a longer title stands alone

NSStackView* makeStack() {
  NSStackView* const stack = [[PellowPaneStack alloc] initWithFrame:NSZeroRect];
  stack.translatesAutoresizingMaskIntoConstraints = NO;
  stack.orientation = NSUserInterfaceLayoutOrientationVertical;
  stack.alignment = NSLayoutAttributeLeading;
  stack.spacing = spacing;
  stack.edgeInsets = NSEdgeInsetsMake(18, 20, 18, 20);
  return stack;
}

NSScrollView* makeScroller(NSStackView* stack) {
  NSScrollView* const scroller = [[NSScrollView alloc] initWithFrame:NSMakeRect(0, 0, 100, 100)];
  scroller.hasVerticalScroller = YES;
  scroller.autohidesScrollers = YES;
  scroller.drawsBackground = NO;
  scroller.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
  scroller.documentView = stack;
  NSClipView* const clip = scroller.contentView;
  [NSLayoutConstraint activateConstraints:@[
    [stack.topAnchor constraintEqualToAnchor:clip.topAnchor],
    [stack.leadingAnchor constraintEqualToAnchor:clip.leadingAnchor],
  ]];
  return scroller;
}

}  // namespace

FormPaneView::FormPaneView()
    : stack_(makeStack()), scroller_(makeScroller(stack_)), elements_(stack_) {}

FormPaneView::~FormPaneView() { keepUntilIdle(scroller_); }

void FormPaneView::showElements(const std::vector<FormElement>& elements) {
  elements_.show(elements, true);
  alignTitles();
}

// Controls beside titles start on one line.
void FormPaneView::alignTitles() {
  std::vector<TextControl*> titles;
  CGFloat column = 0;
  for (const auto& control : elements_.controls()) {
    const auto* const row = dynamic_cast<RowControl*>(control.get());
    auto* const title = row ? row->title() : nullptr;
    if (!title || title->ownWidth() > widestColumn) continue;
    titles.push_back(title);
    column = std::max(column, title->ownWidth());
  }
  for (auto* const title : titles) title->setColumn(column);
}

NSSize FormPaneView::fittingSize() const {
  const NSSize content = stack_.fittingSize;
  const CGFloat bar = [NSScroller scrollerWidthForControlSize:NSControlSizeRegular
                                                scrollerStyle:NSScroller.preferredScrollerStyle];
  return NSMakeSize(content.width + bar, content.height);
}

}  // namespace pellow
