// The peer of the desktop's start: a program of the toolkit with an empty window, which ends as soon as it is shown.
//   orvane --config INI -run NAME    costs at most 1.4 times as much
#include <QApplication>
#include <QTimer>
#include <QWidget>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.show();
  QTimer::singleShot(0, &application, &QCoreApplication::quit);
  return QApplication::exec();
}
