#include "desktop/viewer_window.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/look.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr int columns = 84, rows = 34;  // that are seen without scrolling, where the screen has room
constexpr int most_steps = 20, least_steps = -6;

}  // namespace

ViewerBox::ViewerBox(QWidget* owner)
    : DeskWindow(owner),
      text_(new QPlainTextEdit(this)),
      wanted_(new QLineEdit(this)),
      note_(new QLabel(this)) {
  setWindowFlag(Qt::Window);
  text_->setReadOnly(true);
  text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setFont(font_for(TextRole::table));
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* label = new QLabel(shown(msg(31334)));
  label->setBuddy(wanted_);
  wanted_->setClearButtonEnabled(true);
  wanted_->installEventFilter(this);
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(wanted_, 1);
  const auto tool = [&](const QString& sign, int tip, auto act) {
    auto* button = new QToolButton;
    button->setText(sign);
    button->setToolTip(shown(msg(tip)));
    button->setFocusPolicy(Qt::NoFocus);
    connect(button, &QToolButton::clicked, this, act);
    row->addWidget(button);
  };
  tool(QChar(0x25B2), 31335, [this] { search(true); });
  tool(QChar(0x25BC), 31336, [this] { search(false); });
  row->addWidget(note_);
  row->addSpacing(24);
  tool(QChar(0x2212), 31337, [this] { zoom(-1); });
  tool("+", 31338, [this] { zoom(1); });
  body()->addLayout(row);
  body()->addWidget(text_, 1);
}

int ViewerBox::view(const LinesWindow& window) {
  setWindowTitle(shown(window.title));
  text_->setPlainText(joined(window.lines));
  note_->clear();
  const QSize room = screen()->availableSize() * 0.85;
  text_->setMinimumSize(text_size().boundedTo(QSize(room.width(), room.height() * 3 / 4)));
  set_buttons(window.buttons);
  return wait_for_answer();
}

// Of the text with its border and the bar beside it.
QSize ViewerBox::text_size() const {
  const QFontMetricsF type(text_->font());
  const double border = 2 * (text_->frameWidth() + text_->document()->documentMargin());
  return {qCeil(type.horizontalAdvance(QString(columns, '0')) + border) +
              text_->verticalScrollBar()->sizeHint().width(),
          qCeil(type.lineSpacing() * rows + border)};
}

QWidget* ViewerBox::first_focus() { return text_; }
int ViewerBox::escape_code() const { return first_code(); }
int ViewerBox::close_code() const { return first_code(); }

// From the end the search goes on at the beginning.
void ViewerBox::search(bool backwards) {
  if (wanted_->text().isEmpty()) return;
  const QTextDocument::FindFlags flags = backwards ? QTextDocument::FindBackward : QTextDocument::FindFlags();
  if (text_->find(wanted_->text(), flags)) return note_->clear();
  const QTextCursor before = text_->textCursor();
  text_->moveCursor(backwards ? QTextCursor::End : QTextCursor::Start);
  if (text_->find(wanted_->text(), flags)) return note_->clear();
  text_->setTextCursor(before);
  note_->setText(shown(msg(31339)));
}

void ViewerBox::zoom(int steps) {
  const int wanted = std::clamp(zoomed_ + steps, least_steps, most_steps);
  text_->zoomIn(wanted - zoomed_);
  zoomed_ = wanted;
}

// Enter in the field searches on and presses no button.
bool ViewerBox::eventFilter(QObject* object, QEvent* event) {
  if (object != wanted_ || event->type() != QEvent::KeyPress) return DeskWindow::eventFilter(object, event);
  const auto* key = static_cast<QKeyEvent*>(event);
  if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter)
    return DeskWindow::eventFilter(object, event);
  search((key->modifiers() & Qt::ShiftModifier) != 0);
  return true;
}

void ViewerBox::keyPressEvent(QKeyEvent* event) {
  const bool control = (event->modifiers() & Qt::ControlModifier) != 0;
  if (event->matches(QKeySequence::Find)) {
    wanted_->setFocus(Qt::ShortcutFocusReason);
    wanted_->selectAll();
  } else if (event->matches(QKeySequence::FindNext)) {
    search(false);
  } else if (event->matches(QKeySequence::FindPrevious)) {
    search(true);
  } else if (control && (event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal)) {
    zoom(1);
  } else if (control && event->key() == Qt::Key_Minus) {
    zoom(-1);
  } else if (control && event->key() == Qt::Key_0) {
    zoom(-zoomed_);
  } else {
    DeskWindow::keyPressEvent(event);
  }
}

}  // namespace orvane
