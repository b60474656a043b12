// How things look: type that is read from arm's length, and the colours of verdicts, which always come with a sign
// and a word as well. Everything derives from the user's palette, so dark and high-contrast themes hold.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>

namespace orvane {

enum class TextRole {
  prompt,   // what the operator is told or asked; the key prompt_font
  table,    // texts whose columns must stand below each other
  heading,  // the status window; the key head_font
  verdict,  // the status of a test
  button,
  note
};
QFont font_for(TextRole role);

/// The sign of a result colour: a tick, a cross and others, never two alike for different verdicts.
QString verdict_sign(int colour);
/// Its short word: PASS, FAIL, ...; empty for a comment.
QString verdict_word(int colour);
/// Its colour, light or dark enough to be read on the palette's ground for texts.
QColor verdict_colour(int colour, const QPalette& palette);

/// The colour nearest to `wanted` in its hue that has the contrast `ratio` on the ground.
QColor readable(QColor wanted, const QColor& ground, double ratio = 4.5);
/// The contrast of two colours, 1 to 21.
double contrast(const QColor& one, const QColor& other);

}  // namespace orvane
