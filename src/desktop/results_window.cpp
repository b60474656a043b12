#include "desktop/results_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "desktop/look.h"
#include "desktop/placement.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr std::string_view section = "Run Time Results";
constexpr int first_width = 640, first_height = 119;  // of the columns; the bars add theirs
constexpr int font_height = 13, row_padding = 5, padding = 6;
constexpr int tab_stops[] = {4, 10, 25, 40, 42, 58, 71};  // in widths of a letter
constexpr int columns_width = 78, sign_width = 2, status_width = 20, bar_width = 18;
constexpr double bar_range = 125;  // percent of tolerance at the bar's ends
constexpr int keep_delay = 400;    // milliseconds behind the last move
// Of the key State.
constexpr int state_normal = 1, state_minimised = 2, state_maximised = 3;

// Its owner's end is the window's as well.
QPointer<ResultsWindow>& the_window() {
  static QPointer<ResultsWindow> window;
  return window;
}

}  // namespace

ResultsWindow::ResultsWindow(QWidget* owner)
    : QAbstractScrollArea(owner), font_("Courier New"), keeper_(new QTimer(this)) {
  setWindowFlag(Qt::Window);
  setAttribute(Qt::WA_ShowWithoutActivating);
  font_.setFamilies({"Courier New", "DejaVu Sans Mono"});
  font_.setStyleHint(QFont::Monospace);
  font_.setPixelSize(font_height);
  const QFontMetrics letters(font_);
  letter_ = letters.horizontalAdvance('0');
  row_ = letters.height() + row_padding;
  viewport()->setBackgroundRole(QPalette::Base);
  viewport()->setAutoFillBackground(true);
  keeper_->setSingleShot(true);
  connect(keeper_, &QTimer::timeout, this, [this] { keep_place(); });
}

// --- Place ---

QSize ResultsWindow::sizeHint() const {
  const int beside = letter_ * (sign_width + status_width + bar_width) + 2 * padding;
  return {first_width + beside + verticalScrollBar()->sizeHint().width(), first_height};
}

void ResultsWindow::open(bool test_run) {
  setWindowTitle(shown(test_run ? msg(30818) : msg(30817)));
  if (!placed_) place();
  placed_ = true;
  if (!isVisible()) show();
}

void ResultsWindow::place() {
  const auto left = placement_value(section, "Left"), top = placement_value(section, "Top"),
             right = placement_value(section, "Right"), bottom = placement_value(section, "Bottom");
  if (left && top && right && bottom && *right > *left && *bottom > *top) {
    setGeometry(in_view(QRect(*left, *top, *right - *left, *bottom - *top)));
  } else {
    // Below the main window, where it hides nothing.
    const QWidget* owner = parentWidget();
    const QRect over = owner != nullptr ? owner->window()->frameGeometry() : screen()->availableGeometry();
    setGeometry(in_view(QRect(QPoint(over.left(), over.bottom() + 32), sizeHint())));
  }
  const int state = placement_value(section, "State").value_or(state_normal);
  if (state == state_maximised) setWindowState(Qt::WindowMaximized);
  if (state == state_minimised) setWindowState(Qt::WindowMinimized);
}

void ResultsWindow::keep_place() {
  keeper_->stop();
  if (!placed_) return;
  const Qt::WindowStates state = windowState();
  keep_placement_value(section, "State",
                       state & Qt::WindowMinimized   ? state_minimised
                       : state & Qt::WindowMaximized ? state_maximised
                                                     : state_normal);
  if (state & (Qt::WindowMinimized | Qt::WindowMaximized)) {
    // The system tells no place of the icon; the head of the window stands for it.
    keep_placement_value(section, "IconX", x());
    keep_placement_value(section, "IconY", y());
    return;
  }
  const QRect place = geometry();
  keep_placement_value(section, "Left", place.left());
  keep_placement_value(section, "Top", place.top());
  keep_placement_value(section, "Right", place.left() + place.width());
  keep_placement_value(section, "Bottom", place.top() + place.height());
}

void ResultsWindow::moveEvent(QMoveEvent* event) {
  QAbstractScrollArea::moveEvent(event);
  if (placed_ && isVisible()) keeper_->start(keep_delay);
}

void ResultsWindow::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  fit_scroll_bars();
  if (placed_ && isVisible()) keeper_->start(keep_delay);
}

void ResultsWindow::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange && placed_) keeper_->start(keep_delay);
}

// Closing only hides it: what it lists comes back with the window.
void ResultsWindow::closeEvent(QCloseEvent* event) {
  keep_place();
  event->accept();
}

// --- Lines ---

void ResultsWindow::add_line(TestResultLine line) {
  lines_.push_back(std::move(line));
  if (lines_.size() > line_limit) lines_.pop_front();
  fit_scroll_bars();
  verticalScrollBar()->setValue(verticalScrollBar()->maximum());
  viewport()->update();
}

void ResultsWindow::clear() {
  lines_.clear();
  fit_scroll_bars();
  viewport()->update();
}

void ResultsWindow::fit_scroll_bars() {
  const int sight = std::max(1, viewport()->height() / row_ - 1);  // one row is the heading
  verticalScrollBar()->setRange(0, std::max(0, static_cast<int>(lines_.size()) - sight));
  verticalScrollBar()->setPageStep(sight);
  const int width = letter_ * (sign_width + columns_width + status_width + bar_width) + 2 * padding;
  horizontalScrollBar()->setRange(0, std::max(0, width - viewport()->width()));
  horizontalScrollBar()->setPageStep(viewport()->width());
  horizontalScrollBar()->setSingleStep(letter_ * 4);
}

