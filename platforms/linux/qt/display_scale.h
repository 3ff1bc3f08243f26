#pragma once

#include <QObject>
#include <functional>

namespace pellow {

// How many pixels a point has, on the whole X screen: desktops let their users change it at any
// time. Main thread, while there is a Qt application.
class DisplayScale {
 public:
  // `onChange` is called with the new scale.
  explicit DisplayScale(std::function<void(double)> onChange);

  static double now();

 private:
  void follow();
  void check();

  std::function<void(double)> onChange_;
  double scale_;
  QObject context_;  // ends first, and with it the connections
};

}  // namespace pellow
