#pragma once
// Where a grid's rows come from, behind one interface:
// - BoundRows: the visible rows of a record set, in the set's sort and filter order; the current row is the
//   set's cursor. A column reads its field of the set; a column whose field the set lacks keeps what the logic
//   writes into it per row, in the grid.
// - UnboundRows: rows added as tab-separated text and removed by index; the grid holds their cells.
// A row is known by its bookmark, which survives sorting, filtering and removing other rows: the record set's
// own, or a number given to an added row. Both are small and dense, so per-row state can be kept by bookmark.
//
// The current row runs from 0 to count() (count() is past the last row, where a walk ends); a record set
// moved before its first row gives -1.

#include "messaging/recordset.h"
#include "platform/gridcolumns.h"
#include "platform/showntexts.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

namespace adjustacc::platform {

class GridColumns;

class GridRowSource {
public:
  using Bookmark = messaging::Bookmark;
  // How a write went: refused, written in place, or written and the row moved (a sorted set re-sorts).
  enum class Write { Refused, InPlace, Moved };

  GridRowSource() = default;
  virtual ~GridRowSource();
  GridRowSource(const GridRowSource&) = delete;
  GridRowSource& operator=(const GridRowSource&) = delete;

  virtual int count() const = 0;
  // kNoBookmark outside the rows.
  virtual Bookmark bookmarkAt(int row) const = 0;
  // -1 for a row not shown.
  virtual int rowOf(Bookmark id) const = 0;

  virtual int current() const = 0;
  // 0..count(); the caller checks the range.
  virtual void setCurrent(int row) = 0;
  virtual void moveFirst() = 0;
  virtual void moveLast() = 0;
  virtual void moveNext() = 0;  // stops at count()
  virtual void movePrevious() = 0;  // stops at 0

  // The row's own value of a column (row and id name the same row).
  virtual QVariant value(int row, Bookmark id, int column) const = 0;
  // The same as text (a null value as the empty text).
  virtual QString text(int row, Bookmark id, int column) const { return value(row, id, column).toString(); }
  // The row's own value as a column of that kind shows it; lists read every shown cell this way.
  virtual QString shownText(int row, Bookmark id, int column, GridColumn::Display display) const {
    return GridColumn::shownText(text(row, id, column), display);
  }
  virtual Write write(int row, Bookmark id, int column, const QVariant& value) = 0;
  // The row is gone: what the source keeps for it goes too.
  virtual void forget(Bookmark id) = 0;
};

class BoundRows final : public GridRowSource {
public:
  using Field = messaging::Field;

  explicit BoundRows(const GridColumns& columns) : m_columns(columns) {}

  const messaging::RecordSetPtr& recordset() const { return m_set; }
  // Follows another set (or none); the logic's values of columns without a field are dropped.
  void setRecordset(messaging::RecordSetPtr set);
  // Finds each column's field again, after the columns changed.
  void resolveFields();
  // The set changed (an assignment may even bring other fields): the columns follow its fields.
  void followFields();
  // Drops the logic's values of columns without a field.
  void clearExtraCells() { m_extraCells.clear(); }

  int count() const override;
  Bookmark bookmarkAt(int row) const override;
  int rowOf(Bookmark id) const override;
  int current() const override;
  void setCurrent(int row) override;
  void moveFirst() override;
  void moveLast() override;
  void moveNext() override;
  void movePrevious() override;
  QVariant value(int row, Bookmark id, int column) const override;
  QString text(int row, Bookmark id, int column) const override;
  QString shownText(int row, Bookmark id, int column, GridColumn::Display display) const override;
  Write write(int row, Bookmark id, int column, const QVariant& value) override;
  void forget(Bookmark id) override;

  // The set's field a column reads, or -1.
  int fieldOf(int column) const { return m_fieldOfColumn.value(column, -1); }

private:
  const GridColumns& m_columns;
  messaging::RecordSetPtr m_set;
  QList<Field> m_resolvedFor;       // the set's fields when the columns were last resolved
  QList<int> m_fieldOfColumn;       // per column: field index in the set, -1 when it has none
  QHash<Bookmark, QHash<int, QVariant>> m_extraCells;  // values of columns without a field
  mutable ShownTexts m_texts;
};

class UnboundRows final : public GridRowSource {
public:
  // Inserts a row before the row at index (count(): appends) from tab-separated cells, empty and trailing
  // cells kept ("a\t\tb\t" is four cells). The row that was current stays current; the position past the
  // end becomes the appended row. The caller checks the index.
  Bookmark insert(int index, const QString& tabSeparatedCells);
  Bookmark insert(int index, const QStringList& cells);
  // Removes the row at index. Removing the current row leaves the position between rows: the next
  // moveNext lands on the row that followed, so a walk removing marked rows removes them all.
  Bookmark removeAt(int index);
  void clear();

  int count() const override { return static_cast<int>(m_items.size()); }
  Bookmark bookmarkAt(int row) const override;
  int rowOf(Bookmark id) const override;
  int current() const override { return m_row; }
  void setCurrent(int row) override;
  void moveFirst() override;
  void moveLast() override;
  void moveNext() override;
  void movePrevious() override;
  QVariant value(int row, Bookmark id, int column) const override;
  Write write(int row, Bookmark id, int column, const QVariant& value) override;
  void forget(Bookmark) override {}

private:
  struct Item {
    Bookmark id;
    QList<QVariant> cells;
  };
  QList<Item> m_items;
  Bookmark m_nextId = 1;
  int m_row = 0;
  bool m_betweenRows = false;  // the current row was just removed
};

}  // namespace adjustacc::platform
