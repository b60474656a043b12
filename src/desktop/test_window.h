// The decision about one test: its status in words, colour and a sign, what was measured, and the eight buttons.
#pragma once

#include "desktop/window.h"

class QGridLayout;
class QFrame;

namespace orvane {

class TextPane;

class TestBox : public DeskWindow {
 public:
  explicit TestBox(QWidget* owner);
  int ask(const TestWindow& window);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  int escape_code() const override { return answer::failed; }

 private:
  void show_status(const TestWindow& window);
  void show_texts(const TestWindow& window);
  void make_row();
  void show_buttons(const TestWindow& window);

  QFrame* banner_;
  QLabel* sign_;
  QLabel* status_;
  QGridLayout* grid_;
  std::vector<QLabel*> labels_;  // two a row, used again
  TextPane* long_text_;          // what does not fit a row: the laboratory's own words
  QHBoxLayout* aside_;
};

}  // namespace orvane
