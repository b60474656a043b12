// A text of lines, as large as it needs and scrolled where the screen ends.
#pragma once

#include <QScrollArea>
#include <string>
#include <vector>

class QLabel;

namespace orvane {

class TextPane : public QScrollArea {
 public:
  explicit TextPane(QWidget* owner);
  /// Lines whose columns are parted by blanks stand in type of one width, others in that of prompts.
  void set_lines(const std::vector<std::string>& lines);
  void set_text(const QString& text, const QFont& font);
  QString text() const;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 private:
  QLabel* label_;
};

}  // namespace orvane
