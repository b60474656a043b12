// A form of fields: data of the unit under test, the environment, required instruments. What a field cannot take is
// told beside it, and it gets the focus.
#pragma once

#include "desktop/window.h"

class QGridLayout;
class QScrollArea;

namespace orvane {

class TextPane;

class FormBox : public DeskWindow {
 public:
  explicit FormBox(QWidget* owner);
  int fill(FormWindow& window);

 protected:
  bool accepts(int code) override;
  QWidget* first_focus() override;

 private:
  struct Row {
    QWidget* editor = nullptr;  // null for a note
    QLabel* fault = nullptr;
  };
  void make_rows();
  QWidget* make_editor(const FormField& field);
  void read_fields();
  void follow();        // an entry has changed a field
  void show_choices();  // that the others made of it

  TextPane* lines_;
  QScrollArea* area_;
  QWidget* fields_ = nullptr;
  std::vector<Row> rows_;
  FormWindow* window_ = nullptr;  // while it waits
  bool following_ = false;
};

}  // namespace orvane
