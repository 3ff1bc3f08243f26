#pragma once

#include <QString>
#include <string>

// The program's texts, which Qt is to show to the letter: no mark-up, no marks for keys.

namespace pellow {

QString toolTipText(const std::string& text);
QString trayText(const std::string& text);
QString titleText(const std::string& text);

}  // namespace pellow
