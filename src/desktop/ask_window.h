// A prompt for a text: the lines, one field to type in, and below it how a number was understood.
#pragma once

#include "desktop/window.h"

class QLineEdit;
class QPushButton;

namespace orvane {

class TextPane;

class AskBox : public DeskWindow {
 public:
  explicit AskBox(QWidget* owner);
  int ask(const AskWindow& window, std::string& text);

 protected:
  QWidget* first_focus() override;

 private:
  void show_understood();
  void look_for_place();

  TextPane* lines_;
  QLineEdit* field_;
  QPushButton* look_;  // for a place of a file
  QLabel* understood_;
};

}  // namespace orvane
