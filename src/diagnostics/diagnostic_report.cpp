#include "diagnostics/diagnostic_report.h"

#include <fmt/format.h>

#include <utility>

#include "access/pellow_error.h"
#include "base/unicode.h"

namespace pellow {
namespace {

std::string pair(double x, double y) {
  return fmt::format("({}, {})", static_cast<long>(x), static_cast<long>(y));
}

}  // namespace

DiagnosticReport::DiagnosticReport(std::string fileName, Process& process, Files& files,
                                   const Log& log)
    : path_(files.temporaryFolder() + "/" + std::move(fileName)),
      process_(process),
      files_(files),
      log_(log) {}

// Titles of windows may hold anything.
void DiagnosticReport::emit(std::string_view line) {
  const auto whole = oneLine(line);
  process_.print(whole);
  if (!text_.empty()) text_ += '\n';
  text_ += whole;
}

void DiagnosticReport::finish() {
  if (const auto written = files_.write(path_, text_); written) {
    log_.info("The report is in {}", path_);
  } else {
    log_.error("The report could not be written: {}", written.error().sentence);
  }
  process_.exit(0);
}

std::string DiagnosticReport::fmt(QuartzPoint point) { return pair(point.x, point.y); }
std::string DiagnosticReport::fmt(AppKitPoint point) { return pair(point.x, point.y); }
std::string DiagnosticReport::fmt(const QuartzRect& rect) {
  return fmt(rect.origin) + " " + fmt(rect.size);
}
std::string DiagnosticReport::fmt(const AppKitRect& rect) {
  return fmt(rect.origin) + " " + fmt(rect.size);
}
std::string DiagnosticReport::fmt(Size size) {
  return fmt::format("{} x {}", static_cast<long>(size.width), static_cast<long>(size.height));
}
std::string DiagnosticReport::fmt(AXError error) {
  return fmt::format("error {} ({})", static_cast<int>(error), explanation(error));
}

}  // namespace pellow
