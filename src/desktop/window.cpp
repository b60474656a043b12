#include "desktop/window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "config/startup_config.h"
#include "desktop/button.h"
#include "desktop/look.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"
#include "platform/platform.h"
#include "state/beeper.h"

namespace orvane {
namespace {

constexpr int margin = 20, spacing = 12, above_buttons = 10, least_width = 480;
constexpr int bell_poll = 100;  // milliseconds between two looks at the bell

// The windows that wait, the inner ones behind.
std::vector<DeskWindow*>& waiting_windows() {
  static std::vector<DeskWindow*> windows;
  return windows;
}

bool gives_up(int code) { return code == answer::terminate || code == answer::test_term; }

QScreen* screen_of(const QWidget& window) {
  const QWidget* owner = window.parentWidget();
  return owner != nullptr ? owner->screen() : QApplication::primaryScreen();
}

}  // namespace

DeskWindow::DeskWindow(QWidget* owner)
    : QWidget(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                         Qt::WindowCloseButtonHint),
      body_(new QVBoxLayout),
      hint_(new QLabel(this)),
      row_(new QHBoxLayout) {
  auto* whole = new QVBoxLayout(this);
  whole->setContentsMargins(margin, margin, margin, margin);
  whole->setSpacing(spacing);
  body_->setSpacing(spacing);
  row_->setSpacing(spacing);
  hint_->setFont(font_for(TextRole::note));
  hint_->setWordWrap(true);
  hint_->hide();
  whole->addLayout(body_, 1);
  whole->addWidget(hint_);
  whole->addSpacing(above_buttons);
  whole->addLayout(row_);
}

DeskWindow::~DeskWindow() = default;

// --- Waiting ---

int DeskWindow::wait_for_answer() {
  if (is_waiting()) return answer::failed;
  QEventLoop loop;
  loop_ = &loop;
  answer_ = leave_code_;  // the answer if the program is told to end meanwhile
  waiting_windows().push_back(this);
  present();
  loop.exec();
  loop_ = nullptr;
  std::erase(waiting_windows(), this);
  if (beeper_ != nullptr) beeper_->stop();
  hide();
  return answer_;
}

void DeskWindow::finish(int code) {
  if (loop_ == nullptr) return;
  answer_ = code;
  loop_->quit();
}

void DeskWindow::press(int code) {
  if (is_waiting() && accepts(code)) finish(code);
}

void DeskWindow::present() {
  hint_->hide();
  place();
  mark_default();
  opens_minimised() ? showMinimized() : showNormal();
  raise();
  activateWindow();
  QWidget* focus = first_focus();
  if (focus == nullptr) {
    const auto at =
        std::find_if(buttons_.begin(), buttons_.end(), [](const DeskButton* one) { return one->is_default; });
    focus = at != buttons_.end() ? static_cast<QWidget*>(*at) : this;
  }
  focus->setFocus(Qt::OtherFocusReason);
  beep();
}

// Sounds the bell by the key "beep" for as long as the window waits.
void DeskWindow::beep() {
  const BeepKey& key = startup_config().beep;
  if (key.seconds <= 0 || !rings()) return;
  bell_ = std::make_unique<Beeper>(key.seconds, key.count, platform().clock->ticks());
  if (beeper_ == nullptr) {
    beeper_ = new QTimer(this);
    connect(beeper_, &QTimer::timeout, this, [this] { ring(); });
  }
  beeper_->start(bell_poll);
  ring();
}

void DeskWindow::ring() {
  if (bell_->due(platform().clock->ticks())) QApplication::beep();
}

void DeskWindow::place() {
  ensurePolished();
  const QRect screen = screen_of(*this)->availableGeometry();
  const QRect wanted = wanted_place();
  if (!wanted.isNull()) {
    setGeometry(wanted.intersected(screen).isEmpty() ? screen : wanted);
    return;
  }
  // A kept window may have changed inside since it was shown last: inner layouts first, then the whole.
  for (QWidget* inner : findChildren<QWidget*>()) {
    if (inner->layout() != nullptr) inner->layout()->activate();
  }
  layout()->activate();
  QSize size = sizeHint().expandedTo(minimumSizeHint()).expandedTo(QSize(least_width, 0));
  if (layout()->hasHeightForWidth())
    size.setHeight(std::max(size.height(), layout()->totalHeightForWidth(size.width())));
  size = size.boundedTo(screen.size() * 0.95);
  resize(size);
  const QWidget* owner = parentWidget();
  QPoint centre = owner != nullptr && owner->isVisible() ? owner->frameGeometry().center() : screen.center();
  centre.setX(std::clamp(centre.x() - size.width() / 2, screen.left(),
                         std::max(screen.left(), screen.right() - size.width())));
  centre.setY(std::clamp(centre.y() - size.height() / 2, screen.top(),
                         std::max(screen.top(), screen.bottom() - size.height())));
  move(centre);
}

// --- Buttons ---

DeskButton* DeskWindow::spare_button() {
  if (in_use_ == pool_.size()) pool_.push_back(new DeskButton(*this));
  return pool_[in_use_++];
}

void DeskWindow::fill_row(QHBoxLayout* row, const std::vector<Button>& buttons) {
  while (QLayoutItem* item = row->takeAt(0)) delete item;
  std::vector<DeskButton*> made;
  for (const Button& one : buttons) {
    DeskButton* button = spare_button();
    button->code = one.code;
    button->is_default = one.is_default;
    button->setText(shown(one.label));
    button->setEnabled(true);
    button->show();
    made.push_back(button);
    buttons_.push_back(button);
  }
  // What gives up stands at the far left, what goes on at the right: no slip of the hand takes one for the other.
  for (DeskButton* one : made) {
    if (gives_up(one->code)) row->addWidget(one);
  }
  row->addStretch(1);
  row->addSpacing(3 * spacing);
  for (DeskButton* one : made) {
    if (!gives_up(one->code)) row->addWidget(one);
  }
}

void DeskWindow::set_buttons(const std::vector<Button>& buttons, QHBoxLayout* aside_row,
                             const std::vector<Button>& aside) {
  buttons_.clear();
  in_use_ = 0;
  fill_row(row_, buttons);
  if (aside_row != nullptr) fill_row(aside_row, aside);
  for (std::size_t i = in_use_; i < pool_.size(); ++i) pool_[i]->hide();
  const bool marked =
      std::any_of(buttons_.begin(), buttons_.end(), [](const DeskButton* one) { return one->is_default; });
  if (!marked && !buttons_.empty()) buttons_.front()->is_default = true;

  std::vector<QString> labels;
  for (const DeskButton* one : buttons_) labels.push_back(one->text());
  labels = with_access_keys(labels);
  for (std::size_t i = 0; i < buttons_.size(); ++i) {
    buttons_[i]->setText(labels[i]);
    if (i > 0) setTabOrder(buttons_[i - 1], buttons_[i]);
  }
}

DeskButton* DeskWindow::button(int code) const {
  for (DeskButton* one : buttons_) {
    if (one->code == code) return one;
  }
  return nullptr;
}

void DeskWindow::enable_button(int code, bool enabled) {
  if (DeskButton* one = button(code)) one->setEnabled(enabled);
}

int DeskWindow::first_code() const { return buttons_.empty() ? answer::failed : buttons_.front()->code; }

// The button that Enter presses: the one that has the focus, else the default.
void DeskWindow::mark_default() {
  const auto* focused = dynamic_cast<DeskButton*>(focusWidget());
  const bool by_focus = focused != nullptr && focused->hasFocus();
  for (DeskButton* one : buttons_) one->stand_out(by_focus ? one == focused : one->is_default);
}

// --- Keys and closing ---

int DeskWindow::escape_code() const {
  if (button(answer::terminate) != nullptr) return answer::terminate;
  return answer::failed;
}

void DeskWindow::hint(const QString& text) {
  hint_->setText(QChar(0x25B6) + QString(" ") + text);
  hint_->show();
}

void DeskWindow::refuse_close() {
  QApplication::beep();
  hint(shown(msg(30808)));
}

void DeskWindow::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!is_waiting() || (!enter && event->key() != Qt::Key_Escape)) {
    QWidget::keyPressEvent(event);
    return;
  }
  event->accept();
  if (event->isAutoRepeat() || (enter && event->modifiers() & Qt::ShiftModifier)) return;
  if (!enter) {
    const int code = escape_code();
    code != answer::failed ? press(code) : refuse_close();
    return;
  }
  const auto* focused = dynamic_cast<DeskButton*>(focusWidget());
  for (DeskButton* one : buttons_) {
    const bool pressed = focused != nullptr ? one == focused : one->is_default;
    if (pressed && one->isEnabled()) return one->click();
  }
}

void DeskWindow::closeEvent(QCloseEvent* event) {
  if (!is_waiting()) return event->accept();
  event->ignore();
  const int code = close_code();
  code != answer::failed ? press(code) : refuse_close();
}

void abandon_windows() {
  const std::vector<DeskWindow*> windows = waiting_windows();
  for (auto window = windows.rbegin(); window != windows.rend(); ++window) (*window)->give_up();
}

DeskWindow* waiting_window() { return waiting_windows().empty() ? nullptr : waiting_windows().back(); }

}  // namespace orvane
