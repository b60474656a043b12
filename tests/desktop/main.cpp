// The desktop's tests press real keys and buttons, without a screen.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFont>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setStyle("Fusion");
  QApplication::setFont(QFont("DejaVu Sans", 10));
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
