#pragma once

#include <QString>
#include <string>

// Texts of the program as Qt shows them to the letter: without mark-up and without marks for keys.

namespace pellow {

QString toolTipText(const std::string& text);
QString titleText(const std::string& text);

}  // namespace pellow
