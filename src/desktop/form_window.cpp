#include "desktop/form_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/look.h"
#include "desktop/text_pane.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr int widest_field = 32, number_width = 16;  // characters
constexpr std::string_view yes = "YES", no = "NO";

int width_of(const FormField& field) {
  if (field.kind == FieldKind::number || field.kind == FieldKind::integer || field.kind == FieldKind::date)
    return number_width;
  const int length = static_cast<int>(std::min<std::size_t>(field.length, widest_field));
  return length > 0 ? length + 2 : widest_field;
}

std::string text_of(const QWidget* editor) {
  if (const auto* box = dynamic_cast<const QComboBox*>(editor)) return typed(box->currentText());
  if (const auto* check = dynamic_cast<const QCheckBox*>(editor))
    return std::string(check->isChecked() ? yes : no);
  return typed(static_cast<const QLineEdit*>(editor)->text());
}

void fill_choices(QComboBox* box, const FormField& field) {
  box->clear();
  for (const std::string& choice : field.choices) box->addItem(shown(choice));
  const int at = box->findText(shown(field.text), Qt::MatchFixedString);
  // A text that is none of the choices is shown as it is, and told as a fault when it is entered.
  if (at < 0) box->insertItem(0, shown(field.text));
  box->setCurrentIndex(std::max(at, 0));
}

QWidget* choice_editor(const FormField& field) {
  auto* box = new QComboBox;
  fill_choices(box, field);
  box->setEnabled(!field.read_only);
  return box;
}

QWidget* text_editor(const FormField& field) {
  auto* edit = new QLineEdit(shown(field.text));
  if (field.length > 0) edit->setMaxLength(static_cast<int>(std::min<std::size_t>(field.length, 32767)));
  if (field.kind == FieldKind::date) edit->setPlaceholderText(shown(msg(30816)));
  edit->setReadOnly(field.read_only);
  if (field.read_only) edit->setFocusPolicy(Qt::ClickFocus);
  return edit;
}

}  // namespace

FormBox::FormBox(QWidget* owner)
    : DeskWindow(owner), lines_(new TextPane(this)), area_(new QScrollArea(this)) {
  area_->setWidgetResizable(true);
  area_->setFrameShape(QFrame::NoFrame);
  area_->setFocusPolicy(Qt::NoFocus);
  body()->addWidget(lines_);
  body()->addWidget(area_, 1);
}

int FormBox::fill(FormWindow& window) {
  if (is_waiting()) return answer::failed;
  setWindowTitle(shown(window.title));
  lines_->setVisible(!window.lines.empty());
  lines_->set_lines(window.lines);
  window_ = &window;
  make_rows();
  set_buttons(window.buttons);
  const int code = wait_for_answer();
  if (code == first_code()) read_fields();
  window_ = nullptr;
  return code;
}

QWidget* FormBox::make_editor(const FormField& field) {
  QWidget* editor = nullptr;
  if (field.kind == FieldKind::choice) {
    editor = choice_editor(field);
  } else if (field.kind == FieldKind::check) {
    auto* check = new QCheckBox(shown(msg(30041)));
    check->setChecked(shown(field.text).compare(shown(yes), Qt::CaseInsensitive) == 0);
    check->setEnabled(!field.read_only);
    editor = check;
  } else {
    editor = text_editor(field);
  }
  editor->setFont(font_for(TextRole::prompt));
  if (field.kind != FieldKind::check)
    editor->setMinimumWidth(editor->fontMetrics().horizontalAdvance('0') * width_of(field));
  return editor;
}

// The fields are made anew for each form: nothing of the last one is seen or filled in again.
void FormBox::make_rows() {
  rows_.clear();
  delete area_->takeWidget();
  fields_ = new QWidget;
  auto* grid = new QGridLayout(fields_);
  grid->setHorizontalSpacing(18);
  grid->setVerticalSpacing(10);
  grid->setColumnStretch(1, 1);
  for (const FormField& field : window_->fields) {
    const int at = static_cast<int>(rows_.size());
    auto* label = new QLabel(shown(field.label) + (field.required ? " *" : ""));
    label->setTextFormat(Qt::PlainText);
    label->setFont(font_for(TextRole::prompt));
    if (field.kind == FieldKind::note) {
      label->setText(shown(field.label.empty() ? field.text : field.label));
      grid->addWidget(label, 2 * at, 0, 1, 2);
      rows_.emplace_back();
      continue;
    }
    Row row;
    row.editor = make_editor(field);
    if (const auto* box = dynamic_cast<QComboBox*>(row.editor))
      connect(box, &QComboBox::currentIndexChanged, this, [this] { follow(); });
    row.fault = new QLabel;
    row.fault->setTextFormat(Qt::PlainText);
    row.fault->setWordWrap(true);
    row.fault->setFont(font_for(TextRole::note));
    row.fault->hide();
    QPalette colours = row.fault->palette();
    colours.setColor(QPalette::WindowText, readable(Qt::red, colours.color(QPalette::Window)));
    row.fault->setPalette(colours);
    label->setBuddy(row.editor);
    grid->addWidget(label, 2 * at, 0, Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(row.editor, 2 * at, 1);
    grid->addWidget(row.fault, 2 * at + 1, 1);
    rows_.push_back(row);
  }
  grid->setRowStretch(2 * static_cast<int>(rows_.size()), 1);
  area_->setWidget(fields_);
  // Room for some faults, so that the window need not scroll as soon as one is told.
  const QSize size = fields_->sizeHint() + QSize(area_->verticalScrollBar()->sizeHint().width(), 60);
  const QSize room = screen()->availableSize();
  area_->setMinimumSize(size.boundedTo(QSize(room.width() * 9 / 10, room.height() * 6 / 10)));
}

void FormBox::read_fields() {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (rows_[i].editor != nullptr) window_->fields[i].text = text_of(rows_[i].editor);
  }
}

// Entries that others hang on are choices.
void FormBox::follow() {
  if (following_ || window_ == nullptr || !window_->changed) return;
  following_ = true;
  read_fields();
  window_->changed(*window_);
  show_choices();
  following_ = false;
}

void FormBox::show_choices() {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (auto* box = dynamic_cast<QComboBox*>(rows_[i].editor)) fill_choices(box, window_->fields[i]);
    if (auto* check = dynamic_cast<QCheckBox*>(rows_[i].editor))
      check->setChecked(shown(window_->fields[i].text).compare(shown(yes), Qt::CaseInsensitive) == 0);
  }
}

// Every fault is told at once; the focus goes to the first of them.
bool FormBox::accepts(int code) {
  if (code != first_code()) return true;
  read_fields();
  QWidget* first = nullptr;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (rows_[i].editor == nullptr) continue;
    const std::string reason = window_->fault ? window_->fault(window_->fields[i]) : std::string();
    rows_[i].fault->setText(reason.empty() ? QString() : QChar(0x25B2) + QString(" ") + shown(reason));
    rows_[i].fault->setVisible(!reason.empty());
    if (!reason.empty() && first == nullptr) first = rows_[i].editor;
  }
  if (first == nullptr) return true;
  first->setFocus(Qt::OtherFocusReason);
  if (auto* edit = dynamic_cast<QLineEdit*>(first)) edit->selectAll();
  area_->ensureWidgetVisible(first);
  return false;
}

QWidget* FormBox::first_focus() {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (rows_[i].editor != nullptr && !window_->fields[i].read_only) return rows_[i].editor;
  }
  return nullptr;
}

}  // namespace orvane
