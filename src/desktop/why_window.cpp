#include "desktop/why_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/button.h"
#include "desktop/look.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int column_gap = 20, row_gap = 8, bar_width = 220, least_bar_width = 120, frame = 2;
constexpr double least_share_drawn = 0.005;  // a share that counts at all has a sliver
constexpr double screen_part = 0.92;         // of its width and height, at most
constexpr int line_width = 100;              // characters

QLabel* text_label(const QString& text, TextRole role, QWidget* owner) {
  auto* label = new QLabel(text, owner);
  label->setTextFormat(Qt::PlainText);
  label->setFont(font_for(role));
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

QLabel* heading(const QString& text, TextRole role, QWidget* owner) {
  QLabel* label = text_label(text, role, owner);
  QFont bold = label->font();
  bold.setBold(true);
  label->setFont(bold);
  return label;
}

QString percent_of(double share) { return shown(print_number(100 * share, 'f', 1)) + QChar(0x00A0) + "%"; }

}  // namespace

// --- A bar ---

ShareBar::ShareBar(QWidget* owner) : QWidget(owner) {
  setFocusPolicy(Qt::TabFocus);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  setMinimumWidth(least_bar_width);
}

void ShareBar::show_share(double share, const QString& told) {
  share_ = std::clamp(share, 0.0, 1.0);
  if (share > 0) share_ = std::max(share_, least_share_drawn);
  setAccessibleName(told);
  update();
}

QSize ShareBar::sizeHint() const { return {bar_width, QFontMetrics(font_for(TextRole::prompt)).height()}; }

void ShareBar::paintEvent(QPaintEvent* /*event*/) {
  const QPalette colours = palette();
  const QColor ground = colours.color(QPalette::Base);
  QPainter painter(this);
  const QRectF whole = QRectF(rect()).adjusted(1, 1, -1, -1);
  painter.fillRect(whole, ground);
  const QRectF inside = whole.adjusted(frame, frame, -frame, -frame);
  painter.fillRect(QRectF(inside.topLeft(), QSizeF(inside.width() * share_, inside.height())),
                   readable(colours.color(QPalette::Highlight), ground));
  const QColor edge = readable(colours.color(QPalette::Mid), colours.color(QPalette::Window), 3);
  painter.setPen(QPen(hasFocus() ? colours.color(QPalette::WindowText) : edge, hasFocus() ? frame : 1));
  painter.drawRect(whole);
}

// --- The window ---

WhyBox::WhyBox(QWidget* owner) : DeskWindow(owner), area_(new QScrollArea(this)) {
  area_->setWidgetResizable(true);
  area_->setFrameShape(QFrame::NoFrame);
  area_->setFocusPolicy(Qt::StrongFocus);  // the arrow keys scroll it
  area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area_->setAccessibleName(shown(msg(31121)));
  body()->addWidget(area_, 1);
  set_buttons({{answer::ok, msg(31123), true}});
}

void WhyBox::open(const QString& title, const Explanation& explanation, int verdict) {
  setWindowTitle(shown(msg(31121)) + (title.isEmpty() ? "" : ": " + title));
  // In smaller type where the large one would have to be scrolled.
  const QSize screen = this->screen()->availableSize() * screen_part;
  for (const TextRole role : {TextRole::prompt, TextRole::note}) {
    make_sheet(explanation, verdict, role);
    if (fit(screen)) break;
  }
  present();
  area_->verticalScrollBar()->setValue(0);
}

void WhyBox::make_sheet(const Explanation& explanation, int verdict, TextRole role) {
  sheet_ = new QWidget;
  auto* rows = new QVBoxLayout(sheet_);
  rows->setContentsMargins(0, 0, column_gap, 0);
  rows->setSpacing(row_gap);
  // The verdict, which the engine tells last, stands above the way to it.
  std::vector<LabelledText> facts = explanation.facts;
  if (!facts.empty()) {
    show_verdict(facts.back(), verdict);
    facts.pop_back();
  }
  show_facts(facts, role);
  if (!explanation.budget.empty()) show_budget(explanation.budget, role);
  rows->addStretch(1);
  area_->setWidget(sheet_);  // takes the sheet before it away
  sheet_->setAutoFillBackground(false);
  area_->viewport()->setAutoFillBackground(false);
}

