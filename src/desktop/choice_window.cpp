#include "desktop/choice_window.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QVBoxLayout>

#include "desktop/look.h"
#include "desktop/row_model.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr int rows_in_sight = 16, least_rows = 6, rows_measured = 60, row_padding = 10, column_padding = 28;
constexpr int least_width = 620, widest = 1200;

bool moves_in_list(int key) {
  return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
}

}  // namespace

ChoiceBox::ChoiceBox(QWidget* owner)
    : DeskWindow(owner),
      model_(std::make_unique<RowModel>()),
      filter_(new QLineEdit(this)),
      count_(new QLabel(this)),
      table_(new QTableView(this)) {
  filter_->setFont(font_for(TextRole::prompt));
  filter_->setPlaceholderText(shown(msg(30813)));
  filter_->setClearButtonEnabled(true);
  filter_->installEventFilter(this);
  count_->setFont(font_for(TextRole::note));
  table_->setModel(model_.get());
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setShowGrid(false);
  table_->setWordWrap(false);
  table_->setTabKeyNavigation(false);
  table_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table_->horizontalHeader()->setStretchLastSection(true);
  table_->horizontalHeader()->setHighlightSections(false);
  body()->addWidget(filter_);
  body()->addWidget(table_, 1);
  body()->addWidget(count_);
  connect(filter_, &QLineEdit::textChanged, this, [this](const QString& text) { narrow(text); });
  connect(table_, &QTableView::doubleClicked, this, [this] { press(first_code()); });
}

ChoiceBox::~ChoiceBox() {
  table_->setModel(nullptr);  // the model goes first
}

int ChoiceBox::choose(const ChoiceWindow& window, std::size_t& row) {
  if (window.rows == nullptr || is_waiting()) return answer::failed;
  setWindowTitle(shown(window.title));
  minimised_ = window.minimised;
  const bool listing = window.kind == WindowKind::listing;
  table_->setFont(font_for(listing ? TextRole::table : TextRole::button));
  table_->horizontalHeader()->setFont(font_for(TextRole::note));
  table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + row_padding);
  filter_->clear();
  filter_->setVisible(window.filter);
  count_->setVisible(window.filter);
  model_->set_rows(window.rows, shown(window.headings));
  table_->horizontalHeader()->setVisible(!window.headings.empty());
  fit_columns(window);
  set_buttons(window.buttons);
  narrow({});
  select(static_cast<int>(window.first_row));
  const int code = wait_for_answer();
  if (code == first_code() && table_->currentIndex().isValid())
    row = model_->source_row(table_->currentIndex().row());
  model_->set_rows(nullptr, {});  // they are the caller's
  return code;
}

// Columns are as wide as the rows around the first one need; a list is not read to its end for that.
void ChoiceBox::fit_columns(const ChoiceWindow& window) {
  const QFontMetrics letters = table_->fontMetrics();
  const int count = model_->rowCount();
  const int first = std::clamp(static_cast<int>(window.first_row) - rows_measured / 2, 0, count);
  int whole = 0;
  for (int column = 0; column < model_->columnCount(); ++column) {
    int width = letters.horizontalAdvance(model_->headings().value(column));
    for (int row = first; row < std::min(count, first + rows_measured); ++row)
      width = std::max(width, letters.horizontalAdvance(
                                  model_->data(model_->index(row, column), Qt::DisplayRole).toString()));
    table_->setColumnWidth(column, width + column_padding);
    whole += width + column_padding;
  }
  const int rows = std::clamp(count, least_rows, rows_in_sight);
  const int height = table_->verticalHeader()->defaultSectionSize() * (rows + 1) + row_padding;
  const QSize room = screen()->availableSize() * 0.9;
  table_->setMinimumSize(std::min(std::clamp(whole + 40, least_width, widest), room.width()),
                         std::min(height, room.height() * 2 / 3));
}

void ChoiceBox::narrow(const QString& text) {
  model_->narrow(text);
  select(0);
  count_->setText(shown(msg(30814, model_->rowCount())));
  enable_button(first_code(), model_->rowCount() > 0);
}

void ChoiceBox::select(int row) {
  if (row >= model_->rowCount()) return;
  table_->setCurrentIndex(model_->index(row, 0));
  table_->scrollTo(model_->index(row, 0), QAbstractItemView::PositionAtCenter);
}

bool ChoiceBox::accepts(int code) {
  if (code != first_code() || table_->currentIndex().isValid()) return true;
  hint(shown(msg(30815)));
  return false;
}

QWidget* ChoiceBox::first_focus() {
  if (filter_->isVisibleTo(this)) return filter_;
  return table_;
}

// While words are typed the arrow keys move in the list.
bool ChoiceBox::eventFilter(QObject* object, QEvent* event) {
  if (object == filter_ && event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (moves_in_list(key->key())) {
      QCoreApplication::sendEvent(table_, key);
      return true;
    }
  }
  return DeskWindow::eventFilter(object, event);
}

}  // namespace orvane
