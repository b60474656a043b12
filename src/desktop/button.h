// A large push button with the code of its answer. The one that Enter would press stands out.
#pragma once

#include <QPushButton>

namespace orvane {

class DeskWindow;

class DeskButton : public QPushButton {
 public:
  explicit DeskButton(DeskWindow& window);
  void stand_out(bool out);
  QSize sizeHint() const override;

  int code = 0;
  bool is_default = false;

 protected:
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  DeskWindow& window_;
};

}  // namespace orvane