void WhyBox::show_verdict(const LabelledText& fact, int verdict) {
  QLabel* label = heading(verdict_sign(verdict) + " " + shown(fact.text).trimmed(), TextRole::prompt, sheet_);
  label->setWordWrap(true);
  label->setAccessibleName(shown(fact.label + ": " + fact.text));
  QPalette colours = palette();
  colours.setColor(QPalette::WindowText,
                   readable(verdict_colour(verdict, colours), colours.color(QPalette::Window)));
  label->setPalette(colours);
  sheet_->layout()->addWidget(label);
}

void WhyBox::show_facts(const std::vector<LabelledText>& facts, TextRole role) {
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(column_gap);
  grid->setVerticalSpacing(role == TextRole::prompt ? row_gap : row_gap / 2);
  grid->setColumnStretch(1, 1);
  int row = 0;
  for (const LabelledText& fact : facts) {
    QLabel* label = text_label(shown(fact.label), TextRole::note, sheet_);
    QLabel* value = text_label(shown(fact.text).trimmed(), role, sheet_);
    value->setWordWrap(true);
    label->setBuddy(value);
    // Both stand on one line, though their type is not of one size.
    label->setContentsMargins(
        0, std::max(QFontMetrics(value->font()).ascent() - QFontMetrics(label->font()).ascent(), 0), 0, 0);
    grid->addWidget(label, row, 0, Qt::AlignRight | Qt::AlignTop);
    grid->addWidget(value, row, 1);
    ++row;
  }
  sheet_->layout()->addItem(grid);
}

void WhyBox::show_budget(const std::vector<BudgetShare>& budget, TextRole role) {
  auto* rows = static_cast<QVBoxLayout*>(sheet_->layout());
  rows->addSpacing(row_gap);
  rows->addWidget(heading(shown(msg(31122)), role, sheet_));
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(column_gap);
  grid->setVerticalSpacing(role == TextRole::prompt ? row_gap : row_gap / 2);
  grid->setColumnStretch(3, 1);
  int row = 0;
  for (const BudgetShare& share : budget) {
    const QString name = shown(share.name), percent = percent_of(share.share),
                  text = shown(share.text).trimmed();
    auto* bar = new ShareBar(sheet_);
    bar->show_share(share.share, name + ": " + percent + ", " + text);
    QLabel* figures = text_label(text, TextRole::note, sheet_);
    figures->setWordWrap(true);
    grid->addWidget(text_label(name, TextRole::note, sheet_), row, 0, Qt::AlignVCenter);
    grid->addWidget(bar, row, 1, Qt::AlignVCenter);
    grid->addWidget(text_label(percent, role, sheet_), row, 2, Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(figures, row, 3, Qt::AlignVCenter);
    ++row;
  }
  rows->addLayout(grid);
}

// As wide as prose is read, and so high that nothing is scrolled where there is room. False if there is none.
bool WhyBox::fit(const QSize& room) {
  const int width =
      std::min(room.width(), QFontMetrics(font_for(TextRole::prompt)).averageCharWidth() * line_width);
  const int bar = area_->verticalScrollBar()->sizeHint().width();
  const int buttons = sizeHint().height() - area_->sizeHint().height();
  const int height = sheet_->layout()->totalHeightForWidth(width - bar);
  const int most = room.height() - std::max(buttons, 0);
  area_->setMinimumSize(width, std::min(height, most));
  return height <= most;
}

void WhyBox::press(int /*code*/) { close(); }

void WhyBox::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!enter && event->key() != Qt::Key_Escape) return DeskWindow::keyPressEvent(event);
  event->accept();
  if (!event->isAutoRepeat()) close();
}

void WhyBox::closeEvent(QCloseEvent* event) {
  event->accept();
  if (QWidget* owner = parentWidget(); owner != nullptr && owner->isVisible()) {
    owner->raise();
    owner->activateWindow();
  }
}

}  // namespace orvane
