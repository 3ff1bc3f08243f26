#include "platforms/macos/windows/form_texts.h"

#include "platforms/macos/foundation/symbol.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

constexpr CGFloat widestLine = 420;    // points
constexpr CGFloat sectionAir = 8;      // points above the title of a section
constexpr CGFloat symbolDistance = 5;  // points
constexpr CGFloat textPointSize = 13;
constexpr CGFloat secondaryPointSize = 11;

NSFont* fontOf(FormTextStyle style) {
  switch (style) {
    case FormTextStyle::section:
      return [NSFont boldSystemFontOfSize:textPointSize];
    case FormTextStyle::secondary:
      return [NSFont systemFontOfSize:secondaryPointSize];
    case FormTextStyle::body:
      break;
  }
  return [NSFont systemFontOfSize:textPointSize];
}

NSColor* colourOf(FormTextStyle style, bool isEnabled) {
  if (!isEnabled) return NSColor.disabledControlTextColor;
  return style == FormTextStyle::secondary ? NSColor.secondaryLabelColor : NSColor.labelColor;
}

NSColor* colourOf(FormStatus::Tint tint, bool isEnabled) {
  if (!isEnabled) return NSColor.disabledControlTextColor;
  return tint == FormStatus::Tint::good ? NSColor.systemGreenColor : NSColor.systemOrangeColor;
}

}  // namespace

TextControl::TextControl() : TextControl([NSTextField wrappingLabelWithString:@""]) {}

TextControl::TextControl(NSTextField* label)
    : TextControl(label, [NSStackView stackViewWithViews:@[ label ]]) {}

TextControl::TextControl(NSTextField* label, NSStackView* around)
    : FormControl(around),
      label_(label),
      around_(around),
      column_([label.widthAnchor constraintGreaterThanOrEqualToConstant:0]) {
  around_.orientation = NSUserInterfaceLayoutOrientationVertical;
  around_.alignment = NSLayoutAttributeLeading;
  label_.selectable = NO;
  label_.preferredMaxLayoutWidth = widestLine;
  [label_ setContentHuggingPriority:NSLayoutPriorityDefaultHigh
                     forOrientation:NSLayoutConstraintOrientationHorizontal];
  [label_ setContentCompressionResistancePriority:NSLayoutPriorityDefaultHigh
                                   forOrientation:NSLayoutConstraintOrientationHorizontal];
  column_.active = YES;
}

void TextControl::showContent(const FormContent& content, bool isEnabled) {
  const auto& shown = std::get<FormText>(content);
  style_ = shown.style;
  showText(label_, shown.text);
  label_.font = fontOf(style_);
  label_.textColor = colourOf(style_, isEnabled);
  around_.edgeInsets = NSEdgeInsetsMake(style_ == FormTextStyle::section ? sectionAir : 0, 0, 0, 0);
}

void TextControl::setColumn(CGFloat width) {
  if (column_.constant != width) column_.constant = width;
}

StatusControl::StatusControl()
    : StatusControl([[NSImageView alloc] initWithFrame:NSZeroRect],
                    [NSTextField labelWithString:@""]) {}

StatusControl::StatusControl(NSImageView* symbol, NSTextField* label)
    : FormControl([NSStackView stackViewWithViews:@[ symbol, label ]]),
      symbol_(symbol),
      label_(label) {
  static_cast<NSStackView*>(view()).spacing = symbolDistance;
}

void StatusControl::showContent(const FormContent& content, bool isEnabled) {
  const auto& shown = std::get<FormStatus>(content);
  if (shown.symbol != shownSymbol_) symbol_.image = symbolImage(shown.symbol);
  shownSymbol_ = shown.symbol;
  showText(label_, shown.text);
  symbol_.contentTintColor = colourOf(shown.tint, isEnabled);
  label_.textColor = colourOf(shown.tint, isEnabled);
}

}  // namespace pellow
