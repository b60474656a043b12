// The decision about one test: its status in words, colour and a sign, what was measured, the eight buttons, and
// one that tells how the verdict came about.
#pragma once

#include "desktop/window.h"

class QGridLayout;
class QFrame;

namespace orvane {

class TextPane;
class WhyBox;

class TestBox : public DeskWindow {
 public:
  explicit TestBox(QWidget* owner);
  ~TestBox() override;
  int ask(const TestWindow& window);
  void press(int code) override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  int escape_code() const override { return answer::failed; }

 private:
  void show_status(const TestWindow& window);
  void show_texts(const TestWindow& window);
  void make_row();
  void show_buttons(const TestWindow& window);
  void explain();

  QFrame* banner_;
  QLabel* sign_;
  QLabel* status_;
  QGridLayout* grid_;
  std::vector<QLabel*> labels_;  // two a row, used again
  TextPane* long_text_;          // what does not fit a row: the laboratory's own words
  QHBoxLayout* aside_;
  std::unique_ptr<WhyBox> why_;        // made when it is first asked for
  const TestWindow* shown_ = nullptr;  // while the window waits
};

}  // namespace orvane
