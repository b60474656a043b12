// How a verdict came about: the facts as a table, and the uncertainty budget with a bar for the share of each component.
// It stands beside a test window that waits, answers nothing, and goes with it.
#pragma once

#include <QScrollArea>

#include "desktop/look.h"
#include "desktop/window.h"

namespace orvane {

/// A share as a horizontal bar. Its name and figures are told to a screen reader; Tab reaches it.
class ShareBar : public QWidget {
 public:
  explicit ShareBar(QWidget* owner);
  /// `share` is of the whole, 0 to 1; what lies outside is drawn as the end that it lies beyond.
  void show_share(double share, const QString& told);
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  double share_ = 0;
};

class WhyBox : public DeskWindow {
 public:
  explicit WhyBox(QWidget* owner);
  /// Opens the window, or brings it to the front. `verdict` is a result_colour.
  void open(const QString& title, const Explanation& explanation, int verdict);
  /// Closes it; its owner has the focus again.
  void press(int code) override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  bool rings() const override { return false; }  // the operator has asked for it

 private:
  void make_sheet(const Explanation& explanation, int verdict, TextRole role);
  void show_verdict(const LabelledText& fact, int verdict);
  void show_facts(const std::vector<LabelledText>& facts, TextRole role);
  void show_budget(const std::vector<BudgetShare>& budget, TextRole role);
  bool fit(const QSize& room);

  QScrollArea* area_;
  QWidget* sheet_ = nullptr;  // made anew at each opening
};

}  // namespace orvane
