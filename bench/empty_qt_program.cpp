#include <QApplication>
#include <QWidget>

// What every Qt Widgets program costs: a window with nothing in it.
int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.show();
  return QApplication::exec();
}
