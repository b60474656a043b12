#include "desktop/look.h"

#include <QApplication>
#include <QFontDatabase>
#include <algorithm>
#include <cmath>

#include "config/startup_config.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"
#include "platform/operator.h"

namespace orvane {
namespace {

// Values of the keys prompt_font and head_font.
constexpr int prompt_system = 1, prompt_display = 3, head_system = 1;

QFont scaled(QFont font, double factor, bool bold = false) {
  const double points = font.pointSizeF() > 0 ? font.pointSizeF() : 10;
  font.setPointSizeF(std::max(points, 9.0) * factor);
  font.setBold(bold);
  return font;
}

QFont fixed_font() {
  QFont font = QApplication::font();
  font.setFamilies({"DejaVu Sans Mono", "Consolas", "Courier New"});
  font.setStyleHint(QFont::Monospace);
  return font;
}

QFont prompt_font() {
  switch (startup_config().prompt_font) {
    case prompt_system: return QApplication::font();
    case prompt_display: return scaled(fixed_font(), 1.45);
    default: return scaled(QApplication::font(), 1.6);
  }
}

// One row a result colour. `rgb` is the colour of the house; where it cannot be read on the ground its lightness gives
// way, never its hue.
struct VerdictRow {
  int colour;
  QRgb rgb;
  char16_t sign;
  int word;
};
constexpr VerdictRow verdicts[] = {
    {result_colour::pass, qRgb(0x00, 0xFF, 0x00), u'\u2713', 30801},
    {result_colour::fail, qRgb(0xFF, 0x00, 0x00), u'\u2717', 30802},
    {result_colour::marginal, qRgb(0xFF, 0xFF, 0x00), u'\u25B2', 30803},
    {result_colour::skipped, qRgb(0xFF, 0x00, 0x00), u'\u00BB', 30804},
    {result_colour::stopped, qRgb(0xFF, 0x00, 0x00), u'\u25A0', 30805},
    {result_colour::comment, qRgb(0x00, 0xFF, 0xFF), u'\u2013', 0},
    {result_colour::pass_indeterminate, qRgb(0x00, 0xAA, 0x00), u'\u2248', 30806},
    {result_colour::fail_indeterminate, qRgb(0xFF, 0x55, 0x55), u'\u2260', 30807},
};
constexpr VerdictRow unknown_verdict = {0, qRgb(0xFF, 0x00, 0x00), u'?', 0};

const VerdictRow& verdict(int colour) {
  for (const VerdictRow& row : verdicts) {
    if (row.colour == colour) return row;
  }
  return unknown_verdict;
}

double linear(double part) { return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); }
double luminance(const QColor& colour) {
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

}  // namespace

QFont font_for(TextRole role) {
  const bool system_heading = startup_config().head_font == head_system;
  switch (role) {
    case TextRole::prompt: return prompt_font();
    case TextRole::table: return scaled(fixed_font(), 1.4);
    case TextRole::heading:
      return system_heading ? QApplication::font() : scaled(QApplication::font(), 1.6, true);
    case TextRole::verdict: return scaled(QApplication::font(), 2.2, true);
    case TextRole::button: return scaled(QApplication::font(), 1.3);
    case TextRole::note: return scaled(QApplication::font(), 1.1);
  }
  return QApplication::font();
}

QString verdict_sign(int colour) { return QChar(verdict(colour).sign); }

QString verdict_word(int colour) {
  const int word = verdict(colour).word;
  return word != 0 ? shown(msg(word)) : QString();
}

QColor verdict_colour(int colour, const QPalette& palette) {
  return readable(QColor(verdict(colour).rgb), palette.color(QPalette::Base));
}

double contrast(const QColor& one, const QColor& other) {
  const double a = luminance(one) + 0.05, b = luminance(other) + 0.05;
  return std::max(a, b) / std::min(a, b);
}

QColor readable(QColor wanted, const QColor& ground, double ratio) {
  const bool darken = luminance(ground) > 0.18;
  const int hue = wanted.hslHue(), saturation = wanted.hslSaturation();
  int lightness = wanted.lightness();
  while (contrast(wanted, ground) < ratio && lightness > 0 && lightness < 255) {
    lightness = std::clamp(lightness + (darken ? -4 : 4), 0, 255);
    wanted = QColor::fromHsl(hue, saturation, lightness);
  }
  return wanted;
}

}  // namespace orvane
