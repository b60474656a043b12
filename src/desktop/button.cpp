#include "desktop/button.h"

#include <QApplication>

#include "desktop/look.h"
#include "desktop/window.h"

namespace orvane {
namespace {

constexpr int least_height = 44, least_width = 120;

}  // namespace

DeskButton::DeskButton(DeskWindow& window) : QPushButton(&window), window_(window) {
  setFont(font_for(TextRole::button));
  setMinimumSize(least_width, least_height);
  connect(this, &QPushButton::clicked, this, [this] { window_.press(code); });
}

void DeskButton::stand_out(bool out) {
  QPalette colours = QApplication::palette();
  if (out) {
    colours.setColor(QPalette::Button, colours.color(QPalette::Highlight));
    colours.setColor(QPalette::ButtonText, colours.color(QPalette::HighlightedText));
  }
  setPalette(colours);
  QFont font = font_for(TextRole::button);
  font.setBold(out);
  setFont(font);
}

void DeskButton::focusInEvent(QFocusEvent* event) {
  QPushButton::focusInEvent(event);
  window_.mark_default();
}

void DeskButton::focusOutEvent(QFocusEvent* event) {
  QPushButton::focusOutEvent(event);
  window_.mark_default();
}

}  // namespace orvane
