#include "desktop/texts.h"

#include "messages/encoding.h"

namespace orvane {

QString shown(std::string_view text) { return QString::fromStdString(utf8_from_cp1252(text)); }

std::string typed(const QString& text) {
  std::string out;
  // Half of a character outside the basic plane is no UTF-8 and falls to the question mark as well.
  if (!cp1252_from_utf8(text.toStdString(), out)) out = text.toLatin1().toStdString();
  return out;
}

QString shown_path(std::string_view path) { return QString::fromStdString(utf8_from_either(path)); }

QString joined(const std::vector<std::string>& lines) {
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) text += (i == 0 ? "" : "\n") + lines[i];
  return shown(text);
}

std::vector<QString> with_access_keys(const std::vector<QString>& labels) {
  QString taken;
  std::vector<QString> keyed;
  for (const QString& label : labels) {
    qsizetype at = 0;
    while (at < label.size() && (!label[at].isLetter() || taken.contains(label[at].toLower()))) ++at;
    QString out = label;
    if (at < label.size()) taken += label[at].toLower();
    const QString before = out.left(at).replace('&', "&&"), behind = out.mid(at).replace('&', "&&");
    keyed.push_back(at < label.size() ? before + '&' + behind : before);
  }
  return keyed;
}

}  // namespace orvane
