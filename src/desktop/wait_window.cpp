#include "desktop/wait_window.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

#include "desktop/button.h"
#include "desktop/look.h"
#include "desktop/text_pane.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"

namespace orvane {

WaitBox::WaitBox(QWidget* owner) : DeskWindow(owner), text_(new TextPane(this)), counter_(new QLabel(this)) {
  counter_->setFont(font_for(TextRole::verdict));
  counter_->setTextFormat(Qt::PlainText);
  counter_->setAlignment(Qt::AlignCenter);
  body()->addWidget(text_, 1);
  body()->addWidget(counter_);
}

void WaitBox::open(const WaitText& text) {
  aborted_ = false;
  setWindowTitle(shown(text.title.empty() ? msg(30045) : text.title));
  update_text(text.text);
  std::vector<Button> buttons;
  if (text.abort_button) buttons.push_back({answer::terminate, msg(815), false});
  set_buttons(buttons);
  if (DeskButton* abort = button(answer::terminate)) abort->is_default = false;  // Enter never aborts
  setFocusPolicy(Qt::StrongFocus);
  present();
}

// The last of several lines counts down; it stands below the others, large.
void WaitBox::update_text(std::string_view text) {
  const std::size_t last = text.rfind('\n');
  const bool counts = last != std::string_view::npos;
  const QString lines = shown(text.substr(0, last));
  if (lines != text_->text()) text_->set_text(lines, font_for(TextRole::prompt));
  counter_->setText(counts ? shown(text.substr(last + 1)) : QString());
  counter_->setVisible(counts);
}

void WaitBox::close_wait() { hide(); }

void WaitBox::press(int code) {
  if (code != answer::terminate) return;
  aborted_ = true;
  enable_button(code, false);
}

void WaitBox::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  DeskButton* abort = button(answer::terminate);
  if (enter && !event->isAutoRepeat() && abort != nullptr && abort->hasFocus()) abort->click();
}

void WaitBox::closeEvent(QCloseEvent* event) {
  event->ignore();
  refuse_close();
}

}  // namespace orvane
