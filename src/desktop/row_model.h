// The rows of a list for the toolkit's table: a window on a RowSource, whole or narrowed by words.
#pragma once

#include <QAbstractTableModel>
#include <QFont>
#include <QPalette>
#include <QStringList>
#include <vector>

#include "platform/operator.h"

namespace orvane {

class RowModel : public QAbstractTableModel {
 public:
  /// Takes the rows of a list, or with null lets them go. `headings` are parted by tabs; without them the first row
  /// tells how many columns there are.
  void set_rows(const RowSource* rows, const QString& headings);
  /// Keeps the rows that hold every word, in whatever case; empty: all.
  void narrow(const QString& words);
  /// The index in the source of a row that is shown.
  std::size_t source_row(int row) const;
  bool is_narrowed() const { return narrowed_; }
  const QStringList& headings() const { return headings_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  const QStringList& columns_of(std::size_t row) const;

  const RowSource* rows_ = nullptr;
  std::size_t count_ = 0;
  QStringList headings_;
  int columns_ = 1;
  bool narrowed_ = false;
  std::vector<std::size_t> kept_;  // while narrowed
  mutable std::size_t split_row_ = 0;
  mutable bool split_ = false;  // split_columns_ are those of split_row_
  mutable QStringList split_columns_;
};

}  // namespace orvane
