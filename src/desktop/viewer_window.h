// A report on the screen: searched, made larger and smaller, read line by line.
#pragma once

#include "desktop/window.h"

class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace orvane {

class ViewerBox : public DeskWindow {
 public:
  explicit ViewerBox(QWidget* owner);
  int view(const LinesWindow& window);

 protected:
  QWidget* first_focus() override;
  int escape_code() const override;
  int close_code() const override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  QSize text_size() const;
  void search(bool backwards);
  void zoom(int steps);

  QPlainTextEdit* text_;
  QLineEdit* wanted_;
  QLabel* note_;  // of a search that found nothing
  int zoomed_ = 0;  // steps from the first size, kept while the program lives
};

}  // namespace orvane
