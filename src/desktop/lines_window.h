// Lines of text with buttons, and a picture beside them: what DISP, OPBR, PIC and the questions show.
// The same window with a sign at its head shows messages.
#pragma once

#include "desktop/window.h"

namespace orvane {

class PictureView;
class TextPane;

class LinesBox : public DeskWindow {
 public:
  explicit LinesBox(QWidget* owner);
  int ask(const LinesWindow& window);

 protected:
  QRect wanted_place() const override { return frame_; }
  int escape_code() const override;

 private:
  TextPane* text_;
  PictureView* picture_;
  QRect frame_;
  bool verdict_ = false;  // its No is a verdict on the unit, never Esc
};

class MessageBox : public DeskWindow {
 public:
  explicit MessageBox(QWidget* owner);
  void tell(MessageKind kind, const QString& text);

 protected:
  int escape_code() const override { return answer::ok; }
  int close_code() const override { return answer::ok; }

 private:
  QLabel* sign_;
  TextPane* text_;
};

}  // namespace orvane
