#include "desktop/button.h"

#include <QApplication>

#include "desktop/look.h"
#include "desktop/window.h"

namespace orvane {
namespace {

constexpr int least_height = 46, least_width = 120, padding = 28;
constexpr double face_contrast = 7.5;

}  // namespace

DeskButton::DeskButton(DeskWindow& window) : QPushButton(&window), window_(window) {
  setFont(font_for(TextRole::button));
  setMinimumSize(least_width, least_height);
  connect(this, &QPushButton::clicked, this, [this] { window_.press(code); });
}

void DeskButton::stand_out(bool out) {
  QPalette colours = QApplication::palette();
  if (out) {
    const QColor text = colours.color(QPalette::HighlightedText);
    // Styles lighten a button's face: more contrast than its text needs stays enough.
    colours.setColor(QPalette::Button, readable(colours.color(QPalette::Highlight), text, face_contrast));
    colours.setColor(QPalette::ButtonText, text);
  }
  setPalette(colours);
  QFont font = font_for(TextRole::button);
  font.setBold(out);
  setFont(font);
}

// As wide as the label in bold type, so that nothing moves when the button stands out.
QSize DeskButton::sizeHint() const {
  QFont bold = font();
  bold.setBold(true);
  const QString label = text().remove('&');
  return {QFontMetrics(bold).horizontalAdvance(label) + padding, QPushButton::sizeHint().height()};
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
