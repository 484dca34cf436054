#include "platform/grid.h"

#include "platform/datacontrol.h"

#include <utility>

namespace adjustacc::platform {

using messaging::Bookmark;
using messaging::kNoBookmark;

namespace {
const QString kChecked = QStringLiteral("-1");
const QString kCleared = QStringLiteral("0");
}  // namespace

// ===== set-up ======================================================================================

Grid::Grid(QString name, QObject* parent) : Control(std::move(name), parent) {}

Grid::~Grid() = default;

void Grid::setCaption(const QString& caption) {
  if (m_caption == caption) {
    return;
  }
  m_caption = caption;
  notifyChanged();
  Q_EMIT headerChanged();
}

void Grid::setFont(const QFont& font) {
  if (m_font == font) {
    return;
  }
  m_font = font;
  notifyChanged();
  Q_EMIT headerChanged();
}

// ===== columns =====================================================================================

GridColumn& Grid::addColumn(const QString& name, const QString& caption, const QString& dataField) {
  GridColumn* added = nullptr;
  m_announcer.resetLayout([&] {
    added = &m_columns.append(name, caption, dataField);
    columnsReplaced();
  });
  return *added;
}

GridColumn& Grid::column(int index) {
  if (GridColumn* found = m_columns.at(index)) {
    return *found;
  }
  qCWarning(lcControls) << "grid" << name() << "has no column" << index;
  return m_columns.nullColumn();
}

const GridColumn& Grid::column(int index) const {
  if (const GridColumn* found = m_columns.at(index)) {
    return *found;
  }
  qCWarning(lcControls) << "grid" << name() << "has no column" << index;
  return m_columns.nullColumn();
}

GridColumn& Grid::column(const QString& name) {
  if (GridColumn* found = m_columns.at(columnIndex(name))) {
    return *found;
  }
  // Screens tune columns by name on grids that may not have them; that is tolerated.
  qCDebug(lcControls) << "grid" << this->name() << "has no column named" << name;
  return m_columns.nullColumn();
}

const GridColumn& Grid::column(const QString& name) const {
  if (const GridColumn* found = m_columns.at(columnIndex(name))) {
    return *found;
  }
  qCDebug(lcControls) << "grid" << this->name() << "has no column named" << name;
  return m_columns.nullColumn();
}

void Grid::removeAllColumns() {
  m_announcer.resetLayout([&] {
    m_columns.clear();
    columnsReplaced();
    m_bound.clearExtraCells();  // the logic's values of columns without a field go with the columns
    m_pending = Pending();
  });
}

void Grid::columnsReplaced() {
  // Which layer each column reads from may have changed: every row reads again.
  m_bound.resolveFields();
  m_rowLoaded.clear();
}

void Grid::columnTouched(GridColumn::Touch touch) {
  switch (touch) {
    case GridColumn::Touch::Header:
      Q_EMIT headerChanged();
      return;
    case GridColumn::Touch::Field:
      columnsReplaced();
      m_announcer.resetRows();
      return;
    case GridColumn::Touch::Cells:
      Q_EMIT headerChanged();
      m_announcer.allCellsChanged();
      return;
  }
}

// ===== binding =====================================================================================

void Grid::setDataSource(Adodc* source) {
  for (const QMetaObject::Connection& connection : std::as_const(m_sourceConnections)) {
    disconnect(connection);
  }
  m_sourceConnections.clear();
  m_source = source;
  if (source != nullptr) {
    connectSource();
    if (m_unbound.count() > 0) {
      qCWarning(lcControls) << "grid" << name() << "dropped" << m_unbound.count() << "added rows when bound";
    }
    m_unbound.clear();
    m_rows = &m_bound;
  } else {
    m_bound.setRecordset({});
    m_rows = &m_unbound;
  }
  m_unbound.setCurrent(0);
  bindNow();
}

void Grid::connectSource() {
  m_sourceConnections.append(connect(m_source, &Adodc::recordsetReplaced, this, &Grid::rebind));
  m_sourceConnections.append(connect(m_source, &Adodc::refreshed, this, &Grid::refresh));
  m_sourceConnections.append(connect(m_source, &Adodc::recordsetChanged, this, &Grid::followRecordset));
  m_sourceConnections.append(connect(m_source, &QObject::destroyed, this, &Grid::sourceDestroyed));
}

Adodc* Grid::dataSource() const {
  return m_source.data();
}

messaging::RecordSetPtr Grid::recordset() const {
  return m_source ? m_source->recordset() : messaging::RecordSetPtr();
}

void Grid::rebind() {
  if (!isBound()) {
    // Rows added as text are the grid's own: there is nothing to read again, only to redraw.
    refresh();
    return;
  }
  bindNow();
}

void Grid::bindNow() {
  if (hasPendingEdit()) {
    qCDebug(lcControls) << "grid" << name() << "dropped a pending edit on rebind";
  }
  m_announcer.resetRows([&] {
    if (isBound()) {
      m_bound.setRecordset(recordset());
      const messaging::RecordSetPtr& set = m_bound.recordset();
      if (columnCount() == 0 && set) {
        // A bound grid without a layout shows every field, captioned by its name.
        for (const messaging::Field& field : set->fields()) {
          m_columns.append(field.name, field.name, field.name);
        }
        m_bound.resolveFields();
      }
    }
    m_rowLoaded.clear();
    m_pending = Pending();
    m_selection.clear();
    m_announcer.rewind();
  });
}

void Grid::followRecordset() {
  if (m_writingSet) {
    return;
  }
  // Rows, values, sort or filter changed under the grid: format again, and tell the view (from the event
  // loop: the screen may be in the middle of a walk).
  m_bound.followFields();
  m_rowLoaded.clear();
  m_announcer.resetLater();
}

void Grid::sourceDestroyed() {
  m_sourceConnections.clear();
  m_bound.setRecordset({});
  m_rowLoaded.clear();
  m_announcer.resetLater();
}

void Grid::refresh() {
  m_rowLoaded.clear();
  m_announcer.resetRows();
}

// ===== rows ========================================================================================

bool Grid::addItem(const QString& tabSeparatedCells, int index) {
  return addItem(tabSeparatedCells.split(QLatin1Char('\t'), Qt::KeepEmptyParts), index);
}

bool Grid::addItem(const QStringList& cells, int index) {
  if (isBound()) {
    qCWarning(lcControls) << "grid" << name() << "is bound to a record set; rows cannot be added as text";
    return false;
  }
  const int count = rows();
  if (index > count) {
    qCWarning(lcControls) << "grid" << name() << "cannot add a row at" << index << "of" << count;
    return false;
  }
  const int at = index < 0 ? count : index;
  m_announcer.insertRow(at, [&] { m_unbound.insert(at, cells); });
  return true;
}

bool Grid::removeItem(int index) {
  if (isBound()) {
    qCWarning(lcControls) << "grid" << name() << "is bound to a record set; rows cannot be removed by index";
    return false;
  }
  if (index < 0 || index >= rows()) {
    qCWarning(lcControls) << "grid" << name() << "has no row" << index << "to remove";
    return false;
  }
  Bookmark removed = kNoBookmark;
  m_announcer.removeRow(index, [&] { removed = m_unbound.removeAt(index); });
  dropRowState(removed);
  return true;
}

void Grid::dropRowState(Bookmark id) {
  m_rowLoaded.forget(id);
  m_rows->forget(id);
  if (m_pending.row == id) {
    m_pending = Pending();
  }
  if (m_selection.forget(id)) {
    Q_EMIT selectionChanged();
  }
}

void Grid::removeAll() {
  if (isBound()) {
    refresh();
    return;
  }
  bool hadSelection = false;
  m_announcer.resetRows([&] {
    m_unbound.clear();
    m_rowLoaded.clear();
    m_pending = Pending();
    hadSelection = m_selection.clear();
    m_announcer.rewind();
  });
  if (hadSelection) {
    Q_EMIT selectionChanged();
  }
}

// ===== current row =================================================================================

bool Grid::setRow(int row) {
  if (row < 0 || row > rows()) {
    qCDebug(lcControls) << "grid" << name() << "has no row" << row;
    return false;
  }
  m_rows->setCurrent(row);
  m_announcer.currentMoved();
  return true;
}

void Grid::moveFirst() {
  m_rows->moveFirst();
  m_announcer.currentMoved();
}

void Grid::moveLast() {
  m_rows->moveLast();
  m_announcer.currentMoved();
}

void Grid::moveNext() {
  m_rows->moveNext();
  m_announcer.currentMoved();
}

void Grid::movePrevious() {
  m_rows->movePrevious();
  m_announcer.currentMoved();
}

bool Grid::setBookmark(Bookmark bookmark) {
  const int at = rowOfBookmark(bookmark);
  return at >= 0 && setRow(at);
}

// ===== selection ===================================================================================

void Grid::setSelectionMode(SelectionMode mode) {
  if (m_selection.setMode(mode)) {
    Q_EMIT selectionChanged();
  }
}

bool Grid::isRowSelected(int row) const {
  const Bookmark id = bookmarkAt(row);
  return id != kNoBookmark && m_selection.contains(id);
}

void Grid::selectRow(int row, bool selected) {
  if (m_selection.select(bookmarkAt(row), selected)) {
    Q_EMIT selectionChanged();
  }
}

void Grid::clearSelection() {
  if (m_selection.clear()) {
    Q_EMIT selectionChanged();
  }
}

// ===== values ======================================================================================

bool Grid::ensureLoaded(int row, Bookmark id) const {
  if (!m_rowLoadedHandler) {
    return false;
  }
  if (m_rowLoaded.holds(id)) {
    return true;
  }
  if (m_rowLoaded.isLoading()) {
    // The handler of one row read another: that row is read as it stands, unformatted.
    return false;
  }
  // Running the screen's handler is what reading a row means here; it writes display values only.
  return m_rowLoaded.load(row, id, m_rowLoadedHandler);
}

Grid::Cell Grid::cellAt(int row, int column) const {
  if (column < 0 || column >= columnCount()) {
    return {};
  }
  const bool loading = m_rowLoaded.isLoading(row);
  const Bookmark id = loading ? m_rowLoaded.loadingId() : bookmarkAt(row);
  if (id == kNoBookmark) {
    return {};
  }
  if (m_pending.row == id) {
    if (const auto edited = m_pending.values.constFind(column); edited != m_pending.values.constEnd()) {
      return {id, &edited.value()};
    }
  }
  // While a row is being formatted, its values so far come first.
  const bool formatted = loading ? m_rowLoaded.holds(id) : ensureLoaded(row, id);
  return {id, formatted ? m_rowLoaded.find(id, column) : nullptr};
}

QVariant Grid::cellValue(int row, int column) const {
  const Cell cell = cellAt(row, column);
  if (cell.id == kNoBookmark) {
    return {};
  }
  return cell.above != nullptr ? *cell.above : m_rows->value(row, cell.id, column);
}

QString Grid::cellText(int row, int column) const {
  const Cell cell = cellAt(row, column);
  if (cell.id == kNoBookmark) {
    return {};
  }
  return cell.above != nullptr ? cell.above->toString() : m_rows->text(row, cell.id, column);
}

bool Grid::setCellValue(int row, int column, const QVariant& value) {
  if (column < 0 || column >= columnCount()) {
    return false;
  }
  if (m_rowLoaded.isLoading(row)) {
    m_rowLoaded.set(column, value);
    return true;
  }
  if (row < 0 || row >= rows()) {
    qCDebug(lcControls) << "grid" << name() << "write outside the rows (" << row << ") ignored";
    return false;
  }
  const Bookmark id = bookmarkAt(row);
  if (m_pending.row == id) {
    // The logic's write replaces the person's unsaved edit of that cell.
    m_pending.values.remove(column);
    if (m_pending.values.isEmpty()) {
      m_pending = Pending();
    }
  }
  return writeRow(row, id, column, value);
}

bool Grid::writeRow(int row, Bookmark id, int column, const QVariant& value) {
  // The grid's own write: only this row needs formatting again (unless the write moved it in the sort order).
  const bool wasWriting = std::exchange(m_writingSet, true);
  const GridRowSource::Write written = m_rows->write(row, id, column, value);
  m_writingSet = wasWriting;
  switch (written) {
    case GridRowSource::Write::Refused:
      qCWarning(lcControls) << "grid" << name() << "could not write field" << this->column(column).dataField()
                            << "of row" << row;
      return false;
    case GridRowSource::Write::InPlace:
      m_rowLoaded.forget(id);
      m_announcer.cellsChanged(row, row);
      return true;
    case GridRowSource::Write::Moved:
      m_rowLoaded.forget(id);
      m_announcer.resetRows();
      return true;
  }
  return false;
}

QString Grid::displayText(int row, int column) const {
  const Cell cell = cellAt(row, column);
  if (cell.id == kNoBookmark) {
    return {};
  }
  const GridColumn::Display display = this->column(column).display();
  return cell.above != nullptr ? GridColumn::shownText(cell.above->toString(), display)
                               : m_rows->shownText(row, cell.id, column, display);
}

bool Grid::isChecked(int row, int column) const {
  return cellText(row, column).trimmed() == kChecked;
}

void Grid::setRowLoadedHandler(RowLoadedHandler handler) {
  m_rowLoadedHandler = std::move(handler);
  m_rowLoaded.clear();
  m_announcer.allCellsChanged();
}

// ===== the person's edits ==========================================================================

void Grid::setAllowUpdate(bool allow) {
  if (m_allowUpdate == allow) {
    return;
  }
  m_allowUpdate = allow;
  notifyChanged();
  Q_EMIT headerChanged();
}

bool Grid::isCellEditable(int column) const {
  const GridColumn* c = m_columns.at(column);
  return c != nullptr && m_allowUpdate && !c->isLocked() && c->isVisible() && isEffectivelyEnabled() &&
         isEffectivelyVisible();
}

bool Grid::update() {
  if (!hasPendingEdit()) {
    return true;
  }
  const Pending pending = std::exchange(m_pending, Pending());
  if (rowOfBookmark(pending.row) < 0) {
    qCWarning(lcControls) << "grid" << name() << "dropped an edit of a row no longer shown";
    return false;
  }
  bool ok = true;
  for (auto it = pending.values.constBegin(); it != pending.values.constEnd(); ++it) {
    // A bound write may move the row in the sort order; find it again for each field.
    const int now = rowOfBookmark(pending.row);
    ok = now >= 0 && writeRow(now, pending.row, it.key(), it.value()) && ok;
  }
  Q_EMIT afterUpdate();
  return ok;
}

void Grid::cancelUpdate() {
  if (!hasPendingEdit()) {
    return;
  }
  const int at = rowOfBookmark(m_pending.row);
  m_rowLoaded.forget(m_pending.row);
  m_pending = Pending();
  if (at >= 0) {
    m_announcer.cellsChanged(at, at);
  }
}

// ===== what a view calls ===========================================================================

bool Grid::userSetCurrentRow(int row) {
  if (!isEffectivelyEnabled() || !isEffectivelyVisible() || row < 0 || row >= rows()) {
    return false;
  }
  if (row == this->row()) {
    return true;
  }
  if (hasPendingEdit() && m_pending.row != bookmarkAt(row)) {
    update();
  }
  return setRow(row);
}

bool Grid::userClickRow(int row, ClickKind kind) {
  if (!isEffectivelyEnabled() || !isEffectivelyVisible()) {
    return false;
  }
  if (row >= 0 && row < rows()) {
    userSetCurrentRow(row);
    if (m_selection.click(*m_rows, row, kind)) {
      Q_EMIT selectionChanged();
      Q_EMIT selChange();
    }
  }
  Q_EMIT clicked();
  return true;
}

bool Grid::userEditCell(int row, int column, const QVariant& value) {
  return editCell(row, column, value) != kNoBookmark;
}

bool Grid::personMayEdit(int row, int column) const {
  if (isCellEditable(column) && row >= 0 && row < rows()) {
    return true;
  }
  qCDebug(lcControls) << "grid" << name() << "refused an edit of column" << column << "row" << row;
  return false;
}

Bookmark Grid::editCell(int row, int column, const QVariant& value) {
  if (!personMayEdit(row, column) || !userSetCurrentRow(row)) {
    return kNoBookmark;
  }
  const Bookmark id = bookmarkAt(row);
  if (m_pending.row != id) {
    m_pending = Pending{id, {}};
  }
  m_pending.values.insert(column, value);
  // Display values may depend on the edited cell: format the row again.
  m_rowLoaded.forget(id);
  m_announcer.cellsChanged(row, row);
  Q_EMIT edited(column);
  return id;
}

bool Grid::userEditWhole(int row, int column, const QVariant& value) {
  const Bookmark id = editCell(row, column, value);
  if (id == kNoBookmark) {
    return false;
  }
  // The Change handler may have committed the edit already (update) or dropped it (cancelUpdate).
  if (m_pending.row == id && m_pending.values.contains(column)) {
    return update();
  }
  return true;
}

bool Grid::userSetCheck(int row, int column, bool checked) {
  const GridColumn* c = m_columns.at(column);
  if (c == nullptr || !c->isCheck()) {
    qCDebug(lcControls) << "grid" << name() << "column" << column << "shows no check boxes";
    return false;
  }
  if (!personMayEdit(row, column)) {
    return false;
  }
  if (isChecked(row, column) == checked) {
    return true;
  }
  return userEditWhole(row, column, checked ? kChecked : kCleared);
}

bool Grid::userChooseItem(int row, int column, const QString& item) {
  const GridColumn* c = m_columns.at(column);
  const QString listed = c != nullptr ? c->dropDownItem(item) : QString();
  if (listed.isEmpty()) {
    qCDebug(lcControls) << "grid" << name() << "column" << column << "offers no item" << item;
    return false;
  }
  if (!personMayEdit(row, column)) {
    return false;
  }
  if (cellText(row, column) == listed) {
    return true;
  }
  return userEditWhole(row, column, listed);
}

bool Grid::userToggleCheck(int row, int column) {
  return userEditCell(row, column, isChecked(row, column) ? kCleared : kChecked);
}

void Grid::userScrolled(int firstVisibleRow) {
  setFirstVisibleRow(firstVisibleRow);
  Q_EMIT scrollAfter();
}

}  // namespace adjustacc::platform
