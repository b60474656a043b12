// The results window: a line for each evaluated test while the run goes on, with a bar of the percent of tolerance
// between its limits, so that an instrument that drifts is seen at a glance. At most 800 lines are kept; the newest
// is always in sight. The stored results do not hang on it.
#pragma once

#include <QAbstractScrollArea>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

class QTimer;

namespace orvane {

struct TestResultLine {
  QString text;  // columns parted by tabs
  int colour = 0;
  std::optional<double> percent;
  QString status;
};

class ResultsWindow : public QAbstractScrollArea {
 public:
  static constexpr std::size_t line_limit = 800;

  explicit ResultsWindow(QWidget* owner);
  /// Shows the window where it stood last, without taking the focus.
  void open(bool test_run);
  void add_line(TestResultLine line);
  void clear();
  const std::deque<TestResultLine>& lines() const { return lines_; }
  /// Where and how the window stands goes to the user's settings.
  void keep_place();

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void paint_heading(QPainter& painter) const;
  void paint_line(QPainter& painter, const TestResultLine& line, int top) const;
  void paint_columns(QPainter& painter, const QString& text, int base_line) const;
  void paint_bar(QPainter& painter, double percent, const QRect& place, const QColor& colour) const;
  void fit_scroll_bars();
  void place();

  std::deque<TestResultLine> lines_;
  QFont font_;
  int letter_ = 8, row_ = 18;
  QTimer* keeper_;
  bool placed_ = false;
};

/// The one results window of the program. tres_make makes it, hidden, tres_open shows it as well; without a window the
/// other functions do nothing. It ends with its owner.
void tres_make(QWidget* owner);
bool tres_open(QWidget* owner, bool test_run);
void tres_close();
void tres_add_line(std::string_view text, int colour, std::optional<double> percent = {},
                   std::string_view status = {});
void tres_clear();
ResultsWindow* tres_window();

}  // namespace orvane
