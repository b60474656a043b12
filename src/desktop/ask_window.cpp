#include "desktop/ask_window.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/look.h"
#include "desktop/text_pane.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int least_field = 8, widest_field = 40;  // characters

}  // namespace

AskBox::AskBox(QWidget* owner)
    : DeskWindow(owner),
      lines_(new TextPane(this)),
      field_(new QLineEdit(this)),
      look_(new QPushButton(this)),
      understood_(new QLabel(this)) {
  field_->setFont(font_for(TextRole::prompt));
  understood_->setFont(font_for(TextRole::note));
  understood_->setTextFormat(Qt::PlainText);
  body()->addWidget(lines_, 1);
  look_->setText(shown(msg(31340)));
  look_->setAutoDefault(false);
  auto* row = new QHBoxLayout;
  row->addWidget(field_, 1);
  row->addWidget(look_);
  body()->addLayout(row);
  body()->addWidget(understood_);
  connect(look_, &QPushButton::clicked, this, [this] { look_for_place(); });
  connect(field_, &QLineEdit::textChanged, this, [this] { show_understood(); });
}

int AskBox::ask(const AskWindow& window, std::string& text) {
  setWindowTitle(shown(window.title));
  lines_->set_lines(window.lines);
  field_->setEchoMode(window.echo ? QLineEdit::Normal : QLineEdit::Password);
  field_->setMaxLength(static_cast<int>(std::min<std::size_t>(window.length, 32767)));
  field_->setText(shown(text));
  field_->selectAll();
  look_->setVisible(window.names_a_file);
  const int width = std::clamp(static_cast<int>(window.length), least_field, widest_field);
  field_->setMinimumWidth(field_->fontMetrics().horizontalAdvance('0') * (width + 2));
  show_understood();
  set_buttons(window.buttons);
  const int code = wait_for_answer();
  if (code == first_code()) text = typed(field_->text());
  field_->clear();  // a password does not stay in a window that is kept
  return code;
}

QWidget* AskBox::first_focus() { return field_; }

// Whether a file of that name is replaced is asked by whoever writes it.
void AskBox::look_for_place() {
  const QString path = QFileDialog::getSaveFileName(this, windowTitle(), field_->text(), QString(), nullptr,
                                                    QFileDialog::DontConfirmOverwrite);
  if (!path.isEmpty()) field_->setText(path);
  field_->setFocus(Qt::OtherFocusReason);
}

// A number that was not typed as the program writes it, with a comma or an exponent, is shown as it is taken.
void AskBox::show_understood() {
  std::string number = typed(field_->text());
  std::string understood;
  if (field_->echoMode() == QLineEdit::Normal) {
    all_commas_to_points(number);
    if (const auto value = whole_number(number)) understood = formatted("%.12g", *value);
  }
  understood_->setText(understood.empty() || understood == typed(field_->text()) ? QString()
                                                                                 : "= " + shown(understood));
}

}  // namespace orvane
