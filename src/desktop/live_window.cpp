#include "desktop/live_window.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

#include "desktop/button.h"
#include "desktop/look.h"
#include "desktop/text_pane.h"
#include "desktop/texts.h"

namespace orvane {
namespace {

constexpr double digits_scale = 2.5;  // against the size of a verdict

}  // namespace

LiveBox::LiveBox(QWidget* owner) : DeskWindow(owner), text_(new TextPane(this)), value_(new QLabel(this)) {
  QFont font = font_for(TextRole::verdict);
  font.setPointSizeF(font.pointSizeF() * digits_scale);
  value_->setFont(font);
  value_->setTextFormat(Qt::PlainText);
  value_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  body()->addWidget(value_);
  body()->addWidget(text_, 1);
}

void LiveBox::open(const LinesWindow& window) {
  pressed_ = answer::failed;
  setWindowTitle(shown(window.title));
  value_->setText(QString(QChar(0x2014)));
  text_->set_lines(window.lines);
  set_buttons(window.buttons);
  setFocusPolicy(Qt::StrongFocus);
  present();
}

void LiveBox::show_value(std::string_view value) { value_->setText(shown(value)); }

void LiveBox::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->isAutoRepeat() || (!enter && event->key() != Qt::Key_Escape))
    return DeskWindow::keyPressEvent(event);
  if (!enter) return press(escape_code());
  auto* focused = dynamic_cast<DeskButton*>(focusWidget());
  press(focused != nullptr ? focused->code : first_code());
}

void LiveBox::closeEvent(QCloseEvent* event) {
  event->ignore();
  refuse_close();
}

}  // namespace orvane
