// A list of which one row is chosen. Rows are asked for as they are drawn, so that the listing of a procedure opens in
// the time of its first screen; a list that may be narrowed has a field for it.
#pragma once

#include "desktop/window.h"

class QLineEdit;
class QTableView;

namespace orvane {

class RowModel;

class ChoiceBox : public DeskWindow {
 public:
  explicit ChoiceBox(QWidget* owner);
  ~ChoiceBox() override;
  int choose(const ChoiceWindow& window, std::size_t& row);

 protected:
  bool accepts(int code) override;
  QWidget* first_focus() override;
  bool opens_minimised() const override { return minimised_; }
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void fit_columns(const ChoiceWindow& window);
  void narrow(const QString& text);
  void select(int row);

  std::unique_ptr<RowModel> model_;
  QLineEdit* filter_;
  QLabel* count_;
  QTableView* table_;
  bool minimised_ = false;
};

}  // namespace orvane
