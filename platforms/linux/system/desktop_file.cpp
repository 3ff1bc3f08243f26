#include "platforms/linux/system/desktop_file.h"

namespace pellow {

// Inside the quotes a backslash escapes a character, and "%" is doubled; and as everywhere in a
// desktop file, each backslash is written as two.
std::string execValue(const std::filesystem::path& program) {
  std::string quoted = "\"";
  for (const char character : program.native()) {
    if (character == '\\') {
      quoted += R"(\\\\)";
    } else if (character == '"' || character == '`' || character == '$') {
      quoted += R"(\\)";
      quoted += character;
    } else if (character == '%') {
      quoted += "%%";
    } else if (character == '\n') {
      quoted += R"(\n)";
    } else {
      quoted += character;
    }
  }
  return quoted + '"';
}

std::string tryExecValue(const std::filesystem::path& program) {
  std::string escaped;
  for (const char character : program.native()) {
    if (character == '\\') escaped += '\\';
    if (character == '\n')
      escaped += R"(\n)";
    else
      escaped += character;
  }
  return escaped;
}

}  // namespace pellow
