#include "operator_hand.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>

#include "desktop/button.h"

namespace orvane::test {
namespace {

constexpr int interval = 2, patience = 5000;  // milliseconds

QWidget* focus_of(DeskWindow& window) {
  QWidget* focus = window.focusWidget();
  return focus != nullptr ? focus : &window;
}

}  // namespace

Hand::Hand() {
  connect(&timer_, &QTimer::timeout, this, [this] { look(); });
  timer_.setSingleShot(true);
  timer_.start(interval);
}

// The timer is started first: an act may open another window, in which the hand goes on.
void Hand::look() {
  timer_.start(interval);
  DeskWindow* window = waiting_window();
  if (window == nullptr || !window->isVisible()) {
    idle_ = 0;
    return;
  }
  if (!acts_.empty()) {
    idle_ = 0;
    const Act act = std::move(acts_.front());
    acts_.pop_front();
    act(*window);
  } else if (always_) {
    always_(*window);
  } else if (++idle_ > patience / interval) {
    ADD_FAILURE() << "nobody answers the window \"" << window->windowTitle().toStdString() << '"';
    abandon_windows();
  }
}

Hand& Hand::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  return then([=](DeskWindow& window) { press_key(window, key, modifiers); });
}

Hand& Hand::type(const char* text) {
  return then([=](DeskWindow& window) { type_text(window, QString::fromUtf8(text)); });
}

Hand& Hand::close() {
  return then([](DeskWindow& window) {
    window.close();
    EXPECT_TRUE(window.is_waiting() && window.isVisible()) << "closing answered the window";
  });
}

void press_key(DeskWindow& window, Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(focus_of(window), key, modifiers);
}

void type_text(DeskWindow& window, const QString& text) {
  for (const QChar letter : text) {
    QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(letter));
    QApplication::sendEvent(focus_of(window), &press);
  }
}

QPushButton* button_of(DeskWindow& window, int code) {
  for (DeskButton* one : window.findChildren<DeskButton*>()) {
    if (one->code == code && one->isVisible()) return one;
  }
  return nullptr;
}

}  // namespace orvane::test
