#include "platforms/linux/qt/display_text.h"

#include <gtest/gtest.h>

#include <QTextDocument>
#include <QTextDocumentFragment>

namespace pellow {
namespace {

// As the label of a tooltip reads a text.
QString shown(const QString& text) {
  return Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
}

TEST(DisplayText, IsShownToTheLetter) {
  for (const char* title :
       {"plain & simple", "<b>bold</b>", "a &lt; b", "&amp;lt;", "two\nlines  <i>slanted</i>",
        "<?xml version='1.0'?><img src='file:///etc/passwd'>"}) {
    EXPECT_EQ(shown(toolTipText(title)).toStdString(), title);
    EXPECT_FALSE(trayText(title).contains('<'));
  }
}

}  // namespace
}  // namespace pellow
