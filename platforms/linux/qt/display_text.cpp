#include "platforms/linux/qt/display_text.h"

#include <QTextDocument>

namespace pellow {

QString toolTipText(const std::string& text) {
  const auto string = QString::fromStdString(text);
  if (!Qt::mightBeRichText(string)) return string;
  // The element says that it is rich, which an escaped text alone may hide.
  return "<div style='white-space:pre-wrap'>" + string.toHtmlEscaped() + "</div>";
}

// Some trays obey mark-up and others show it, so there is none to hide it behind.
QString trayText(const std::string& text) {
  return QString::fromStdString(text).replace('<', u'\u2039').replace('>', u'\u203A');
}

// An ampersand would mark the letter after it.
QString titleText(const std::string& text) {
  return QString::fromStdString(text).replace('&', "&&");
}

}  // namespace pellow
