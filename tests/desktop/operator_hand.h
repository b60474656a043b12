// The operator's hand: acts on each window that waits, in turn, with keys and clicks.
#pragma once

#include <QTest>
#include <QTimer>
#include <deque>
#include <functional>

#include "desktop/window.h"

class QPushButton;

namespace orvane::test {

class Hand : public QObject {
 public:
  using Act = std::function<void(DeskWindow& window)>;

  Hand();
  /// Does this once the next window waits. Several in a row may act on the same window.
  Hand& then(Act act) {
    acts_.push_back(std::move(act));
    return *this;
  }
  Hand& key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  Hand& type(const char* text);
  Hand& close();
  /// Does this at every window for which nothing else is left to do.
  void always(Act act) { always_ = std::move(act); }
  bool is_done() const { return acts_.empty(); }

 private:
  void look();

  std::deque<Act> acts_;
  Act always_;
  QTimer timer_;
  int idle_ = 0;
};

/// Presses a key where the focus is.
void press_key(DeskWindow& window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
void type_text(DeskWindow& window, const QString& text);
QPushButton* button_of(DeskWindow& window, int code);

}  // namespace orvane::test
