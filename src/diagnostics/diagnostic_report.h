#pragma once

#include <string>
#include <string_view>

#include "base/geometry.h"
#include "base/log.h"
#include "platform/ax_error.h"
#include "platform/files.h"
#include "platform/process.h"

namespace pellow {

// A report for support: printed line by line as it comes, and kept in a file that can be sent. Main
// thread.
class DiagnosticReport {
 public:
  // The file goes to the temporary folder.
  DiagnosticReport(std::string fileName, Process& process, Files& files, const Log& log);

  // One line, whatever is in it.
  void emit(std::string_view line);

  // Writes the file and ends the process with status 0. A file that cannot be written only shows in
  // the log: the lines have been printed.
  void finish();

  // "(12, -7)", the coordinates truncated to whole numbers.
  static std::string fmt(QuartzPoint point);
  static std::string fmt(AppKitPoint point);
  // "(12, -7) 640 x 480"
  static std::string fmt(const QuartzRect& rect);
  static std::string fmt(const AppKitRect& rect);
  // "640 x 480"
  static std::string fmt(Size size);
  // "error -25204 (the app did not respond in time)"
  static std::string fmt(AXError error);

 private:
  std::string path_;
  Process& process_;
  Files& files_;
  const Log& log_;
  std::string text_;
};

}  // namespace pellow
