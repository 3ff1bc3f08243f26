#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/harness/desktop_session.h"

namespace pellow::desktop {

// The real program on a private desktop, seen as its user and other programs see it.
class PellowProgram {
 public:
  explicit PellowProgram(DesktopSession& desktop, const Environment& changes = {});

  // Waits until its strip shows and its main loop runs: from then on keys, clicks and signals
  // arrive.
  bool isReady();

  ChildProcess& process() { return *process_; }

  // 0 when there is none.
  WindowID strip() const;

  // How many tabs of the default size are in the strip, judged by its length; -1 without a strip.
  int tabCount() const;

  // Clicks the middle of a tab of a strip at the right or left edge, counted from the top.
  void clickTab(int index) const;

  // The strip as the user sees it.
  Picture picture() const { return desktop_.picture(desktop_.content(strip())); }

  // Puts these settings, and no others, where the next launch reads them.
  static void writeDefaults(const DesktopSession& desktop, const nlohmann::json& defaults);

  // Where the program keeps its settings.
  static std::filesystem::path defaultsFile(const DesktopSession& desktop);

  // The parked-window journal of the desktop, and its records as others can read them.
  static std::filesystem::path journalFile(const DesktopSession& desktop);
  nlohmann::json journal() const;

  // How many lines of its log are this one, with level and message.
  int timesLogged(std::string_view line) const;
  bool hasLogged(std::string_view line) const { return timesLogged(line) > 0; }

 private:
  // It does not introduce itself to tests, unless its defaults say that it has not yet.
  static void beKnown(const DesktopSession& desktop);

  DesktopSession& desktop_;
  std::unique_ptr<ChildProcess> process_;
};

}  // namespace pellow::desktop
