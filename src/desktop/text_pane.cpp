#include "desktop/text_pane.h"

#include <QLabel>
#include <QScreen>
#include <QScrollBar>
#include <algorithm>

#include "desktop/look.h"
#include "desktop/texts.h"

namespace orvane {
namespace {

// A text that is aligned by hand: blanks in a row behind its first letter.
bool has_columns(const std::string& line) {
  const std::size_t first = line.find_first_not_of(' ');
  return first != std::string::npos && line.find("  ", first) < line.find_last_not_of(' ');
}

}  // namespace

TextPane::TextPane(QWidget* owner) : QScrollArea(owner), label_(new QLabel) {
  setFrameShape(QFrame::NoFrame);
  setWidgetResizable(true);
  setFocusPolicy(Qt::NoFocus);
  viewport()->setAutoFillBackground(false);
  label_->setTextFormat(Qt::PlainText);
  label_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  label_->setAutoFillBackground(false);
  setWidget(label_);
}

void TextPane::set_lines(const std::vector<std::string>& lines) {
  const bool table = std::any_of(lines.begin(), lines.end(), has_columns);
  set_text(joined(lines), font_for(table ? TextRole::table : TextRole::prompt));
}

void TextPane::set_text(const QString& text, const QFont& font) {
  label_->setFont(font);
  label_->setText(text);
  // Long lines of prose wrap; a line of 79 columns never does.
  const QSize screen = this->screen()->availableSize();
  label_->setWordWrap(QFontMetrics(font).size(0, text).width() > screen.width() * 0.6);
  verticalScrollBar()->setValue(0);
  updateGeometry();
}

QString TextPane::text() const { return label_->text(); }

QSize TextPane::sizeHint() const {
  const QSize screen = this->screen()->availableSize();
  QSize size = label_->sizeHint();
  if (label_->wordWrap()) {
    size.setWidth(screen.width() * 6 / 10);
    size.setHeight(label_->heightForWidth(size.width()));
  }
  size = size.boundedTo(screen * 0.65);
  if (size.height() < label_->sizeHint().height()) size.rwidth() += verticalScrollBar()->sizeHint().width();
  return size.expandedTo(QSize(320, label_->fontMetrics().height()));
}

QSize TextPane::minimumSizeHint() const { return sizeHint().boundedTo(QSize(600, 300)); }

}  // namespace orvane
