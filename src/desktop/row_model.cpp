#include "desktop/row_model.h"

#include <QApplication>
#include <QBrush>
#include <algorithm>
#include <limits>

#include "desktop/look.h"
#include "desktop/texts.h"

namespace orvane {

void RowModel::set_rows(const RowSource* rows, const QString& headings) {
  beginResetModel();
  rows_ = rows;
  count_ = rows != nullptr ? rows->count() : 0;
  headings_ = headings.isEmpty() ? QStringList() : headings.split('\t');
  narrowed_ = split_ = false;
  kept_.clear();
  columns_ = std::max<int>(1, static_cast<int>(headings_.size()));
  if (headings_.isEmpty() && count_ > 0) columns_ = static_cast<int>(columns_of(0).size());
  endResetModel();
}

void RowModel::narrow(const QString& words) {
  const QStringList wanted = words.split(' ', Qt::SkipEmptyParts);
  beginResetModel();
  narrowed_ = !wanted.isEmpty();
  kept_.clear();
  for (std::size_t i = 0; narrowed_ && i < count_; ++i) {
    const QString row = shown(rows_->row(i));
    const auto holds = [&](const QString& word) { return row.contains(word, Qt::CaseInsensitive); };
    if (std::all_of(wanted.begin(), wanted.end(), holds)) kept_.push_back(i);
  }
  endResetModel();
}

std::size_t RowModel::source_row(int row) const {
  const auto at = static_cast<std::size_t>(row);
  return narrowed_ ? kept_[at] : at;
}

int RowModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid()) return 0;
  const std::size_t count = narrowed_ ? kept_.size() : count_;
  return static_cast<int>(std::min<std::size_t>(count, std::numeric_limits<int>::max()));
}

int RowModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : columns_; }

const QStringList& RowModel::columns_of(std::size_t row) const {
  if (!split_ || split_row_ != row) {
    split_columns_ = shown(rows_->row(row)).split('\t');
    split_row_ = row;
    split_ = true;
  }
  return split_columns_;
}

QVariant RowModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || rows_ == nullptr) return {};
  const std::size_t row = source_row(index.row());
  if (role == Qt::DisplayRole) return columns_of(row).value(index.column());
  if (role == Qt::ForegroundRole) {
    if (const int colour = rows_->colour(row)) return QBrush(verdict_colour(colour, QApplication::palette()));
  }
  return {};
}

QVariant RowModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Horizontal && role == Qt::DisplayRole) return headings_.value(section);
  if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole)
    return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
  return {};
}

}  // namespace orvane
