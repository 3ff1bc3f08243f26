#include "platforms/linux/qt/display_text.h"

#include <QTextDocument>

namespace pellow {

QString toolTipText(const std::string& text) {
  const auto string = QString::fromStdString(text);
  if (!Qt::mightBeRichText(string)) return string;
  return string.toHtmlEscaped().replace('\n', "<br>");
}

// An ampersand would mark the letter after it.
QString titleText(const std::string& text) {
  return QString::fromStdString(text).replace('&', "&&");
}

}  // namespace pellow
