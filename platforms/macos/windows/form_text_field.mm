#include "platforms/macos/windows/form_text_field.h"

#include <functional>
#include <utility>

#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"

@interface PellowTextFieldDelegate : NSObject <NSTextFieldDelegate> {
 @public
  std::function<void()> onTyped;
  std::function<void()> onEnded;
  std::function<bool()> onCancelled;  // whether that did anything
}
@end

@implementation PellowTextFieldDelegate

- (void)controlTextDidChange:(NSNotification*)notification {
  if (onTyped) onTyped();
}

- (void)controlTextDidEndEditing:(NSNotification*)notification {
  if (onEnded) onEnded();
}

- (BOOL)control:(NSControl*)control
               textView:(NSTextView*)textView
    doCommandBySelector:(SEL)command {
  return command == @selector(cancelOperation:) && onCancelled && onCancelled();
}

@end

namespace pellow {
namespace {

constexpr CGFloat fieldWidth = 150;  // points

}  // namespace

TextFieldControl::TextFieldControl() : TextFieldControl([NSTextField textFieldWithString:@""]) {}

TextFieldControl::TextFieldControl(NSTextField* control)
    : FormControl(control), control_(control), delegate_([[PellowTextFieldDelegate alloc] init]) {
  delegate_->onTyped = [this] { isEdited_ = true; };
  delegate_->onEnded = [this] { ended(); };
  delegate_->onCancelled = [this] { return cancelled(); };
  control_.delegate = delegate_;
  suggestWidth(control_, fieldWidth);
}

// A field whose text is thrown away with it tells nothing.
TextFieldControl::~TextFieldControl() {
  delegate_->onTyped = nullptr;
  delegate_->onEnded = nullptr;
  delegate_->onCancelled = nullptr;
}

void TextFieldControl::setName(NSString* name) { control_.accessibilityLabel = name; }

void TextFieldControl::showContent(const FormContent& content, bool isEnabled) {
  field_ = std::get<TextField>(content);
  if (!isEdited_) showFormText();
  if (control_.enabled != isEnabled) control_.enabled = isEnabled;
}

// Return selects the text and goes on editing. What is being edited is the window's field editor,
// and the field takes its text over at the end.
void TextFieldControl::showFormText() {
  NSText* const editor = control_.currentEditor;
  if (!editor) return showText(control_, field_.text);
  NSString* const string = toNSString(field_.text);
  if ([editor.string isEqualToString:string]) return;
  editor.string = string;
  [editor selectAll:nil];
}

// Reports when AppKit is done with the editor, which the form may take away with the field.
void TextFieldControl::ended() {
  if (!std::exchange(isEdited_, false)) return;
  hopToMain([this, isAlive = std::weak_ptr(isAlive_), typed = toText(control_.stringValue)] {
    if (isAlive.expired()) return;
    if (!isEdited_) showFormText();
    report(field_.onEnded, typed);
  });
}

bool TextFieldControl::cancelled() {
  if (!std::exchange(isEdited_, false)) return false;
  showFormText();
  return true;
}

}  // namespace pellow
