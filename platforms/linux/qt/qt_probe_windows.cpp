#include "platforms/linux/qt/qt_probe_windows.h"

#include <QPalette>
#include <QWidget>
#include <cmath>

#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/program_icon.h"

namespace pellow {
namespace {

class QtProbeWindow final : public ProbeWindow {
 public:
  QtProbeWindow(const WindowHints& hints, const std::string& name, const std::string& title,
                Size contentSize, const Colour& fill) {
    widget_.setWindowTitle(titleText(title));
    widget_.setWindowIcon(programIcon());
    widget_.setAttribute(Qt::WA_QuitOnClose, false);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor::fromRgbF(static_cast<float>(fill.red()),
                                                        static_cast<float>(fill.green()),
                                                        static_cast<float>(fill.blue())));
    widget_.setPalette(palette);
    setContentSize(contentSize);
    const auto window = static_cast<xcb_window_t>(widget_.winId());
    hints.setName(window, name);
    widget_.show();
    widget_.raise();
    hints.activate(window);
  }

  void setContentSize(Size size) override {
    widget_.resize(static_cast<int>(std::lround(size.width)),
                   static_cast<int>(std::lround(size.height)));
  }

 private:
  QWidget widget_;
};

}  // namespace

std::unique_ptr<ProbeWindow> QtProbeWindows::openWindow(std::string name, std::string title,
                                                        Size contentSize, Colour fill) {
  return std::make_unique<QtProbeWindow>(hints_, name, title, contentSize, fill);
}

}  // namespace pellow
