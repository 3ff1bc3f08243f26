#include "platforms/posix/standard_output.h"

#include <cstdio>

namespace pellow {

void printLine(std::string_view line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

}  // namespace pellow
