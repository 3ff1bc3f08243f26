#pragma once

#include <xcb/xcb.h>

#include <QAbstractNativeEventFilter>
#include <functional>
#include <string>

namespace pellow {

// The theme that the settings daemon of the desktop announces to toolkits. The daemon may come, or
// be replaced by another one, at any time. Main thread, while there is a Qt application.
class AnnouncedTheme final : public QAbstractNativeEventFilter {
 public:
  // `onChange` is called when the name may be another one.
  explicit AnnouncedTheme(std::function<void()> onChange);
  ~AnnouncedTheme() override;

  // For example "Adwaita-dark"; empty as long as none was announced.
  const std::string& name() const { return name_; }

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  void follow();
  void read();

  std::function<void()> onChange_;
  xcb_connection_t* connection_;
  xcb_atom_t manager_;
  xcb_atom_t selection_;
  xcb_atom_t settings_;
  xcb_window_t daemon_ = XCB_WINDOW_NONE;
  std::string name_;
};

}  // namespace pellow
