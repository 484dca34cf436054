#include "platform/gridrows.h"

#include "platform/gridcolumns.h"

#include <utility>

namespace adjustacc::platform {

using messaging::Bookmark;
using messaging::kNoBookmark;

GridRowSource::~GridRowSource() = default;

// ===== BoundRows ===================================================================================

void BoundRows::setRecordset(messaging::RecordSetPtr set) {
  m_set = std::move(set);
  m_extraCells.clear();
  m_texts.clear();
  resolveFields();
}

void BoundRows::resolveFields() {
  m_fieldOfColumn.clear();
  m_resolvedFor = m_set ? m_set->fields() : QList<Field>();
  for (int c = 0; c < m_columns.count(); ++c) {
    const QString& field = m_columns.at(c)->dataField();
    m_fieldOfColumn.append(m_set && !field.isEmpty() ? m_set->fieldIndex(field) : -1);
  }
}

void BoundRows::followFields() {
  if (!m_set || m_set->fields() != m_resolvedFor) {
    resolveFields();
  }
}

int BoundRows::count() const {
  return m_set && m_set->isOpen() ? m_set->recordCount() : 0;
}

Bookmark BoundRows::bookmarkAt(int row) const {
  return row >= 0 && row < count() ? m_set->bookmarkAt(row) : kNoBookmark;
}

int BoundRows::rowOf(Bookmark id) const {
  return m_set && id != kNoBookmark ? m_set->rowOfBookmark(id) : -1;
}

int BoundRows::current() const {
  const int rows = count();
  if (rows == 0) {
    return 0;
  }
  if (m_set->eof()) {
    return rows;
  }
  if (m_set->bof()) {
    return -1;
  }
  return m_set->absolutePosition();
}

void BoundRows::setCurrent(int row) {
  const int rows = count();
  if (row < rows) {
    m_set->setAbsolutePosition(row);
  } else if (rows > 0) {
    m_set->moveLast();
    m_set->moveNext();
  }
}

void BoundRows::moveFirst() {
  if (count() > 0) {
    m_set->moveFirst();
  }
}

void BoundRows::moveLast() {
  if (count() > 0) {
    m_set->moveLast();
  }
}

void BoundRows::moveNext() {
  if (count() > 0 && !m_set->eof()) {
    m_set->moveNext();
  }
}

void BoundRows::movePrevious() {
  if (count() > 0 && current() > 0) {
    m_set->movePrevious();
  }
}

QVariant BoundRows::value(int row, Bookmark id, int column) const {
  const int field = fieldOf(column);
  if (field >= 0) {
    return m_set->valueAt(row, field);
  }
  const auto extra = m_extraCells.constFind(id);
  return extra == m_extraCells.constEnd() ? QVariant() : extra->value(column);
}

QString BoundRows::text(int row, Bookmark id, int column) const {
  const int field = fieldOf(column);
  if (field >= 0) {
    return m_texts.text(*m_set, row, id, field);
  }
  const auto extra = m_extraCells.constFind(id);
  return extra == m_extraCells.constEnd() ? QString() : extra->value(column).toString();
}

QString BoundRows::shownText(int row, Bookmark id, int column, GridColumn::Display display) const {
  const int field = fieldOf(column);
  if (field >= 0) {
    return m_texts.shown(*m_set, row, id, field, display);
  }
  return GridRowSource::shownText(row, id, column, display);
}

GridRowSource::Write BoundRows::write(int row, Bookmark id, int column, const QVariant& value) {
  const int field = fieldOf(column);
  if (field < 0) {
    m_extraCells[id].insert(column, value);
    return Write::InPlace;
  }
  if (!m_set->updateAt(id, field, value)) {
    return Write::Refused;
  }
  return m_set->rowOfBookmark(id) == row ? Write::InPlace : Write::Moved;
}

void BoundRows::forget(Bookmark id) {
  m_extraCells.remove(id);
}

// ===== UnboundRows =================================================================================

Bookmark UnboundRows::insert(int index, const QString& tabSeparatedCells) {
  return insert(index, tabSeparatedCells.split(QLatin1Char('\t'), Qt::KeepEmptyParts));
}

Bookmark UnboundRows::insert(int index, const QStringList& cells) {
  const int before = count();
  Item item{m_nextId++, {}};
  item.cells.reserve(cells.size());
  for (const QString& cell : cells) {
    item.cells.append(cell);
  }
  const Bookmark id = item.id;
  m_items.insert(index, std::move(item));
  if (index < m_row || (index == m_row && m_row < before)) {
    ++m_row;
  }
  return id;
}

Bookmark UnboundRows::removeAt(int index) {
  const Bookmark id = m_items[index].id;
  m_items.removeAt(index);
  if (index < m_row) {
    --m_row;
  } else if (index == m_row) {
    m_betweenRows = true;
  }
  m_row = qMin(m_row, count());
  return id;
}

void UnboundRows::clear() {
  m_items.clear();
  m_row = 0;
  m_betweenRows = false;
}

Bookmark UnboundRows::bookmarkAt(int row) const {
  return row >= 0 && row < count() ? m_items[row].id : kNoBookmark;
}

int UnboundRows::rowOf(Bookmark id) const {
  if (id == kNoBookmark) {
    return -1;
  }
  for (int i = 0; i < m_items.size(); ++i) {
    if (m_items[i].id == id) {
      return i;
    }
  }
  return -1;
}

void UnboundRows::setCurrent(int row) {
  m_row = row;
  m_betweenRows = false;
}

void UnboundRows::moveFirst() {
  setCurrent(0);
}

void UnboundRows::moveLast() {
  setCurrent(qMax(0, count() - 1));
}

void UnboundRows::moveNext() {
  if (m_betweenRows) {
    m_betweenRows = false;
  } else if (m_row < count()) {
    ++m_row;
  }
}

void UnboundRows::movePrevious() {
  m_betweenRows = false;
  if (m_row > 0) {
    --m_row;
  }
}

QVariant UnboundRows::value(int row, Bookmark, int column) const {
  return m_items[row].cells.value(column);
}

GridRowSource::Write UnboundRows::write(int row, Bookmark, int column, const QVariant& value) {
  QList<QVariant>& cells = m_items[row].cells;
  while (cells.size() <= column) {
    cells.append(QVariant());
  }
  cells[column] = value;
  return Write::InPlace;
}

}  // namespace adjustacc::platform
