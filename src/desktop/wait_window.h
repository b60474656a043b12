// The please-wait window: a text, a count-down at its end, and Abort where the wait may be ended.
#pragma once

#include "desktop/window.h"

namespace orvane {

class TextPane;

class WaitBox : public DeskWindow {
 public:
  explicit WaitBox(QWidget* owner);
  void open(const WaitText& text);
  void update_text(std::string_view text);
  void close_wait();
  bool abort_pressed() const { return aborted_; }
  void press(int code) override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  TextPane* text_;
  QLabel* counter_;
  bool aborted_ = false;
};

}  // namespace orvane
