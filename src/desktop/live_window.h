// The window of live values: the last one in big digits, above the settings of the unit, with its buttons. The statement
// that measures on goes on beside it.
#pragma once

#include "desktop/window.h"

class QLabel;

namespace orvane {

class TextPane;

class LiveBox : public DeskWindow {
 public:
  explicit LiveBox(QWidget* owner);
  void open(const LinesWindow& window);
  void show_value(std::string_view value);
  /// The button that was pressed since the window was opened; 0 while none was.
  int pressed() const { return pressed_; }
  void press(int code) override { pressed_ = code; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  TextPane* text_;
  QLabel* value_;
  int pressed_ = answer::failed;
};

}  // namespace orvane