// --- Painting ---

void ResultsWindow::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  painter.setFont(font_);
  painter.translate(padding - horizontalScrollBar()->value(), 0);
  paint_heading(painter);
  int top = row_;
  for (int i = verticalScrollBar()->value();
       i < static_cast<int>(lines_.size()) && top < viewport()->height(); ++i, top += row_)
    paint_line(painter, lines_[static_cast<std::size_t>(i)], top);
}

void ResultsWindow::paint_columns(QPainter& painter, const QString& text, int base_line) const {
  const QStringList columns = text.split('\t');
  for (qsizetype i = 0; i < columns.size(); ++i) {
    const auto stop = static_cast<std::size_t>(i - 1);
    const int at = i == 0 ? 0 : stop < std::size(tab_stops) ? tab_stops[stop] : columns_width;
    painter.drawText((sign_width + at) * letter_, base_line, columns[i].trimmed());
  }
}

void ResultsWindow::paint_heading(QPainter& painter) const {
  const QPalette colours = palette();
  painter.fillRect(QRect(-padding, 0, 10000, row_), colours.color(QPalette::Button));
  painter.setPen(colours.color(QPalette::ButtonText));
  const int base_line = (row_ + painter.fontMetrics().ascent() - painter.fontMetrics().descent()) / 2;
  paint_columns(painter, shown(msg(30819)).replace('|', '\t'), base_line);
  painter.drawText((sign_width + columns_width) * letter_, base_line, shown(msg(30820)));
  const int bar = (sign_width + columns_width + status_width) * letter_;
  const int inner = bar_width * letter_;
  const auto at = [&](double percent) {
    return bar + static_cast<int>(inner * (percent / bar_range + 1) / 2);
  };
  for (const auto& [percent, text] :
       {std::pair(-100.0, "-100"), std::pair(0.0, "0"), std::pair(100.0, "100")}) {
    const int width = painter.fontMetrics().horizontalAdvance(text);
    painter.drawText(at(percent) - width / 2, base_line, text);
  }
}

void ResultsWindow::paint_line(QPainter& painter, const TestResultLine& line, int top) const {
  const QColor colour = verdict_colour(line.colour, palette());
  painter.setPen(colour);
  const int base_line = top + (row_ + painter.fontMetrics().ascent() - painter.fontMetrics().descent()) / 2;
  painter.drawText(0, base_line, verdict_sign(line.colour));
  if (line.text.contains('\t')) {
    paint_columns(painter, line.text, base_line);
  } else {
    painter.drawText(sign_width * letter_, base_line, line.text);
  }
  painter.drawText((sign_width + columns_width) * letter_, base_line,
                   line.status.isEmpty() ? verdict_word(line.colour) : line.status);
  const int bar = (sign_width + columns_width + status_width) * letter_;
  if (line.percent) paint_bar(painter, *line.percent, QRect(bar, top, bar_width * letter_, row_), colour);
}

// The middle is 0, the two marks are the limits. What lies beyond a limit fills the whole height and ends in an arrow
// at the edge; what lies within stays a narrow bar.
void ResultsWindow::paint_bar(QPainter& painter, double percent, const QRect& place,
                              const QColor& colour) const {
  if (std::isnan(percent)) return;
  const bool beyond = std::abs(percent) > 100;
  const double held = std::clamp(percent, -bar_range, bar_range);
  const auto at = [&](double value) {
    return place.left() + static_cast<int>(std::lround(place.width() * (value / bar_range + 1) / 2));
  };
  const QColor mark = palette().color(QPalette::Text);
  QColor track = mark;
  track.setAlpha(36);
  painter.fillRect(
      QRect(QPoint(at(-100), place.top() + row_ / 2 - 1), QPoint(at(100), place.top() + row_ / 2 + 1)),
      track);
  const int height = beyond ? row_ - 4 : row_ / 2 - 2;
  const int left = std::min(at(0), at(held)), right = std::max(at(0), at(held));
  painter.fillRect(QRect(left, place.top() + (row_ - height) / 2, std::max(2, right - left), height), colour);
  if (beyond) {
    const int tip = percent > 0 ? place.right() : place.left(), back = percent > 0 ? tip - 7 : tip + 7;
    painter.setBrush(palette().color(QPalette::Base));
    painter.setPen(colour);
    painter.drawPolygon(QPolygon(
        {QPoint(back, place.top() + 2), QPoint(back, place.bottom() - 2), QPoint(tip, place.center().y())}));
  }
  painter.setPen(QPen(mark, 1));
  for (const double limit : {-100.0, 100.0})
    painter.drawLine(at(limit), place.top() + 1, at(limit), place.bottom() - 1);
  painter.drawLine(at(0), place.top() + 4, at(0), place.bottom() - 4);
}

// --- The one window ---

void tres_make(QWidget* owner) {
  if (the_window() == nullptr) the_window() = new ResultsWindow(owner);
}

bool tres_open(QWidget* owner, bool test_run) {
  tres_make(owner);
  the_window()->open(test_run);
  return true;
}

void tres_close() {
  if (the_window() == nullptr) return;
  the_window()->keep_place();
  delete the_window();
}

void tres_add_line(std::string_view text, int colour, std::optional<double> percent,
                   std::string_view status) {
  if (the_window() != nullptr)
    the_window()->add_line({shown(text), colour, percent, shown(status).simplified()});
}

void tres_clear() {
  if (the_window() != nullptr) the_window()->clear();
}

ResultsWindow* tres_window() { return the_window(); }

}  // namespace orvane
